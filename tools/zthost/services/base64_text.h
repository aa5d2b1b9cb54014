// Base64 through the library: the ZTBase64 component and the process-wide
// strict decoder.
#ifndef ZTHOST_BASE64_TEXT_H
#define ZTHOST_BASE64_TEXT_H

#include <QByteArray>

class HostSession;

// ZTBase64::encodeBase64Ex with `table` (one line, no breaks).
QByteArray encodeBase64(HostSession& session, const QByteArray& data, char* table);

// ZTBase64Decode after ZTBase64::setTableCode(table); the standard alphabet
// is selected again afterwards. False for text the strict decoder refuses
// (a length that is not a multiple of 4, a character outside the alphabet).
bool decodeBase64Strict(HostSession& session, const QByteArray& text, char* table, QByteArray* bytes);

// ZTBase64::decodeBase64Ex with `table`: characters outside the alphabet
// count as padding, nothing is refused.
QByteArray decodeBase64Lenient(HostSession& session, const QByteArray& text, char* table);

#endif
