// SM3 streaming interface, one-shot digest and the checked digest.
#include "ztutil/sm3.h"

#include <climits>
#include <cstring>

#include "crypto/sm3_compress.h"

namespace {

const std::uint32_t kInitialValue[8] = {0x7380166F, 0x4914B2B9, 0x172442D7, 0xDA8A0600,
                                        0xA96F30BC, 0x163138AA, 0xE38DEE4D, 0xB0FB0E4E};

// 0x80 followed by zeros: the message padding.
const unsigned char kPadding[64] = {0x80};

void sm3_process(sm3_context* ctx, const unsigned char block[64]) {
    ztutil::sm3::compressBlocks(ctx->state, block, 1);
}

// ztutil_sm3_update on read-only input. The byte count keeps only a single
// carry into the high word per call, as every call absorbs less than 2^31 bytes.
void absorb(sm3_context* ctx, const unsigned char* input, int ilen) {
    if (ilen <= 0 || input == nullptr)
        return;
    std::uint32_t left = ctx->total[0] & 0x3F;
    const std::uint32_t fill = 64 - left;
    std::uint32_t remaining = static_cast<std::uint32_t>(ilen);

    const std::uint32_t before = ctx->total[0];
    ctx->total[0] += remaining;
    if (ctx->total[0] < before)
        ctx->total[1]++;

    if (left != 0 && remaining >= fill) {
        std::memcpy(ctx->buffer + left, input, fill);
        sm3_process(ctx, ctx->buffer);
        input += fill;
        remaining -= fill;
        left = 0;
    } else if (remaining < 64) {
        std::memcpy(ctx->buffer + left, input, remaining);
        return;
    }

    const std::uint32_t blocks = remaining / 64;
    if (blocks != 0) {
        ztutil::sm3::compressBlocks(ctx->state, input, blocks);
        input += static_cast<std::size_t>(blocks) * 64;
        remaining -= blocks * 64;
    }
    if (remaining != 0)
        std::memcpy(ctx->buffer + left, input, remaining);
}

void storeBigEndian(std::uint32_t word, unsigned char* out) {
    out[0] = static_cast<unsigned char>(word >> 24);
    out[1] = static_cast<unsigned char>(word >> 16);
    out[2] = static_cast<unsigned char>(word >> 8);
    out[3] = static_cast<unsigned char>(word);
}

}  // namespace

void ztutil_sm3_starts(sm3_context* ctx) {
    ctx->total[0] = 0;
    ctx->total[1] = 0;
    std::memcpy(ctx->state, kInitialValue, sizeof kInitialValue);
}

void ztutil_sm3_update(sm3_context* ctx, unsigned char* input, int ilen) {
    absorb(ctx, input, ilen);
}

void ztutil_sm3_finish(sm3_context* ctx, unsigned char output[32]) {
    const std::uint32_t high = (ctx->total[0] >> 29) | (ctx->total[1] << 3);
    const std::uint32_t low = ctx->total[0] << 3;
    unsigned char bitLength[8];
    storeBigEndian(high, bitLength);
    storeBigEndian(low, bitLength + 4);

    const std::uint32_t last = ctx->total[0] & 0x3F;
    const std::uint32_t padLength = last < 56 ? 56 - last : 120 - last;
    absorb(ctx, kPadding, static_cast<int>(padLength));
    absorb(ctx, bitLength, 8);

    if (output == nullptr)
        return;
    for (int i = 0; i < 8; ++i)
        storeBigEndian(ctx->state[i], output + 4 * i);
}

void ztutil_sm3(unsigned char* input, int ilen, unsigned char output[32]) {
    sm3_context ctx;
    ztutil_sm3_starts(&ctx);
    ztutil_sm3_update(&ctx, input, ilen);
    ztutil_sm3_finish(&ctx, output);
}

int ztutil_digest(unsigned char* data, unsigned int len, unsigned char* out, unsigned int* outlen) {
    if (data == nullptr || len == 0 || outlen == nullptr)
        return 0;
    unsigned char digest[32] = {0};
    // The whole length is hashed, also beyond what a single int update takes.
    sm3_context ctx;
    ztutil_sm3_starts(&ctx);
    const unsigned int chunk = 1u << 30;
    for (unsigned int done = 0; done < len;) {
        const unsigned int part = len - done < chunk ? len - done : chunk;
        absorb(&ctx, data + done, static_cast<int>(part));
        done += part;
    }
    ztutil_sm3_finish(&ctx, digest);
    *outlen = 32;
    if (out != nullptr)
        std::memcpy(out, digest, sizeof digest);
    return 1;
}
