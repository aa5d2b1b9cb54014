// A complete GM or government-affairs seal signature structure, as the
// library builds them, taken apart into its fields. Every field is a view
// into the input, so the to-be-signed part is the exact bytes of the file.
//
//   GM (version 2):  SEQUENCE { tbs SEQUENCE { INTEGER 2, seal, BIT STRING time,
//                       BIT STRING digest, IA5String property, OCTET STRING cert,
//                       OID }, BIT STRING signature }
//   ZW (version 4):  SEQUENCE { tbs SEQUENCE { INTEGER 4, seal, GeneralizedTime,
//                       BIT STRING digest, IA5String property },
//                       OCTET STRING cert, OID, BIT STRING signature }
#ifndef ZTHOST_SEAL_STRUCTURE_H
#define ZTHOST_SEAL_STRUCTURE_H

#include <QString>

#include "readers/byte_view.h"

enum class SealFormat { Gm, Zw };

struct SealSignature {
    SealFormat format = SealFormat::Gm;
    ByteView toBeSigned;   // tag, length and content, as in the file
    ByteView seal;         // the seal element
    ByteView time;         // BIT STRING payload (GM) or GeneralizedTime text (ZW)
    ByteView digest;
    ByteView property;
    ByteView certificate;  // GM: inside the to-be-signed part; ZW: outside
    QString algorithm;     // dotted OID
    ByteView signature;    // the signature BIT STRING's payload
};

// Throws FormatError saying what does not fit.
SealSignature parseSealSignature(const ByteView& der);

const char* sealFormatName(SealFormat format);

#endif
