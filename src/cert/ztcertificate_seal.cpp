// ZTCertificate: the DER structures of GM and government-affairs seal
// signatures, and the SM2 signature value structure they carry.
//
// Nothing is hashed or signed here: the host supplies every piece and gets
// the encoding back.
#include <memory>

#include "ztutil/component.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztcertificate.h"
#include "asn/asn_tags.h"

namespace {

const char kGmVersion = 0x02;
const char kZwVersion = 0x04;
// 1.2.156.10197.1.501, SM2 signature with SM3, as content octets.
const char kSm2WithSm3Oid[] = "\x2A\x81\x1C\xCF\x55\x01\x83\x75";
const char kSm2WithSm3OidText[] = "1.2.156.10197.1.501";

const int kRawSignatureHalf = 32;
const int kDerPassThroughMinimum = 65;

// The caller's bytes without a copy; a null pointer or negative length is empty.
QByteArray borrowed(const unsigned char* bytes, int length) {
    if (bytes == nullptr || length <= 0)
        return QByteArray();
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), length);
}

// A document with a SEQUENCE root, or null.
std::unique_ptr<ZTAsn> newSequenceDocument() {
    std::unique_ptr<ZTAsn> document(new ZTAsn(nullptr));
    if (!document->create(tag::kSequence))
        return nullptr;
    return document;
}

// Adds a primitive child and sets its content; false when the child could not be made.
bool addPrimitive(ZTAsnBlock* parent, int tag, const QByteArray& content) {
    ZTAsnBlock* child = parent->addSample(tag);
    if (child == nullptr)
        return false;
    child->setData(content);
    return true;
}

// The common start of both to-be-signed structures: nothing unless the seal,
// digest and time are all present; otherwise a SEQUENCE holding the version
// INTEGER and the seal element, or null when either cannot be added.
std::unique_ptr<ZTAsn> startSignInfo(char version, const QByteArray& seal,
                                     const QByteArray& digest, const QByteArray& time) {
    if (seal.isEmpty() || digest.isEmpty() || time.isEmpty())
        return nullptr;
    std::unique_ptr<ZTAsn> document = newSequenceDocument();
    if (!document || !addPrimitive(document.get(), tag::kInteger, QByteArray(1, version)) ||
        !document->addBlock(seal))
        return nullptr;
    return document;
}

QByteArray encode(ZTAsn* document) {
    document->update();
    return document->build();
}

}  // namespace

QByteArray ZTCertificate::GetGMSignInfo(unsigned char*, int, unsigned char* pSealInfo,
                                        int iSealInfoLen, unsigned char* pPropertyInfo,
                                        int PropertyInfoLen, unsigned char* pHashData, int iHashLen,
                                        unsigned char* pCertContext, int iCertLen,
                                        unsigned char* pTimeInfo, int iTimeInfoLen,
                                        unsigned char*, int) {
    // The version (always 2) and the algorithm (always SM2 with SM3) are fixed
    // by the format; the caller's values are ignored.
    QByteArray result;
    const QByteArray digest = borrowed(pHashData, iHashLen);
    const QByteArray time = borrowed(pTimeInfo, iTimeInfoLen);
    std::unique_ptr<ZTAsn> document =
        startSignInfo(kGmVersion, borrowed(pSealInfo, iSealInfoLen), digest, time);
    if (!document)
        return result;
    const bool complete = addPrimitive(document.get(), tag::kBitString, time) &&
                          addPrimitive(document.get(), tag::kBitString, digest) &&
                          addPrimitive(document.get(), tag::kIa5String,
                                       borrowed(pPropertyInfo, PropertyInfoLen)) &&
                          addPrimitive(document.get(), tag::kOctetString,
                                       borrowed(pCertContext, iCertLen));
    if (!complete)
        return result;
    // Without the algorithm child the structure is still finished.
    addPrimitive(document.get(), tag::kOid, QByteArray(kSm2WithSm3Oid, sizeof kSm2WithSm3Oid - 1));
    result = encode(document.get());
    return result;
}

