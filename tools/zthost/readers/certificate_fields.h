// The fields of an X.509 certificate that zthost needs without the library:
// to find a signer's certificate by issuer and serial number, and its
// validity as the certificate states it.
#ifndef ZTHOST_READERS_CERTIFICATE_FIELDS_H
#define ZTHOST_READERS_CERTIFICATE_FIELDS_H

#include <QDateTime>

#include "readers/byte_view.h"
#include "readers/format_error.h"

struct CertificateFields {
    ByteView serialNumber;  // INTEGER content
    ByteView issuer;        // the Name, tag to end
    ByteView subject;       // the Name, tag to end
    QDateTime notBefore, notAfter;  // UTC
};

// Throws FormatError saying what does not fit.
CertificateFields readCertificateFields(const ByteView& der);

#endif
