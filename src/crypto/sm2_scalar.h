// Numbers modulo the order n of the SM2 generator: the signature values r
// and s, t = (r + s) mod n, and the signed-digit recoding of the scalars of
// a multiplication.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_SCALAR_H
#define ZTUTIL_SRC_CRYPTO_SM2_SCALAR_H

#include "crypto/u256.h"

namespace ztutil {
namespace sm2 {

extern const U256 kGroupOrder;  // n

// 1 <= value < n.
bool scalarInRange(const U256& value);
// (a + b) mod n for a, b < n.
U256 scalarAdd(const U256& a, const U256& b);

// Width-w NAF of a number below 2^256, least significant digit first: each
// digit is 0 or odd with |digit| < 2^(w-1), and of any w consecutive digits
// at most one is non-zero. sum(digit[i] * 2^i) equals the number.
const int kMaxWnafDigits = 257;
struct Wnaf {
    signed char digit[kMaxWnafDigits];
    int count;  // digits beyond it are 0
};
void wnafRecode(const U256& value, int width, Wnaf* out);

}  // namespace sm2
}  // namespace ztutil

#endif
