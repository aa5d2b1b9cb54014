#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "text/iconv_oracle.h"
#include "ztutil/code_convert.h"

using ztutil_test::IconvOracle;
using ztutil_test::utf32le;

namespace {

// Decodes one sequence from a heap copy sized exactly to the text (plus its
// NUL), so the sanitizer build catches any read past the terminator.
int decodeOne(const std::string& text, long* value) {
    std::vector<char> exact(text.begin(), text.end());
    exact.push_back('\0');
    return code_utf8_to_unicode_one(exact.data(), value);
}

std::string encodeOne(long value) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    int length = code_unicode_to_utf8_one(value, buffer, 0);
    EXPECT_EQ(buffer[length], '#') << "wrote past the reported length";
    return std::string(buffer, length);
}

std::string utf8ToGbk(const std::string& text) {
    std::vector<char> out(4 * text.size() + 8, '#');
    int written = code_utf8_to_gbk(text.c_str(), out.data());
    return std::string(out.data(), written);
}

std::string gbkToUtf8(const std::string& text) {
    std::vector<char> out(3 * text.size() + 16, '#');
    int written = code_gbk_to_utf8(text.c_str(), out.data(), static_cast<int>(out.size()) - 8);
    return std::string(out.data(), written);
}

TEST(Utf8Sequences, LeadByteClassification) {
    for (int byte = 0; byte < 256; ++byte) {
        int expected = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF8 ? 4
                     : byte < 0xFC ? 5 : 6;
        EXPECT_EQ(code_get_utf8_byte_size(static_cast<char>(byte)), expected) << byte;
    }

    int counters[7] = {10, 0, 0, 0, 0, 0, 0};
    code_get_utf8_length("a\xC3\xA9\xE4\xB8\xAD\x80\xF0\x9F\x98\x80", counters);
    const int expected[7] = {10 + 5, 2, 1, 1, 1, 0, 0};
    EXPECT_TRUE(std::equal(counters, counters + 7, expected));
    // A lead byte claiming more bytes than the text has stops at the NUL.
    std::vector<char> truncated{'b', '\xFC', '\x80', '\0'};
    code_get_utf8_length(truncated.data(), counters);
    EXPECT_EQ(counters[0], 17);
    EXPECT_EQ(counters[6], 1);
    code_get_utf8_length(nullptr, counters);
}

TEST(Utf8Sequences, EncoderMatchesIconvAndRfc2279) {
    IconvOracle toUtf8("UTF-32LE", "UTF-8");
    ASSERT_TRUE(toUtf8.valid());
    for (long u = 0; u < 0x110000; u += (u < 0x30000 ? 1 : 97)) {
        if (u >= 0xD800 && u < 0xE000)
            continue;
        ASSERT_EQ(encodeOne(u), toUtf8.convert(utf32le(u)).value()) << u;
    }
    EXPECT_EQ(encodeOne(0xD800), "\xED\xA0\x80");  // surrogates are encoded too
    EXPECT_EQ(encodeOne(0x200000), "\xF8\x88\x80\x80\x80");
    EXPECT_EQ(encodeOne(0x3FFFFFF), "\xFB\xBF\xBF\xBF\xBF");
    EXPECT_EQ(encodeOne(0x4000000), "\xFC\x84\x80\x80\x80\x80");
    EXPECT_EQ(encodeOne(0x7FFFFFFF), "\xFD\xBF\xBF\xBF\xBF\xBF");
    EXPECT_EQ(encodeOne(0x80000000L), "");
    EXPECT_EQ(encodeOne(-1), "\x7F");
    EXPECT_EQ(encodeOne(-0x7F), std::string(1, '\x01'));
}

TEST(Utf8Sequences, DecoderRoundTripsOnlyNarrowTwoByteForms) {
    for (long u = 1; u < 0x200000; ++u) {
        std::string bytes = encodeOne(u);
        long value = -1;
        int used = decodeOne(bytes, &value);
        bool rejected = bytes.size() == 2 && static_cast<unsigned char>(bytes[1]) >= 0xA0;
        ASSERT_EQ(used, rejected ? 0 : static_cast<int>(bytes.size())) << u;
        ASSERT_EQ(value, rejected ? 0 : u) << u;
    }
}

