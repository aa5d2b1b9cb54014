// BMPString content to UTF-8.
#ifndef ZTUTIL_SRC_ASN_BMP_TEXT_H
#define ZTUTIL_SRC_ASN_BMP_TEXT_H

#include <QByteArray>

namespace ztutil {
namespace asn {

// The UTF-8 octets of BMPString content (big-endian 16-bit codes; an odd
// last octet is ignored), converted by code_unicode_to_utf8_reversebyte into
// a buffer of twice the content length plus one. A U+0000 code ends the text.
QByteArray bmpToUtf8(const unsigned char* content, unsigned int length);

}  // namespace asn
}  // namespace ztutil

#endif
