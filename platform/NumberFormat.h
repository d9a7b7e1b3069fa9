#pragma once

// The user's regional number format, and the formatter that writes a plain
// decimal number in it (the host's GetNumberFormat with a number-format
// structure). The EXIF viewer shows apertures, exposure bias and distances
// this way.

#include <optional>
#include <string>
#include <string_view>

namespace vliptc::platform {

struct NumberFormat {
    unsigned fractionalDigits = 2;  // digits after the decimal separator (0 to 9)
    bool leadingZero = true;        // "0.50" rather than ".50"
    // Digit grouping of the integer part, as the host encodes it: 0 none, 3
    // thousands (1,234,567), 32 one group of 3 then groups of 2
    // (12,34,567); any other value 1-9 groups of that size.
    unsigned grouping = 3;
    std::string decimalSeparator = ".";   // at most 10 characters
    std::string thousandSeparator = ",";  // at most 10 characters
    // Where the minus sign of a negative number goes: 0 "(1.1)", 1 "-1.1",
    // 2 "- 1.1", 3 "1.1-", 4 "1.1 -".
    unsigned negativeOrder = 1;
};

// The format of the user's default locale: the C++ locale the environment
// names (LC_ALL, LC_NUMERIC, LANG), or the classic "C" locale when the
// environment names one that is not installed. Read again whenever LC_ALL,
// LC_NUMERIC or LANG has changed since the thread's last call. The
// locale states the separators and the grouping (no grouping in "C"); the
// fractional digits, the leading zero and the negative order keep the
// defaults above, which a C++ locale does not state. Separators are
// Windows-1252 text like all text of the library; a separator that has no
// Windows-1252 form becomes a no-break space (thousands: the locales that
// have such separators use narrow spaces) or "." (decimal).
NumberFormat UserNumberFormat();

// Writes number, a plain decimal ("-1234.5678": an optional "-", digits, an
// optional "." and digits, at least one digit in all), in the format: rounded
// half away from zero to the fractional digits on the decimal digits
// themselves (never through a double), so "3.999951" with 2 digits is
// "4.00". Leading zeros of the integer part are dropped; a number that rounds
// to zero has no sign. nullopt, as the host formatter fails, when number is
// not of that form (empty, "inf", "nan", exponents, blanks) or the format
// holds a value outside the ranges stated above.
std::optional<std::string> FormatNumber(std::string_view number, const NumberFormat& format);

}  // namespace vliptc::platform
