// An electronic seal (SESeal) taken apart, in either layout, told by shape:
//
//   GB/T 38540 (v4):  SEQUENCE { eSealInfo, cert OCTET STRING, signAlgID OID,
//                     signedValue BIT STRING }; the maker signs the DER of
//                     eSealInfo.
//   GM/T 0031 (v1):   SEQUENCE { esealInfo, signInfo SEQUENCE { cert, OID,
//                     signData BIT STRING } }; the maker signs
//                     SEQUENCE { esealInfo, cert, signatureAlgorithm }.
//
//   eSealInfo  SEQUENCE { header SEQUENCE { "ES", version, vendor id },
//                esID IA5String, property, picture SEQUENCE { type IA5String,
//                data OCTET STRING, width, height }, extDatas OPTIONAL }
//   property v4: { type, name, certListType, certList, createDate,
//                  validStart, validEnd }  (certList: certificates, or
//                  digests { type, value } when certListType is 2)
//   property v1: { type, name, certList SEQUENCE OF OCTET STRING,
//                  createDate, validStart, validEnd }
// Times may be UTCTime or GeneralizedTime in either layout (producers mix them).
#ifndef ZTHOST_READERS_SES_SEAL_H
#define ZTHOST_READERS_SES_SEAL_H

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <vector>

#include "readers/byte_view.h"
#include "readers/format_error.h"

enum class SesLayout { V1, V4 };
// "GM/T 0031 (v1)" or "GB/T 38540 (v4)".
const char* sesLayoutName(SesLayout layout);

struct SealCertificateDigest {
    QString type;    // the digest's name as the seal gives it
    ByteView value;
};

struct SesSeal {
    SesLayout layout = SesLayout::V4;
    ByteView whole;
    ByteView sealInfo;  // eSealInfo / esealInfo, tag to end
    QString headerId;   // "ES"
    qint64 headerVersion = 0;
    QString vendorId;
    QString esId;
    qint64 type = 0;
    QString name;
    qint64 certListType = 1;  // 1 certificates, 2 certificate digests
    std::vector<ByteView> signerCertificates;
    std::vector<SealCertificateDigest> signerCertificateDigests;
    QDateTime createDate, validStart, validEnd;  // UTC; invalid when unreadable
    QString pictureType;
    ByteView pictureData;
    qint64 pictureWidth = 0, pictureHeight = 0;
    int extensionCount = 0;
    ByteView makerCertificate;
    QString makerAlgorithm;  // dotted OID
    ByteView makerSignature;  // the BIT STRING payload
    QByteArray makerSignedBytes;  // what the maker's signature covers
};

// Throws FormatError saying what does not fit.
SesSeal readSesSeal(const ByteView& der);

// The file extension for a picture type ("PNG" -> "png", "jpeg" -> "jpg");
// "bin" for types that are not one plain word.
QString pictureExtension(const QString& type);

#endif
