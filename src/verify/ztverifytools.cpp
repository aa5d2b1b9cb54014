// ZTVerifyTools: the object itself, signature verification against a
// certificate, and the dispatch by algorithm.
#include "ztutil/ztverifytools.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "ztutil/rsa.h"
#include "ztutil/sm2.h"

namespace {

const char kDefaultUserId[] = "1234567812345678";
const int kDefaultUserIdLength = 16;
const int kRecordSize = 132;
const int kRecordXOffset = 36;
const int kRecordYOffset = 100;
const unsigned int kCoordinateSize = 32;
const unsigned int kWideForm = 128;

// The ECC public-key record of the certificate's SM2 key (04 || x || y; the
// first byte is not checked). A key shorter than 65 bytes fills what it has.
bool publicKeyRecord(unsigned char* certificate, unsigned int length, unsigned char* record) {
    unsigned int keyLength = 0;
    if (ZTVerifyTools::ZTGetPubKeyByCert(certificate, length, nullptr, &keyLength) != 1)
        return false;
    // Room for at least the 65 bytes read below, zero beyond the key.
    std::vector<unsigned char> key(std::max(keyLength, 2 * kCoordinateSize + 1), 0);
    if (ZTVerifyTools::ZTGetPubKeyByCert(certificate, length, key.data(), &keyLength) != 1)
        return false;
    std::memset(record, 0, kRecordSize);
    const unsigned int bits = 256;
    std::memcpy(record, &bits, sizeof bits);
    std::memcpy(record + kRecordXOffset, key.data() + 1, kCoordinateSize);
    std::memcpy(record + kRecordYOffset, key.data() + 1 + kCoordinateSize, kCoordinateSize);
    return true;
}

}  // namespace

ZTVerifyTools::ZTVerifyTools(QObject* parent) : QObject(parent) {}

ZTVerifyTools::~ZTVerifyTools() = default;

int ZTVerifyTools::ZTSoftVerifyByCert(unsigned char* pbtCertData, unsigned int dwCertDataLength,
                                      unsigned char* pbtData, unsigned int dwDataLength,
                                      unsigned char* pbtSignData,
                                      unsigned int /*dwSignDataLength*/) {
    if (pbtCertData == nullptr || pbtData == nullptr || pbtSignData == nullptr ||
        dwCertDataLength == 0 || dwDataLength == 0)
        return 0;
    unsigned char record[kRecordSize];
    if (!publicKeyRecord(pbtCertData, dwCertDataLength, record))
        return 0;

    unsigned char digest[32];
    if (ztutil_sm3_with_sm2(pbtData, static_cast<int>(dwDataLength), record, kRecordSize,
                            kDefaultUserId, kDefaultUserIdLength, digest) != 1)
        return 0;

    // r and s from the 128-byte form, then the DER form for SM2Verify.
    unsigned char rs[2 * kCoordinateSize];
    std::memcpy(rs, pbtSignData + 32, kCoordinateSize);
    std::memcpy(rs + kCoordinateSize, pbtSignData + 96, kCoordinateSize);
    unsigned int derLength = 0;
    if (ZTSM2ConvSignDataTo70Ex(rs, sizeof rs, nullptr, &derLength) != 1)
        return 0;
    std::vector<unsigned char> der(derLength, 0);
    if (ZTSM2ConvSignDataTo70Ex(rs, sizeof rs, der.data(), &derLength) != 1)
        return 0;
    return SM2Verify(record, kRecordSize, digest, sizeof digest, der.data(), derLength) == 0 ? 1
                                                                                            : 0;
}

int ZTVerifyTools::VerifySignatureValue(QByteArray qSignValue, QByteArray qCertData,
                                        QByteArray qData, enAlgoIDType algoType) {
    if (qSignValue.isEmpty() || qCertData.isEmpty() || qData.isEmpty())
        return 0;
    unsigned char* certificate = reinterpret_cast<unsigned char*>(qCertData.data());
    const unsigned int certificateLength = static_cast<unsigned int>(qCertData.size());
    unsigned char* data = reinterpret_cast<unsigned char*>(qData.data());
    const unsigned int dataLength = static_cast<unsigned int>(qData.size());
    switch (algoType) {
    case ALGO_SM2: {
        unsigned char wide[kWideForm] = {0};
        if (ZTSM2ConvertSignDataTo128(reinterpret_cast<unsigned char*>(qSignValue.data()),
                                      static_cast<unsigned int>(qSignValue.size()), wide,
                                      kWideForm) != 1)
            return 0;
        return ZTSoftVerifyByCert(certificate, certificateLength, data, dataLength, wide,
                                  kWideForm);
    }
    case ALGO_RSA:
        // The certificate goes in as the signature too; the signature value
        // given is not passed on.
        return RsaVerify(certificate, certificateLength, data, dataLength, certificate,
                         certificateLength);
    }
    return 0;
}

int ZTVerifyTools::VerifySeal(QByteArray /*qSealData*/, enAlgoIDType /*algoType*/) {
    return 0;
}
