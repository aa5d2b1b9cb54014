// Proleptic Gregorian dates to and from a day count (days since 1970-01-01),
// for any year an int holds.
#ifndef ZTUTIL_SRC_DATE_CIVIL_DAYS_H
#define ZTUTIL_SRC_DATE_CIVIL_DAYS_H

#include <cstdint>

namespace ztutil {

struct CivilDate {
    std::int64_t year;
    int month;  // 1-12
    int day;    // 1-31
};

// `month` must be 1-12 and `day` 1 to the month's length.
std::int64_t daysFromCivil(std::int64_t year, int month, int day);
CivilDate civilFromDays(std::int64_t days);

}  // namespace ztutil

#endif
