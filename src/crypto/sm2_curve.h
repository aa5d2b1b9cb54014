// The SM2 recommended curve as an OpenSSL prime-field group, built, checked
// and given its generator table once per process.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_CURVE_H
#define ZTUTIL_SRC_CRYPTO_SM2_CURVE_H

#include <openssl/bn.h>
#include <openssl/ec.h>

#include "crypto/sm2_multiply.h"

namespace ztutil {
namespace sm2 {

struct Curve {
    EC_GROUP* group;                // prime field with Montgomery arithmetic
    BIGNUM* order;                  // n
    OddMultiples generatorTable;    // odd multiples of G, affine
};

// The shared, read-only curve; null when it could not be built or one of
// its checks failed (then every verification fails). Thread-safe.
const Curve* curve();

// The curve constants as upper-case hexadecimal text.
extern const char kHexP[];
extern const char kHexA[];
extern const char kHexB[];
extern const char kHexGx[];
extern const char kHexGy[];
extern const char kHexN[];

}  // namespace sm2
}  // namespace ztutil

#endif
