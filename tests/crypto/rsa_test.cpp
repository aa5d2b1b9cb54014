// SHA-1 / SM3 digests and the built-in RSA key pair.
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "crypto/rsa_builtin_key.h"
#include "ztutil/rsa.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes opensslDigest(const EVP_MD* md, const Bytes& data) {
    Bytes digest(EVP_MD_get_size(md));
    EVP_Digest(data.data(), data.size(), digest.data(), nullptr, md, nullptr);
    return digest;
}

BIGNUM* number(const unsigned char* bytes, int size) {
    return BN_bin2bn(bytes, size, nullptr);
}

TEST(RsaDigestTest, Sha1WithOptionalOutputs) {
    Bytes data = {'a', 'b', 'c'};
    Bytes digest(20, 0);
    unsigned int length = 0;
    EXPECT_EQ(RsaDigest(data.data(), 3, digest.data(), &length), 1);
    EXPECT_EQ(length, 20u);
    EXPECT_EQ(digest, opensslDigest(EVP_sha1(), data));
    length = 0;
    EXPECT_EQ(RsaDigest(data.data(), 3, nullptr, &length), 1);
    EXPECT_EQ(length, 20u);
    std::fill(digest.begin(), digest.end(), 0);
    EXPECT_EQ(RsaDigest(data.data(), 3, digest.data(), nullptr), 1);
    EXPECT_EQ(digest, opensslDigest(EVP_sha1(), data));
    EXPECT_EQ(RsaDigest(data.data(), 0, digest.data(), nullptr), 1);
    EXPECT_EQ(digest, opensslDigest(EVP_sha1(), Bytes()));
}

TEST(RsaDigestTest, ZTDigestChoosesByType) {
    std::mt19937 rng(31);
    Bytes data(1000);
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(rng());
    Bytes out(32, 0);
    unsigned int length = 0;
    EXPECT_EQ(ZTDigest(data.data(), 1000, out.data(), &length, DIGEST_SM3), 1);
    EXPECT_EQ(length, 32u);
    EXPECT_EQ(out, opensslDigest(EVP_sm3(), data));
    for (int type : {1, 7}) {
        Bytes sha(20, 0);
        length = 0;
        EXPECT_EQ(ZTDigest(data.data(), 1000, sha.data(), &length, static_cast<enDigestType>(type)),
                  1);
        EXPECT_EQ(length, 20u);
        EXPECT_EQ(sha, opensslDigest(EVP_sha1(), data));
    }
    length = 0;
    EXPECT_EQ(ZTDigest(data.data(), 1000, nullptr, &length, DIGEST_SHA1), 1);
    EXPECT_EQ(length, 20u);

    length = 5;
    EXPECT_EQ(ZTDigest(nullptr, 1000, out.data(), &length, DIGEST_SM3), 0);
    EXPECT_EQ(ZTDigest(data.data(), 0, out.data(), &length, DIGEST_SHA1), 0);
    EXPECT_EQ(ZTDigest(data.data(), 1000, out.data(), nullptr, DIGEST_SM3), 0);
    EXPECT_EQ(length, 5u);
}

TEST(RsaBuiltinKeyTest, ValuesFormAConsistentKeyPairOfTheStatedShape) {
    using namespace ztutil::rsa;
    EXPECT_EQ(kModulus[0], 0);
    EXPECT_GE(kModulus[1], 0x80);  // 1024 bits
    EXPECT_EQ(kPrivateExponent[0], 0);
    EXPECT_EQ(kPrime1[0], 0);
    EXPECT_EQ(kPrime2[0], 0);

    BN_CTX* ctx = BN_CTX_new();
    BIGNUM* n = number(kModulus, 129);
    BIGNUM* e = number(kPublicExponent, 1);
    BIGNUM* d = number(kPrivateExponent, 129);
    BIGNUM* p = number(kPrime1, 65);
    BIGNUM* q = number(kPrime2, 65);
    BIGNUM* product = BN_new();
    BN_mul(product, p, q, ctx);
    EXPECT_EQ(BN_cmp(product, n), 0);
    EXPECT_EQ(BN_num_bits(n), 1024);
    EXPECT_EQ(BN_check_prime(p, ctx, nullptr), 1);
    EXPECT_EQ(BN_check_prime(q, ctx, nullptr), 1);
    // m^(e*d) = m for a sample m.
    BIGNUM* m = BN_new();
    BIGNUM* c = BN_new();
    BN_set_word(m, 0x1234567);
    BN_mod_exp(c, m, e, n, ctx);
    BN_mod_exp(c, c, d, n, ctx);
    EXPECT_EQ(BN_cmp(c, m), 0);
    for (BIGNUM* bn : {n, e, d, p, q, product, m, c})
        BN_free(bn);
    BN_CTX_free(ctx);

    EVP_PKEY* key = nullptr;
    Bytes sample(128, 0);
    EXPECT_EQ(key1(&key, sample.data()), 128);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(Bytes(sample), Bytes(kSampleCiphertext, kSampleCiphertext + 128));
    EVP_PKEY_CTX* check = EVP_PKEY_CTX_new(key, nullptr);
    EXPECT_EQ(EVP_PKEY_pairwise_check(check), 1);
    // The sample ciphertext is the PKCS#1 v1.5 encryption of the sample text.
    EVP_PKEY_CTX* decrypt = EVP_PKEY_CTX_new(key, nullptr);
    Bytes plain(128);
    size_t plainLength = plain.size();
    ASSERT_EQ(EVP_PKEY_decrypt_init(decrypt), 1);
    EVP_PKEY_CTX_set_rsa_padding(decrypt, RSA_PKCS1_PADDING);
    ASSERT_EQ(EVP_PKEY_decrypt(decrypt, plain.data(), &plainLength, sample.data(), 128), 1);
    EXPECT_EQ(std::string(plain.begin(), plain.begin() + plainLength), kSamplePlaintext);
    EVP_PKEY_CTX_free(decrypt);
    EVP_PKEY_CTX_free(check);
    EVP_PKEY_free(key);
}

TEST(RsaBuiltinKeyTest, EncryptAndDecryptOnlyReportSuccess) {
    Bytes input(200, 0x42);
    Bytes out(256, 0xEE);
    EXPECT_EQ(RsaEncrypt(100, input.data(), out.data()), 1);
    EXPECT_EQ(RsaEncrypt(117, input.data(), out.data()), 1);
    EXPECT_EQ(RsaEncrypt(0, input.data(), out.data()), 1);
    EXPECT_EQ(RsaEncrypt(118, input.data(), out.data()), 0);
    EXPECT_EQ(RsaEncrypt(200, input.data(), out.data()), 0);
    EXPECT_EQ(RsaEncrypt(5, nullptr, out.data()), 0);
    EXPECT_EQ(out, Bytes(256, 0xEE));

    // A proper ciphertext decrypts, but its plaintext is shorter than the
    // ciphertext, so the lengths never agree; bad input fails as well.
    Bytes sample(ztutil::rsa::kSampleCiphertext, ztutil::rsa::kSampleCiphertext + 128);
    EXPECT_EQ(RsaDecrypt(128, sample.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(128, input.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(200, input.data(), out.data()), 0);
    EXPECT_EQ(RsaDecrypt(0, nullptr, out.data()), 0);
    EXPECT_EQ(out, Bytes(256, 0xEE));
}

}  // namespace
