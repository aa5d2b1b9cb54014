// CZTDate: texts, calendar arithmetic against a day-by-day and month-by-month
// stepping reference, and the contract checks that stop the process.
#include <gtest/gtest.h>

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <cstdio>
#include <ctime>
#include <random>
#include <stdexcept>
#include <string>

#include "date/ZTDate.h"
#include "support/capture.h"

namespace {

// Reference calendar, written from the definitions: month lengths from a
// table, days moved month by month, differences counted day by day.
struct Plain {
    int year, month, day, hour, minute, second;
};

bool leap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int length(int year, int month) {
    static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && leap(year) ? 29 : days[month];
}

Plain stepForward(Plain p, long days) {
    long d = p.day + days;
    while (d > length(p.year, p.month)) {
        d -= length(p.year, p.month);
        if (++p.month > 12) {
            p.month = 1;
            ++p.year;
        }
    }
    p.day = static_cast<int>(d);
    return p;
}

Plain stepBackward(Plain p, long days) {
    long d = p.day - days;
    while (d < 1) {
        if (--p.month < 1) {
            p.month = 12;
            --p.year;
        }
        d += length(p.year, p.month);
    }
    p.day = static_cast<int>(d);
    return p;
}

Plain shift(const Plain& p, long days) {
    return days >= 0 ? stepForward(p, days) : stepBackward(p, -days);
}

bool before(const Plain& a, const Plain& b) {
    const int left[6] = {a.year, a.month, a.day, a.hour, a.minute, a.second};
    const int right[6] = {b.year, b.month, b.day, b.hour, b.minute, b.second};
    return std::lexicographical_compare(left, left + 6, right, right + 6);
}

int countSteps(const Plain& self, const Plain& other) {
    const bool selfEarlier = before(self, other);
    Plain earlier = selfEarlier ? self : other;
    const Plain later = selfEarlier ? other : self;
    int steps = 0;
    while (before(earlier, later)) {
        earlier = stepForward(earlier, 1);
        ++steps;
    }
    return selfEarlier ? -steps : steps;
}

CZTDate make(const Plain& p) {
    return CZTDate(p.year, p.month, p.day, p.hour, p.minute, p.second);
}

std::string text(const Plain& p) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d%02d%02d%02d%02d%02dZ", p.year, p.month, p.day,
                  p.hour, p.minute, p.second);
    return buffer;
}

Plain randomDate(std::mt19937& rng, int firstYear, int lastYear) {
    Plain p;
    p.year = firstYear + static_cast<int>(rng() % (lastYear - firstYear + 1));
    p.month = 1 + static_cast<int>(rng() % 12);
    p.day = 1 + static_cast<int>(rng() % length(p.year, p.month));
    p.hour = static_cast<int>(rng() % 24);
    p.minute = static_cast<int>(rng() % 61);
    p.second = static_cast<int>(rng() % 61);
    return p;
}

