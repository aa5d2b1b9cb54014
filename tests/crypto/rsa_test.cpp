// SHA-1 / SM3 digests, the built-in RSA key pair, and RsaVerify against
// certificates and keys made with the openssl command (tests/data/rsa), with
// signatures made here by OpenSSL.
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>

#include "crypto/rsa_builtin_key.h"
#include "support/common.h"
#include "ztutil/rsa.h"
#include "ztutil/ztverifytools.h"

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

const std::string kStart = "[RsaVerify] rsa verify start...\n";
const std::string kOk = "1 " + kStart + "[RsaVerify] RSA_verify ok\n";
const std::string kDecryptFailed = "0 " + kStart + "[RsaVerify] public decrypt failed, error : [-1]\n";

Bytes rsaFixture(const char* name) {
    return bytesOf(fixture(QStringLiteral("rsa/") + QLatin1String(name)));
}

EVP_PKEY* readKey(const char* name) {
    const QByteArray pem = fixture(QStringLiteral("rsa/") + QLatin1String(name));
    BIO* bio = BIO_new_mem_buf(pem.constData(), pem.size());
    EVP_PKEY* key = PEM_read_bio_PrivateKey(bio, nullptr, nullptr, nullptr);
    BIO_free(bio);
    EXPECT_NE(key, nullptr) << name;
    return key;
}

// PKCS#1 v1.5 signature of `tbs`; with `md` the DigestInfo of that digest
// algorithm is built around it, without it `tbs` is signed as it is.
Bytes sign(EVP_PKEY* key, const Bytes& tbs, const EVP_MD* md) {
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(key, nullptr);
    EXPECT_EQ(EVP_PKEY_sign_init(ctx), 1);
    EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING);
    if (md != nullptr)
        EVP_PKEY_CTX_set_signature_md(ctx, md);
    size_t length = 0;
    EXPECT_EQ(EVP_PKEY_sign(ctx, nullptr, &length, tbs.data(), tbs.size()), 1);
    Bytes signature(length);
    EXPECT_EQ(EVP_PKEY_sign(ctx, signature.data(), &length, tbs.data(), tbs.size()), 1);
    signature.resize(length);
    EVP_PKEY_CTX_free(ctx);
    return signature;
}

// RsaVerify's result and everything it printed.
std::string verify(Bytes certificate, Bytes data, Bytes signature) {
    StdoutCapture capture;
    const int result = RsaVerify(certificate.data(), unsigned(certificate.size()), data.data(), unsigned(data.size()),
                                 signature.data(), unsigned(signature.size()));
    return std::to_string(result) + " " + capture.text();
}

// A message whose digest has no zero byte, so that the scan of the recovered
// block measures a DigestInfo as its full length and a bare digest as 20.
Bytes messageWithoutZeroInDigest(const EVP_MD* md, const std::string& seed) {
    for (int i = 0;; ++i) {
        const std::string text = seed + std::to_string(i);
        const Bytes message(text.begin(), text.end()), value = digest(md, message);
        if (std::find(value.begin(), value.end(), 0) == value.end())
            return message;
    }
}

class RsaVerifyTest : public ::testing::Test {
protected:
    void TearDown() override {
        EVP_PKEY_free(key1024_);
        EVP_PKEY_free(key2048_);
    }
    Bytes sha1Signature(EVP_PKEY* key, const EVP_MD* md = EVP_sha1()) {
        return sign(key, digest(EVP_sha1(), message_), md);
    }
    Bytes cert1024_ = rsaFixture("rsa1024_cert.der"), cert2048_ = rsaFixture("rsa2048_cert.der");
    EVP_PKEY* key1024_ = readKey("rsa1024_key.pem");
    EVP_PKEY* key2048_ = readKey("rsa2048_key.pem");
    Bytes message_ = messageWithoutZeroInDigest(EVP_sha1(), "seal data "), other_ = {'o', 't', 'h', 'e', 'r'};
};

TEST_F(RsaVerifyTest, Sha1SignaturesWithAndWithoutDigestInfo) {
    EXPECT_EQ(verify(cert1024_, message_, sha1Signature(key1024_)), kOk);
    EXPECT_EQ(verify(cert2048_, message_, sha1Signature(key2048_)), kOk);
    EXPECT_EQ(verify(cert1024_, message_, sha1Signature(key1024_, nullptr)), kOk);
    // Over other data OpenSSL's check fails and its error text is shown; a
    // bare value is compared by the library itself.
    EXPECT_EQ(verify(cert1024_, other_, sha1Signature(key1024_)),
              "0 " + kStart + "source:error:02000068:rsa routines::bad signature\n");
    EXPECT_NE(verify(cert2048_, other_, sha1Signature(key2048_)).find(kStart + "source:error:"), std::string::npos);
    EXPECT_EQ(verify(cert1024_, other_, sha1Signature(key1024_, nullptr)),
              "0 " + kStart + "[RsaVerify] hash compare failed. verify Signature failed!\n");
}

TEST_F(RsaVerifyTest, OtherRecoveredLengthsAreAcceptedWithoutComparison) {
    // A SHA-256 DigestInfo (51 bytes) of unrelated data, any 10-byte block.
    const Bytes sha256Message = messageWithoutZeroInDigest(EVP_sha256(), "sha256 ");
    EXPECT_EQ(verify(cert2048_, other_, sign(key2048_, digest(EVP_sha256(), sha256Message), EVP_sha256())), kOk);
    EXPECT_EQ(verify(cert1024_, other_, sign(key1024_, Bytes(10, 'x'), nullptr)), kOk);
}

TEST_F(RsaVerifyTest, RefusalsAndTheirMessages) {
    Bytes certificate = cert1024_, data = message_, signature = sha1Signature(key1024_);
    for (int missing = 0; missing < 6; ++missing) {
        StdoutCapture capture;
        EXPECT_EQ(RsaVerify(missing == 0 ? nullptr : certificate.data(),
                            missing == 1 ? 0 : unsigned(certificate.size()),
                            missing == 2 ? nullptr : data.data(), missing == 3 ? 0 : unsigned(data.size()),
                            missing == 4 ? nullptr : signature.data(), missing == 5 ? 0 : unsigned(signature.size())),
                  0);
        EXPECT_EQ(capture.text(), "[RsaVerify] rsa verify failed.!\n");
    }
    // Key blocks that are neither 140 nor 270 bytes: exponent 3, 1536 bits, no key at all.
    for (const Bytes& unsupported : {rsaFixture("rsa1024e3_cert.der"), rsaFixture("rsa1536_cert.der"), Bytes(9, 'n')})
        EXPECT_EQ(verify(unsupported, message_, signature), "0 " + kStart + "[RsaVerify] BN_hex2bn failed.\n");
    // Another key's signature does not decrypt to a valid block; a longer one not at all.
    EXPECT_EQ(verify(cert1024_, message_, sha1Signature(key2048_)), kDecryptFailed);
    EXPECT_EQ(verify(cert2048_, message_, signature), kDecryptFailed);

    // VerifySignatureValue passes the certificate where the signature goes.
    StdoutCapture capture;
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(qbytes(signature), qbytes(cert1024_), qbytes(message_), ALGO_RSA), 0);
    EXPECT_EQ("0 " + capture.text(), kDecryptFailed);
}

}  // namespace
