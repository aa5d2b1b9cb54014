// Time, OBJECT IDENTIFIER and BIT STRING helpers, with glibc and OpenSSL as
// the reference where they apply.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <openssl/objects.h>
#include <random>
#include <string>

#include "asn_test_support.h"
#include "support/qt_printers.h"

using namespace asn_test;

namespace {

struct TimeResult {
    long long seconds;
    unsigned error;
};

TimeResult timeOf(unsigned char tag, const char* text) {
    Tree node(ASNAddSample(tag, nullptr));
    ASNSetBlockData(node.get(), reinterpret_cast<const unsigned char*>(text), std::strlen(text));
    TimeResult result{0, 99};
    result.seconds = ASNGetTime(node.get(), &result.error);
    return result;
}

long long utc(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    return static_cast<long long>(timegm(&parts));
}

TEST(AsnMypint, DigitsRangeAndCursor) {
    const char* text = "12x";
    const char* cursor = text;
    int error = 0;
    EXPECT_EQ(mypint(&cursor, 2, 0, 99, &error), 12);
    EXPECT_EQ(cursor, text + 2);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(mypint(&cursor, 1, 0, 9, &error), 0);
    EXPECT_EQ(cursor, text + 2) << "left on the offending character";
    EXPECT_EQ(error, 1);
    error = 0;
    cursor = "42";
    EXPECT_EQ(mypint(&cursor, 2, 1, 12, &error), 42) << "out of range still returns the value";
    EXPECT_EQ(error, 1);
    cursor = "07";
    EXPECT_EQ(mypint(&cursor, 2, 1, 12, &error), 7);
    EXPECT_EQ(error, 1) << "the flag is never cleared";
    EXPECT_EQ(mypint(&cursor, 0, 0, 0, &error), 0);
}

TEST(AsnGetTime, UtcTimeAndZones) {
    const unsigned char kUtc = 0x17;
    const unsigned char kGeneralized = 0x18;
    struct Case {
        unsigned char tag;
        const char* text;
        long long seconds;
        unsigned error;
    } cases[] = {
        {kUtc, "491231235959Z", utc(2049, 12, 31, 23, 59, 59), 0},
        {kUtc, "500101000000Z", utc(1950, 1, 1, 0, 0, 0), 0},
        {kUtc, "0801011200Z", utc(2008, 1, 1, 12, 0, 0), 0},
        {kUtc, "080101120000+0800", utc(2008, 1, 1, 4, 0, 0), 0},
        {kUtc, "080101120000-0130", utc(2008, 1, 1, 13, 30, 0), 0},
        {kUtc, "080101120000+1300", 0, 1},
        {kUtc, "080101120000", 0, 1},
        {kUtc, "080101120000Zx", 0, 1},
        {kUtc, "081301120000Z", 0, 1},
        {kUtc, "080132120000Z", 0, 1},
        {kUtc, "0801011200.5Z", 0, 1},
        {kGeneralized, "20080101120000.5Z", utc(2008, 1, 1, 12, 0, 0), 0},
        {kGeneralized, "20080101120000,25+0100", utc(2008, 1, 1, 11, 0, 0), 0},
        {kGeneralized, "19000301000000Z", utc(1900, 3, 1, 0, 0, 0), 0},
        {kGeneralized, "18000101000000Z", utc(1800, 1, 1, 0, 0, 0), 0},
        {kGeneralized, "21010301000000Z", utc(2101, 3, 1, 0, 0, 0), 0},
        {kGeneralized, "24000301000000Z", utc(2400, 3, 1, 0, 0, 0), 0},
        {kGeneralized, "99991231235959Z", utc(9999, 12, 31, 23, 59, 59), 0},
        // The sign must agree with the side of 1970 the year is on.
        {kGeneralized, "19691231235959-0100", 0, 2},
        {kGeneralized, "19700101000000+0100", 0, 2},
        {0x04, "080101120000Z", 0, 1},
    };
    for (const Case& c : cases) {
        const TimeResult result = timeOf(c.tag, c.text);
        EXPECT_EQ(result.seconds, c.seconds) << c.text;
        EXPECT_EQ(result.error, c.error) << c.text;
    }
    EXPECT_EQ(ASNGetTime(nullptr, nullptr), 0);
    const std::string tooLong = "20080101120000." + std::string(40, '0') + "Z";
    EXPECT_EQ(timeOf(kGeneralized, tooLong.c_str()).error, 1u);
}

TEST(AsnGetTime, GeneralizedTimeWithoutZoneIsLocal) {
    ScopedTimeZone zone("CST-8");
    EXPECT_EQ(timeOf(0x18, "20080101120000").seconds, utc(2008, 1, 1, 4, 0, 0));
    EXPECT_EQ(timeOf(0x18, "20080101120000.999").seconds, utc(2008, 1, 1, 4, 0, 0));
    EXPECT_EQ(timeOf(0x18, "200801011200").seconds, utc(2008, 1, 1, 4, 0, 0));
}

TEST(AsnGetTime, AgreesWithTimegmOverManyDates) {
    std::mt19937 rng(20240601);
    const int monthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int i = 0; i < 20000; ++i) {
        const bool generalized = i % 2 == 0;
        const int year = generalized ? 1600 + static_cast<int>(rng() % 1000) : 1950 + static_cast<int>(rng() % 100);
        const int month = 1 + static_cast<int>(rng() % 12);
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        const int day = 1 + static_cast<int>(rng() % (monthDays[month - 1] + (month == 2 && leap)));
        const int hour = static_cast<int>(rng() % 24), minute = static_cast<int>(rng() % 60),
                  second = static_cast<int>(rng() % 60);
        const int zoneMinutes = static_cast<int>(rng() % 1441) - 720;
        char text[40];
        std::snprintf(text, sizeof text, generalized ? "%04d%02d%02d%02d%02d%02d%c%02d%02d" : "%02d%02d%02d%02d%02d%02d%c%02d%02d",
                      generalized ? year : year % 100, month, day, hour, minute, second,
                      zoneMinutes < 0 ? '-' : '+', std::abs(zoneMinutes) / 60, std::abs(zoneMinutes) % 60);
        const long long expected = utc(year, month, day, hour, minute, second) - zoneMinutes * 60LL;
        const TimeResult result = timeOf(generalized ? 0x18 : 0x17, text);
        if ((year < 1970) != (expected < 0)) {
            EXPECT_EQ(result.error, 2u) << text;
            continue;
        }
        ASSERT_EQ(result.error, 0u) << text;
        ASSERT_EQ(result.seconds, expected) << text;
    }
}

