// zthost demo: a certificate, SM3 and SM2 / RSA signatures.
#include <QMetaObject>
#include <memory>

#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "host/components.h"
#include "commands/demo.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "services/signature_check.h"
#include "services/sm2_signature.h"
#include "services/sm3_digest.h"

namespace {

QByteArray componentSm3(HostSession& session, const QByteArray& data) {
    std::unique_ptr<QObject> util = requireComponent(session, progid::kUtil);
    QByteArray input = data;
    QByteArray digest(32, '\0');
    callByName(util.get(), "sm3", QGenericReturnArgument(),
               Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(input.data())), Q_ARG(int, input.size()),
               Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(digest.data())));
    return digest;
}

QByteArray tampered(QByteArray data) {
    data[0] = static_cast<char>(data.at(0) ^ 0x01);
    return data;
}

}  // namespace

void demoCertificate(DemoRun& run) {
    HostSession& session = run.session();
    const CertificateFile pem = readCertificate(session, run.examplePath("sm2-cert.pem"));
    run.check(pem.der == run.readExample("sm2-cert.der"),
              QStringLiteral("GetCertByteArray(sm2-cert.pem) gives the %1 bytes of sm2-cert.der").arg(pem.der.size()));
    const CertificateView certificate(session, pem.der, pem.path);
    run.line(QStringLiteral("ZTCertificate::open -> true"));
    run.line(QStringLiteral("version          %1").arg(certificate.text("version")));
    run.line(QStringLiteral("serial number    %1").arg(certificate.text("serialNumber")));
    run.line(QStringLiteral("algorithm        %1").arg(certificate.text("algName")));
    run.line(QStringLiteral("subject          %1").arg(certificate.text("getSubjectDN")));
    run.line(QStringLiteral("issuer           %1").arg(certificate.text("getIssuerDN")));
    run.line(QStringLiteral("not before       %1").arg(timeText(certificate.time("notBefore"))));
    run.line(QStringLiteral("not after        %1").arg(timeText(certificate.time("notAfter"))));
    run.line(QStringLiteral("validity digits  %1  (the library's times lie 8 hours later)")
                 .arg(certificate.validityDigits()));
    run.line(QStringLiteral("public key       %1 bytes, %2...")
                 .arg(certificate.bytes("getPublicKeyData").size())
                 .arg(certificate.text("pubkey").left(32)));
}

void demoSm3(DemoRun& run) {
    const QByteArray document = run.readExample("document.txt");
    const QByteArray expected = run.readExample("document.sm3");
    run.line(QStringLiteral("document.txt, %1 bytes; openssl dgst -sm3: %2").arg(document.size()).arg(hexText(expected)));
    run.check(sm3OfFile(run.session().library(), run.examplePath("document.txt")) == expected,
              QStringLiteral("ztutil_sm3_file agrees"));
    run.check(sm3Digest(run.session().library(), document) == expected,
              QStringLiteral("ztutil_sm3_starts/update/finish agree"));
    run.check(componentSm3(run.session(), document) == expected, QStringLiteral("ZTUtil::sm3 (by name) agrees"));
}

void demoSignatures(DemoRun& run) {
    HostSession& session = run.session();
    const ZtLibrary& library = session.library();
    const QByteArray document = run.readExample("document.txt");
    const QByteArray sm2Cert = run.readExample("sm2-cert.der");
    const QByteArray sm2Sig = run.readExample("document.sm2.sig");
    run.check(verifySm2(library, sm2Sig, SignatureForm::Der, sm2Cert, document),
              QStringLiteral("SM2: document.sm2.sig (DER, by openssl) verifies (VerifySignatureValue)"));
    const QByteArray sm2Sig64 = signatureTo64(library, sm2Sig, SignatureForm::Der);
    run.check(verifySm2(library, sm2Sig64, SignatureForm::Bytes64, sm2Cert, document),
              QStringLiteral("SM2: the same as 64 bytes r||s verifies: %1...").arg(hexText(sm2Sig64.left(16))));
    run.check(!verifySm2(library, sm2Sig, SignatureForm::Der, sm2Cert, tampered(document)),
              QStringLiteral("SM2: one changed bit in the data is rejected"));
    const QByteArray rsaCert = run.readExample("rsa-cert.der");
    const QByteArray rsaSig = run.readExample("document.rsa.sig");
    run.check(verifyRsa(library, rsaCert, document, rsaSig),
              QStringLiteral("RSA: document.rsa.sig (SHA-1, by openssl) verifies (RsaVerify)"));
    run.check(!verifyRsa(library, rsaCert, tampered(document), rsaSig),
              QStringLiteral("RSA: one changed bit in the data is rejected"));
    run.check(certificateValidNow(library, sm2Cert), QStringLiteral("sm2-cert.der is valid now (VerifyCertValidity)"));
    run.check(!certificateValidNow(library, run.readExample("sm2-expired-cert.der")),
              QStringLiteral("sm2-expired-cert.der is not"));
}
