// RSA verification against a certificate, SHA-1 and SM3 digests, and the
// built-in RSA key pair.
#ifndef ZTUTIL_RSA_H
#define ZTUTIL_RSA_H

#include "ztutil_global.h"

// Digest choice of ZTDigest: 0 is SM3 (32 bytes), anything else SHA-1 (20).
// The fixed underlying type makes "anything else" any int value.
#ifdef __cplusplus
enum enDigestType : int {
#else
enum enDigestType {
#endif
    DIGEST_SM3 = 0,
    DIGEST_SHA1 = 1
};
#ifndef __cplusplus
typedef enum enDigestType enDigestType;
#endif

// Checks an RSA PKCS#1 v1.5 signature made with SHA-1 over the data against
// the key of a DER certificate (1024- or 2048-bit keys; the public exponent
// is taken as 65537). Returns 1 when accepted, 0 when rejected; every step is
// reported on standard output. A signature that recovers to anything but a
// SHA-1 DigestInfo or a bare 20-byte value is accepted without comparison.
ZTUTIL_C_API int RsaVerify(unsigned char* pbtCertData, unsigned int dwCertDataLength,
                           unsigned char* pbtData, unsigned int dwDataLength,
                           unsigned char* pbtSignData, unsigned int dwSignDataLength);

// SHA-1 of the data: stores 20 in *pdwHashDataLength and the digest in
// pbtHashData when they are given; always returns 1.
ZTUTIL_C_API int RsaDigest(unsigned char* pbtData, unsigned int dwDataLen,
                           unsigned char* pbtHashData, unsigned int* pdwHashDataLength);

// SM3 (type 0) or SHA-1 (any other type) of the data into `out` (when not
// null) with its length in *outlen. Returns 0 for null data, zero length or
// a null `outlen`, else 1.
ZTUTIL_C_API int ZTDigest(unsigned char* data, unsigned int len, unsigned char* out,
                          unsigned int* outlen, enDigestType type);

// PKCS#1 v1.5 encryption with the built-in public key (decryption with its
// private key). Only the success is reported: 1 when the encryption gave 128
// bytes (when the decrypted length equals `len`), else 0. `out` is not
// written.
ZTUTIL_C_API int RsaEncrypt(unsigned int len, unsigned char* in, unsigned char* out);
ZTUTIL_C_API int RsaDecrypt(unsigned int len, unsigned char* in, unsigned char* out);

#endif
