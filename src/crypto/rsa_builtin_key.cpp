// Loading the built-in RSA key pair into an OpenSSL key object.
#include "crypto/rsa_builtin_key.h"

#include <openssl/core_names.h>

#include <cstring>

#include "crypto/openssl_ptr.h"

namespace {

const int kSampleCiphertextSize = 128;

// All eight key values as parameters of `build`; false when one cannot be
// added. The numbers must outlive the parameters made from the builder.
bool addKeyValues(OSSL_PARAM_BLD* build, ztutil::openssl::BignumPtr numbers[8]) {
    using namespace ztutil::rsa;
    struct Value {
        const char* name;
        const unsigned char* bytes;
        int size;
    } values[8] = {
        {OSSL_PKEY_PARAM_RSA_N, kModulus, sizeof kModulus},
        {OSSL_PKEY_PARAM_RSA_E, kPublicExponent, sizeof kPublicExponent},
        {OSSL_PKEY_PARAM_RSA_D, kPrivateExponent, sizeof kPrivateExponent},
        {OSSL_PKEY_PARAM_RSA_FACTOR1, kPrime1, sizeof kPrime1},
        {OSSL_PKEY_PARAM_RSA_FACTOR2, kPrime2, sizeof kPrime2},
        {OSSL_PKEY_PARAM_RSA_EXPONENT1, kExponent1, sizeof kExponent1},
        {OSSL_PKEY_PARAM_RSA_EXPONENT2, kExponent2, sizeof kExponent2},
        {OSSL_PKEY_PARAM_RSA_COEFFICIENT1, kCoefficient, sizeof kCoefficient},
    };
    for (int i = 0; i < 8; ++i) {
        numbers[i].reset(BN_bin2bn(values[i].bytes, values[i].size, nullptr));
        if (!numbers[i] || OSSL_PARAM_BLD_push_BN(build, values[i].name, numbers[i].get()) != 1)
            return false;
    }
    return true;
}

EVP_PKEY* loadKeyPair() {
    ztutil::openssl::ParamBuilderPtr build(OSSL_PARAM_BLD_new());
    ztutil::openssl::BignumPtr numbers[8];
    if (!build || !addKeyValues(build.get(), numbers))
        return nullptr;
    return ztutil::openssl::keyFromParams("RSA", build.get(), EVP_PKEY_KEYPAIR).release();
}

}  // namespace

int key1(EVP_PKEY** key, unsigned char* ctext) {
    *key = loadKeyPair();
    std::memcpy(ctext, ztutil::rsa::kSampleCiphertext, kSampleCiphertextSize);
    return kSampleCiphertextSize;
}
