// The built-in RSA key pair (1024 bits, public exponent 17) and its loader.
#ifndef ZTUTIL_SRC_CRYPTO_RSA_BUILTIN_KEY_H
#define ZTUTIL_SRC_CRYPTO_RSA_BUILTIN_KEY_H

#include <openssl/evp.h>

namespace ztutil {
namespace rsa {

// Big-endian values of fixed widths (rsa_builtin_key_data.cpp, generated).
extern const unsigned char kModulus[129];         // leading zero byte, then 128
extern const unsigned char kPublicExponent[1];
extern const unsigned char kPrivateExponent[129];  // leading zero byte, then 128
extern const unsigned char kPrime1[65];
extern const unsigned char kPrime2[65];
extern const unsigned char kExponent1[64];
extern const unsigned char kExponent2[64];
extern const unsigned char kCoefficient[65];
extern const unsigned char kSampleCiphertext[128];
extern const char kSamplePlaintext[];

}  // namespace rsa
}  // namespace ztutil

// Loads the built-in key pair into *key (a new object the caller frees with
// EVP_PKEY_free; null on failure), copies the 128-byte sample ciphertext to
// `ctext` and returns 128.
int key1(EVP_PKEY** key, unsigned char* ctext);

#endif
