// CZTDate: texts, calendar arithmetic against Qt's calendar, and the
// contract checks that stop the process.
#include <QDate>
#include <QDateTime>
#include <ctime>
#include <stdexcept>
#include <tuple>

#include "date/ZTDate.h"
#include "support/common.h"

namespace {

// The reference calendar is Qt's (proleptic Gregorian); the years used here are all positive.
struct Plain {
    int year, month, day, hour, minute, second;
    QDate date() const { return QDate(year, month, day); }
    std::tuple<int, int, int> timeOfDay() const { return std::tie(hour, minute, second); }
};

Plain shift(Plain p, long days) {
    const QDate moved = p.date().addDays(days);
    p.year = moved.year(), p.month = moved.month(), p.day = moved.day();
    return p;
}

// Days stepped from the earlier to reach or pass the later, negative when `self` is earlier:
// the calendar days between them, plus one when the later one's time of day is further on.
int countSteps(const Plain& self, const Plain& other) {
    const qint64 days = other.date().daysTo(self.date());
    const bool selfLaterInDay = self.timeOfDay() > other.timeOfDay();
    if (days > 0 || (days == 0 && selfLaterInDay))
        return static_cast<int>(days + (selfLaterInDay ? 1 : 0));
    return static_cast<int>(days - (other.timeOfDay() > self.timeOfDay() ? 1 : 0));
}

CZTDate make(const Plain& p) {
    return CZTDate(p.year, p.month, p.day, p.hour, p.minute, p.second);
}

std::string text(const Plain& p) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d%02d%02d%02d%02d%02dZ", p.year, p.month, p.day, p.hour, p.minute,
                  p.second);
    return buffer;
}

Plain randomDate(std::mt19937& rng, int firstYear, int lastYear) {
    Plain p;
    p.year = firstYear + static_cast<int>(rng() % (lastYear - firstYear + 1));
    p.month = 1 + static_cast<int>(rng() % 12);
    p.day = 1 + static_cast<int>(rng() % QDate(p.year, p.month, 1).daysInMonth());
    p.hour = static_cast<int>(rng() % 24);
    p.minute = static_cast<int>(rng() % 61);
    p.second = static_cast<int>(rng() % 61);
    return p;
}

TEST(ZTDateTest, TextForms) {
    const std::pair<const char*, const char*> texts[] = {
        {"240229120000Z", "20240229120000Z"}, {"991231235959Z", "20991231235959Z"},
        {"20240101235960Z", "20240101235960Z"}, {"19500101000000", "19500101000000Z"},
        {"2401011200", "20240101120000Z"},
        {"240101120000.1+08", "24010112000000Z"}};  // fourteen characters or more: a four-digit year
    for (const auto& t : texts) {
        EXPECT_TRUE(CZTDate::IsValidText(t.first)) << t.first;
        EXPECT_EQ(CZTDate(std::string(t.first)).GetGTDateString(), t.second) << t.first;
    }
    for (const char* good : {"000101000000", "24010112000"}) {
        EXPECT_TRUE(CZTDate::IsValidText(good)) << good;
        CZTDate{std::string(good)};  // must not stop the process
    }
    for (const char* bad : {"", "24", "240101", "240101120", "230229120000Z", "241301120000Z", "240100120000Z",
                            "2401001200", "20240101240000Z", "240101236100Z", "2401012300-1Z", "abcdefghijklm"})
        EXPECT_FALSE(CZTDate::IsValidText(bad)) << bad;
    for (const char* tooShort : {"24", "240101", ""})
        EXPECT_THROW(CZTDate(std::string(tooShort)), std::out_of_range) << tooShort;
    try {
        CZTDate(std::string("2401"));
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range& error) {
        EXPECT_NE(std::string(error.what()).find("basic_string::substr"), std::string::npos);
    }

    EXPECT_EQ(CZTDate(2005, 7, 8, 9, 10, 11).GetDateString(), "050708091011Z");
    EXPECT_EQ(CZTDate(1999, 12, 31, 0, 0, 0).GetDateString(), "991231000000Z");
    // Years the formats cannot hold are cut to the format's length.
    EXPECT_EQ(CZTDate(12345, 1, 2, 3, 4, 5).GetGTDateString(), "123450102030405");
    EXPECT_EQ(CZTDate(12345, 1, 2, 3, 4, 5).GetDateString(), "450102030405Z");
    ztutil_test::StdoutCapture capture;
    CZTDate(2024, 1, 5, 9, 3, 7).Show();
    EXPECT_EQ(capture.text(), "2024-1-5 9:3:7\n");
}

