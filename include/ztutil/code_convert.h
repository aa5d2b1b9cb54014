// Conversion between UTF-8, arrays of 32-bit code points and GBK (code page
// 936), and the code-page lookup primitives behind it.
//
// All functions work on caller-supplied buffers and return counts; none of
// them takes an output capacity unless stated, so the caller sizes buffers.
// Terms used below:
//   UTF-8    NUL-terminated bytes; sequences of 1 to 6 bytes are understood
//            (the RFC 2279 form, up to 0x7FFFFFFF).
//   unicode  an array of 32-bit code units, zero-terminated where stated.
//   GBK      bytes below 0x80 are ASCII, the single byte 0x80 is U+20AC, any
//            other byte of 0x80 or above leads a two-byte code (high byte
//            first). GBK bytes are always read as unsigned.
//
// Worst-case output sizes, whatever the input (n is the input's length in
// bytes, strlen for NUL-terminated text):
//   code_unicode_to_utf8_one          6 bytes
//   code_unicode_to_utf8              outSize + 6 bytes
//   code_unicode_to_utf8_reversebyte  min(outSize + 3, 3 * count + 1) bytes
//   code_utf8_to_unicode              maxUnits + 1 units
//   code_unicode_to_gbk               2 * count bytes
//   code_gbk_to_unicode               n units (and n + 1 input bytes read)
//   code_utf8_to_gbk                  4 * n bytes
//   code_gbk_to_utf8                  min(outSize + 3, 3 * n + 1) bytes
// The bytes or units written can reach these sizes, so output buffers must
// have them; the counts returned never exceed them.
#ifndef ZTUTIL_CODE_CONVERT_H
#define ZTUTIL_CODE_CONVERT_H

#include "ztutil_global.h"

// Length of the UTF-8 sequence that `c` starts: 1 for ASCII and for a stray
// continuation byte (0x80..0xBF), then 2, 3, 4 by the lead bits, 6 for
// 0xFC..0xFF (bit 2 set) and 5 for 0xF8..0xFB.
ZTUTIL_C_API int code_get_utf8_byte_size(char c);

// Adds, for every character of the NUL-terminated `pInput`, 1 to counters[0]
// and 1 to counters[length] (length 1..6). The counters are not cleared and
// the bytes after each lead byte are skipped unexamined, except that a NUL
// among them still ends the text. Null text or counters: no-op.
ZTUTIL_C_API void code_get_utf8_length(const char* pInput, int* counters);

// Encodes one code point into pOutput, which must have room for 6 bytes
// (`outSize` is not consulted). A negative value is written as one byte
// (value & 0x7F); values above 0x7FFFFFFF give 0 and write nothing.
// Returns the bytes written. A null pOutput stops the process.
ZTUTIL_C_API int code_unicode_to_utf8_one(long unic, char* pOutput, int outSize);

// Decodes the sequence at pInput into *unicode. Returns the bytes consumed,
// or 0 with *unicode == 0 when a continuation byte is wrong. Two-byte forms
// only accept a second byte of 0x80..0x9F, and the 5- and 6-byte forms are
// assembled with their own fixed bit layout (see code_convert.cpp); both are
// long-standing behaviour that callers depend on. A null argument stops the
// process.
ZTUTIL_C_API int code_utf8_to_unicode_one(const char* pInput, long* unicode);

// Encodes units up to a zero unit, continuing while the bytes written so far
// are at most `outSize` (so up to outSize + 6 bytes can be written). Appends
// a NUL only when the total stays below `outSize`. Returns the bytes written
// (without the NUL); 0 for null buffers or outSize < 1.
ZTUTIL_C_API int code_unicode_to_utf8(const unsigned int* pInput, char* pOutput, int outSize);

// Like code_unicode_to_utf8 for big-endian 16-bit codes held in the first two
// bytes (in memory order, high byte first) of each 32-bit unit of pInput; at
// most `count` units are read and a unit whose 32 bits are all zero ends the
// text. The units are read bytewise, so pInput need not be aligned. A code
// takes at most 3 bytes, so up to min(outSize + 3, 3 * count + 1) bytes are
// written.
ZTUTIL_C_API int code_unicode_to_utf8_reversebyte(const unsigned int* pInput, int count,
                                                  char* pOutput, int outSize);

// Decodes UTF-8 into 32-bit units. A malformed sequence is not skipped: it
// yields 0 units at the same position until the count limit stops the loop.
// Stores up to maxUnits + 1 units; a zero terminator follows only when fewer
// than maxUnits were stored. Returns the units stored (without the
// terminator); an empty text stores one zero unit and returns 0; null
// arguments or maxUnits < 1 give 0.
ZTUTIL_C_API int code_utf8_to_unicode(const char* pInput, unsigned int* pOutput, int maxUnits);

// Converts exactly `count` units (zeros included, no terminator written) to
// GBK: ASCII as one byte, U+20AC as 0x80, everything else as two bytes from
// ff_uni2oem(unit, 936), 00 00 when unmapped. Returns the bytes written (0
// for count < 1 or a null buffer).
ZTUTIL_C_API int code_unicode_to_gbk(const unsigned int* pInput, char* pOutput, int count);

// Converts `length` GBK bytes to units (no terminator written). The byte
// after 0x80 is skipped, and a lead byte in the last position reads one byte
// past `length`. Unmapped codes give 0. Returns the units written.
ZTUTIL_C_API int code_gbk_to_unicode(const char* pInput, unsigned int* pOutput, int length);

// UTF-8 to GBK through code_utf8_to_unicode with a limit of 3 units per input
// byte, then code_unicode_to_gbk. No terminator is written. A malformed
// sequence turns into zero bytes up to the unit limit (3n + 1 units in all),
// and a unit before it can take two bytes for one input byte (a stray
// continuation byte), so pOutput needs 4 * strlen bytes in the worst case
// (reached by n - 1 bytes 0x80 followed by a lone 0xC2). Returns the bytes
// written, 0 for null arguments or when the scratch cannot be allocated.
ZTUTIL_C_API int code_utf8_to_gbk(const char* pInput, char* pOutput);

// NUL-terminated GBK to UTF-8 with the output rules of code_unicode_to_utf8.
// Every byte gives at most one code of at most 3 bytes, so up to
// min(outSize + 3, 3 * strlen + 1) bytes are written. Returns the bytes
// written, 0 for a null text or when the scratch cannot be allocated.
ZTUTIL_C_API int code_gbk_to_utf8(const char* pInput, char* pOutput, int outSize);

// Unicode to code-page code for the single-byte pages 437, 720, 737, 771,
// 775, 850, 852, 855, 857, 860-866, 869 and the double-byte pages 932, 936,
// 949, 950. ASCII maps to itself; 0 means no mapping (or unknown page).
ZTUTIL_C_API unsigned short ff_uni2oem(unsigned int uni, unsigned short cp);

// Code-page code to Unicode for the same pages; 0 means no mapping.
ZTUTIL_C_API unsigned short ff_oem2uni(unsigned short oem, unsigned short cp);

// Simple upper-case mapping of a BMP code point; values above 0xFFFF are
// returned unchanged.
ZTUTIL_C_API unsigned int ff_wtoupper(unsigned int uni);

#endif
