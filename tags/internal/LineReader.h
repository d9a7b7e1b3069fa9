#pragma once

// The text rules of the tag-definition files and of "vliptcusr.dat": logical
// lines, lines of quoted values, numbers, blanks. Only tags/ includes this.
//
// Every reader walks a zero-terminated buffer, stops at the terminating zero
// and never looks more than one character ahead of a character that is not
// the zero, so it cannot read past the end. Each call consumes what it
// returns, so reading a whole file is linear in its size.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vliptc::tags::internal {

// Blanks are tab and space; line ends (CR, LF) are handled on their own.
constexpr bool IsBlank(char c) noexcept { return c == ' ' || c == '\t'; }

// One logical line of a definition file. Outside quotes, blanks at the start
// of a line are dropped (blanks inside and at the end are kept), CR is
// dropped, and empty lines and lines starting with ";" are skipped. Inside
// quotes everything is kept, line feeds included. A quote followed by another
// quote gives one literal quote, and the second quote is then read as a quote
// of its own (so it also toggles quoting).
// True with the cursor behind the line feed when a line was completed; false
// with the cursor on the terminating zero when the text ended first (an
// unterminated last line is dropped, and `line` is left empty).
bool ReadLogicalLine(const char*& cursor, std::string& line);

// One line of quoted values of a synonym section:  "keyword","syn","syn".
// Text inside quotes is collected; outside quotes commas and unquoted words
// are dropped, except that blanks after the first non-blank of the line are
// collected too and so start the next value. A closing quote or the line feed
// ends a value; empty values and values starting with ";" are dropped.
// A "[" or "]" outside quotes ends the section: false, cursor on the bracket.
// True with the cursor behind the line feed once a line gave at least one
// value (lines without values are passed over); false at the terminating zero.
bool ReadQuotedValues(const char*& cursor, std::vector<std::string>& values);

// A number in the manner of the C runtime's atol: leading white space, an
// optional sign, then decimal digits up to the first non-digit; no digits give
// 0. Saturates at the limits of a 64-bit integer instead of overflowing.
std::int64_t ParseNumber(std::string_view text) noexcept;

// The 32-bit fields of a descriptor hold the number clamped to their range,
// as a 32-bit atol would give it.
std::int32_t ParseInt32(std::string_view text) noexcept;

// Dataset numbers are taken modulo 2^32, so every number the user-list writer
// prints ("%u") reads back as itself, and "-1" means 4294967295.
std::uint32_t ParseDatasetNumber(std::string_view text) noexcept;

void ToUpperAscii(std::string& text) noexcept;
std::string_view TrimBlanks(std::string_view text) noexcept;

}  // namespace vliptc::tags::internal
