// SM2 signature verification over a digest e:
//   1 <= r, s < n;  t = (r + s) mod n != 0;  (x1, y1) = s*G + t*PA;
//   valid when e + x1, less n once if not below n, equals r.
//
// The curve group comes ready from sm2_curve (built and checked once); the
// key and signature checks below accept exactly what a freshly built group
// with an EC_KEY and OpenSSL 1.1's signature decoder accepted, and print the
// same texts.
#include <openssl/bn.h>
#include <openssl/ec.h>

#include <cstdio>
#include <memory>

#include "crypto/sm2_curve.h"
#include "crypto/sm2_point_x.h"
#include "crypto/sm2_signature_der.h"
#include "ztutil/sm2.h"

namespace {

const unsigned int kPublicKeyRecordSize = 132;
const unsigned int kCoordinateSize = 32;
const unsigned int kXOffset = 36;
const unsigned int kYOffset = 100;

struct BnCtxFree {
    void operator()(BN_CTX* ctx) const { BN_CTX_free(ctx); }
};
struct PointFree {
    void operator()(EC_POINT* point) const { EC_POINT_free(point); }
};
using BnCtxPtr = std::unique_ptr<BN_CTX, BnCtxFree>;
using PointPtr = std::unique_ptr<EC_POINT, PointFree>;

// Working values of one verification; the big numbers live in the context.
struct Workspace {
    BnCtxPtr ctx;
    PointPtr publicKey;
    PointPtr sum;
    BIGNUM* x = nullptr;
    BIGNUM* y = nullptr;
    BIGNUM* r = nullptr;
    BIGNUM* s = nullptr;
    BIGNUM* t = nullptr;
    BIGNUM* e = nullptr;
    BIGNUM* x1 = nullptr;

    bool open(const EC_GROUP* group) {
        ctx.reset(BN_CTX_new());
        if (!ctx)
            return false;
        publicKey.reset(EC_POINT_new(group));
        sum.reset(EC_POINT_new(group));
        BN_CTX_start(ctx.get());
        BIGNUM** all[] = {&x, &y, &r, &s, &t, &e, &x1};
        for (BIGNUM** bn : all) {
            *bn = BN_CTX_get(ctx.get());
            if (*bn == nullptr)
                return false;
        }
        return publicKey && sum;
    }

