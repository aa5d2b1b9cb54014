// Signature and certificate checks with the library's verification
// functions.
#ifndef ZTHOST_SIGNATURE_CHECK_H
#define ZTHOST_SIGNATURE_CHECK_H

#include <QByteArray>
#include <QString>

#include "services/sm2_signature.h"

class ZtLibrary;

// The SM2 user ID the library's verification always uses.
constexpr char kDefaultSm2UserId[] = "1234567812345678";

// ZTVerifyTools::VerifySignatureValue(signature, certificate, data, SM2).
// The library takes the 64-byte and the DER form; a 128-byte value is
// brought to 64 bytes first.
bool verifySm2(const ZtLibrary& library, const QByteArray& signature, SignatureForm form,
               const QByteArray& certificateDer, const QByteArray& data);

// RsaVerify(certificate, data, signature): PKCS#1 v1.5 with SHA-1 against
// the certificate's modulus. VerifySignatureValue is not used for RSA: it
// passes the certificate to RsaVerify in the place of the signature.
bool verifyRsa(const ZtLibrary& library, const QByteArray& certificateDer, const QByteArray& data,
               const QByteArray& signature);

// ZTVerifyTools::VerifyCertValidity: inside its validity period now.
bool certificateValidNow(const ZtLibrary& library, const QByteArray& certificateDer);

#endif
