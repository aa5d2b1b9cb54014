// One signed value verified: a seal signature (SES_Signature, either layout)
// or a signedData, against the bytes it signs.
#ifndef ZTHOST_VERIFY_SIGNATURE_VERIFY_H
#define ZTHOST_VERIFY_SIGNATURE_VERIFY_H

#include <QByteArray>
#include <QDateTime>
#include <vector>

#include "readers/ses_signature.h"
#include "readers/signed_data.h"
#include "verify/verdict.h"

class HostSession;

struct SignedBytes {
    QByteArray bytes;  // what the data hash covers (an OFD's Signature.xml)
    QString name;      // how messages name it
};

// The certificates the user trusts (--ca, DER): the signer's certificate
// must have a path to a root among them. Empty: no chain is checked, and a
// note says so.
using Authorities = std::vector<QByteArray>;

// The signer's certificate is the one in the structure unless `certificate`
// is given. Without `signedBytes` the data hash is not checked.
void verifySesSignature(HostSession& session, const SesSignature& signature, const SignedBytes* signedBytes,
                        const QByteArray& certificate, const Authorities& authorities, SignatureVerdict* verdict);

// A signedData over `signedBytes`; `at` is the signing time the document
// states (may be invalid).
void verifySignedData(HostSession& session, const SignedData& data, const SignedBytes& signedBytes,
                      const QDateTime& at, const Authorities& authorities, SignatureVerdict* verdict);

#endif
