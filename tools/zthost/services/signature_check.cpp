#include "services/signature_check.h"

#include "host/library_symbols.h"
#include "readers/sm2_value.h"

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

bool verifySm2Value(const ZtLibrary& library, const QByteArray& value, const QByteArray& certificateDer,
                    const QByteArray& data, QString* note) {
    const int kRawSize = 64;
    if (value.size() == kRawSize)
        return verifySm2(library, value, SignatureForm::Bytes64, certificateDer, data);
    Sm2Integers integers;
    if (!readSm2Integers(ByteView::of(value), &integers)) {
        *note = QStringLiteral("the %1-byte signature value is neither r || s nor a DER SEQUENCE of two INTEGERs")
                    .arg(value.size());
        return false;
    }
    if (firstMisreadInteger(integers) < 0)
        return verifySm2(library, value, SignatureForm::Der, certificateDer, data);
    QByteArray raw;
    if (!sm2DerTo64(ByteView::of(value), &raw)) {
        *note = QStringLiteral("r or s of the signature value is negative or longer than 32 bytes");
        return false;
    }
    *note = QStringLiteral("a DER signature with a short INTEGER was passed as r || s (the library misreads it)");
    return verifySm2(library, raw, SignatureForm::Bytes64, certificateDer, data);
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
