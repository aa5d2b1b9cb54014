// UTF-8 <-> 32-bit code units <-> GBK (code page 936).
//
// The functions keep the exact results this library has always produced,
// including several that look odd: the narrow test of the second byte of a
// two-byte sequence, the bit layout of the 5- and 6-byte assemblies, the byte
// skipped after a GBK 0x80, and output limits that are checked only after a
// whole character has been written. Hosts compare outputs byte for byte.
#include "ztutil/code_convert.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "text/codepage_index.h"
#include "zt_assert.h"

namespace {

// Where the two contract checks report themselves; hosts log these texts.
constexpr const char* kSourceFile = "code_convert.cpp";
constexpr unsigned kUnicodeToUtf8OneLine = 103;
constexpr const char* kUnicodeToUtf8OneName = "int code_unicode_to_utf8_one(long int, char*, int)";
constexpr unsigned kUtf8ToUnicodeOneLine = 169;
constexpr const char* kUtf8ToUnicodeOneName = "int code_utf8_to_unicode_one(const char*, long int*)";

constexpr unsigned short kGbkPage = 936;
constexpr unsigned kEuroSign = 0x20AC;
constexpr unsigned char kGbkEuroByte = 0x80;
constexpr int kMaxUtf8Length = 6;

const unsigned char* as_bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The second byte of a two-byte sequence must lie in 0x80..0x9F; 0xA0..0xBF
// are rejected. Narrower than UTF-8, kept on purpose.
bool is_narrow_continuation(unsigned char byte) { return (byte & 0xE0) == 0x80; }

// Checks the bytes after the lead one at a time, so a NUL (which fails the
// test) ends the reading before anything past the terminator.
bool has_valid_tail(const unsigned char* in, int length) {
    if (length == 2)
        return is_narrow_continuation(in[1]);
    for (int i = 1; i < length; ++i) {
        if (!is_continuation(in[i]))
            return false;
    }
    return true;
}

std::uint32_t pack_bytes(unsigned b0, unsigned b1, unsigned b2, unsigned b3) {
    return (b0 & 0xFFu) | (b1 & 0xFFu) << 8 | (b2 & 0xFFu) << 16 | (b3 & 0xFFu) << 24;
}

// Value bytes b0 (lowest) .. b3 of a validated sequence, each truncated to 8
// bits. The 5- and 6-byte layouts do not follow UTF-8 (bits are dropped and
// misplaced); they are the library's defined results and stay as they are.
std::uint32_t assemble(const unsigned char* in, int length) {
    switch (length) {
    case 1:
        return in[0];
    case 2:
        return pack_bytes((in[1] & 0x3F) + (in[0] << 6), (in[0] >> 2) & 7, 0, 0);
    case 3:
        return pack_bytes((in[2] & 0x3F) + (in[1] << 6), ((in[1] >> 2) & 0x0F) + (in[0] << 4), 0, 0);
    case 4:
        return pack_bytes((in[3] & 0x3F) + (in[2] << 6), ((in[2] >> 2) & 0x0F) + (in[1] << 4),
                          ((in[0] & 7) << 2) | ((in[1] >> 4) & 3), 0);
    case 5:
        return pack_bytes((in[4] & 0x3F) + (in[3] << 6), ((in[3] >> 2) & 0x0F) + (in[2] << 4),
                          ((in[2] >> 4) & 3) + (in[1] << 2), (in[0] & 3) << 6);
    default:
        return pack_bytes((in[5] & 0x3F) + (in[4] << 6), ((in[5] >> 2) & 0x0F) + (in[4] << 4),
                          ((in[3] >> 4) & 3) + (in[2] << 2), ((in[0] & 1) << 6) | (in[1] & 0x3F));
    }
}

// Lead byte `lead` carries what is left after the 6-bit continuation groups.
int write_sequence(unsigned long value, int length, unsigned char lead, unsigned char* out) {
    for (int i = length - 1; i > 0; --i) {
        out[i] = static_cast<unsigned char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    out[0] = static_cast<unsigned char>(lead | value);
    return length;
}

int byte_size_of(unsigned char lead) {
    if (lead < 0x80 || (lead & 0x40) == 0)
        return 1;
    if ((lead & 0x20) == 0)
        return 2;
    if ((lead & 0x10) == 0)
        return 3;
    if ((lead & 0x08) == 0)
        return 4;
    return (lead & 0x04) != 0 ? 6 : 5;
}

// code_utf8_to_unicode_one without the argument check, for the text loops.
int decode_sequence(const unsigned char* in, long* unicode) {
    const int length = byte_size_of(in[0]);
    *unicode = 0;
    if (!has_valid_tail(in, length))
        return 0;
    *unicode = static_cast<long>(assemble(in, length));
    return length;
}

// code_unicode_to_utf8_one without the argument check.
int encode_code_point(long unic, unsigned char* out) {
    if (unic < 0x80) {
        out[0] = static_cast<unsigned char>(unic & 0x7F);
        return 1;
    }
    const unsigned long value = static_cast<unsigned long>(unic);
    if (value < 0x800)
        return write_sequence(value, 2, 0xC0, out);
    if (value < 0x10000)
        return write_sequence(value, 3, 0xE0, out);
    if (value < 0x200000)
        return write_sequence(value, 4, 0xF0, out);
    if (value < 0x4000000)
        return write_sequence(value, 5, 0xF8, out);
    if (value <= 0x7FFFFFFF)
        return write_sequence(value, kMaxUtf8Length, 0xFC, out);
    return 0;
}

// The UTF-8 writers check the size only after each whole character, then
// add a terminator only if it still fits below the size.
int finish_utf8_output(char* out, int total, int outSize) {
    if (total >= outSize)
        return total;
    out[total] = '\0';
    return total;
}

// A 32-bit unit of the reversed-byte input, read bytewise (no alignment).
bool unit_is_zero(const unsigned char* unit) {
    std::uint32_t value;
    std::memcpy(&value, unit, sizeof value);
    return value == 0;
}

}  // namespace

int code_get_utf8_byte_size(char c) {
    return byte_size_of(static_cast<unsigned char>(c));
}

// Only lead bytes are classified. A NUL inside the bytes a lead byte claims
// still ends the text: nothing past the terminator is read.
void code_get_utf8_length(const char* pInput, int* counters) {
    if (pInput == nullptr || counters == nullptr)
        return;
    const char* cursor = pInput;
    while (*cursor != '\0') {
        const int length = byte_size_of(static_cast<unsigned char>(*cursor));
        ++counters[0];
        ++counters[length];
        ++cursor;
        for (int skipped = 1; skipped < length; ++skipped, ++cursor) {
            if (*cursor == '\0')
                return;
        }
    }
}

int code_unicode_to_utf8_one(long unic, char* pOutput, int /*outSize: never consulted*/) {
    ZT_CONTRACT_ASSERT(pOutput != NULL, "pOutput != NULL", kSourceFile, kUnicodeToUtf8OneLine,
                       kUnicodeToUtf8OneName);
    return encode_code_point(unic, reinterpret_cast<unsigned char*>(pOutput));
}

int code_utf8_to_unicode_one(const char* pInput, long* unicode) {
    ZT_CONTRACT_ASSERT(pInput != NULL && unicode != NULL, "pInput != NULL && unicode != NULL",
                       kSourceFile, kUtf8ToUnicodeOneLine, kUtf8ToUnicodeOneName);
    return decode_sequence(as_bytes(pInput), unicode);
}

int code_unicode_to_utf8(const unsigned int* pInput, char* pOutput, int outSize) {
    if (pOutput == nullptr || outSize < 1 || pInput == nullptr)
        return 0;
    unsigned char* out = reinterpret_cast<unsigned char*>(pOutput);
    int total = 0;
    for (const unsigned int* unit = pInput; *unit != 0 && total <= outSize; ++unit)
        total += encode_code_point(static_cast<long>(*unit), out + total);
    return finish_utf8_output(pOutput, total, outSize);
}

int code_unicode_to_utf8_reversebyte(const unsigned int* pInput, int count, char* pOutput,
                                     int outSize) {
    if (pInput == nullptr || pOutput == nullptr || count < 1 || outSize < 1)
        return 0;
    const unsigned char* unit = reinterpret_cast<const unsigned char*>(pInput);
    if (unit_is_zero(unit)) {
        pOutput[0] = '\0';
        return 0;
    }
    int total = 0;
    int done = 0;
    do {
        const long code = (static_cast<long>(unit[0]) << 8) | unit[1];
        total += encode_code_point(code, reinterpret_cast<unsigned char*>(pOutput) + total);
        unit += sizeof(std::uint32_t);
        ++done;
    } while (done < count && total <= outSize && !unit_is_zero(unit));
    return finish_utf8_output(pOutput, total, outSize);
}

// A malformed sequence consumes nothing and yields 0, so the loop then
// stores zeros at the same place until the unit limit ends it; up to
// maxUnits + 1 units are stored.
int code_utf8_to_unicode(const char* pInput, unsigned int* pOutput, int maxUnits) {
    if (pOutput == nullptr || pInput == nullptr || maxUnits < 1)
        return 0;
    if (*pInput == '\0') {
        pOutput[0] = 0;
        return 0;
    }
    const unsigned char* cursor = as_bytes(pInput);
    int count = 0;
    do {
        long value = 0;
        cursor += decode_sequence(cursor, &value);
        pOutput[count] = static_cast<unsigned int>(value);
        ++count;
    } while (*cursor != 0 && count <= maxUnits);
    if (count >= maxUnits)
        return count;
    pOutput[count] = 0;
    return count;
}

int code_unicode_to_gbk(const unsigned int* pInput, char* pOutput, int count) {
    if (count < 1 || pInput == nullptr || pOutput == nullptr)
        return 0;
    const std::uint16_t* gbkOf = zt_codepage::uni2oem_lookup(kGbkPage);  // ff_uni2oem(u, 936)
    unsigned char* out = reinterpret_cast<unsigned char*>(pOutput);
    int written = 0;
    for (int i = 0; i < count; ++i) {
        const unsigned int unit = pInput[i];
        if (unit < 0x80) {
            out[written++] = static_cast<unsigned char>(unit);
        } else if (unit == kEuroSign) {
            out[written++] = kGbkEuroByte;
        } else {
            const std::uint16_t code = unit <= 0xFFFF ? gbkOf[unit] : 0;
            out[written++] = static_cast<unsigned char>(code >> 8);
            out[written++] = static_cast<unsigned char>(code & 0xFF);
        }
    }
    return written;
}

int code_gbk_to_unicode(const char* pInput, unsigned int* pOutput, int length) {
    if (length < 1 || pInput == nullptr || pOutput == nullptr)
        return 0;
    const std::uint16_t* unicodeOf = zt_codepage::oem2uni_lookup(kGbkPage);  // ff_oem2uni(c, 936)
    const unsigned char* in = as_bytes(pInput);
    int units = 0;
    int i = 0;
    while (i < length) {
        const unsigned char lead = in[i];
        if (lead < 0x80) {
            pOutput[units++] = lead;
            i += 1;
        } else if (lead == kGbkEuroByte) {
            pOutput[units++] = kEuroSign;
            i += 2;  // the byte after 0x80 is skipped
        } else {
            pOutput[units++] = unicodeOf[(lead << 8) | in[i + 1]];
            i += 2;
        }
    }
    return units;
}

// The unit limit handed to code_utf8_to_unicode is 3 per input byte, and it
// may store one unit beyond its limit, so the scratch holds 3n + 1 units.
// No zero fill is needed: only the units it reports as stored are read.
int code_utf8_to_gbk(const char* pInput, char* pOutput) {
    if (pInput == nullptr || pOutput == nullptr)
        return 0;
    const std::size_t length = std::strlen(pInput);
    if (length > static_cast<std::size_t>(INT_MAX - 1) / 3)
        return 0;
    const int unitLimit = static_cast<int>(3 * length);
    auto* scratch = static_cast<unsigned int*>(std::malloc((3 * length + 1) * sizeof(unsigned int)));
    if (scratch == nullptr)
        return 0;
    const int units = code_utf8_to_unicode(pInput, scratch, unitLimit);
    const int written = code_unicode_to_gbk(scratch, pOutput, units);
    std::free(scratch);
    return written;
}

// Every GBK byte gives at most one unit; a zero unit after the last one ends
// the text for code_unicode_to_utf8 (the part of a zero-filled scratch that
// can ever be read).
int code_gbk_to_utf8(const char* pInput, char* pOutput, int outSize) {
    if (pInput == nullptr)
        return 0;
    const std::size_t length = std::strlen(pInput);
    if (length > static_cast<std::size_t>(INT_MAX))
        return 0;
    auto* scratch = static_cast<unsigned int*>(std::malloc((length + 1) * sizeof(unsigned int)));
    if (scratch == nullptr)
        return 0;
    const int units = code_gbk_to_unicode(pInput, scratch, static_cast<int>(length));
    scratch[units] = 0;
    const int written = code_unicode_to_utf8(scratch, pOutput, outSize);
    std::free(scratch);
    return written;
}
