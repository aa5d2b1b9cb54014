// The generator's spaced tables, shared by every verification.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_BASE_TABLE_H
#define ZTUTIL_SRC_CRYPTO_SM2_BASE_TABLE_H

#include "crypto/sm2_multiply.h"

namespace ztutil {
namespace sm2 {

// Width 8: four rows of 64 affine points (16 KiB), about 256 / 9
// additions for s in a one-off verification.
const int kBaseWidth = 8;

// Built on first use and then read-only, so threads share it without locks;
// null when the curve's self-check failed (G on the curve, n G at infinity
// through both multiplications), and then every verification fails.
const SpacedTables* baseTables();

}  // namespace sm2
}  // namespace ztutil

#endif