TEST(Utf8Sequences, DecoderEdgeCases) {
    long value = -1;
    EXPECT_EQ(decodeOne("\xC2\xA9", &value), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(decodeOne("\xC2\x80", &value), 2);
    EXPECT_EQ(value, 0x80);
    EXPECT_EQ(decodeOne("\xE4\xB8\xAD", &value), 3);
    EXPECT_EQ(value, 0x4E2D);
    EXPECT_EQ(decodeOne("\x80", &value), 1);  // a stray continuation byte stands for itself
    EXPECT_EQ(value, 0x80);
    EXPECT_EQ(decodeOne("\xE4\xB8", &value), 0);  // truncated: the NUL fails the test
    EXPECT_EQ(decodeOne("\xF0\x9F\x98", &value), 0);
    EXPECT_EQ(decodeOne("\xFD\xBF\xBF\xBF\xBF", &value), 0);
    EXPECT_EQ(decodeOne("\xE4\x38\xAD", &value), 0);
}

// The 5- and 6-byte layouts, worked out by hand from the library's defined
// bit assembly (the sequences encode 0x1042108, 0x3FFFFFF and 0x41084210).
TEST(Utf8Sequences, FiveAndSixByteAssemblies) {
    long value = 0;
    EXPECT_EQ(decodeOne("\xF9\x81\x82\x84\x88", &value), 5);
    EXPECT_EQ(value, 0x40042108L);
    EXPECT_EQ(decodeOne("\xFB\xBF\xBF\xBF\xBF", &value), 5);
    EXPECT_EQ(value, 0xC0FFFFFFL);
    EXPECT_EQ(decodeOne("\xFD\x81\x82\x84\x88\x90", &value), 6);
    EXPECT_EQ(value, 0x41088410L);
    EXPECT_EQ(decodeOne("\xFD\xBF\xBF\xBF\xBF\xBF", &value), 6);
    EXPECT_EQ(value, 0x7FFFFFFFL);
}

TEST(Utf8Sequences, TextDecodingLimits) {
    std::vector<unsigned int> out(16, 0xDEAD);
    EXPECT_EQ(code_utf8_to_unicode("", out.data(), 4), 0);
    EXPECT_EQ(out[0], 0u);

    out.assign(16, 0xDEAD);
    EXPECT_EQ(code_utf8_to_unicode("a\xE4\xB8\xAD" "b", out.data(), 8), 3);
    EXPECT_EQ(std::vector<unsigned int>(out.begin(), out.begin() + 5),
              (std::vector<unsigned int>{0x61, 0x4E2D, 0x62, 0, 0xDEAD}));

    out.assign(16, 0xDEAD);  // one unit beyond the limit, no terminator
    EXPECT_EQ(code_utf8_to_unicode("abcdef", out.data(), 3), 4);
    EXPECT_EQ(std::vector<unsigned int>(out.begin(), out.begin() + 5),
              (std::vector<unsigned int>{'a', 'b', 'c', 'd', 0xDEAD}));

    out.assign(16, 0xDEAD);  // reaching the limit exactly: no terminator either
    EXPECT_EQ(code_utf8_to_unicode("ab", out.data(), 2), 2);
    EXPECT_EQ(out[2], 0xDEADu);

    out.assign(16, 0xDEAD);  // a malformed sequence repeats zeros up to the limit
    EXPECT_EQ(code_utf8_to_unicode("a\xC2\xB7z", out.data(), 5), 6);
    EXPECT_EQ(std::vector<unsigned int>(out.begin(), out.begin() + 7),
              (std::vector<unsigned int>{'a', 0, 0, 0, 0, 0, 0xDEAD}));

    EXPECT_EQ(code_utf8_to_unicode(nullptr, out.data(), 4), 0);
    EXPECT_EQ(code_utf8_to_unicode("a", nullptr, 4), 0);
    EXPECT_EQ(code_utf8_to_unicode("a", out.data(), 0), 0);
}

TEST(Utf8Sequences, TextEncodingLimits) {
    char out[32];
    const unsigned int text[] = {0x61, 0x4E2D, 0};
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8(text, out, 10), 4);
    EXPECT_EQ(std::string(out, 5), std::string("a\xE4\xB8\xAD", 5));

    std::memset(out, '#', sizeof out);  // total reaches the size: no terminator
    EXPECT_EQ(code_unicode_to_utf8(text, out, 4), 4);
    EXPECT_EQ(out[4], '#');

    const unsigned int wide[] = {0x4E2D, 0};
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8(wide, out, 1), 3);
    EXPECT_EQ(out[3], '#');

    const unsigned int letters[] = {'a', 'b', 'c', 'd', 0};
    std::memset(out, '#', sizeof out);  // the unit that passes the size is still written
    EXPECT_EQ(code_unicode_to_utf8(letters, out, 2), 3);
    EXPECT_EQ(std::string(out, 4), "abc#");

    const unsigned int tooLarge[] = {0x80000000u, 'x', 0};
    EXPECT_EQ(code_unicode_to_utf8(tooLarge, out, 8), 1);
    EXPECT_EQ(std::string(out), "x");

    EXPECT_EQ(code_unicode_to_utf8(text, nullptr, 4), 0);
    EXPECT_EQ(code_unicode_to_utf8(nullptr, out, 4), 0);
    EXPECT_EQ(code_unicode_to_utf8(text, out, 0), 0);
}

