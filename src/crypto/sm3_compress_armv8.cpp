// SM3 compression with the SM3 instructions of Armv8.2 (FEAT_SM3).
//
// The instructions keep the working words in two vectors, A B C D and
// E F G H, each with A (E) in the top lane: SM3SS1 forms SS1, SM3TT1A/B
// and SM3TT2A/B perform one round on each half, SM3PARTW1/2 expand four
// message words at a time. This file alone is compiled for Armv8.2 with the
// SM3/SM4 extension and runs only where the CPU reports the instructions, so
// everything in it except the entry point has internal linkage: no inline
// function compiled here for the newer architecture can stand in for a
// copy that other files share.
#if defined(__aarch64__)

#include <arm_neon.h>

#include "crypto/sm3_compress.h"
#include "crypto/sm3_rounds.h"

namespace ztutil {
namespace sm3 {
namespace {

// Four big-endian message words.
uint32x4_t loadWords(const unsigned char* p) {
    return vreinterpretq_u32_u8(vrev32q_u8(vld1q_u8(p)));
}

// Lanes 0..3 become 3..0: between memory order (A first) and the
// instructions' order (A in the top lane).
uint32x4_t reverseLanes(uint32x4_t v) {
    v = vrev64q_u32(v);
    return vextq_u32(v, v, 2);
}

// Wj+16..Wj+19 from the window Wj..Wj+15. SM3PARTW1 forms P1(Wj-16 ^ Wj-9 ^
// (Wj-3 <<< 15)) for the four lanes, the last one from the first lane's
// partial result; SM3PARTW2 adds (Wj-13 <<< 7) ^ Wj-6 and corrects the last
// lane for what the first one lacked.
uint32x4_t expand(uint32x4_t w0, uint32x4_t w1, uint32x4_t w2, uint32x4_t w3) {
    const uint32x4_t partial = vsm3partw1q_u32(w0, vextq_u32(w1, w2, 3), w3);
    return vsm3partw2q_u32(partial, vextq_u32(w2, w3, 2), vextq_u32(w0, w1, 3));
}

// Round j + lane; `constants` holds Tj..Tj+3 (rotated), `w` Wj..Wj+3 and
// `wPrime` W'j..W'j+3. Rounds 0-15 (xorRounds) use XOR for both boolean
// functions, the others majority and choice.
template <int lane, bool xorRounds>
void oneRound(uint32x4_t& abcd, uint32x4_t& efgh, uint32x4_t constants, uint32x4_t w, uint32x4_t wPrime) {
    const uint32x4_t ss1 = vsm3ss1q_u32(abcd, efgh, vdupq_laneq_u32(constants, lane));
    if constexpr (xorRounds) {
        abcd = vsm3tt1aq_u32(abcd, ss1, wPrime, lane);
        efgh = vsm3tt2aq_u32(efgh, ss1, w, lane);
    } else {
        abcd = vsm3tt1bq_u32(abcd, ss1, wPrime, lane);
        efgh = vsm3tt2bq_u32(efgh, ss1, w, lane);
    }
}

template <bool xorRounds>
void fourRounds(uint32x4_t& abcd, uint32x4_t& efgh, int j, uint32x4_t w, uint32x4_t wNext) {
    const uint32x4_t constants = vld1q_u32(kRound.t + j);
    const uint32x4_t wPrime = veorq_u32(w, wNext);
    oneRound<0, xorRounds>(abcd, efgh, constants, w, wPrime);
    oneRound<1, xorRounds>(abcd, efgh, constants, w, wPrime);
    oneRound<2, xorRounds>(abcd, efgh, constants, w, wPrime);
    oneRound<3, xorRounds>(abcd, efgh, constants, w, wPrime);
}

void compressBlock(uint32x4_t& abcd, uint32x4_t& efgh, const unsigned char* block) {
    const uint32x4_t abcdBefore = abcd, efghBefore = efgh;
    // W[j..j+15] for the group of rounds starting at j.
    uint32x4_t w0 = loadWords(block), w1 = loadWords(block + 16), w2 = loadWords(block + 32),
               w3 = loadWords(block + 48);
#pragma GCC unroll 16
    for (int j = 0; j < 64; j += 4) {
        if (j < 16)
            fourRounds<true>(abcd, efgh, j, w0, w1);
        else
            fourRounds<false>(abcd, efgh, j, w0, w1);
        // The last word any round needs is W67, the last of the group made at j = 48.
        const uint32x4_t next = j <= 48 ? expand(w0, w1, w2, w3) : vdupq_n_u32(0);
        w0 = w1;
        w1 = w2;
        w2 = w3;
        w3 = next;
    }
    abcd = veorq_u32(abcd, abcdBefore);
    efgh = veorq_u32(efgh, efghBefore);
}

}  // namespace

void compressBlocksArmSm3(std::uint32_t state[8], const unsigned char* data, std::size_t blocks) {
    uint32x4_t abcd = reverseLanes(vld1q_u32(state));
    uint32x4_t efgh = reverseLanes(vld1q_u32(state + 4));
    for (; blocks > 0; --blocks, data += 64)
        compressBlock(abcd, efgh, data);
    vst1q_u32(state, reverseLanes(abcd));
    vst1q_u32(state + 4, reverseLanes(efgh));
}

}  // namespace sm3
}  // namespace ztutil

#endif
