// zthost's readers of seals, seal signatures, signedData and OFD packages,
// on documents laid out by openssl (tests/data/ofd/make_ofd_fixtures.sh):
// the bytes each reader says are signed must verify with OpenSSL's SM2.
#include <gtest/gtest.h>
#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/x509.h>


#include "readers/format_error.h"
#include "readers/ofd_package.h"
#include "readers/ses_signature.h"
#include "readers/signed_data.h"
#include "support/qt_printers.h"
#include "tools/tool_support.h"

namespace {

QByteArray sm3(const QByteArray& data) {
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EVP_Digest(data.constData(), size_t(data.size()), out, &size, EVP_sm3(), nullptr);
    return QByteArray(reinterpret_cast<const char*>(out), int(size));
}

// OpenSSL's SM2 verification (SM3, user ID 1234567812345678) of a DER or
// r || s signature against the key of a DER certificate.
bool openSslVerifies(const ByteView& certificate, const QByteArray& data, const ByteView& signature) {
    QByteArray der = signature.toByteArray();
    if (der.size() == 64) {
        ECDSA_SIG* sig = ECDSA_SIG_new();
        ECDSA_SIG_set0(sig, BN_bin2bn(signature.data(), 32, nullptr), BN_bin2bn(signature.data() + 32, 32, nullptr));
        unsigned char* encoded = nullptr;
        const int length = i2d_ECDSA_SIG(sig, &encoded);
        der = QByteArray(reinterpret_cast<const char*>(encoded), length);
        OPENSSL_free(encoded);
        ECDSA_SIG_free(sig);
    }
    const unsigned char* p = certificate.data();
    X509* cert = d2i_X509(nullptr, &p, certificate.size());
    if (cert == nullptr)
        return false;
    EVP_PKEY* key = X509_get_pubkey(cert);
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    EVP_PKEY_CTX* keyContext = EVP_PKEY_CTX_new(key, nullptr);
    EVP_PKEY_CTX_set1_id(keyContext, "1234567812345678", 16);
    EVP_MD_CTX_set_pkey_ctx(context, keyContext);
    const bool valid = EVP_DigestVerifyInit(context, nullptr, EVP_sm3(), nullptr, key) == 1 &&
                       EVP_DigestVerify(context, reinterpret_cast<const unsigned char*>(der.constData()), size_t(der.size()),
                                        reinterpret_cast<const unsigned char*>(data.constData()), size_t(data.size())) == 1;
    EVP_MD_CTX_free(context);
    EVP_PKEY_CTX_free(keyContext);
    EVP_PKEY_free(key);
    X509_free(cert);
    return valid;
}

struct SesCase {
    QByteArray der;
    SesLayout layout;
    qint64 version;
    SesLayout sealLayout;
};

TEST(SesReader, WhatItCallsSignedVerifiesWithOpenSsl) {
    const SesCase cases[] = {
        {ofdData("ses-v4.der"), SesLayout::V4, 4, SesLayout::V4},
        {ofdData("ses-v1.der"), SesLayout::V1, 1, SesLayout::V1},
        {example("gm-seal.der"), SesLayout::V1, 2, SesLayout::V4},  // the library's GM structure
        {example("zw-seal.der"), SesLayout::V4, 4, SesLayout::V4},  // and its government-affairs one
    };
    for (const SesCase& sample : cases) {
        const SesSignature signature = readSesSignature(ByteView::of(sample.der));
        EXPECT_EQ(signature.layout, sample.layout);
        EXPECT_EQ(signature.version, sample.version);
        EXPECT_TRUE(openSslVerifies(signature.certificate, signature.toBeSigned.toByteArray(), signature.signature));
        const SesSeal seal = readSesSeal(signature.seal);
        EXPECT_EQ(seal.layout, sample.sealLayout);
        EXPECT_TRUE(openSslVerifies(seal.makerCertificate, seal.makerSignedBytes, seal.makerSignature));
        ASSERT_EQ(seal.signerCertificates.size(), 1u);
        EXPECT_TRUE(seal.signerCertificates[0].sameBytes(signature.certificate));
    }
}

TEST(SesReader, FieldsAsOpensslLaidThemOut) {
    const QByteArray der = ofdData("ses-v4.der");
    const SesSignature signature = readSesSignature(ByteView::of(der));
    EXPECT_EQ(signature.time, QDateTime(QDate(2024, 3, 1), QTime(9, 30), Qt::UTC));
    EXPECT_EQ(signature.extensionCount, 1);
    EXPECT_FALSE(signature.timeStamp.empty());
    const SesSeal seal = readSesSeal(signature.seal);
    EXPECT_EQ(seal.name, QString::fromUtf8("zthost 演示印章 😀"));
    EXPECT_EQ(seal.esId, QStringLiteral("ES-V4-0001"));
    EXPECT_EQ(seal.validEnd, QDateTime(QDate(2049, 12, 31), QTime(23, 59, 59), Qt::UTC));
    EXPECT_EQ(seal.pictureData.toByteArray(), ofdData("picture.png"));
    EXPECT_EQ(pictureExtension(seal.pictureType), QStringLiteral("png"));
    const QByteArray v1Bytes = ofdData("ses-v1.der");  // the views point into it
    const SesSignature v1 = readSesSignature(ByteView::of(v1Bytes));
    EXPECT_EQ(v1.timeText, QByteArray("20240301093000Z"));  // text inside a BIT STRING
    EXPECT_EQ(v1.time, signature.time);
    EXPECT_EQ(readSesSeal(v1.seal).validStart, QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC));  // UTCTime
}

