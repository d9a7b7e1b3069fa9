#include "platform/NumberFormat.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/Charset.h"

namespace vliptc::platform {

namespace {

constexpr unsigned kMaxFractionalDigits = 9;
constexpr unsigned kMaxNegativeOrder = 4;
constexpr std::size_t kMaxSeparatorLength = 10;
constexpr unsigned kGroupingThreeThenTwo = 32;  // 12,34,56,789
constexpr unsigned kMaxPlainGrouping = 9;

constexpr const char* kNoBreakSpace = "\xA0";  // Windows-1252

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

bool IsValid(const NumberFormat& format) noexcept {
    return format.fractionalDigits <= kMaxFractionalDigits && format.negativeOrder <= kMaxNegativeOrder &&
           (format.grouping <= kMaxPlainGrouping || format.grouping == kGroupingThreeThenTwo) &&
           format.decimalSeparator.size() <= kMaxSeparatorLength &&
           format.thousandSeparator.size() <= kMaxSeparatorLength;
}

// The locale's grouping (group sizes from the decimal point leftwards, the
// last one repeating) in the host's code; sizes the code cannot express fall
// back to their first group.
unsigned GroupingCode(const std::string& sizes) noexcept {
    if (sizes.empty() || sizes[0] <= 0 || sizes[0] == CHAR_MAX) return 0;
    const auto first = static_cast<unsigned>(sizes[0]);
    if (first == 3 && sizes.size() >= 2 && sizes[1] == 2) return kGroupingThreeThenTwo;
    return first <= kMaxPlainGrouping ? first : 0;
}

// One wide character of the locale as Windows-1252 text; fallback when it
// has no form there.
std::string Separator(wchar_t character, const char* fallback) {
    const auto code = static_cast<char32_t>(character);
    const std::string text =
        code <= 0xFFFF ? Utf16ToCp1252(std::u16string(1, static_cast<char16_t>(code))) : "?";
    return text == "?" ? fallback : text;
}

// Adds one unit at the last digit of digits (all '0'-'9'); a carry out of
// the first digit puts a "1" in front.
void Increment(std::string& digits) {
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (*it != '9') {
            ++*it;
            return;
        }
        *it = '0';
    }
    digits.insert(digits.begin(), '1');
}

// The integer digits with a separator between groups, counted from the
// right: groups of `grouping` digits, or 3 then 2s for the code 32.
std::string Group(const std::string& digits, const NumberFormat& format) {
    if (format.grouping == 0) return digits;
    std::string out;
    std::size_t group = format.grouping == kGroupingThreeThenTwo ? 3 : format.grouping;
    std::size_t inGroup = 0;
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (inGroup == group) {
            out.insert(0, format.thousandSeparator);
            inGroup = 0;
            if (format.grouping == kGroupingThreeThenTwo) group = 2;
        }
        out.insert(out.begin(), *it);
        ++inGroup;
    }
    return out;
}

std::string WithSign(const std::string& body, unsigned negativeOrder) {
    switch (negativeOrder) {
        case 0:
            return "(" + body + ")";
        case 2:
            return "- " + body;
        case 3:
            return body + "-";
        case 4:
            return body + " -";
        default:
            return "-" + body;
    }
}

// The names that choose the numeric locale, as the C library reads them.
std::string LocaleNames() {
    std::string names;
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* value = std::getenv(variable);
        names.append(value != nullptr ? value : "").push_back('\n');
    }
    return names;
}

NumberFormat ReadUserNumberFormat() {
    std::locale locale = std::locale::classic();
    try {
        locale = std::locale("");
    } catch (const std::runtime_error&) {
        // The environment names a locale that is not installed.
    }
    const auto& punctuation = std::use_facet<std::numpunct<wchar_t>>(locale);
    NumberFormat format;
    format.decimalSeparator = Separator(punctuation.decimal_point(), ".");
    format.thousandSeparator = Separator(punctuation.thousands_sep(), kNoBreakSpace);
    format.grouping = GroupingCode(punctuation.grouping());
    return format;
}

}  // namespace

NumberFormat UserNumberFormat() {
    // Building a locale opens its files: a few hundred microseconds, paid once
    // per thread until the environment names another locale.
    thread_local std::string names;
    thread_local std::optional<NumberFormat> format;
    std::string current = LocaleNames();
    if (!format || current != names) {
        format = ReadUserNumberFormat();
        names = std::move(current);
    }
    return *format;
}

std::optional<std::string> FormatNumber(std::string_view number, const NumberFormat& format) {
    if (!IsValid(format)) return std::nullopt;
    const bool negative = !number.empty() && number.front() == '-';
    if (negative) number.remove_prefix(1);
    const std::size_t point = number.find('.');
    const std::string_view integerPart = number.substr(0, point);
    const std::string_view fractionPart =
        point == std::string_view::npos ? std::string_view() : number.substr(point + 1);
    const auto allDigits = [](std::string_view digits) {
        for (const char c : digits) {
            if (!IsDigit(c)) return false;
        }
        return true;
    };
    if (integerPart.empty() && fractionPart.empty()) return std::nullopt;
    if (!allDigits(integerPart) || !allDigits(fractionPart)) return std::nullopt;

    // Round on the digits: the first digit dropped decides, half away from zero.
    const std::size_t shown = format.fractionalDigits;
    std::string digits(integerPart);
    digits.append(fractionPart.substr(0, shown));
    digits.append(shown - std::min(shown, fractionPart.size()), '0');
    if (fractionPart.size() > shown && fractionPart[shown] >= '5') Increment(digits);

    std::string integer = digits.substr(0, digits.size() - shown);
    const std::string fraction = digits.substr(digits.size() - shown);
    integer.erase(0, integer.find_first_not_of('0'));
    const bool isZero = integer.empty() && fraction.find_first_not_of('0') == std::string::npos;
    // A zero integer part shows as "0" unless the format drops it; with no
    // fractional digits the "0" is all there is, so it stays.
    if (integer.empty() && (format.leadingZero || shown == 0)) integer = "0";

    std::string body = Group(integer, format);
    if (shown > 0) body += format.decimalSeparator + fraction;
    return negative && !isZero ? WithSign(body, format.negativeOrder) : body;
}

}  // namespace vliptc::platform
