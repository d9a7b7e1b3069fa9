// Windows-1252 <-> Unicode. Bytes 0x00-0x7F are ASCII and 0xA0-0xFF equal
// Latin-1 (U+00A0-U+00FF), so the only data needed is the 0x80-0x9F row,
// used in both directions. Mac Roman needs its whole upper half.
//
// Rules for text coming in (UTF-8 or UTF-16), one "?" per bad unit:
//  - a character Windows-1252 cannot hold (including the C1 controls other
//    than the five undefined bytes) is one "?";
//  - UTF-8: a lead byte announces the length (C0-DF: 2, E0-EF: 3, F0-F7: 4).
//    A complete sequence that is overlong, a surrogate or above U+10FFFF is one
//    "?". A sequence cut short by a byte that is not 80-BF (or by the end) is
//    one "?", and decoding resumes at that byte. A stray continuation byte
//    (80-BF) or a byte that can never start a sequence (F8-FF) is one "?" each;
//  - UTF-16: a high surrogate followed by a low one is one character (never
//    in Windows-1252, so one "?"); any surrogate without its partner is one "?".

#include "platform/Charset.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vliptc::platform {

namespace {

// Unicode of the bytes 0x80-0x9F. The five bytes Windows-1252 leaves
// undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) stand for the C1 control of the
// same number, as the Windows conversion functions do, so every byte survives
// a round trip.
constexpr std::array<char16_t, 32> kHighRow = {
    u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',  // 80-87
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',  // 88-8F
    u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',  // 90-97
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178',  // 98-9F
};

// Unicode of the Mac Roman bytes 0x80-0xFF (0xDB is the euro sign, as on
// every Mac since 1998; 0xF0 is the Apple logo in the private use area).
constexpr std::array<char16_t, 128> kMacRomanHigh = {
    u'\u00C4', u'\u00C5', u'\u00C7', u'\u00C9', u'\u00D1', u'\u00D6', u'\u00DC', u'\u00E1',  // 80-87
    u'\u00E0', u'\u00E2', u'\u00E4', u'\u00E3', u'\u00E5', u'\u00E7', u'\u00E9', u'\u00E8',  // 88-8F
    u'\u00EA', u'\u00EB', u'\u00ED', u'\u00EC', u'\u00EE', u'\u00EF', u'\u00F1', u'\u00F3',  // 90-97
    u'\u00F2', u'\u00F4', u'\u00F6', u'\u00F5', u'\u00FA', u'\u00F9', u'\u00FB', u'\u00FC',  // 98-9F
    u'\u2020', u'\u00B0', u'\u00A2', u'\u00A3', u'\u00A7', u'\u2022', u'\u00B6', u'\u00DF',  // A0-A7
    u'\u00AE', u'\u00A9', u'\u2122', u'\u00B4', u'\u00A8', u'\u2260', u'\u00C6', u'\u00D8',  // A8-AF
    u'\u221E', u'\u00B1', u'\u2264', u'\u2265', u'\u00A5', u'\u00B5', u'\u2202', u'\u2211',  // B0-B7
    u'\u220F', u'\u03C0', u'\u222B', u'\u00AA', u'\u00BA', u'\u03A9', u'\u00E6', u'\u00F8',  // B8-BF
    u'\u00BF', u'\u00A1', u'\u00AC', u'\u221A', u'\u0192', u'\u2248', u'\u2206', u'\u00AB',  // C0-C7
    u'\u00BB', u'\u2026', u'\u00A0', u'\u00C0', u'\u00C3', u'\u00D5', u'\u0152', u'\u0153',  // C8-CF
    u'\u2013', u'\u2014', u'\u201C', u'\u201D', u'\u2018', u'\u2019', u'\u00F7', u'\u25CA',  // D0-D7
    u'\u00FF', u'\u0178', u'\u2044', u'\u20AC', u'\u2039', u'\u203A', u'\uFB01', u'\uFB02',  // D8-DF
    u'\u2021', u'\u00B7', u'\u201A', u'\u201E', u'\u2030', u'\u00C2', u'\u00CA', u'\u00C1',  // E0-E7
    u'\u00CB', u'\u00C8', u'\u00CD', u'\u00CE', u'\u00CF', u'\u00CC', u'\u00D3', u'\u00D4',  // E8-EF
    u'\uF8FF', u'\u00D2', u'\u00DA', u'\u00DB', u'\u00D9', u'\u0131', u'\u02C6', u'\u02DC',  // F0-F7
    u'\u00AF', u'\u02D8', u'\u02D9', u'\u02DA', u'\u00B8', u'\u02DD', u'\u02DB', u'\u02C7',  // F8-FF
};

constexpr char kReplacement = '?';

constexpr char32_t ByteToCodePoint(unsigned char byte) {
    if (byte >= 0x80 && byte <= 0x9F) return kHighRow[byte - 0x80];
    return byte;
}

constexpr char CodePointToByte(char32_t cp) {
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<char>(cp);
    for (std::size_t i = 0; i < kHighRow.size(); ++i) {
        if (kHighRow[i] == cp) return static_cast<char>(0x80 + i);
    }
    return kReplacement;
}

constexpr char32_t MacRomanToCodePoint(unsigned char byte) {
    return byte < 0x80 ? byte : kMacRomanHigh[byte - 0x80];
}

constexpr char CodePointToMacRoman(char32_t cp) {
    if (cp < 0x80) return static_cast<char>(cp);
    for (std::size_t i = 0; i < kMacRomanHigh.size(); ++i) {
        if (kMacRomanHigh[i] == cp) return static_cast<char>(0x80 + i);
    }
    return kReplacement;
}

void AppendUtf8(std::string& out, char32_t cp) {
    // Windows-1252 only reaches into the Basic Multilingual Plane: 1-3 bytes.
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

constexpr bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

std::string Cp1252ToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) AppendUtf8(out, ByteToCodePoint(static_cast<unsigned char>(c)));
    return out;
}

