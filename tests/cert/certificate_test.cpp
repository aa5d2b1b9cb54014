#include <gtest/gtest.h>

#include <QMetaObject>
#include <openssl/x509.h>

#include "cert/x509_oracle.h"
#include "support/capture.h"
#include "ztutil/component.h"
#include "ztutil/ztcertificate.h"

#include <memory>

using cert_test::CertificateRecipe;
using cert_test::ExpectedFields;
using ztutil_test::DebugCapture;
using ztutil_test::StdoutCapture;

namespace {

ExpectedFields oracle(const QByteArray& der) {
    X509* certificate = cert_test::parseDer(der);
    EXPECT_NE(certificate, nullptr);
    ExpectedFields fields = cert_test::expectedFields(certificate);
    X509_free(certificate);
    return fields;
}

void expectFieldsMatch(ZTCertificate& certificate, const ExpectedFields& expected) {
    EXPECT_EQ(certificate.version(), expected.version);
    EXPECT_EQ(certificate.serialNumber(), expected.serialHex);
    EXPECT_EQ(certificate.algName(), expected.signatureOid);
    EXPECT_EQ(certificate.getIssuerC(), expected.issuerC);
    EXPECT_EQ(certificate.getIssuerO(), expected.issuerO);
    EXPECT_EQ(certificate.getIssuerOU(), expected.issuerOU);
    EXPECT_EQ(certificate.getIssuerCN(), expected.issuerCN);
    EXPECT_EQ(certificate.getSubjectCN(), expected.subjectCN);
    EXPECT_EQ(certificate.getSubjectO(), expected.subjectO);
    EXPECT_EQ(certificate.getSubjectOU(), expected.subjectOU);
    EXPECT_EQ(certificate.getSubjectE(), expected.subjectE);
    EXPECT_EQ(certificate.notBefore(), expected.notBefore);
    EXPECT_EQ(certificate.notAfter(), expected.notAfter);
    EXPECT_EQ(certificate.pubKeyAlgOID(), expected.keyAlgorithmOid);
    EXPECT_EQ(certificate.getPublicKeyData(), expected.keyBits);
    EXPECT_EQ(certificate.pubkey(), QString::fromLatin1(expected.keyBits.toHex()));
}

class CertificateFixtures : public ::testing::TestWithParam<const char*> {};

TEST_P(CertificateFixtures, FieldsAgreeWithOpenSSL) {
    const QByteArray der = cert_test::fixture(GetParam());
    ASSERT_FALSE(der.isEmpty()) << GetParam();
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(der));
    expectFieldsMatch(certificate, oracle(der));
}

INSTANTIATE_TEST_SUITE_P(Files, CertificateFixtures,
                         ::testing::Values("sm2_v3.der", "sm2_v1.der", "sm2_two_cn_gentime.der",
                                           "sm2_bmp_name.der", "rsa1024.der", "rsa2048.der"));

TEST(Certificate, Sm2VersionThreeInDetail) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_v3.der")));
    EXPECT_EQ(certificate.version(), "3");
    EXPECT_EQ(certificate.serialNumber(), "008a");  // the leading zero octet is kept
    EXPECT_EQ(certificate.algName(), "1.2.156.10197.1.501");
    EXPECT_EQ(certificate.pubKeyAlgOID(), "1.2.840.10045.2.1");
    EXPECT_EQ(certificate.getPublicKeyData().size(), 64);
    EXPECT_EQ(certificate.getIssuerDN(), "C=CN,O=Test Org,OU=Seal Unit,CN=Seal Signer");
    // The standard e-mail type does not match the literal the library compares.
    EXPECT_EQ(certificate.getSubjectE(), "");
    EXPECT_EQ(certificate.getSubjectDN(), "CN=Seal Signer,E=,O=Test Org,OU=Seal Unit");
}

TEST(Certificate, VersionOneOpensAndStillLogsTheMissingVersion) {
    ZTCertificate certificate;
    DebugCapture debug;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_v1.der")));
    EXPECT_EQ(certificate.version(), "1");
    EXPECT_TRUE(debug.lines().contains(
        "[ZTCertificate::parseTBSCertificate] ...tbsCertificate version fail"));
}

TEST(Certificate, LastValueOfATypeWinsAndGeneralizedTimeIsRead) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_two_cn_gentime.der")));
    EXPECT_EQ(certificate.getSubjectCN(), "Second Name");
    EXPECT_GE(certificate.notAfter().date().year(), 2050);
    EXPECT_EQ(certificate.notAfter().timeSpec(), Qt::UTC);
}

