#include "exif/internal/FormatRules.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "exif/EXIF.h"

namespace vliptc::exif {

namespace {

struct EnumText {
    std::int32_t value;
    const char* text;
};

struct EnumRule {
    std::uint32_t tag;
    std::span<const EnumText> texts;
    const char* other;  // any value not listed
};

constexpr EnumText kCompression[] = {{1, "Uncompressed"}, {6, "JPEG"}};
constexpr EnumText kYCbCrPositioning[] = {{1, "Centered"}, {2, "Co-sided"}};
constexpr EnumText kResolutionUnit[] = {{2, "Inches"}, {3, "Centimeters"}};
constexpr EnumText kColorSpace[] = {{1, "RGB"}};
constexpr EnumText kSceneType[] = {{1, "A directly photographed image"}};
constexpr EnumText kFileSource[] = {{3, "DSC"}};

// Where row 0 and column 0 of the image lie.
constexpr EnumText kOrientation[] = {
    {1, "top/left"}, {2, "top/right"}, {3, "bottom/right"}, {4, "bottom/left"},
    {5, "left/top"}, {6, "right/top"}, {7, "right/bottom"}, {8, "left/bottom"},
};

constexpr EnumText kMeteringMode[] = {
    {0, "Unknown"}, {1, "Average"},   {2, "Center Weighted Average"},
    {3, "Spot"},    {4, "MultiSpot"}, {5, "Pattern"},
    {6, "Partial"}, {255, "Other"},
};

// The light sources of the first EXIF versions; the weather and fluorescent
// kinds added later fall to "reserved".
constexpr EnumText kLightSource[] = {
    {0, "Unidentified"},
    {1, "Daylight"},
    {2, "Fluorescent"},
    {3, "Tungsten"},
    {17, "Standard light A"},
    {18, "Standard light B"},
    {19, "Standard light C"},
    {20, "D55"},
    {21, "D65"},
    {22, "D75"},
    {255, "Unspecified"},
};

constexpr EnumText kExposureProgram[] = {
    {0, "Not defined"},
    {1, "Manual"},
    {2, "Normal program"},
    {3, "Aperture priority"},
    {4, "Shutter priority"},
    {5, "Creative program (biased toward depth of field)"},
    {6, "Action program (biased toward fast shutter speed)"},
    {7, "Portrait mode (for closeup photos with the background out of focus)"},
    {8, "Landscape mode (for landscape photos with the background in focus)"},
};

constexpr EnumText kSensingMethod[] = {
    {1, "Not defined"},
    {2, "One-chip color area sensor"},
    {3, "Two-chip color area sensor"},
    {4, "Three-chip color area sensor"},
    {5, "Color sequential area sensor"},
    {7, "Trilinear sensor"},
    {8, "Color sequential linear sensor"},
};

// "reserved" of the light source is lower case, unlike the others: the
// viewer has always shown it so.
constexpr EnumRule kEnumRules[] = {
    {CVLEXIF::kCompression, kCompression, "Unknown"},
    {CVLEXIF::kYCbCrPositioning, kYCbCrPositioning, "Unknown"},
    {CVLEXIF::kResolutionUnit, kResolutionUnit, "Unknown"},
    {CVLEXIF::kFocalPlaneResolutionUnit, kResolutionUnit, "Unknown"},
    {CVLEXIF::kColorSpace, kColorSpace, "Uncalibrated"},
    {CVLEXIF::kSceneType, kSceneType, "Unspecified"},
    {CVLEXIF::kFileSource, kFileSource, "Unknown"},
    {CVLEXIF::kOrientation, kOrientation, "Unknown"},
    {CVLEXIF::kMeteringMode, kMeteringMode, "Reserved"},
    {CVLEXIF::kLightSource, kLightSource, "reserved"},
    {CVLEXIF::kExposureProgram, kExposureProgram, "Reserved"},
    {CVLEXIF::kSensingMethod, kSensingMethod, "Reserved"},
};

// APEX aperture units to an F number: each unit is one stop, a factor of
// the square root of two.
constexpr double kApexApertureBase = 1.4142;
// Fractional seconds below this show as whole seconds ("1 s", not "1.00 s").
constexpr double kShownFraction = 0.005;
// The text the host's number formatter writes into holds 512 characters
// with its terminator; a longer number does not fit and shows as nothing.
constexpr std::size_t kHostNumberBuffer = 512;
constexpr int kPlainDecimals = 6;  // what "%f" writes

// "%.<decimals>f" of value, always with "." (the C library's "%f" follows the
// C locale and writes "," under some; this never does, so nothing needs
// replacing). "inf", "-inf", "nan" as "%f" writes them.
std::string Fixed(double value, int decimals) {
    char buffer[400];  // the largest double has 309 digits
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    return result.ec == std::errc() ? std::string(buffer, result.ptr) : std::string();
}

// A number as the viewer shows it in the user's regional format. Empty when
// the formatter refuses it (infinity and NaN are not plain decimals, as the
// host formatter fails on them) or it does not fit the host's buffer.
std::string Regional(double value, const NumberFormatSource& numberFormat) {
    const auto text = platform::FormatNumber(Fixed(value, kPlainDecimals), numberFormat());
    return text && text->size() < kHostNumberBuffer ? *text : std::string();
}

std::string ExposureTime(double seconds) {
    if (seconds >= 1.0) {
        const bool fraction = seconds - std::floor(seconds) >= kShownFraction;
        return Fixed(seconds, fraction ? 2 : 0) + " s";
    }
    return "1/" + Fixed(1.0 / seconds, 0) + " s";  // 0 s gives "1/inf s"
}

// APEX time value v: the exposure is 2^-v seconds.
std::string ShutterSpeed(double apex) {
    const double denominator = std::exp2(apex);
    if (denominator > 1.0) {
        // Truncated, not rounded: 2^6.9657 = 124.99... shows as 1/124. Beyond
        // the 32-bit range it stays at the largest 32-bit number.
        constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
        const std::int32_t whole =
            denominator >= static_cast<double>(kMax) ? kMax : static_cast<std::int32_t>(denominator);
        return "1/" + std::to_string(whole) + " s";
    }
    return Fixed(1.0 / denominator, 2) + " s";
}

// "%lu" of the value truncated toward zero, a 32-bit unsigned number. The
// reader takes both halves of a RATIONAL as signed, so a resolution of 2^31
// or more arrives negative; taken modulo 2^32 it is the stored number again.
// NaN gives 0; values beyond the 64-bit range saturate first.
std::string UnsignedWhole(double value) {
    constexpr double kLimit = 9223372036854775807.0;  // 2^63
    std::int64_t whole = 0;
    if (value >= kLimit) {
        whole = std::numeric_limits<std::int64_t>::max();
    } else if (value <= -kLimit) {
        whole = std::numeric_limits<std::int64_t>::min();
    } else if (!std::isnan(value)) {
        whole = static_cast<std::int64_t>(value);
    }
    return std::to_string(static_cast<std::uint32_t>(static_cast<std::uint64_t>(whole)));
}

std::optional<std::string> RationalRule(std::uint32_t tag, double v, const NumberFormatSource& numberFormat) {
    switch (tag) {
        case CVLEXIF::kExposureTime:
            return ExposureTime(v);
        case CVLEXIF::kShutterSpeedValue:
            return ShutterSpeed(v);
        case CVLEXIF::kApertureValue:
            return "F " + Regional(std::pow(kApexApertureBase, v), numberFormat);
        // Brightness goes through the aperture's conversion as well: the
        // viewer has always shown it so, and users compare against that.
        case CVLEXIF::kBrightnessValue:
            return "EV " + Regional(std::pow(kApexApertureBase, v), numberFormat);
        case CVLEXIF::kExposureBiasValue:
            return "EV " + Regional(v, numberFormat);
        // Shown as stored, without the APEX conversion of "Aperture value".
        case CVLEXIF::kMaxApertureValue:
            return "F " + Regional(v, numberFormat);
        case CVLEXIF::kSubjectDistance:
            return Regional(v, numberFormat) + " m";
        case CVLEXIF::kFocalPlaneXResolution:
        case CVLEXIF::kFocalPlaneYResolution:
            return UnsignedWhole(v);
        default:
            return std::nullopt;
    }
}

std::optional<std::string> IntegerRule(std::uint32_t tag, std::int32_t v) {
    constexpr std::int32_t kFlashFired = 0x01;  // bit 0 of the flash value
    if (tag == CVLEXIF::kFlash) return (v & kFlashFired) != 0 ? "Fired" : "Not fired";
    for (const EnumRule& rule : kEnumRules) {
        if (rule.tag != tag) continue;
        for (const EnumText& entry : rule.texts) {
            if (entry.value == v) return entry.text;
        }
        return rule.other;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> FormatByOwnRule(std::uint32_t tag, const CVLProperty& first,
                                           const NumberFormatSource& numberFormat) {
    if (auto text = RationalRule(tag, first.GetDouble(), numberFormat)) return text;
    return IntegerRule(tag, first.GetInt32());
}

}  // namespace vliptc::exif
