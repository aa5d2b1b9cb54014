// ZTVerifyTools: certificate validity and key, SM2 signatures made by
// OpenSSL verified through VerifySignatureValue in every form, and the
// object's meta-object.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QMetaMethod>
#include <QMetaObject>
#include <algorithm>
#include <random>
#include <string>

#include "support/capture.h"
#include "support/sm2_signer.h"
#include "ztutil/ztverifytools.h"

namespace {

using ztutil_test::Bytes;
using ztutil_test::Sm2Signer;
using ztutil_test::StdoutCapture;

const long kDay = 24 * 3600;

QByteArray array(const Bytes& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

Bytes randomBytes(std::mt19937& rng, size_t length) {
    Bytes data(length);
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(rng());
    return data;
}

int validity(Bytes certificate) {
    return ZTVerifyTools::ZTVerifyCertValidity(certificate.data(),
                                               static_cast<unsigned int>(certificate.size()));
}

// The content offset of the n-th UTCTime (17 0D) of a DER certificate.
size_t timeContent(const Bytes& der, int n) {
    for (size_t i = 0; i + 15 <= der.size(); ++i) {
        if (der[i] == 0x17 && der[i + 1] == 0x0D && n-- == 0)
            return i + 2;
    }
    ADD_FAILURE() << "no UTCTime";
    return 0;
}

int verifySm2(const Bytes& signature, const Bytes& certificate, const Bytes& data) {
    StdoutCapture quiet;  // SM2Verify reports on standard output
    return ZTVerifyTools::VerifySignatureValue(array(signature), array(certificate), array(data),
                                               ALGO_SM2);
}

Bytes concat(const Bytes& a, const Bytes& b) {
    Bytes out = a;
    out.insert(out.end(), b.begin(), b.end());
    return out;
}

TEST(ZTVerifyToolsTest, CertificateValidityAgainstTheCurrentTime) {
    Sm2Signer signer;
    EXPECT_EQ(validity(signer.certificate(-2 * kDay, 2 * kDay)), 1);
    EXPECT_EQ(validity(signer.certificate(-3 * kDay, -2 * kDay)), 0);  // expired
    EXPECT_EQ(validity(signer.certificate(2 * kDay, 3 * kDay)), 0);    // not yet valid
    EXPECT_EQ(ZTVerifyTools::VerifyCertValidity(array(signer.certificate(-2 * kDay, 2 * kDay))), 1);
    // Far dates are GeneralizedTime (from 2050 on) and are read as well.
    EXPECT_EQ(validity(signer.certificate(-2 * kDay, 40L * 365 * kDay)), 1);
    EXPECT_EQ(validity(signer.certificate(40L * 365 * kDay, 41L * 365 * kDay)), 0);

    // Without the version field child 4 is the subject name: no times are
    // found and the certificate counts as valid.
    EXPECT_EQ(validity(signer.certificate(-3 * kDay, -2 * kDay, 0)), 1);

    // A time whose text is no valid date is skipped instead of stopping the
    // process.
    Bytes expired = signer.certificate(-3 * kDay, -2 * kDay);
    const size_t notAfter = timeContent(expired, 1);
    expired[notAfter + 2] = '1';
    expired[notAfter + 3] = '3';  // month 13
    EXPECT_EQ(validity(expired), 1);

    EXPECT_EQ(ZTVerifyTools::ZTVerifyCertValidity(nullptr, 10), 0);
    Bytes garbage = {1, 2, 3};
    EXPECT_EQ(ZTVerifyTools::ZTVerifyCertValidity(garbage.data(), 0), 0);
    EXPECT_EQ(validity(garbage), 1);
}

TEST(ZTVerifyToolsTest, PublicKeyOfTheCertificate) {
    Sm2Signer signer;
    Bytes certificate = signer.certificate(-kDay, kDay);
    unsigned int length = 0;
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(certificate.data(),
                                               static_cast<unsigned int>(certificate.size()),
                                               nullptr, &length),
              1);
    ASSERT_EQ(length, 65u);
    Bytes key(length);
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(certificate.data(),
                                               static_cast<unsigned int>(certificate.size()),
                                               key.data(), &length),
              1);
    EXPECT_EQ(key, concat(concat(Bytes{0x04}, signer.x()), signer.y()));

    Bytes notCertificate = {0x30, 0x03, 0x02, 0x01, 0x05};
    length = 0;
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(notCertificate.data(), 5, nullptr, &length), 1);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(nullptr, 5, nullptr, &length), 0);
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(notCertificate.data(), 0, nullptr, &length), 0);
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(notCertificate.data(), 5, nullptr, nullptr), 0);
}

