// UTCTime and GeneralizedTime content to seconds since 1970.
#include <cstdint>
#include <cstring>
#include <ctime>

#include "ztutil/asn.h"
#include "asn/asn_tags.h"

namespace {

const unsigned kTimeTextCapacity = 50;  // longer contents are not supported

const unsigned kErrorNone = 0;
const unsigned kErrorBadText = 1;
const unsigned kErrorOutOfRange = 2;

const std::int64_t kSecondsPerDay = 86400;
const std::int64_t kSecondsPerCommonYear = 31536000;

const unsigned char kMonthDays[2][12] = {
    {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
    {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLeapYear(std::int64_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

struct TimeFields {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// Reads the year (two digits mapped to 1950-2049, or four), month, day,
// hour, minute and optional seconds. Sets *error on any bad field.
void readDateAndTime(const char** cursor, bool twoDigitYear, TimeFields* fields, int* error) {
    if (twoDigitYear) {
        fields->year = mypint(cursor, 2, 0, 99, error);
        fields->year += fields->year < 50 ? 2000 : 1900;
    } else {
        fields->year = mypint(cursor, 4, 0, 9999, error);
    }
    fields->month = mypint(cursor, 2, 1, 12, error);
    fields->day = mypint(cursor, 2, 1, 31, error);
    fields->hour = mypint(cursor, 2, 0, 23, error);
    fields->minute = mypint(cursor, 2, 0, 59, error);
    fields->second = isDigit(**cursor) ? mypint(cursor, 2, 0, 59, error) : 0;
}

// Local time through the platform; -1 from mktime is out of range.
std::int64_t localSeconds(const TimeFields& fields, unsigned* error) {
    std::tm parts{};
    parts.tm_year = fields.year - 1900;
    parts.tm_mon = fields.month - 1;
    parts.tm_mday = fields.day;
    parts.tm_hour = fields.hour;
    parts.tm_min = fields.minute;
    parts.tm_sec = fields.second;
    parts.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&parts);
    if (seconds == static_cast<std::time_t>(-1)) {
        *error = kErrorOutOfRange;
        return 0;
    }
    return static_cast<std::int64_t>(seconds);
}

// Reads "Z" or "+hhmm" / "-hhmm" as an offset in minutes; the text must end
// right after it.
bool readZone(const char* cursor, int* offsetMinutes) {
    int error = 0;
    if (*cursor == 'Z') {
        *offsetMinutes = 0;
        ++cursor;
    } else if (*cursor == '+' || *cursor == '-') {
        const int sign = *cursor == '-' ? -1 : 1;
        ++cursor;
        const int hours = mypint(&cursor, 2, 0, 12, &error);
        const int minutes = mypint(&cursor, 2, 0, 59, &error);
        *offsetMinutes = sign * (hours * 60 + minutes);
    } else {
        return false;
    }
    return error == 0 && *cursor == '\0';
}

// Leap days between 1970 and the start of `year`, counted the way the
// result's sign check expects: the year's own February is in the month table.
std::int64_t leapDayCorrection(std::int64_t year) {
    std::int64_t days = 0;
    if (year < 1970) {
        days -= (1972 - year) / 4;
        for (std::int64_t century = 1900; year < 1901 && century >= year; century -= 100) {
            if (century % 400 != 0)
                ++days;
        }
    } else {
        days += (year - 1969) / 4;
        for (std::int64_t century = 2100; century < year; century += 100) {
            if (century % 400 != 0)
                --days;
        }
    }
    return days;
}

std::int64_t utcSeconds(const TimeFields& fields, int offsetMinutes) {
    std::int64_t seconds = fields.second + (std::int64_t{fields.minute} - offsetMinutes) * 60 +
                           std::int64_t{fields.hour} * 3600 +
                           (std::int64_t{fields.day} - 1) * kSecondsPerDay;
    const unsigned char* monthDays = kMonthDays[isLeapYear(fields.year) ? 1 : 0];
    for (int month = 1; month < fields.month; ++month)
        seconds += monthDays[month - 1] * kSecondsPerDay;
    seconds += (std::int64_t{fields.year} - 1970) * kSecondsPerCommonYear;
    return seconds + leapDayCorrection(fields.year) * kSecondsPerDay;
}

std::int64_t timeFromNode(const stASN_BLOCK_HEADER* node, unsigned* error) {
    if (node == nullptr || (node->tag != tag::kUtcTime && node->tag != tag::kGeneralizedTime) ||
        node->dataLength > kTimeTextCapacity) {
        *error = kErrorBadText;
        return 0;
    }
    char text[kTimeTextCapacity + 1] = {};
    if (node->dataLength != 0)
        std::memcpy(text, node->data, node->dataLength);

    const bool generalized = node->tag == tag::kGeneralizedTime;
    const char* cursor = text;
    TimeFields fields;
    int fieldError = 0;
    readDateAndTime(&cursor, !generalized, &fields, &fieldError);
    if (fieldError != 0) {
        *error = kErrorBadText;
        return 0;
    }
    if (generalized) {
        while (isDigit(*cursor) || *cursor == '.' || *cursor == ',')
            ++cursor;
        if (*cursor == '\0')
            return localSeconds(fields, error);
    }
    int offsetMinutes = 0;
    if (!readZone(cursor, &offsetMinutes)) {
        *error = kErrorBadText;
        return 0;
    }
    const std::int64_t seconds = utcSeconds(fields, offsetMinutes);
    if ((fields.year < 1970) != (seconds < 0)) {
        *error = kErrorOutOfRange;
        return 0;
    }
    return seconds;
}

}  // namespace

int mypint(const char** cursor, int n, int min, int max, int* error) {
    if (cursor == nullptr || (*cursor == nullptr && n > 0)) {
        if (error != nullptr)
            *error = 1;
        return 0;
    }
    unsigned value = 0;  // wraps like the two's complement sum it stands for
    for (int i = 0; i < n; ++i) {
        const char c = **cursor;
        if (!isDigit(c)) {
            if (error != nullptr)
                *error = 1;
            return 0;
        }
        value = value * 10 + static_cast<unsigned>(c - '0');
        ++*cursor;
    }
    const int result = static_cast<int>(value);
    if ((result < min || result > max) && error != nullptr)
        *error = 1;
    return result;
}

long long ASNGetTime(stASN_BLOCK_HEADER* node, unsigned int* errorCode) {
    unsigned error = kErrorNone;
    const std::int64_t seconds = timeFromNode(node, &error);
    if (errorCode != nullptr)
        *errorCode = error;
    return error == kErrorNone ? seconds : 0;
}
