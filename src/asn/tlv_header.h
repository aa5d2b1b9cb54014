// The tag and length field at the start of a TLV.
#ifndef ZTUTIL_SRC_ASN_TLV_HEADER_H
#define ZTUTIL_SRC_ASN_TLV_HEADER_H

#include <cstdint>

namespace ztutil {
namespace asn {

class DerCursor;

struct TlvHeader {
    std::uint8_t tag = 0;
    std::uint32_t headerSize = 0;     // tag + length octets
    std::uint64_t contentLength = 0;  // up to 0xFFFFFFFF

    // Tag + length octets + content, without 32-bit wrap-around.
    std::uint64_t totalSize() const { return headerSize + contentLength; }
};

// Reads the tag and the length field. Short form, 0x80 (read as empty
// content) and 0x81-0x84 are supported; false for 0x85-0xFF or when the
// input ends inside the header. On success the cursor is at the content.
bool readTlvHeader(DerCursor* cursor, TlvHeader* header);

}  // namespace asn
}  // namespace ztutil

#endif
