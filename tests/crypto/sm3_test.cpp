// SM3, HMAC-SM3, the file digest and the checked digest, with OpenSSL's SM3
// as the independent oracle.
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "crypto/sm3_compress.h"
#include "ztutil/sm3.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes randomBytes(std::mt19937& rng, size_t length) {
    Bytes data(length);
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(rng());
    return data;
}

Bytes fromHex(const std::string& hex) {
    Bytes out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        out.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

Bytes opensslSm3(const Bytes& data) {
    Bytes digest(32);
    unsigned int length = 0;
    EXPECT_EQ(EVP_Digest(data.data(), data.size(), digest.data(), &length, EVP_sm3(), nullptr), 1);
    EXPECT_EQ(length, 32u);
    return digest;
}

Bytes opensslHmacSm3(const Bytes& key, const Bytes& data) {
    static const unsigned char kNoKey = 0;
    Bytes mac(32);
    unsigned int length = 0;
    EXPECT_NE(HMAC(EVP_sm3(), key.empty() ? &kNoKey : key.data(), static_cast<int>(key.size()),
                   data.data(), data.size(), mac.data(), &length),
              nullptr);
    EXPECT_EQ(length, 32u);
    return mac;
}

Bytes sm3(Bytes data) {
    Bytes digest(32);
    ztutil_sm3(data.data(), static_cast<int>(data.size()), digest.data());
    return digest;
}

// Digest of `data` fed in pieces ending at the given offsets.
Bytes sm3InPieces(Bytes data, const std::vector<size_t>& cuts) {
    sm3_context ctx;
    ztutil_sm3_starts(&ctx);
    size_t start = 0;
    for (size_t cut : cuts) {
        ztutil_sm3_update(&ctx, data.data() + start, static_cast<int>(cut - start));
        start = cut;
    }
    ztutil_sm3_update(&ctx, data.data() + start, static_cast<int>(data.size() - start));
    Bytes digest(32);
    ztutil_sm3_finish(&ctx, digest.data());
    return digest;
}

Bytes hmac(Bytes key, Bytes data) {
    Bytes mac(32);
    ztutil_sm3_hmac(key.data(), static_cast<int>(key.size()), data.data(),
                    static_cast<int>(data.size()), mac.data());
    return mac;
}

TEST(Sm3Test, StandardExamples) {
    const std::string abc = "abc";
    EXPECT_EQ(sm3(Bytes(abc.begin(), abc.end())),
              fromHex("66C7F0F462EEEDD9D1F2D46BDC10E4E24167C4875CF2F7A2297DA02B8F4BA8E0"));
    std::string abcd;
    for (int i = 0; i < 16; ++i)
        abcd += "abcd";
    EXPECT_EQ(sm3(Bytes(abcd.begin(), abcd.end())),
              fromHex("DEBE9FF92275B8A138604889C18E5A4D6FDB70E5387E5765293DCBA39C0C5732"));
    EXPECT_EQ(sm3(Bytes()),
              fromHex("1AB21D8355CFA17F8E61194831E81A8F22BEC8C728FEFB747ED035EB5082AA2B"));
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
    for (size_t length : {55u, 56u, 63u, 64u, 65u, 119u, 120u, 127u, 128u, 129u, 183u, 184u, 191u,
                          192u, 200u}) {
        const Bytes data = randomBytes(rng, length);
        const Bytes expected = opensslSm3(data);
        for (size_t cut = 0; cut <= length; ++cut)
            ASSERT_EQ(sm3InPieces(data, {cut}), expected) << length << " split at " << cut;
        // Three pieces: a first piece ending on or around a block boundary,
        // a second of every size, and a final part of what remains.
        for (size_t first : {1u, 55u, 56u, 63u, 64u}) {
            for (size_t second = 0; first + second <= length; ++second)
                ASSERT_EQ(sm3InPieces(data, {first, first + second}), expected)
                    << length << " pieces " << first << "+" << second;
        }
    }
    // A final part of 55, 56 and 63 bytes after whole blocks, in small pieces.
    for (size_t tail : {55u, 56u, 63u}) {
        const Bytes data = randomBytes(rng, 128 + tail);
        std::vector<size_t> cuts;
        for (size_t cut = 7; cut < data.size(); cut += 7)
            cuts.push_back(cut);
        EXPECT_EQ(sm3InPieces(data, cuts), opensslSm3(data)) << "tail " << tail;
    }
}

TEST(Sm3Test, ZeroAndNegativeUpdatesChangeNothing) {
    unsigned char data[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    sm3_context ctx;
    std::memset(&ctx, 0xA5, sizeof ctx);
    ztutil_sm3_starts(&ctx);
    ztutil_sm3_update(&ctx, data, 10);
    sm3_context before;
    std::memcpy(&before, &ctx, sizeof ctx);
    ztutil_sm3_update(&ctx, data, 0);
    ztutil_sm3_update(&ctx, data, -1);
    ztutil_sm3_update(&ctx, nullptr, 5);
    EXPECT_EQ(std::memcmp(&before, &ctx, sizeof ctx), 0);
}

TEST(Sm3Test, StartsResetsCountAndStateOnly) {
    sm3_context ctx;
    std::memset(&ctx, 0x5A, sizeof ctx);
    ztutil_sm3_starts(&ctx);
    EXPECT_EQ(ctx.total[0], 0u);
    EXPECT_EQ(ctx.total[1], 0u);
    EXPECT_EQ(ctx.state[0], 0x7380166Fu);
    EXPECT_EQ(ctx.state[7], 0xB0FB0E4Eu);
    for (int i = 0; i < 64; ++i) {
        ASSERT_EQ(ctx.buffer[i], 0x5A);
        ASSERT_EQ(ctx.ipad[i], 0x5A);
        ASSERT_EQ(ctx.opad[i], 0x5A);
    }
}

TEST(Sm3Test, PaddingLengthFollowsTheFillAndFinishLeavesTheContext) {
    // The count after finish is message + padding + 8 length bytes.
    struct Case {
        int length;
        unsigned int countAfterFinish;
    } cases[] = {{55, 64}, {56, 128}, {63, 128}, {64, 128}, {0, 64}, {119, 128}, {120, 192}};
    for (const Case& c : cases) {
        Bytes data(static_cast<size_t>(c.length), 0x61);
        sm3_context ctx;
        ztutil_sm3_starts(&ctx);
        ztutil_sm3_update(&ctx, data.data(), c.length);
        Bytes digest(32);
        ztutil_sm3_finish(&ctx, digest.data());
        EXPECT_EQ(ctx.total[0], c.countAfterFinish) << c.length;
        EXPECT_EQ(digest, opensslSm3(data)) << c.length;
        // The context is not cleared: it still holds the final chaining value.
        for (int i = 0; i < 8; ++i) {
            const std::uint32_t word = std::uint32_t(digest[4 * i]) << 24 |
                                       std::uint32_t(digest[4 * i + 1]) << 16 |
                                       std::uint32_t(digest[4 * i + 2]) << 8 | digest[4 * i + 3];
            EXPECT_EQ(ctx.state[i], word);
        }
    }
}

TEST(Sm3Test, ByteCountCarriesIntoTheHighWord) {
    sm3_context ctx;
    ztutil_sm3_starts(&ctx);
    ctx.total[0] = 0xFFFFFFC0u;  // a whole number of blocks before the wrap
    unsigned char data[100] = {0};
    ztutil_sm3_update(&ctx, data, 100);
    EXPECT_EQ(ctx.total[0], 36u);
    EXPECT_EQ(ctx.total[1], 1u);
}

TEST(Sm3Test, CompressionImplementationsAgree) {
    std::mt19937 rng(3);
    const Bytes data = randomBytes(rng, 64 * 50);
    std::uint32_t portable[8], chosen[8];
    for (int i = 0; i < 8; ++i)
        portable[i] = chosen[i] = static_cast<std::uint32_t>(rng());
    ztutil::sm3::compressBlocksPortable(portable, data.data(), 50);
    ztutil::sm3::compressBlocks(chosen, data.data(), 50);
    EXPECT_EQ(std::memcmp(portable, chosen, sizeof portable), 0);
}

TEST(Sm3HmacTest, MatchesOpenSslForManyKeyLengths) {
    std::mt19937 rng(4);
    for (size_t keyLength = 0; keyLength <= 140; ++keyLength) {
        const Bytes key = randomBytes(rng, keyLength);
        for (size_t dataLength : {0u, 1u, 55u, 64u, 100u, 1000u}) {
            const Bytes data = randomBytes(rng, dataLength);
            ASSERT_EQ(hmac(key, data), opensslHmacSm3(key, data))
                << "key " << keyLength << " data " << dataLength;
        }
    }
}

TEST(Sm3HmacTest, LongKeysAreReplacedByTheirDigest) {
    std::mt19937 rng(5);
    const Bytes data = randomBytes(rng, 77);
    const Bytes key65 = randomBytes(rng, 65);
    EXPECT_EQ(hmac(key65, data), hmac(sm3(key65), data));
    const Bytes key64 = randomBytes(rng, 64);
    EXPECT_NE(hmac(key64, data), hmac(sm3(key64), data));
    // A key length of zero or less means the empty key.
    Bytes key = randomBytes(rng, 10);
    Bytes mac(32);
    ztutil_sm3_hmac(key.data(), -3, const_cast<unsigned char*>(data.data()), 77, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(Bytes(), data));
}

TEST(Sm3HmacTest, StreamingAndRestartingWithTheSameKey) {
    std::mt19937 rng(6);
    Bytes key = randomBytes(rng, 20);
    Bytes first = randomBytes(rng, 300);
    Bytes second = randomBytes(rng, 45);
    sm3_context ctx;
    Bytes mac(32);
    ztutil_sm3_hmac_starts(&ctx, key.data(), 20);
    ztutil_sm3_hmac_update(&ctx, first.data(), 63);
    ztutil_sm3_hmac_update(&ctx, first.data() + 63, 0);
    ztutil_sm3_hmac_update(&ctx, first.data() + 63, 237);
    ztutil_sm3_hmac_finish(&ctx, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(key, first));
    ztutil_sm3_hmac_starts(&ctx, key.data(), 20);
    ztutil_sm3_hmac_update(&ctx, second.data(), 45);
    ztutil_sm3_hmac_finish(&ctx, mac.data());
    EXPECT_EQ(mac, opensslHmacSm3(key, second));
}

class Sm3FileTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/ztutil_sm3_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        directory_ = pattern;
    }
    void TearDown() override {
        for (const std::string& path : files_)
            std::remove(path.c_str());
        rmdir(directory_.c_str());
    }
    std::string writeFile(const Bytes& data) {
        const std::string path = directory_ + "/file" + std::to_string(files_.size());
        std::FILE* file = std::fopen(path.c_str(), "wb");
        EXPECT_NE(file, nullptr);
        if (!data.empty()) {
            EXPECT_EQ(std::fwrite(data.data(), 1, data.size(), file), data.size());
        }
        std::fclose(file);
        files_.push_back(path);
        return path;
    }
    std::string directory_;
    std::vector<std::string> files_;
};