TEST(ZTDateTest, LeapYearsMonthLengthsAndComparisons) {
    CZTDate any(2024, 1, 1, 0, 0, 0);
    EXPECT_TRUE(!any.IsLeapYear(1900) && any.IsLeapYear(2000) && any.IsLeapYear(2024) && !any.IsLeapYear(2023));
    EXPECT_EQ(any.GetMonthDay(2024, 2) + any.GetMonthDay(2100, 2) + any.GetMonthDay(2023, 4), 29 + 28 + 30);
    const Plain base = {2024, 6, 15, 12, 30, 30};
    for (int field = 0; field < 6; ++field) {
        Plain later = base;
        int* parts[6] = {&later.year, &later.month, &later.day, &later.hour, &later.minute, &later.second};
        *parts[field] += 1;
        const CZTDate a = make(base), b = make(later);
        EXPECT_TRUE(a < b && a <= b && a != b && !(a > b) && !(a >= b) && !(a == b)) << field;
        EXPECT_TRUE(b > a && b >= a && !(b < a) && !(b <= a)) << field;
    }
    EXPECT_LT(CZTDate(2023, 12, 31, 23, 59, 59), CZTDate(2024, 1, 1, 0, 0, 0));
    EXPECT_TRUE(make(base) == make(base) && make(base) <= make(base) && make(base) >= make(base));
}

TEST(ZTDateTest, IncrementsExtremesAndPartDays) {
    CZTDate date(2024, 2, 28, 1, 2, 3);
    EXPECT_EQ((date++).GetGTDateString(), "20240228010203Z");
    EXPECT_EQ(date.GetGTDateString(), "20240229010203Z");
    EXPECT_EQ((++date).GetGTDateString(), "20240301010203Z");
    EXPECT_EQ((date -= 366).GetGTDateString(), "20230301010203Z");
    EXPECT_EQ((date += -1).GetGTDateString(), "20230228010203Z");
    // The extremes of the day count, against Qt's calendar (which has no year 0).
    for (qint64 days : {2147483647LL, -2147483648LL}) {
        const QDate expected = QDate(2000, 1, 1).addDays(days);
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%04d%02d%02d010203Z", expected.year() + (expected.year() < 0),
                      expected.month(), expected.day());
        EXPECT_EQ((CZTDate(2000, 1, 1, 1, 2, 3) + static_cast<int>(days)).GetGTDateString(),
                  std::string(buffer).substr(0, 15)) << days;
    }
    // A part-day difference counts as a whole day.
    EXPECT_EQ(CZTDate(2020, 1, 2, 0, 0, 0) - CZTDate(2020, 1, 1, 12, 0, 0), 1);
    EXPECT_EQ(CZTDate(2020, 1, 2, 12, 0, 0) - CZTDate(2020, 1, 1, 0, 0, 0), 2);
    EXPECT_EQ(CZTDate(2020, 1, 1, 0, 0, 0) - CZTDate(2020, 1, 2, 12, 0, 0), -2);
    EXPECT_EQ(CZTDate(2020, 1, 1, 0, 0, 1) - CZTDate(2020, 1, 1, 0, 0, 0), 1);
}

TEST(ZTDateTest, ShiftsMatchQtsCalendar) {
    // Every offset within two years of dates around leap days and centuries.
    for (const Plain& base : {Plain{1900, 2, 28, 1, 0, 0}, Plain{2000, 2, 29, 2, 0, 0}, Plain{2100, 3, 1, 3, 0, 0},
                              Plain{2024, 12, 31, 4, 0, 0}, Plain{401, 1, 1, 5, 0, 0}}) {
        for (int days = -800; days <= 800; ++days) {
            ASSERT_EQ((make(base) + days).GetGTDateString(), text(shift(base, days))) << text(base) << " + " << days;
            ASSERT_EQ((make(base) - days).GetGTDateString(), text(shift(base, -days))) << text(base) << " - " << days;
        }
    }
    std::mt19937 rng(11);
    for (int i = 0; i < 3000; ++i) {
        const Plain base = randomDate(rng, 2800, 5000);
        const int days = static_cast<int>(rng() % 2000001) - 1000000;
        ASSERT_EQ((make(base) + days).GetGTDateString(), text(shift(base, days))) << text(base) << " + " << days;
    }
}

