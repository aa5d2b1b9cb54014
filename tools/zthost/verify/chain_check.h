// A certificate's path to a root among the certificates the user trusts
// (--ca), built by issuer and subject names (and key identifiers where both
// are present), then checked link by link: every signature (SM2 with the
// default ID through the library's ztutil_sm3_with_sm2 and SM2Verify, RSA
// through RsaVerify, each also strictly with OpenSSL, which decides), every
// validity period by the certificate's own UTC digits, and of every issuer
// its basicConstraints cA, path length and keyCertSign.
#ifndef ZTHOST_VERIFY_CHAIN_CHECK_H
#define ZTHOST_VERIFY_CHAIN_CHECK_H

#include <QByteArray>
#include <QDateTime>
#include <QStringList>
#include <vector>

#include "output/report.h"
#include "verify/verdict.h"

class HostSession;

struct ChainMember {
    QString subject;  // decoded, "C=CN, O=Org, CN=Name"
    QString name;     // the CN, or the subject when it has none
    QDateTime notBefore, notAfter;
    QString role;     // "certificate", "intermediate", "root"
};

struct ChainVerdict {
    QDateTime at;                     // the time the validity periods are checked at
    std::vector<ChainMember> path;    // the certificate first, the root last
    bool rootFound = false;
    std::vector<Check> checks;
    QStringList problems;             // why no path was found
    bool valid() const;
    // The problems and the failed checks' problems.
    QStringList failures() const;
    // "Leaf <- Intermediate CA <- Root CA (root)".
    QString pathText() const;
    Report toReport() const;
    QString toText() const;
};

// `authorities` are the --ca certificates (DER): roots (self-signed) and
// intermediates alike.
ChainVerdict verifyChain(HostSession& session, const QByteArray& certificate,
                         const std::vector<QByteArray>& authorities, const QDateTime& at);

// Whose certificate a chain check is about: the signer's (a check of the
// signature) or the seal maker's (a check of the seal).
enum class ChainOwner { Signer, SealMaker };

// The chain as one check ("certificate chain", "seal maker certificate
// chain"), with the path as a note; without authorities, a note that no
// root was checked.
void addChainCheck(HostSession& session, const QByteArray& certificate, const std::vector<QByteArray>& authorities,
                   const QDateTime& at, ChainOwner owner, SignatureVerdict* verdict);

#endif
