// RsaVerify against certificates and keys made with the openssl command
// (tests/data/rsa), with signatures made here by OpenSSL.
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <QByteArray>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/capture.h"
#include "ztutil/rsa.h"
#include "ztutil/ztverifytools.h"

namespace {

using Bytes = std::vector<unsigned char>;
using ztutil_test::StdoutCapture;

const std::string kStart = "[RsaVerify] rsa verify start...\n";
const std::string kOk = "[RsaVerify] RSA_verify ok\n";

Bytes readFixture(const std::string& name) {
    std::ifstream file(std::string(ZTUTIL_TEST_DATA_DIR) + "/rsa/" + name, std::ios::binary);
    EXPECT_TRUE(file.good()) << name;
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

EVP_PKEY* readKey(const std::string& name) {
    const std::string path = std::string(ZTUTIL_TEST_DATA_DIR) + "/rsa/" + name;
    std::FILE* file = std::fopen(path.c_str(), "r");
    EXPECT_NE(file, nullptr) << path;
    EVP_PKEY* key = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    std::fclose(file);
    EXPECT_NE(key, nullptr);
    return key;
}

Bytes bytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Bytes digestOf(const EVP_MD* md, const Bytes& data) {
    Bytes digest(EVP_MD_get_size(md));
    EVP_Digest(data.data(), data.size(), digest.data(), nullptr, md, nullptr);
    return digest;
}

// PKCS#1 v1.5 signature of `tbs`; with `md` the DigestInfo of that digest
// algorithm is built around it, without it `tbs` is signed as it is.
Bytes sign(EVP_PKEY* key, const Bytes& tbs, const EVP_MD* md) {
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(key, nullptr);
    EXPECT_EQ(EVP_PKEY_sign_init(ctx), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING), 1);
    if (md != nullptr) {
        EXPECT_EQ(EVP_PKEY_CTX_set_signature_md(ctx, md), 1);
    }
    size_t length = 0;
    EXPECT_EQ(EVP_PKEY_sign(ctx, nullptr, &length, tbs.data(), tbs.size()), 1);
    Bytes signature(length);
    EXPECT_EQ(EVP_PKEY_sign(ctx, signature.data(), &length, tbs.data(), tbs.size()), 1);
    signature.resize(length);
    EVP_PKEY_CTX_free(ctx);
    return signature;
}

struct Outcome {
    int result;
    std::string printed;
};

Outcome verify(Bytes certificate, Bytes data, Bytes signature) {
    StdoutCapture capture;
    const int result = RsaVerify(certificate.data(), static_cast<unsigned int>(certificate.size()),
                                 data.data(), static_cast<unsigned int>(data.size()),
                                 signature.data(), static_cast<unsigned int>(signature.size()));
    return {result, capture.text()};
}

// A message whose SHA-1 has no zero byte, so that the scan of the recovered
// block measures a DigestInfo as 35 bytes and a bare digest as 20.
Bytes messageWithoutZeroInDigest(const std::string& seed) {
    for (int i = 0;; ++i) {
        Bytes message = bytes(seed + std::to_string(i));
        Bytes digest = digestOf(EVP_sha1(), message);
        if (std::find(digest.begin(), digest.end(), 0) == digest.end())
            return message;
    }
}

class RsaVerifyTest : public ::testing::Test {
protected:
    void SetUp() override {
        cert1024_ = readFixture("rsa1024_cert.der");
        cert2048_ = readFixture("rsa2048_cert.der");
        key1024_ = readKey("rsa1024_key.pem");
        key2048_ = readKey("rsa2048_key.pem");
        message_ = messageWithoutZeroInDigest("seal data ");
        other_ = bytes("other data");
    }
    void TearDown() override {
        EVP_PKEY_free(key1024_);
        EVP_PKEY_free(key2048_);
    }
    Bytes cert1024_, cert2048_, message_, other_;
    EVP_PKEY* key1024_ = nullptr;
    EVP_PKEY* key2048_ = nullptr;
};

TEST_F(RsaVerifyTest, Sha1DigestInfoSignaturesOnBothKeySizes) {
    const Bytes digest = digestOf(EVP_sha1(), message_);
    const Bytes signature1024 = sign(key1024_, digest, EVP_sha1());
    const Bytes signature2048 = sign(key2048_, digest, EVP_sha1());
    Outcome outcome = verify(cert1024_, message_, signature1024);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, kStart + kOk);
    outcome = verify(cert2048_, message_, signature2048);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, kStart + kOk);

    // Over other data OpenSSL's check fails and its error text is shown.
    outcome = verify(cert1024_, other_, signature1024);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.printed.substr(0, kStart.size() + 13), kStart + "source:error:");
    EXPECT_EQ(outcome.printed, kStart + "source:error:02000068:rsa routines::bad signature\n");
    outcome = verify(cert2048_, other_, signature2048);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_NE(outcome.printed.find("source:error:"), std::string::npos);
}