TEST_F(Sm3FileTest, DigestsWholeFilesAcrossReadSizes) {
    std::mt19937 rng(7);
    for (size_t length : {0u, 1u, 1023u, 1024u, 1025u, 5000u, 70000u}) {
        const Bytes data = randomBytes(rng, length);
        std::string path = writeFile(data);
        Bytes digest(32);
        EXPECT_EQ(ztutil_sm3_file(&path[0], digest.data()), 0);
        EXPECT_EQ(digest, opensslSm3(data)) << length;
    }
}

TEST_F(Sm3FileTest, MissingFileReturnsOneAndLeavesTheOutput) {
    std::string path = directory_ + "/missing";
    Bytes digest(32, 0xEE);
    EXPECT_EQ(ztutil_sm3_file(&path[0], digest.data()), 1);
    EXPECT_EQ(digest, Bytes(32, 0xEE));
    EXPECT_EQ(ztutil_sm3_file(nullptr, digest.data()), 1);
}

TEST_F(Sm3FileTest, ReadErrorReturnsTwoWithTheDigestOfWhatWasRead) {
    // A directory opens for reading but every read fails.
    Bytes digest(32, 0xEE);
    EXPECT_EQ(ztutil_sm3_file(&directory_[0], digest.data()), 2);
    EXPECT_EQ(digest, opensslSm3(Bytes()));
}

TEST(Sm3DigestTest, CheckedDigest) {
    std::mt19937 rng(8);
    Bytes data = randomBytes(rng, 333);
    Bytes out(32, 0);
    unsigned int outLength = 7;
    EXPECT_EQ(ztutil_digest(data.data(), 333, out.data(), &outLength), 1);
    EXPECT_EQ(outLength, 32u);
    EXPECT_EQ(out, opensslSm3(data));

    outLength = 7;
    EXPECT_EQ(ztutil_digest(data.data(), 333, nullptr, &outLength), 1);
    EXPECT_EQ(outLength, 32u);

    Bytes untouched(32, 0xCC);
    outLength = 7;
    EXPECT_EQ(ztutil_digest(nullptr, 333, untouched.data(), &outLength), 0);
    EXPECT_EQ(ztutil_digest(data.data(), 0, untouched.data(), &outLength), 0);
    EXPECT_EQ(ztutil_digest(data.data(), 333, untouched.data(), nullptr), 0);
    EXPECT_EQ(outLength, 7u);
    EXPECT_EQ(untouched, Bytes(32, 0xCC));
}

}  // namespace
