// Bounds-checked reading of DER octets: every read states how many octets it
// needs and fails, consuming nothing, when fewer remain.
#ifndef ZTUTIL_SRC_ASN_DER_CURSOR_H
#define ZTUTIL_SRC_ASN_DER_CURSOR_H

#include <cstddef>
#include <cstdint>

namespace ztutil {
namespace asn {

class DerCursor {
public:
    DerCursor(const unsigned char* data, std::uint64_t size) : data_(data), remaining_(size) {}

    const unsigned char* position() const { return data_; }
    std::uint64_t remaining() const { return remaining_; }

    bool readOctet(std::uint8_t* value) {
        if (remaining_ < 1)
            return false;
        *value = *data_;
        advance(1);
        return true;
    }

    // A big-endian unsigned number of `count` octets (at most 8).
    bool readBigEndian(unsigned count, std::uint64_t* value) {
        if (count > 8 || remaining_ < count)
            return false;
        std::uint64_t result = 0;
        for (unsigned i = 0; i < count; ++i)
            result = (result << 8) | data_[i];
        advance(count);
        *value = result;
        return true;
    }

private:
    void advance(std::uint64_t count) {
        data_ += count;
        remaining_ -= count;
    }

    const unsigned char* data_;
    std::uint64_t remaining_;
};

}  // namespace asn
}  // namespace ztutil

#endif
