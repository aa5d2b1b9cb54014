// UTF-8, UTF-32 and GBK conversions and the code-page lookups, with glibc
// iconv and glibc's Unicode upper-case mapping as the references and the
// sequences beyond Unicode written out from RFC 2279.
#include <cwctype>
#include <locale.h>

#include "support/common.h"
#include "text/iconv_oracle.h"
#include "text/tables/codepage_tables_generated.h"
#include "ztutil/code_convert.h"

using namespace ztutil_test;

namespace {

// Decodes one sequence from a heap copy sized exactly to the text (plus its
// NUL), so the sanitizer build catches any read past the terminator.
std::pair<int, long> decodeOne(const std::string& text) {
    std::vector<char> exact(text.begin(), text.end());
    exact.push_back('\0');
    long value = -1;
    const int used = code_utf8_to_unicode_one(exact.data(), &value);
    return {used, value};
}

std::string encodeOne(long value) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    const int length = code_unicode_to_utf8_one(value, buffer, 0);
    EXPECT_EQ(buffer[length], '#') << "wrote past the reported length";
    return std::string(buffer, length);
}

// Output of a text conversion into a '#'-filled buffer: the reported count,
// then the bytes up to the first '#' (or the buffer's end).
template <typename Convert>
std::string converted(size_t room, Convert convert) {
    std::string out(room, '#');
    const int count = convert(&out[0]);
    return std::to_string(count) + ":" + out.substr(0, out.find('#'));
}

std::string utf8ToGbk(const std::string& text) {
    std::vector<char> out(4 * text.size() + 8, '#');
    return std::string(out.data(), code_utf8_to_gbk(text.c_str(), out.data()));
}

std::string gbkToUtf8(const std::string& text) {
    std::vector<char> out(3 * text.size() + 16, '#');
    return std::string(out.data(), code_gbk_to_utf8(text.c_str(), out.data(), int(out.size()) - 8));
}

TEST(Utf8Sequences, LeadBytesAndCounters) {
    // Lead bytes are classified by the decoder round trip below; here the rest.
    for (int byte : {0x80, 0xBF, 0xFC, 0xFF})
        EXPECT_EQ(code_get_utf8_byte_size(static_cast<char>(byte)), byte < 0xC0 ? 1 : 6) << byte;
    int counters[7] = {10, 0, 0, 0, 0, 0, 0};
    code_get_utf8_length("a\xC3\xA9\xE4\xB8\xAD\x80\xF0\x9F\x98\x80", counters);
    EXPECT_EQ(std::vector<int>(counters, counters + 7), (std::vector<int>{15, 2, 1, 1, 1, 0, 0}));
    // A lead byte claiming more bytes than the text has stops at the NUL.
    std::vector<char> truncated{'b', '\xFC', '\x80', '\0'};
    code_get_utf8_length(truncated.data(), counters);
    EXPECT_EQ(std::make_pair(counters[0], counters[6]), std::make_pair(17, 1));
    code_get_utf8_length(nullptr, counters);
}

