// The SM2 field, scalar and point layers against OpenSSL: BIGNUM modular
// arithmetic on boundary and random values, EC_POINT for the point formulas
// and their special cases.
#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>

#include "crypto/sm2_multiply.h"
#include "support/common.h"

using namespace ztutil_test;
using namespace ztutil::sm2;

namespace {

struct BnCtx {
    BN_CTX* ctx = BN_CTX_new();
    ~BnCtx() { BN_CTX_free(ctx); }
};

// Owned BIGNUM with conversions from and to 32-byte big-endian values.
struct Bn {
    BIGNUM* bn = BN_new();
    Bn() = default;
    explicit Bn(const Bytes& bytes) { BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), bn); }
    Bn(const Bn&) = delete;
    ~Bn() { BN_free(bn); }
    Bytes bytes() const {
        Bytes out(32);
        EXPECT_EQ(BN_bn2binpad(bn, out.data(), 32), 32);
        return out;
    }
};

Bytes bytesOf(const U256& value) {
    Bytes out(32);
    toBigEndian32(out.data(), value);
    return out;
}

const Bytes kP = fromHex("FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFF");
const Bytes kN = fromHex("FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123");

// 0, 1, 2, 2^64 - 1, 2^64, 2^224, 2^255, 2^256 - 1, values around p and n,
// and random ones.
std::vector<Bytes> testValues(int randomCount) {
    std::vector<Bytes> values;
    for (const char* hex : {"00", "01", "02", "FFFFFFFFFFFFFFFF", "010000000000000000",
                            "0100000000000000000000000000000000000000000000000000000000"})
        values.push_back(Bn(fromHex(hex)).bytes());
    values.push_back(fromHex("8000000000000000000000000000000000000000000000000000000000000000"));
    values.push_back(Bytes(32, 0xFF));
    for (const Bytes& modulus : {kP, kN}) {
        for (int delta = -2; delta <= 2; ++delta) {
            Bn value(modulus);
            delta < 0 ? BN_sub_word(value.bn, static_cast<BN_ULONG>(-delta)) : BN_add_word(value.bn, static_cast<BN_ULONG>(delta));
            values.push_back(value.bytes());
        }
    }
    std::mt19937 rng(61);
    for (int i = 0; i < randomCount; ++i)
        values.push_back(randomBytes(rng, 32));
    return values;
}

// The value mod p as the field layer returns it.
Bytes fieldBytes(const FieldElement& a) {
    Bytes out(32);
    fieldToBytes(out.data(), a);
    return out;
}

TEST(Sm2FieldTest, OperationsMatchBignumModP) {
    BnCtx c;
    Bn p(kP), expected;
    const std::vector<Bytes> values = testValues(12);
    for (const Bytes& a : values) {
        const FieldElement fa = fieldFromBytes(a.data());
        Bn bnA(a);
        BN_nnmod(expected.bn, bnA.bn, p.bn, c.ctx);
        ASSERT_EQ(fieldBytes(fa), expected.bytes()) << "from bytes";
        BN_mod_sqr(expected.bn, bnA.bn, p.bn, c.ctx);
        EXPECT_EQ(fieldBytes(fieldSqr(fa)), expected.bytes());
        BN_mod_sub(expected.bn, p.bn, bnA.bn, p.bn, c.ctx);
        EXPECT_EQ(fieldBytes(fieldNeg(fa)), expected.bytes());
        if (!fieldIsZero(fa)) {
            ASSERT_NE(BN_mod_inverse(expected.bn, bnA.bn, p.bn, c.ctx), nullptr);
            EXPECT_EQ(fieldBytes(fieldInv(fa)), expected.bytes());
        }
        for (const Bytes& b : values) {
            const FieldElement fb = fieldFromBytes(b.data());
            Bn bnB(b);
            BN_mod_add(expected.bn, bnA.bn, bnB.bn, p.bn, c.ctx);
            EXPECT_EQ(fieldBytes(fieldAdd(fa, fb)), expected.bytes());
            BN_mod_sub(expected.bn, bnA.bn, bnB.bn, p.bn, c.ctx);
            EXPECT_EQ(fieldBytes(fieldSub(fa, fb)), expected.bytes());
            BN_mod_mul(expected.bn, bnA.bn, bnB.bn, p.bn, c.ctx);
            EXPECT_EQ(fieldBytes(fieldMul(fa, fb)), expected.bytes());
        }
    }
    EXPECT_TRUE(fieldIsZero(fieldInv(fieldFromBytes(kP.data())))) << "0 has no inverse; 0 is returned";
}

