// SM2 signature values in their three forms (64-byte r || s, 128-byte with
// r and s right-aligned in 64-byte fields, DER SEQUENCE { INTEGER r,
// INTEGER s }) and the conversions between them, done by the library's
// ZTVerifyTools functions.
#ifndef ZTHOST_SM2_SIGNATURE_H
#define ZTHOST_SM2_SIGNATURE_H

#include <QByteArray>
#include <QString>

class ZtLibrary;

enum class SignatureForm { Bytes64, Bytes128, Der };
const char* signatureFormName(SignatureForm form);  // "64", "128", "der"

// The form of `value` (64 or 128 bytes by length, DER by structure); throws
// CommandFailure naming `source` for anything else.
SignatureForm detectSignatureForm(const QByteArray& value, const QString& source);

// Conversions; `form` is the form of `value`.
QByteArray signatureTo64(const ZtLibrary& library, const QByteArray& value, SignatureForm form);
QByteArray signatureTo128(const ZtLibrary& library, const QByteArray& value, SignatureForm form);
QByteArray signatureToDer(const ZtLibrary& library, const QByteArray& value, SignatureForm form);

// The DER value the library's own verification hands SM2Verify: the value
// brought to 128 bytes by ZTSM2ConvertSignDataTo128 (unless it is in that
// form), r and s taken out by ZTSM2ConvertSignDataTo64, and encoded by
// ZTSM2ConvSignDataTo70Ex. Empty when a conversion refuses.
QByteArray libraryVerificationDer(const ZtLibrary& library, const QByteArray& value, SignatureForm form);

#endif
