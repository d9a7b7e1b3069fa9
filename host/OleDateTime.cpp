#include "host/OleDateTime.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// 1899-12-30, day 0 of the OLE calendar, lies 25569 days before 1970-01-01.
constexpr std::int64_t kOleDayOfUnixEpoch = 25569;

// The OLE range: 0100-01-01 to 9999-12-31. Day numbers a little outside it are
// still broken down so that the year check, not the double, decides.
constexpr int kMinYear = 100;
constexpr int kMaxYear = 9999;
constexpr double kMinDays = -657436.0;
constexpr double kMaxDays = 2958467.0;

struct CivilDate {
    std::int64_t year;
    int month;  // 1..12
    int day;    // 1..31
};

bool IsLeapYear(std::int64_t year) noexcept {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(std::int64_t year, int month) noexcept {
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

// Days from 1970-01-01 to a proleptic Gregorian date. Counting from March
// puts the leap day last in the year, so each 400-year era has a fixed
// 146097 days and a day of the era follows from plain integer division.
std::int64_t DaysFromCivil(std::int64_t year, int month, int day) noexcept {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);                      // 0..399
    const auto monthFromMarch = static_cast<unsigned>(month > 2 ? month - 3 : month + 9);  // 0..11
    const unsigned dayOfYear = (153 * monthFromMarch + 2) / 5 + static_cast<unsigned>(day) - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

// The inverse of DaysFromCivil.
CivilDate CivilFromDays(std::int64_t days) noexcept {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(days - era * 146097);  // 0..146096
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    const int month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    const std::int64_t year = static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0);
    return {year, month, day};
}

// An OLE day count split into its day number and the second of that day.
struct DaySecond {
    std::int64_t day;     // OLE day number (0 = 1899-12-30)
    std::int64_t second;  // 0..86399
};

// OLE keeps the fraction positive for dates before the base: -1.25 is day -1
// at 06:00. So the day is the value truncated toward zero and the time its
// distance from it. Both steps are exact in double arithmetic. The time is
// rounded to the nearest second, as OLE does when it breaks a date down, so a
// value a hair before midnight shows as 00:00:00 of the next day.
std::optional<DaySecond> Split(double days) noexcept {
    if (!std::isfinite(days) || days < kMinDays || days > kMaxDays) return std::nullopt;
    const double whole = std::trunc(days);
    const double fraction = std::fabs(days - whole);
    DaySecond result{static_cast<std::int64_t>(whole),
                     static_cast<std::int64_t>(std::llround(fraction * static_cast<double>(kSecondsPerDay)))};
    if (result.second >= kSecondsPerDay) {
        result.second -= kSecondsPerDay;
        result.day += 1;
    }
    return result;
}

double Join(std::int64_t day, std::int64_t second) noexcept {
    const double fraction = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
    return day >= 0 ? static_cast<double>(day) + fraction : static_cast<double>(day) - fraction;
}

// OLE values do not run monotonically before the base (-1.25 is later than
// -1.0). Arithmetic and comparison use a linear count instead, in which the
// fraction always moves forward in time.
double ToLinear(double days) noexcept {
    if (days >= 0.0) return days;
    const double whole = std::trunc(days);
    return whole + (whole - days);
}

double FromLinear(double linear) noexcept {
    if (linear >= 0.0) return linear;
    const double whole = std::floor(linear);
    const double fraction = linear - whole;
    return whole - fraction;
}

}  // namespace

COleDateTimeSpan::COleDateTimeSpan(long days, int hours, int minutes, int seconds)
    : m_days(static_cast<double>(days) +
             (static_cast<double>(hours) * 3600.0 + static_cast<double>(minutes) * 60.0 + static_cast<double>(seconds)) /
                 static_cast<double>(kSecondsPerDay)) {}

COleDateTime::COleDateTime(int year, int month, int day, int hour, int minute, int second) {
    SetDateTime(year, month, day, hour, minute, second);
}

COleDateTime COleDateTime::FromDays(double days) noexcept {
    COleDateTime result;
    const auto split = Split(days);
    if (!split) {
        result.m_status = invalid;
        return result;
    }
    const std::int64_t year = CivilFromDays(split->day - kOleDayOfUnixEpoch).year;
    if (year < kMinYear || year > kMaxYear) {
        result.m_status = invalid;
        return result;
    }
    result.m_days = days;
    return result;
}

COleDateTime COleDateTime::FromTm(const std::tm& tm) {
    COleDateTime result;
    const long long year = static_cast<long long>(tm.tm_year) + 1900;
    const long long month = static_cast<long long>(tm.tm_mon) + 1;
    if (year < kMinYear || year > kMaxYear || month < 1 || month > 12) {
        result.SetDateTime(0, 0, 0, 0, 0, 0);  // marks it invalid
        return result;
    }
    // A leap second (tm_sec 60) has no place in a day of 86400 seconds.
    const int second = tm.tm_sec == 60 ? 59 : tm.tm_sec;
    result.SetDateTime(static_cast<int>(year), static_cast<int>(month), tm.tm_mday, tm.tm_hour, tm.tm_min, second);
    return result;
}

