// Field readers shared by the seal and seal-signature readers: each checks
// what a producer may put in the field and throws FormatError naming it.
#ifndef ZTHOST_READERS_SES_FIELDS_H
#define ZTHOST_READERS_SES_FIELDS_H

#include <QDateTime>
#include <QString>

#include "readers/der.h"

namespace ses {

// Any string type, decoded as its tag says.
QString text(const der::Element& element, const char* what);
// A small INTEGER.
qint64 integer(const der::Element& element, const char* what);
// UTCTime or GeneralizedTime.
QDateTime time(const der::Element& element, const char* what);
// The payload of a BIT STRING without unused bits.
ByteView bitString(const der::Element& element, const char* what);
// A well-formed OBJECT IDENTIFIER as dotted text.
QString algorithm(const der::Element& element);

}  // namespace ses

#endif
