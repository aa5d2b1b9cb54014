// CZTDate: a plain calendar date-time (no time zone, no fraction of a second)
// with whole-day arithmetic and the ASN.1 time texts.
//
// Values are always valid: every constructor checks its fields and stops the
// process (an assertion that holds in every build type) when they are out of
// range, because an invalid date here is a programming error.
#ifndef ZTUTIL_SRC_DATE_ZTDATE_H
#define ZTUTIL_SRC_DATE_ZTDATE_H

#include <cstdint>
#include <ctime>
#include <string>

class CZTDate {
public:
    // The current local time; the argument is ignored.
    explicit CZTDate(int unused);
    // year, month (1-12), day (1 to the month's length), hour (0-23),
    // minute and second (0-60).
    CZTDate(int year, int month, int day, int hour, int minute, int second);
    // ASN.1 time text: "YYMMDDhhmmss..." when shorter than 14 characters
    // (the year is 2000 + YY, always), else "YYYYMMDDhhmmss...". Anything
    // after the seconds is ignored. Throws std::out_of_range when the text
    // ends before the month, day, hour, minute or second starts.
    explicit CZTDate(std::string text);

    // Whether CZTDate(text) would build a value: false where that
    // constructor would throw or stop the process. Lets callers that read
    // untrusted text (certificate times) skip a bad time instead.
    static bool IsValidText(const std::string& text);

    bool IsLeapYear(int year);
    // Days of the month; the month must be 1-12.
    int GetMonthDay(int year, int month);

    // Chronological order (field by field, year first).
    bool operator<(const CZTDate& other) const;
    bool operator>=(const CZTDate& other) const;
    bool operator==(const CZTDate& other) const;
    bool operator<=(const CZTDate& other) const;
    bool operator>(const CZTDate& other) const;
    bool operator!=(const CZTDate& other) const;

    // Whole days later (earlier for a negative count); the time of day stays.
    CZTDate operator+(int days) const;
    CZTDate operator-(int days) const;
    CZTDate& operator+=(int days);
    CZTDate& operator-=(int days);
    CZTDate& operator++();
    CZTDate operator++(int);

    // How many one-day steps take the earlier of the two to a value that is
    // no longer earlier than the other (a part-day difference counts as one
    // more step); negative when this value is the earlier one.
    int operator-(const CZTDate& other) const;

    // "2024-1-5 9:3:7\n" on standard output, flushed.
    void Show() const;
    // Seconds since 1970 of the fields read as local time.
    std::time_t GetDateTime() const;
    // UTCTime text "YYMMDDhhmmssZ" of year % 100 (13 characters).
    std::string GetDateString() const;
    // GeneralizedTime text "YYYYMMDDhhmmssZ" (15 characters). A year that
    // needs more than four digits (or a negative one) does not fit: the text
    // is cut to 15 characters, and to 13 for GetDateString.
    std::string GetGTDateString() const;

private:
    // The same time of day `days` days later (earlier when negative).
    CZTDate shiftedBy(std::int64_t days) const;
    bool timeOfDayBefore(const CZTDate& other) const;

    std::int32_t year = 0;
    std::int32_t month = 1;
    std::int32_t day = 1;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
};

#endif
