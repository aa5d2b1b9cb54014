#include <gtest/gtest.h>

#include <QFileInfo>
#include <openssl/x509.h>

#include "cert/x509_oracle.h"
#include "support/capture.h"
#include "ztutil/ztcertificate.h"

namespace {

const char kBundle[] = "/etc/ssl/certs/ca-certificates.crt";

// Every certificate of the system's CA bundle reads the same through this
// library as through OpenSSL, up to the library's own rules (last value wins,
// the e-mail literal, the 8-hour shift, one-character first OID arcs).
TEST(CaBundle, EveryCertificateAgreesWithOpenSSL) {
    if (!QFileInfo::exists(QLatin1String(kBundle)))
        GTEST_SKIP() << "ca-certificates is not installed";
    const QList<QByteArray> bundle = cert_test::pemBundle(QLatin1String(kBundle));
    ASSERT_GT(bundle.size(), 50);
    int checked = 0;
    for (const QByteArray& der : bundle) {
        X509* parsed = cert_test::parseDer(der);
        ASSERT_NE(parsed, nullptr);
        const cert_test::ExpectedFields expected = cert_test::expectedFields(parsed);
        X509_NAME* subject = X509_get_subject_name(parsed);
        char subjectText[512];
        X509_NAME_oneline(subject, subjectText, sizeof subjectText);
        X509_free(parsed);

        ZTCertificate certificate;  // a fresh object: no carry-over
        ztutil_test::StdoutCapture quiet;
        ASSERT_TRUE(certificate.open(der)) << subjectText;
        SCOPED_TRACE(subjectText);
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
        EXPECT_EQ(certificate.getSubjectE(), QString());
        EXPECT_EQ(certificate.notBefore(), expected.notBefore);
        EXPECT_EQ(certificate.notAfter(), expected.notAfter);
        EXPECT_EQ(certificate.pubKeyAlgOID(), expected.keyAlgorithmOid);
        EXPECT_EQ(certificate.getPublicKeyData(), expected.keyBits);
        ++checked;
    }
    EXPECT_EQ(checked, bundle.size());
    RecordProperty("certificates", checked);
}

}  // namespace
