// OpenSSL objects owned by std::unique_ptr, each with its free function.
#ifndef ZTHOST_CRYPTO_OPENSSL_HANDLES_H
#define ZTHOST_CRYPTO_OPENSSL_HANDLES_H

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <QByteArray>
#include <memory>

template <typename T, void (*Free)(T*)>
struct OpenSslFree {
    void operator()(T* object) const { Free(object); }
};

using EvpPkeyPtr = std::unique_ptr<EVP_PKEY, OpenSslFree<EVP_PKEY, EVP_PKEY_free>>;
using EvpPkeyCtxPtr = std::unique_ptr<EVP_PKEY_CTX, OpenSslFree<EVP_PKEY_CTX, EVP_PKEY_CTX_free>>;
using EvpMdCtxPtr = std::unique_ptr<EVP_MD_CTX, OpenSslFree<EVP_MD_CTX, EVP_MD_CTX_free>>;
using X509Ptr = std::unique_ptr<X509, OpenSslFree<X509, X509_free>>;
using BignumPtr = std::unique_ptr<BIGNUM, OpenSslFree<BIGNUM, BN_free>>;
using EcGroupPtr = std::unique_ptr<EC_GROUP, OpenSslFree<EC_GROUP, EC_GROUP_free>>;

inline const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

// The DER of a certificate as OpenSSL reads it; null when it cannot.
inline X509Ptr parseX509(const QByteArray& der) {
    const unsigned char* cursor = bytesOf(der);
    X509Ptr certificate(d2i_X509(nullptr, &cursor, der.size()));
    if (certificate && cursor != bytesOf(der) + der.size())
        certificate.reset();  // bytes after the certificate
    return certificate;
}

#endif
