// IPTC date and time texts, reading them back, and the date macros, under
// several time zones. POSIX TZ strings need no zone database and have no
// daylight saving, so every expected text below is exact.
#include <gtest/gtest.h>

#include <filesystem>

#include "iptc/internal/DateText.h"
#include "tests/codec/CodecFixture.h"

namespace vliptc::test {
namespace {

using iptc::ExpandDateMacro;
using iptc::FormatIptcTime;

const char* const kZones[] = {"UTC0", "CET-1", "EST5", "IST-5:30"};

int SecondsOfDay(const COleDateTime& t) {
    return t.GetHour() * 3600 + t.GetMinute() * 60 + t.GetSecond();
}

// Distance between two times of day, across midnight.
int DayDistance(int a, int b) {
    const int d = std::abs(a - b) % 86400;
    return std::min(d, 86400 - d);
}

TEST(Dates, FormatTimeLocalKeepsTheNoWrapZoneRule) {
    struct Case {
        const char* zone;
        int hour, minute, second;
        const char* expected;
    };
    const Case cases[] = {
        {"UTC0", 10, 20, 30, "102030+0000"},
        {"UTC0", 0, 30, 0, "003000+0000"},
        {"CET-1", 10, 20, 30, "102030+0100"},
        {"CET-1", 0, 30, 0, "003000-2300"},  // universal 23:30 the day before
        {"CET-1", 23, 30, 0, "233000+0100"},
        {"EST5", 10, 20, 30, "102030-0500"},
        {"EST5", 22, 0, 0, "220000+1900"},  // universal 03:00 the day after
        {"IST-5:30", 10, 45, 0, "104500+0530"},
        // Hour and minute differences are taken alone and summed for the sign:
        // 6 and -30 at 10:20 (universal 04:50), -18 and -30 at 02:00.
        {"IST-5:30", 10, 20, 30, "102030-0630"},
        {"IST-5:30", 2, 0, 0, "020000-1830"},
        {"NST3:30", 10, 45, 0, "104500+-430"},  // -4 and 30: the sum is positive
    };
    for (const Case& c : cases) {
        ScopedTZ zone(c.zone);
        const COleDateTime time(2024, 1, 15, c.hour, c.minute, c.second);
        EXPECT_EQ(FormatIptcTime(time, false), c.expected) << c.zone;
        // The universal form takes the value as it stands, in any zone.
        EXPECT_EQ(FormatIptcTime(time, true), std::string(c.expected).substr(0, 6) + "+0000") << c.zone;
    }
    Codec codec;
    EXPECT_EQ(codec.FormatDate(COleDateTime(2024, 2, 9, 23, 59, 59)), "20240209");
    EXPECT_EQ(codec.FormatTime(COleDateTime(2024, 2, 9, 7, 8, 9), true), "070809+0000");
}

TEST(Dates, FormatTimeFollowsDaylightSavingWithZoneData) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin")) {
        GTEST_SKIP() << "no zone database";
    }
    ScopedTZ zone("Europe/Berlin");
    EXPECT_EQ(FormatIptcTime(COleDateTime(2024, 7, 15, 12, 0, 0), false), "120000+0200");
    EXPECT_EQ(FormatIptcTime(COleDateTime(2024, 1, 15, 12, 0, 0), false), "120000+0100");
}

TEST(Dates, GetFieldTimeAppliesTheZoneTheSameInEveryTZ) {
    struct Case {
        const char* text;
        int expected;  // seconds of the day; -1: false
    };
    const Case cases[] = {
        {"102030", 37230},
        {"102030+0100", 37230 + 3600},  // "+" adds, "-" subtracts
        {"102030-0130", 37230 - 5400},
        {"102030-0000", 37230},
        {"233000+0100", 1800},          // across midnight: the time of day only
        {"003000-2300", 5400},          // what FormatTime gives at local 00:30, CET
        {"102030+abcd", 37230},         // a zone that is no number reads as zero
        {"10203", -1},
        {"102030+01000", -1},
    };
    for (const char* tz : kZones) {
        ScopedTZ zone(tz);
        for (const Case& c : cases) {
            Codec codec;
            codec.Fields() = {{35, {Text(c.text)}}};
            CVLProperty out(std::string("unchanged"));
            const bool ok = codec.GetFieldTime(35, out);
            ASSERT_EQ(ok, c.expected >= 0) << tz << " " << c.text;
            if (ok) {
                EXPECT_EQ(out.GetKind(), CVLProperty::kTime);
                EXPECT_EQ(SecondsOfDay(out.GetDateTime()), c.expected) << tz << " " << c.text;
            } else {
                EXPECT_EQ(out.String(), "unchanged");
            }
        }
    }
    Codec codec;
    codec.Fields() = {{35, {}}};
    CVLProperty out;
    EXPECT_FALSE(codec.GetFieldTime(35, out));  // present without values
    EXPECT_FALSE(codec.GetFieldTime(60, out));  // absent
}

TEST(Dates, NowReadBackAsTimeCarriesTheZoneShift) {
    // "#NOW" is the local time with the zone; reading it adds the zone again,
    // so only in universal time does it give the current time of day.
    const std::pair<const char*, int> zones[] = {{"UTC0", 0}, {"CET-1", 3600}, {"EST5", -5 * 3600}};
    for (const auto& [tz, shift] : zones) {
        ScopedTZ zone(tz);
        Codec codec;
        codec.Fields() = {{60, {Text(" #now ")}}};
        const int now = SecondsOfDay(COleDateTime::GetCurrentTime());
        CVLProperty out;
        ASSERT_TRUE(codec.GetFieldTime(60, out)) << tz;
        EXPECT_LE(DayDistance(SecondsOfDay(out.GetDateTime()), now + shift), 2) << tz;
    }
}

