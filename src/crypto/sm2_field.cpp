// Montgomery arithmetic modulo the SM2 prime with R = 2^256.
//
// p = -1 mod 2^64, so the Montgomery factor -p^-1 mod 2^64 is 1: each
// reduction round takes the lowest limb m as it is and adds m * p, which
// clears that limb. And since
//     (m * p + m) / 2^64 = m * (2^192 - 2^160 - 2^32 + 1),
// adding m * p and dropping the zero limb is "shift down one limb, add
// m * (2^192 - 2^160 - 2^32 + 1)", made of shifts and a short carry chain
// instead of four more multiplications.
#include "crypto/sm2_field.h"

namespace ztutil {
namespace sm2 {

const U256 kFieldPrime = {
    {0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFF00000000ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFEFFFFFFFFull}};
const FieldElement kFieldOne = {
    {{0x0000000000000001ull, 0x00000000FFFFFFFFull, 0x0000000000000000ull, 0x0000000100000000ull}}};

namespace {

// 2^512 mod p: multiplying by it brings a number into Montgomery form.
const U256 kMontgomerySquare = {
    {0x0000000200000003ull, 0x00000002FFFFFFFFull, 0x0000000100000001ull, 0x0000000400000002ull}};

// Low and high halves of a 64 x 64-bit product.
inline u64 mulHalves(u64 a, u64 b, u64* high) {
    const u128 product = static_cast<u128>(a) * b;
    *high = static_cast<u64>(product >> 64);
    return static_cast<u64>(product);
}

// row = a * b for one limb a: five limbs, the products' halves summed in
// one carry chain (a * b < 2^320, so the top limb takes the last carry).
inline void multiplyRow(u64 row[5], u64 a, const U256& b) {
    u64 high[4];
    u64 low[4];
    for (int j = 0; j < 4; ++j)
        low[j] = mulHalves(a, b.limb[j], &high[j]);
    u64 carry = 0;
    row[0] = low[0];
    row[1] = addCarry(low[1], high[0], &carry);
    row[2] = addCarry(low[2], high[1], &carry);
    row[3] = addCarry(low[3], high[2], &carry);
    row[4] = high[3] + carry;
}

// t = a * b, 512 bits: four rows, each added in with one carry chain.
inline void multiplyWide(u64 t[8], const U256& a, const U256& b) {
    multiplyRow(t, a.limb[0], b);
    for (int i = 1; i < 4; ++i) {
        u64 row[5];
        multiplyRow(row, a.limb[i], b);
        u64 carry = 0;
        for (int j = 0; j < 4; ++j)
            t[i + j] = addCarry(t[i + j], row[j], &carry);
        t[i + 4] = row[4] + carry;
    }
}

// t = a^2: the six cross products once, doubled, plus the four squares on
// the diagonal.
inline void squareWide(u64 t[8], const U256& a) {
    const u64* x = a.limb;
    u64 h01, h02, h03, h12, h13, h23;
    const u64 l01 = mulHalves(x[0], x[1], &h01);
    const u64 l02 = mulHalves(x[0], x[2], &h02);
    const u64 l03 = mulHalves(x[0], x[3], &h03);
    const u64 l12 = mulHalves(x[1], x[2], &h12);
    const u64 l13 = mulHalves(x[1], x[3], &h13);
    const u64 l23 = mulHalves(x[2], x[3], &h23);
    // Cross products by column: t1..t6.
    u64 carry = 0;
    t[1] = l01;
    t[2] = addCarry(l02, h01, &carry);
    t[3] = addCarry(l03, h02, &carry);
    t[4] = addCarry(h03, l13, &carry);
    t[5] = addCarry(h13, l23, &carry);
    t[6] = h23 + carry;
    carry = 0;
    t[3] = addCarry(t[3], l12, &carry);
    t[4] = addCarry(t[4], h12, &carry);
    t[5] = addCarry(t[5], 0, &carry);
    t[6] = addCarry(t[6], 0, &carry);
    // Doubled, the top bit going to t7.
    carry = 0;
    for (int k = 1; k < 7; ++k)
        t[k] = addCarry(t[k], t[k], &carry);
    t[7] = carry;
    // Plus the squares.
    u64 high[4];
    u64 low[4];
    for (int i = 0; i < 4; ++i)
        low[i] = mulHalves(x[i], x[i], &high[i]);
    carry = 0;
    t[0] = low[0];
    t[1] = addCarry(t[1], high[0], &carry);
    for (int i = 1; i < 4; ++i) {
        t[2 * i] = addCarry(t[2 * i], low[i], &carry);
        t[2 * i + 1] = addCarry(t[2 * i + 1], high[i], &carry);
    }
}

// One reduction round on four limbs: (x + m * p) / 2^64 with m = x_0. The
// result stays below 2^256 (x / 2^64 < 2^192 and m * (2^192 - 2^160 - 2^32
// + 1) < 2^256 - 2^224), so no fifth limb is needed.
inline void reduceRound(u64 x[4]) {
    const u64 m = x[0];
    const u64 low = m << 32;
    const u64 high = m >> 32;
    // v = m * (2^192 - 2^160 - 2^32 + 1) = [m, 0, 0, m] - [low, high, low, high]
    u64 borrow = 0;
    const u64 v0 = subBorrow(m, low, &borrow);
    const u64 v1 = subBorrow(0, high, &borrow);
    const u64 v2 = subBorrow(0, low, &borrow);
    const u64 v3 = subBorrow(m, high, &borrow);  // v >= 0: no borrow out
    u64 carry = 0;
    x[0] = addCarry(x[1], v0, &carry);
    x[1] = addCarry(x[2], v1, &carry);
    x[2] = addCarry(x[3], v2, &carry);
    x[3] = addCarry(0, v3, &carry);  // below 2^256: no carry out
}

// t / 2^256 mod p for t < p^2 (Montgomery reduction), fully reduced. The
// low half is reduced on its own and added to the high half: the sum is
// below 2p, so one conditional subtraction finishes it.
inline FieldElement reduceWide(const u64 t[8]) {
    u64 low[4] = {t[0], t[1], t[2], t[3]};
    for (int round = 0; round < 4; ++round)
        reduceRound(low);
    U256 sum;
    const U256 high = {{t[4], t[5], t[6], t[7]}};
    const U256 reducedLow = {{low[0], low[1], low[2], low[3]}};
    const u64 carry = add256(&sum, high, reducedLow);
    FieldElement out;
    reduceOnce(&out.mont, sum, carry, kFieldPrime);
    return out;
}

FieldElement montgomeryMul(const U256& a, const U256& b) {
    u64 t[8];
    multiplyWide(t, a, b);
    return reduceWide(t);
}

FieldElement squareTimes(FieldElement a, int count) {
    for (int i = 0; i < count; ++i)
        a = fieldSqr(a);
    return a;
}

}  // namespace

FieldElement fieldFromInteger(const U256& value) {
    U256 reduced;
    reduceOnce(&reduced, value, 0, kFieldPrime);
    return montgomeryMul(reduced, kMontgomerySquare);
}

FieldElement fieldFromBytes(const unsigned char bytes[32]) {
    return fieldFromInteger(fromBigEndian32(bytes));
}

U256 fieldToInteger(const FieldElement& a) {
    const U256 one = {{1, 0, 0, 0}};
    return montgomeryMul(a.mont, one).mont;
}

void fieldToBytes(unsigned char bytes[32], const FieldElement& a) {
    toBigEndian32(bytes, fieldToInteger(a));
}

FieldElement fieldAdd(const FieldElement& a, const FieldElement& b) {
    U256 sum;
    const u64 carry = add256(&sum, a.mont, b.mont);
    FieldElement out;
    reduceOnce(&out.mont, sum, carry, kFieldPrime);
    return out;
}

FieldElement fieldSub(const FieldElement& a, const FieldElement& b) {
    FieldElement out;
    const u64 borrow = sub256(&out.mont, a.mont, b.mont);
    // Add p back after a borrow (mask is all ones then).
    const u64 mask = ~borrow + 1;
    const U256 correction = {{kFieldPrime.limb[0] & mask, kFieldPrime.limb[1] & mask,
                              kFieldPrime.limb[2] & mask, kFieldPrime.limb[3] & mask}};
    add256(&out.mont, out.mont, correction);
    return out;
}

FieldElement fieldNeg(const FieldElement& a) {
    const FieldElement zero = {{{0, 0, 0, 0}}};
    return fieldSub(zero, a);
}

FieldElement fieldMul(const FieldElement& a, const FieldElement& b) {
    return montgomeryMul(a.mont, b.mont);
}

FieldElement fieldSqr(const FieldElement& a) {
    u64 t[8];
    squareWide(t, a.mont);
    return reduceWide(t);
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
