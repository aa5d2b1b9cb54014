// Day counts of the proleptic Gregorian calendar, computed in 400-year eras
// (146097 days each) with years starting on 1 March, so that the leap day is
// the last day of a year.
#include "date/civil_days.h"

namespace ztutil {
namespace {

const std::int64_t kDaysPerEra = 146097;
const std::int64_t kDaysFrom0000To1970 = 719468;  // from 0000-03-01 to 1970-01-01

}  // namespace

std::int64_t daysFromCivil(std::int64_t year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;                           // 0-399
    const std::int64_t marchMonth = month > 2 ? month - 3 : month + 9;         // 0 = March
    const std::int64_t dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;       // 0-365
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * kDaysPerEra + dayOfEra - kDaysFrom0000To1970;
}

CivilDate civilFromDays(std::int64_t days) {
    days += kDaysFrom0000To1970;
    const std::int64_t era = (days >= 0 ? days : days - (kDaysPerEra - 1)) / kDaysPerEra;
    const std::int64_t dayOfEra = days - era * kDaysPerEra;  // 0-146096
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
    CivilDate date;
    date.day = static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    date.month = static_cast<int>(marchMonth < 10 ? marchMonth + 3 : marchMonth - 9);
    date.year = yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0);
    return date;
}

}  // namespace ztutil
