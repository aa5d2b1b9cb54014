// Values of primitive DER elements: object identifiers, small integers,
// bit strings, times and text in the character set its tag names.
#ifndef ZTHOST_READERS_DER_VALUES_H
#define ZTHOST_READERS_DER_VALUES_H

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include "readers/der.h"

namespace der {

// The dotted text of OBJECT IDENTIFIER content; empty when malformed or an
// arc does not fit 64 bits.
QString oidText(const ByteView& content);

// A signed INTEGER of up to 8 content octets; false otherwise.
bool smallInteger(const ByteView& content, qint64* value);

// The payload of a BIT STRING without unused bits; false otherwise.
bool bitStringPayload(const Element& element, ByteView* payload);

// Text content as its tag says: UTF8String as UTF-8, BMPString as UTF-16
// and UniversalString as UTF-32 (both big-endian), the single-byte string
// and time types as Latin-1. A null QString for any other tag.
QString decodeText(unsigned char tagOctet, const ByteView& content);

// A UTCTime or GeneralizedTime element as a UTC date-time; invalid when the
// tag or the text is neither.
QDateTime timeValue(const Element& element);

// Time text in either form, told by its digits: YYMMDDhhmm[ss] or
// YYYYMMDDhhmm[ss][.fff], then "Z", "+hhmm", "-hhmm" or nothing (UTC).
// Two-digit years below 50 are 20xx. Invalid for anything else.
QDateTime timeFromText(const QByteArray& text);

}  // namespace der

// Text that the library returns byte for byte, UTF-8 octets carried one per
// character: the characters they encode when they are UTF-8, else as given.
QString textFromLibrary(const QString& carried);

// ISO 8601 UTC ("2024-01-01T12:00:00Z"), or "invalid".
QString isoTime(const QDateTime& time);

#endif
