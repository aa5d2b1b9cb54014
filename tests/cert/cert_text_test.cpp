// Certificate text forms and the validity parameter.
#include "support/common.h"
#include "support/sm2_signer.h"
#include "ztutil/ztcertificate.h"

using ztutil_test::fixture;
using ztutil_test::CertificateRecipe;
using ztutil_test::selfSigned;

namespace {

const QString kBegin = QStringLiteral("-----BEGIN CERTIFICATE-----");

TEST(CertText, PemAndDerBothWays) {
    ZTCertificate converter;
    const QByteArray der = fixture("cert/sm2_v3.der"), wrapped = fixture("cert/sm2_v3.pem");
    const QString pem = converter.GetCertString(der);
    EXPECT_EQ(pem, kBegin + QString::fromLatin1(der.toBase64()) + QStringLiteral("-----END CERTIFICATE-----"));
    EXPECT_EQ(converter.GetCertByteArray(pem), der);
    // PEM text is passed through up to the first zero.
    EXPECT_EQ(converter.GetCertString(wrapped), QString::fromLatin1(wrapped));
    EXPECT_EQ(converter.GetCertString(QByteArray("CERTIFICATE\0tail", 16)), "CERTIFICATE");
    // An array without a terminator is read up to its end, not past it (ASan checks).
    const std::vector<char> raw(7, 'A');
    EXPECT_EQ(converter.GetCertString(QByteArray::fromRawData(raw.data(), 7)),
              kBegin + QStringLiteral("QUFBQUFBQQ==-----END CERTIFICATE-----"));
    EXPECT_EQ(converter.GetCertString(QByteArray()), QString());
    // Bare Base64 decodes directly; unknown characters read as padding.
    EXPECT_EQ(converter.GetCertByteArray(QString::fromLatin1(der.toBase64())), der);
    EXPECT_TRUE(converter.GetCertByteArray(QString()).isEmpty());
    EXPECT_EQ(converter.GetCertByteArray(QStringLiteral("!!!!")), QByteArray(1, '\0'));
    // Line breaks of wrapped PEM, or the dashes of a lone marker, read as
    // padding and shift the groups: the result is not the certificate.
    const QByteArray fromWrapped = converter.GetCertByteArray(QString::fromLatin1(wrapped));
    EXPECT_FALSE(fromWrapped.isEmpty());
    EXPECT_NE(fromWrapped, der);
    EXPECT_NE(converter.GetCertByteArray(kBegin + QString::fromLatin1(der.toBase64())), der);
}

TEST(CertParam, OnlyTheValidityDigitsOfAVersionThreeCertificate) {
    ZTCertificate reader;
    ztutil_test::StdoutCapture quiet;
    const QByteArray built = selfSigned(CertificateRecipe());
    EXPECT_EQ(reader.GetCertParam(built, 4, 0x30), "230101000000;330101000000");
    EXPECT_EQ(reader.GetCertParam(built, 4, 0), "230101000000;330101000000");
    const QStringList parts = reader.GetCertParam(fixture("cert/sm2_two_cn_gentime.der"), 4, 0x30).split(';');
    ASSERT_EQ(parts.size(), 2);
    EXPECT_EQ(parts.at(0).size(), 12);  // UTCTime without its Z
    EXPECT_EQ(parts.at(1).size(), 14);  // GeneralizedTime without its Z

    const QByteArray der = fixture("cert/sm2_v3.der");
    for (int id : {0, 1, 3, 5, 6, -1})
        EXPECT_TRUE(reader.GetCertParam(der, id, 0x30).isEmpty()) << id;
    EXPECT_TRUE(reader.GetCertParam(der, 4, 0x31).isEmpty());  // wrong tag
    EXPECT_TRUE(reader.GetCertParam(QByteArray(), 4, 0x30).isEmpty());
    EXPECT_TRUE(reader.GetCertParam(QByteArray("\x01\x02\x03", 3), 4, 0x30).isEmpty());
    // Child 4 of a version-1 certificate is its subject: no time texts there.
    EXPECT_TRUE(reader.GetCertParam(fixture("cert/sm2_v1.der"), 4, 0x30).isEmpty());
}

}  // namespace
