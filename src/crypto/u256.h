// Unsigned 256-bit integers as four 64-bit limbs, least significant first,
// and the carry-chain steps the SM2 field and scalar code is built from.
// Products and carries go through unsigned __int128, which GCC and clang
// turn into MUL/UMULH and add-with-carry on 64-bit Arm and x86-64 alike.
#ifndef ZTUTIL_SRC_CRYPTO_U256_H
#define ZTUTIL_SRC_CRYPTO_U256_H

#include <cstddef>
#include <cstdint>

// GCC 12 turns the portable carry chains below into flag round trips
// (SETC and re-add) on x86-64; its add-with-carry intrinsics there give
// plain ADC/SBB chains (every x86-64 CPU has ADC/SBB). Other targets compile
// the portable form (GCC 12 for 64-bit Arm makes ADDS/CSET of it, correct
// but not ADCS chains); defining ZTUTIL_PORTABLE_CARRY compiles it on
// x86-64 too, to measure it there.
#if defined(__x86_64__) && !defined(ZTUTIL_PORTABLE_CARRY)
#include <x86intrin.h>
#define ZTUTIL_X86_CARRY 1
#else
#define ZTUTIL_X86_CARRY 0
#endif

namespace ztutil {
namespace sm2 {

using u64 = std::uint64_t;
using u128 = unsigned __int128;

struct U256 {
    u64 limb[4];
};

// a + b + carry; the carry out (0 or 1) replaces *carry.
inline u64 addCarry(u64 a, u64 b, u64* carry) {
#if ZTUTIL_X86_CARRY
    unsigned long long sum;
    *carry = _addcarry_u64(static_cast<unsigned char>(*carry), a, b, &sum);
    return sum;
#else
    // Two overflow checks rather than a 128-bit sum: GCC keeps them in the
    // flags (ADDS/CSET/CINC on 64-bit Arm) instead of assembling and
    // splitting a 128-bit value, about a sixth fewer instructions.
    u64 partial, sum;
    const bool first = __builtin_add_overflow(a, b, &partial);
    const bool second = __builtin_add_overflow(partial, *carry, &sum);
    *carry = static_cast<u64>(first) + second;
    return sum;
#endif
}

// a - b - borrow; the borrow out (0 or 1) replaces *borrow.
inline u64 subBorrow(u64 a, u64 b, u64* borrow) {
#if ZTUTIL_X86_CARRY
    unsigned long long difference;
    *borrow = _subborrow_u64(static_cast<unsigned char>(*borrow), a, b, &difference);
    return difference;
#else
    u64 partial, difference;
    const bool first = __builtin_sub_overflow(a, b, &partial);
    const bool second = __builtin_sub_overflow(partial, *borrow, &difference);
    *borrow = static_cast<u64>(first) + second;
    return difference;
#endif
}

// out = a + b; returns the carry out of the top limb.
inline u64 add256(U256* out, const U256& a, const U256& b) {
    u64 carry = 0;
    for (int i = 0; i < 4; ++i)
        out->limb[i] = addCarry(a.limb[i], b.limb[i], &carry);
    return carry;
}

// out = a - b (mod 2^256); returns the borrow out of the top limb.
inline u64 sub256(U256* out, const U256& a, const U256& b) {
    u64 borrow = 0;
    for (int i = 0; i < 4; ++i)
        out->limb[i] = subBorrow(a.limb[i], b.limb[i], &borrow);
    return borrow;
}

// a < b as unsigned numbers.
inline bool less256(const U256& a, const U256& b) {
    U256 unused;
    return sub256(&unused, a, b) != 0;
}

inline bool isZero256(const U256& a) {
    return (a.limb[0] | a.limb[1] | a.limb[2] | a.limb[3]) == 0;
}

inline bool equal256(const U256& a, const U256& b) {
    return ((a.limb[0] ^ b.limb[0]) | (a.limb[1] ^ b.limb[1]) | (a.limb[2] ^ b.limb[2]) |
            (a.limb[3] ^ b.limb[3])) == 0;
}

// lo(a * b + c + *carry), the high half replacing *carry. Never overflows:
// (2^64 - 1)^2 + 2 (2^64 - 1) = 2^128 - 1.
inline u64 mulAdd(u64 a, u64 b, u64 c, u64* carry) {
    const u128 sum = static_cast<u128>(a) * b + c + *carry;
    *carry = static_cast<u64>(sum >> 64);
    return static_cast<u64>(sum);
}

// m where `condition` holds, else 0, limb by limb. Written as a choice of
// constants, GCC and clang make conditional moves of it, which leave the
// flags alone; masking with AND would clobber the carry of the chain the
// result goes into, and GCC then saves and restores that carry around it.
inline U256 multipleOf(bool condition, const U256& m) {
    U256 out;
    for (int i = 0; i < 4; ++i)
        out.limb[i] = condition ? m.limb[i] : 0;
    return out;
}

// a - m when a >= m or when `extra` (a bit above a's top limb) is set, else
// a; for values below 2m this is the final step of a reduction: m is
// subtracted and, when that borrowed, added back.
inline U256 reduceOnce(const U256& a, u64 extra, const U256& m) {
    U256 less;
    u64 borrow = sub256(&less, a, m);
    subBorrow(extra, 0, &borrow);  // still set: a + extra 2^256 < m
    U256 out;
    add256(&out, less, multipleOf(borrow != 0, m));
    return out;
}

// The 32 big-endian bytes of a number and back.
inline U256 fromBigEndian32(const unsigned char bytes[32]) {
    U256 out;
    for (int i = 0; i < 4; ++i) {
        u64 limb = 0;
        for (int j = 0; j < 8; ++j)
            limb = (limb << 8) | bytes[(3 - i) * 8 + j];
        out.limb[i] = limb;
    }
    return out;
}

inline void toBigEndian32(unsigned char bytes[32], const U256& value) {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 8; ++j)
            bytes[(3 - i) * 8 + j] = static_cast<unsigned char>(value.limb[i] >> (56 - 8 * j));
}

// A big-endian number of any length; false when it does not fit 256 bits
// (leading zero bytes are allowed in any number).
inline bool fromBigEndian(const unsigned char* bytes, std::size_t size, U256* out) {
    unsigned char padded[32] = {0};
    for (; size > 32; --size, ++bytes)
        if (*bytes != 0)
            return false;
    for (std::size_t i = 0; i < size; ++i)
        padded[32 - size + i] = bytes[i];
    *out = fromBigEndian32(padded);
    return true;
}

}  // namespace sm2
}  // namespace ztutil

#endif
