// RSA PKCS#1 v1.5 verification that compares digests, with OpenSSL: the
// signature is opened with the public key, the DigestInfo inside names the
// digest (SHA-1, SHA-256, SM3, ...), and that digest of the data must equal
// the one signed. A bare 20-byte SHA-1 value without DigestInfo is taken
// too and compared with the SHA-1 of the data. MD5 and MD4 are refused.
#ifndef ZTHOST_CRYPTO_RSA_STRICT_H
#define ZTHOST_CRYPTO_RSA_STRICT_H

#include <QByteArray>
#include <QString>

#include "crypto/openssl_handles.h"

class StrictRsaCheck {
public:
    StrictRsaCheck(EVP_PKEY* key, const QByteArray& signature);

    // The digest the signature carries ("SHA-256"), empty when it could not
    // be opened or carries none.
    const QString& digestName() const { return digestName_; }
    bool carriesDigestInfo() const { return digestInfo_; }
    // The digest carried is MD5 or MD4: refused whatever the data.
    bool brokenDigest() const { return brokenDigest_; }

    // The signed data, in pieces.
    void update(const char* data, int size);
    // True when the digest of the data equals the signed one; else
    // problem() says why.
    bool finish();
    const QString& problem() const { return problem_; }

private:
    void open(EVP_PKEY* key, const QByteArray& signature);
    bool readDigestInfo(const QByteArray& recovered);

    EvpMdCtxPtr digest_;
    QByteArray signedDigest_;
    QString digestName_;
    bool digestInfo_ = false;
    bool brokenDigest_ = false;
    QString problem_;
};

#endif
