// Every certificate of the system's CA bundle reads the same through this
// library as through OpenSSL, up to the library's own rules.
#include "cert/x509_oracle.h"
#include "support/common.h"
#include "ztutil/ztcertificate.h"

namespace {

TEST(CaBundle, EveryCertificateAgreesWithOpenSSL) {
    const QList<QByteArray> bundle = ztutil_test::caBundle();
    if (bundle.isEmpty())
        GTEST_SKIP() << "ca-certificates is not installed";
    ASSERT_GT(bundle.size(), 50);
    for (int i = 0; i < bundle.size(); ++i) {
        const QByteArray& der = bundle.at(i);
        SCOPED_TRACE(i);
        ZTCertificate certificate;  // a fresh object: no carry-over
        ztutil_test::StdoutCapture quiet;
        ASSERT_TRUE(certificate.open(der));
        cert_test::expectMatchesOpenSsl(certificate, der);
    }
    RecordProperty("certificates", bundle.size());
}

}  // namespace