// Escapes a glibc assertion message for a death-test regular expression.
std::string assertion(const std::string& line, const std::string& function,
                      const std::string& expression) {
    std::string message = "ZTDate.cpp:" + line + ": " + function + ": Assertion `" + expression +
                          "' failed";
    std::string escaped;
    for (char c : message) {
        if (std::string("()[]{}.*+?^$|\\").find(c) != std::string::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

const char kFields[] = "CZTDate::CZTDate(int, int, int, int, int, int)";
const char kText[] = "CZTDate::CZTDate(std::string)";

TEST(ZTDateTest, TextForms) {
    EXPECT_EQ(CZTDate(std::string("240229120000Z")).GetGTDateString(), "20240229120000Z");
    EXPECT_EQ(CZTDate(std::string("991231235959Z")).GetGTDateString(), "20991231235959Z");
    EXPECT_EQ(CZTDate(std::string("20240101235960Z")).GetGTDateString(), "20240101235960Z");
    EXPECT_EQ(CZTDate(std::string("19500101000000")).GetGTDateString(), "19500101000000Z");
    // Anything after the seconds is ignored; a piece starting at the very
    // end reads as 0.
    // Fourteen characters or more always start with a four-digit year.
    EXPECT_EQ(CZTDate(std::string("240101120000.1+08")).GetGTDateString(), "24010112000000Z");
    EXPECT_EQ(CZTDate(std::string("2401011200")).GetGTDateString(), "20240101120000Z");
    EXPECT_THROW(CZTDate(std::string("24")), std::out_of_range);
    EXPECT_THROW(CZTDate(std::string("240101")), std::out_of_range);
    EXPECT_THROW(CZTDate(std::string("")), std::out_of_range);
    try {
        CZTDate(std::string("2401"));
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range& error) {
        EXPECT_NE(std::string(error.what()).find("basic_string::substr"), std::string::npos);
    }

    CZTDate date(2005, 7, 8, 9, 10, 11);
    EXPECT_EQ(date.GetDateString(), "050708091011Z");
    EXPECT_EQ(date.GetGTDateString(), "20050708091011Z");
    EXPECT_EQ(CZTDate(1999, 12, 31, 0, 0, 0).GetDateString(), "991231000000Z");
    // Years the formats cannot hold are cut to the format's length.
    EXPECT_EQ(CZTDate(12345, 1, 2, 3, 4, 5).GetGTDateString(), "123450102030405");
    EXPECT_EQ(CZTDate(12345, 1, 2, 3, 4, 5).GetDateString(), "450102030405Z");

    ztutil_test::StdoutCapture capture;
    CZTDate(2024, 1, 5, 9, 3, 7).Show();
    EXPECT_EQ(capture.text(), "2024-1-5 9:3:7\n");
}

TEST(ZTDateTest, IsValidTextTellsWhetherTheTextConstructs) {
    for (const char* good : {"240229120000Z", "991231235959Z", "20240101235960Z", "2401011200",
                             "240101120000.1+08", "000101000000", "24010112000"}) {
        EXPECT_TRUE(CZTDate::IsValidText(good)) << good;
        CZTDate date{std::string(good)};  // must not stop the process
        (void)date;
    }
    for (const char* bad : {"", "24", "240101", "240101120", "230229120000Z", "241301120000Z",
                            "240100120000Z", "2401001200", "20240101240000Z", "240101236100Z",
                            "2401012300-1Z", "abcdefghijklm"}) {
        EXPECT_FALSE(CZTDate::IsValidText(bad)) << bad;
    }
}

TEST(ZTDateTest, LeapYearsAndMonthLengths) {
    CZTDate any(2024, 1, 1, 0, 0, 0);
    EXPECT_FALSE(any.IsLeapYear(1900));
    EXPECT_TRUE(any.IsLeapYear(2000));
    EXPECT_TRUE(any.IsLeapYear(2024));
    EXPECT_FALSE(any.IsLeapYear(2023));
    EXPECT_EQ(any.GetMonthDay(2024, 2), 29);
    EXPECT_EQ(any.GetMonthDay(2100, 2), 28);
    EXPECT_EQ(any.GetMonthDay(2023, 4), 30);
    EXPECT_EQ(any.GetMonthDay(2023, 12), 31);
}

TEST(ZTDateTest, Comparisons) {
    const Plain base = {2024, 6, 15, 12, 30, 30};
    for (int field = 0; field < 6; ++field) {
        Plain later = base;
        int* parts[6] = {&later.year, &later.month, &later.day, &later.hour, &later.minute,
                         &later.second};
        *parts[field] += 1;
        const CZTDate a = make(base), b = make(later);
        EXPECT_TRUE(a < b && a <= b && a != b && !(a > b) && !(a >= b) && !(a == b)) << field;
        EXPECT_TRUE(b > a && b >= a && !(b < a) && !(b <= a)) << field;
    }
    // The year outranks everything after it.
    EXPECT_LT(CZTDate(2023, 12, 31, 23, 59, 59), CZTDate(2024, 1, 1, 0, 0, 0));
    EXPECT_TRUE(make(base) == make(base) && make(base) <= make(base) && make(base) >= make(base));
}

TEST(ZTDateTest, DayArithmeticEdgeCases) {
    EXPECT_EQ((CZTDate(2023, 12, 31, 8, 0, 0) + 1).GetGTDateString(), "20240101080000Z");
    EXPECT_EQ((CZTDate(2024, 3, 1, 0, 0, 0) - 1).GetGTDateString(), "20240229000000Z");
    EXPECT_EQ((CZTDate(2023, 3, 1, 0, 0, 0) + (-1)).GetGTDateString(), "20230228000000Z");
    EXPECT_EQ((CZTDate(2023, 2, 28, 0, 0, 0) - (-1)).GetGTDateString(), "20230301000000Z");
    // The extremes of the day count, against Qt's calendar.
    for (qint64 days : {2147483647LL, -2147483648LL}) {
        const QDate expected = QDate(2000, 1, 1).addDays(days);
        char buffer[64];
        // Qt counts years without a year 0; this calendar has one.
        const int year = expected.year() < 0 ? expected.year() + 1 : expected.year();
        std::snprintf(buffer, sizeof buffer, "%04d%02d%02d010203Z", year, expected.month(),
                      expected.day());
        EXPECT_EQ((CZTDate(2000, 1, 1, 1, 2, 3) + static_cast<int>(days)).GetGTDateString(),
                  std::string(buffer).substr(0, 15))
            << days;
    }

    CZTDate date(2024, 2, 28, 1, 2, 3);
    CZTDate before = date++;
    EXPECT_EQ(before.GetGTDateString(), "20240228010203Z");
    EXPECT_EQ(date.GetGTDateString(), "20240229010203Z");
    EXPECT_EQ((++date).GetGTDateString(), "20240301010203Z");
    EXPECT_EQ((date -= 366).GetGTDateString(), "20230301010203Z");
    EXPECT_EQ((date += -1).GetGTDateString(), "20230228010203Z");

    EXPECT_EQ(CZTDate(2020, 1, 2, 0, 0, 0) - CZTDate(2020, 1, 1, 12, 0, 0), 1);
    EXPECT_EQ(CZTDate(2020, 1, 2, 12, 0, 0) - CZTDate(2020, 1, 1, 0, 0, 0), 2);
    EXPECT_EQ(CZTDate(2020, 1, 1, 0, 0, 0) - CZTDate(2020, 1, 2, 12, 0, 0), -2);
    EXPECT_EQ(CZTDate(2020, 1, 1, 0, 0, 0) - CZTDate(2020, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(CZTDate(2020, 1, 1, 0, 0, 1) - CZTDate(2020, 1, 1, 0, 0, 0), 1);
}

TEST(ZTDateTest, ShiftsMatchMonthByMonthStepping) {
    std::mt19937 rng(11);
    // Every offset within two years of dates around leap days and centuries.
    const Plain bases[] = {{1900, 2, 28, 1, 0, 0}, {2000, 2, 29, 2, 0, 0}, {2100, 3, 1, 3, 0, 0},
                           {2024, 12, 31, 4, 0, 0}, {401, 1, 1, 5, 0, 0}};
    for (const Plain& base : bases) {
        for (int days = -800; days <= 800; ++days) {
            ASSERT_EQ((make(base) + days).GetGTDateString(), text(shift(base, days)))
                << text(base) << " + " << days;
            ASSERT_EQ((make(base) - days).GetGTDateString(), text(shift(base, -days)))
                << text(base) << " - " << days;
        }
    }
    for (int i = 0; i < 3000; ++i) {
        const Plain base = randomDate(rng, 2800, 5000);
        const int days = static_cast<int>(rng() % 2000001) - 1000000;
        ASSERT_EQ((make(base) + days).GetGTDateString(), text(shift(base, days)))
            << text(base) << " + " << days;
    }
}

TEST(ZTDateTest, DifferenceMatchesDayByDayStepping) {
    std::mt19937 rng(12);
    for (int i = 0; i < 3000; ++i) {
        const Plain a = randomDate(rng, 1895, 2105);
        Plain b = shift(a, static_cast<long>(rng() % 4001) - 2000);
        b.hour = static_cast<int>(rng() % 24);
        b.minute = static_cast<int>(rng() % 61);
        b.second = static_cast<int>(rng() % 61);
        if (i % 7 == 0)  // same time of day
            b.hour = a.hour, b.minute = a.minute, b.second = a.second;
        ASSERT_EQ(make(a) - make(b), countSteps(a, b)) << text(a) << " - " << text(b);
    }
    // Long spans.
    for (int i = 0; i < 10; ++i) {
        const Plain a = randomDate(rng, 1, 3000);
        const Plain b = randomDate(rng, 1, 3000);
        ASSERT_EQ(make(a) - make(b), countSteps(a, b)) << text(a) << " - " << text(b);
    }
}

TEST(ZTDateTest, LocalTimeConversions) {
    const CZTDate date(2024, 7, 1, 13, 14, 15);
    const QDateTime local(QDate(2024, 7, 1), QTime(13, 14, 15), Qt::LocalTime);
    EXPECT_EQ(static_cast<qint64>(date.GetDateTime()), local.toSecsSinceEpoch());

    const std::time_t before = std::time(nullptr);
    const CZTDate now(0);
    const std::time_t after = std::time(nullptr);
    EXPECT_GE(now.GetDateTime(), before - 1);
    EXPECT_LE(now.GetDateTime(), after + 1);
}

TEST(ZTDateDeathTest, FieldChecksStopTheProcess) {
    EXPECT_DEATH(CZTDate(2024, 13, 1, 0, 0, 0), assertion("15", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 0, 1, 0, 0, 0), assertion("15", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 1, 0, 0, 0, 0), assertion("15", kFields, "false"));
    EXPECT_DEATH(CZTDate(2023, 2, 29, 0, 0, 0), assertion("15", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 1, 1, 24, 0, 0), assertion("20", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 1, 1, -1, 0, 0), assertion("20", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 1, 1, 0, 61, 0), assertion("20", kFields, "false"));
    EXPECT_DEATH(CZTDate(2024, 1, 1, 0, 0, -1), assertion("20", kFields, "false"));
    // Minute and second 60 are accepted.
    EXPECT_EQ(CZTDate(2024, 1, 1, 23, 60, 60).GetGTDateString(), "20240101236060Z");
}

TEST(ZTDateDeathTest, TextChecksStopTheProcess) {
    EXPECT_DEATH(CZTDate(std::string("230229120000Z")), assertion("74", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("241301120000Z")), assertion("74", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("240100120000Z")), assertion("74", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("2401001200")), assertion("74", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("20240101240000Z")), assertion("79", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("240101236100Z")), assertion("79", kText, "false"));
    EXPECT_DEATH(CZTDate(std::string("2401012300-1Z")), assertion("79", kText, "false"));
}

TEST(ZTDateDeathTest, MonthLengthCheckStopsTheProcess) {
    CZTDate any(2024, 1, 1, 0, 0, 0);
    EXPECT_DEATH(any.GetMonthDay(2024, 13),
                 assertion("124", "int CZTDate::GetMonthDay(int, int)", "month > 0 && month < 13"));
    EXPECT_DEATH(any.GetMonthDay(2024, 0),
                 assertion("124", "int CZTDate::GetMonthDay(int, int)", "month > 0 && month < 13"));
}

}  // namespace
