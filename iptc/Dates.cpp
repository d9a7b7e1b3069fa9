// IPTC dates ("YYYYMMDD"), times ("HHMMSS+hhmm") and the date macros that a
// user types into a field and that expand when a block is encoded.

#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "iptc/IPTC.h"
#include "iptc/internal/DateText.h"

namespace vliptc::iptc {

namespace {

enum class MacroKind { kDate, kTime, kFileDate, kFileTime };

struct Macro {
    std::string_view word;
    MacroKind kind;
    long days;  // offset from now, kDate only
};

// Matched in this order; the first match wins. "#INSERTDATE" and
// "#INSERTTIME" are older names of "#TODAY" and "#NOW" that templates still use.
constexpr std::array<Macro, 13> kMacros{{
    {"#TODAY", MacroKind::kDate, 0},
    {"#NOW", MacroKind::kTime, 0},
    {"#TOMORROW", MacroKind::kDate, 1},
    {"#YESTERDAY", MacroKind::kDate, -1},
    {"#TWODAYSAGO", MacroKind::kDate, -2},
    {"#FILEDATE", MacroKind::kFileDate, 0},
    {"#FILETIME", MacroKind::kFileTime, 0},
    {"#INSERTDATE", MacroKind::kDate, 0},
    {"#INSERTTIME", MacroKind::kTime, 0},
    {"#2DAYSFROMTODAY", MacroKind::kDate, 2},
    {"#3DAYSFROMTODAY", MacroKind::kDate, 3},
    {"#1WEEKFROMTODAY", MacroKind::kDate, 7},
    {"#2WEEKSFROMTODAY", MacroKind::kDate, 14},
}};

bool IsBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string FormatIptcDate(const COleDateTime& date) {
    return date.Format("%Y%m%d");
}

std::string FormatIptcTime(const COleDateTime& time, bool universal) {
    if (universal) {
        return time.Format("%H%M%S+0000");
    }
    std::tm broken{};
    if (!time.GetAsTm(broken)) {
        return {};
    }
    broken.tm_isdst = -1;  // let the zone rules decide daylight saving
    const std::time_t moment = std::mktime(&broken);
    std::tm local{};
    std::tm utc{};
    if (localtime_r(&moment, &local) == nullptr || gmtime_r(&moment, &utc) == nullptr) {
        return {};
    }
    const int hours = local.tm_hour - utc.tm_hour;
    const int minutes = local.tm_min - utc.tm_min;
    char text[64];
    if (hours + minutes >= 0) {
        std::snprintf(text, sizeof text, "%02d%02d%02d+%02d%02d", local.tm_hour, local.tm_min, local.tm_sec, hours,
                      minutes);
    } else {
        std::snprintf(text, sizeof text, "%02d%02d%02d-%02d%02d", local.tm_hour, local.tm_min, local.tm_sec,
                      std::abs(hours), std::abs(minutes));
    }
    return text;
}

std::string MacroWord(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    std::string word(text);
    for (char& c : word) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return word;
}

std::optional<std::string> ExpandDateMacro(std::string_view word, const COleDateTime& now,
                                           const std::optional<COleDateTime>& fileTime) {
    for (const Macro& macro : kMacros) {
        if (macro.word != word) {
            continue;
        }
        switch (macro.kind) {
        case MacroKind::kDate:
            return FormatIptcDate(now + COleDateTimeSpan(macro.days, 0, 0, 0));
        case MacroKind::kTime:
            return FormatIptcTime(now, false);
        case MacroKind::kFileDate:
            return fileTime ? std::optional(FormatIptcDate(*fileTime)) : std::nullopt;
        case MacroKind::kFileTime:
            return fileTime ? std::optional(FormatIptcTime(*fileTime, false)) : std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace vliptc::iptc

namespace {

// The last-write time of the file being written, as local time; nullopt while
// no write has recorded a file status.
std::optional<COleDateTime> LocalFileTime(const std::optional<vliptc::platform::FileStatus>& status) {
    if (!status) {
        return std::nullopt;
    }
    const auto moment = static_cast<std::time_t>(status->times.write.Seconds());
    std::tm local{};
    tzset();  // localtime_r need not look at TZ by itself
    if (localtime_r(&moment, &local) == nullptr) {
        return std::nullopt;
    }
    return COleDateTime::FromTm(local);
}

// A run of characters of an IPTC date or time read as a decimal number the way
// atoi reads it: the digits are not checked, so text that is no number gives 0.
int NumberAt(const std::string& text, std::size_t position, std::size_t count) {
    return std::atoi(text.substr(position, count).c_str());
}

}  // namespace

std::string CIPTC::FormatDate(const COleDateTime& date) const {
    return vliptc::iptc::FormatIptcDate(date);
}

std::string CIPTC::FormatTime(const COleDateTime& time, bool universal) const {
    return vliptc::iptc::FormatIptcTime(time, universal);
}

// A text that is not a macro, and a file macro while no file status is
// recorded (nothing is being written), come back unchanged: the user sees the
// word rather than a made-up date.
std::string CIPTC::Translate(const CVLProperty& value) const {
    std::string text = value.String();
    const std::string word = vliptc::iptc::MacroWord(text);
    if (word.empty() || word.front() != '#') {
        return text;
    }
    const COleDateTime now = COleDateTime::GetCurrentTime();  // once: every macro of the call sees one moment
    auto expanded = vliptc::iptc::ExpandDateMacro(word, now, LocalFileTime(m_writeStatus));
    return expanded ? std::move(*expanded) : text;
}

bool CIPTC::GetFieldDate(std::uint32_t id, CVLProperty& date) const {
    std::vector<CVLProperty> values;
    if (!GetField(id, values) || values.empty()) {
        return false;
    }
    const std::string text = Translate(values.front());
    if (text.size() != 8) {
        return false;
    }
    const COleDateTime value(NumberAt(text, 0, 4), NumberAt(text, 4, 2), NumberAt(text, 6, 2), 0, 0, 0);
    date.Clear();
    date.SetDate(value);
    return true;
}

bool CIPTC::GetFieldTime(std::uint32_t id, CVLProperty& time) const {
    std::vector<CVLProperty> values;
    if (!GetField(id, values) || values.empty()) {
        return false;
    }
    const std::string text = Translate(values.front());
    if (text.size() != 6 && text.size() != 11) {
        return false;
    }
    // Built on a fixed base date so that a zone shift may cross midnight;
    // only the time of day is kept.
    COleDateTime value(1980, 1, 1, NumberAt(text, 0, 2), NumberAt(text, 2, 2), NumberAt(text, 4, 2));
    if (text.size() == 11) {
        // The zone is added for "+" and subtracted for "-": the reverse of a
        // conversion to universal time, kept because stored times have always
        // been read back this way.
        const COleDateTimeSpan zone(0, NumberAt(text, 7, 2), NumberAt(text, 9, 2), 0);
        if (text[6] == '-') {
            value -= zone;
        } else {
            value += zone;
        }
    }
    time.Clear();
    time.SetTime(value);
    return true;
}