TEST_F(RsaVerifyTest, BareSha1ValueIsCompared) {
    const Bytes signature = sign(key1024_, digestOf(EVP_sha1(), message_), nullptr);
    Outcome outcome = verify(cert1024_, message_, signature);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, kStart + kOk);
    outcome = verify(cert1024_, other_, signature);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.printed,
              kStart + "[RsaVerify] hash compare failed. verify Signature failed!\n");
}

TEST_F(RsaVerifyTest, OtherRecoveredLengthsAreAcceptedWithoutComparison) {
    // A SHA-256 DigestInfo (51 bytes) of unrelated data still passes.
    Bytes sha256Message = bytes("sha256 ");
    for (int i = 0;; ++i) {
        sha256Message = bytes("sha256 " + std::to_string(i));
        Bytes digest = digestOf(EVP_sha256(), sha256Message);
        if (std::find(digest.begin(), digest.end(), 0) == digest.end())
            break;
    }
    const Bytes signature = sign(key2048_, digestOf(EVP_sha256(), sha256Message), EVP_sha256());
    Outcome outcome = verify(cert2048_, other_, signature);
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, kStart + kOk);
    // So does any signed block of another size, here 10 bytes.
    outcome = verify(cert1024_, other_, sign(key1024_, bytes("ten bytes!"), nullptr));
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.printed, kStart + kOk);
}

TEST_F(RsaVerifyTest, RefusalsAndTheirMessages) {
    const Bytes signature = sign(key1024_, digestOf(EVP_sha1(), message_), EVP_sha1());
    Bytes certificate = cert1024_, data = message_, sig = signature;
    for (int missing = 0; missing < 6; ++missing) {
        StdoutCapture capture;
        const int result = RsaVerify(missing == 0 ? nullptr : certificate.data(),
                                     missing == 1 ? 0 : static_cast<unsigned int>(certificate.size()),
                                     missing == 2 ? nullptr : data.data(),
                                     missing == 3 ? 0 : static_cast<unsigned int>(data.size()),
                                     missing == 4 ? nullptr : sig.data(),
                                     missing == 5 ? 0 : static_cast<unsigned int>(sig.size()));
        EXPECT_EQ(result, 0);
        EXPECT_EQ(capture.text(), "[RsaVerify] rsa verify failed.!\n");
    }

    // Key blocks that are neither 140 nor 270 bytes: exponent 3, 1536 bits,
    // and data that is no certificate at all (no key found).
    for (const Bytes& unsupported : {readFixture("rsa1024e3_cert.der"),
                                     readFixture("rsa1536_cert.der"), bytes("not a certificate")}) {
        const Outcome outcome = verify(unsupported, message_, signature);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.printed, kStart + "[RsaVerify] BN_hex2bn failed.\n");
    }

    // A signature of another key does not decrypt to a valid block; one
    // longer than the modulus does not decrypt at all.
    const Outcome foreign = verify(cert1024_, message_, sign(key2048_, digestOf(EVP_sha1(), message_), EVP_sha1()));
    EXPECT_EQ(foreign.result, 0);
    EXPECT_EQ(foreign.printed, kStart + "[RsaVerify] public decrypt failed, error : [-1]\n");
    const Outcome wrongKey = verify(cert2048_, message_, signature);
    EXPECT_EQ(wrongKey.result, 0);
    EXPECT_EQ(wrongKey.printed, kStart + "[RsaVerify] public decrypt failed, error : [-1]\n");
}

TEST_F(RsaVerifyTest, VerifySignatureValuePassesTheCertificateAsSignature) {
    const Bytes signature = sign(key1024_, digestOf(EVP_sha1(), message_), EVP_sha1());
    StdoutCapture capture;
    const int result = ZTVerifyTools::VerifySignatureValue(
        QByteArray(reinterpret_cast<const char*>(signature.data()), static_cast<int>(signature.size())),
        QByteArray(reinterpret_cast<const char*>(cert1024_.data()), static_cast<int>(cert1024_.size())),
        QByteArray(reinterpret_cast<const char*>(message_.data()), static_cast<int>(message_.size())),
        ALGO_RSA);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(capture.text(), kStart + "[RsaVerify] public decrypt failed, error : [-1]\n");
}

}  // namespace
