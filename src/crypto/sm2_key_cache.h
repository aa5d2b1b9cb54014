// s*G + t*Q for a verification key Q, with a small per-thread cache of the
// spaced tables of keys that come back: a host checks many signatures of
// one seal or certificate in a row.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_KEY_CACHE_H
#define ZTUTIL_SRC_CRYPTO_SM2_KEY_CACHE_H

#include "crypto/sm2_multiply.h"

namespace ztutil {
namespace sm2 {

// Each thread remembers the last kRememberedKeys keys it verified with and
// keeps tables for the kCachedKeys most recently used keys among those seen
// at least twice: about 17 KiB per thread that verifies, allocated on its
// first verification and released when it ends. No locks: nothing is shared.
const int kCachedKeys = 4;
const int kRememberedKeys = 8;
const int kKeyWidth = 6;  // four rows of 16 points, 4 KiB per key

JacobianPoint mulAddWithKey(const SpacedTables& base, const U256& s, const AffinePoint& key,
                            const U256& t);

}  // namespace sm2
}  // namespace ztutil

#endif
