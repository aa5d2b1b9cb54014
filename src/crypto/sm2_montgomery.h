// Montgomery multiplication and squaring modulo the SM2 prime
// p = 2^256 - 2^224 - 2^96 + 2^64 - 1 with R = 2^256, on raw limbs. Inline,
// so that the point formulas compile them in place and interleave
// independent products.
//
// p = -1 mod 2^64, so the Montgomery factor -p^-1 mod 2^64 is 1: a
// reduction round takes the lowest limb m as it is and adds m * p, which
// clears that limb. Adding m * p is adding m at limbs 1 and 4 (m 2^64 and
// m 2^256) and subtracting m 2^96 + m 2^224, that is lo = m << 32 and
// hi = m >> 32 at limbs 1 to 4: two short carry chains, no products.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_MONTGOMERY_H
#define ZTUTIL_SRC_CRYPTO_SM2_MONTGOMERY_H

#include "crypto/u256.h"

namespace ztutil {
namespace sm2 {
namespace montgomery {

constexpr U256 kPrime = {
    {0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFF00000000ull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFEFFFFFFFFull}};

// One reduction round on four limbs: (t + m p) / 2^64 with m = t0 is below
// 2^256 when t is, and m itself becomes the top limb. Arithmetic is modulo
// 2^256: the true result fits, so a carry lost between the two chains is
// given back by the second.
inline void reduceRound(u64& t0, u64& t1, u64& t2, u64& t3) {
    const u64 m = t0, lo = m << 32, hi = m >> 32;
    u64 carry = 0;
    t1 = addCarry(t1, m, &carry);
    t2 = addCarry(t2, 0, &carry);
    t3 = addCarry(t3, 0, &carry);
    u64 top = addCarry(m, 0, &carry);
    u64 borrow = 0;
    t0 = subBorrow(t1, lo, &borrow);
    t1 = subBorrow(t2, hi, &borrow);
    t2 = subBorrow(t3, lo, &borrow);
    t3 = subBorrow(top, hi, &borrow);
}

// (low, high, overflow) += a * b: one column step of a product. With the
// x86-64 carry intrinsics as one carry chain; elsewhere as a 128-bit
// addition (ADDS/ADCS on 64-bit Arm) and one comparison for the overflow.
inline void addProduct(u64 a, u64 b, u64& low, u64& high, u64& overflow) {
#if ZTUTIL_X86_CARRY
    u64 productHigh = 0;
    const u64 productLow = mulAdd(a, b, 0, &productHigh);
    u64 carry = 0;
    low = addCarry(low, productLow, &carry);
    high = addCarry(high, productHigh, &carry);
    overflow = addCarry(overflow, 0, &carry);
#else
    const u128 product = static_cast<u128>(a) * b;
    const u128 sum = ((static_cast<u128>(high) << 64) | low) + product;
    overflow += sum < product;
    low = static_cast<u64>(sum);
    high = static_cast<u64>(sum >> 64);
#endif
}

// The column sum's lowest limb; the rest moves down one limb.
inline u64 takeColumn(u64& low, u64& high, u64& overflow) {
    const u64 limb = low;
    low = high;
    high = overflow;
    overflow = 0;
    return limb;
}

// Four rounds on the low half t0..t3 (which leave it at most p), added to
// the high half t4..t7 (below p for a product of two numbers below p).
inline U256 reduceWide(u64 t0, u64 t1, u64 t2, u64 t3, const U256& high) {
    for (int round = 0; round < 4; ++round)
        reduceRound(t0, t1, t2, t3);
    U256 sum;
    const u64 carry = add256(&sum, high, U256{{t0, t1, t2, t3}});
    return reduceOnce(sum, carry, kPrime);
}

// a b / 2^256 mod p for a, b < p, fully reduced: the 512-bit product by
// columns (product scanning, each product added into a three-limb column
// sum), then the reduction of its low half.
inline U256 mul(const U256& a, const U256& b) {
    const u64* x = a.limb;
    const u64* y = b.limb;
    u64 low = 0, high = 0, overflow = 0;
    addProduct(x[0], y[0], low, high, overflow);
    const u64 t0 = takeColumn(low, high, overflow);
    addProduct(x[0], y[1], low, high, overflow);
    addProduct(x[1], y[0], low, high, overflow);
    const u64 t1 = takeColumn(low, high, overflow);
    addProduct(x[0], y[2], low, high, overflow);
    addProduct(x[1], y[1], low, high, overflow);
    addProduct(x[2], y[0], low, high, overflow);
    const u64 t2 = takeColumn(low, high, overflow);
    addProduct(x[0], y[3], low, high, overflow);
    addProduct(x[1], y[2], low, high, overflow);
    addProduct(x[2], y[1], low, high, overflow);
    addProduct(x[3], y[0], low, high, overflow);
    const u64 t3 = takeColumn(low, high, overflow);
    addProduct(x[1], y[3], low, high, overflow);
    addProduct(x[2], y[2], low, high, overflow);
    addProduct(x[3], y[1], low, high, overflow);
    const u64 t4 = takeColumn(low, high, overflow);
    addProduct(x[2], y[3], low, high, overflow);
    addProduct(x[3], y[2], low, high, overflow);
    const u64 t5 = takeColumn(low, high, overflow);
    addProduct(x[3], y[3], low, high, overflow);
    return reduceWide(t0, t1, t2, t3, U256{{t4, t5, low, high}});
}

// a^2 / 2^256 mod p for a < p: the six cross products once, doubled, the
// four squares on the diagonal, then four rounds on the low half (which
// leave it at most p) added to the high half (below p).
inline U256 sqr(const U256& a) {
    const u64* x = a.limb;
    u64 t1, t2, t3, t4, t5, t6, t7, high = 0;
    t1 = mulAdd(x[0], x[1], 0, &high);
    t2 = mulAdd(x[0], x[2], 0, &high);
    t3 = mulAdd(x[0], x[3], 0, &high);
    t4 = high;
    high = 0;
    t3 = mulAdd(x[1], x[2], t3, &high);
    t4 = mulAdd(x[1], x[3], t4, &high);
    t5 = high;
    high = 0;
    t5 = mulAdd(x[2], x[3], t5, &high);
    t6 = high;

    u64 carry = 0;
    t1 = addCarry(t1, t1, &carry);
    t2 = addCarry(t2, t2, &carry);
    t3 = addCarry(t3, t3, &carry);
    t4 = addCarry(t4, t4, &carry);
    t5 = addCarry(t5, t5, &carry);
    t6 = addCarry(t6, t6, &carry);
    t7 = carry;

    u64 square[8];
    for (int i = 0; i < 4; ++i) {
        u64 squareHigh = 0;
        square[2 * i] = mulAdd(x[i], x[i], 0, &squareHigh);
        square[2 * i + 1] = squareHigh;
    }
    u64 t0 = square[0];
    carry = 0;
    t1 = addCarry(t1, square[1], &carry);
    t2 = addCarry(t2, square[2], &carry);
    t3 = addCarry(t3, square[3], &carry);
    t4 = addCarry(t4, square[4], &carry);
    t5 = addCarry(t5, square[5], &carry);
    t6 = addCarry(t6, square[6], &carry);
    t7 = addCarry(t7, square[7], &carry);

    return reduceWide(t0, t1, t2, t3, U256{{t4, t5, t6, t7}});
}

}  // namespace montgomery
}  // namespace sm2
}  // namespace ztutil

#endif