TEST(Utf8Sequences, EncoderMatchesIconvAndRfc2279) {
    IconvOracle toUtf8("UTF-32LE", "UTF-8");
    ASSERT_TRUE(toUtf8.valid());
    for (long u = 0; u < 0x110000; u += (u < 0x30000 ? 1 : 97)) {
        if (u < 0xD800 || u >= 0xE000) {
            ASSERT_EQ(encodeOne(u), toUtf8.convert(utf32le(u)).value()) << u;
        }
    }
    const std::pair<long, std::string> beyond[] = {
        {0xD800, "\xED\xA0\x80"},  // surrogates are encoded too
        {0x200000, "\xF8\x88\x80\x80\x80"}, {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"}, {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
        {0x80000000L, ""}, {-1, "\x7F"}, {-0x7F, "\x01"}};
    for (const auto& c : beyond)
        EXPECT_EQ(encodeOne(c.first), c.second) << c.first;
}

TEST(Utf8Sequences, DecoderRoundTripsOnlyNarrowTwoByteForms) {
    for (long u = 1; u < 0x200000; ++u) {
        const std::string bytes = encodeOne(u);
        const bool rejected = bytes.size() == 2 && static_cast<unsigned char>(bytes[1]) >= 0xA0;
        ASSERT_EQ(decodeOne(bytes), std::make_pair(rejected ? 0 : int(bytes.size()), rejected ? 0L : u)) << u;
    }
    // The 5- and 6-byte layouts come from the library's own bit assembly,
    // worked out by hand (the sequences encode 0x1042108, 0x3FFFFFF and 0x41084210).
    const std::pair<std::string, std::pair<int, long>> cases[] = {
        {"\xC2\xA9", {0, 0}}, {"\xC2\x80", {2, 0x80}}, {"\xE4\xB8\xAD", {3, 0x4E2D}},
        {"\x80", {1, 0x80}},  // a stray continuation byte stands for itself
        {"\xE4\xB8", {0, 0}}, {"\xF0\x9F\x98", {0, 0}}, {"\xFD\xBF\xBF\xBF\xBF", {0, 0}},  // cut short by the NUL
        {"\xE4\x38\xAD", {0, 0}}, {"\xF9\x81\x82\x84\x88", {5, 0x40042108L}},
        {"\xFB\xBF\xBF\xBF\xBF", {5, 0xC0FFFFFFL}}, {"\xFD\x81\x82\x84\x88\x90", {6, 0x41088410L}},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", {6, 0x7FFFFFFFL}}};
    for (const auto& c : cases)
        EXPECT_EQ(decodeOne(c.first), c.second) << c.first;
}

TEST(Utf8Sequences, TextLimits) {
    // Decoding: a terminator only when the limit is not reached; the unit
    // that passes the limit is still written; a malformed sequence repeats
    // zeros up to the limit.
    auto decode = [](const char* text, int limit) {
        std::vector<unsigned int> out(16, 0xDEAD);
        const int count = code_utf8_to_unicode(text, out.data(), limit);
        return std::make_pair(count, std::vector<unsigned int>(out.begin(), out.begin() + count + 2));
    };
    using Units = std::vector<unsigned int>;
    EXPECT_EQ(decode("", 4), std::make_pair(0, Units{0, 0xDEAD}));
    EXPECT_EQ(decode("a\xE4\xB8\xAD" "b", 8), std::make_pair(3, Units{0x61, 0x4E2D, 0x62, 0, 0xDEAD}));
    EXPECT_EQ(decode("abcdef", 3), std::make_pair(4, Units{'a', 'b', 'c', 'd', 0xDEAD, 0xDEAD}));
    EXPECT_EQ(decode("ab", 2), std::make_pair(2, Units{'a', 'b', 0xDEAD, 0xDEAD}));
    EXPECT_EQ(decode("a\xC2\xB7z", 5), std::make_pair(6, Units{'a', 0, 0, 0, 0, 0, 0xDEAD, 0xDEAD}));
    std::vector<unsigned int> out(4);
    EXPECT_EQ(code_utf8_to_unicode(nullptr, out.data(), 4) + code_utf8_to_unicode("a", nullptr, 4) +
                  code_utf8_to_unicode("a", out.data(), 0), 0);

    // Encoding: the same rules for the terminator and the unit past the size.
    const unsigned int text[] = {0x61, 0x4E2D, 0}, letters[] = {'a', 'b', 'c', 'd', 0};
    const unsigned int tooLarge[] = {0x80000000u, 'x', 0};
    auto encode = [](const unsigned int* units, int size) {
        return converted(32, [&](char* out) { return code_unicode_to_utf8(units, out, size); });
    };
    EXPECT_EQ(encode(text, 10), "4:a\xE4\xB8\xAD" + std::string(1, '\0'));
    EXPECT_EQ(encode(text, 4), "4:a\xE4\xB8\xAD");
    EXPECT_EQ(encode(text + 1, 1), "3:\xE4\xB8\xAD");
    EXPECT_EQ(encode(letters, 2), "3:abc");
    EXPECT_EQ(encode(tooLarge, 8), "1:x" + std::string(1, '\0'));
    char buffer[8];
    EXPECT_EQ(code_unicode_to_utf8(text, nullptr, 4) + code_unicode_to_utf8(nullptr, buffer, 4) +
                  code_unicode_to_utf8(text, buffer, 0), 0);
}

TEST(Utf8Sequences, ReversedByteUnits) {
    // Unaligned on purpose: units are read bytewise. Bytes 2 and 3 of a unit
    // are ignored except that they keep the unit from counting as the end.
    const unsigned char bytes[] = {0xFF, 0x4E, 0x2D, 0x00, 0x00, 0x00, 0x41, 0x12, 0x34,
                                   0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00};
    const auto* units = reinterpret_cast<const unsigned int*>(bytes + 1);
    const unsigned int empty[] = {0};
    auto reversed = [](const unsigned int* in, int count, int size) {
        return converted(16, [&](char* o) { return code_unicode_to_utf8_reversebyte(in, count, o, size); });
    };
    EXPECT_EQ(reversed(units, 8, 16), "5:\xE4\xB8\xAD" "A" + std::string(2, '\0'));
    EXPECT_EQ(reversed(units, 1, 16), "3:\xE4\xB8\xAD" + std::string(1, '\0'));
    EXPECT_EQ(reversed(units, 8, 2), "3:\xE4\xB8\xAD") << "the size is checked after writing";
    EXPECT_EQ(reversed(empty, 4, 16), "0:" + std::string(1, '\0'));
    char out[4];
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 0, out, 16), 0);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 4, nullptr, 16), 0);
}

