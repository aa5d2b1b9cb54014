// SHA-1 / SM3 digests and the built-in RSA key pair.
#include <openssl/rsa.h>

#include "crypto/rsa_builtin_key.h"
#include "support/common.h"
#include "ztutil/rsa.h"

using namespace ztutil_test;

namespace {

TEST(RsaDigestTest, Sha1AndZTDigestWithOptionalOutputs) {
    std::mt19937 rng(31);
    Bytes data = randomBytes(rng, 1000), out(32, 0);
    unsigned int length = 0;
    EXPECT_EQ(RsaDigest(data.data(), 3, out.data(), &length), 1);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + length), digest(EVP_sha1(), Bytes(data.begin(), data.begin() + 3)));
    EXPECT_EQ(RsaDigest(data.data(), 0, out.data(), nullptr), 1);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 20), digest(EVP_sha1(), Bytes()));
    length = 0;
    EXPECT_EQ(RsaDigest(data.data(), 3, nullptr, &length), 1);
    EXPECT_EQ(length, 20u);

    for (int type : {0, 1, 7}) {  // SM3 for DIGEST_SM3, SHA-1 for every other type
        const Bytes expected = digest(type == DIGEST_SM3 ? EVP_sm3() : EVP_sha1(), data);
        out.assign(32, 0);
        EXPECT_EQ(ZTDigest(data.data(), 1000, out.data(), &length, static_cast<enDigestType>(type)), 1);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + length), expected) << type;
        length = 0;
        EXPECT_EQ(ZTDigest(data.data(), 1000, nullptr, &length, static_cast<enDigestType>(type)), 1);
        EXPECT_EQ(length, expected.size());
    }
    length = 5;
    EXPECT_EQ(ZTDigest(nullptr, 1000, out.data(), &length, DIGEST_SM3), 0);
    EXPECT_EQ(ZTDigest(data.data(), 0, out.data(), &length, DIGEST_SHA1), 0);
    EXPECT_EQ(ZTDigest(data.data(), 1000, out.data(), nullptr, DIGEST_SM3), 0);
    EXPECT_EQ(length, 5u);
}

TEST(RsaBuiltinKeyTest, AConsistentKeyPairWhoseSampleDecrypts) {
    EVP_PKEY* key = nullptr;
    Bytes sample(128, 0);
    EXPECT_EQ(key1(&key, sample.data()), 128);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(EVP_PKEY_get_bits(key), 1024);
    EXPECT_EQ(sample, Bytes(ztutil::rsa::kSampleCiphertext, ztutil::rsa::kSampleCiphertext + 128));
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(key, nullptr);
    EXPECT_EQ(EVP_PKEY_pairwise_check(ctx), 1);  // n = pq, e and d inverse, CRT values
    Bytes plain(128);
    size_t plainLength = plain.size();
    ASSERT_EQ(EVP_PKEY_decrypt_init(ctx), 1);
    EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING);
    ASSERT_EQ(EVP_PKEY_decrypt(ctx, plain.data(), &plainLength, sample.data(), 128), 1);
    EXPECT_EQ(std::string(plain.begin(), plain.begin() + plainLength), ztutil::rsa::kSamplePlaintext);
    EVP_PKEY_CTX_free(ctx);
    EVP_PKEY_free(key);
}

TEST(RsaBuiltinKeyTest, EncryptAndDecryptOnlyReportSuccess) {
    Bytes input(200, 0x42), out(256, 0xEE);
    for (unsigned length : {100u, 117u, 0u})
        EXPECT_EQ(RsaEncrypt(length, input.data(), out.data()), 1) << length;
    EXPECT_EQ(RsaEncrypt(118, input.data(), out.data()), 0);
    EXPECT_EQ(RsaEncrypt(200, input.data(), out.data()), 0);
    EXPECT_EQ(RsaEncrypt(5, nullptr, out.data()), 0);
    // A proper ciphertext decrypts, but to fewer bytes than it has, so the
    // lengths never agree; bad input fails as well.
    Bytes sample(ztutil::rsa::kSampleCiphertext, ztutil::rsa::kSampleCiphertext + 128);
    EXPECT_EQ(RsaDecrypt(128, sample.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(128, input.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(200, input.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(0, nullptr, out.data()), 0);
    EXPECT_EQ(out, Bytes(256, 0xEE)) << "nothing is ever written";
}

}  // namespace
