// The affine x coordinate of a point, compared without converting the point.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_POINT_X_H
#define ZTUTIL_SRC_CRYPTO_SM2_POINT_X_H

#include <openssl/bn.h>
#include <openssl/ec.h>

namespace ztutil {
namespace sm2 {

// 1 when `point` is finite and its affine x equals `value` (a field element,
// 0 <= value < p), 0 when not (also for the point at infinity and for values
// outside the field), -1 when the computation failed.
int affineXEquals(const EC_GROUP* group, const EC_POINT* point, const BIGNUM* value, BN_CTX* ctx);

}  // namespace sm2
}  // namespace ztutil

#endif
