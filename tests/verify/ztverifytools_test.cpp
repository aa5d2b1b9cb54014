// ZTVerifyTools: certificate validity and key, and SM2 signatures made by
// OpenSSL verified through VerifySignatureValue in every form.
#include <algorithm>

#include "support/common.h"
#include "support/sm2_signer.h"
#include "ztutil/ztverifytools.h"

using namespace ztutil_test;

namespace {

const long kDay = 24 * 3600;

int validity(Bytes certificate) {
    return ZTVerifyTools::ZTVerifyCertValidity(certificate.data(), unsigned(certificate.size()));
}

int verifySm2(const Bytes& signature, const Bytes& certificate, const Bytes& data) {
    StdoutCapture quiet;  // SM2Verify reports on standard output
    return ZTVerifyTools::VerifySignatureValue(qbytes(signature), qbytes(certificate), qbytes(data), ALGO_SM2);
}

Bytes shortForm(const Bytes& der) {
    Bytes r, s;
    splitSignature(der, &r, &s);
    return concat({r, s});
}

TEST(ZTVerifyToolsTest, CertificateValidityAgainstTheCurrentTime) {
    Sm2Signer signer;
    const long year = 365 * kDay;
    EXPECT_EQ(validity(signer.certificate(-2 * kDay, 2 * kDay)), 1);
    EXPECT_EQ(validity(signer.certificate(-3 * kDay, -2 * kDay)), 0);  // expired
    EXPECT_EQ(validity(signer.certificate(2 * kDay, 3 * kDay)), 0);    // not yet valid
    EXPECT_EQ(ZTVerifyTools::VerifyCertValidity(qbytes(signer.certificate(-2 * kDay, 2 * kDay))), 1);
    // Far dates are GeneralizedTime (from 2050 on) and are read as well.
    EXPECT_EQ(validity(signer.certificate(-2 * kDay, 40 * year)), 1);
    EXPECT_EQ(validity(signer.certificate(40 * year, 41 * year)), 0);
    // Without the version field child 4 is the subject name: no times, valid.
    EXPECT_EQ(validity(signer.certificate(-3 * kDay, -2 * kDay, 0)), 1);
    // A time whose text is no valid date (month 13) is skipped instead of stopping the process.
    Bytes expired = signer.certificate(-3 * kDay, -2 * kDay);
    const Bytes utcTime = {0x17, 0x0D};
    auto notAfter = std::search(expired.begin(), expired.end(), utcTime.begin(), utcTime.end()) + 15;
    notAfter = std::search(notAfter, expired.end(), utcTime.begin(), utcTime.end());
    ASSERT_NE(notAfter, expired.end());
    notAfter[4] = '1';
    notAfter[5] = '3';
    EXPECT_EQ(validity(expired), 1);

    Bytes garbage = {1, 2, 3};
    EXPECT_EQ(ZTVerifyTools::ZTVerifyCertValidity(nullptr, 10), 0);
    EXPECT_EQ(ZTVerifyTools::ZTVerifyCertValidity(garbage.data(), 0), 0);
    EXPECT_EQ(validity(garbage), 1);
}

TEST(ZTVerifyToolsTest, PublicKeyOfTheCertificate) {
    Sm2Signer signer;
    Bytes certificate = signer.certificate(-kDay, kDay), key(80);
    unsigned int length = 0;
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(certificate.data(), unsigned(certificate.size()), nullptr, &length), 1);
    ASSERT_EQ(length, 65u);
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(certificate.data(), unsigned(certificate.size()), key.data(), &length), 1);
    EXPECT_EQ(Bytes(key.begin(), key.begin() + 65), concat({{0x04}, signer.x(), signer.y()}));

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
    for (int keyIndex = 0; keyIndex < 4; ++keyIndex) {
        Sm2Signer signer;
        const Bytes certificate = signer.certificate(-kDay, kDay);
        for (int i = 0; i < 60; ++i) {
            const Bytes message = randomBytes(rng, 1 + rng() % 200), der = signer.sign(message);
            Bytes raw = shortForm(der);
            ASSERT_EQ(verifySm2(raw, certificate, message), 1) << keyIndex << "/" << i;
            // The library's DER form keeps all 32 value bytes.
            unsigned int length = 0;
            unsigned char* own = ZTVerifyTools::ZTSM2SignData64ToASNData(raw.data(), 64, &length);
            EXPECT_EQ(verifySm2(Bytes(own, own + length), certificate, message), 1);
            delete[] own;
            // OpenSSL's minimal DER converts only when both INTEGER contents
            // are 32 or 33 bytes; a shorter one is not right-aligned.
            EXPECT_EQ(verifySm2(der, certificate, message), der[3] >= 32 && der[4 + der[3] + 1] >= 32);
            Bytes changed = message;
            changed[rng() % changed.size()] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verifySm2(raw, certificate, changed), 0);
            raw[rng() % 64] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verifySm2(raw, certificate, message), 0);
        }
    }
}

TEST(ZTVerifyToolsTest, DispatchAndSoftVerifyRefusals) {
    Sm2Signer signer;
    Bytes certificate = signer.certificate(-kDay, kDay), message = {'m'};
    const Bytes raw = shortForm(signer.sign(message));
    const QByteArray sig = qbytes(raw), cert = qbytes(certificate), data = qbytes(message);
    EXPECT_EQ(verifySm2(raw, certificate, message), 1);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(sig, cert, data, static_cast<enAlgoIDType>(2)), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(sig, cert, QByteArray(), ALGO_SM2), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(QByteArray(), cert, data, ALGO_SM2), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySignatureValue(sig, QByteArray(), data, ALGO_SM2), 0);
    EXPECT_EQ(verifySm2(raw, Bytes{0x30, 0x00}, message), 0) << "no key gives the zero point, which is refused";

    unsigned char wide[128] = {0};
    unsigned char* c = certificate.data();
    unsigned char* m = message.data();
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(nullptr, 10, m, 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(c, 0, m, 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(c, 10, nullptr, 1, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(c, 10, m, 0, wide, 128), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSoftVerifyByCert(c, 10, m, 1, nullptr, 128), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySeal(sig, ALGO_SM2), 0);
    EXPECT_EQ(ZTVerifyTools::VerifySeal(QByteArray(), ALGO_RSA), 0);
}

}  // namespace
