// e = SM3(Z || M) with the signer's Z value of GB/T 32918.2.
#include <cstring>

#include "ztutil/sm2.h"
#include "ztutil/sm3.h"

namespace {

const int kPublicKeyRecordSize = 132;
const int kXOffset = 36;
const int kYOffset = 100;

// a, b, xG, yG of the SM2 recommended curve.
const unsigned char kCurveParameters[128] = {
    0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
    0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC,
    0x28, 0xE9, 0xFA, 0x9E, 0x9D, 0x9F, 0x5E, 0x34, 0x4D, 0x5A, 0x9E, 0x4B, 0xCF, 0x65, 0x09, 0xA7,
    0xF3, 0x97, 0x89, 0xF5, 0x15, 0xAB, 0x8F, 0x92, 0xDD, 0xBC, 0xBD, 0x41, 0x4D, 0x94, 0x0E, 0x93,
    0x32, 0xC4, 0xAE, 0x2C, 0x1F, 0x19, 0x81, 0x19, 0x5F, 0x99, 0x04, 0x46, 0x6A, 0x39, 0xC9, 0x94,
    0x8F, 0xE3, 0x0B, 0xBF, 0xF2, 0x66, 0x0B, 0xE1, 0x71, 0x5A, 0x45, 0x89, 0x33, 0x4C, 0x74, 0xC7,
    0xBC, 0x37, 0x36, 0xA2, 0xF4, 0xF6, 0x77, 0x9C, 0x59, 0xBD, 0xCE, 0xE3, 0x6B, 0x69, 0x21, 0x53,
    0xD0, 0xA9, 0x87, 0x7C, 0xC6, 0x2A, 0x47, 0x40, 0x02, 0xDF, 0x32, 0xE5, 0x21, 0x39, 0xF0, 0xA0};

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
    update(&ctx, kCurveParameters, sizeof kCurveParameters);
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
