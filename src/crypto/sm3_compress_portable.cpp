// SM3 compression in plain C++. The message words live in a ring of sixteen
// that is expanded four words ahead of the rounds; with the rounds unrolled
// every ring index is a constant, so the ring stays in registers.
#include <cstring>

#include "crypto/sm3_compress.h"
#include "crypto/sm3_rounds.h"

namespace ztutil {
namespace sm3 {
namespace {

inline std::uint32_t loadBigEndian(const unsigned char* p) {
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return __builtin_bswap32(word);
}

// Wn from the ring holding Wn-16..Wn-1 (each Wk at index k mod 16).
inline std::uint32_t expandedWord(const std::uint32_t ring[16], int n) {
    return p1(ring[(n - 16) & 15] ^ ring[(n - 9) & 15] ^ rotl(ring[(n - 3) & 15], 15)) ^
           rotl(ring[(n - 13) & 15], 7) ^ ring[(n - 6) & 15];
}

inline void compressBlock(std::uint32_t state[8], const unsigned char* block) {
    std::uint32_t ring[16];
    for (int j = 0; j < 16; ++j)
        ring[j] = loadBigEndian(block + 4 * j);

    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    std::uint32_t e = state[4], f = state[5], g = state[6], h = state[7];
    std::uint32_t group[8];
#pragma GCC unroll 16
    for (int j = 0; j < 64; j += 4) {
        for (int k = 0; k < 4; ++k) {
            const int ahead = j + k + 4;  // W'j+k needs Wj+k+4
            if (ahead >= 16)
                ring[ahead & 15] = expandedWord(ring, ahead);
            group[k] = ring[(j + k) & 15];
            group[4 + k] = ring[(j + k) & 15] ^ ring[ahead & 15];
        }
        if (j < 16) {
            SM3_ROUNDS4(j, group, SM3_FF0, SM3_GG0);
        } else {
            SM3_ROUNDS4(j, group, SM3_FF1, SM3_GG1);
        }
    }

    state[0] ^= a;
    state[1] ^= b;
    state[2] ^= c;
    state[3] ^= d;
    state[4] ^= e;
    state[5] ^= f;
    state[6] ^= g;
    state[7] ^= h;
}

}  // namespace

void compressBlocksPortable(std::uint32_t state[8], const unsigned char* data, std::size_t blocks) {
    for (; blocks > 0; --blocks, data += 64)
        compressBlock(state, data);
}

}  // namespace sm3
}  // namespace ztutil
