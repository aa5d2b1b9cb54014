// SM2Verify against OpenSSL: random keys, digests and signatures made by
// OpenSSL's SM2 signing and checked by OpenSSL's own verification, and the
// edge cases checked against a verification written here with OpenSSL's
// BIGNUM and EC_POINT arithmetic under the library's rules.
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>

#include "support/common.h"
#include "support/sm2_signer.h"
#include "ztutil/sm2.h"

using namespace ztutil_test;

// Number of random keys, set by the build (tests/CMakeLists.txt).
#ifndef ZTUTIL_SM2_DIFF_CASES
#error "ZTUTIL_SM2_DIFF_CASES is not defined"
#endif

namespace {

enum Verdict { kAccepted, kKeyRefused, kMismatch };
const char* const kVerdictText[] = {"accepted", "key refused", "mismatch"};

Bytes big(const BIGNUM* bn) {
    Bytes out(32);
    EXPECT_EQ(BN_bn2binpad(bn, out.data(), 32), 32);
    return out;
}

// r and s as DER, each INTEGER with a 00 in front of a high first byte.
Bytes derSignature(const Bytes& r, const Bytes& s) {
    auto integer = [](const Bytes& value) { return tlv(0x02, value[0] >= 0x80 ? concat({{0}, value}) : value); };
    return tlv(0x30, concat({integer(r), integer(s)}));
}

// The 132-byte key record of x || y.
Bytes keyRecord(const Bytes& xy) {
    Bytes out(132, 0);
    out[1] = 1;
    std::copy(xy.begin(), xy.begin() + 32, out.begin() + 36);
    std::copy(xy.begin() + 32, xy.end(), out.begin() + 100);
    return out;
}

Verdict sm2Verify(Bytes key, Bytes digest, Bytes der) {
    StdoutCapture capture;
    const int result = SM2Verify(key.data(), 132, digest.empty() ? nullptr : digest.data(),
                                 unsigned(digest.size()), der.data(), unsigned(der.size()));
    const std::string text = capture.text();
    const std::string callIn = "[SM2Verify] call in ... \n";
    if (result == 0 && text == callIn)
        return kAccepted;
    if (result == 1 && text == callIn)
        return kKeyRefused;
    EXPECT_EQ(text, callIn + "SM2_verify failed");
    return kMismatch;
}

// OpenSSL's curve and the verification rules of the library.
class Reference {
public:
    Reference() {
        BN_hex2bn(&p_, "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFF");
        EC_GROUP_get_order(group_, n_, ctx_);
    }
    ~Reference() {
        for (BIGNUM* bn : {p_, n_})
            BN_free(bn);
        EC_GROUP_free(group_);
        BN_CTX_free(ctx_);
    }
    const BIGNUM* n() const { return n_; }

    // The key's coordinates reduced mod p, refused off the curve;
    // 1 <= r, s < n; t = r + s mod n != 0; x1 of s G + t P (not at
    // infinity); e the first 32 bytes of the digest; e + x1, less n once
    // when not below n, equal to r.
    Verdict verify(const Bytes& key, const Bytes& digest, const Bytes& r, const Bytes& s) {
        BN_CTX_start(ctx_);
        BIGNUM *x = bn(key, 36, 32), *y = bn(key, 100, 32), *br = bn(r, 0, r.size()), *bs = bn(s, 0, s.size());
        BIGNUM *e = bn(digest, 0, std::min<size_t>(digest.size(), 32)), *t = BN_CTX_get(ctx_);
        EC_POINT* point = EC_POINT_new(group_);
        Verdict verdict = kKeyRefused;
        BN_nnmod(x, x, p_, ctx_);
        BN_nnmod(y, y, p_, ctx_);
        if (EC_POINT_set_affine_coordinates(group_, point, x, y, ctx_) == 1) {
            verdict = kMismatch;
            BN_mod_add(t, br, bs, n_, ctx_);
            if (inRange(br) && inRange(bs) && !BN_is_zero(t) &&
                EC_POINT_mul(group_, point, bs, point, t, ctx_) == 1 &&
                EC_POINT_get_affine_coordinates(group_, point, x, nullptr, ctx_) == 1) {
                BN_add(x, x, e);
                if (BN_cmp(x, n_) >= 0)
                    BN_sub(x, x, n_);
                verdict = BN_cmp(x, br) == 0 ? kAccepted : kMismatch;
            }
        }
        EC_POINT_free(point);
        BN_CTX_end(ctx_);
        return verdict;
    }

