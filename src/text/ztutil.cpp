// ZTUtil: forwarding to the cryptographic primitives.
#include "ztutil/ztutil.h"

#include "verify/sign_data_p1.h"
#include "ztutil/rsa.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"

ZTUtil::ZTUtil(QObject* parent) : QObject(parent) {}

ZTUtil::~ZTUtil() = default;

BOOL ZTUtil::sm3_with_sm2(unsigned char* input, int ilen, unsigned char* public_key, int keylen,
                          const char* user_id, int uidlen, unsigned char* output) {
    return ztutil_sm3_with_sm2(input, ilen, public_key, keylen, user_id, uidlen, output);
}

void ZTUtil::sm3(unsigned char* input, int ilen, unsigned char* output) {
    ztutil_sm3(input, ilen, output);
}

int ZTUtil::sm2Verify(unsigned char* pbtPubKey, uint uiPubKeyLen, unsigned char* pbtDigestData,
                      uint uiDigestDataLen, unsigned char* pbtSignData, uint uiSignDataLen) {
    return SM2Verify(pbtPubKey, uiPubKeyLen, pbtDigestData, uiDigestDataLen, pbtSignData,
                     uiSignDataLen);
}

int ZTUtil::rsaVerify(unsigned char* pbtCertData, uint dwCertDataLen, unsigned char* pbtData,
                      uint dwDataLen, unsigned char* pbtSignData, uint dwSignDataLen) {
    return RsaVerify(pbtCertData, dwCertDataLen, pbtData, dwDataLen, pbtSignData, dwSignDataLen);
}

QByteArray ZTUtil::convSignDataToP1(QByteArray data) {
    return ::convSignDataToP1(data);
}

BOOL ZTUtil::rsaDigest(BYTE* pbtData, uint dwDataLen, BYTE* pbtHashData, uint* pdwHashDataLength) {
    return RsaDigest(pbtData, dwDataLen, pbtHashData, pdwHashDataLength);
}
