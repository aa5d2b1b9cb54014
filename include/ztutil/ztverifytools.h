// Verification tools: SM2 signature value forms, certificate validity and
// public keys, and signature verification against a certificate.
//
// An SM2 signature value (r, s) travels in three forms:
//   64 bytes   r || s, 32 bytes each, big-endian;
//   128 bytes  r and s right-aligned in two 64-byte fields (bytes 32-63 and 96-127);
//   DER        SEQUENCE { INTEGER r, INTEGER s } (70 to 72 bytes).
//
// ZTVerifyTools has a meta-object but no invokable methods; everything is a
// static function. Certificates are walked as version-3 X.509 DER (the TBS
// part's validity is taken as its child 4 and the key info as its child 6).
#ifndef ZTUTIL_ZTVERIFYTOOLS_H
#define ZTUTIL_ZTVERIFYTOOLS_H

#include <QByteArray>
#include <QObject>

#include "ztutil_global.h"

// Hosts pass any int here; the fixed underlying type keeps values outside
// the enumerators defined (they select no algorithm).
enum enAlgoIDType : int {
    ALGO_SM2 = 0,  // SM2 with SM3 and the user hash of the default ID
    ALGO_RSA = 1   // RSA PKCS#1 v1.5 with SHA-1
};

class ZTUTIL_EXPORT ZTVerifyTools : public QObject {
    Q_OBJECT
public:
    explicit ZTVerifyTools(QObject* parent = nullptr);
    ~ZTVerifyTools() override;

    // 0 when the certificate has expired or is not yet valid (compared with
    // the current local time) or there is no input, 1 otherwise; times that
    // cannot be read do not count against the certificate.
    static int ZTVerifyCertValidity(unsigned char* pbtCertData, unsigned int dwCertDataLength);
    static int VerifyCertValidity(QByteArray qCertData);

    // The subject public key bits of the certificate (for SM2 the 65-byte
    // point 04 || x || y, for RSA the RSAPublicKey DER). Sets *pdwPubKeySize
    // and, when pbtPubKey is not null, copies the key. Returns 1 whenever
    // the inputs are present, also when no key was found (then
    // *pdwPubKeySize is left as it was); 0 for null or empty input.
    static int ZTGetPubKeyByCert(unsigned char* pbtCertData, unsigned int dwCertDataLength,
                                 unsigned char* pbtPubKey, unsigned int* pdwPubKeySize);

    // SM2 verification of a 128-byte-form signature over the data with the
    // certificate's key: 1 valid, 0 otherwise. dwSignDataLength is not read.
    static int ZTSoftVerifyByCert(unsigned char* pbtCertData, unsigned int dwCertDataLength,
                                  unsigned char* pbtData, unsigned int dwDataLength,
                                  unsigned char* pbtSignData, unsigned int dwSignDataLength);

    // 1 when the signature over the data verifies with the certificate.
    // ALGO_SM2 takes the 64-byte or the DER form. ALGO_RSA hands the
    // certificate to RsaVerify also as the signature (the given signature is
    // not used). Other algorithms and empty arrays give 0.
    static int VerifySignatureValue(QByteArray qSignValue, QByteArray qCertData, QByteArray qData,
                                    enAlgoIDType algoType);

    // Placeholder: verifies nothing and returns 0.
    static int VerifySeal(QByteArray qSealData, enAlgoIDType algoType);

    // 128-byte form to 64-byte form: 1, or 0 (nothing written) unless the
    // input is 128 bytes and the output 64.
    static int ZTSM2ConvertSignDataTo64(unsigned char* pbtInData, unsigned int dwInDataLen,
                                        unsigned char* pbtOutData, unsigned int dwOutDataLen);

    // 64-byte form to DER in a new[] buffer (release with delete[]); an
    // integer whose first byte is 0x80 or more gets a 00 in front, leading
    // zero bytes are kept. Null unless the input is 64 bytes.
    static unsigned char* ZTSM2SignData64ToASNData(unsigned char* pbtInData, unsigned int dwInDataLen,
                                                   unsigned int* pdwOutDataLen);

    // Any form to the 128-byte form: a 64-byte input directly, anything else
    // read as DER (32 bytes taken from each INTEGER content, after its first
    // byte when the content is 33 bytes). Malformed DER gives zero halves but
    // still 1; 0 only without input or without a 128-byte output.
    static int ZTSM2ConvertSignDataTo128(unsigned char* pbtInData, unsigned int dwInDataLen,
                                         unsigned char* pbtOutData, unsigned int dwOutDataLen);

    // 64-byte form (always 64 bytes are read) to DER; a 00 is put in front
    // only of a first byte above 0x80. With a null pbtOutData only the length
    // is stored; otherwise the output (which must hold the length, at most
    // 72 bytes) is written. 1 done, 0 failed.
    static int ZTSM2ConvSignDataTo70Ex(unsigned char* pbtInData, unsigned int dwInDataLen,
                                       unsigned char* pbtOutData, unsigned int* pdwOutDataLen);
};

#endif
