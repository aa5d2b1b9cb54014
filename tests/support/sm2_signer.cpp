#include "support/sm2_signer.h"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/x509.h>

#include <cstring>

namespace ztutil_test {

Sm2Signer::Sm2Signer() : key_(EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2")), record_(132, 0) {
    unsigned char point[65];
    size_t length = 0;
    EXPECT_EQ(EVP_PKEY_get_octet_string_param(key_, OSSL_PKEY_PARAM_PUB_KEY, point, sizeof point, &length), 1);
    x_.assign(point + 1, point + 33);
    y_.assign(point + 33, point + 65);
    const unsigned int bits = 256;
    std::memcpy(record_.data(), &bits, 4);
    std::copy(x_.begin(), x_.end(), record_.begin() + 36);
    std::copy(y_.begin(), y_.end(), record_.begin() + 100);
}

Sm2Signer::~Sm2Signer() {
    EVP_PKEY_free(key_);
}

Bytes Sm2Signer::sign(const Bytes& message) const {
    EVP_MD_CTX* md = EVP_MD_CTX_new();
    EVP_PKEY_CTX* pctx = EVP_PKEY_CTX_new(key_, nullptr);
    EXPECT_EQ(EVP_PKEY_CTX_set1_id(pctx, "1234567812345678", 16), 1);
    EVP_MD_CTX_set_pkey_ctx(md, pctx);
    size_t length = 72;
    Bytes signature(length);
    EXPECT_EQ(EVP_DigestSignInit(md, nullptr, EVP_sm3(), nullptr, key_), 1);
    EXPECT_EQ(EVP_DigestSign(md, signature.data(), &length, message.data(), message.size()), 1);
    signature.resize(length);
    EVP_MD_CTX_free(md);
    EVP_PKEY_CTX_free(pctx);
    return signature;
}

Bytes Sm2Signer::certificate(long notBeforeSeconds, long notAfterSeconds, long version) const {
    X509* certificate = X509_new();
    X509_set_version(certificate, version);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), notBeforeSeconds);
    X509_gmtime_adj(X509_getm_notAfter(certificate), notAfterSeconds);
    X509_NAME* name = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("ZTUtil test"), -1,
                               -1, 0);
    X509_set_issuer_name(certificate, name);
    return signedDer(certificate);
}

Bytes Sm2Signer::certificate(const CertificateRecipe& recipe) const {
    X509* certificate = X509_new();
    X509_set_version(certificate, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 0x1234);
    for (const auto* names : {&recipe.issuer, &recipe.subject}) {
        X509_NAME* name = names == &recipe.issuer ? X509_get_issuer_name(certificate)
                                                  : X509_get_subject_name(certificate);
        for (const auto& entry : *names)
            X509_NAME_add_entry_by_txt(name, entry.first.c_str(), MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(entry.second.c_str()), -1, -1, 0);
    }
    for (ASN1_TIME* time : {X509_getm_notBefore(certificate), X509_getm_notAfter(certificate)}) {
        const std::string& text = time == X509_getm_notBefore(certificate) ? recipe.notBefore : recipe.notAfter;
        ASN1_STRING_set(time, text.data(), static_cast<int>(text.size()));
        time->type = text.size() >= 15 ? V_ASN1_GENERALIZEDTIME : V_ASN1_UTCTIME;
    }
    return signedDer(certificate);
}

Bytes Sm2Signer::signedDer(X509* certificate) const {
    X509_set_pubkey(certificate, key_);
    EXPECT_GT(X509_sign(certificate, key_, EVP_sm3()), 0);
    unsigned char* der = nullptr;
    const int length = i2d_X509(certificate, &der);
    Bytes out(der, der + std::max(length, 0));
    OPENSSL_free(der);
    X509_free(certificate);
    return out;
}

void splitSignature(const Bytes& der, Bytes* r, Bytes* s) {
    const unsigned char* p = der.data();
    ECDSA_SIG* sig = d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(der.size()));
    ASSERT_NE(sig, nullptr);
    r->assign(32, 0);
    s->assign(32, 0);
    BN_bn2binpad(ECDSA_SIG_get0_r(sig), r->data(), 32);
    BN_bn2binpad(ECDSA_SIG_get0_s(sig), s->data(), 32);
    ECDSA_SIG_free(sig);
}

}  // namespace ztutil_test
