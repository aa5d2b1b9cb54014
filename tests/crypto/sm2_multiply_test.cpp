// The interleaved multiplication and the inversion-free x comparison behind
// SM2Verify, against OpenSSL's own EC_POINT_mul.
#include <openssl/bn.h>
#include <openssl/ec.h>

#include "crypto/sm2_curve.h"
#include "crypto/sm2_multiply.h"
#include "crypto/sm2_point_x.h"
#include "support/common.h"

namespace {

class Sm2MultiplyTest : public ::testing::Test {
protected:
    void SetUp() override {
        BIGNUM* k = BN_new();
        BN_rand(k, 250, 0, 0);
        EC_POINT_mul(group_, point_, k, nullptr, nullptr, ctx_);
        BN_free(k);
    }
    void TearDown() override {
        for (EC_POINT* p : {point_, expected_, actual_})
            EC_POINT_free(p);
        BN_CTX_free(ctx_);
    }
    bool multiplyAdd(const BIGNUM* g, const BIGNUM* p) {
        return ztutil::sm2::multiplyAdd(group_, curve_->generatorTable, actual_, g, point_, p, ctx_);
    }
    // multiplyAdd against EC_POINT_mul for one pair of scalars.
    void check(const BIGNUM* g, const BIGNUM* p) {
        ASSERT_TRUE(multiplyAdd(g, p));
        ASSERT_EQ(EC_POINT_mul(group_, expected_, g, point_, p, ctx_), 1);
        EXPECT_EQ(EC_POINT_cmp(group_, actual_, expected_, ctx_), 0);
    }

    const ztutil::sm2::Curve* curve_ = ztutil::sm2::curve();
    EC_GROUP* group_ = curve_->group;
    BN_CTX* ctx_ = BN_CTX_new();
    EC_POINT* point_ = EC_POINT_new(group_);
    EC_POINT* expected_ = EC_POINT_new(group_);
    EC_POINT* actual_ = EC_POINT_new(group_);
};

TEST_F(Sm2MultiplyTest, MatchesOpenSslForRandomAndEdgeScalars) {
    BIGNUM* g = BN_new();
    BIGNUM* p = BN_new();
    for (int i = 0; i < 40; ++i) {
        BN_rand(g, 256, -1, 0);
        BN_rand(p, 256, -1, 0);
        check(g, p);
    }
    BIGNUM* edges[] = {BN_new(), BN_new(), BN_new(), BN_new(), BN_new(), BN_new()};
    BN_one(edges[1]);
    BN_copy(edges[2], curve_->order);
    BN_sub_word(edges[2], 1);           // n - 1
    BN_set_bit(edges[3], 255);          // 2^255
    BN_set_bit(edges[4], 256);
    BN_sub_word(edges[4], 1);           // 2^256 - 1: every wNAF digit negative
    BN_set_word(edges[5], 0x7F7F7F7F);  // runs that end exactly on a window
    for (BIGNUM* a : edges)
        for (BIGNUM* b : edges)
            check(a, b);
    for (BIGNUM* a : edges)
        BN_free(a);
    BN_set_bit(g, 300);
    EXPECT_FALSE(multiplyAdd(g, p)) << "scalars beyond 256 bits are refused rather than cut";
    BN_free(g);
    BN_free(p);
}

TEST_F(Sm2MultiplyTest, XComparisonWithoutConversion) {
    BIGNUM* two = BN_new();
    BIGNUM* x = BN_new();
    BN_set_word(two, 2);
    ASSERT_TRUE(multiplyAdd(two, two));  // a Jacobian point (Z != 1)
    ASSERT_EQ(EC_POINT_get_affine_coordinates(group_, actual_, x, nullptr, ctx_), 1);
    EXPECT_EQ(ztutil::sm2::affineXEquals(group_, actual_, x, ctx_), 1);
    BN_add_word(x, 1);
    EXPECT_EQ(ztutil::sm2::affineXEquals(group_, actual_, x, ctx_), 0);
    BN_sub_word(x, 1);
    BN_add(x, x, EC_GROUP_get0_field(group_));
    EXPECT_EQ(ztutil::sm2::affineXEquals(group_, actual_, x, ctx_), 0) << "x + p is not a field element";
    EC_POINT_set_to_infinity(group_, actual_);
    BN_zero(x);
    EXPECT_EQ(ztutil::sm2::affineXEquals(group_, actual_, x, ctx_), 0) << "the point at infinity has no x";
    BN_free(x);
    BN_free(two);
}

}  // namespace
