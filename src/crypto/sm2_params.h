// The SM2 recommended curve's published constants as big-endian bytes.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_PARAMS_H
#define ZTUTIL_SRC_CRYPTO_SM2_PARAMS_H

namespace ztutil {
namespace sm2 {

// a || b || xG || yG, 32 bytes each: the order in which they enter Z.
extern const unsigned char kCurveParameters[128];
const unsigned char* const kCurveB = kCurveParameters + 32;
const unsigned char* const kGeneratorX = kCurveParameters + 64;
const unsigned char* const kGeneratorY = kCurveParameters + 96;

}  // namespace sm2
}  // namespace ztutil

#endif
