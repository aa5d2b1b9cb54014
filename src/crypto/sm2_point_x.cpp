// Comparing the affine x coordinate of a Jacobian point with a value, without
// the field inversion that converting the point to affine form would take.
//
// EC_POINT_get_Jprojective_coordinates_GFp is deprecated in OpenSSL 3; it is
// still the only way to read a point's coordinates without that inversion.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "crypto/sm2_point_x.h"

namespace ztutil {
namespace sm2 {

int affineXEquals(const EC_GROUP* group, const EC_POINT* point, const BIGNUM* value, BN_CTX* ctx) {
    const BIGNUM* p = EC_GROUP_get0_field(group);
    if (p == nullptr || BN_is_negative(value) || BN_cmp(value, p) >= 0)
        return 0;
    BN_CTX_start(ctx);
    BIGNUM* x = BN_CTX_get(ctx);
    BIGNUM* z = BN_CTX_get(ctx);
    BIGNUM* scaled = BN_CTX_get(ctx);
    int result = -1;
    // x = X / Z^2, so x equals the value exactly when X = value * Z^2 (mod p)
    // for a finite point (Z != 0).
    if (scaled != nullptr &&
        EC_POINT_get_Jprojective_coordinates_GFp(group, point, x, nullptr, z, ctx) == 1 &&
        BN_mod_sqr(scaled, z, p, ctx) == 1 && BN_mod_mul(scaled, scaled, value, p, ctx) == 1)
        result = !BN_is_zero(z) && BN_cmp(scaled, x) == 0 ? 1 : 0;
    BN_CTX_end(ctx);
    return result;
}

}  // namespace sm2
}  // namespace ztutil
