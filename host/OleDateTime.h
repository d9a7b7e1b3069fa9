#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// A whole-day-and-time span for COleDateTime arithmetic, kept as days (double).
// Fields may be negative or exceed their unit (25 hours is a day and an hour).
class COleDateTimeSpan {
public:
    COleDateTimeSpan() = default;
    COleDateTimeSpan(long days, int hours, int minutes, int seconds);
    double GetTotalDays() const noexcept { return m_days; }

private:
    double m_days = 0.0;
};

// An OLE automation date-time: days since 1899-12-30 00:00 as a double, the
// time of day as the fraction. As in the OLE convention, for dates before the
// base the fraction counts forward from the day too (-1.25 is 1899-12-29 06:00).
// Values are naive: no time zone is attached; GetCurrentTime gives local time.
// The calendar is the proleptic Gregorian one over 0100-01-01..9999-12-31;
// a value outside that range is invalid. Breaking a value down rounds it to
// the nearest second, as OLE does (0.99999999 is 1899-12-31 00:00:00).
// Arithmetic and ordering follow time, not the raw double (see operator==).
class COleDateTime {
public:
    enum DateTimeStatus { valid = 0, invalid = 1 };

    COleDateTime() = default;  // 1899-12-30 00:00:00, valid
    COleDateTime(int year, int month, int day, int hour, int minute, int second);
    // From the raw day count; invalid when not finite or outside the range.
    static COleDateTime FromDays(double days) noexcept;
    // From a broken-down time (tm_year since 1900, tm_mon 0..11); the fields
    // are checked as by SetDateTime, not normalised. A leap second reads as 59.
    static COleDateTime FromTm(const std::tm& tm);
    static COleDateTime GetCurrentTime();

    // Sets the value; an out-of-range field (month 13, day 30 of February,
    // hour 24, year outside 100..9999) makes it invalid, with days 0.
    // Returns 0 on success, 1 when invalid.
    int SetDateTime(int year, int month, int day, int hour, int minute, int second);

    DateTimeStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeStatus status) noexcept { m_status = status; }
    double GetDays() const noexcept { return m_days; }

    // The broken-down fields; -1 when invalid.
    int GetYear() const;
    int GetMonth() const;      // 1..12
    int GetDay() const;        // 1..31
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetDayOfWeek() const;  // 1 = Sunday .. 7 = Saturday
    int GetDayOfYear() const;  // 1..366

    // Broken-down form (tm_isdst = -1); false when invalid.
    bool GetAsTm(std::tm& out) const;
    // strftime over the broken-down time, under the current LC_TIME locale;
    // empty when invalid or when the pattern is null or empty.
    std::string Format(const char* pattern) const;

    // An invalid value stays invalid; a result outside the range is invalid.
    COleDateTime operator+(const COleDateTimeSpan& span) const;
    COleDateTime operator-(const COleDateTimeSpan& span) const;
    COleDateTime& operator+=(const COleDateTimeSpan& span);
    COleDateTime& operator-=(const COleDateTimeSpan& span);
    // Valid values compare by the second they break down to, so -0.25 equals
    // 0.25 and a day added and taken away again gives an equal value; all
    // invalid values are equal and sort after every valid one.
    bool operator==(const COleDateTime& other) const noexcept;
    bool operator<(const COleDateTime& other) const noexcept;

private:
    double m_days = 0.0;
    DateTimeStatus m_status = valid;
};
