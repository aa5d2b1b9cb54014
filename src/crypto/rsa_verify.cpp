// RSA PKCS#1 v1.5 / SHA-1 verification against the key of a certificate.
//
// Acceptance is deliberately relaxed: the public exponent is always 65537,
// the recovered block is measured with a scan for the first double zero,
// and only a recovered SHA-1 DigestInfo (35 bytes) or bare SHA-1 value
// (20 bytes) is compared with the data; anything else is accepted.
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "crypto/openssl_ptr.h"
#include "ztutil/rsa.h"
#include "ztutil/ztverifytools.h"

namespace {

const unsigned int kSha1Size = 20;
const unsigned int kSha1DigestInfoSize = 35;
const unsigned long kPublicExponent = 0x10001;

// Where the modulus sits in the RSAPublicKey block, by the block's size.
struct ModulusPlace {
    unsigned int blockSize;
    unsigned int offset;
    unsigned int length;
};
const ModulusPlace kModulusPlaces[] = {{140, 7, 128}, {270, 9, 256}};

using ztutil::openssl::BignumPtr;
using ztutil::openssl::KeyContextPtr;
using ztutil::openssl::KeyPtr;

// The thread's OpenSSL error queue is empty during a verification, so that
// the first queued error is the reason of a failed check (OpenSSL 1.1 queued
// only that one; OpenSSL 3 adds a generic provider error after it), and is
// left empty afterwards.
class ErrorScope {
public:
    ErrorScope() { ERR_clear_error(); }
    ~ErrorScope() { ERR_clear_error(); }
};

// The modulus from the key block; null for a block of any other size.
BignumPtr modulusOf(const std::vector<unsigned char>& block) {
    for (const ModulusPlace& place : kModulusPlaces) {
        if (block.size() == place.blockSize)
            return BignumPtr(BN_bin2bn(block.data() + place.offset, static_cast<int>(place.length),
                                   nullptr));
    }
    return nullptr;
}

KeyPtr publicKey(const BIGNUM* modulus, const BIGNUM* exponent) {
    ztutil::openssl::ParamBuilderPtr build(OSSL_PARAM_BLD_new());
    if (!build || OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_RSA_N, modulus) != 1 ||
        OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_RSA_E, exponent) != 1)
        return nullptr;
    return ztutil::openssl::keyFromParams("RSA", build.get(), EVP_PKEY_PUBLIC_KEY);
}

// RSA public decryption with PKCS#1 v1.5 type-1 padding into `out` (sized to
// the modulus); the recovered length, or -1 as RSA_public_decrypt reports.
int publicDecrypt(EVP_PKEY* key, const unsigned char* signature, unsigned int length,
                  std::vector<unsigned char>* out) {
    KeyContextPtr ctx(EVP_PKEY_CTX_new(key, nullptr));
    size_t recovered = out->size();
    if (!ctx || EVP_PKEY_verify_recover_init(ctx.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) != 1 ||
        EVP_PKEY_verify_recover(ctx.get(), out->data(), &recovered, signature, length) != 1)
        return -1;
    return static_cast<int>(recovered);
}

// The recovered content's length as the first index i (reached by steps of
// one after a non-zero byte and two after a zero byte) where bytes i and i+1
// are both zero; -1 when the scan runs off the end.
long contentLength(const std::vector<unsigned char>& buffer) {
    std::size_t i = 0;
    while (i < buffer.size()) {
        if (buffer[i] == 0 && i + 1 < buffer.size() && buffer[i + 1] == 0)
            return static_cast<long>(i);
        i += buffer[i] != 0 ? 1 : 2;
    }
    return -1;
}

bool sha1DigestInfoVerifies(EVP_PKEY* key, const unsigned char* digest,
                            const unsigned char* signature, unsigned int length) {
    KeyContextPtr ctx(EVP_PKEY_CTX_new(key, nullptr));
    return ctx && EVP_PKEY_verify_init(ctx.get()) == 1 &&
           EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) == 1 &&
           EVP_PKEY_CTX_set_signature_md(ctx.get(), EVP_sha1()) == 1 &&
           EVP_PKEY_verify(ctx.get(), signature, length, digest, kSha1Size) == 1;
}

}  // namespace

int RsaVerify(unsigned char* pbtCertData, unsigned int dwCertDataLength, unsigned char* pbtData,
              unsigned int dwDataLength, unsigned char* pbtSignData,
              unsigned int dwSignDataLength) {
    if (pbtCertData == nullptr || dwCertDataLength == 0 || pbtData == nullptr ||
        dwDataLength == 0 || pbtSignData == nullptr || dwSignDataLength == 0) {
        std::printf("[RsaVerify] rsa verify failed.!\n");
        return 0;
    }
    std::printf("[RsaVerify] rsa verify start...\n");
    ErrorScope errors;

    unsigned int keyLength = 0;
    if (ZTVerifyTools::ZTGetPubKeyByCert(pbtCertData, dwCertDataLength, nullptr, &keyLength) != 1) {
        std::printf("[RsaVerify] ZTGetPubKeyByCert fail.\n");
        return 0;
    }
    std::vector<unsigned char> keyBlock(keyLength, 0);
    if (ZTVerifyTools::ZTGetPubKeyByCert(pbtCertData, dwCertDataLength,
                                         keyLength != 0 ? keyBlock.data() : nullptr,
                                         &keyLength) != 1) {
        std::printf("[RsaVerify] ZTGetPubKeyByCert 2 fail.\n");
        return 0;
    }

    unsigned char digest[kSha1Size];
    EVP_Digest(pbtData, dwDataLength, digest, nullptr, EVP_sha1(), nullptr);

    BignumPtr exponent(BN_new());
    if (!exponent || BN_set_word(exponent.get(), kPublicExponent) != 1) {
        std::printf("[RsaVerify] set word failed.\n");
        return 0;
    }
    BignumPtr modulus = modulusOf(keyBlock);
    if (!modulus) {
        std::printf("[RsaVerify] BN_hex2bn failed.\n");
        return 0;
    }

    KeyPtr key = publicKey(modulus.get(), exponent.get());
    std::vector<unsigned char> recovered(static_cast<std::size_t>(BN_num_bytes(modulus.get())), 0);
    const int recoveredLength =
        key ? publicDecrypt(key.get(), pbtSignData, dwSignDataLength, &recovered) : -1;
    if (recoveredLength < 0) {
        std::printf("[RsaVerify] public decrypt failed, error : [%d]\n", recoveredLength);
        return 0;
    }

    const long length = contentLength(recovered);
    if (length == kSha1DigestInfoSize) {
        if (!sha1DigestInfoVerifies(key.get(), digest, pbtSignData, dwSignDataLength)) {
            char text[256];
            ERR_error_string_n(ERR_peek_error(), text, sizeof text);
            std::printf("source:%s\n", text);
            return 0;
        }
    } else if (length == kSha1Size) {
        if (std::memcmp(recovered.data(), digest, kSha1Size) != 0) {
            std::printf("[RsaVerify] hash compare failed. verify Signature failed!\n");
            return 0;
        }
    }
    std::printf("[RsaVerify] RSA_verify ok\n");
    return 1;
}
