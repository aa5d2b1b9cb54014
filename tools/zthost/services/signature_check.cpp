#include "services/signature_check.h"

#include "host/library_symbols.h"

namespace {

unsigned char* bytesOf(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

unsigned int sizeOf(const QByteArray& array) {
    return static_cast<unsigned int>(array.size());
}

}  // namespace

bool verifySm2(const ZtLibrary& library, const QByteArray& signature, SignatureForm form,
               const QByteArray& certificateDer, const QByteArray& data) {
    auto verify = requireSymbol<fn::VerifySignatureValue>(library, Symbol::VerifySignatureValue);
    const QByteArray value =
        form == SignatureForm::Bytes128 ? signatureTo64(library, signature, form) : signature;
    return verify(value, certificateDer, data, kAlgoSm2) == 1;
}

bool verifyRsa(const ZtLibrary& library, const QByteArray& certificateDer, const QByteArray& data,
               const QByteArray& signature) {
    auto verify = requireSymbol<fn::RsaVerify>(library, Symbol::RsaVerify);
    QByteArray certificate = certificateDer;
    QByteArray message = data;
    QByteArray value = signature;
    return verify(bytesOf(certificate), sizeOf(certificate), bytesOf(message), sizeOf(message),
                  bytesOf(value), sizeOf(value)) == 1;
}

bool certificateValidNow(const ZtLibrary& library, const QByteArray& certificateDer) {
    auto check = requireSymbol<fn::VerifyCertValidity>(library, Symbol::VerifyCertValidity);
    return check(certificateDer) == 1;
}
