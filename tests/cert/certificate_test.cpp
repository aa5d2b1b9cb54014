// ZTCertificate reading certificates made by the openssl command
// (tests/data/cert) and by OpenSSL here. Every field against OpenSSL's own
// reading, on these and on CA certificates, is the certificate fuzz target's
// property, run on its seeds in CI.
#include "support/common.h"
#include "support/sm2_signer.h"
#include "ztutil/ztcertificate.h"

using ztutil_test::CertificateRecipe;
using ztutil_test::selfSigned;
using ztutil_test::fixture;
using ztutil_test::DebugCapture;
using ztutil_test::StdoutCapture;

namespace {

TEST(Certificate, DistinguishedNamesAndVersionOne) {
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(fixture("cert/sm2_v3.der")));
    EXPECT_EQ(certificate.serialNumber(), "008a");  // the leading zero octet is kept
    EXPECT_EQ(certificate.getIssuerDN(), "C=CN,O=Test Org,OU=Seal Unit,CN=Seal Signer");
    // The standard e-mail type does not match the literal the library compares.
    EXPECT_EQ(certificate.getSubjectDN(), "CN=Seal Signer,E=,O=Test Org,OU=Seal Unit");

    // The O value's "%4" is filled by the last substitution, like the CN slot.
    CertificateRecipe recipe;
    recipe.issuer = {{"C", "CN"}, {"O", "Org %4"}, {"CN", "Issuer"}};
    recipe.subject = {{"CN", "Subject"}};
    ZTCertificate built;
    ASSERT_TRUE(built.open(selfSigned(recipe)));
    EXPECT_EQ(built.getIssuerDN(), "C=CN,O=Org Issuer,OU=,CN=Issuer");
    EXPECT_EQ(built.getSubjectDN(), "CN=Subject,E=,O=,OU=");

    ZTCertificate versionOne;
    DebugCapture debug;
    ASSERT_TRUE(versionOne.open(fixture("cert/sm2_v1.der")));
    EXPECT_TRUE(debug.lines().contains("[ZTCertificate::parseTBSCertificate] ...tbsCertificate version fail"));
}

TEST(Certificate, BadInputFailsWithItsMessages) {
    const std::tuple<QByteArray, const char*, const char*> cases[] = {
        {QByteArray(), "[ZTCertificate::open] data.isEmpty\n", nullptr},
        {QByteArray("\x02\x01\x05", 3), "[ZTCertificate::open] asn root type is not SEQUENCE\n",
         "[ZTCertificate::open] asn root type is not SEQUENCE!"},
        {QByteArray("\x30\x05\x02", 3), "[ZTCertificate::open] asn->open fail! \n", nullptr},
        {QByteArray("\x30\x03\x02\x01\x05", 5), "[ZTCertificate::open] parseTBSCertificate fail\n", nullptr}};
    for (const auto& c : cases) {
        ZTCertificate certificate;
        StdoutCapture out;
        DebugCapture debug;
        EXPECT_FALSE(certificate.open(std::get<0>(c)));
        const std::string printed = out.text();
        EXPECT_NE(printed.find(std::get<1>(c)), std::string::npos) << printed;
        EXPECT_TRUE(std::get<2>(c) == nullptr || debug.lines().contains(std::get<2>(c))) << std::get<2>(c);
    }

    const QByteArray der = fixture("cert/sm2_v3.der");
    for (int length = 0; length < der.size(); length += 7) {
        ZTCertificate certificate;
        StdoutCapture quiet;
        EXPECT_FALSE(certificate.open(der.left(length))) << length;
    }

    // Times that are not strict DER: no Z, seconds omitted, an offset, fractions.
    const std::pair<std::string, const char*> times[] = {
        {"230101000000", "notBeforeValue fail"}, {"2301010000Z", "notBefore fail"},
        {"230101000000+0800", "notBeforeValue fail"}, {"20230101000000.5Z", "notBefore fail"}};
    for (const auto& c : times) {
        CertificateRecipe recipe;
        recipe.notBefore = c.first;
        ZTCertificate certificate;
        DebugCapture debug;
        StdoutCapture quiet;
        EXPECT_FALSE(certificate.open(selfSigned(recipe))) << c.first;
        EXPECT_TRUE(debug.lines().contains(QStringLiteral("[ZTCertificate::parseTBSCertificate] ...tbsCertificate ")
                                           + c.second)) << c.first;
    }
}

TEST(Certificate, ValuesCarryOverBetweenOpens) {
    // A second open without close still reports the first certificate.
    ZTCertificate certificate;
    ASSERT_TRUE(certificate.open(fixture("cert/sm2_v3.der")));
    ASSERT_TRUE(certificate.open(fixture("cert/rsa2048.der")));
    EXPECT_EQ(certificate.getSubjectCN(), "Seal Signer");
    EXPECT_EQ(certificate.pubKeyAlgOID(), "1.2.840.10045.2.1");
    // After close, attributes missing from the next certificate keep their values.
    certificate.close();
    ASSERT_TRUE(certificate.open(fixture("cert/sm2_two_cn_gentime.der")));
    EXPECT_EQ(certificate.getSubjectCN(), "Second Name");
    EXPECT_EQ(certificate.getSubjectO(), "Twin Org");
    EXPECT_EQ(certificate.getSubjectOU(), "Seal Unit");
    EXPECT_EQ(certificate.getIssuerC(), "CN");
}

// Texts of the wrong length give no date.
TEST(CertificateTime, DigitsAreTakenAsUtcMinusEight) {
    ZTCertificate certificate;
    EXPECT_EQ(certificate.fromGeneralizedTime("20540408233435Z"),
              QDateTime(QDate(2054, 4, 9), QTime(7, 34, 35), Qt::UTC));
    EXPECT_EQ(certificate.fromUTCTime("500101000000Z"), QDateTime(QDate(1950, 1, 1), QTime(8, 0), Qt::UTC));
    EXPECT_TRUE(certificate.fromUTCTime("2301010000Z").date().isNull());
    EXPECT_TRUE(certificate.fromGeneralizedTime("230101000000Z").date().isNull());
    EXPECT_FALSE(certificate.fromUTCTime("23aa01000000Z").isValid());  // month reads as 0
}

}  // namespace
