// Export macro and the plain type aliases used in the host-visible signatures.
//
// Valid C99 and C++: the headers of the plain function sets (sm3.h, sm2.h,
// rsa.h, asn.h, code_convert.h, base64.h) compile in C hosts as well.
#ifndef ZTUTIL_GLOBAL_H
#define ZTUTIL_GLOBAL_H

#include <stdint.h>

// Everything is hidden by default; ZTUTIL_EXPORT marks the contract with the host.
#define ZTUTIL_EXPORT __attribute__((visibility("default")))

// A plain function or variable of the contract: unmangled in C++, and an
// external declaration (never a definition) in C.
#ifdef __cplusplus
#define ZTUTIL_C_API extern "C" ZTUTIL_EXPORT
#else
#define ZTUTIL_C_API extern ZTUTIL_EXPORT
#endif

// Marks the GNU extension the public records use (anonymous structs in an
// anonymous union), so that hosts building with -pedantic accept it.
#define ZTUTIL_EXTENSION __extension__

// The host matches invokable signatures textually, so these aliases must be
// spelled exactly like this in every declaration the host can see.
typedef uint8_t BYTE;
typedef int32_t BOOL;

#endif
