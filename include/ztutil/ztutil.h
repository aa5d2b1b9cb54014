// The ZTUtil component: SM3, SM2 and RSA primitives and the host's text
// conversions (GBK, UTF-8 carried one byte per character, wide characters)
// as invokable methods, and the DumpHex diagnostic.
#ifndef ZTUTIL_ZTUTIL_H
#define ZTUTIL_ZTUTIL_H

#include <QByteArray>
#include <QObject>
#include <QString>

#include "ztutil_global.h"

class ZTUTIL_EXPORT ZTUtil : public QObject {
    Q_OBJECT
public:
    explicit ZTUtil(QObject* parent = nullptr);
    ~ZTUtil() override;

    // SM3 of the input prefixed with the SM2 Z value of the key and user ID.
    Q_INVOKABLE BOOL sm3_with_sm2(unsigned char* input, int ilen, unsigned char* public_key,
                                  int keylen, const char* user_id, int uidlen,
                                  unsigned char* output);
    Q_INVOKABLE void sm3(unsigned char* input, int ilen, unsigned char* output);
    // 0 for a valid signature, 1 otherwise.
    Q_INVOKABLE int sm2Verify(unsigned char* pbtPubKey, uint uiPubKeyLen,
                              unsigned char* pbtDigestData, uint uiDigestDataLen,
                              unsigned char* pbtSignData, uint uiSignDataLen);
    Q_INVOKABLE int rsaVerify(unsigned char* pbtCertData, uint dwCertDataLen,
                              unsigned char* pbtData, uint dwDataLen, unsigned char* pbtSignData,
                              uint dwSignDataLen);
    // A 64-byte r || s value as DER; any other size comes back unchanged.
    Q_INVOKABLE QByteArray convSignDataToP1(QByteArray data);
    Q_INVOKABLE BOOL rsaDigest(BYTE* pbtData, uint dwDataLen, BYTE* pbtHashData,
                               uint* pdwHashDataLength);

    // The conversions never give more than the sizes stated with them, for
    // any input (a byte the codec cannot read becomes one replacement
    // character, U+FFFD or '?').
    // GBK bytes to UTF-8 carried in a QString, one character per byte, up to
    // the first zero byte: at most 3 characters per input byte.
    Q_INVOKABLE QString Multi2Utf8(QByteArray data);
    // UTF-8 carried in a QString, one character per byte, to GBK bytes: at
    // most 2 bytes per input character.
    Q_INVOKABLE QByteArray Utf8toMulti(QString strUtf8);
    // Native wide characters (32-bit units) to UTF-8 carried in a QString, up
    // to the first zero unit: at most 4 characters per started unit, so
    // data.size() + 3 in all.
    Q_INVOKABLE QString Wide2Utf8(QByteArray data);
    // UTF-8 carried in a QString to native wide characters, no terminator:
    // at most 4 bytes (one unit) per input character.
    Q_INVOKABLE QByteArray Utf8toWide(QString strUtf8);
};

// Writes a hex dump to the debug output: one line per 16 bytes, each
// "0x%08X" offset followed by " %02X" items.
ZTUTIL_C_API void DumpHex(QByteArray data);

#endif
