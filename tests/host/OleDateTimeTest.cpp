#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/OleDateTime.h"

namespace {

struct Fields {
    int year, month, day, hour, minute, second;
};

void ExpectFields(const COleDateTime& value, const Fields& f) {
    ASSERT_EQ(value.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(value.GetYear(), f.year);
    EXPECT_EQ(value.GetMonth(), f.month);
    EXPECT_EQ(value.GetDay(), f.day);
    EXPECT_EQ(value.GetHour(), f.hour);
    EXPECT_EQ(value.GetMinute(), f.minute);
    EXPECT_EQ(value.GetSecond(), f.second);
}

COleDateTime Make(const Fields& f) {
    return COleDateTime(f.year, f.month, f.day, f.hour, f.minute, f.second);
}

// Expected day counts computed independently (Python datetime, with the OLE
// rule that before the base the fraction is subtracted from the day number).
TEST(OleDateTime, KnownDatesBothWays) {
    struct Case {
        Fields fields;
        double days;
        int dayOfWeek;  // 1 = Sunday
        int dayOfYear;
    };
    const Case cases[] = {
        {{1899, 12, 30, 0, 0, 0}, 0.0, 7, 364},
        {{1899, 12, 29, 6, 0, 0}, -1.25, 6, 363},
        {{1900, 3, 1, 0, 0, 0}, 61.0, 5, 60},      // 1900 is not a leap year
        {{2000, 2, 29, 12, 0, 0}, 36585.5, 3, 60},  // 2000 is
        {{1600, 2, 29, 23, 59, 59}, -109512.99998842593, 3, 60},
        {{100, 1, 1, 0, 0, 0}, -657434.0, 6, 1},
        {{9999, 12, 31, 0, 0, 0}, 2958465.0, 6, 365},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.fields.year) + "-" + std::to_string(c.fields.month) + "-" +
                     std::to_string(c.fields.day));
        const COleDateTime built = Make(c.fields);
        ASSERT_EQ(built.GetStatus(), COleDateTime::valid);
        EXPECT_NEAR(built.GetDays(), c.days, 1e-9);
        const COleDateTime read = COleDateTime::FromDays(c.days);
        ExpectFields(read, c.fields);
        EXPECT_EQ(read.GetDayOfWeek(), c.dayOfWeek);
        EXPECT_EQ(read.GetDayOfYear(), c.dayOfYear);
    }
}

