// An electronic seal signature (SES_Signature) taken apart, in either
// layout, told by its shape and not by its version number (producers write
// 1, 2, 4 and 5 alike):
//
//   GM/T 0031 (v1):   SEQUENCE { toSign SEQUENCE { version, eseal, timeInfo,
//                     dataHash, propertyInfo IA5String, cert OCTET STRING,
//                     signatureAlgorithm OID }, signature BIT STRING }
//   GB/T 38540 (v4):  SEQUENCE { toSign SEQUENCE { version, eseal,
//                     timeInfo GeneralizedTime, dataHash BIT STRING,
//                     propertyInfo IA5String, extDatas [0] OPTIONAL },
//                     cert OCTET STRING, signatureAlgID OID,
//                     signature BIT STRING, timeStamp [0] OPTIONAL }
//
// The v1 time is a BIT STRING (or OCTET STRING) holding time text or a DER
// time, or a UTCTime / GeneralizedTime itself; the v1 dataHash may be an
// OCTET STRING. The signature covers the DER of toSign, taken here as the
// exact bytes of the input. The library's GM structure (version 2) has the
// v1 shape and its government-affairs structure (version 4) the v4 shape.
#ifndef ZTHOST_READERS_SES_SIGNATURE_H
#define ZTHOST_READERS_SES_SIGNATURE_H

#include <QDateTime>
#include <QString>

#include "readers/byte_view.h"
#include "readers/format_error.h"
#include "readers/ses_seal.h"

struct SesSignature {
    SesLayout layout = SesLayout::V4;
    qint64 version = 0;
    ByteView toBeSigned;   // toSign, tag to end, as in the input
    ByteView seal;         // the eseal element, tag to end
    QByteArray timeText;   // the signing time as written
    QDateTime time;        // UTC; invalid when the text is no time
    ByteView dataHash;
    ByteView property;
    ByteView certificate;  // the signer's
    QString algorithm;     // dotted OID
    ByteView signature;    // the signature BIT STRING's payload
    int extensionCount = 0;  // v4 extDatas
    ByteView timeStamp;    // v4 [0], tag to end; empty when absent
};

// Throws FormatError saying what does not fit.
SesSignature readSesSignature(const ByteView& der);

#endif