// Every BMP character in both directions against glibc's CP936, one at a
// time and as whole texts.
TEST(Gbk, EveryCodeMatchesIconvCp936) {
    IconvOracle toGbk("UTF-32LE", "CP936"), fromGbk("CP936", "UTF-32LE");
    ASSERT_TRUE(toGbk.valid() && fromGbk.valid());
    std::string utf8Text, gbkText;
    for (unsigned u = 0x80; u < 0x10000; ++u) {
        if (u >= 0xD800 && u < 0xE000)
            continue;
        const auto expected = toGbk.convert(utf32le(u));
        char out[2];
        const int written = code_unicode_to_gbk(&u, out, 1);
        ASSERT_EQ(std::string(out, written), expected ? *expected : std::string(2, '\0')) << u;
        if (!expected || u == 0x20AC)
            continue;
        gbkText += *expected;
        if (u >= 0x800 || (u & 0x3F) < 0x20)  // two-byte forms need a narrow second byte
            utf8Text += encodeOne(u);
    }
    for (unsigned code = 0x8100; code < 0x10000; ++code) {
        const std::string bytes = codeBytes(code);
        unsigned int unit = 0xDEAD;
        ASSERT_EQ(code_gbk_to_unicode(bytes.data(), &unit, 2), 1);
        ASSERT_EQ(unit, singleUnit(fromGbk.convert(bytes)).value_or(0)) << code;
    }
    EXPECT_EQ(utf8ToGbk(utf8Text), IconvOracle("UTF-8", "CP936").convert(utf8Text).value());
    EXPECT_EQ(gbkToUtf8(gbkText), IconvOracle("CP936", "UTF-8").convert(gbkText).value());
}