TEST(Certificate, BmpNameComesOutAsUtf8OctetsOneCharacterEach) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_bmp_name.der")));
    const QString expected = QString::fromLatin1(QStringLiteral("电子印章").toUtf8());
    EXPECT_EQ(certificate.getSubjectCN(), expected);
    EXPECT_EQ(certificate.getSubjectO(), "BMP Org");
}

TEST(Certificate, RsaKeyKeepsItsStructureAndLeavesTheParameterOid) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_v3.der")));
    certificate.close();
    ASSERT_TRUE(certificate.open(cert_test::fixture("rsa1024.der")));
    EXPECT_EQ(certificate.pubKeyAlgOID(), "1.2.840.113549.1.1.1");
    const QByteArray key = certificate.getPublicKeyData();
    ASSERT_GT(key.size(), 2);
    EXPECT_EQ(static_cast<unsigned char>(key.at(0)), 0x30);  // RSAPublicKey SEQUENCE
}

TEST(Certificate, EmptyInputFailsWithOneLine) {
    ZTCertificate certificate;
    StdoutCapture out;
    EXPECT_FALSE(certificate.open(QByteArray()));
    EXPECT_EQ(out.text(), "[ZTCertificate::open] data.isEmpty\n");
}

TEST(Certificate, GarbageAndNonSequenceRootsFail) {
    ZTCertificate certificate;
    {
        StdoutCapture out;
        DebugCapture debug;
        EXPECT_FALSE(certificate.open(QByteArray("\x02\x01\x05", 3)));
        EXPECT_NE(out.text().find("[ZTCertificate::open] asn root type is not SEQUENCE\n"),
                  std::string::npos);
        EXPECT_TRUE(debug.lines().contains("[ZTCertificate::open] asn root type is not SEQUENCE!"));
    }
    {
        StdoutCapture out;
        EXPECT_FALSE(certificate.open(QByteArray("\x30\x05\x02", 3)));
        EXPECT_NE(out.text().find("[ZTCertificate::open] asn->open fail! \n"), std::string::npos);
    }
    {
        StdoutCapture out;
        EXPECT_FALSE(certificate.open(QByteArray("\x30\x03\x02\x01\x05", 5)));
        EXPECT_NE(out.text().find("[ZTCertificate::open] parseTBSCertificate fail\n"),
                  std::string::npos);
    }
}

TEST(Certificate, TruncatedCertificateNeverOpens) {
    const QByteArray der = cert_test::fixture("sm2_v3.der");
    for (int length = 0; length < der.size(); length += 7) {
        ZTCertificate certificate;
        StdoutCapture quiet;
        EXPECT_FALSE(certificate.open(der.left(length))) << length;
    }
}

TEST(Certificate, SecondOpenWithoutCloseStillReportsTheFirst) {
    ZTCertificate certificate;
    const QByteArray first = cert_test::fixture("sm2_v3.der");
    ASSERT_TRUE(certificate.open(first));
    ASSERT_TRUE(certificate.open(cert_test::fixture("rsa2048.der")));
    EXPECT_EQ(certificate.getSubjectCN(), "Seal Signer");
    EXPECT_EQ(certificate.pubKeyAlgOID(), "1.2.840.10045.2.1");
}

TEST(Certificate, AttributesMissingFromALaterCertificateCarryOver) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_v3.der")));
    certificate.close();
    ASSERT_TRUE(certificate.open(cert_test::fixture("sm2_two_cn_gentime.der")));
    EXPECT_EQ(certificate.getSubjectCN(), "Second Name");
    EXPECT_EQ(certificate.getSubjectO(), "Twin Org");
    EXPECT_EQ(certificate.getSubjectOU(), "Seal Unit") << "carried over from the first certificate";
    EXPECT_EQ(certificate.getIssuerC(), "CN");
}

TEST(Certificate, DistinguishedNamesAreFilledMarkerByMarker) {
    CertificateRecipe recipe;
    recipe.issuer = {{"C", "CN"}, {"O", "Org %4"}, {"CN", "Issuer"}};
    recipe.subject = {{"CN", "Subject"}};
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(cert_test::buildCertificate(recipe)));
    // The O value's "%4" is filled by the last substitution, like the CN slot.
    EXPECT_EQ(certificate.getIssuerDN(), "C=CN,O=Org Issuer,OU=,CN=Issuer");
    EXPECT_EQ(certificate.getSubjectDN(), "CN=Subject,E=,O=,OU=");
}

