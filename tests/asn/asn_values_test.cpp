// Time, OBJECT IDENTIFIER and BIT STRING helpers: the forms, quirks and
// limits, with glibc's timegm giving the expected times. Agreement with
// OpenSSL on arbitrary times and OIDs is the asn fuzz target's property.
#include "asn_test_support.h"

using namespace asn_test;

namespace {

std::pair<long long, unsigned> timeOf(unsigned char tag, const std::string& text) {
    Tree node(ASNAddSample(tag, nullptr));
    ASNSetBlockData(node.get(), reinterpret_cast<const unsigned char*>(text.data()), text.size());
    unsigned error = 99;
    const long long seconds = ASNGetTime(node.get(), &error);
    return {seconds, error};
}

long long utc(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts{second, minute, hour, day, month - 1, year - 1900, 0, 0, 0, 0, nullptr};
    return static_cast<long long>(timegm(&parts));
}

TEST(AsnMypint, DigitsRangeAndCursor) {
    const char* text = "12x";
    const char* cursor = text;
    int error = 0;
    EXPECT_EQ(mypint(&cursor, 2, 0, 99, &error), 12);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(mypint(&cursor, 1, 0, 9, &error), 0);
    EXPECT_EQ(cursor, text + 2) << "left on the offending character";
    EXPECT_EQ(error, 1);
    cursor = "42";
    error = 0;
    EXPECT_EQ(mypint(&cursor, 2, 1, 12, &error), 42) << "out of range still returns the value";
    EXPECT_EQ(error, 1);
    cursor = "07";
    EXPECT_EQ(mypint(&cursor, 2, 1, 12, &error), 7);
    EXPECT_EQ(error, 1) << "the flag is never cleared";
}

TEST(AsnGetTime, FormsZonesAndRefusals) {
    const std::tuple<unsigned char, std::string, long long, unsigned> cases[] = {
        {0x17, "0801011200Z", utc(2008, 1, 1, 12, 0, 0), 0}, {0x17, "080101120000+1300", 0, 1},
        {0x17, "080101120000", 0, 1}, {0x17, "080101120000Zx", 0, 1}, {0x17, "081301120000Z", 0, 1},
        {0x17, "080132120000Z", 0, 1}, {0x17, "0801011200.5Z", 0, 1},
        {0x18, "20080101120000.5Z", utc(2008, 1, 1, 12, 0, 0), 0},
        {0x18, "20080101120000,25+0100", utc(2008, 1, 1, 11, 0, 0), 0},
        {0x18, "99991231235959Z", utc(9999, 12, 31, 23, 59, 59), 0},
        {0x18, "19691231235959-0100", 0, 2},  // the zone's sign must agree with the side of 1970
        {0x18, "19700101000000+0100", 0, 2}, {0x18, "20080101120000." + std::string(40, '0') + "Z", 0, 1},
        {0x04, "080101120000Z", 0, 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(timeOf(std::get<0>(c), std::get<1>(c)), std::make_pair(std::get<2>(c), std::get<3>(c)))
            << std::get<1>(c);
    }
    EXPECT_EQ(ASNGetTime(nullptr, nullptr), 0);
    ScopedTimeZone zone("CST-8");  // without a zone GeneralizedTime is local
    for (const char* local : {"20080101120000", "20080101120000.999", "200801011200"})
        EXPECT_EQ(timeOf(0x18, local).first, utc(2008, 1, 1, 4, 0, 0)) << local;
}

QByteArray oidData(const char* text) {
    unsigned char out[64];
    unsigned capacity = sizeof out;
    if (!ASNGetOIDData(text, out, &capacity))
        return QByteArray("<fail>");
    return QByteArray(reinterpret_cast<char*>(out), static_cast<int>(capacity));
}

QByteArray oidName(const QByteArray& data) {
    char out[128];
    unsigned capacity = 100;
    if (!ASNGetOIDName(octets(data), data.size(), out, &capacity))
        return QByteArray("<fail>");
    EXPECT_EQ(capacity, std::strlen(out));
    return QByteArray(out);
}

TEST(AsnOid, QuirksInBothDirections) {
    const std::pair<const char*, const char*> toOctets[] = {
        {"1.2.0.5", "2a05"},    // zero arcs are dropped
        {"1.2..5", "2a05"},     // an empty arc reads as zero
        {"2.999.1", "3701"},    // the first octet keeps its low 8 bits
        {"1", ""}, {"", ""}};
    for (const auto& c : toOctets)
        EXPECT_EQ(oidData(c.first), hex(c.second)) << c.first;
    EXPECT_EQ(oidData("1.a") + oidData("1.2 "), QByteArray("<fail><fail>"));
    EXPECT_EQ(ASNGetOIDData(nullptr, nullptr, nullptr) + ASNGetOIDData("1.2", nullptr, nullptr), 0u);
    unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    unsigned capacity = 3;
    EXPECT_EQ(ASNGetOIDData("1.2.840.10045", out, &capacity), 1u);
    EXPECT_EQ(capacity, 3u) << "too small: nothing written";
    EXPECT_EQ(ASNGetOIDData("1.2.840", out, nullptr) + ASNGetOIDData("1.2.840", nullptr, &capacity), 2u);
    EXPECT_EQ(capacity, 3u);
    EXPECT_EQ(out[0], 0xEE);

    const std::pair<const char*, const char*> toText[] = {
        {"5504", "2.5.4"}, {"2a", "<fail>"},
        {"4f01", "1.W.1"},             // the second arc is one character
        {"2a8fffffff7f", "1.2.-1"},    // printed as signed 32-bit
        {"2a0386", "1.2.3"}};          // an unfinished arc is not written
    for (const auto& c : toText)
        EXPECT_EQ(oidName(hex(c.first)), QByteArray(c.second)) << c.first;
    EXPECT_EQ(oidName(QByteArray(1, '\x2a') + QByteArray(48, '\x01')).size(), 99);
    EXPECT_EQ(oidName(QByteArray(1, '\x2a') + QByteArray(49, '\x01')), QByteArray("<fail>"));
    const QByteArray data = hex("2a03");
    char text[8] = "xxxxxxx";
    capacity = 4;
    EXPECT_EQ(ASNGetOIDName(octets(data), 2, text, &capacity), 1u);
    EXPECT_EQ(capacity, 4u) << "too small: nothing copied";
    EXPECT_EQ(text[0], 'x');
    capacity = 5;
    EXPECT_EQ(ASNGetOIDName(octets(data), 2, text, &capacity), 1u);
    EXPECT_STREQ(text, "1.2.3");
    EXPECT_EQ(ASNGetOIDName(octets(data), -1, text, &capacity) + ASNGetOIDName(octets(data), 2, text, nullptr), 0u);
}

TEST(AsnBitString, ValueRecordBothWays) {
    Tree node = parse(hex("030300abcd"));
    stASN_BIT_STRING value{};
    ASSERT_EQ(ASNGetBitStringData(node.get(), &value), 1u);
    EXPECT_EQ(value.unusedBits, 0);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(value.data), static_cast<int>(value.length)), hex("abcd"));
    std::free(value.data);
    EXPECT_EQ(ASNSetBitStringData(node.get(), octets(hex("f0")), 1, 4), 1u);
    EXPECT_EQ(encode(node.get()), hex("030204f0"));
    const stASN_BIT_STRING empty{7, 0, nullptr};
    EXPECT_EQ(ASNSetBitStringDataEx(node.get(), &empty), 1u);
    EXPECT_EQ(encode(node.get()), hex("030107"));

    Tree octetString = parse(hex("040100")), noContent = parse(hex("0300"));
    EXPECT_EQ(ASNGetBitStringData(octetString.get(), &value), 0u);
    EXPECT_EQ(ASNSetBitStringData(octetString.get(), octets(hex("f0")), 1, 0), 0u);
    EXPECT_EQ(ASNSetBitStringDataEx(node.get(), nullptr), 0u);
    EXPECT_EQ(ASNGetBitStringData(noContent.get(), &value), 0u);
}

}  // namespace
