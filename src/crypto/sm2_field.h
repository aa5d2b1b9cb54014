// Arithmetic modulo the SM2 prime p = 2^256 - 2^224 - 2^96 + 2^64 - 1.
//
// Elements are held in Montgomery form (a * 2^256 mod p), always fully
// reduced (below p): every function takes and returns canonical values, so
// elements can be compared limb by limb. Conversion happens only at the
// edges, from and to big-endian bytes. The ring operations are inline (the
// point formulas are made of them); conversions and inversion are not.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_FIELD_H
#define ZTUTIL_SRC_CRYPTO_SM2_FIELD_H

#include "crypto/sm2_montgomery.h"

namespace ztutil {
namespace sm2 {

struct FieldElement {
    U256 mont;  // the value times 2^256, mod p
};

constexpr U256 kFieldPrime = montgomery::kPrime;  // p
// 1 (2^256 mod p in Montgomery form)
constexpr FieldElement kFieldOne = {
    {{0x0000000000000001ull, 0x00000000FFFFFFFFull, 0x0000000000000000ull, 0x0000000100000000ull}}};

// A 32-byte big-endian number reduced mod p (numbers >= p lose one p, as
// every 256-bit number is below 2p), in Montgomery form.
FieldElement fieldFromBytes(const unsigned char bytes[32]);
// The same for a number below 2^256 given as limbs.
FieldElement fieldFromInteger(const U256& value);
// The canonical value (below p) as an integer or as 32 big-endian bytes.
U256 fieldToInteger(const FieldElement& a);
void fieldToBytes(unsigned char bytes[32], const FieldElement& a);
// a^-1 by Fermat (a^(p-2)); 0 for a = 0.
FieldElement fieldInv(const FieldElement& a);

inline FieldElement fieldMul(const FieldElement& a, const FieldElement& b) {
    return FieldElement{montgomery::mul(a.mont, b.mont)};
}

inline FieldElement fieldSqr(const FieldElement& a) { return FieldElement{montgomery::sqr(a.mont)}; }

inline FieldElement fieldAdd(const FieldElement& a, const FieldElement& b) {
    U256 sum;
    const u64 carry = add256(&sum, a.mont, b.mont);
    return FieldElement{reduceOnce(sum, carry, kFieldPrime)};
}

// a - b, plus p after a borrow.
inline FieldElement fieldSub(const FieldElement& a, const FieldElement& b) {
    U256 difference;
    const u64 borrow = sub256(&difference, a.mont, b.mont);
    FieldElement out;
    add256(&out.mont, difference, multipleOf(borrow != 0, kFieldPrime));
    return out;
}

inline FieldElement fieldNeg(const FieldElement& a) { return fieldSub(FieldElement{{{0, 0, 0, 0}}}, a); }

inline bool fieldIsZero(const FieldElement& a) { return isZero256(a.mont); }
inline bool fieldEqual(const FieldElement& a, const FieldElement& b) {
    return equal256(a.mont, b.mont);
}

// 2a and 3a, for the point formulas.
inline FieldElement fieldDouble(const FieldElement& a) { return fieldAdd(a, a); }
inline FieldElement fieldTriple(const FieldElement& a) { return fieldAdd(fieldAdd(a, a), a); }

// a / 2: a itself when even, else a + p (even, below 2p), shifted right.
inline FieldElement fieldHalf(const FieldElement& a) {
    U256 sum;
    const u64 carry = add256(&sum, a.mont, multipleOf((a.mont.limb[0] & 1) != 0, kFieldPrime));
    FieldElement out;
    for (int i = 0; i < 3; ++i)
        out.mont.limb[i] = (sum.limb[i] >> 1) | (sum.limb[i + 1] << 63);
    out.mont.limb[3] = (sum.limb[3] >> 1) | (carry << 63);
    return out;
}

}  // namespace sm2
}  // namespace ztutil

#endif