TEST(Sm2ScalarTest, RangeAdditionAndRecodingMatchBignum) {
    BnCtx c;
    Bn n(kN), expected;
    const std::vector<Bytes> values = testValues(12);
    for (const Bytes& a : values) {
        const U256 va = fromBigEndian32(a.data());
        Bn bnA(a);
        EXPECT_EQ(scalarInRange(va), !BN_is_zero(bnA.bn) && BN_cmp(bnA.bn, n.bn) < 0) << BN_bn2hex(bnA.bn);
        for (const Bytes& b : values) {
            Bn bnB(b);
            if (BN_cmp(bnA.bn, n.bn) >= 0 || BN_cmp(bnB.bn, n.bn) >= 0)
                continue;
            BN_mod_add(expected.bn, bnA.bn, bnB.bn, n.bn, c.ctx);
            EXPECT_EQ(bytesOf(scalarAdd(va, fromBigEndian32(b.data()))), expected.bytes());
        }
        // Width-w NAF: digits odd and below 2^(w-1) in size, at most one
        // non-zero in any w in a row, and summing back to the value.
        for (int width : {5, 6, 8}) {
            Wnaf wnaf;
            wnafRecode(va, width, &wnaf);
            Bn sum, term;
            int lastNonZero = wnaf.count - 1 + width;
            for (int i = wnaf.count - 1; i >= 0; --i) {
                const int digit = wnaf.digit[i];
                BN_set_word(term.bn, static_cast<BN_ULONG>(digit < 0 ? -digit : digit));
                BN_lshift(term.bn, term.bn, i);
                digit < 0 ? BN_sub(sum.bn, sum.bn, term.bn) : BN_add(sum.bn, sum.bn, term.bn);
                if (digit == 0)
                    continue;
                EXPECT_TRUE(digit % 2 != 0 && digit < (1 << (width - 1)) && -digit < (1 << (width - 1)));
                EXPECT_GE(lastNonZero - i, width) << "digits " << lastNonZero << " and " << i;
                lastNonZero = i;
            }
            EXPECT_EQ(BN_cmp(sum.bn, bnA.bn), 0) << width << " " << BN_bn2hex(bnA.bn);
        }
    }
    // Numbers of any length with leading zeros fit; a non-zero byte beyond 32 does not.
    U256 value;
    Bytes long33 = concat({{0x00}, Bytes(32, 0xFF)});
    EXPECT_TRUE(fromBigEndian(long33.data(), long33.size(), &value));
    EXPECT_EQ(bytesOf(value), Bytes(32, 0xFF));
    long33[0] = 1;
    EXPECT_FALSE(fromBigEndian(long33.data(), long33.size(), &value));
}

// Affine x || y of an OpenSSL point, and of a Jacobian point of ours.
class Sm2PointTest : public ::testing::Test {
protected:
    void TearDown() override {
        EC_GROUP_free(group_);
        BN_CTX_free(ctx_);
    }
    Bytes opensslPoint(const BIGNUM* k) {
        EC_POINT* point = EC_POINT_new(group_);
        EC_POINT_mul(group_, point, k, nullptr, nullptr, ctx_);
        Bytes out(65);
        const bool finite = EC_POINT_is_at_infinity(group_, point) == 0;
        if (finite)
            EC_POINT_point2oct(group_, point, POINT_CONVERSION_UNCOMPRESSED, out.data(), 65, ctx_);
        EC_POINT_free(point);
        return finite ? Bytes(out.begin() + 1, out.end()) : Bytes();
    }
    Bytes opensslPoint(unsigned long k) {
        Bn bn;
        BN_set_word(bn.bn, k);
        return opensslPoint(bn.bn);
    }
    static Bytes ours(const JacobianPoint& point) {
        if (isInfinity(point))
            return Bytes();
        AffinePoint affine;
        toAffineBatch(&affine, &point, 1);
        return concat({fieldBytes(affine.x), fieldBytes(affine.y)});
    }
    static AffinePoint affineOf(const Bytes& xy) {
        return AffinePoint{fieldFromBytes(xy.data()), fieldFromBytes(xy.data() + 32)};
    }

