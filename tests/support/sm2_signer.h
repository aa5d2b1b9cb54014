// An SM2 key made by OpenSSL, its ECC public-key record and certificate, and
// OpenSSL's signatures (SM3, default user ID) as an independent signer.
#ifndef ZTUTIL_TESTS_SM2_SIGNER_H
#define ZTUTIL_TESTS_SM2_SIGNER_H

#include <openssl/evp.h>

#include <string>
#include <utility>
#include <vector>

#include "support/common.h"

namespace ztutil_test {

// A certificate's names as lists of (attribute short name, UTF-8 value) and
// its validity texts, set raw as given (15 characters or more make a
// GeneralizedTime).
struct CertificateRecipe {
    std::vector<std::pair<std::string, std::string>> issuer;
    std::vector<std::pair<std::string, std::string>> subject = {{"CN", "x"}};
    std::string notBefore = "230101000000Z";
    std::string notAfter = "330101000000Z";
};

class Sm2Signer {
public:
    Sm2Signer();
    ~Sm2Signer();
    Sm2Signer(const Sm2Signer&) = delete;
    Sm2Signer& operator=(const Sm2Signer&) = delete;

    // OpenSSL's DER signature over the message (SM3 with the Z value of
    // the ID "1234567812345678").
    Bytes sign(const Bytes& message) const;

    // A self-signed certificate of the key (DER), valid from now +
    // notBeforeSeconds to now + notAfterSeconds; `version` 0 is version 1
    // (no version field), 2 is version 3.
    Bytes certificate(long notBeforeSeconds, long notAfterSeconds, long version = 2) const;
    // A version-3 certificate of the key laid out by the recipe.
    Bytes certificate(const CertificateRecipe& recipe) const;

    const Bytes& x() const { return x_; }
    const Bytes& y() const { return y_; }
    // 132-byte record: bit length 256, x at 36, y at 100.
    const Bytes& record() const { return record_; }

private:
    Bytes signedDer(X509* certificate) const;  // signs, encodes and frees

    EVP_PKEY* key_;
    Bytes x_, y_, record_;
};

// A certificate laid out by the recipe, signed by a new key.
inline QByteArray selfSigned(const CertificateRecipe& recipe) {
    return qbytes(Sm2Signer().certificate(recipe));
}

// r and s (32 bytes each) of a DER signature, read by OpenSSL.
void splitSignature(const Bytes& der, Bytes* r, Bytes* s);

}  // namespace ztutil_test

#endif
