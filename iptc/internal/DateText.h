#pragma once

// The text forms of IPTC dates and times and the date macros, as plain
// functions of their inputs (the clock and the file time are arguments), so
// CIPTC's members stay thin and the calendar rules can be exercised at any
// chosen moment.

#include <optional>
#include <string>
#include <string_view>

#include "host/OleDateTime.h"

namespace vliptc::iptc {

// "YYYYMMDD" (strftime "%Y%m%d").
std::string FormatIptcDate(const COleDateTime& date);

// universal: "HHMMSS+0000" of the value as it stands (no conversion).
// local: the value is taken as local time of the TZ in force; the text is the
// local "HHMMSS" and a zone of the local minus the universal hour and minute,
// each taken alone with no wrap at midnight: "+hhmm" when hour difference plus
// minute difference is zero or more, else "-" and their absolute values. A
// moment whose local and universal days differ so gets a zone of twenty-odd
// hours (local 00:30 one hour ahead of UTC gives "003000-2300"). Blocks in the
// field carry this form, so it is kept.
// Empty for an invalid value.
std::string FormatIptcTime(const COleDateTime& time, bool universal);

// Upper-cased copy of text with white space trimmed at both ends: the form in
// which macro words are matched.
std::string MacroWord(std::string_view text);

// The expansion of a macro word (already in MacroWord form): "#TODAY", "#NOW",
// "#TOMORROW", "#YESTERDAY", "#TWODAYSAGO", "#FILEDATE", "#FILETIME",
// "#INSERTDATE", "#INSERTTIME", "#2DAYSFROMTODAY", "#3DAYSFROMTODAY",
// "#1WEEKFROMTODAY", "#2WEEKSFROMTODAY". Day offsets are whole-day spans on
// now, so month and year ends follow the calendar. nullopt when the word is no
// macro, and for the file macros when no file time is known.
std::optional<std::string> ExpandDateMacro(std::string_view word, const COleDateTime& now,
                                           const std::optional<COleDateTime>& fileTime);

}  // namespace vliptc::iptc
