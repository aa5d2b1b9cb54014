// SHA-1 and SM3 digests chosen by type.
#include <openssl/evp.h>

#include <cstring>

#include "ztutil/rsa.h"
#include "ztutil/sm3.h"

namespace {

const unsigned int kSha1Size = 20;

}  // namespace

int RsaDigest(unsigned char* pbtData, unsigned int dwDataLen, unsigned char* pbtHashData,
              unsigned int* pdwHashDataLength) {
    static const unsigned char kNothing = 0;
    unsigned char digest[kSha1Size] = {0};
    // Missing data is hashed as the empty message.
    const unsigned char* data = pbtData != nullptr ? pbtData : &kNothing;
    const size_t length = pbtData != nullptr ? dwDataLen : 0;
    EVP_Digest(data, length, digest, nullptr, EVP_sha1(), nullptr);
    if (pdwHashDataLength != nullptr)
        *pdwHashDataLength = kSha1Size;
    if (pbtHashData != nullptr)
        std::memcpy(pbtHashData, digest, kSha1Size);
    return 1;
}

int ZTDigest(unsigned char* data, unsigned int len, unsigned char* out, unsigned int* outlen,
             enDigestType type) {
    if (data == nullptr || len == 0 || outlen == nullptr)
        return 0;
    if (type == DIGEST_SM3)
        return ztutil_digest(data, len, out, outlen);
    // SHA-1 is computed twice, the second result is the one returned.
    RsaDigest(data, len, out, outlen);
    return RsaDigest(data, len, out, outlen);
}
