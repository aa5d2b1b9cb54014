// Decoding of the length field and DER's length-octet count.
#include "asn/der_cursor.h"
#include "asn/tlv_header.h"
#include "ztutil/asn.h"

namespace ztutil {
namespace asn {
namespace {

const std::uint8_t kLongFormBit = 0x80;
const std::uint8_t kIndefiniteForm = 0x80;
const unsigned kMaxLengthOctets = 4;

}  // namespace

bool readTlvHeader(DerCursor* cursor, TlvHeader* header) {
    std::uint8_t tag = 0;
    std::uint8_t first = 0;
    if (!cursor->readOctet(&tag) || !cursor->readOctet(&first))
        return false;
    header->tag = tag;
    if ((first & kLongFormBit) == 0 || first == kIndefiniteForm) {
        // Short form, or the indefinite form read as empty content: no
        // end-of-contents search is made.
        header->headerSize = 2;
        header->contentLength = first == kIndefiniteForm ? 0 : first;
        return true;
    }
    const unsigned octets = first & 0x7F;
    if (octets > kMaxLengthOctets)
        return false;
    std::uint64_t length = 0;
    if (!cursor->readBigEndian(octets, &length))
        return false;
    header->headerSize = 2 + octets;
    header->contentLength = length;
    return true;
}

}  // namespace asn
}  // namespace ztutil

unsigned int ASNCalcBlockLength(const unsigned char* data, unsigned int available) {
    if (data == nullptr)
        return 0;
    ztutil::asn::DerCursor cursor(data, available);
    ztutil::asn::TlvHeader header;
    if (!ztutil::asn::readTlvHeader(&cursor, &header) || header.totalSize() > available)
        return 0;
    return static_cast<unsigned int>(header.totalSize());
}

unsigned int ASNCalcLengthBytes(unsigned int contentLength) {
    if (contentLength < 0x80)
        return 1;
    if (contentLength < 0x100)
        return 2;
    if (contentLength < 0x10000)
        return 3;
    if (contentLength < 0x1000000)
        return 4;
    return 5;
}
