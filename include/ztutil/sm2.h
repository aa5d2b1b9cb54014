// SM2 on the recommended 256-bit prime curve (GB/T 32918): the digest with
// the signer's Z value and signature verification.
//
// Public keys are ECC public-key records of 132 bytes: a 32-bit bit length
// (host order, not read here), then x and y, each right-aligned in a 64-byte
// big-endian field (the values are bytes 36-67 and 100-131).
#ifndef ZTUTIL_SM2_H
#define ZTUTIL_SM2_H

#include "ztutil_global.h"

// e = SM3(Z || M), Z = SM3(ENTL || ID || a || b || xG || yG || x || y), with
// ENTL = (uidlen & 0x1FFF) * 8 as two big-endian bytes. Without a record or
// an ID (null pointer or zero length) it degrades to the plain SM3 of M.
// Returns 1 when the 32-byte output was written; 0 (nothing written) for a
// record shorter than 132 bytes or a negative ID length.
ZTUTIL_C_API int ztutil_sm3_with_sm2(unsigned char* input, int ilen, unsigned char* public_key,
                                     int keylen, const char* user_id, int uidlen,
                                     unsigned char output[32]);

// Verifies the DER signature SEQUENCE { INTEGER r, INTEGER s } over the
// digest e with the key in the record (which must be 132 bytes). Returns 0
// for a valid signature and 1 for anything else; what went wrong shows only
// in the texts written to standard output.
ZTUTIL_C_API int SM2Verify(unsigned char* pbtPubKey, unsigned int uiPubKeyLen,
                           unsigned char* pbtDigestData, unsigned int uiDigestDataLen,
                           unsigned char* pbtSignData, unsigned int uiSignDataLen);

// The upper-case hexadecimal digit of the high (`high` non-zero) or low half
// of the byte `value`.
ZTUTIL_C_API int int2char(int value, int high);

#endif
