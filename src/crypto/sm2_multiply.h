// s*G + t*P on the SM2 curve with OpenSSL's point operations: one shared run
// of doublings, the generator's additions taken from a fixed table of its
// odd multiples (built once with the curve) and the point's from a small
// table built per call, both indexed by width-w NAF digits.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_MULTIPLY_H
#define ZTUTIL_SRC_CRYPTO_SM2_MULTIPLY_H

#include <openssl/bn.h>
#include <openssl/ec.h>

#include <vector>

namespace ztutil {
namespace sm2 {

// Odd multiples 1, 3, ..., 2^(width-1) - 1 of a point and their negatives.
struct OddMultiples {
    int width = 0;
    std::vector<EC_POINT*> positive;
    std::vector<EC_POINT*> negative;

    OddMultiples() = default;
    OddMultiples(const OddMultiples&) = delete;
    OddMultiples& operator=(const OddMultiples&) = delete;
    ~OddMultiples();

    // Fills the table for `point`; with `affine` the entries are brought to
    // affine form (Z = 1), which makes each later addition cheaper but costs
    // an inversion per entry, so it is worth it only for a table kept long.
    bool build(const EC_GROUP* group, const EC_POINT* point, int width, bool affine, BN_CTX* ctx);
};

// Width of the generator's table and of the per-call table.
const int kGeneratorWidth = 8;
const int kPointWidth = 5;

// result = gScalar * G + pScalar * point, for scalars of at most 256 bits
// (larger ones are refused). The result is left in Jacobian form.
bool multiplyAdd(const EC_GROUP* group, const OddMultiples& generatorTable, EC_POINT* result,
                 const BIGNUM* gScalar, const EC_POINT* point, const BIGNUM* pScalar, BN_CTX* ctx);

}  // namespace sm2
}  // namespace ztutil

#endif
