// zthost's strict checks and its library-side SM2 steps, against outside
// references: signatures OpenSSL makes here, the library's own one-call
// functions (ztutil_sm3_with_sm2, VerifySignatureValue), and OpenSSL's
// printing of certificate names.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <QCryptographicHash>
#include <vector>

#include "crypto/public_key.h"
#include "crypto/rsa_strict.h"
#include "readers/certificate_fields.h"
#include "services/signature_check.h"
#include "services/sm2_digest.h"
#include "support/qt_printers.h"
#include "tools/tool_support.h"
#include "verify/sm2_check.h"

namespace {

QByteArray derOfPem(const QByteArray& pem) {
    const QByteArray begin = "-----BEGIN CERTIFICATE-----";
    const int from = pem.indexOf(begin) + begin.size();
    return QByteArray::fromBase64(pem.mid(from, pem.indexOf("-----END") - from));
}

EvpPkeyPtr rsaTestKey() {
    const QByteArray pem = fixture("rsa/rsa2048_key.pem");
    const std::unique_ptr<BIO, OpenSslFree<BIO, BIO_free_all>> bio(BIO_new_mem_buf(pem.constData(), pem.size()));
    return EvpPkeyPtr(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr));
}

class StrictChecks : public LoadedLibraryTest {};

// e = SM3(Z || M) with Z assembled by zthost from OpenSSL's curve and
// streamed through the library's SM3, in uneven pieces, against the
// library's one call.
TEST_F(StrictChecks, StreamedSm2DigestIsTheLibrarysOneCall) {
    EvpPkeyPtr key = certificatePublicKey(example("sm2-cert.der"));
    const QByteArray point = sm2Point(key.get());
    ASSERT_EQ(point.size(), 64);
    QByteArray large(200000, '\0');
    RAND_bytes(reinterpret_cast<unsigned char*>(large.data()), large.size());
    for (const QByteArray& id : {QByteArray("1234567812345678"), QByteArray("alice@example.cn"), QByteArray("x"),
                                 QByteArray(300, 'i')}) {
        for (const QByteArray& message : {QByteArray(), example("document.txt"), large}) {
            Sm2DigestStream stream(session_.library(), point, id);
            for (int at = 0, piece = 1; at < message.size(); at += piece, piece = piece * 7 % 65521 + 1)
                stream.update(message.constData() + at, qMin(piece, message.size() - at));
            EXPECT_EQ(stream.finish(), sm3WithSm2(session_.library(), message, point, id))
                << "id of " << id.size() << " bytes, message of " << message.size();
        }
    }
}

// The library's answer of the streamed steps is VerifySignatureValue's; the
// strict answer is the truth of how openssl made each signature.
TEST_F(StrictChecks, LibraryAnswerIsVerifySignatureValues) {
    const QByteArray document = example("document.txt");
    const QByteArray changed = fixture("zthost/document-changed.txt");
    const QByteArray raw = QByteArray::fromHex(fixture("zthost/document.sm2.sig64.hex").trimmed());
    const QByteArray wide = QByteArray::fromHex(fixture("zthost/document.sm2.sig128.hex").trimmed());
    const QByteArray cert = example("sm2-cert.der");
    const QByteArray version1 = derOfPem(fixture("chain/version1-expired.pem"));
    struct Case {
        const char* what;
        QByteArray signature;
        SignatureForm form;
        QByteArray certificate;
        QByteArray data;
        bool strict;
    } cases[] = {
        {"DER", example("document.sm2.sig"), SignatureForm::Der, cert, document, true},
        {"r || s", raw, SignatureForm::Bytes64, cert, document, true},
        {"128-byte form", wide, SignatureForm::Bytes128, cert, document, true},
        {"short INTEGER", fixture("zthost/document.sm2-short.sig"), SignatureForm::Der, cert, document, true},
        {"other data", example("document.sm2.sig"), SignatureForm::Der, cert, changed, false},
        {"other signature", example("gm-tbs.sig"), SignatureForm::Der, cert, document, false},
        {"version-1 certificate", example("document.sm2.sig"), SignatureForm::Der, version1, document, true},
    };
    for (const Case& c : cases) {
        EvpPkeyPtr key = certificatePublicKey(c.certificate);
        Sm2SignatureCheck check(session_, c.signature, c.form, Sm2Signer{c.certificate, key.get()},
                                QByteArray(kDefaultSm2UserId));
        check.update(c.data.constData(), c.data.size());
        const Check answer = check.finish(CheckScope::Signature, QStringLiteral("signature"));
        const bool host = verifySm2(session_.library(), c.signature, c.form, c.certificate, c.data);
        EXPECT_EQ(answer.library == Answer::Yes, host) << c.what;
        EXPECT_EQ(answer.strict == Answer::Yes, c.strict) << c.what;
        EXPECT_EQ(answer.disagrees(), host != c.strict) << c.what;
    }
}

