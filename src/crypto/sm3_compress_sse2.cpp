// SM3 compression with the message expansion in SSE2 registers.
//
// The vector unit produces four words of W per step from a sliding window of
// the last sixteen, alongside the scalar rounds, and hands each group of four
// rounds its Wj and W'j through a small stack buffer that the rounds read as
// memory operands.
#if defined(__SSE2__)

#include <emmintrin.h>

#include "crypto/sm3_compress.h"
#include "crypto/sm3_rounds.h"

namespace ztutil {
namespace sm3 {
namespace {

inline __m128i rotlVector(__m128i x, int n) {
    return _mm_or_si128(_mm_slli_epi32(x, n), _mm_srli_epi32(x, 32 - n));
}

inline __m128i p1Vector(__m128i x) {
    return _mm_xor_si128(x, _mm_xor_si128(rotlVector(x, 15), rotlVector(x, 23)));
}

// Four big-endian words.
inline __m128i loadWords(const unsigned char* p) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
    v = _mm_shufflelo_epi16(v, _MM_SHUFFLE(2, 3, 0, 1));
    return _mm_shufflehi_epi16(v, _MM_SHUFFLE(2, 3, 0, 1));
}

// Words k..k+3 of the eight words low[0..3], high[0..3].
template <int k>
inline __m128i wordsFrom(__m128i low, __m128i high) {
    return _mm_or_si128(_mm_srli_si128(low, 4 * k), _mm_slli_si128(high, 16 - 4 * k));
}

// W[j-16..j-1], four words per register.
struct ExpansionWindow {
    __m128i w0, w1, w2, w3;

    // Wj-16..Wj-13 and W'j-16..W'j-13: the words of the next group of rounds.
    void storeGroup(std::uint32_t group[8]) const {
        _mm_store_si128(reinterpret_cast<__m128i*>(group), w0);
        _mm_store_si128(reinterpret_cast<__m128i*>(group + 4), _mm_xor_si128(w0, w1));
        // The rounds read the buffer back from memory rather than having the
        // compiler move each word out of the vector registers.
        asm("" : "+m"(*reinterpret_cast<std::uint32_t(*)[8]>(group)));
    }

    // Computes Wj..Wj+3 and slides the window by four words. Three lanes
    // have their Wj+k-3 in the window already; the last needs Wj, the first
    // new word, which is added afterwards through P1's linearity:
    // P1(x ^ y) = P1(x) ^ P1(y).
    void advance() {
        const __m128i minus13 = wordsFrom<3>(w0, w1);
        const __m128i minus9 = wordsFrom<3>(w1, w2);
        const __m128i minus6 = wordsFrom<2>(w2, w3);
        const __m128i minus3 = _mm_srli_si128(w3, 4);  // top lane 0 for now
        __m128i next = p1Vector(_mm_xor_si128(_mm_xor_si128(w0, minus9), rotlVector(minus3, 15)));
        next = _mm_xor_si128(next, _mm_xor_si128(rotlVector(minus13, 7), minus6));
        const __m128i firstInTopLane = rotlVector(_mm_slli_si128(next, 12), 15);
        next = _mm_xor_si128(next, p1Vector(firstInTopLane));
        slide(next);
    }

    void slide(__m128i next) {
        w0 = w1;
        w1 = w2;
        w2 = w3;
        w3 = next;
    }
};

inline void compressBlock(std::uint32_t state[8], const unsigned char* block) {
    ExpansionWindow window{loadWords(block), loadWords(block + 16), loadWords(block + 32),
                           loadWords(block + 48)};
    alignas(16) std::uint32_t group[8];

    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    std::uint32_t e = state[4], f = state[5], g = state[6], h = state[7];

#pragma GCC unroll 16
    for (int j = 0; j < 16; j += 4) {
        window.storeGroup(group);
        window.advance();
        SM3_ROUNDS4(j, group, SM3_FF0, SM3_GG0);
    }
#pragma GCC unroll 16
    for (int j = 16; j < 52; j += 4) {
        window.storeGroup(group);
        window.advance();
        SM3_ROUNDS4(j, group, SM3_FF1, SM3_GG1);
    }
    // W52..W67 are all in the window; only W'j remains to be formed.
#pragma GCC unroll 16
    for (int j = 52; j < 64; j += 4) {
        window.storeGroup(group);
        window.slide(_mm_setzero_si128());
        SM3_ROUNDS4(j, group, SM3_FF1, SM3_GG1);
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

void compressBlocksSse2(std::uint32_t state[8], const unsigned char* data, std::size_t blocks) {
    for (; blocks > 0; --blocks, data += 64)
        compressBlock(state, data);
}

}  // namespace sm3
}  // namespace ztutil

#endif
