// SM3 round function shared by the compression implementations.
//
// The eight working words are never shuffled: each round writes its results
// into the variables that the next round reads under other names, so four
// consecutive rounds cycle the names back to where they started and a group
// of four rounds keeps the caller's names a..h.
#ifndef ZTUTIL_SRC_CRYPTO_SM3_ROUNDS_H
#define ZTUTIL_SRC_CRYPTO_SM3_ROUNDS_H

#include <cstdint>

namespace ztutil {
namespace sm3 {

inline std::uint32_t rotl(std::uint32_t x, unsigned n) {
    return (x << n) | (x >> ((32 - n) & 31));
}

constexpr std::uint32_t rotlConst(std::uint32_t x, unsigned n) {
    return n == 0 ? x : (x << n) | (x >> (32 - n));
}

// Tj <<< (j mod 32), one word per round.
struct RoundConstants {
    std::uint32_t t[64];
};

constexpr RoundConstants makeRoundConstants() {
    RoundConstants constants{};
    for (unsigned j = 0; j < 64; ++j)
        constants.t[j] = rotlConst(j < 16 ? 0x79CC4519u : 0x7A879D8Au, j % 32);
    return constants;
}

constexpr RoundConstants kRound = makeRoundConstants();

inline std::uint32_t p0(std::uint32_t x) {
    return x ^ rotl(x, 9) ^ rotl(x, 17);
}

inline std::uint32_t p1(std::uint32_t x) {
    return x ^ rotl(x, 15) ^ rotl(x, 23);
}

}  // namespace sm3
}  // namespace ztutil

// Rounds 0-15 use XOR for both boolean functions, rounds 16-63 majority and
// choice.
#define SM3_FF0(x, y, z) ((x) ^ (y) ^ (z))
#define SM3_GG0(x, y, z) ((x) ^ (y) ^ (z))
#define SM3_FF1(x, y, z) (((x) & ((y) | (z))) | ((y) & (z)))
#define SM3_GG1(x, y, z) ((((y) ^ (z)) & (x)) ^ (z))

// Keeps the compiler from regrouping a sum. The additions of a round are
// ordered so that the operands that come late (those depending on the new A
// and E of the previous round) are added last, which keeps the chain from one
// round to the next short.
#define SM3_PIN(x) asm("" : "+r"(x))

// One round; `wj` is Wj and `wpj` is W'j = Wj ^ Wj+4.
#define SM3_ROUND(A, B, C, D, E, F, G, H, tj, wj, wpj, FF, GG)        \
    do {                                                              \
        const std::uint32_t a12 = ::ztutil::sm3::rotl(A, 12);         \
        std::uint32_t a12t = a12 + (tj);                              \
        SM3_PIN(a12t);                                                \
        const std::uint32_t ss1 = ::ztutil::sm3::rotl(a12t + E, 7);   \
        std::uint32_t dw = D + (wpj);                                 \
        SM3_PIN(dw);                                                  \
        std::uint32_t sum1 = FF(A, B, C) + dw;                        \
        SM3_PIN(sum1);                                                \
        const std::uint32_t tt1 = sum1 + (ss1 ^ a12);                 \
        std::uint32_t hw = H + (wj);                                  \
        SM3_PIN(hw);                                                  \
        std::uint32_t sum2 = ss1 + hw;                                \
        SM3_PIN(sum2);                                                \
        const std::uint32_t tt2 = sum2 + GG(E, F, G);                 \
        B = ::ztutil::sm3::rotl(B, 9);                                \
        D = tt1;                                                      \
        F = ::ztutil::sm3::rotl(F, 19);                               \
        H = ::ztutil::sm3::p0(tt2);                                   \
    } while (0)

// Rounds j..j+3; group[0..3] holds Wj..Wj+3 and group[4..7] W'j..W'j+3.
#define SM3_ROUNDS4(j, group, FF, GG)                                                                \
    SM3_ROUND(a, b, c, d, e, f, g, h, ::ztutil::sm3::kRound.t[(j)], group[0], group[4], FF, GG);     \
    SM3_ROUND(d, a, b, c, h, e, f, g, ::ztutil::sm3::kRound.t[(j) + 1], group[1], group[5], FF, GG); \
    SM3_ROUND(c, d, a, b, g, h, e, f, ::ztutil::sm3::kRound.t[(j) + 2], group[2], group[6], FF, GG); \
    SM3_ROUND(b, c, d, a, f, g, h, e, ::ztutil::sm3::kRound.t[(j) + 3], group[3], group[7], FF, GG)

#endif
