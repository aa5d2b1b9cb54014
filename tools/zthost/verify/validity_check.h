// Is a certificate inside its validity period now: the library's answer
// (ZTVerifyTools::VerifyCertValidity: the digits read as local time, and a
// certificate whose times it does not find, any but version 3, counted as
// valid) and the strict one (the certificate's own digits as UTC, read by
// zthost). The strict answer decides.
#ifndef ZTHOST_VERIFY_VALIDITY_CHECK_H
#define ZTHOST_VERIFY_VALIDITY_CHECK_H

#include <QByteArray>
#include <QDateTime>

#include "verify/verdict.h"

class HostSession;

struct ValidityNow {
    Check check;
    QDateTime notBefore, notAfter;  // the certificate's own digits as UTC; invalid when unreadable
    QDateTime now;
};

ValidityNow checkValidityNow(HostSession& session, const QByteArray& certificate);

#endif
