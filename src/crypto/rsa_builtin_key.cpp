// Loading the built-in RSA key pair into an OpenSSL key object.
#include "crypto/rsa_builtin_key.h"

#include <openssl/core_names.h>
#include <openssl/param_build.h>

#include <cstring>

namespace {

const int kSampleCiphertextSize = 128;

// All eight key values as parameters; false when one cannot be added.
bool addKeyValues(OSSL_PARAM_BLD* build, BIGNUM* numbers[8]) {
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
        numbers[i] = BN_bin2bn(values[i].bytes, values[i].size, nullptr);
        if (numbers[i] == nullptr || OSSL_PARAM_BLD_push_BN(build, values[i].name, numbers[i]) != 1)
            return false;
    }
    return true;
}

EVP_PKEY* loadKeyPair() {
    OSSL_PARAM_BLD* build = OSSL_PARAM_BLD_new();
    BIGNUM* numbers[8] = {};
    OSSL_PARAM* params = nullptr;
    EVP_PKEY_CTX* ctx = nullptr;
    EVP_PKEY* key = nullptr;
    if (build != nullptr && addKeyValues(build, numbers) &&
        (params = OSSL_PARAM_BLD_to_param(build)) != nullptr &&
        (ctx = EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr)) != nullptr &&
        EVP_PKEY_fromdata_init(ctx) == 1) {
        if (EVP_PKEY_fromdata(ctx, &key, EVP_PKEY_KEYPAIR, params) != 1)
            key = nullptr;
    }
    EVP_PKEY_CTX_free(ctx);
    OSSL_PARAM_free(params);
    for (BIGNUM* number : numbers)
        BN_free(number);
    OSSL_PARAM_BLD_free(build);
    return key;
}

}  // namespace

int key1(EVP_PKEY** key, unsigned char* ctext) {
    *key = loadKeyPair();
    std::memcpy(ctext, ztutil::rsa::kSampleCiphertext, kSampleCiphertextSize);
    return kSampleCiphertextSize;
}
