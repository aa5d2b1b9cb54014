// SM3, HMAC-SM3, the file digest and the checked digest, with OpenSSL's SM3
// as the independent oracle.
#include <openssl/hmac.h>

#include <unistd.h>

#include <cstdlib>

#include "crypto/sm3_compress.h"
#include "support/common.h"
#include "ztutil/sm3.h"

using namespace ztutil_test;

namespace {

Bytes opensslSm3(const Bytes& data) {
    return digest(EVP_sm3(), data);
}

Bytes opensslHmacSm3(const Bytes& key, const Bytes& data) {
    static const unsigned char kNoKey = 0;
    Bytes mac(32);
    HMAC(EVP_sm3(), key.empty() ? &kNoKey : key.data(), static_cast<int>(key.size()), data.data(), data.size(),
         mac.data(), nullptr);
    return mac;
}

Bytes sm3(Bytes data) {
    Bytes out(32);
    ztutil_sm3(data.data(), static_cast<int>(data.size()), out.data());
    return out;
}

// Digest of `data` fed in pieces ending at the given offsets.
Bytes sm3InPieces(Bytes data, const std::vector<size_t>& cuts, sm3_context* ctx) {
    ztutil_sm3_starts(ctx);
    size_t start = 0;
    for (size_t cut : cuts) {
        ztutil_sm3_update(ctx, data.data() + start, static_cast<int>(cut - start));
        start = cut;
    }
    ztutil_sm3_update(ctx, data.data() + start, static_cast<int>(data.size() - start));
    Bytes out(32);
    ztutil_sm3_finish(ctx, out.data());
    return out;
}

Bytes sm3InPieces(const Bytes& data, const std::vector<size_t>& cuts) {
    sm3_context ctx;
    return sm3InPieces(data, cuts, &ctx);
}

TEST(Sm3Test, MatchesOpenSslForEveryLengthUpTo600AndLargeMessages) {
    std::mt19937 rng(1);
    for (size_t length = 0; length <= 600; ++length) {
        const Bytes data = randomBytes(rng, length);
        ASSERT_EQ(sm3(data), opensslSm3(data)) << "length " << length;
    }
    for (size_t length : {4095u, 8192u, 65537u, 1000003u}) {
        const Bytes data = randomBytes(rng, length);
        ASSERT_EQ(sm3(data), opensslSm3(data)) << "length " << length;
    }
}

TEST(Sm3Test, AnySplitAcrossBlockAndPaddingBoundariesGivesTheSameDigest) {
    std::mt19937 rng(2);
    for (size_t length : {55u, 56u, 63u, 64u, 65u, 119u, 120u, 127u, 128u, 129u, 183u, 184u, 191u, 192u, 200u}) {
        const Bytes data = randomBytes(rng, length);
        const Bytes expected = opensslSm3(data);
        for (size_t cut = 0; cut <= length; ++cut)
            ASSERT_EQ(sm3InPieces(data, {cut}), expected) << length << " split at " << cut;
        std::vector<size_t> sevens;  // small pieces throughout
        for (size_t cut = 7; cut < length; cut += 7)
            sevens.push_back(cut);
        EXPECT_EQ(sm3InPieces(data, sevens), expected) << length;
    }
}

TEST(Sm3Test, ContextBookkeeping) {
    unsigned char data[100] = {1, 2, 3};
    sm3_context ctx, before;
    std::memset(&ctx, 0xA5, sizeof ctx);
    ztutil_sm3_starts(&ctx);
    EXPECT_EQ(ctx.total[0] | ctx.total[1], 0u);
    EXPECT_EQ(ctx.ipad[63], 0xA5) << "only the count and the state are reset";
    ztutil_sm3_update(&ctx, data, 10);
    std::memcpy(&before, &ctx, sizeof ctx);
    ztutil_sm3_update(&ctx, data, 0);
    ztutil_sm3_update(&ctx, data, -1);
    ztutil_sm3_update(&ctx, nullptr, 5);
    EXPECT_EQ(std::memcmp(&before, &ctx, sizeof ctx), 0) << "empty, negative and null updates";

    ctx.total[0] = 0xFFFFFFC0u;  // a whole number of blocks before the wrap
    ztutil_sm3_update(&ctx, data, 100);
    EXPECT_EQ(ctx.total[0], 36u);
    EXPECT_EQ(ctx.total[1], 1u);

    // finish counts the padding in and leaves the final chaining value behind.
    const std::pair<int, unsigned> counts[] = {{55, 64}, {56, 128}, {64, 128}, {0, 64}, {120, 192}};
    for (const auto& c : counts) {
        const Bytes message(static_cast<size_t>(c.first), 0x61);
        const Bytes out = sm3InPieces(message, {}, &ctx);
        EXPECT_EQ(ctx.total[0], c.second) << c.first;
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(ctx.state[i], std::uint32_t(out[4 * i]) << 24 | out[4 * i + 1] << 16 | out[4 * i + 2] << 8 |
                                        out[4 * i + 3]);
    }
}

// SM3 of `message` through one compression implementation, with the
// standard's padding and initial value laid out here.
Bytes sm3With(ztutil::sm3::CompressFunction compress, const Bytes& message) {
    Bytes padded = message;
    padded.push_back(0x80);
    while (padded.size() % 64 != 56)
        padded.push_back(0);
    const std::uint64_t bits = std::uint64_t(message.size()) * 8;
    for (int shift = 56; shift >= 0; shift -= 8)
        padded.push_back(static_cast<unsigned char>(bits >> shift));
    std::uint32_t state[8] = {0x7380166F, 0x4914B2B9, 0x172442D7, 0xDA8A0600,
                              0xA96F30BC, 0x163138AA, 0xE38DEE4D, 0xB0FB0E4E};
    compress(state, padded.data(), padded.size() / 64);
    Bytes out;
    for (std::uint32_t word : state)
        for (int shift = 24; shift >= 0; shift -= 8)
            out.push_back(static_cast<unsigned char>(word >> shift));
    return out;
}

// Every implementation the CPU runs: the standard's examples, random
// messages against OpenSSL, and random chaining values against the portable
// code (on x86-64 SSE2, on Arm the SM3 instructions where the CPU has them).
TEST(Sm3CompressTest, EveryUsableImplementationMatchesTheStandardAndOpenSsl) {
    using namespace ztutil::sm3;
    std::string abcd16;
    for (int i = 0; i < 16; ++i)
        abcd16 += "abcd";
    const std::pair<std::string, const char*> examples[] = {
        {"abc", "66C7F0F462EEEDD9D1F2D46BDC10E4E24167C4875CF2F7A2297DA02B8F4BA8E0"},
        {abcd16, "DEBE9FF92275B8A138604889C18E5A4D6FDB70E5387E5765293DCBA39C0C5732"}};
    const ImplementationList usable = usableImplementations();
    for (std::size_t i = 0; i < usable.count; ++i) {
        const Implementation& implementation = usable.entries[i];
        SCOPED_TRACE(implementation.name);
        for (const auto& example : examples)
            EXPECT_EQ(sm3With(implementation.compress, Bytes(example.first.begin(), example.first.end())),
                      fromHex(example.second));
        std::mt19937 rng(3);
        for (size_t length : {0u, 1u, 55u, 56u, 63u, 64u, 65u, 119u, 120u, 128u, 1000u, 4099u}) {
            const Bytes data = randomBytes(rng, length + rng() % 200);
            ASSERT_EQ(sm3With(implementation.compress, data), opensslSm3(data)) << data.size() << " bytes";
        }
        const Bytes blocks = randomBytes(rng, 64 * 50);
        std::uint32_t portable[8], tested[8];
        for (int k = 0; k < 8; ++k)
            portable[k] = tested[k] = static_cast<std::uint32_t>(rng());
        compressBlocksPortable(portable, blocks.data(), 50);
        implementation.compress(tested, blocks.data(), 50);
        EXPECT_EQ(std::memcmp(portable, tested, sizeof portable), 0);
    }
}

// CTest names the implementation the dispatcher must pick on the CPU it runs
// the test on (under qemu: a CPU model with and one without SM3).
TEST(Sm3CompressTest, DispatcherPicksTheImplementationForThisCpu) {
    const char* expected = std::getenv("ZTUTIL_EXPECT_SM3");
    if (expected == nullptr)
        GTEST_SKIP() << "ZTUTIL_EXPECT_SM3 does not say which implementation this CPU should get";
    EXPECT_STREQ(ztutil::sm3::chosenImplementation().name, expected);
}

TEST(Sm3HmacTest, MatchesOpenSslForManyKeyLengthsAndStreams) {
    std::mt19937 rng(4);
    Bytes mac(32);
    for (size_t keyLength = 0; keyLength <= 140; ++keyLength) {
        Bytes key = randomBytes(rng, keyLength);
        for (size_t dataLength : {0u, 1u, 55u, 64u, 100u, 1000u}) {
            Bytes data = randomBytes(rng, dataLength);
            ztutil_sm3_hmac(key.data(), static_cast<int>(keyLength), data.data(), int(dataLength), mac.data());
            ASSERT_EQ(mac, opensslHmacSm3(key, data)) << "key " << keyLength << " data " << dataLength;
        }
    }
    Bytes key = randomBytes(rng, 20), first = randomBytes(rng, 300), second = randomBytes(rng, 45);
    ztutil_sm3_hmac(key.data(), -3, first.data(), 300, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(Bytes(), first)) << "a negative key length means the empty key";
    sm3_context ctx;
    ztutil_sm3_hmac_starts(&ctx, key.data(), 20);
    ztutil_sm3_hmac_update(&ctx, first.data(), 63);
    ztutil_sm3_hmac_update(&ctx, first.data() + 63, 0);
    ztutil_sm3_hmac_update(&ctx, first.data() + 63, 237);
    ztutil_sm3_hmac_finish(&ctx, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(key, first));
    ztutil_sm3_hmac_starts(&ctx, key.data(), 20);  // restarting with the same key
    ztutil_sm3_hmac_update(&ctx, second.data(), 45);
    ztutil_sm3_hmac_finish(&ctx, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(key, second));
}

TEST(Sm3FileTest, WholeFilesMissingFilesAndReadErrors) {
    char pattern[] = "/tmp/ztutil_sm3_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    std::string directory = pattern, path = directory + "/file";
    std::mt19937 rng(7);
    Bytes out(32, 0xEE);
    for (size_t length : {0u, 1u, 1023u, 1024u, 1025u, 5000u, 70000u}) {
        const Bytes data = randomBytes(rng, length);
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (!data.empty())  // fwrite takes no null pointer, even for nothing
            std::fwrite(data.data(), 1, data.size(), file);
        std::fclose(file);
        EXPECT_EQ(ztutil_sm3_file(&path[0], out.data()), 0);
        EXPECT_EQ(out, opensslSm3(data)) << length;
    }
    std::remove(path.c_str());
    out.assign(32, 0xEE);
    EXPECT_EQ(ztutil_sm3_file(&path[0], out.data()), 1);
    EXPECT_EQ(ztutil_sm3_file(nullptr, out.data()), 1);
    EXPECT_EQ(out, Bytes(32, 0xEE)) << "a missing file leaves the output";
    // A directory opens for reading but every read fails: 2, with the digest of nothing.
    EXPECT_EQ(ztutil_sm3_file(&directory[0], out.data()), 2);
    EXPECT_EQ(out, opensslSm3(Bytes()));
    rmdir(directory.c_str());
}

TEST(Sm3DigestTest, CheckedDigest) {
    std::mt19937 rng(8);
    Bytes data = randomBytes(rng, 333), out(32, 0xCC);
    unsigned int outLength = 7;
    EXPECT_EQ(ztutil_digest(nullptr, 333, out.data(), &outLength), 0);
    EXPECT_EQ(ztutil_digest(data.data(), 0, out.data(), &outLength), 0);
    EXPECT_EQ(ztutil_digest(data.data(), 333, out.data(), nullptr), 0);
    EXPECT_EQ(outLength, 7u);
    EXPECT_EQ(out, Bytes(32, 0xCC));
    EXPECT_EQ(ztutil_digest(data.data(), 333, nullptr, &outLength), 1);
    EXPECT_EQ(outLength, 32u);
    outLength = 7;
    EXPECT_EQ(ztutil_digest(data.data(), 333, out.data(), &outLength), 1);
    EXPECT_EQ(outLength, 32u);
    EXPECT_EQ(out, opensslSm3(data));
}

}  // namespace
