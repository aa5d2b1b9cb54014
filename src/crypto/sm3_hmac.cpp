// HMAC-SM3 (RFC 2104 with SM3: block 64 bytes, output 32 bytes).
#include <cstring>

#include "ztutil/sm3.h"

void ztutil_sm3_hmac_starts(sm3_context* ctx, unsigned char* key, int keylen) {
    unsigned char keyDigest[32];
    if (keylen > 64) {
        ztutil_sm3(key, keylen, keyDigest);
        key = keyDigest;
        keylen = 32;
    }
    std::memset(ctx->ipad, 0x36, sizeof ctx->ipad);
    std::memset(ctx->opad, 0x5C, sizeof ctx->opad);
    if (key != nullptr) {
        for (int i = 0; i < keylen; ++i) {
            ctx->ipad[i] ^= key[i];
            ctx->opad[i] ^= key[i];
        }
    }
    ztutil_sm3_starts(ctx);
    ztutil_sm3_update(ctx, ctx->ipad, 64);
    explicit_bzero(keyDigest, sizeof keyDigest);
}

void ztutil_sm3_hmac_update(sm3_context* ctx, unsigned char* input, int ilen) {
    ztutil_sm3_update(ctx, input, ilen);
}

void ztutil_sm3_hmac_finish(sm3_context* ctx, unsigned char output[32]) {
    unsigned char inner[32];
    ztutil_sm3_finish(ctx, inner);
    ztutil_sm3_starts(ctx);
    ztutil_sm3_update(ctx, ctx->opad, 64);
    ztutil_sm3_update(ctx, inner, 32);
    ztutil_sm3_finish(ctx, output);
    explicit_bzero(inner, sizeof inner);
}

void ztutil_sm3_hmac(unsigned char* key, int keylen, unsigned char* input, int ilen,
                     unsigned char output[32]) {
    sm3_context ctx;
    ztutil_sm3_hmac_starts(&ctx, key, keylen);
    ztutil_sm3_hmac_update(&ctx, input, ilen);
    ztutil_sm3_hmac_finish(&ctx, output);
}