TEST(Gbk, EuroAsciiAndUnmappedRules) {
    std::string ascii;
    for (int c = 1; c < 0x80; ++c)
        ascii += static_cast<char>(c);
    EXPECT_EQ(utf8ToGbk(ascii), ascii);
    EXPECT_EQ(gbkToUtf8(ascii), ascii);
    EXPECT_EQ(utf8ToGbk("\xE2\x82\xAC\xE4\xB8\xAD"), "\x80\xD6\xD0");
    const unsigned int units[] = {0x20AC, 0x4E2D, 0x10000, 0};
    char out[8];
    EXPECT_EQ(code_unicode_to_gbk(units, out, 4), 6);  // zero units are converted too
    EXPECT_EQ(std::string(out, 6), std::string("\x80\xD6\xD0\0\0\0", 6));
    EXPECT_EQ(code_unicode_to_gbk(units, out, 0), 0);

    unsigned int decoded[4] = {};
    EXPECT_EQ(code_gbk_to_unicode("\x80" "AB", decoded, 3), 2);  // the byte after 0x80 is skipped
    EXPECT_EQ(std::vector<unsigned>(decoded, decoded + 2), (std::vector<unsigned>{0x20AC, 0x42}));
    EXPECT_EQ(gbkToUtf8("\x80" "AB"), "\xE2\x82\xAC" "B");
    EXPECT_EQ(gbkToUtf8("x\x80"), "x\xE2\x82\xAC");
    EXPECT_EQ(gbkToUtf8("\xD6"), "");  // lead byte then the NUL: unmapped, ends the text
    EXPECT_EQ(gbkToUtf8(""), "");
    EXPECT_EQ(code_gbk_to_unicode("A", decoded, 0) + code_utf8_to_gbk(nullptr, out), 0);
    EXPECT_EQ(code_gbk_to_utf8(nullptr, out, 8), 0);
}

// Malformed UTF-8 makes code_utf8_to_unicode fill its whole limit of 3 units
// per input byte plus one; the sanitizer build checks the scratch holds them.
TEST(Gbk, MalformedUtf8FillsTheWholeScratch) {
    for (int repeat : {1, 2, 7, 64, 1000}) {
        std::string text, mixed;
        for (int i = 0; i < repeat; ++i)
            text += "\xC2\xB7", mixed += "\xC2\x80";  // U+0080 is valid but unmapped: two zero bytes
        mixed += "\xC2\xB7";
        EXPECT_EQ(utf8ToGbk(text), std::string(3 * text.size() + 1, '\0')) << repeat;
        EXPECT_EQ(utf8ToGbk(mixed).size(), 3 * mixed.size() + 1 + repeat) << repeat;
    }
    EXPECT_EQ(utf8ToGbk("\xC2"), std::string(4, '\0'));
    // The documented worst case, 4 bytes per input byte: stray continuation
    // bytes (two bytes each) before a broken sequence.
    EXPECT_EQ(utf8ToGbk(std::string(12, '\x80') + "\xC2").size(), 4u * 13);
    EXPECT_EQ(utf8ToGbk("ab\xE4"), std::string("ab") + std::string(8, '\0'));
}

TEST(ContractDeathTest, NullArgumentsStopTheProcess) {
    long value = 0;
    EXPECT_DEATH(code_unicode_to_utf8_one(0x41, nullptr, 6),
                 "code_convert\\.cpp:103: int code_unicode_to_utf8_one\\(long int, char\\*, int\\): "
                 "Assertion `pOutput != NULL' failed");
    EXPECT_DEATH(code_utf8_to_unicode_one("a", nullptr),
                 "code_convert\\.cpp:169: int code_utf8_to_unicode_one\\(const char\\*, long int\\*\\): "
                 "Assertion `pInput != NULL && unicode != NULL' failed");
    EXPECT_DEATH(code_utf8_to_unicode_one(nullptr, &value), "Assertion `pInput != NULL && unicode != NULL'");
}

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

// Every pair of the tables against glibc, both ways (936 is also covered
// exhaustively with the GBK functions); the tables hold the published count
// of pairs, and nothing beyond the BMP maps.
TEST(DoubleBytePages, PairsAgreeWithIconv) {
    for (const auto& page : kPages) {
        EXPECT_EQ(page.pairs, page.publishedPairs) << page.cp;
        EXPECT_EQ(ff_uni2oem(0x10000, page.cp) + ff_uni2oem(0x14E2D, page.cp), 0);
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
