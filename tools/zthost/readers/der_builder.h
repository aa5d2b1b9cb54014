// The few DER encodings zthost itself has to produce: a header in front of
// content that already stands in the file (the GM/T 0031 maker signature
// covers a SEQUENCE that exists nowhere as one piece).
#ifndef ZTHOST_READERS_DER_BUILDER_H
#define ZTHOST_READERS_DER_BUILDER_H

#include <QByteArray>

namespace der {

// Tag and definite length octets (shortest form) for `length` content bytes.
QByteArray header(unsigned char tagOctet, int length);

// One element: the header, then `content`.
inline QByteArray element(unsigned char tagOctet, const QByteArray& content) {
    return header(tagOctet, content.size()) + content;
}

}  // namespace der

#endif
