// Code-page lookups over the built-in tables: ff_uni2oem and ff_oem2uni.
//
// Single-byte pages are a 128-entry array per page, searched linearly in the
// Unicode-to-code direction. Double-byte pages are sorted (key, value) pair
// tables read with a binary search bounded at 16 rounds; what that search
// answers for each of the 65536 keys is computed once per page and direction
// on first use, so a lookup afterwards is a single array load.
#include "ztutil/code_convert.h"

#include <cstdint>

#include "text/codepage_index.h"
#include "text/tables/codepage_tables_generated.h"

using namespace zt_codepage;

namespace {

using PairTable = const std::uint16_t (*)[2];

constexpr unsigned kKeySpace = 0x10000;
constexpr unsigned kSearchRounds = 16;

// lo = mid (not mid + 1) keeps the interval closed on the left, so the probe
// never leaves [0, count); 16 rounds cover any table of up to 2^16 pairs.
std::uint16_t bounded_search(PairTable pairs, unsigned count, std::uint32_t key) {
    unsigned lo = 0;
    unsigned hi = count;
    for (unsigned round = 0; round < kSearchRounds; ++round) {
        unsigned mid = lo + (hi - lo) / 2;
        if (pairs[mid][0] == key)
            return pairs[mid][1];
        if (pairs[mid][0] < key)
            lo = mid;
        else
            hi = mid;
    }
    return 0;
}

// The bounded search's answer for every 16-bit key of one pair table.
class DirectIndex {
public:
    DirectIndex(PairTable pairs, unsigned count) {
        for (unsigned key = 0; key < kKeySpace; ++key)
            values_[key] = bounded_search(pairs, count, key);
    }
    std::uint16_t operator[](std::uint32_t key) const { return values_[key]; }
    const std::uint16_t* values() const { return values_; }

private:
    std::uint16_t values_[kKeySpace];
};

// Function-local statics: built on first use, thread-safe, never freed.
const DirectIndex* uni2oem_index(unsigned short cp) {
    switch (cp) {
    case 932: { static const DirectIndex index(uni2oem932, kPairs932); return &index; }
    case 936: { static const DirectIndex index(uni2oem936, kPairs936); return &index; }
    case 949: { static const DirectIndex index(uni2oem949, kPairs949); return &index; }
    case 950: { static const DirectIndex index(uni2oem950, kPairs950); return &index; }
    default: return nullptr;
    }
}

const DirectIndex* oem2uni_index(unsigned short cp) {
    switch (cp) {
    case 932: { static const DirectIndex index(oem2uni932, kPairs932); return &index; }
    case 936: { static const DirectIndex index(oem2uni936, kPairs936); return &index; }
    case 949: { static const DirectIndex index(oem2uni949, kPairs949); return &index; }
    case 950: { static const DirectIndex index(oem2uni950, kPairs950); return &index; }
    default: return nullptr;
    }
}

constexpr unsigned short kFirstDoubleBytePage = 900;
constexpr unsigned kSingleByteEntries = 128;

// 437 is taken directly; any other page is looked up in cp_code from its
// second entry on, an unknown one landing on the terminating null table.
const std::uint16_t* single_byte_table(unsigned short cp) {
    if (cp == 437)
        return uc437;
    unsigned index = 1;
    while (cp_code[index] != 0 && cp_code[index] != cp)
        ++index;
    return cp_table[index];
}

}  // namespace

const std::uint16_t* zt_codepage::uni2oem_lookup(unsigned short cp) {
    const DirectIndex* index = uni2oem_index(cp);
    return index != nullptr ? index->values() : nullptr;
}

const std::uint16_t* zt_codepage::oem2uni_lookup(unsigned short cp) {
    const DirectIndex* index = oem2uni_index(cp);
    return index != nullptr ? index->values() : nullptr;
}

unsigned short ff_uni2oem(unsigned int uni, unsigned short cp) {
    if (uni < 0x80)
        return static_cast<unsigned short>(uni);
    if (uni > 0xFFFF)
        return 0;
    if (cp < kFirstDoubleBytePage) {
        const std::uint16_t* table = single_byte_table(cp);
        if (table == nullptr)
            return 0;
        for (unsigned index = 0; index < kSingleByteEntries; ++index) {
            if (table[index] == uni)
                return static_cast<unsigned short>(0x80 + index);
        }
        return 0;
    }
    const DirectIndex* index = uni2oem_index(cp);
    return index != nullptr ? (*index)[uni] : 0;
}

unsigned short ff_oem2uni(unsigned short oem, unsigned short cp) {
    if (oem < 0x80)
        return oem;
    if (cp < kFirstDoubleBytePage) {
        if (oem > 0xFF)
            return 0;
        const std::uint16_t* table = single_byte_table(cp);
        return table != nullptr ? table[oem - 0x80] : 0;
    }
    const DirectIndex* index = oem2uni_index(cp);
    return index != nullptr ? (*index)[oem] : 0;
}
