// Direct lookup arrays of the double-byte pages, for converters that look up
// many characters of one page in a row.
#ifndef ZTUTIL_TEXT_CODEPAGE_INDEX_H
#define ZTUTIL_TEXT_CODEPAGE_INDEX_H

#include <cstdint>

namespace zt_codepage {

// 65536 entries: entry k is ff_uni2oem(k, cp) (resp. ff_oem2uni(k, cp)) for
// every k of 0x80 and above (entries below 0x80 are not the identity). Null
// for a page without pair tables. Built on first use, then read-only.
const std::uint16_t* uni2oem_lookup(unsigned short cp);
const std::uint16_t* oem2uni_lookup(unsigned short cp);

}  // namespace zt_codepage

#endif