TEST(Certificate, TimesThatAreNotStrictDerFail) {
    struct Case {
        QByteArray notBefore;
        const char* line;
    } cases[] = {
        {"230101000000", "notBeforeValue fail"},          // no Z
        {"2301010000Z", "notBefore fail"},                // seconds omitted
        {"230101000000+0800", "notBeforeValue fail"},     // offset
        {"20230101000000.5Z", "notBefore fail"},          // fractional seconds
    };
    for (const Case& c : cases) {
        CertificateRecipe recipe;
        recipe.subject = {{"CN", "x"}};
        recipe.notBefore = c.notBefore;
        ZTCertificate certificate;
        DebugCapture debug;
        StdoutCapture quiet;
        EXPECT_FALSE(certificate.open(cert_test::buildCertificate(recipe))) << c.notBefore.constData();
        EXPECT_TRUE(debug.lines().contains(
            QStringLiteral("[ZTCertificate::parseTBSCertificate] ...tbsCertificate ") + c.line))
            << c.notBefore.constData();
    }
}

TEST(CertificateTime, DigitsAreTakenAsUtcMinusEight) {
    ZTCertificate certificate;
    EXPECT_EQ(certificate.fromUTCTime("230101000000Z"),
              QDateTime(QDate(2023, 1, 1), QTime(8, 0), Qt::UTC));
    EXPECT_EQ(certificate.fromUTCTime("491231235959Z").date().year(), 2050);  // 2049 + 8 h
    EXPECT_EQ(certificate.fromUTCTime("500101000000Z"),
              QDateTime(QDate(1950, 1, 1), QTime(8, 0), Qt::UTC));
    EXPECT_EQ(certificate.fromGeneralizedTime("20540408233435Z"),
              QDateTime(QDate(2054, 4, 9), QTime(7, 34, 35), Qt::UTC));
    EXPECT_TRUE(certificate.fromUTCTime("2301010000Z").date().isNull());
    EXPECT_TRUE(certificate.fromGeneralizedTime("230101000000Z").date().isNull());
    EXPECT_FALSE(certificate.fromUTCTime("23aa01000000Z").isValid());  // month reads as 0
}

TEST(CertificateInvocation, AccessorsAreReachableByName) {
    ZTCertificate certificate;
    bool opened = false;
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "open", Qt::DirectConnection,
                                          Q_RETURN_ARG(bool, opened),
                                          Q_ARG(QByteArray, cert_test::fixture("sm2_v3.der"))));
    EXPECT_TRUE(opened);
    QString cn;
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "getSubjectCN", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, cn)));
    EXPECT_EQ(cn, "Seal Signer");
    QDateTime notAfter;
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "notAfter", Qt::DirectConnection,
                                          Q_RETURN_ARG(QDateTime, notAfter)));
    EXPECT_EQ(notAfter, certificate.notAfter());
    QDateTime converted;
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "fromUTCTime", Qt::DirectConnection,
                                          Q_RETURN_ARG(QDateTime, converted),
                                          Q_ARG(QString, QStringLiteral("121231120000Z"))));
    EXPECT_EQ(converted, QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::UTC));
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "close", Qt::DirectConnection));
    ASSERT_TRUE(QMetaObject::invokeMethod(&certificate, "dump", Qt::DirectConnection));
}

}  // namespace

namespace {

TEST(CertificateRegistry, CreatedByTheMisspelledProgIdOrTheClsId) {
    std::unique_ptr<QObject> byProgId(CreateComponent(QStringLiteral("ZTUTIL.ZTCerificate.1"), QString()));
    ASSERT_NE(byProgId, nullptr);
    EXPECT_NE(qobject_cast<ZTCertificate*>(byProgId.get()), nullptr);
    std::unique_ptr<QObject> byClsId(
        CreateComponent(QString(), QStringLiteral("28BE1D31-810B-490F-B02B-D1B2BC1B838F")));
    EXPECT_NE(qobject_cast<ZTCertificate*>(byClsId.get()), nullptr);
    EXPECT_EQ(CreateComponent(QStringLiteral("ZTUTIL.ZTCertificate.1"), QString()), nullptr);
}

}  // namespace