    // x || y of k G.
    Bytes multiple(const BIGNUM* k) {
        EC_POINT* point = EC_POINT_new(group_);
        BIGNUM *x = BN_new(), *y = BN_new();
        EC_POINT_mul(group_, point, k, nullptr, nullptr, ctx_);
        EC_POINT_get_affine_coordinates(group_, point, x, y, ctx_);
        const Bytes out = concat({big(x), big(y)});
        BN_free(x);
        BN_free(y);
        EC_POINT_free(point);
        return out;
    }

    // A digest e for which (r, s) is a valid signature by the key: e = r - x1 mod n.
    Bytes digestFor(const Bytes& key, const Bytes& r, const Bytes& s) {
        BN_CTX_start(ctx_);
        BIGNUM *x = bn(key, 36, 32), *y = bn(key, 100, 32), *br = bn(r, 0, 32), *bs = bn(s, 0, 32);
        BIGNUM* t = BN_CTX_get(ctx_);
        EC_POINT* point = EC_POINT_new(group_);
        BN_nnmod(x, x, p_, ctx_);
        EXPECT_EQ(EC_POINT_set_affine_coordinates(group_, point, x, y, ctx_), 1);
        BN_mod_add(t, br, bs, n_, ctx_);
        EC_POINT_mul(group_, point, bs, point, t, ctx_);
        EC_POINT_get_affine_coordinates(group_, point, x, nullptr, ctx_);
        BN_mod_sub(t, br, x, n_, ctx_);
        const Bytes e = big(t);
        EC_POINT_free(point);
        BN_CTX_end(ctx_);
        return e;
    }

    // A curve point with x below 2^32 (so that x + p still fits 256 bits).
    Bytes smallXPoint() {
        BN_CTX_start(ctx_);
        BIGNUM *x = BN_CTX_get(ctx_), *y = BN_CTX_get(ctx_);
        EC_POINT* point = EC_POINT_new(group_);
        for (BN_ULONG candidate = 1;; ++candidate) {
            BN_set_word(x, candidate);
            if (EC_POINT_set_compressed_coordinates(group_, point, x, 0, ctx_) == 1)
                break;
        }
        EC_POINT_get_affine_coordinates(group_, point, x, y, ctx_);
        const Bytes out = concat({big(x), big(y)});
        EC_POINT_free(point);
        BN_CTX_end(ctx_);
        return out;
    }

private:
    BIGNUM* bn(const Bytes& bytes, size_t offset, size_t length) {
        return BN_bin2bn(bytes.data() + offset, static_cast<int>(length), BN_CTX_get(ctx_));
    }
    bool inRange(const BIGNUM* v) const { return !BN_is_zero(v) && BN_cmp(v, n_) < 0; }

    BN_CTX* ctx_ = BN_CTX_new();
    EC_GROUP* group_ = EC_GROUP_new_by_curve_name(NID_sm2);
    BIGNUM* p_ = nullptr;
    BIGNUM* n_ = BN_new();
};

// An OpenSSL SM2 key: its record, signatures over 32-byte digests with
// OpenSSL's signing, and OpenSSL's verification.
class OpenSslKey {
public:
    OpenSslKey() : key_(EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2")) {
        unsigned char point[65];
        size_t length = 0;
        EXPECT_EQ(EVP_PKEY_get_octet_string_param(key_, OSSL_PKEY_PARAM_PUB_KEY, point, 65, &length), 1);
        record_ = keyRecord(Bytes(point + 1, point + 65));
    }
    ~OpenSslKey() { EVP_PKEY_free(key_); }
    const Bytes& record() const { return record_; }

    Bytes sign(const Bytes& digest) const {
        EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(key_, nullptr);
        Bytes der(80);
        size_t length = der.size();
        EXPECT_EQ(EVP_PKEY_sign_init(ctx), 1);
        EXPECT_EQ(EVP_PKEY_sign(ctx, der.data(), &length, digest.data(), digest.size()), 1);
        EVP_PKEY_CTX_free(ctx);
        der.resize(length);
        return der;
    }