TEST(ZTVerifyToolsTest, OpenSslSm2SignaturesVerifyInEveryForm) {
    std::mt19937 rng(41);
    int minimalDerChecked = 0;
    for (int keyIndex = 0; keyIndex < 4; ++keyIndex) {
        Sm2Signer signer;
        const Bytes certificate = signer.certificate(-kDay, kDay);
        for (int i = 0; i < 60; ++i) {
            const Bytes message = randomBytes(rng, 1 + rng() % 200);
            const Bytes der = signer.sign(message);
            Bytes r, s;
            ztutil_test::splitSignature(der, &r, &s);
            const Bytes shortForm = concat(r, s);
            ASSERT_EQ(verifySm2(shortForm, certificate, message), 1) << keyIndex << "/" << i;

            // The library's DER form keeps all 32 value bytes.
            unsigned int derLength = 0;
            unsigned char* own = ZTVerifyTools::ZTSM2SignData64ToASNData(
                const_cast<unsigned char*>(shortForm.data()), 64, &derLength);
            ASSERT_NE(own, nullptr);
            EXPECT_EQ(verifySm2(Bytes(own, own + derLength), certificate, message), 1);
            delete[] own;

            // OpenSSL's minimal DER converts only when both INTEGER contents
            // are 32 or 33 bytes; a shorter one is not right-aligned.
            const bool fullWidth = der[3] >= 32 && der[4 + der[3] + 1] >= 32;
            EXPECT_EQ(verifySm2(der, certificate, message), fullWidth ? 1 : 0);
            minimalDerChecked += fullWidth ? 0 : 1;

            Bytes changed = message;
            changed[rng() % changed.size()] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verifySm2(shortForm, certificate, changed), 0);
            Bytes flipped = shortForm;
            flipped[rng() % 64] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verifySm2(flipped, certificate, message), 0);
        }
    }
    RecordProperty("short INTEGER signatures", minimalDerChecked);
}

TEST(ZTVerifyToolsTest, DispatchAndSoftVerifyRefusals) {
    Sm2Signer signer;
    const Bytes certificate = signer.certificate(-kDay, kDay);
    const Bytes message = {'m'};
    Bytes r, s;
    ztutil_test::splitSignature(signer.sign(message), &r, &s);
    const Bytes shortForm = concat(r, s);
    EXPECT_EQ(verifySm2(shortForm, certificate, message), 1);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(array(shortForm), array(certificate),
                                                  array(message), static_cast<enAlgoIDType>(2)),
              0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(array(shortForm), array(certificate),
                                                  QByteArray(), ALGO_SM2),
              0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(QByteArray(), array(certificate),
                                                  array(message), ALGO_SM2),
              0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(array(shortForm), QByteArray(), array(message),
                                                  ALGO_SM2),
              0);
    // A certificate without a key gives the zero point, which SM2Verify refuses.
    EXPECT_EQ(verifySm2(shortForm, Bytes{0x30, 0x00}, message), 0);

    unsigned char wide[128] = {0};
    Bytes cert = certificate, data = message;
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(nullptr, 10, data.data(), 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(cert.data(), 0, data.data(), 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(cert.data(), 10, nullptr, 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(cert.data(), 10, data.data(), 0, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(cert.data(), 10, data.data(), 1, nullptr, 128), 0);

    EXPECT_EQ(ZTVerifyTools::VerifySeal(array(shortForm), ALGO_SM2), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySeal(QByteArray(), ALGO_RSA), 0);
}

TEST(ZTVerifyToolsTest, MetaObjectWithoutInvokableMethods) {
    ZTVerifyTools tools;
    const QMetaObject* meta = tools.metaObject();
    EXPECT_STREQ(meta->className(), "ZTVerifyTools");
    EXPECT_EQ(meta->methodCount(), QObject::staticMetaObject.methodCount());
    EXPECT_EQ(tools.qt_metacast("ZTVerifyTools"), static_cast<void*>(&tools));
    EXPECT_TRUE(tools.inherits("ZTVerifyTools"));
    EXPECT_FALSE(QMetaObject::invokeMethod(&tools, "VerifySeal", Qt::DirectConnection));
    QObject parent;
    ZTVerifyTools* child = new ZTVerifyTools(&parent);
    EXPECT_EQ(child->parent(), &parent);
}

}  // namespace