TEST(Dates, GetFieldDate) {
    const std::pair<const char*, const char*> cases[] = {
        {"20240229", "2024-02-29"},
        {"1999 1 2", "1999-01-02"},  // each part read as a number, blanks allowed
        {"202402", nullptr},
        {"202402290", nullptr},
    };
    for (const auto& [text, expected] : cases) {
        Codec codec;
        codec.Fields() = {{55, {Text(text)}}};
        CVLProperty out(std::string("unchanged"));
        EXPECT_EQ(codec.GetFieldDate(55, out), expected != nullptr) << text;
        EXPECT_EQ(out.String(), expected != nullptr ? expected : "unchanged") << text;
        if (expected != nullptr) {
            EXPECT_EQ(out.GetKind(), CVLProperty::kDate);
        }
    }
}

TEST(DateMacros, DayArithmeticAcrossMonthAndYearEnds) {
    struct Case {
        COleDateTime now;
        const char* word;
        const char* expected;
    };
    const Case cases[] = {
        {COleDateTime(2023, 12, 31, 23, 59, 59), "#TODAY", "20231231"},
        {COleDateTime(2023, 12, 31, 23, 59, 59), "#INSERTDATE", "20231231"},
        {COleDateTime(2023, 12, 31, 23, 59, 59), "#TOMORROW", "20240101"},
        {COleDateTime(2023, 12, 31, 0, 0, 0), "#2DAYSFROMTODAY", "20240102"},
        {COleDateTime(2024, 2, 28, 12, 0, 0), "#3DAYSFROMTODAY", "20240302"},
        {COleDateTime(2023, 12, 25, 12, 0, 0), "#1WEEKFROMTODAY", "20240101"},
        {COleDateTime(2023, 2, 20, 12, 0, 0), "#2WEEKSFROMTODAY", "20230306"},
        {COleDateTime(2024, 3, 1, 0, 0, 0), "#YESTERDAY", "20240229"},
        {COleDateTime(2024, 1, 1, 0, 0, 1), "#TWODAYSAGO", "20231230"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ExpandDateMacro(c.word, c.now, std::nullopt), c.expected) << c.word;
    }
    ScopedTZ zone("CET-1");
    const COleDateTime now(2024, 5, 6, 7, 8, 9);
    EXPECT_EQ(ExpandDateMacro("#NOW", now, std::nullopt), "070809+0100");
    EXPECT_EQ(ExpandDateMacro("#INSERTTIME", now, std::nullopt), "070809+0100");
    EXPECT_EQ(ExpandDateMacro("#FILEDATE", now, std::nullopt), std::nullopt);
    EXPECT_EQ(ExpandDateMacro("#FILETIME", now, now), "070809+0100");
    EXPECT_EQ(ExpandDateMacro("#TODAYX", now, now), std::nullopt);
}

TEST(DateMacros, TranslateMatchesTheUpperCasedTrimmedWord) {
    ScopedTZ zone("UTC0");
    Codec codec;
    // Expansions of the real clock; read until the day did not change meanwhile.
    for (;;) {
        const COleDateTime before = COleDateTime::GetCurrentTime();
        const std::string today = iptc::FormatIptcDate(before);
        const std::string tomorrow = iptc::FormatIptcDate(before + COleDateTimeSpan(1, 0, 0, 0));
        const std::pair<const char*, std::string> cases[] = {
            {"#TODAY", today},       {"#today", today},      {"  #Today\t", today}, {"#InsertDate", today},
            {" #tomorrow", tomorrow}, {"#TODAY.", "#TODAY."}, {"TODAY", "TODAY"},    {"x #TODAY", "x #TODAY"},
            {"#", "#"},              {"", ""},               {" #filedate ", " #filedate "},  // no file status
        };
        std::vector<std::string> got;
        for (const auto& c : cases) {
            got.push_back(codec.Translate(Text(c.first)));
        }
        if (iptc::FormatIptcDate(COleDateTime::GetCurrentTime()) != today) {
            continue;
        }
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            EXPECT_EQ(got[i], cases[i].second) << "'" << cases[i].first << "'";
        }
        break;
    }
    CVLProperty number;
    number.SetNumber16(5);
    EXPECT_EQ(codec.Translate(number), "5");
}

TEST(DateMacros, FileMacrosUseTheRecordedWriteTimeAsLocalTime) {
    // 2021-03-04 05:06:07.999 UTC
    platform::FileStatus status;
    status.times.write.nanoseconds = 1614834367LL * 1000000000LL + 999999999LL;
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"UTC0", "20210304", "050607+0000"},
        {"CET-1", "20210304", "060607+0100"},
        {"IST-5:30", "20210304", "103607+0530"},
        {"XST10", "20210303", "190607+1400"},  // the day before, and no wrap
    };
    for (const auto& [tz, date, time] : cases) {
        ScopedTZ zone(tz);
        Codec codec;
        codec.SetWriteFileStatus(status);
        EXPECT_EQ(codec.Translate(Text("#FILEDATE")), date) << tz;
        EXPECT_EQ(codec.Translate(Text("#filetime")), time) << tz;
        codec.SetWriteFileStatus(std::nullopt);
        EXPECT_EQ(codec.Translate(Text("#FILEDATE")), "#FILEDATE") << tz;
    }
}

}  // namespace
}  // namespace vliptc::test
