// SM2 verification with OpenSSL's own SM2 (EVP, SM3 with the Z value of the
// signer's ID), independent of the library.
#ifndef ZTHOST_CRYPTO_SM2_STRICT_H
#define ZTHOST_CRYPTO_SM2_STRICT_H

#include <QByteArray>
#include <QString>

#include "crypto/openssl_handles.h"

// r || s (32 bytes each) as SEQUENCE { INTEGER r, INTEGER s } in minimal
// DER, the one encoding OpenSSL's SM2 accepts; empty when it cannot be made.
QByteArray sm2Der(const QByteArray& rs);

class StrictSm2Check {
public:
    // `key` an SM2 public key, `id` the signer's ID, `rs` r || s (32 bytes
    // each, as zthost read them from the signature value).
    StrictSm2Check(EVP_PKEY* key, const QByteArray& id, const QByteArray& rs);

    void update(const char* data, int size);
    // True when the signature verifies; else problem() says why.
    bool finish();
    const QString& problem() const { return problem_; }

private:
    EvpPkeyPtr key_;
    EvpPkeyCtxPtr keyContext_;
    EvpMdCtxPtr context_;
    QByteArray der_;
    QString problem_;
};

#endif