// Every day of the OLE range against the standard library's calendar.
TEST(OleDateTime, EveryDayMatchesChronoCalendar) {
    using namespace std::chrono;
    const int first = -657434;  // 0100-01-01
    const int last = 2958465;   // 9999-12-31
    for (int n = first; n <= last; ++n) {
        const year_month_day expected{sys_days{days{n - 25569}}};
        std::tm tm{};
        // Noon, so both sides of the base take their fraction.
        const double value = n >= 0 ? n + 0.5 : n - 0.5;
        ASSERT_TRUE(COleDateTime::FromDays(value).GetAsTm(tm)) << n;
        ASSERT_EQ(tm.tm_year + 1900, int(expected.year())) << n;
        ASSERT_EQ(tm.tm_mon + 1, static_cast<int>(unsigned(expected.month()))) << n;
        ASSERT_EQ(tm.tm_mday, static_cast<int>(unsigned(expected.day()))) << n;
        ASSERT_EQ(tm.tm_hour, 12) << n;
        ASSERT_EQ(tm.tm_wday, static_cast<int>(weekday{sys_days{days{n - 25569}}}.c_encoding())) << n;
        if (n % 997 == 0) {
            const COleDateTime rebuilt(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, 12, 0, 0);
            ASSERT_EQ(rebuilt.GetDays(), value) << n;
        }
    }
    EXPECT_EQ(COleDateTime::FromDays(first - 1).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(COleDateTime::FromDays(last + 1).GetStatus(), COleDateTime::invalid);
}

TEST(OleDateTime, BreakingDownRoundsToTheNearestSecond) {
    const double second = 1.0 / 86400.0;
    const std::pair<double, const char*> cases[] = {
        {0.5 + 0.4 * second, "1899-12-30 12:00:00"},
        {0.5 + 0.6 * second, "1899-12-30 12:00:01"},
        {1.0 - 0.4 * second, "1899-12-31 00:00:00"},
        {1.0 - 0.6 * second, "1899-12-30 23:59:59"},
        {-1.99999999, "1899-12-30 00:00:00"},  // day -1 at 24:00 is day 0
        {-0.25, "1899-12-30 06:00:00"},        // -0 with a fraction is still day 0
        {45291.99999999, "2024-01-01 00:00:00"},  // across a year end
    };
    for (const auto& [days, text] : cases) {
        EXPECT_EQ(COleDateTime::FromDays(days).Format("%Y-%m-%d %H:%M:%S"), text) << days;
    }
    // Rounding up out of the last day leaves the range.
    EXPECT_EQ(COleDateTime::FromDays(2958465.999999999).GetStatus(), COleDateTime::invalid);
}

TEST(OleDateTime, OutOfRangeFieldsAreInvalid) {
    const Fields bad[] = {
        {2024, 0, 1, 0, 0, 0},   {2024, 13, 1, 0, 0, 0},  {2024, 1, 0, 0, 0, 0},   {2024, 1, 32, 0, 0, 0},
        {2023, 2, 29, 0, 0, 0},  {1900, 2, 29, 0, 0, 0},  {2024, 4, 31, 0, 0, 0},  {2024, 1, 1, 24, 0, 0},
        {2024, 1, 1, 0, 60, 0},  {2024, 1, 1, 0, 0, 60},  {2024, 1, 1, -1, 0, 0},  {99, 12, 31, 0, 0, 0},
        {10000, 1, 1, 0, 0, 0},
    };
    for (const Fields& f : bad) {
        COleDateTime value;
        EXPECT_EQ(value.SetDateTime(f.year, f.month, f.day, f.hour, f.minute, f.second), 1);
        EXPECT_EQ(value.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(value.GetYear(), -1);
        EXPECT_EQ(value.Format("%Y"), "");
        std::tm tm{};
        EXPECT_FALSE(value.GetAsTm(tm));
        // Arithmetic does not revive it.
        EXPECT_EQ((value + COleDateTimeSpan(1, 0, 0, 0)).GetStatus(), COleDateTime::invalid);
    }
    const double inf = std::numeric_limits<double>::infinity();
    for (double days : {std::nan(""), inf, -inf, 1e10, -1e10, 2958467.0, -657435.0}) {
        EXPECT_EQ(COleDateTime::FromDays(days).GetStatus(), COleDateTime::invalid) << days;
    }
    COleDateTime value(2024, 2, 29, 0, 0, 0);
    EXPECT_EQ(value.SetDateTime(2024, 2, 30, 0, 0, 0), 1);
    EXPECT_EQ(value.SetDateTime(2024, 2, 28, 0, 0, 0), 0);
    EXPECT_EQ(value.GetStatus(), COleDateTime::valid);
}

TEST(OleDateTime, SpanArithmeticFollowsTheCalendar) {
    struct Case {
        Fields start;
        long days;
        int hours, minutes, seconds;
        Fields expected;
    };
    const Case cases[] = {
        {{2023, 12, 31, 23, 0, 0}, 0, 1, 0, 0, {2024, 1, 1, 0, 0, 0}},
        {{2024, 3, 1, 0, 0, 0}, -1, 0, 0, 0, {2024, 2, 29, 0, 0, 0}},
        {{2024, 1, 1, 0, 0, 0}, 0, 0, 0, -1, {2023, 12, 31, 23, 59, 59}},
        {{2024, 6, 30, 12, 0, 0}, 0, 36, 0, 0, {2024, 7, 2, 0, 0, 0}},
        // Across the OLE base, where the raw doubles run backwards in the day.
        {{1899, 12, 29, 6, 0, 0}, 1, 0, 0, 0, {1899, 12, 30, 6, 0, 0}},
        {{1899, 12, 30, 3, 0, 0}, 0, -6, 0, 0, {1899, 12, 29, 21, 0, 0}},
        {{1899, 12, 28, 23, 0, 0}, 0, 2, 0, 0, {1899, 12, 29, 1, 0, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const COleDateTimeSpan span(c.days, c.hours, c.minutes, c.seconds);
        const COleDateTime start = Make(c.start);
        ExpectFields(start + span, c.expected);
        COleDateTime moved = start;
        moved += span;
        EXPECT_EQ(moved, Make(c.expected));
        moved -= span;
        EXPECT_EQ(moved, start);
        EXPECT_EQ(Make(c.expected) - span, start);
    }
    EXPECT_EQ((COleDateTime(9999, 12, 31, 0, 0, 0) + COleDateTimeSpan(1, 0, 0, 0)).GetStatus(),
              COleDateTime::invalid);
}

TEST(OleDateTime, OrderFollowsTimeAcrossTheBase) {
    // In raw doubles -1.75 (day -1, 18:00) is below -1.25 (day -1, 06:00).
    const COleDateTime morning = COleDateTime::FromDays(-1.25);
    const COleDateTime evening = COleDateTime::FromDays(-1.75);
    const COleDateTime base = COleDateTime::FromDays(0.0);
    EXPECT_TRUE(morning < evening);
    EXPECT_TRUE(evening < base);
    EXPECT_FALSE(evening < morning);
    EXPECT_EQ(COleDateTime::FromDays(-0.25), COleDateTime::FromDays(0.25));
    // Equal within the second a value shows as; a whole second apart is not.
    const double second = 1.0 / 86400.0;
    EXPECT_EQ(COleDateTime::FromDays(100.0), COleDateTime::FromDays(100.0 + 0.4 * second));
    EXPECT_TRUE(COleDateTime::FromDays(100.0) < COleDateTime::FromDays(100.0 + second));
    COleDateTime invalid;
    invalid.SetStatus(COleDateTime::invalid);
    EXPECT_TRUE(base < invalid);
    EXPECT_FALSE(invalid < base);
}

TEST(OleDateTime, FormatUsesStrftime) {
    const COleDateTime value(2024, 2, 29, 13, 5, 9);
    EXPECT_EQ(value.Format("%A %d %B %Y, day %j, %H:%M:%S %p"),
              "Thursday 29 February 2024, day 060, 13:05:09 PM");
    EXPECT_EQ(value.Format(""), "");
    EXPECT_EQ(value.Format(nullptr), "");
    std::string longPattern, longExpected;
    for (int i = 0; i < 200; ++i) {
        longPattern += "%Y|";
        longExpected += "2024|";
    }
    EXPECT_EQ(value.Format(longPattern.c_str()), longExpected);
}

TEST(OleDateTime, TmRoundTripAndCurrentTime) {
    std::tm tm{};
    ASSERT_TRUE(COleDateTime(2024, 12, 31, 23, 59, 59).GetAsTm(tm));
    EXPECT_EQ(tm.tm_yday, 365);
    EXPECT_EQ(tm.tm_wday, 2);
    EXPECT_EQ(tm.tm_isdst, -1);
    EXPECT_EQ(COleDateTime::FromTm(tm), COleDateTime(2024, 12, 31, 23, 59, 59));
    tm.tm_sec = 60;  // a leap second
    EXPECT_EQ(COleDateTime::FromTm(tm).GetSecond(), 59);
    tm.tm_mon = 12;
    EXPECT_EQ(COleDateTime::FromTm(tm).GetStatus(), COleDateTime::invalid);

    const std::time_t before = std::time(nullptr);
    const COleDateTime now = COleDateTime::GetCurrentTime();
    std::tm local{};
    localtime_r(&before, &local);
    ASSERT_EQ(now.GetStatus(), COleDateTime::valid);
    const double gapSeconds = (now.GetDays() - COleDateTime::FromTm(local).GetDays()) * 86400.0;
    EXPECT_GE(gapSeconds, -0.5);
    EXPECT_LE(gapSeconds, 5.0);
}

}  // namespace
