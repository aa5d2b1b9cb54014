// A bounds-checked cursor over the signature bytes that follows OpenSSL
// 1.1's object-header and template rules for SEQUENCE { INTEGER, INTEGER }.
#include "crypto/sm2_signature_der.h"

#include <climits>
#include <cstdint>
#include <initializer_list>

namespace ztutil {
namespace sm2 {
namespace {

const unsigned kConstructed = 0x20;
const unsigned kClassMask = 0xC0;
const unsigned kUniversal = 0x00;
const unsigned kLowTagMask = 0x1F;
const long kTagSequence = 16;
const long kTagInteger = 2;

struct Header {
    long tag;
    unsigned tagClass;
    bool constructed;
    bool indefinite;
    std::size_t length;  // content length; for the indefinite form what follows the header
};

class Cursor {
public:
    Cursor(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}

    std::size_t remaining() const { return size_; }
    const unsigned char* position() const { return data_; }

    void skip(std::size_t count) {
        data_ += count;
        size_ -= count;
    }

    // Tag and length octets. As in OpenSSL 1.1, the header must leave at
    // least one octet after the tag, long-form lengths must leave one octet
    // after their length octets, leading zero length octets are skipped, and
    // a content longer than what is left fails.
    bool readHeader(Header* header) {
        std::size_t left = size_;
        const unsigned char* p = data_;
        if (left == 0)
            return false;
        header->constructed = (*p & kConstructed) != 0;
        header->tagClass = *p & kClassMask;
        if ((*p & kLowTagMask) == kLowTagMask) {
            ++p;
            if (--left == 0)
                return false;
            long tag = 0;
            while (*p & 0x80) {
                tag = (tag << 7) | (*p++ & 0x7F);
                if (--left == 0 || tag > (INT_MAX >> 7))
                    return false;
            }
            tag = (tag << 7) | (*p++ & 0x7F);
            header->tag = tag;
            if (--left == 0)
                return false;
        } else {
            header->tag = *p++ & kLowTagMask;
            if (--left == 0)
                return false;
        }
        if (!readLength(&p, &left, header))
            return false;
        if (header->indefinite && !header->constructed)
            return false;
        const std::size_t headerSize = static_cast<std::size_t>(p - data_);
        const std::size_t after = size_ - headerSize;
        if (header->indefinite)
            header->length = after;
        else if (header->length > after)
            return false;
        skip(headerSize);
        return true;
    }

    // Two zero octets: the end of an indefinite-length content.
    bool readEndOfContents() {
        if (size_ < 2 || data_[0] != 0 || data_[1] != 0)
            return false;
        skip(2);
        return true;
    }

private:
    static bool readLength(const unsigned char** pp, std::size_t* left, Header* header) {
        const unsigned char* p = *pp;
        if (*left < 1)
            return false;
        std::size_t after = *left - 1;
        header->indefinite = false;
        header->length = 0;
        if (*p == 0x80) {
            header->indefinite = true;
            ++p;
        } else if (*p & 0x80) {
            std::size_t count = *p++ & 0x7F;
            if (after < count + 1)
                return false;
            while (count > 0 && *p == 0) {
                ++p;
                --count;
            }
            if (count > sizeof(long))
                return false;
            std::uint64_t length = 0;
            for (; count > 0; --count)
                length = (length << 8) | *p++;
            if (length > static_cast<std::uint64_t>(LONG_MAX))
                return false;
            header->length = static_cast<std::size_t>(length);
        } else {
            header->length = *p++;
        }
        *left -= static_cast<std::size_t>(p - *pp);
        *pp = p;
        return true;
    }

    const unsigned char* data_;
    std::size_t size_;
};

// One INTEGER within `content`; its content octets are kept as they are.
bool readInteger(Cursor* content, ByteSpan* value) {
    Header header;
    if (!content->readHeader(&header))
        return false;
    if (header.tag != kTagInteger || header.tagClass != kUniversal || header.constructed)
        return false;
    value->data = content->position();
    value->size = header.length;
    content->skip(header.length);
    return true;
}

}  // namespace

bool readSignatureIntegers(const unsigned char* der, std::size_t size, SignatureIntegers* out) {
    if (der == nullptr)
        return false;
    Cursor input(der, size);
    Header sequence;
    if (!input.readHeader(&sequence))
        return false;
    if (sequence.tag != kTagSequence || sequence.tagClass != kUniversal || !sequence.constructed)
        return false;

    Cursor content(input.position(), sequence.length);
    // An end-of-contents marker, or the end of a definite content, before
    // both INTEGERs means a missing field.
    for (ByteSpan* field : {&out->r, &out->s}) {
        if (content.remaining() == 0)
            return false;
        if (content.remaining() >= 2 && content.position()[0] == 0 && content.position()[1] == 0)
            return false;
        if (!readInteger(&content, field))
            return false;
    }
    if (sequence.indefinite)
        return content.readEndOfContents();
    // Everything inside a definite-length SEQUENCE must be used up.
    return content.remaining() == 0;
}

}  // namespace sm2
}  // namespace ztutil