TEST(ZTDateTest, DifferenceMatchesQtsCalendar) {
    std::mt19937 rng(12);
    for (int i = 0; i < 3010; ++i) {
        const Plain a = i < 3000 ? randomDate(rng, 1895, 2105) : randomDate(rng, 1, 3000);
        Plain b = i < 3000 ? shift(a, static_cast<long>(rng() % 4001) - 2000) : randomDate(rng, 1, 3000);
        if (i % 7 != 0)  // else the same time of day
            b.hour = int(rng() % 24), b.minute = int(rng() % 61), b.second = int(rng() % 61);
        ASSERT_EQ(make(a) - make(b), countSteps(a, b)) << text(a) << " - " << text(b);
    }
}

TEST(ZTDateTest, LocalTimeConversions) {
    const QDateTime local(QDate(2024, 7, 1), QTime(13, 14, 15), Qt::LocalTime);
    EXPECT_EQ(static_cast<qint64>(CZTDate(2024, 7, 1, 13, 14, 15).GetDateTime()), local.toSecsSinceEpoch());
    const std::time_t start = std::time(nullptr);
    const CZTDate now(0);
    EXPECT_GE(now.GetDateTime(), start - 1);
    EXPECT_LE(now.GetDateTime(), std::time(nullptr) + 1);
}

// glibc's assertion message, escaped for a death-test regular expression.
std::string assertion(const std::string& line, const std::string& function, const std::string& expression) {
    std::string escaped;
    for (char c : "ZTDate.cpp:" + line + ": " + function + ": Assertion `" + expression + "' failed") {
        if (std::string("()[]{}.*+?^$|\\").find(c) != std::string::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

TEST(ZTDateDeathTest, ContractChecksStopTheProcess) {
    const char kFields[] = "CZTDate::CZTDate(int, int, int, int, int, int)";
    const std::tuple<int, int, int, int, int, int, const char*> fields[] = {
        {2024, 13, 1, 0, 0, 0, "15"}, {2024, 0, 1, 0, 0, 0, "15"}, {2024, 1, 0, 0, 0, 0, "15"},
        {2023, 2, 29, 0, 0, 0, "15"}, {2024, 1, 1, 24, 0, 0, "20"}, {2024, 1, 1, -1, 0, 0, "20"},
        {2024, 1, 1, 0, 61, 0, "20"}, {2024, 1, 1, 0, 0, -1, "20"}};
    for (const auto& f : fields) {
        EXPECT_DEATH(CZTDate(std::get<0>(f), std::get<1>(f), std::get<2>(f), std::get<3>(f), std::get<4>(f),
                             std::get<5>(f)),
                     assertion(std::get<6>(f), kFields, "false"));
    }
    EXPECT_EQ(CZTDate(2024, 1, 1, 23, 60, 60).GetGTDateString(), "20240101236060Z") << "minute and second 60 pass";
    const std::pair<const char*, const char*> texts[] = {
        {"230229120000Z", "74"}, {"241301120000Z", "74"}, {"240100120000Z", "74"}, {"2401001200", "74"},
        {"20240101240000Z", "79"}, {"240101236100Z", "79"}, {"2401012300-1Z", "79"}};
    for (const auto& t : texts)
        EXPECT_DEATH(CZTDate(std::string(t.first)), assertion(t.second, "CZTDate::CZTDate(std::string)", "false"));
    CZTDate any(2024, 1, 1, 0, 0, 0);
    for (int month : {13, 0})
        EXPECT_DEATH(any.GetMonthDay(2024, month),
                     assertion("124", "int CZTDate::GetMonthDay(int, int)", "month > 0 && month < 13"));
}

}  // namespace