// PKCS#1 v1.5 signatures OpenSSL makes with several digests: accepted over
// the data they sign, refused over other data, whatever the digest.
TEST_F(StrictChecks, RsaCheckComparesTheDigestTheSignatureCarries) {
    EvpPkeyPtr key = rsaTestKey();
    ASSERT_TRUE(key);
    const QByteArray data = example("document.txt");
    const QByteArray other = data + ' ';
    const struct {
        const EVP_MD* md;
        const char* name;
    } digests[] = {{EVP_sha1(), "SHA-1"}, {EVP_sha256(), "SHA-256"}, {EVP_sha512(), "SHA-512"}};
    for (const auto& digest : digests) {
        EvpMdCtxPtr context(EVP_MD_CTX_new());
        size_t size = 0;
        ASSERT_EQ(EVP_DigestSignInit(context.get(), nullptr, digest.md, nullptr, key.get()), 1);
        ASSERT_EQ(EVP_DigestSign(context.get(), nullptr, &size, bytesOf(data), size_t(data.size())), 1);
        QByteArray signature(int(size), '\0');
        ASSERT_EQ(EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size, bytesOf(data),
                                 size_t(data.size())), 1);
        for (const QByteArray* signed_ : {&data, &other}) {
            StrictRsaCheck check(key.get(), signature);
            EXPECT_EQ(check.digestName(), QLatin1String(digest.name));
            check.update(signed_->constData(), signed_->size());
            EXPECT_EQ(check.finish(), signed_ == &data) << digest.name;
        }
        StrictRsaCheck shortened(key.get(), signature.left(signature.size() - 1));
        EXPECT_FALSE(shortened.finish());
    }
}

// Signed blocks laid out here: an SM3 DigestInfo (OpenSSL's RSA signing
// refuses SM3) holds over the data it names and not over other data; a bare
// SHA-1 value (which the library takes too) holds; a bare SHA-256 value,
// a DigestInfo followed by a stray byte and a matching MD5 DigestInfo do not.
TEST_F(StrictChecks, RsaCheckWantsExactDigestInfo) {
    EvpPkeyPtr key = rsaTestKey();
    ASSERT_TRUE(key);
    const QByteArray data = example("document.txt");
    const QByteArray sha1 = QCryptographicHash::hash(data, QCryptographicHash::Sha1);
    const QByteArray sha256 = QCryptographicHash::hash(data, QCryptographicHash::Sha256);
    const QByteArray sha256Info = QByteArray::fromHex("3031300d060960864801650304020105000420") + sha256;
    const QByteArray sm3Info = QByteArray::fromHex("3030300c06082a811ccf5501831105000420");
    const QByteArray md5Info = QByteArray::fromHex("3020300c06082a864886f70d020505000410") +
                               QCryptographicHash::hash(data, QCryptographicHash::Md5);
    QByteArray sm3Digest(32, '\0');
    EVP_Digest(data.constData(), size_t(data.size()), reinterpret_cast<unsigned char*>(sm3Digest.data()), nullptr,
               EVP_sm3(), nullptr);
    const struct {
        QByteArray block;
        bool valid;
    } cases[] = {{sha1, true},          {sha256, false},           {sha256Info, true},
                 {sha256Info + '\0', false}, {sm3Info + sm3Digest, true}, {sm3Info + sha256, false},
                 {md5Info, false}};
    for (const auto& c : cases) {
        EvpPkeyCtxPtr context(EVP_PKEY_CTX_new(key.get(), nullptr));
        size_t size = 256;
        QByteArray signature(int(size), '\0');
        ASSERT_EQ(EVP_PKEY_sign_init(context.get()), 1);
        ASSERT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING), 1);
        ASSERT_EQ(EVP_PKEY_sign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                                bytesOf(c.block), size_t(c.block.size())), 1);
        StrictRsaCheck check(key.get(), signature);
        check.update(data.constData(), data.size());
        EXPECT_EQ(check.finish(), c.valid) << c.block.toHex().toStdString() << ": " << check.problem().toStdString();
    }
}

// Names decoded by zthost's reader as OpenSSL prints them with UTF-8
// output: UTF8String and BMPString Chinese names among them.
TEST_F(StrictChecks, NamesReadAsOpenSslPrintsThem) {
    const unsigned long flags = XN_FLAG_SEP_CPLUS_SPC | XN_FLAG_FN_SN | ASN1_STRFLGS_UTF8_CONVERT;
    for (const QByteArray& der : {derOfPem(fixture("chain/leaf.pem")), fixture("cert/sm2_bmp_name.der"),
                                  example("sm2-cert.der"), fixture("cert/sm2_v3.der")}) {
        const CertificateFields fields = readCertificateFields(ByteView::of(der));
        X509Ptr certificate = parseX509(der);
        ASSERT_TRUE(certificate);
        for (const auto& [ours, theirs] : {std::make_pair(&fields.subjectAttributes, X509_get_subject_name(certificate.get())),
                                           std::make_pair(&fields.issuerAttributes, X509_get_issuer_name(certificate.get()))}) {
            const std::unique_ptr<BIO, OpenSslFree<BIO, BIO_free_all>> out(BIO_new(BIO_s_mem()));
            X509_NAME_print_ex(out.get(), theirs, 0, flags);
            char* text = nullptr;
            const long size = BIO_get_mem_data(out.get(), &text);
            EXPECT_EQ(nameText(*ours), QString::fromUtf8(text, int(size)));
        }
    }
}

}  // namespace
