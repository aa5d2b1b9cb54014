// OBJECT IDENTIFIER content to and from dotted text.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ztutil/asn.h"

namespace {

// The name is built in a work buffer of this size, terminator included.
const unsigned kNameCapacity = 100;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Counts the octets of an OID text, writing them to `out` when given.
// false when the text holds a character other than a digit or '.'.
class OidEncoder {
public:
    explicit OidEncoder(unsigned char* out) : out_(out) {}

    bool encode(const char* text) {
        int arcIndex = 0;
        unsigned long first = 0;
        const char* cursor = text;
        for (;;) {
            const char* runEnd = cursor;
            while (isDigit(*runEnd))
                ++runEnd;
            if (*runEnd != '.' && *runEnd != '\0')
                return false;
            const long arc = std::strtol(cursor, nullptr, 10);  // an empty run reads 0
            if (arcIndex == 0)
                first = static_cast<unsigned long>(arc);
            else if (arcIndex == 1)
                put(static_cast<unsigned char>(first * 40 + static_cast<unsigned long>(arc)));
            else if (arc > 0)
                putBase128(static_cast<unsigned long>(arc));
            ++arcIndex;
            if (*runEnd == '\0')
                return true;
            cursor = runEnd + 1;
        }
    }

    std::uint64_t count() const { return count_; }

private:
    void put(unsigned char octet) {
        if (out_ != nullptr)
            out_[count_] = octet;
        ++count_;
    }

    // Most significant group first; every octet but the last has 0x80.
    void putBase128(unsigned long value) {
        int groups = 1;
        while (groups < 10 && (value >> (7 * groups)) != 0)
            ++groups;
        for (int g = groups - 1; g >= 0; --g) {
            const auto bits = static_cast<unsigned char>((value >> (7 * g)) & 0x7F);
            put(g != 0 ? static_cast<unsigned char>(bits | 0x80) : bits);
        }
    }

    unsigned char* out_;
    std::uint64_t count_ = 0;
};

// Appends `piece` to the name; false when it would not fit the work buffer.
bool appendToName(char* name, size_t* length, const char* piece) {
    const size_t pieceLength = std::strlen(piece);
    if (*length + pieceLength >= kNameCapacity)
        return false;
    std::memcpy(name + *length, piece, pieceLength + 1);
    *length += pieceLength;
    return true;
}

}  // namespace

unsigned int ASNGetOIDData(const char* text, unsigned char* out, unsigned int* capacity) {
    if (text == nullptr || (out == nullptr && capacity == nullptr))
        return 0;
    OidEncoder counter(nullptr);
    if (!counter.encode(text))
        return 0;
    if (out != nullptr && capacity != nullptr && *capacity >= counter.count()) {
        OidEncoder writer(out);
        writer.encode(text);
        *capacity = static_cast<unsigned int>(writer.count());
    }
    return 1;
}

unsigned int ASNGetOIDName(const unsigned char* data, int count, char* out,
                           unsigned int* capacity) {
    if (data == nullptr || capacity == nullptr || count <= 1)
        return 0;
    char name[kNameCapacity];
    size_t length = 0;
    // The first octet: one character for each of the first two arcs.
    name[length++] = static_cast<char>('0' + data[0] / 40);
    name[length++] = '.';
    name[length++] = static_cast<char>('0' + data[0] % 40);
    name[length] = '\0';

    std::uint32_t arc = 0;  // wraps; printed as a signed 32-bit number
    for (int i = 1; i < count; ++i) {
        const unsigned char octet = data[i];
        if ((octet & 0x80) != 0) {
            arc = arc * 128 + static_cast<std::uint32_t>(octet - 0x80) * 128;
            continue;
        }
        arc += octet;
        char piece[16];
        std::snprintf(piece, sizeof piece, ".%d", static_cast<std::int32_t>(arc));
        if (!appendToName(name, &length, piece))
            return 0;
        arc = 0;
    }
    if (out != nullptr && *capacity >= length) {
        std::memcpy(out, name, length + 1);
        *capacity = static_cast<unsigned int>(length);
    }
    return 1;
}
