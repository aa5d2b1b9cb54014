// ff_wtoupper: simple upper-case mapping of the BMP from two compressed tables.
//
// A table is a run of blocks, each covering [start, start + count):
//   start, (command << 8) | count, [count values when command is 0]
// and ends with a start of 0. Code points between blocks map to themselves.
#include "ztutil/code_convert.h"

#include <cstdint>

#include "text/tables/codepage_tables_generated.h"

namespace {

enum BlockCommand : unsigned {
    kValueList = 0,      // the value at index c - start of the block's list
    kAlternatePairs = 1, // upper/lower pairs starting at start: c - ((c - start) & 1)
    kMinus16 = 2,
    kMinus32 = 3,
    kMinus48 = 4,
    kMinus26 = 5,
    kPlus8 = 6,
    kMinus80 = 7,
    kMinus0x1C60 = 8,
};

std::uint32_t apply_block(unsigned command, std::uint32_t start, const std::uint16_t* values,
                          std::uint32_t c) {
    switch (command) {
    case kValueList: return values[c - start];
    case kAlternatePairs: return c - ((c - start) & 1);
    case kMinus16: return c - 16;
    case kMinus32: return c - 32;
    case kMinus48: return c - 48;
    case kMinus26: return c - 26;
    case kPlus8: return c + 8;
    case kMinus80: return c - 80;
    case kMinus0x1C60: return c - 0x1C60;
    default: return c;
    }
}

}  // namespace

unsigned int ff_wtoupper(unsigned int uni) {
    if (uni > 0xFFFF)
        return uni;
    const std::uint16_t* block = uni < 0x1000 ? zt_codepage::wtoupper_low : zt_codepage::wtoupper_high;
    for (;;) {
        std::uint32_t start = block[0];
        if (start == 0 || uni < start)
            return uni;
        unsigned command = block[1] >> 8;
        unsigned count = block[1] & 0xFF;
        const std::uint16_t* values = block + 2;
        if (uni < start + count)
            return static_cast<std::uint16_t>(apply_block(command, start, values, uni));
        block = values + (command == kValueList ? count : 0);
    }
}
