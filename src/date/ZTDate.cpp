// CZTDate: construction with contract checks, calendar arithmetic and texts.
#include "date/ZTDate.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "date/civil_days.h"
#include "zt_assert.h"

namespace {

// Where hosts see the contract checks reported.
const char kSourceName[] = "ZTDate.cpp";
const unsigned kFieldsLine = 15;
const unsigned kTimeOfDayLine = 20;
const unsigned kTextFieldsLine = 74;
const unsigned kTextTimeOfDayLine = 79;
const unsigned kMonthLine = 124;
const char kFieldsFunction[] = "CZTDate::CZTDate(int, int, int, int, int, int)";
const char kTextFunction[] = "CZTDate::CZTDate(std::string)";
const char kMonthFunction[] = "int CZTDate::GetMonthDay(int, int)";

const int kMonthDays[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool isLeap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int monthLength(int year, int month) {
    return month == 2 && isLeap(year) ? 29 : kMonthDays[month];
}

// hour 0-23, minute and second 0-60; negatives fail as large unsigned values.
bool timeOfDayInRange(int hour, int minute, int second) {
    return static_cast<unsigned>(hour) < 24 && static_cast<unsigned>(minute) < 61 &&
           static_cast<unsigned>(second) < 61;
}

// The (up to) `width` characters at `position` as a decimal number; an empty
// piece gives 0. Throws std::out_of_range when `position` is past the end.
int readNumber(const std::string& text, std::size_t position, std::size_t width) {
    return static_cast<int>(std::strtol(text.substr(position, width).c_str(), nullptr, 10));
}

// printf-formatted text cut to `length` characters.
template <typename... Args>
std::string formatFixed(std::size_t length, const char* format, Args... args) {
    char text[64];
    std::snprintf(text, sizeof text, format, args...);
    return std::string(text, std::min(length, std::strlen(text)));
}

}  // namespace

CZTDate::CZTDate(int /*unused*/) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    year = local.tm_year + 1900;
    month = local.tm_mon + 1;
    day = local.tm_mday;
    hour = local.tm_hour;
    minute = local.tm_min;
    second = local.tm_sec;
}

CZTDate::CZTDate(int year, int month, int day, int hour, int minute, int second)
    : year(year), month(month), day(day), hour(hour), minute(minute), second(second) {
    const bool dateValid = month >= 1 && month <= 12 && day >= 1 && day <= GetMonthDay(year, month);
    ZT_CONTRACT_ASSERT(dateValid, "false", kSourceName, kFieldsLine, kFieldsFunction);
    ZT_CONTRACT_ASSERT(timeOfDayInRange(hour, minute, second), "false", kSourceName, kTimeOfDayLine,
                       kFieldsFunction);
}

namespace {

// The six fields of an ASN.1 time text as CZTDate reads them.
struct TextFields {
    int year, month, day, hour, minute, second;
};

// Throws std::out_of_range when a field starts past the end of the text.
TextFields readTextFields(const std::string& text) {
    TextFields fields;
    std::size_t position;
    if (text.size() < 14) {
        // Two-digit year: always 20YY, no century pivot.
        fields.year = readNumber(text, 0, 2) + 2000;
        position = 2;
    } else {
        fields.year = readNumber(text, 0, 4);
        position = 4;
    }
    fields.month = readNumber(text, position, 2);
    fields.day = readNumber(text, position + 2, 2);
    fields.hour = readNumber(text, position + 4, 2);
    fields.minute = readNumber(text, position + 6, 2);
    fields.second = readNumber(text, position + 8, 2);
    return fields;
}

bool dateInRange(int year, int month, int day) {
    return month >= 1 && month <= 12 && day >= 1 && day <= monthLength(year, month);
}

}  // namespace

CZTDate::CZTDate(std::string text) {
    const TextFields fields = readTextFields(text);
    year = fields.year;
    month = fields.month;
    day = fields.day;
    hour = fields.hour;
    minute = fields.minute;
    second = fields.second;

    const bool dateValid = month >= 1 && month <= 12 && day >= 1 && day <= GetMonthDay(year, month);
    ZT_CONTRACT_ASSERT(dateValid, "false", kSourceName, kTextFieldsLine, kTextFunction);
    ZT_CONTRACT_ASSERT(timeOfDayInRange(hour, minute, second), "false", kSourceName,
                       kTextTimeOfDayLine, kTextFunction);
}

