// What OpenSSL reads in a certificate's extensions: the facts a person
// checks (key usage, basic constraints, alternative names, key ids) and a
// certificate chain depends on.
#ifndef ZTHOST_CRYPTO_CERTIFICATE_FACTS_H
#define ZTHOST_CRYPTO_CERTIFICATE_FACTS_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "crypto/openssl_handles.h"

struct CertificateFacts {
    bool extensionsReadable = true;   // false when an extension is malformed
    bool hasBasicConstraints = false;
    bool certificateAuthority = false;  // basicConstraints cA
    long pathLength = -1;               // -1: no pathLenConstraint
    bool hasKeyUsage = false;
    QStringList keyUsage;               // "Digital Signature", as openssl x509 -text names them
    bool mayCertSign = true;            // keyCertSign, or no keyUsage at all
    QStringList alternativeNames;       // "DNS:example.cn", "email:a@b.cn"
    QByteArray subjectKeyId, authorityKeyId;
};

CertificateFacts certificateFacts(X509* certificate);

// "CA:TRUE, pathlen:0", "CA:FALSE", or empty without the extension.
QString basicConstraintsText(const CertificateFacts& facts);

// Upper-case hex bytes joined by ':' (as openssl prints fingerprints and key ids).
QString colonHex(const QByteArray& bytes);

#endif
