// A sealed OFD package verified end to end: every signature of every
// document, its references, its signed value and its seal.
#ifndef ZTHOST_VERIFY_OFD_VERIFY_H
#define ZTHOST_VERIFY_OFD_VERIFY_H

#include <QByteArray>
#include <QStringList>
#include <vector>

#include "verify/signature_verify.h"
#include "verify/verdict.h"

class HostSession;

struct OfdVerdict {
    QStringList problems;  // of the package as a whole
    std::vector<SignatureVerdict> signatures;
    // Every signature valid, at least one, and no package problem.
    bool valid() const;
    Report toReport(const QString& file) const;
};

// `authorities`: the certificates the signers' chains must lead to (--ca).
OfdVerdict verifyOfd(HostSession& session, const QByteArray& package, const Authorities& authorities);

#endif
