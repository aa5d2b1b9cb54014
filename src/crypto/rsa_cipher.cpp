// Encryption and decryption with the built-in key pair. Both only report
// whether the operation succeeded: the result stays in a work buffer and the
// caller's output buffer is left as it is.
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <vector>

#include "crypto/openssl_ptr.h"
#include "crypto/rsa_builtin_key.h"
#include "ztutil/rsa.h"

namespace {

enum class Direction { Encrypt, Decrypt };

// PKCS#1 v1.5 with the key; the output length, or -1 on failure.
// Decryption reports a bad padding as a failure, as OpenSSL 1.1 did (newer
// releases would otherwise answer with a random message).
long long runCipher(EVP_PKEY* key, Direction direction, const unsigned char* input,
                    unsigned int length) {
    if (key == nullptr)
        return -1;
    ztutil::openssl::KeyContextPtr context(EVP_PKEY_CTX_new(key, nullptr));
    EVP_PKEY_CTX* ctx = context.get();
    std::vector<unsigned char> work(static_cast<size_t>((EVP_PKEY_get_bits(key) + 7) / 8), 0);
    size_t outLength = work.size();
    static const unsigned char kNothing = 0;
    if (input == nullptr)
        input = &kNothing;  // only reached with length 0

    bool done = ctx != nullptr;
    if (direction == Direction::Encrypt) {
        done = done && EVP_PKEY_encrypt_init(ctx) == 1 &&
               EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING) == 1 &&
               EVP_PKEY_encrypt(ctx, work.data(), &outLength, input, length) == 1;
    } else {
        done = done && EVP_PKEY_decrypt_init(ctx) == 1 &&
               EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING) == 1;
#ifdef OSSL_ASYM_CIPHER_PARAM_IMPLICIT_REJECTION
        done = done && EVP_PKEY_CTX_ctrl_str(ctx, "rsa_pkcs1_implicit_rejection", "0") > 0;
#endif
        done = done && EVP_PKEY_decrypt(ctx, work.data(), &outLength, input, length) == 1;
    }
    return done ? static_cast<long long>(outLength) : -1;
}

}  // namespace

int RsaEncrypt(unsigned int len, unsigned char* in, unsigned char* /*out*/) {
    if (in == nullptr && len != 0)
        return 0;
    EVP_PKEY* loaded = nullptr;
    unsigned char sampleCiphertext[128];
    const int ciphertextSize = key1(&loaded, sampleCiphertext);
    const ztutil::openssl::KeyPtr key(loaded);
    const long long produced = runCipher(key.get(), Direction::Encrypt, in, len);
    return produced == ciphertextSize ? 1 : 0;
}

int RsaDecrypt(unsigned int len, unsigned char* in, unsigned char* /*out*/) {
    if (in == nullptr && len != 0)
        return 0;
    EVP_PKEY* loaded = nullptr;
    unsigned char sampleCiphertext[128];
    key1(&loaded, sampleCiphertext);
    const ztutil::openssl::KeyPtr key(loaded);
    const long long produced = runCipher(key.get(), Direction::Decrypt, in, len);
    return produced == static_cast<long long>(len) ? 1 : 0;
}
