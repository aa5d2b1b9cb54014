// SM3 (GB/T 32905-2016): streaming hash, one-shot hash, file hash, HMAC-SM3
// and a checked one-shot digest. Digests are always 32 bytes.
//
// Streaming:  ztutil_sm3_starts, ztutil_sm3_update..., ztutil_sm3_finish.
// HMAC:       ztutil_sm3_hmac_starts(key), ztutil_sm3_hmac_update..., ztutil_sm3_hmac_finish.
// To compute another HMAC with the same key, call ztutil_sm3_hmac_starts again.
//
// No function allocates; distinct contexts may be used from different
// threads at the same time.
#ifndef ZTUTIL_SM3_H
#define ZTUTIL_SM3_H

#include "ztutil_global.h"

// One record serves plain hashing and HMAC. The caller owns it.
typedef struct {
    uint32_t total[2];          // bytes absorbed: [0] low 32 bits, [1] carries
    uint32_t state[8];          // chaining value A..H
    unsigned char buffer[64];   // input not yet compressed
    unsigned char ipad[64];     // HMAC inner padded key (key XOR 0x36)
    unsigned char opad[64];     // HMAC outer padded key (key XOR 0x5C)
} sm3_context;

// Resets the byte count and the chaining value; buffer and pads are untouched.
ZTUTIL_C_API void ztutil_sm3_starts(sm3_context* ctx);
// Absorbs `ilen` bytes; a length of zero or less does nothing.
ZTUTIL_C_API void ztutil_sm3_update(sm3_context* ctx, unsigned char* input, int ilen);
// Pads and writes the 32-byte digest. The context is not cleared.
ZTUTIL_C_API void ztutil_sm3_finish(sm3_context* ctx, unsigned char output[32]);
// One-shot digest of `ilen` bytes.
ZTUTIL_C_API void ztutil_sm3(unsigned char* input, int ilen, unsigned char output[32]);

// Digest of a whole file: 0 done, 1 the file cannot be opened (output not
// written), 2 a read error occurred (the digest of the bytes read before the
// error is still written: treat 2 as a failure).
ZTUTIL_C_API int ztutil_sm3_file(char* path, unsigned char output[32]);

// HMAC-SM3 (RFC 2104, block 64 bytes). Keys longer than 64 bytes are
// replaced by their SM3 digest; a key length of zero or less means no key.
ZTUTIL_C_API void ztutil_sm3_hmac_starts(sm3_context* ctx, unsigned char* key, int keylen);
ZTUTIL_C_API void ztutil_sm3_hmac_update(sm3_context* ctx, unsigned char* input, int ilen);
ZTUTIL_C_API void ztutil_sm3_hmac_finish(sm3_context* ctx, unsigned char output[32]);
ZTUTIL_C_API void ztutil_sm3_hmac(unsigned char* key, int keylen, unsigned char* input, int ilen,
                                  unsigned char output[32]);

// Checked digest: 0 (nothing written) for null data, zero length or a null
// `outlen`; otherwise sets *outlen to 32, copies the digest to `out` when it
// is not null, and returns 1. `out` must hold 32 bytes.
ZTUTIL_C_API int ztutil_digest(unsigned char* data, unsigned int len, unsigned char* out,
                               unsigned int* outlen);

#endif
