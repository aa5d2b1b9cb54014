// ZTVerifyTools: the 64-byte, 128-byte and DER forms of an SM2 signature
// value (expected encodings written out byte by byte), certificate validity
// and key, and SM2 signatures made by OpenSSL verified in every form.
#include <algorithm>

#include "support/common.h"
#include "support/sm2_signer.h"
#include "verify/sign_data_p1.h"
#include "ztutil/ztverifytools.h"

using namespace ztutil_test;

namespace {

Bytes value(unsigned char first, unsigned char fill) {
    Bytes v(32, fill);
    v[0] = first;
    return v;
}

Bytes toAsnData(Bytes shortForm) {
    unsigned int length = 0;
    unsigned char* der = ZTVerifyTools::ZTSM2SignData64ToASNData(shortForm.data(), unsigned(shortForm.size()), &length);
    const Bytes out = der != nullptr ? Bytes(der, der + length) : Bytes();
    delete[] der;
    return out;
}

Bytes to70Ex(Bytes shortForm) {
    unsigned int length = 0;
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(shortForm.data(), 0, nullptr, &length), 1);
    Bytes out(length + 4, 0xEE);  // room beyond the length stays untouched
    unsigned int written = 0;
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(shortForm.data(), 64, out.data(), &written), 1);
    EXPECT_EQ(written, length);
    EXPECT_EQ(Bytes(out.end() - 4, out.end()), Bytes(4, 0xEE));
    out.resize(length);
    return out;
}

Bytes to128(Bytes input) {
    Bytes out(128, 0xEE);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(input.data(), unsigned(input.size()), out.data(), 128), 1);
    return out;
}

Bytes to64(Bytes wide) {
    Bytes out(64, 0xEE);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(wide.data(), 128, out.data(), 64), 1);
    return out;
}

Bytes p1(const Bytes& shortForm) {
    return bytesOf(convSignDataToP1(qbytes(shortForm)));
}

TEST(SignFormsTest, IntegerPrefixRulesOfTheDerBuilders) {
    // A first byte of exactly 0x80 gets a 00 in front from
    // ZTSM2SignData64ToASNData, none from 70Ex and P1.
    const Bytes r80 = value(0x80, 0x00), s7f = value(0x7F, 0x11);
    EXPECT_EQ(toAsnData(concat({r80, s7f})), concat({fromHex("3045022100"), r80, {0x02, 0x20}, s7f}));
    const Bytes unprefixed = concat({fromHex("30440220"), r80, {0x02, 0x20}, s7f});
    EXPECT_EQ(to70Ex(concat({r80, s7f})), unprefixed);
    EXPECT_EQ(p1(concat({r80, s7f})), unprefixed);
    // High bits clear: 70 bytes; first bytes above 0x80: 72 bytes, from all three.
    const Bytes low = concat({value(0x12, 0x34), value(0x00, 0x56)}), high = concat({value(0x81, 1), value(0xFF, 2)});
    const Bytes lowDer = concat({fromHex("30440220"), value(0x12, 0x34), {0x02, 0x20}, value(0x00, 0x56)});
    const Bytes highDer = concat({fromHex("3046022100"), value(0x81, 1), fromHex("022100"), value(0xFF, 2)});
    for (const auto& c : {std::make_pair(low, lowDer), std::make_pair(high, highDer)}) {
        EXPECT_EQ(toAsnData(c.first), c.second);
        EXPECT_EQ(to70Ex(c.first), c.second);
        EXPECT_EQ(p1(c.first), c.second);
    }
    EXPECT_EQ(toAsnData(Bytes(63, 1)), Bytes());
    EXPECT_EQ(ZTVerifyTools::ZTSM2SignData64ToASNData(nullptr, 64, nullptr), nullptr);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(nullptr, 64, nullptr, nullptr), 0);
    for (size_t size : {63u, 65u, 0u})
        EXPECT_EQ(p1(Bytes(size, 0x42)), Bytes(size, 0x42)) << "other sizes pass through";
}

TEST(SignFormsTest, WideShortAndDerForms) {
    std::mt19937 rng(51);
    const Bytes shortForm = randomBytes(rng, 64);
    const Bytes wide = to128(shortForm);
    EXPECT_EQ(wide, concat({Bytes(32, 0), Bytes(shortForm.begin(), shortForm.begin() + 32), Bytes(32, 0),
                            Bytes(shortForm.begin() + 32, shortForm.end())}));
    Bytes dirty = wide;
    dirty[0] = dirty[64] = 0x99;
    EXPECT_EQ(to64(dirty), shortForm) << "the zero halves are not checked";
    Bytes out(65, 0xEE), in127(127, 1);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(in127.data(), 127, out.data(), 64), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(dirty.data(), 128, out.data(), 65), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(nullptr, 128, out.data(), 64), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(dirty.data(), 64, out.data(), 65), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(nullptr, 64, out.data(), 128), 0);
    EXPECT_EQ(out, Bytes(65, 0xEE));

    // Both builders' outputs (contents of 32 or 33 bytes) come back from DER.
    for (int i = 0; i < 200; ++i) {
        Bytes random = randomBytes(rng, 64);
        if (i % 3 == 0)
            random[0] = 0x80;  // unprefixed in the 70Ex form
        EXPECT_EQ(to64(to128(toAsnData(random))), random);
        EXPECT_EQ(to64(to128(to70Ex(random))), random);
    }
    // Not DER: all zero, still 1. Wrong tags: that half stays zero. A short
    // content is copied from its start, not right-aligned; a 33-byte content
    // loses its first byte whatever it is.
    const Bytes r = value(0x01, 0x02), s = value(0x03, 0x04), shortR(r.begin() + 1, r.end());
    EXPECT_EQ(to128(Bytes(70, 0x41)), Bytes(128, 0));
    EXPECT_EQ(to128(concat({fromHex("30440420"), r, {0x02, 0x20}, s})), concat({Bytes(96, 0), s}));
    EXPECT_EQ(to128(concat({fromHex("30220220"), r})), concat({Bytes(32, 0), r, Bytes(64, 0)}));
    EXPECT_EQ(to128(concat({fromHex("3043021F"), shortR, {0x02, 0x20}, s})),
              concat({Bytes(32, 0), shortR, Bytes(33, 0), s}));
    EXPECT_EQ(to128(concat({fromHex("304502217E"), r, {0x02, 0x20}, s})), concat({Bytes(32, 0), r, Bytes(32, 0), s}));
}

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
    EXPECT_EQ(ZTVerifyTools::ZTGetPubKeyByCert(certificate.data(), unsigned(certificate.size()), key.data(), &length),
              1);
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
