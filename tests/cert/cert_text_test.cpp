#include <gtest/gtest.h>

#include <QMetaObject>

#include "cert/x509_oracle.h"
#include "support/capture.h"
#include "ztutil/ztcertificate.h"

namespace {

const char kBegin[] = "-----BEGIN CERTIFICATE-----";
const char kEnd[] = "-----END CERTIFICATE-----";

TEST(CertText, DerBecomesOneLinePemAndBack) {
    ZTCertificate converter;
    const QByteArray der = cert_test::fixture("sm2_v3.der");
    const QString pem = converter.GetCertString(der);
    EXPECT_EQ(pem, QLatin1String(kBegin) + QString::fromLatin1(der.toBase64()) + QLatin1String(kEnd));
    EXPECT_FALSE(pem.contains(QLatin1Char('\n')));
    EXPECT_EQ(converter.GetCertByteArray(pem), der);
}

TEST(CertText, PemTextIsPassedThroughUpToTheFirstZero) {
    ZTCertificate converter;
    const QByteArray pem = cert_test::fixture("sm2_v3.pem");
    EXPECT_EQ(converter.GetCertString(pem), QString::fromLatin1(pem));
    EXPECT_EQ(converter.GetCertString(QByteArray("CERTIFICATE\0tail", 16)), "CERTIFICATE");
    EXPECT_EQ(converter.GetCertString(QByteArray()), QString());
}

TEST(CertText, BareBase64DecodesDirectly) {
    ZTCertificate converter;
    const QByteArray der = cert_test::fixture("rsa1024.der");
    EXPECT_EQ(converter.GetCertByteArray(QString::fromLatin1(der.toBase64())), der);
    EXPECT_TRUE(converter.GetCertByteArray(QString()).isEmpty());
    // Unknown characters read as padding: one group of padding is one zero octet.
    EXPECT_EQ(converter.GetCertByteArray(QStringLiteral("!!!!")), QByteArray(1, '\0'));
}

TEST(CertText, LineBrokenPemIsHandedToTheLenientDecoderAsItIs) {
    ZTCertificate converter;
    const QByteArray der = cert_test::fixture("sm2_v3.der");
    // 64-character lines: every line break reads as padding and shifts the
    // groups, so the result is not the certificate (the decoder's rule).
    const QString wrapped = QString::fromLatin1(cert_test::fixture("sm2_v3.pem"));
    const QByteArray decoded = converter.GetCertByteArray(wrapped);
    EXPECT_FALSE(decoded.isEmpty());
    EXPECT_NE(decoded, der);
    // With only one marker nothing is removed, and the dashes read as padding.
    const QString oneMarker = QLatin1String(kBegin) + QString::fromLatin1(der.toBase64());
    EXPECT_NE(converter.GetCertByteArray(oneMarker), der);
}

TEST(CertParam, ValidityDigitsOfAVersionThreeCertificate) {
    ZTCertificate reader;
    ztutil_test::StdoutCapture quiet;
    const QString validity = reader.GetCertParam(cert_test::fixture("sm2_two_cn_gentime.der"), 4, 0x30);
    const QStringList parts = validity.split(QLatin1Char(';'));
    ASSERT_EQ(parts.size(), 2) << validity.toStdString();
    EXPECT_EQ(parts.at(0).size(), 12);  // UTCTime without its Z
    EXPECT_EQ(parts.at(1).size(), 14);  // GeneralizedTime without its Z
    EXPECT_TRUE(parts.at(1).startsWith(QLatin1String("20")));

    cert_test::CertificateRecipe recipe;
    recipe.subject = {{"CN", "x"}};
    recipe.notBefore = "230101000000Z";
    recipe.notAfter = "330101000000Z";
    EXPECT_EQ(reader.GetCertParam(cert_test::buildCertificate(recipe), 4, 0x30),
              "230101000000;330101000000");
    EXPECT_EQ(reader.GetCertParam(cert_test::buildCertificate(recipe), 4, 0),
              "230101000000;330101000000");
}

TEST(CertParam, OnlyParameterFourIsKnown) {
    ZTCertificate reader;
    ztutil_test::StdoutCapture quiet;
    const QByteArray der = cert_test::fixture("sm2_v3.der");
    for (int id : {0, 1, 3, 5, 6, -1})
        EXPECT_TRUE(reader.GetCertParam(der, id, 0x30).isEmpty()) << id;
    EXPECT_TRUE(reader.GetCertParam(der, 4, 0x31).isEmpty());  // wrong tag
    EXPECT_TRUE(reader.GetCertParam(QByteArray(), 4, 0x30).isEmpty());
    EXPECT_TRUE(reader.GetCertParam(QByteArray("\x01\x02\x03", 3), 4, 0x30).isEmpty());
}

TEST(CertParam, VersionOneCertificateLooksAtItsSubject) {
    ZTCertificate reader;
    ztutil_test::StdoutCapture quiet;
    // Child 4 of a version-1 certificate is its subject: no time texts there.
    EXPECT_TRUE(reader.GetCertParam(cert_test::fixture("sm2_v1.der"), 4, 0x30).isEmpty());
}

TEST(CertText, ReachableByNameAsTheHostCallsThem) {
    ZTCertificate converter;
    const QByteArray der = cert_test::fixture("sm2_v1.der");
    QString pem;
    ASSERT_TRUE(QMetaObject::invokeMethod(&converter, "GetCertString", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, pem), Q_ARG(QByteArray, der)));
    QByteArray back;
    ASSERT_TRUE(QMetaObject::invokeMethod(&converter, "GetCertByteArray", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, back), Q_ARG(QString, pem)));
    EXPECT_EQ(back, der);
    QString param;
    ASSERT_TRUE(QMetaObject::invokeMethod(&converter, "GetCertParam", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, param), Q_ARG(QByteArray, der),
                                          Q_ARG(int, 4), Q_ARG(int, 0x30)));
    EXPECT_TRUE(param.isEmpty());
}

}  // namespace