COleDateTime COleDateTime::GetCurrentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return FromTm(local);
}

int COleDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second) {
    const bool ok = year >= kMinYear && year <= kMaxYear && month >= 1 && month <= 12 && day >= 1 &&
                    day <= DaysInMonth(year, month) && hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 &&
                    second >= 0 && second <= 59;
    if (!ok) {
        m_days = 0.0;
        m_status = invalid;
        return 1;
    }
    const std::int64_t oleDay = DaysFromCivil(year, month, day) + kOleDayOfUnixEpoch;
    m_days = Join(oleDay, std::int64_t{hour} * 3600 + std::int64_t{minute} * 60 + second);
    m_status = valid;
    return 0;
}

bool COleDateTime::GetAsTm(std::tm& out) const {
    if (m_status != valid) return false;
    const auto split = Split(m_days);
    if (!split) return false;
    const std::int64_t unixDay = split->day - kOleDayOfUnixEpoch;
    const CivilDate date = CivilFromDays(unixDay);
    if (date.year < kMinYear || date.year > kMaxYear) return false;

    out = std::tm{};
    out.tm_year = static_cast<int>(date.year - 1900);
    out.tm_mon = date.month - 1;
    out.tm_mday = date.day;
    out.tm_hour = static_cast<int>(split->second / 3600);
    out.tm_min = static_cast<int>(split->second / 60 % 60);
    out.tm_sec = static_cast<int>(split->second % 60);
    // 1970-01-01 was a Thursday (tm_wday 4).
    out.tm_wday = static_cast<int>(((unixDay % 7) + 7 + 4) % 7);
    out.tm_yday = static_cast<int>(unixDay - DaysFromCivil(date.year, 1, 1));
    out.tm_isdst = -1;
    return true;
}

int COleDateTime::GetYear() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_year + 1900 : -1;
}

int COleDateTime::GetMonth() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_mon + 1 : -1;
}

int COleDateTime::GetDay() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_mday : -1;
}

int COleDateTime::GetHour() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_hour : -1;
}

int COleDateTime::GetMinute() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_min : -1;
}

int COleDateTime::GetSecond() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_sec : -1;
}

int COleDateTime::GetDayOfWeek() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_wday + 1 : -1;
}

int COleDateTime::GetDayOfYear() const {
    std::tm tm{};
    return GetAsTm(tm) ? tm.tm_yday + 1 : -1;
}

std::string COleDateTime::Format(const char* pattern) const {
    std::tm tm{};
    if (pattern == nullptr || *pattern == '\0' || !GetAsTm(tm)) return {};
    // strftime returns 0 both for "buffer too small" and for an empty result;
    // a trailing blank makes every result non-empty so the two can be told apart.
    const std::string padded = std::string(pattern) + ' ';
    for (std::size_t capacity = 128; capacity <= 65536; capacity *= 4) {
        std::vector<char> buffer(capacity);
        const std::size_t length = std::strftime(buffer.data(), buffer.size(), padded.c_str(), &tm);
        if (length != 0) return std::string(buffer.data(), length - 1);
    }
    return {};
}

COleDateTime COleDateTime::operator+(const COleDateTimeSpan& span) const {
    if (m_status != valid) return *this;
    return FromDays(FromLinear(ToLinear(m_days) + span.GetTotalDays()));
}

COleDateTime COleDateTime::operator-(const COleDateTimeSpan& span) const {
    if (m_status != valid) return *this;
    return FromDays(FromLinear(ToLinear(m_days) - span.GetTotalDays()));
}

COleDateTime& COleDateTime::operator+=(const COleDateTimeSpan& span) {
    *this = *this + span;
    return *this;
}

COleDateTime& COleDateTime::operator-=(const COleDateTimeSpan& span) {
    *this = *this - span;
    return *this;
}

namespace {

// The second a valid value stands for, counted from the base. Comparing these
// instead of the doubles keeps the last-bit noise of span arithmetic (a day
// added and taken away again) from making equal times unequal, and is a total
// order because it is an order of integers.
std::int64_t SecondKey(double days) noexcept {
    const auto split = Split(days);
    return split ? split->day * kSecondsPerDay + split->second : 0;
}

}  // namespace

bool COleDateTime::operator==(const COleDateTime& other) const noexcept {
    if (m_status != other.m_status) return false;
    return m_status != valid || SecondKey(m_days) == SecondKey(other.m_days);
}

bool COleDateTime::operator<(const COleDateTime& other) const noexcept {
    if (m_status != other.m_status) return m_status < other.m_status;
    return m_status == valid && SecondKey(m_days) < SecondKey(other.m_days);
}