bool CZTDate::IsValidText(const std::string& text) {
    // The last field, the second, starts at 10 (two-digit year) or 12.
    const std::size_t secondPosition = text.size() < 14 ? 10 : 12;
    if (text.size() < secondPosition)
        return false;
    const TextFields f = readTextFields(text);
    return dateInRange(f.year, f.month, f.day) && timeOfDayInRange(f.hour, f.minute, f.second);
}

bool CZTDate::IsLeapYear(int year) {
    return isLeap(year);
}

int CZTDate::GetMonthDay(int year, int month) {
    ZT_CONTRACT_ASSERT(month > 0 && month < 13, "month > 0 && month < 13", kSourceName, kMonthLine,
                       kMonthFunction);
    return monthLength(year, month);
}

bool CZTDate::operator<(const CZTDate& other) const {
    if (year != other.year)
        return year < other.year;
    if (month != other.month)
        return month < other.month;
    if (day != other.day)
        return day < other.day;
    return timeOfDayBefore(other);
}

bool CZTDate::timeOfDayBefore(const CZTDate& other) const {
    if (hour != other.hour)
        return hour < other.hour;
    if (minute != other.minute)
        return minute < other.minute;
    return second < other.second;
}

bool CZTDate::operator==(const CZTDate& other) const {
    return year == other.year && month == other.month && day == other.day && hour == other.hour &&
           minute == other.minute && second == other.second;
}

bool CZTDate::operator>=(const CZTDate& other) const {
    return !(*this < other);
}

bool CZTDate::operator<=(const CZTDate& other) const {
    return *this < other || *this == other;
}

bool CZTDate::operator>(const CZTDate& other) const {
    return !(*this <= other);
}

bool CZTDate::operator!=(const CZTDate& other) const {
    return !(*this == other);
}

// Moving month by month (subtracting or adding each month's length until the
// day fits) lands on the same date as moving by the day count, which is what
// this computes, in constant time. Years beyond the int range wrap.
CZTDate CZTDate::shiftedBy(std::int64_t days) const {
    const ztutil::CivilDate date =
        ztutil::civilFromDays(ztutil::daysFromCivil(year, month, day) + days);
    CZTDate shifted(*this);
    shifted.year = static_cast<std::int32_t>(static_cast<std::uint32_t>(date.year));
    shifted.month = date.month;
    shifted.day = date.day;
    return shifted;
}

CZTDate CZTDate::operator+(int days) const {
    return shiftedBy(days);
}

CZTDate CZTDate::operator-(int days) const {
    return shiftedBy(-static_cast<std::int64_t>(days));
}

CZTDate& CZTDate::operator+=(int days) {
    *this = *this + days;
    return *this;
}

CZTDate& CZTDate::operator-=(int days) {
    *this = *this - days;
    return *this;
}

CZTDate& CZTDate::operator++() {
    *this = *this + 1;
    return *this;
}

CZTDate CZTDate::operator++(int) {
    const CZTDate before(*this);
    *this = *this + 1;
    return before;
}

// Stepping the earlier value one day at a time stops once its date reaches
// the later date, or one day beyond when its time of day is still before the
// later one's. The step count is therefore the difference of the day counts
// plus one for a later time of day, which is computed directly.
int CZTDate::operator-(const CZTDate& other) const {
    const bool thisIsEarlier = *this < other;
    const CZTDate& earlier = thisIsEarlier ? *this : other;
    const CZTDate& later = thisIsEarlier ? other : *this;
    std::int64_t steps = ztutil::daysFromCivil(later.year, later.month, later.day) -
                         ztutil::daysFromCivil(earlier.year, earlier.month, earlier.day);
    if (earlier.timeOfDayBefore(later))
        steps += 1;
    const std::int64_t signedSteps = thisIsEarlier ? -steps : steps;
    return static_cast<int>(static_cast<std::uint32_t>(signedSteps));
}

void CZTDate::Show() const {
    std::printf("%d-%d-%d %d:%d:%d\n", year, month, day, hour, minute, second);
    std::fflush(stdout);
}

std::time_t CZTDate::GetDateTime() const {
    std::tm fields{};
    fields.tm_year = static_cast<int>(static_cast<std::int64_t>(year) - 1900);
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

std::string CZTDate::GetDateString() const {
    return formatFixed(13, "%02d%02d%02d%02d%02d%02dZ", year % 100, month, day, hour, minute,
                       second);
}

std::string CZTDate::GetGTDateString() const {
    return formatFixed(15, "%04d%02d%02d%02d%02d%02dZ", year, month, day, hour, minute, second);
}
