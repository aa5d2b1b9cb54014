// An RSA signature answered twice: by the library's RsaVerify (what a host
// gets), and strictly with OpenSSL (the digest the signature carries,
// compared with that digest of the data). The strict answer decides; a
// disagreement is said in one sentence.
#ifndef ZTHOST_VERIFY_RSA_CHECK_H
#define ZTHOST_VERIFY_RSA_CHECK_H

#include <QByteArray>

#include "verify/verdict.h"

class HostSession;

struct RsaCheckResult {
    Check check;
    QString digestName;  // the digest the signature carries, if any
};

// RsaVerify takes the data whole and the key from a certificate.
RsaCheckResult checkRsaSignature(HostSession& session, CheckScope scope, const QString& name,
                                 const QByteArray& signature, const QByteArray& certificate, const QByteArray& data);

#endif
