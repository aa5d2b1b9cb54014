// The code-page lookups against their own tables, glibc iconv and glibc's
// Unicode upper-case mapping.
#include <cwctype>
#include <locale.h>
#include <set>

#include "support/common.h"
#include "text/iconv_oracle.h"
#include "text/tables/codepage_tables_generated.h"
#include "ztutil/code_convert.h"

using ztutil_test::codeBytes;
using ztutil_test::IconvOracle;
using ztutil_test::singleCode;
using ztutil_test::singleUnit;
using ztutil_test::utf32le;

namespace {

struct DoubleBytePage {
    unsigned short cp;
    const std::uint16_t (*uni2oem)[2];
    const std::uint16_t (*oem2uni)[2];
    unsigned pairs, publishedPairs;
};

const DoubleBytePage kPages[] = {
    {932, zt_codepage::uni2oem932, zt_codepage::oem2uni932, zt_codepage::kPairs932, 7389},
    {936, zt_codepage::uni2oem936, zt_codepage::oem2uni936, zt_codepage::kPairs936, 21792},
    {949, zt_codepage::uni2oem949, zt_codepage::oem2uni949, zt_codepage::kPairs949, 17048},
    {950, zt_codepage::uni2oem950, zt_codepage::oem2uni950, zt_codepage::kPairs950, 13503},
};

// Every 16-bit input: ASCII passes, a character or code of the table gives
// its partner, anything else 0 (which partner a character listed twice gives
// is pinned by the iconv comparison below).
TEST(DoubleBytePages, LookupsCoverExactlyTheTables) {
    for (const auto& page : kPages) {
        EXPECT_EQ(page.pairs, page.publishedPairs) << page.cp;
        std::vector<std::set<unsigned>> fromUni(0x10000), fromOem(0x10000);
        for (unsigned i = 0; i < page.pairs; ++i) {
            fromUni[page.uni2oem[i][0]].insert(page.uni2oem[i][1]);
            fromOem[page.oem2uni[i][0]].insert(page.oem2uni[i][1]);
        }
        for (unsigned key = 0; key < 0x10000; ++key) {
            const unsigned oem = ff_uni2oem(key, page.cp), uni = ff_oem2uni(static_cast<unsigned short>(key), page.cp);
            ASSERT_TRUE(key < 0x80 ? oem == key : fromUni[key].empty() ? oem == 0 : fromUni[key].count(oem) == 1)
                << page.cp << " U+" << std::hex << key << " gives " << oem;
            ASSERT_TRUE(key < 0x80 ? uni == key : fromOem[key].empty() ? uni == 0 : fromOem[key].count(uni) == 1)
                << page.cp << " code " << std::hex << key << " gives " << uni;
        }
        EXPECT_EQ(ff_uni2oem(0x10000, page.cp) + ff_uni2oem(0x14E2D, page.cp), 0);
    }
}

// Every pair of the 932, 949 and 950 tables against glibc, both ways (936 is
// covered exhaustively with the GBK functions).
TEST(DoubleBytePages, PairsAgreeWithIconv) {
    for (const auto& page : kPages) {
        const std::string name = "CP" + std::to_string(page.cp);
        IconvOracle decoder(name.c_str(), "UTF-32LE"), encoder("UTF-32LE", name.c_str());
        ASSERT_TRUE(decoder.valid() && encoder.valid()) << name;
        for (unsigned i = 0; i < page.pairs; ++i) {
            const unsigned code = page.oem2uni[i][0], uni = page.uni2oem[i][0];
            ASSERT_EQ(singleUnit(decoder.convert(codeBytes(code))), ff_oem2uni(code, page.cp)) << code;
            ASSERT_EQ(singleCode(encoder.convert(utf32le(uni))), ff_uni2oem(uni, page.cp)) << uni;
        }
    }
    EXPECT_EQ(ff_oem2uni(0xA2CC, 950), 0x5341);  // the second code of a character
    EXPECT_EQ(ff_uni2oem(0x5341, 950), 0xA451);
}

// Codes glibc decodes that the 932 table leaves out are exactly the
// duplicates: the character they stand for has another (preferred) code.
TEST(DoubleBytePages, Cp932KeepsOnlyPreferredCodes) {
    IconvOracle decoder("CP932", "UTF-32LE"), encoder("UTF-32LE", "CP932");
    int duplicates = 0;
    for (unsigned code = 0x8140; code < 0x10000; ++code) {
        const auto uni = singleUnit(decoder.convert(codeBytes(code)));
        if (!uni || (*uni >= 0xE000 && *uni <= 0xF8FF) || ff_oem2uni(code, 932) != 0)
            continue;
        const auto preferred = singleCode(encoder.convert(utf32le(*uni)));
        ASSERT_TRUE(preferred && *preferred != code) << std::hex << code;
        EXPECT_EQ(ff_uni2oem(*uni, 932), *preferred);
        ++duplicates;
    }
    EXPECT_EQ(duplicates, 398);
}

TEST(SingleBytePages, EveryByteAgreesWithIconv) {
    for (unsigned short cp : {437, 737, 771, 775, 850, 852, 855, 857, 860, 861, 862, 863, 864, 865, 866, 869}) {
        const std::string name = "CP" + std::to_string(cp);
        IconvOracle decoder(name.c_str(), "UTF-32LE");
        ASSERT_TRUE(decoder.valid()) << name;
        for (unsigned byte = 0x80; byte < 0x100; ++byte) {
            const auto uni = singleUnit(decoder.convert(codeBytes(byte)));
            ASSERT_EQ(ff_oem2uni(static_cast<unsigned short>(byte), cp), uni.value_or(0)) << cp << " " << byte;
            ASSERT_TRUE(!uni || ff_uni2oem(*uni, cp) == byte) << cp << " " << byte;
        }
    }
    // glibc has no CP720 (Windows' Arabic DOS page): alef sits at 0x9F, and
    // the box drawings are those of 437.
    EXPECT_EQ(ff_oem2uni(0x9F, 720), 0x0627);
    EXPECT_EQ(ff_uni2oem(0x0627, 720), 0x9F);
    EXPECT_EQ(ff_oem2uni(0xC7, 720), ff_oem2uni(0xC7, 437));
    // ASCII passes on any page; unknown pages and out-of-range values give 0.
    EXPECT_EQ(ff_uni2oem(0x41, 1252), 0x41);
    EXPECT_EQ(ff_oem2uni(0x41, 1252), 0x41);
    EXPECT_EQ(ff_uni2oem(0xE9, 1252) + ff_oem2uni(0xE9, 1252) + ff_oem2uni(0x82, 0), 0);
    EXPECT_EQ(ff_oem2uni(0x100, 437) + ff_uni2oem(0x10000, 437) + ff_uni2oem(0x20AC, 437), 0);
}

// glibc's C.UTF-8 towupper is the Unicode simple upper-case mapping.
TEST(UpperCase, MatchesUnicodeSimpleUppercase) {
    locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
    if (utf8 == static_cast<locale_t>(nullptr))
        GTEST_SKIP() << "no C.UTF-8 locale";
    int mapped = 0;
    for (unsigned c = 0; c < 0x10000; ++c) {
        // The second table starts at U+1D7D; the few later Unicode mappings
        // below it (Georgian Mtavruli, Cherokee, Cyrillic Extended-C) are not applied.
        const unsigned expected = (c >= 0x1000 && c < 0x1D7D) || (c >= 0xD800 && c < 0xE000) ? c : towupper_l(c, utf8);
        ASSERT_EQ(ff_wtoupper(c), expected) << std::hex << c;
        mapped += expected != c;
    }
    freelocale(utf8);
    EXPECT_GT(mapped, 1000);
    EXPECT_EQ(ff_wtoupper(0x10428), 0x10428u);  // outside the BMP: unchanged
}

}  // namespace
