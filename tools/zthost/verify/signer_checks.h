// The checks on certificates and seals that every signature format shares,
// made through the library: the certificates are read by ZTCertificate, the
// signatures verified by VerifySignatureValue (and strictly by OpenSSL),
// digests made by its SM3.
#ifndef ZTHOST_VERIFY_SIGNER_CHECKS_H
#define ZTHOST_VERIFY_SIGNER_CHECKS_H

#include <QByteArray>
#include <QDateTime>
#include <vector>

#include "readers/ses_seal.h"
#include "verify/verdict.h"

class HostSession;

// The SM2 signature `value` over `data` by `certificate`, as check `name`:
// the library's answer and the strict one.
void checkSm2Signature(HostSession& session, CheckScope scope, const QString& name, const QByteArray& value,
                       const QByteArray& certificate, const QByteArray& data, SignatureVerdict* verdict);

// The signer's name for display, and whether `at` (the current time when
// `at` is invalid) lies inside the certificate's validity, as the library
// reads its digits and as zthost reads them.
void checkSignerCertificate(HostSession& session, const QByteArray& certificate, const QDateTime& at,
                            SignatureVerdict* verdict);

// The seal: its maker's signature, the maker's certificate chain to
// `authorities` (the --ca certificates), its validity around `at`, and,
// when `signerCertificate` is given, that the seal lists it. Fills the
// seal's name, id and picture in `verdict`.
void checkSeal(HostSession& session, const SesSeal& seal, const QDateTime& at, const QByteArray& signerCertificate,
               const std::vector<QByteArray>& authorities, SignatureVerdict* verdict);

// The seal inside a seal signature, or a failed "seal structure" check
// when it is no seal zthost can read.
void checkEmbeddedSeal(HostSession& session, const ByteView& sealBytes, const QDateTime& at,
                       const QByteArray& signerCertificate, const std::vector<QByteArray>& authorities,
                       SignatureVerdict* verdict);

#endif