    EC_GROUP* group_ = EC_GROUP_new_by_curve_name(NID_sm2);
    BN_CTX* ctx_ = BN_CTX_new();
};

TEST_F(Sm2PointTest, FormulasAndTheirSpecialCases) {
    const AffinePoint g = generator();
    const JacobianPoint g2 = pointDouble(toJacobian(g)), g3 = pointAddMixed(g2, g);
    AffinePoint g3Affine;
    toAffineBatch(&g3Affine, &g3, 1);
    ASSERT_TRUE(onCurve(g) && onCurve(g3Affine));
    EXPECT_FALSE(onCurve(AffinePoint{g.x, fieldAdd(g.y, kFieldOne)}));
    const struct {
        const char* what;
        JacobianPoint sum;
        long multiple;  // of G; 0 for the point at infinity
    } cases[] = {
        {"2G", g2, 2},
        {"2G + G", g3, 3},
        {"3G + 2G", pointAdd(g3, g2), 5},
        {"G + G, mixed", pointAddMixed(toJacobian(g), g), 2},
        {"3G + 3G", pointAdd(g3, g3), 6},
        {"-G + G", pointAddMixed(negate(toJacobian(g)), g), 0},
        {"3G - 3G", pointAdd(g3, negate(g3)), 0},
        {"O + G", pointAddMixed(infinity(), g), 1},
        {"O + 3G, 3G + O", pointAdd(pointAdd(infinity(), g3), infinity()), 3},
        {"2O", pointDouble(infinity()), 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ours(c.sum), c.multiple == 0 ? Bytes() : opensslPoint(c.multiple)) << c.what;
}

TEST_F(Sm2PointTest, DoubleScalarProductsMatchEcPointMul) {
    std::mt19937 rng(62);
    Bn n(kN), k, sum;
    BN_rand_range(k.bn, n.bn);
    const Bytes keyXy = opensslPoint(k.bn);
    const AffinePoint key = affineOf(keyXy);
    AffinePoint rows[kSpacedParts * tableSize(6)];
    buildSpacedTables(rows, key, 6);
    AffinePoint baseRows[kSpacedParts * tableSize(8)];
    buildSpacedTables(baseRows, generator(), 8);
    const SpacedTables base = {baseRows, 8}, cached = {rows, 6};
    std::vector<Bytes> scalars = {Bn(fromHex("01")).bytes(), Bn(fromHex("7F7F7F7F")).bytes(), Bytes(32, 0xFF)};
    for (int i = 0; i < 6; ++i)
        scalars.push_back(randomBytes(rng, 32));
    for (const Bytes& s : scalars)
        for (const Bytes& t : scalars) {
            // s + t k, reduced mod n, times G.
            Bn bnS(s), bnT(t);
            BN_mod_mul(sum.bn, bnT.bn, k.bn, n.bn, ctx_);
            BN_mod_add(sum.bn, sum.bn, bnS.bn, n.bn, ctx_);
            const Bytes expected = opensslPoint(sum.bn);
            const U256 vs = fromBigEndian32(s.data()), vt = fromBigEndian32(t.data());
            EXPECT_EQ(ours(mulAddFresh(base, vs, key, vt)), expected);
            EXPECT_EQ(ours(mulAddSpaced(base, vs, cached, vt)), expected);
        }
}

}  // namespace
