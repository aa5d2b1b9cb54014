// s*G + t*P as one interleaved run of doublings (Shamir's trick), each
// scalar in width-w NAF, the additions taken from tables of odd multiples.
//
// Two shapes of table:
// - odd multiples 1, 3, ..., 2^(w-1) - 1 of a point, for one 256-bit scalar
//   over 256 doublings;
// - spaced tables: the same for each of Q, 2^64 Q, 2^128 Q and 2^192 Q, so
//   that a scalar split into four 64-bit parts needs 64 doublings only.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_MULTIPLY_H
#define ZTUTIL_SRC_CRYPTO_SM2_MULTIPLY_H

#include "crypto/sm2_point.h"
#include "crypto/sm2_scalar.h"

namespace ztutil {
namespace sm2 {

const int kSpacedParts = 4;
const int kSpacedPartBits = 64;

// Number of entries in a table of width w.
constexpr int tableSize(int width) { return 1 << (width - 2); }

// Spaced tables of `point` (finite): kSpacedParts rows of tableSize(width)
// affine points, row j holding the odd multiples of 2^(64 j) point.
void buildSpacedTables(AffinePoint* rows, const AffinePoint& point, int width);

// A point's spaced tables with their width.
struct SpacedTables {
    const AffinePoint* rows;
    int width;
};

// s*G + t*P with G's spaced tables (only the first row is used) and a table
// of P's odd multiples built on the spot.
JacobianPoint mulAddFresh(const SpacedTables& base, const U256& s, const AffinePoint& point,
                          const U256& t);
// s*G + t*P with spaced tables for both.
JacobianPoint mulAddSpaced(const SpacedTables& base, const U256& s, const SpacedTables& point,
                           const U256& t);

}  // namespace sm2
}  // namespace ztutil

#endif
