#include "crypto/sm2_strict.h"

#include <openssl/ecdsa.h>

#include "crypto/public_key.h"

namespace {

const int kHalf = 32;

}  // namespace

QByteArray sm2Der(const QByteArray& rs) {
    if (rs.size() != 2 * kHalf)
        return QByteArray();
    ECDSA_SIG* signature = ECDSA_SIG_new();
    BIGNUM* r = BN_bin2bn(bytesOf(rs), kHalf, nullptr);
    BIGNUM* s = BN_bin2bn(bytesOf(rs) + kHalf, kHalf, nullptr);
    QByteArray der;
    if (signature != nullptr && r != nullptr && s != nullptr && ECDSA_SIG_set0(signature, r, s) == 1) {
        r = s = nullptr;  // owned by the signature now
        unsigned char* encoded = nullptr;
        const int size = i2d_ECDSA_SIG(signature, &encoded);
        if (size > 0)
            der = QByteArray(reinterpret_cast<const char*>(encoded), size);
        OPENSSL_free(encoded);
    }
    BN_free(r);
    BN_free(s);
    ECDSA_SIG_free(signature);
    return der;
}

namespace {

// OpenSSL signs and verifies SM2 only with keys of its SM2 type; an EC key
// on the SM2 curve is made one.
EvpPkeyPtr sm2TypedKey(EVP_PKEY* key) {
    if (key != nullptr && EVP_PKEY_is_a(key, "SM2")) {
        EVP_PKEY_up_ref(key);
        return EvpPkeyPtr(key);
    }
    QString ignored;
    return sm2KeyFromPoint(sm2Point(key), &ignored);
}

}  // namespace

StrictSm2Check::StrictSm2Check(EVP_PKEY* key, const QByteArray& id, const QByteArray& rs) {
    if (keyTypeOf(key) != KeyType::Sm2) {
        problem_ = QStringLiteral("the key is no SM2 key");
        return;
    }
    key_ = sm2TypedKey(key);
    der_ = sm2Der(rs);
    keyContext_.reset(key_ ? EVP_PKEY_CTX_new(key_.get(), nullptr) : nullptr);
    context_.reset(EVP_MD_CTX_new());
    if (der_.isEmpty() || !keyContext_ || !context_ ||
        EVP_PKEY_CTX_set1_id(keyContext_.get(), id.constData(), size_t(id.size())) != 1) {
        context_.reset();
        problem_ = QStringLiteral("OpenSSL cannot set up the SM2 verification");
        return;
    }
    EVP_MD_CTX_set_pkey_ctx(context_.get(), keyContext_.get());
    if (EVP_DigestVerifyInit(context_.get(), nullptr, EVP_sm3(), nullptr, key_.get()) != 1) {
        context_.reset();
        problem_ = QStringLiteral("OpenSSL cannot set up the SM2 verification");
    }
}

void StrictSm2Check::update(const char* data, int size) {
    if (context_)
        EVP_DigestVerifyUpdate(context_.get(), data, size_t(size));
}

bool StrictSm2Check::finish() {
    if (!context_)
        return false;
    const bool valid = EVP_DigestVerifyFinal(context_.get(), bytesOf(der_), size_t(der_.size())) == 1;
    context_.reset();
    if (!valid)
        problem_ = QStringLiteral("OpenSSL's SM2 verification rejects the signature");
    return valid;
}
