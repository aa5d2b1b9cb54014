#include "crypto/sm2_scalar.h"

namespace ztutil {
namespace sm2 {

const U256 kGroupOrder = {
    {0x53BBF40939D54123ull, 0x7203DF6B21C6052Bull, 0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFEFFFFFFFFull}};

bool scalarInRange(const U256& value) {
    return !isZero256(value) && less256(value, kGroupOrder);
}

U256 scalarAdd(const U256& a, const U256& b) {
    U256 sum;
    const u64 carry = add256(&sum, a, b);
    return reduceOnce(sum, carry, kGroupOrder);
}

void wnafRecode(const U256& value, int width, Wnaf* out) {
    // A fifth limb takes the carry when a negative digit is added back.
    u64 x[5] = {value.limb[0], value.limb[1], value.limb[2], value.limb[3], 0};
    const u64 windowMask = (u64(1) << width) - 1;
    const int half = 1 << (width - 1);
    int count = 0;
    while ((x[0] | x[1] | x[2] | x[3] | x[4]) != 0) {
        int digit = 0;
        if (x[0] & 1) {
            digit = static_cast<int>(x[0] & windowMask);
            if (digit >= half)
                digit -= 1 << width;
            // Subtract the digit: its low bits are x's, so a positive digit
            // never borrows; a negative one is an addition with carry.
            if (digit > 0) {
                x[0] -= static_cast<u64>(digit);
            } else {
                u64 carry = 0;
                x[0] = addCarry(x[0], static_cast<u64>(-digit), &carry);
                for (int i = 1; i < 5; ++i)
                    x[i] = addCarry(x[i], 0, &carry);
            }
        }
        out->digit[count++] = static_cast<signed char>(digit);
        for (int i = 0; i < 4; ++i)
            x[i] = (x[i] >> 1) | (x[i + 1] << 63);
        x[4] >>= 1;
    }
    out->count = count;
    for (int i = count; i < kMaxWnafDigits; ++i)
        out->digit[i] = 0;
}

}  // namespace sm2
}  // namespace ztutil
