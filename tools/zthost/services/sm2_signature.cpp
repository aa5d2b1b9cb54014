#include "services/sm2_signature.h"

#include "cli/cli.h"
#include "readers/sm2_value.h"
#include "cli/input.h"
#include "host/library_symbols.h"

namespace {

const int kSize64 = 64;
const int kSize128 = 128;
const int kHalf = 32;

bool isZero(const QByteArray& bytes) {
    return bytes.count('\0') == bytes.size();
}

unsigned char* bytesOf(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

}  // namespace

const char* signatureFormName(SignatureForm form) {
    switch (form) {
    case SignatureForm::Bytes64: return "64";
    case SignatureForm::Bytes128: return "128";
    case SignatureForm::Der: return "der";
    }
    return "der";
}

SignatureForm detectSignatureForm(const QByteArray& value, const QString& source) {
    if (value.size() == kSize64)
        return SignatureForm::Bytes64;
    if (value.size() == kSize128)
        return SignatureForm::Bytes128;
    Sm2Integers integers;
    if (readSm2Integers(ByteView::of(value), &integers))
        return SignatureForm::Der;
    throw CommandFailure(kExitFailed,
                         QStringLiteral("%1: not an SM2 signature value (64 or 128 bytes, or DER "
                                        "SEQUENCE of two INTEGERs; %2 bytes given)")
                             .arg(input::displayName(source))
                             .arg(value.size()));
}

QByteArray signatureTo128(const ZtLibrary& library, const QByteArray& value, SignatureForm form) {
    if (form == SignatureForm::Bytes128)
        return value;
    auto convert = requireSymbol<fn::ConvertSignData>(library, Symbol::ConvertSignDataTo128);
    QByteArray input = value;
    QByteArray output(kSize128, '\0');
    if (!convert(bytesOf(input), static_cast<unsigned int>(input.size()), bytesOf(output), kSize128))
        throw CommandFailure(kExitFailed, QStringLiteral("the library refused to convert the signature"));
    // A DER value the library cannot read comes back as zeros, not as a failure.
    if (isZero(output.mid(kHalf, kHalf)) || isZero(output.mid(kSize128 - kHalf)))
        throw CommandFailure(kExitFailed, QStringLiteral("the library read no r or no s from the DER form"));
    return output;
}

QByteArray signatureTo64(const ZtLibrary& library, const QByteArray& value, SignatureForm form) {
    if (form == SignatureForm::Bytes64)
        return value;
    QByteArray wide = signatureTo128(library, value, form);
    auto convert = requireSymbol<fn::ConvertSignData>(library, Symbol::ConvertSignDataTo64);
    QByteArray output(kSize64, '\0');
    if (!convert(bytesOf(wide), kSize128, bytesOf(output), kSize64))
        throw CommandFailure(kExitFailed, QStringLiteral("the library refused to convert the signature"));
    return output;
}

QByteArray signatureToDer(const ZtLibrary& library, const QByteArray& value, SignatureForm form) {
    if (form == SignatureForm::Der)
        return value;
    QByteArray narrow = signatureTo64(library, value, form);
    auto convert = requireSymbol<fn::SignData64ToAsn>(library, Symbol::SignData64ToAsnData);
    unsigned int length = 0;
    unsigned char* encoded = convert(bytesOf(narrow), kSize64, &length);
    if (encoded == nullptr)
        throw CommandFailure(kExitFailed, QStringLiteral("the library could not encode the signature"));
    const QByteArray der(reinterpret_cast<const char*>(encoded), static_cast<int>(length));
    delete[] encoded;  // allocated by the library as an array
    return der;
}

QByteArray libraryVerificationDer(const ZtLibrary& library, const QByteArray& value, SignatureForm form) {
    auto to128 = requireSymbol<fn::ConvertSignData>(library, Symbol::ConvertSignDataTo128);
    auto to64 = requireSymbol<fn::ConvertSignData>(library, Symbol::ConvertSignDataTo64);
    auto toDer = requireSymbol<fn::SignDataTo70Ex>(library, Symbol::SignDataTo70Ex);
    QByteArray input = value;
    QByteArray wide = value;
    if (form != SignatureForm::Bytes128) {
        wide = QByteArray(kSize128, '\0');
        if (!to128(bytesOf(input), static_cast<unsigned int>(input.size()), bytesOf(wide), kSize128))
            return QByteArray();
    }
    QByteArray narrow(kSize64, '\0');
    unsigned int length = 0;
    if (!to64(bytesOf(wide), kSize128, bytesOf(narrow), kSize64) ||
        !toDer(bytesOf(narrow), kSize64, nullptr, &length) || length == 0)
        return QByteArray();
    QByteArray der(static_cast<int>(length), '\0');
    if (!toDer(bytesOf(narrow), kSize64, bytesOf(der), &length))
        return QByteArray();
    return der;
}
