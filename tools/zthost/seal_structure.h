// A complete GM or government-affairs seal signature structure, as the
// library builds them, taken apart into its fields. The to-be-signed part is
// kept as the exact bytes of the file.
//
//   GM (version 2):  SEQUENCE { tbs SEQUENCE { INTEGER 2, seal, BIT STRING time,
//                       BIT STRING digest, IA5String property, OCTET STRING cert,
//                       OID }, BIT STRING signature }
//   ZW (version 4):  SEQUENCE { tbs SEQUENCE { INTEGER 4, seal, GeneralizedTime,
//                       BIT STRING digest, IA5String property },
//                       OCTET STRING cert, OID, BIT STRING signature }
#ifndef ZTHOST_SEAL_STRUCTURE_H
#define ZTHOST_SEAL_STRUCTURE_H

#include <QByteArray>
#include <QString>

enum class SealFormat { Gm, Zw };

struct SealSignature {
    SealFormat format = SealFormat::Gm;
    QByteArray toBeSigned;   // tag, length and content, as in the file
    QByteArray seal;         // the seal element
    QByteArray time;         // BIT STRING payload (GM) or GeneralizedTime text (ZW)
    QByteArray digest;
    QByteArray property;
    QByteArray certificate;  // GM: inside the to-be-signed part; ZW: outside
    QString algorithm;       // dotted OID
    QByteArray signature;    // the signature BIT STRING's payload
};

// Throws CommandFailure naming `source` and what does not fit.
SealSignature parseSealSignature(const QByteArray& der, const QString& source);

const char* sealFormatName(SealFormat format);

#endif
