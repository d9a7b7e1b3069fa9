#pragma once

// Text kept by the library is Windows-1252 (what IPTC readers assume when a
// block carries no character-set marker). These convert at the edges only:
// command-line input and output, widgets, UTF-16 EXIF texts.

#include <string>
#include <string_view>

namespace vliptc::platform {

// Every byte maps to one character; the five bytes Windows-1252 leaves
// undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) map to the C1 controls of the same
// number, as Windows does.
std::string Cp1252ToUtf8(std::string_view text);
std::u16string Cp1252ToUtf16(std::string_view text);

// Characters outside Windows-1252, and malformed sequences, become "?".
std::string Utf8ToCp1252(std::string_view text);
std::string Utf16ToCp1252(std::u16string_view text);

// Text typed on a classic Mac arrives as Mac Roman bytes that readers take for
// Windows-1252 (and the reverse). These re-encode the upper half; ASCII is the
// same in both. A character the target set lacks (Mac: the math signs, the
// ligatures, the Apple logo; Windows: the undefined bytes, S and Z with caron,
// the fractions, superscripts, Icelandic letters...) becomes "?", as in the
// conversions above: it never silently turns into a different letter.
std::string MacRomanToWindows1252(std::string_view text);
std::string Windows1252ToMacRoman(std::string_view text);

}  // namespace vliptc::platform