TEST(Utf8Sequences, ReversedByteUnits) {
    // Unaligned on purpose: units are read bytewise. Bytes 2 and 3 of a unit
    // are ignored except that they keep the unit from counting as the end.
    const unsigned char bytes[] = {0xFF, 0x4E, 0x2D, 0x00, 0x00, 0x00, 0x41, 0x12, 0x34,
                                   0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00};
    const auto* units = reinterpret_cast<const unsigned int*>(bytes + 1);
    char out[16];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 8, out, 16), 5);
    EXPECT_EQ(std::string(out, 6), std::string("\xE4\xB8\xAD" "A\0\0", 6));

    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 1, out, 16), 3);
    EXPECT_EQ(std::string(out), "\xE4\xB8\xAD");

    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 8, out, 2), 3);  // size checked after
    EXPECT_EQ(out[3], '#');

    const unsigned int empty[] = {0};
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(empty, 4, out, 16), 0);
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 0, out, 16), 0);
    EXPECT_EQ(code_unicode_to_utf8_reversebyte(units, 4, nullptr, 16), 0);
}

// Every BMP character in both directions against glibc's CP936, one at a
// time and as whole texts.
TEST(Gbk, EveryCodeMatchesIconvCp936) {
    IconvOracle toGbk("UTF-32LE", "CP936");
    IconvOracle fromGbk("CP936", "UTF-32LE");
    ASSERT_TRUE(toGbk.valid() && fromGbk.valid());
    std::string utf8Text, gbkText;
    for (unsigned u = 0x80; u < 0x10000; ++u) {
        if (u >= 0xD800 && u < 0xE000)
            continue;
        auto expected = toGbk.convert(utf32le(u));
        char out[2];
        int written = code_unicode_to_gbk(&u, out, 1);
        if (u == 0x20AC) {
            ASSERT_EQ(std::string(out, written), expected.value());
            continue;
        }
        ASSERT_EQ(std::string(out, written), expected ? *expected : std::string(2, '\0')) << u;
        if (!expected)
            continue;
        gbkText += *expected;
        if (u >= 0x800 || (u & 0x3F) < 0x20)  // two-byte forms need a narrow second byte
            utf8Text += encodeOne(u);
    }
    for (unsigned code = 0x8100; code < 0x10000; ++code) {
        auto expected = ztutil_test::singleUnit(fromGbk.convert(ztutil_test::codeBytes(code)));
        unsigned int unit = 0xDEAD;
        std::string bytes = ztutil_test::codeBytes(code);
        ASSERT_EQ(code_gbk_to_unicode(bytes.data(), &unit, 2), 1);
        ASSERT_EQ(unit, expected.value_or(0)) << code;
    }
    IconvOracle utf8ToGbkOracle("UTF-8", "CP936");
    IconvOracle gbkToUtf8Oracle("CP936", "UTF-8");
    EXPECT_EQ(utf8ToGbk(utf8Text), utf8ToGbkOracle.convert(utf8Text).value());
    EXPECT_EQ(gbkToUtf8(gbkText), gbkToUtf8Oracle.convert(gbkText).value());
}

