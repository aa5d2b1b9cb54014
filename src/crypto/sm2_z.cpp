// e = SM3(Z || M) with the signer's Z value of GB/T 32918.2.
#include <cstring>

#include "crypto/sm2_params.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"

namespace {

const int kPublicKeyRecordSize = 132;
const int kXOffset = 36;
const int kYOffset = 100;

// SM3 of data whose length may exceed what one update takes.
void update(sm3_context* ctx, const unsigned char* data, long long length) {
    const int chunk = 1 << 30;
    while (length > 0) {
        const int part = length < chunk ? static_cast<int>(length) : chunk;
        ztutil_sm3_update(ctx, const_cast<unsigned char*>(data), part);
        data += part;
        length -= part;
    }
}

}  // namespace

int ztutil_sm3_with_sm2(unsigned char* input, int ilen, unsigned char* public_key, int keylen,
                        const char* user_id, int uidlen, unsigned char output[32]) {
    if (public_key == nullptr || keylen == 0 || user_id == nullptr || uidlen == 0) {
        ztutil_sm3(input, ilen, output);
        return 1;
    }
    // The coordinates are read from fixed places of a full record.
    if (keylen < kPublicKeyRecordSize || uidlen < 0)
        return 0;

    // Z over ENTL || ID || a || b || xG || yG || x || y, streamed rather
    // than assembled in one buffer (same bytes, same digest).
    const unsigned int entl = (static_cast<unsigned int>(uidlen) & 0x1FFF) * 8;
    unsigned char entlBytes[2] = {static_cast<unsigned char>(entl >> 8),
                                  static_cast<unsigned char>(entl)};
    sm3_context ctx;
    unsigned char z[32];
    ztutil_sm3_starts(&ctx);
    update(&ctx, entlBytes, 2);
    update(&ctx, reinterpret_cast<const unsigned char*>(user_id), uidlen);
    update(&ctx, ztutil::sm2::kCurveParameters, sizeof ztutil::sm2::kCurveParameters);
    update(&ctx, public_key + kXOffset, 32);
    update(&ctx, public_key + kYOffset, 32);
    ztutil_sm3_finish(&ctx, z);

    ztutil_sm3_starts(&ctx);
    update(&ctx, z, 32);
    if (input != nullptr)
        update(&ctx, input, ilen);
    ztutil_sm3_finish(&ctx, output);
    return 1;
}