QByteArray ZTCertificate::GetGMV2ASNData(QByteArray qSealSignInfo, QByteArray qEccSign) {
    // Empty but not null on failure, unlike GetGMSignInfo.
    QByteArray result("");
    std::unique_ptr<ZTAsn> document = newSequenceDocument();
    if (!document)
        return result;
    document->addBlock(qSealSignInfo);
    ZTAsnBlock* signature = document->addSample(tag::kBitString);
    if (signature == nullptr || qEccSign.isEmpty())
        return result;
    signature->setData(CreateSM2DigalStruct(qEccSign));
    result = encode(document.get());
    return result;
}

QByteArray ZTCertificate::GetZWSignInfo(unsigned char*, int, unsigned char* pSealInfo,
                                        int iSealInfoLen, unsigned char* pPropertyInfo,
                                        int PropertyInfoLen, unsigned char* pHashData, int iHashLen,
                                        unsigned char*, int, unsigned char* pTimeInfo,
                                        int iTimeInfoLen) {
    QByteArray result;
    const QByteArray digest = borrowed(pHashData, iHashLen);
    const QByteArray time = borrowed(pTimeInfo, iTimeInfoLen);
    std::unique_ptr<ZTAsn> document =
        startSignInfo(kZwVersion, borrowed(pSealInfo, iSealInfoLen), digest, time);
    if (!document)
        return result;
    const bool complete = addPrimitive(document.get(), tag::kGeneralizedTime, time) &&
                          addPrimitive(document.get(), tag::kBitString, digest) &&
                          addPrimitive(document.get(), tag::kIa5String,
                                       borrowed(pPropertyInfo, PropertyInfoLen));
    if (!complete)
        return result;
    result = encode(document.get());
    return result;
}

QByteArray ZTCertificate::GetZWASNData(QByteArray qSealSignInfo, QByteArray qCert,
                                       QByteArray qMethod, QByteArray qEccSign) {
    QByteArray result;
    std::unique_ptr<ZTAsn> document = newSequenceDocument();
    if (!document)
        return result;
    document->addBlock(qSealSignInfo);
    ZTAsnBlock* certificate = document->addSample(tag::kOctetString);
    if (certificate == nullptr || qCert.isEmpty())
        return result;
    certificate->setData(qCert);
    ZTAsnBlock* algorithm = document->addSample(tag::kOid);
    if (algorithm == nullptr)
        return result;
    algorithm->setData(qMethod.isEmpty() ? QByteArray(kSm2WithSm3OidText) : qMethod);
    ZTAsnBlock* signature = document->addSample(tag::kBitString);
    if (signature == nullptr || qEccSign.isEmpty())
        return result;
    signature->setData(CreateSM2DigalStruct(qEccSign));
    result = encode(document.get());
    return result;
}

QByteArray ZTCertificate::CreateSM2DigalStruct(QByteArray eccSign) {
    if (Q_Dispatch* agent = getSignatureCore()) {
        QString line = QStringLiteral("[%1]%2")
                           .arg(QStringLiteral("%1:%2:%3")
                                    .arg(QStringLiteral("ztcertificate"))
                                    .arg(QStringLiteral("CreateSM2DigalStruct"))
                                    .arg(813))
                           .arg(QStringLiteral(" start"));
        agent->invokeHelper(QStringLiteral("logDebug"), nullptr, &line);
    }
    if (eccSign.size() > kDerPassThroughMinimum && static_cast<unsigned char>(eccSign.at(0)) == 0x30)
        return eccSign;  // DER already; the contents are not checked
    if (eccSign.isEmpty())
        return QByteArray();
    std::unique_ptr<ZTAsn> document = newSequenceDocument();
    if (!document)
        return QByteArray();
    // r and s as they stand: INTEGER setData puts a 0x00 in front only when
    // the first octet is above 0x80, so a value starting with 0x80 stays
    // without it. A short input gives a short (or empty) s.
    addPrimitive(document.get(), tag::kInteger, eccSign.mid(0, kRawSignatureHalf));
    addPrimitive(document.get(), tag::kInteger, eccSign.mid(kRawSignatureHalf, kRawSignatureHalf));
    return encode(document.get());
}
