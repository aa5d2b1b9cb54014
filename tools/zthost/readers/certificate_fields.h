// The fields of an X.509 certificate that zthost needs without the library:
// to find a signer's certificate by issuer and serial number, its validity
// as the certificate states it, the names as the text they encode, and the
// signed bytes and signature a certificate chain is checked on.
#ifndef ZTHOST_READERS_CERTIFICATE_FIELDS_H
#define ZTHOST_READERS_CERTIFICATE_FIELDS_H

#include <QDateTime>
#include <QString>
#include <vector>

#include "readers/byte_view.h"
#include "readers/format_error.h"

// One attribute of a distinguished name.
struct NameAttribute {
    QString type;         // dotted OID
    unsigned char tag;    // of the value
    ByteView value;       // content octets
    QString text() const;  // decoded as the tag says
};

struct CertificateFields {
    int version = 1;        // 1, 2 or 3
    ByteView toBeSigned;    // the tbsCertificate, tag to end
    ByteView serialNumber;  // INTEGER content
    ByteView issuer;        // the Name, tag to end
    ByteView subject;       // the Name, tag to end
    std::vector<NameAttribute> issuerAttributes, subjectAttributes;  // in DER order
    QDateTime notBefore, notAfter;  // UTC, from the certificate's own digits
    QString signatureAlgorithm;     // dotted OID of the outer algorithm
    ByteView signatureValue;        // the BIT STRING's payload
};

// Throws FormatError saying what does not fit.
CertificateFields readCertificateFields(const ByteView& der);

// "C=CN, O=Org, CN=名字": every attribute in DER order, short names for the
// common types, values decoded.
QString nameText(const std::vector<NameAttribute>& attributes);

// The last attribute of `type` (the one a reader that overwrites keeps), or
// null.
const NameAttribute* lastAttribute(const std::vector<NameAttribute>& attributes, const char* type);

#endif
