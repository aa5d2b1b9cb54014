// Building and checking the SM2 curve group. The steps and checks are those
// every verification relies on; they run once, on first use, and the result
// is shared read-only by all threads (OpenSSL groups may be used
// concurrently as long as nobody changes them).
#include "crypto/sm2_curve.h"

#include <memory>

namespace ztutil {
namespace sm2 {

const char kHexP[] = "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFF";
const char kHexA[] = "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFC";
const char kHexB[] = "28E9FA9E9D9F5E344D5A9E4BCF6509A7F39789F515AB8F92DDBCBD414D940E93";
const char kHexGx[] = "32C4AE2C1F1981195F9904466A39C9948FE30BBFF2660BE1715A4589334C74C7";
const char kHexGy[] = "BC3736A2F4F6779C59BDCEE36B692153D0A9877CC62A474002DF32E52139F0A0";
const char kHexN[] = "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123";

namespace {

struct BnCtxFree {
    void operator()(BN_CTX* ctx) const { BN_CTX_free(ctx); }
};
struct BnFree {
    void operator()(BIGNUM* bn) const { BN_free(bn); }
};
struct PointFree {
    void operator()(EC_POINT* point) const { EC_POINT_free(point); }
};
struct GroupFree {
    void operator()(EC_GROUP* group) const { EC_GROUP_free(group); }
};
using BnCtxPtr = std::unique_ptr<BN_CTX, BnCtxFree>;
using BnPtr = std::unique_ptr<BIGNUM, BnFree>;
using PointPtr = std::unique_ptr<EC_POINT, PointFree>;
using GroupPtr = std::unique_ptr<EC_GROUP, GroupFree>;

BnPtr fromHex(const char* hex) {
    BIGNUM* bn = nullptr;
    if (BN_hex2bn(&bn, hex) == 0)
        return nullptr;
    return BnPtr(bn);
}

// Group with generator, order and cofactor, after every consistency check.
GroupPtr buildGroup(BN_CTX* ctx) {
    BnPtr p = fromHex(kHexP), a = fromHex(kHexA), b = fromHex(kHexB);
    BnPtr gx = fromHex(kHexGx), gy = fromHex(kHexGy), n = fromHex(kHexN);
    BnPtr readX(BN_new()), readY(BN_new());
    if (!p || !a || !b || !gx || !gy || !n || !readX || !readY)
        return nullptr;
    if (BN_check_prime(p.get(), ctx, nullptr) != 1)
        return nullptr;
    // A prime that is not a NIST prime gets OpenSSL's Montgomery method.
    GroupPtr group(EC_GROUP_new_curve_GFp(p.get(), a.get(), b.get(), ctx));
    if (!group)
        return nullptr;

    PointPtr generator(EC_POINT_new(group.get()));
    if (!generator ||
        EC_POINT_set_compressed_coordinates(group.get(), generator.get(), gx.get(), 0, ctx) != 1 ||
        EC_POINT_is_on_curve(group.get(), generator.get(), ctx) != 1 ||
        EC_GROUP_set_generator(group.get(), generator.get(), n.get(), BN_value_one()) != 1)
        return nullptr;
    if (EC_POINT_get_affine_coordinates(group.get(), EC_GROUP_get0_generator(group.get()),
                                        readX.get(), readY.get(), ctx) != 1 ||
        BN_cmp(readY.get(), gy.get()) != 0)
        return nullptr;
    if (EC_GROUP_get_degree(group.get()) != 256 ||
        EC_GROUP_get_order(group.get(), readX.get(), ctx) != 1)
        return nullptr;

    PointPtr product(EC_POINT_new(group.get()));
    if (!product || EC_POINT_mul(group.get(), product.get(), n.get(), nullptr, nullptr, ctx) != 1 ||
        EC_POINT_is_at_infinity(group.get(), product.get()) != 1)
        return nullptr;
    return group;
}

Curve* buildCurve() {
    BnCtxPtr ctx(BN_CTX_new());
    if (!ctx)
        return nullptr;
    GroupPtr group = buildGroup(ctx.get());
    BnPtr order = fromHex(kHexN);
    if (!group || !order)
        return nullptr;
    // Kept for the life of the process.
    std::unique_ptr<Curve> curve(new Curve);
    if (!curve->generatorTable.build(group.get(), EC_GROUP_get0_generator(group.get()),
                                     kGeneratorWidth, true, ctx.get()))
        return nullptr;
    curve->group = group.release();
    curve->order = order.release();
    return curve.release();
}

}  // namespace

const Curve* curve() {
    static const Curve* const shared = buildCurve();
    return shared;
}

}  // namespace sm2
}  // namespace ztutil