TEST(SesReader, EveryTruncationIsRefused) {
    for (const QByteArray& whole : {ofdData("ses-v4.der"), ofdData("seal-v1.esl")}) {
        for (int length = 0; length < whole.size(); length += 7) {
            const QByteArray cut = whole.left(length);
            EXPECT_THROW(readSesSignature(ByteView::of(cut)), FormatError) << length;
            EXPECT_THROW(readSesSeal(ByteView::of(cut)), FormatError) << length;
        }
    }
}

TEST(SignedDataReader, WithAndWithoutSignedAttributes) {
    const QByteArray certificate = example("sm2-cert.der");
    for (const char* name : {"sign-attributes.ofd", "sign-gm.ofd"}) {
        const QByteArray bytes = ofdData(name);
        const OfdPackage package(bytes);
        const QByteArray xml = package.zip().read(QStringLiteral("Doc_0/Signs/Sign_0/Signature.xml"), kMaxOfdPartSize);
        const QByteArray value = package.zip().read(QStringLiteral("Doc_0/Signs/Sign_0/SignedValue.dat"), kMaxOfdPartSize);
        const SignedData data = readSignedData(ByteView::of(value));
        EXPECT_EQ(signerCertificate(data).toByteArray(), certificate) << name;
        if (data.hasSignedAttributes) {
            EXPECT_EQ(data.contentType, QLatin1String(oid::kPkcs7SignedData));
            EXPECT_EQ(data.messageDigest.toByteArray(), sm3(xml));
            EXPECT_TRUE(openSslVerifies(ByteView::of(certificate), data.signedAttributes, data.signature));
        } else {
            EXPECT_EQ(data.contentType, QLatin1String(oid::kGmSignedData));
            EXPECT_EQ(data.content.toByteArray(), sm3(xml));
            EXPECT_TRUE(openSslVerifies(ByteView::of(certificate), data.content.toByteArray(), data.signature));
        }
    }
}

TEST(OfdPackage, PathsResolveAsOfdDoes) {
    const struct {
        const char* folder;
        const char* location;
        QStringList candidates;
    } cases[] = {
        {"Doc_0/Signs", "Sign_0/Signature.xml", {"Doc_0/Signs/Sign_0/Signature.xml", "Sign_0/Signature.xml"}},
        {"Doc_0/Signs", "/Doc_0/Pages/Page_0/Content.xml", {"Doc_0/Pages/Page_0/Content.xml"}},
        {"Doc_0/Signs", "Doc_0/Document.xml", {"Doc_0/Signs/Doc_0/Document.xml", "Doc_0/Document.xml"}},
        {"Doc_0/Signs", "../Pages/./Page_0\\Content.xml", {"Doc_0/Pages/Page_0/Content.xml"}},
        {"", "Doc_0//Signs/Signatures.xml", {"Doc_0/Signs/Signatures.xml"}},
    };
    for (const auto& sample : cases)
        EXPECT_EQ(packageCandidates(QLatin1String(sample.folder), QLatin1String(sample.location)), sample.candidates)
            << sample.location;
    for (const char* escape : {"../x", "a/../../x", "/.."})
        EXPECT_THROW(normalisePackagePath(QLatin1String(escape)), FormatError) << escape;
    EXPECT_THROW(packageCandidates(QStringLiteral("Doc_0"), QStringLiteral("../../etc/passwd")), FormatError);
}

TEST(OfdPackage, FollowsOfdXmlToEveryReference) {
    const QByteArray bytes = ofdData("v1.ofd");
    const OfdPackage package(bytes);
    const std::vector<OfdDocument> documents = package.documents();
    ASSERT_EQ(documents.size(), 1u);
    ASSERT_EQ(documents[0].signatures.size(), 3u);
    EXPECT_EQ(documents[0].signatures[2].id, QStringLiteral("v1-5"));
    EXPECT_EQ(documents[0].signatures[2].path, QStringLiteral("Doc_0/Signs/Sign_2/Signature.xml"));
    const QString path = documents[0].signatures[0].path;
    const OfdSignatureFile file = package.signatureFile(path, package.zip().read(path, kMaxOfdPartSize));
    EXPECT_EQ(file.checkMethod, QStringLiteral("1.2.156.10197.1.401"));
    EXPECT_EQ(file.signedValuePath, QStringLiteral("Doc_0/Signs/Sign_0/SignedValue.dat"));
    ASSERT_EQ(file.references.size(), 2u);
    for (const OfdReference& reference : file.references)
        EXPECT_EQ(reference.checkValue, sm3(package.zip().read(reference.path, kMaxReferencedSize))) << reference.path.toStdString();
}

TEST(ZipPackage, RefusesWhatItShouldNotInflate) {
    EXPECT_THROW(ZipPackage(ofdData("not-a-zip.ofd")), FormatError);
    const QByteArray bomb = ofdData("bomb.ofd");
    const ZipPackage package(bomb);
    EXPECT_THROW(package.read(QStringLiteral("Doc_0/Signs/Sign_0/Signature.xml"), kMaxOfdPartSize), FormatError);
    EXPECT_THROW(package.read(QStringLiteral("Doc_0/absent.xml"), kMaxOfdPartSize), FormatError);
    EXPECT_EQ(package.read(QStringLiteral("OFD.xml"), kMaxOfdPartSize).left(5), QByteArray("<?xml"));
    EXPECT_THROW(OfdPackage(ofdData("malformed-xml.ofd")).documents(), FormatError);
}

}  // namespace