    Verdict verify(const Bytes& digest, const Bytes& der) const {
        EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(key_, nullptr);
        const bool valid = EVP_PKEY_verify_init(ctx) == 1 &&
                           EVP_PKEY_verify(ctx, der.data(), der.size(), digest.data(), digest.size()) == 1;
        EVP_PKEY_CTX_free(ctx);
        return valid ? kAccepted : kMismatch;
    }

private:
    EVP_PKEY* key_;
    Bytes record_;
};

// Each key is used twice in a row, once untampered, once tampered, in
// either order: the first call multiplies with a table built on the spot,
// the second with the tables kept for a key that comes back.
TEST(Sm2DifferentialTest, RandomSignaturesAgreeWithOpenSsl) {
    std::mt19937 rng(71);
    int accepted = 0;
    for (int i = 0; i < ZTUTIL_SM2_DIFF_CASES; ++i) {
        const OpenSslKey key;
        const Bytes digest = randomBytes(rng, 32);
        const Bytes der = key.sign(digest);
        // Flip one bit of the digest, or of the DER's last byte (s) or of r's.
        Bytes badDigest = digest, badDer = der;
        const int bit = static_cast<int>(rng() % 8);
        switch (i % 3) {
        case 0: badDigest[rng() % 32] ^= static_cast<unsigned char>(1 << bit); break;
        case 1: badDer.back() ^= static_cast<unsigned char>(1 << bit); break;
        default: badDer[6] ^= static_cast<unsigned char>(1 << bit); break;
        }
        for (int round = 0; round < 2; ++round) {
            const bool tampered = (round == 0) == (i % 2 == 0);
            const Bytes& d = tampered ? badDigest : digest;
            const Bytes& s = tampered ? badDer : der;
            const Verdict ours = sm2Verify(key.record(), d, s);
            ASSERT_EQ(kVerdictText[ours], kVerdictText[key.verify(d, s)])
                << "case " << i << (tampered ? " tampered" : "") << " digest " << testing::PrintToString(d);
            accepted += ours == kAccepted;
        }
    }
    EXPECT_EQ(accepted, ZTUTIL_SM2_DIFF_CASES);
}

TEST(Sm2DifferentialTest, EdgeCasesAgreeWithTheReference) {
    Reference reference;
    const OpenSslKey key;
    std::mt19937 rng(72);
    const Bytes digest = randomBytes(rng, 32);
    Bytes r, s;
    splitSignature(key.sign(digest), &r, &s);

    // n + delta, and n - v.
    BIGNUM* value = BN_new();
    auto nPlus = [&](long delta) {
        BN_copy(value, reference.n());
        delta < 0 ? BN_sub_word(value, static_cast<BN_ULONG>(-delta)) : BN_add_word(value, static_cast<BN_ULONG>(delta));
        return big(value);
    };
    auto nMinus = [&](const Bytes& v) {
        BN_bin2bn(v.data(), static_cast<int>(v.size()), value);
        BN_sub(value, reference.n(), value);
        return big(value);
    };
    const Bytes zero(32, 0), oneValue = concat({Bytes(31, 0), {1}}), two = concat({Bytes(31, 0), {2}});
    const Bytes nLess1 = nPlus(-1), n = nPlus(0), nPlus1 = nPlus(1), sForT0 = nMinus(r);

    // Keys G and -G with r = 2, s = n - 1, so t = 1: the last addition of
    // s G + t P meets -G + G (infinity) and -G + -G (doubling).
    const Bytes g = reference.multiple(BN_value_one());
    BN_sub(value, reference.n(), BN_value_one());
    const Bytes minusG = reference.multiple(value);
    const Bytes gRecord = keyRecord(g), minusGRecord = keyRecord(minusG);
    const Bytes minusGDigest = reference.digestFor(minusGRecord, two, nLess1);

    // A key with x + p as its x coordinate, which reduces to x.
    const Bytes kP = fromHex("FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFF");
    const Bytes small = reference.smallXPoint();
    const Bytes smallX(small.begin(), small.begin() + 32), smallY(small.begin() + 32, small.end());
    BN_bin2bn(smallX.data(), 32, value);
    BIGNUM* p = BN_bin2bn(kP.data(), 32, nullptr);
    BN_add(value, value, p);
    BN_free(p);
    const Bytes wideRecord = keyRecord(concat({big(value), smallY})), smallRecord = keyRecord(small);
    const Bytes rr = randomBytes(rng, 31), ss = randomBytes(rng, 31);
    const Bytes r2 = concat({{0}, rr}), s2 = concat({{0}, ss});
    const Bytes wideDigest = reference.digestFor(smallRecord, r2, s2);

    // Digests of 20 bytes are the number they spell; of 48, their first 32 bytes.
    const Bytes digest20 = randomBytes(rng, 20), digest48 = randomBytes(rng, 48);
    Bytes r20, s20, r48, s48, rHigh, sHigh, rAll, sAll;
    splitSignature(key.sign(concat({Bytes(12, 0), digest20})), &r20, &s20);
    splitSignature(key.sign(Bytes(digest48.begin(), digest48.begin() + 32)), &r48, &s48);
    // e = n - 2 (so e + x1 >= n), and e = 2^256 - 1 (e >= n).
    const Bytes nLess2 = nPlus(-2), allOnes(32, 0xFF);
    splitSignature(key.sign(nLess2), &rHigh, &sHigh);
    splitSignature(key.sign(allOnes), &rAll, &sAll);
    BN_free(value);

    // Off the curve: a changed y; y = p and y = 2^256 - 1, which reduce to 0
    // and to 2^224 + 2^96 - 2^64, with G's x.
    Bytes offCurve = key.record();
    offCurve[131] ^= 1;
    const Bytes gX(g.begin(), g.begin() + 32);
    const Bytes yIsP = keyRecord(concat({gX, kP})), yAllOnes = keyRecord(concat({gX, allOnes}));

    const struct {
        const char* what;
        Bytes key, digest, r, s;
        Verdict expected;
    } cases[] = {
        {"valid", key.record(), digest, r, s, kAccepted},
        {"r = 0", key.record(), digest, zero, s, kMismatch},
        {"r = 1", key.record(), digest, oneValue, s, kMismatch},
        {"r = n - 1", key.record(), digest, nLess1, s, kMismatch},
        {"r = n", key.record(), digest, n, s, kMismatch},
        {"r = n + 1", key.record(), digest, nPlus1, s, kMismatch},
        {"s = 0", key.record(), digest, r, zero, kMismatch},
        {"s = 1", key.record(), digest, r, oneValue, kMismatch},
        {"s = n - 1", key.record(), digest, r, nLess1, kMismatch},
        {"s = n", key.record(), digest, r, n, kMismatch},
        {"s = n + 1", key.record(), digest, r, nPlus1, kMismatch},
        {"r and s swapped", key.record(), digest, s, r, kMismatch},
        {"t = 0", key.record(), digest, r, sForT0, kMismatch},
        {"key G, sum at infinity", gRecord, minusGDigest, two, nLess1, kMismatch},
        {"key -G, doubling", minusGRecord, minusGDigest, two, nLess1, kAccepted},
        {"x below 2^32", smallRecord, wideDigest, r2, s2, kAccepted},
        {"x + p", wideRecord, wideDigest, r2, s2, kAccepted},
        {"y = p", yIsP, digest, r, s, kKeyRefused},
        {"y = 2^256 - 1", yAllOnes, digest, r, s, kKeyRefused},
        {"off the curve", offCurve, digest, r, s, kKeyRefused},
        {"(0, 0)", Bytes(132, 0), digest, r, s, kKeyRefused},
        {"20-byte digest", key.record(), digest20, r20, s20, kAccepted},
        {"20-byte digest, padded", key.record(), concat({Bytes(12, 0), digest20}), r20, s20, kAccepted},
        {"48-byte digest", key.record(), digest48, r48, s48, kAccepted},
        {"32 bytes of the 48-byte digest", key.record(), Bytes(digest48.begin(), digest48.begin() + 32), r48, s48,
         kAccepted},
        {"e = n - 2", key.record(), nLess2, rHigh, sHigh, kAccepted},
        {"e = 2^256 - 1", key.record(), allOnes, rAll, sAll, kAccepted},
    };
    for (const auto& c : cases) {
        const Verdict expected = reference.verify(c.key, c.digest, c.r, c.s);
        EXPECT_EQ(kVerdictText[expected], kVerdictText[c.expected]) << c.what << ": the case is not what it says";
        // Twice: once with a table built on the spot, once with the kept tables.
        for (int round = 0; round < 2; ++round)
            EXPECT_EQ(kVerdictText[sm2Verify(c.key, c.digest, derSignature(c.r, c.s))], kVerdictText[expected])
                << c.what << ", round " << round;
    }
}

}  // namespace
