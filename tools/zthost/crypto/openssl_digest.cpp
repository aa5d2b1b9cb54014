#include "crypto/openssl_digest.h"

OpenSslDigest::OpenSslDigest(const EVP_MD* md) : context_(EVP_MD_CTX_new()) {
    if (context_ && EVP_DigestInit_ex(context_.get(), md, nullptr) != 1)
        context_.reset();
}

void OpenSslDigest::update(const char* data, int size) {
    if (context_)
        EVP_DigestUpdate(context_.get(), data, size_t(size));
}

QByteArray OpenSslDigest::finish() {
    QByteArray digest(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (!context_ || EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(digest.data()), &size) != 1)
        return QByteArray();
    context_.reset();
    digest.truncate(int(size));
    return digest;
}

QByteArray openSslSm3(const QByteArray& data) {
    OpenSslDigest digest(EVP_sm3());
    digest.update(data.constData(), data.size());
    return digest.finish();
}
