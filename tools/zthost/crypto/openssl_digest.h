// Digests computed by OpenSSL, to check what the library's SM3 computed.
#ifndef ZTHOST_CRYPTO_OPENSSL_DIGEST_H
#define ZTHOST_CRYPTO_OPENSSL_DIGEST_H

#include <QByteArray>

#include "crypto/openssl_handles.h"

class OpenSslDigest {
public:
    explicit OpenSslDigest(const EVP_MD* md);
    void update(const char* data, int size);
    QByteArray finish();

private:
    EvpMdCtxPtr context_;
};

QByteArray openSslSm3(const QByteArray& data);

#endif
