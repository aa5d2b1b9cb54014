// Arithmetic modulo the SM2 prime p = 2^256 - 2^224 - 2^96 + 2^64 - 1.
//
// Elements are held in Montgomery form (a * 2^256 mod p), always fully
// reduced (below p): every function takes and returns canonical values, so
// elements can be compared limb by limb. Conversion happens only at the
// edges, from and to big-endian bytes.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_FIELD_H
#define ZTUTIL_SRC_CRYPTO_SM2_FIELD_H

#include "crypto/u256.h"

namespace ztutil {
namespace sm2 {

struct FieldElement {
    U256 mont;  // the value times 2^256, mod p
};

extern const U256 kFieldPrime;    // p
extern const FieldElement kFieldOne;  // 1 (2^256 mod p in Montgomery form)

// A 32-byte big-endian number reduced mod p (numbers >= p lose one p, as
// every 256-bit number is below 2p), in Montgomery form.
FieldElement fieldFromBytes(const unsigned char bytes[32]);
// The same for a number below 2^256 given as limbs.
FieldElement fieldFromInteger(const U256& value);
// The canonical value (below p) as an integer or as 32 big-endian bytes.
U256 fieldToInteger(const FieldElement& a);
void fieldToBytes(unsigned char bytes[32], const FieldElement& a);

FieldElement fieldAdd(const FieldElement& a, const FieldElement& b);
FieldElement fieldSub(const FieldElement& a, const FieldElement& b);
FieldElement fieldNeg(const FieldElement& a);
FieldElement fieldMul(const FieldElement& a, const FieldElement& b);
FieldElement fieldSqr(const FieldElement& a);
// a^-1 by Fermat (a^(p-2)); 0 for a = 0.
FieldElement fieldInv(const FieldElement& a);

inline bool fieldIsZero(const FieldElement& a) { return isZero256(a.mont); }
inline bool fieldEqual(const FieldElement& a, const FieldElement& b) {
    return equal256(a.mont, b.mont);
}

// 2a and 3a, for the point formulas.
inline FieldElement fieldDouble(const FieldElement& a) { return fieldAdd(a, a); }
inline FieldElement fieldTriple(const FieldElement& a) { return fieldAdd(fieldAdd(a, a), a); }

}  // namespace sm2
}  // namespace ztutil

#endif
