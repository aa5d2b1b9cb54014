// Base64 in two families.
//
// The process-wide codec (ZTBase64Encode / ZTBase64Decode, and
// ZTBase64EncodeEx in base64_qt.h) uses the alphabet chosen with
// ZTBase64SetTableCode and is strict on input.
// The explicit-alphabet codec (EnCodeBase64Ex / DeCodeBase64Ex) takes the
// alphabet on every call and reads anything it does not know as padding.
//
// An alphabet is 65 characters: the digits for the values 0..63, then the
// padding character. No character, "=" included, is special otherwise.
#ifndef ZTUTIL_BASE64_H
#define ZTUTIL_BASE64_H

#include "ztutil_global.h"

// "ABC...xyz0123456789+/=" — the standard alphabet, "=" pads.
ZTUTIL_C_API char* const strNormalTable;
// "=ABC...xyz0123456789+/" — "=" is the digit 0 and "/" pads.
ZTUTIL_C_API char* const strSM2Table;

// Selects the process-wide alphabet (null restores the standard one) and
// returns it. The text is not copied: keep it alive while it is selected.
ZTUTIL_C_API char* ZTBase64SetTableCode(char* table);

// Encodes without line breaks: exactly 4 characters for every started group
// of 3 bytes. Returns a calloc'ed NUL-terminated text to be released with
// free(), or null (null data, zero length, no memory).
ZTUTIL_C_API char* ZTBase64Encode(unsigned char* pbtdata, unsigned long len);

// Decodes a text whose length is a multiple of 4 and whose every character
// is in the current alphabet. The decoded length is 3 per group of 4, less 2
// or 1 when the last group pads. Returns a calloc'ed buffer of 3 per group
// plus a zero byte and stores the decoded length in *len when `len` is
// given; null on failure.
ZTUTIL_C_API unsigned char* ZTBase64Decode(const char* pszBase64Code, long* len);

// Encodes with `TableBase64`: exactly 4 characters for every started group of
// 3 bytes. Returns a calloc'ed text (free()); an empty text for ValueLen <= 0;
// null when lpValue or the table is null.
ZTUTIL_C_API char* EnCodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64);

// Decodes with `TableBase64`, leniently: characters outside the table count
// as padding. `lpValue` must be readable one byte past ValueLen (pass
// NUL-terminated text). Returns a new[]'ed array of ValueLen bytes to be
// released with delete[] and stores the decoded length in *outlen: never
// more than ValueLen, and for NUL-terminated text at most 3 per group of 4
// characters plus 1, 1 or 2 for a last group of 1, 2 or 3. Null when lpValue
// or the table is null.
ZTUTIL_C_API unsigned char* DeCodeBase64Ex(unsigned char* lpValue, int ValueLen,
                                           char* TableBase64, int* outlen);

// C++ hosts that can reach QtCore's headers also get the Qt-typed member of
// the family, as this header always gave them; C and non-Qt hosts get no Qt.
#if defined(__cplusplus) && defined(__has_include)
#if __has_include(<QByteArray>)
#include "base64_qt.h"
#endif
#endif

#endif