std::u16string Cp1252ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (const char c : text) out += static_cast<char16_t>(ByteToCodePoint(static_cast<unsigned char>(c)));
    return out;
}

std::string Utf8ToCp1252(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            out += static_cast<char>(lead);
            ++i;
            continue;
        }

        std::size_t length = 0;
        char32_t cp = 0;
        char32_t smallest = 0;  // below this the sequence is overlong
        if (lead >= 0xC0 && lead <= 0xDF) {
            length = 2;
            cp = lead & 0x1F;
            smallest = 0x80;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            cp = lead & 0x0F;
            smallest = 0x800;
        } else if (lead >= 0xF0 && lead <= 0xF7) {
            length = 4;
            cp = lead & 0x07;
            smallest = 0x10000;
        } else {
            // A continuation byte with no lead, or F8-FF.
            out += kReplacement;
            ++i;
            continue;
        }

        std::size_t taken = 1;
        while (taken < length && i + taken < text.size() &&
               IsContinuation(static_cast<unsigned char>(text[i + taken]))) {
            cp = (cp << 6) | (static_cast<unsigned char>(text[i + taken]) & 0x3F);
            ++taken;
        }
        i += taken;
        if (taken < length) {
            out += kReplacement;  // truncated: the next byte starts afresh
            continue;
        }
        const bool valid = cp >= smallest && cp <= 0x10FFFF && !(cp >= 0xD800 && cp <= 0xDFFF);
        out += valid ? CodePointToByte(cp) : kReplacement;
    }
    return out;
}

std::string Utf16ToCp1252(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const char32_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            out += kReplacement;  // a character beyond U+FFFF
            i += 2;
            continue;
        }
        out += (IsHighSurrogate(unit) || IsLowSurrogate(unit)) ? kReplacement : CodePointToByte(unit);
        ++i;
    }
    return out;
}

std::string MacRomanToWindows1252(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) out += CodePointToByte(MacRomanToCodePoint(static_cast<unsigned char>(c)));
    return out;
}

std::string Windows1252ToMacRoman(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) out += CodePointToMacRoman(ByteToCodePoint(static_cast<unsigned char>(c)));
    return out;
}

}  // namespace vliptc::platform