TEST(Gbk, EuroAsciiAndUnmappedRules) {
    std::string ascii;
    for (int c = 1; c < 0x80; ++c)
        ascii += static_cast<char>(c);
    EXPECT_EQ(utf8ToGbk(ascii), ascii);
    EXPECT_EQ(gbkToUtf8(ascii), ascii);
    EXPECT_EQ(utf8ToGbk("\xE2\x82\xAC"), "\x80");
    EXPECT_EQ(utf8ToGbk("\xE4\xB8\xAD"), "\xD6\xD0");

    const unsigned int units[] = {0x20AC, 0x4E2D, 0x10000, 0};
    char out[8];
    EXPECT_EQ(code_unicode_to_gbk(units, out, 4), 6);  // zero units are converted too
    EXPECT_EQ(std::string(out, 6), std::string("\x80\xD6\xD0\0\0\0", 6));
    EXPECT_EQ(code_unicode_to_gbk(units, out, 0), 0);

    unsigned int decoded[4] = {};
    EXPECT_EQ(code_gbk_to_unicode("\x80" "AB", decoded, 3), 2);  // the byte after 0x80 is skipped
    EXPECT_EQ(decoded[0], 0x20ACu);
    EXPECT_EQ(decoded[1], 0x42u);
    EXPECT_EQ(gbkToUtf8("\x80" "AB"), "\xE2\x82\xAC" "B");
    EXPECT_EQ(gbkToUtf8("x\x80"), "x\xE2\x82\xAC");
    EXPECT_EQ(gbkToUtf8("\xD6"), "");  // lead byte then the NUL: unmapped, ends the text
    EXPECT_EQ(gbkToUtf8(""), "");
    EXPECT_EQ(code_gbk_to_unicode("A", decoded, 0), 0);
    EXPECT_EQ(code_utf8_to_gbk(nullptr, out), 0);
    EXPECT_EQ(code_gbk_to_utf8(nullptr, out, 8), 0);
}

// Malformed UTF-8 makes code_utf8_to_unicode fill its whole limit of 3 units
// per input byte plus one; the sanitizer build checks the scratch holds them.
TEST(Gbk, MalformedUtf8FillsTheWholeScratch) {
    for (int repeat : {1, 2, 7, 64, 1000}) {
        std::string text;
        for (int i = 0; i < repeat; ++i)
            text += "\xC2\xB7";
        const size_t n = text.size();
        EXPECT_EQ(utf8ToGbk(text), std::string(3 * n + 1, '\0')) << repeat;

        // Valid U+0080 characters (unmapped: two zero bytes each) first.
        std::string mixed;
        for (int i = 0; i < repeat; ++i)
            mixed += "\xC2\x80";
        mixed += "\xC2\xB7";
        EXPECT_EQ(utf8ToGbk(mixed).size(), 3 * mixed.size() + 1 + repeat) << repeat;
    }
    EXPECT_EQ(utf8ToGbk("\xC2"), std::string(4, '\0'));
    EXPECT_EQ(utf8ToGbk("ab\xE4"), std::string("ab") + std::string(8, '\0'));
}

TEST(ContractDeathTest, NullArgumentsStopTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    long value = 0;
    EXPECT_DEATH(code_unicode_to_utf8_one(0x41, nullptr, 6),
                 "code_convert\\.cpp:103: int code_unicode_to_utf8_one\\(long int, char\\*, int\\): "
                 "Assertion `pOutput != NULL' failed");
    EXPECT_DEATH(code_utf8_to_unicode_one("a", nullptr),
                 "code_convert\\.cpp:169: int code_utf8_to_unicode_one\\(const char\\*, long int\\*\\): "
                 "Assertion `pInput != NULL && unicode != NULL' failed");
    EXPECT_DEATH(code_utf8_to_unicode_one(nullptr, &value), "Assertion `pInput != NULL && unicode != NULL'");
}

}  // namespace