    ~Workspace() {
        if (ctx)
            BN_CTX_end(ctx.get());
    }
};

// The key point from the record; a record that is not exactly 132 bytes
// gives the point (0, 0). Setting a point reduces the coordinates modulo p
// and refuses a point that is not on the curve.
bool setPublicKey(const EC_GROUP* group, const unsigned char* record, unsigned int recordLength,
                  Workspace* w) {
    BN_zero(w->x);
    BN_zero(w->y);
    if (record != nullptr && recordLength == kPublicKeyRecordSize) {
        if (BN_bin2bn(record + kXOffset, kCoordinateSize, w->x) == nullptr ||
            BN_bin2bn(record + kYOffset, kCoordinateSize, w->y) == nullptr)
            return false;
    }
    return EC_POINT_set_affine_coordinates(group, w->publicKey.get(), w->x, w->y, w->ctx.get()) ==
           1;
}

// The key check of an EC key: a finite point on the curve whose multiple by
// n is the point at infinity. An affine point on the curve passes the first
// two by construction, and with cofactor 1 every curve point has order n,
// so the multiplication cannot fail and is not repeated here.
bool publicKeyValid(const EC_GROUP* group, Workspace* w) {
    return EC_POINT_is_at_infinity(group, w->publicKey.get()) == 0 &&
           EC_POINT_is_on_curve(group, w->publicKey.get(), w->ctx.get()) == 1;
}

// r and s from the DER signature, as unsigned numbers.
bool decodeSignature(const unsigned char* der, unsigned int length, Workspace* w) {
    ztutil::sm2::SignatureIntegers integers;
    if (!ztutil::sm2::readSignatureIntegers(der, length, &integers))
        return false;
    return BN_bin2bn(integers.r.data, static_cast<int>(integers.r.size), w->r) != nullptr &&
           BN_bin2bn(integers.s.data, static_cast<int>(integers.s.size), w->s) != nullptr;
}

bool inSignatureRange(const BIGNUM* value, const BIGNUM* order) {
    return !BN_is_zero(value) && !BN_is_negative(value) && BN_ucmp(value, order) < 0;
}

// The digest as the integer e: the whole digest when n has at least as many
// bits, else its leading bits(n) bits.
bool digestToInteger(const unsigned char* digest, unsigned int length, const BIGNUM* order,
                     BIGNUM* e) {
    if (digest == nullptr && length != 0)
        return false;
    const int orderBits = BN_num_bits(order);
    if (static_cast<long long>(length) * 8 <= orderBits)
        return BN_bin2bn(digest, static_cast<int>(length), e) != nullptr;
    if (BN_bin2bn(digest, (orderBits + 7) / 8, e) == nullptr)
        return false;
    return orderBits % 8 == 0 || BN_rshift(e, e, 8 - orderBits % 8) == 1;
}

// R = e + x1, less n once when it is not below n, must equal r. With
// r < n that holds exactly when x1 = r - e (then e + x1 < n) or
// x1 = r - e + n (then e + x1 >= n); each candidate that is a field element
// is compared with the point's x directly.
bool xMatches(const ztutil::sm2::Curve& curve, const EC_POINT* point, const BIGNUM* r,
              const BIGNUM* e, BIGNUM* candidate, BN_CTX* ctx) {
    if (BN_sub(candidate, r, e) != 1)
        return false;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!BN_is_negative(candidate)) {
            const int equal = ztutil::sm2::affineXEquals(curve.group, point, candidate, ctx);
            if (equal != 0)
                return equal == 1;
        }
        if (attempt == 0 && BN_add(candidate, candidate, curve.order) != 1)
            return false;
    }
    return false;
}

bool signatureMatches(const ztutil::sm2::Curve& curve, const unsigned char* digest,
                      unsigned int digestLength, Workspace* w) {
    const BIGNUM* n = curve.order;
    BN_CTX* ctx = w->ctx.get();
    if (!inSignatureRange(w->r, n) || !inSignatureRange(w->s, n))
        return false;
    if (BN_mod_add(w->t, w->r, w->s, n, ctx) != 1 || BN_is_zero(w->t))
        return false;
    if (!ztutil::sm2::multiplyAdd(curve.group, curve.generatorTable, w->sum.get(), w->s,
                                  w->publicKey.get(), w->t, ctx))
        return false;
    if (!digestToInteger(digest, digestLength, n, w->e))
        return false;
    return xMatches(curve, w->sum.get(), w->r, w->e, w->x1, ctx);
}

}  // namespace

int SM2Verify(unsigned char* pbtPubKey, unsigned int uiPubKeyLen, unsigned char* pbtDigestData,
              unsigned int uiDigestDataLen, unsigned char* pbtSignData, unsigned int uiSignDataLen) {
    std::printf("[SM2Verify] call in ... \n");
    std::fflush(stdout);

    const ztutil::sm2::Curve* curve = ztutil::sm2::curve();
    if (curve == nullptr)
        return 1;
    Workspace w;
    if (!w.open(curve->group)) {
        std::printf("EC_KEY_set_group failed\n");
        return 1;
    }
    if (!setPublicKey(curve->group, pbtPubKey, uiPubKeyLen, &w))
        return 1;
    if (!publicKeyValid(curve->group, &w)) {
        std::printf("EC_KEY_check_key failed\n");
        return 1;
    }
    if (!decodeSignature(pbtSignData, uiSignDataLen, &w))
        return 1;
    if (!signatureMatches(*curve, pbtDigestData, uiDigestDataLen, &w)) {
        std::printf("SM2_verify failed");
        return 1;
    }
    return 0;
}