QByteArray oidData(const char* text, unsigned* result = nullptr) {
    unsigned char out[64];
    unsigned capacity = sizeof out;
    const unsigned ok = ASNGetOIDData(text, out, &capacity);
    if (result != nullptr)
        *result = ok;
    return ok ? QByteArray(reinterpret_cast<char*>(out), static_cast<int>(capacity)) : QByteArray("<fail>");
}

QString oidName(const QByteArray& content) {
    char out[128];
    unsigned capacity = 100;
    if (!ASNGetOIDName(octets(content), content.size(), out, &capacity))
        return QStringLiteral("<fail>");
    EXPECT_EQ(capacity, std::strlen(out));
    return QString::fromLatin1(out);
}

TEST(AsnOid, TextToOctetsWithItsQuirks) {
    EXPECT_EQ(oidData("1.2.840.10045.2.1"), hex("2a8648ce3d0201"));
    EXPECT_EQ(oidData("1.2.156.10197.1.301"), hex("2a811ccf5501822d"));
    EXPECT_EQ(oidData("1.2.0.5"), hex("2a05")) << "zero arcs are dropped";
    EXPECT_EQ(oidData("1.2..5"), hex("2a05")) << "an empty arc reads as zero";
    EXPECT_EQ(oidData("2.999.1"), hex("3701")) << "first octet keeps its low 8 bits";
    EXPECT_EQ(oidData("1"), QByteArray());
    EXPECT_EQ(oidData(""), QByteArray());
    EXPECT_EQ(oidData("1.a"), QByteArray("<fail>"));
    EXPECT_EQ(oidData("1.2 "), QByteArray("<fail>"));
    EXPECT_EQ(ASNGetOIDData(nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(ASNGetOIDData("1.2", nullptr, nullptr), 0u);

    unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    unsigned capacity = 3;
    EXPECT_EQ(ASNGetOIDData("1.2.840.10045", out, &capacity), 1u);
    EXPECT_EQ(capacity, 3u) << "too small: nothing written";
    EXPECT_EQ(out[0], 0xEE);
    EXPECT_EQ(ASNGetOIDData("1.2.840", out, nullptr), 1u);
    EXPECT_EQ(ASNGetOIDData("1.2.840", nullptr, &capacity), 1u);
    EXPECT_EQ(capacity, 3u);
    EXPECT_EQ(out[0], 0xEE);
}

TEST(AsnOid, OctetsToTextWithItsQuirks) {
    EXPECT_EQ(oidName(hex("2a864886f70d010901")), QStringLiteral("1.2.840.113549.1.9.1"));
    EXPECT_EQ(oidName(hex("2a03")), QStringLiteral("1.2.3"));
    EXPECT_EQ(oidName(hex("5504")), QStringLiteral("2.5.4"));
    EXPECT_EQ(oidName(hex("2a")), QStringLiteral("<fail>"));
    EXPECT_EQ(oidName(hex("4f01")), QStringLiteral("1.W.1")) << "second arc is one character";
    EXPECT_EQ(oidName(hex("2a8fffffff7f")), QStringLiteral("1.2.-1")) << "printed as signed 32-bit";
    EXPECT_EQ(oidName(hex("2a0386")), QStringLiteral("1.2.3")) << "unfinished arc is not written";
    EXPECT_EQ(oidName(QByteArray(1, '\x2a') + QByteArray(48, '\x01')).size(), 99);
    EXPECT_EQ(oidName(QByteArray(1, '\x2a') + QByteArray(49, '\x01')), QStringLiteral("<fail>"));

    const QByteArray content = hex("2a03");
    char out[8] = "xxxxxxx";
    unsigned capacity = 4;
    EXPECT_EQ(ASNGetOIDName(octets(content), 2, out, &capacity), 1u);
    EXPECT_EQ(capacity, 4u) << "too small: nothing copied";
    EXPECT_EQ(out[0], 'x');
    capacity = 5;
    EXPECT_EQ(ASNGetOIDName(octets(content), 2, out, &capacity), 1u);
    EXPECT_STREQ(out, "1.2.3");
    EXPECT_EQ(ASNGetOIDName(octets(content), -1, out, &capacity), 0u);
    EXPECT_EQ(ASNGetOIDName(octets(content), 2, out, nullptr), 0u);
}

// Where the quirks do not apply both directions agree with OpenSSL.
TEST(AsnOid, AgreesWithOpenSsl) {
    std::mt19937 rng(7);
    for (int i = 0; i < 5000; ++i) {
        std::string text = std::to_string(rng() % 2) + "." + std::to_string(rng() % 10);
        const int more = 1 + static_cast<int>(rng() % 8);
        for (int k = 0; k < more; ++k)
            text += "." + std::to_string(1 + rng() % (k % 2 ? 0x7FFFFFFFu : 300u));
        ASN1_OBJECT* object = OBJ_txt2obj(text.c_str(), 1);
        ASSERT_NE(object, nullptr);
        const QByteArray reference(reinterpret_cast<const char*>(OBJ_get0_data(object)),
                                   static_cast<int>(OBJ_length(object)));
        ASN1_OBJECT_free(object);
        ASSERT_EQ(oidData(text.c_str()), reference) << text;
        if (text.size() < 100) {
            ASSERT_EQ(oidName(reference), QString::fromStdString(text));
        }
    }
}

TEST(AsnBitString, ValueRecordBothWays) {
    Tree node = parse(hex("030300abcd"));
    stASN_BIT_STRING value{};
    ASSERT_EQ(ASNGetBitStringData(node.get(), &value), 1u);
    EXPECT_EQ(value.unusedBits, 0);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(value.data), static_cast<int>(value.length)), hex("abcd"));
    std::free(value.data);

    const QByteArray payload = hex("f0");
    EXPECT_EQ(ASNSetBitStringData(node.get(), octets(payload), 1, 4), 1u);
    EXPECT_EQ(encode(node.get()), hex("030204f0"));
    const stASN_BIT_STRING empty{7, 0, nullptr};
    EXPECT_EQ(ASNSetBitStringDataEx(node.get(), &empty), 1u);
    EXPECT_EQ(encode(node.get()), hex("030107"));

    Tree octetString = parse(hex("040100"));
    EXPECT_EQ(ASNGetBitStringData(octetString.get(), &value), 0u);
    EXPECT_EQ(ASNSetBitStringData(octetString.get(), octets(payload), 1, 0), 0u);
    EXPECT_EQ(ASNSetBitStringDataEx(node.get(), nullptr), 0u);
    Tree noContent = parse(hex("0300"));
    EXPECT_EQ(ASNGetBitStringData(noContent.get(), &value), 0u);
}

}  // namespace
