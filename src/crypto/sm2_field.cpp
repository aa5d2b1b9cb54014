// Conversions into and out of Montgomery form, and inversion.
#include "crypto/sm2_field.h"

namespace ztutil {
namespace sm2 {
namespace {

// 2^512 mod p: multiplying by it brings a number into Montgomery form.
const U256 kMontgomerySquare = {
    {0x0000000200000003ull, 0x00000002FFFFFFFFull, 0x0000000100000001ull, 0x0000000400000002ull}};

FieldElement squareTimes(FieldElement a, int count) {
    for (int i = 0; i < count; ++i)
        a = fieldSqr(a);
    return a;
}

}  // namespace

FieldElement fieldFromInteger(const U256& value) {
    return FieldElement{montgomery::mul(reduceOnce(value, 0, kFieldPrime), kMontgomerySquare)};
}

FieldElement fieldFromBytes(const unsigned char bytes[32]) {
    return fieldFromInteger(fromBigEndian32(bytes));
}

U256 fieldToInteger(const FieldElement& a) {
    const U256 one = {{1, 0, 0, 0}};
    return montgomery::mul(a.mont, one);
}

void fieldToBytes(unsigned char bytes[32], const FieldElement& a) {
    toBigEndian32(bytes, fieldToInteger(a));
}

// p - 2 = 2^256 - 2^224 - 2^96 + 2^64 - 3, in bits from the top:
// 31 ones, a zero, 128 ones, 32 zeros, 32 ones, 30 ones, "01".
// xK below is a^(2^K - 1), a run of K ones.
FieldElement fieldInv(const FieldElement& a) {
    const FieldElement x1 = a;
    const FieldElement x2 = fieldMul(fieldSqr(x1), x1);
    const FieldElement x3 = fieldMul(fieldSqr(x2), x1);
    const FieldElement x6 = fieldMul(squareTimes(x3, 3), x3);
    const FieldElement x12 = fieldMul(squareTimes(x6, 6), x6);
    const FieldElement x15 = fieldMul(squareTimes(x12, 3), x3);
    const FieldElement x30 = fieldMul(squareTimes(x15, 15), x15);
    const FieldElement x31 = fieldMul(fieldSqr(x30), x1);
    const FieldElement x32 = fieldMul(fieldSqr(x31), x1);

    FieldElement t = fieldSqr(x31);  // 31 ones, 0
    for (int i = 0; i < 4; ++i)
        t = fieldMul(squareTimes(t, 32), x32);  // 128 ones
    t = squareTimes(t, 32);                      // 32 zeros
    t = fieldMul(squareTimes(t, 32), x32);       // 32 ones
    t = fieldMul(squareTimes(t, 30), x30);       // 30 ones
    return fieldMul(squareTimes(t, 2), x1);      // 01
}

}  // namespace sm2
}  // namespace ztutil
