// The viewer's text of EXIF fields (GetFormattedField) and templates
// (FormatString), on values put straight into the catalogue, under a fixed
// regional format: two decimals, "." and ",", thousands grouping, "-1.1".

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "exif/EXIF.h"

namespace {

using Tag = CVLEXIF::EFieldTags;
using vliptc::platform::NumberFormat;

CVLProperty Real(double value) {
    CVLProperty p;
    p.SetDouble(value);
    return p;
}

CVLProperty Int(std::int32_t value) {
    CVLProperty p;
    p.SetInt32(value);
    return p;
}

CVLProperty Text(const char* text) { return CVLProperty(std::string(text)); }

CVLEXIF Catalogue() {
    CVLEXIF exif;
    exif.SetNumberFormatSource([] { return NumberFormat(); });
    return exif;
}

void Set(CVLEXIF& exif, Tag tag, std::vector<CVLProperty> values) {
    CVLEXIF::SField* field = nullptr;
    ASSERT_TRUE(exif.GetField(tag, field)) << tag;
    field->vValues = std::move(values);
    field->bPresent = true;
}

std::string Formatted(CVLEXIF& exif, Tag tag, std::vector<CVLProperty> values) {
    Set(exif, tag, std::move(values));
    std::string text = "left over";
    EXPECT_TRUE(exif.GetFormattedField(tag, text)) << tag;
    return text;
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ExifFormat, RulesOfTheirOwn) {
    struct Case {
        Tag tag;
        CVLProperty value;
        const char* expected;
    };
    const Case cases[] = {
        {CVLEXIF::kExposureTime, Real(1.0 / 250), "1/250 s"},
        {CVLEXIF::kExposureTime, Real(2.0), "2 s"},
        {CVLEXIF::kExposureTime, Real(2.5), "2.50 s"},
        {CVLEXIF::kExposureTime, Real(1.004), "1 s"},
        {CVLEXIF::kExposureTime, Real(0.6), "1/2 s"},
        {CVLEXIF::kExposureTime, Real(0.0), "1/inf s"},
        {CVLEXIF::kShutterSpeedValue, Real(8.0), "1/256 s"},
        {CVLEXIF::kShutterSpeedValue, Real(0.0), "1.00 s"},
        {CVLEXIF::kShutterSpeedValue, Real(-1.0), "2.00 s"},
        {CVLEXIF::kShutterSpeedValue, Real(6.9657), "1/124 s"},  // 124.99: truncated
        {CVLEXIF::kShutterSpeedValue, Real(40.0), "1/2147483647 s"},
        {CVLEXIF::kApertureValue, Real(4.0), "F 4.00"},     // 3.99985 rounded by the formatter
        {CVLEXIF::kBrightnessValue, Real(0.0), "EV 1.00"},  // the aperture's conversion
        {CVLEXIF::kExposureBiasValue, Real(-1.0 / 3), "EV -0.33"},
        {CVLEXIF::kExposureBiasValue, Real(-0.001), "EV 0.00"},
        {CVLEXIF::kMaxApertureValue, Real(3.0), "F 3.00"},  // no conversion
        {CVLEXIF::kSubjectDistance, Real(1234.5), "1,234.50 m"},
        {CVLEXIF::kFocalPlaneXResolution, Real(2834.6), "2834"},
        {CVLEXIF::kFocalPlaneYResolution, Real(-1294967296.0), "3000000000"},  // 3e9/1 read as signed
        {CVLEXIF::kFocalPlaneYResolution, Real(kNaN), "0"},
        // A number the formatter refuses (infinite, NaN) shows as nothing,
        // as when the host's formatter fails.
        {CVLEXIF::kApertureValue, Real(1e6), "F"},
        {CVLEXIF::kExposureBiasValue, Real(kNaN), "EV"},
        {CVLEXIF::kFlash, Int(0x19), "Fired"},
        {CVLEXIF::kFlash, Int(0x10), "Not fired"},
        // "File source" and "Scene type" are kept as decimal text.
        {CVLEXIF::kFileSource, Text("3"), "DSC"},
        {CVLEXIF::kFileSource, Text("0"), "Unknown"},
        {CVLEXIF::kSceneType, Text("1"), "A directly photographed image"},
        {CVLEXIF::kSceneType, Text("2"), "Unspecified"},
        // Rationals stored as integers, integers stored as reals.
        {CVLEXIF::kExposureTime, Int(4), "4 s"},
        {CVLEXIF::kOrientation, Real(6.7), "right/top"},
    };
    CVLEXIF exif = Catalogue();
    for (const Case& c : cases) {
        EXPECT_EQ(Formatted(exif, c.tag, {c.value}), c.expected) << c.tag << " " << c.value.String();
    }
}

TEST(ExifFormat, EveryEnumerationAndItsOtherValues) {
    struct Enumeration {
        Tag tag;
        std::vector<std::pair<std::int32_t, const char*>> texts;
        std::vector<std::int32_t> others;
        const char* other;
    };
    const Enumeration enumerations[] = {
        {CVLEXIF::kColorSpace, {{1, "RGB"}}, {0, 2, 65535}, "Uncalibrated"},
        {CVLEXIF::kCompression, {{1, "Uncompressed"}, {6, "JPEG"}}, {0, 7}, "Unknown"},
        {CVLEXIF::kYCbCrPositioning, {{1, "Centered"}, {2, "Co-sided"}}, {0, 3}, "Unknown"},
        {CVLEXIF::kResolutionUnit, {{2, "Inches"}, {3, "Centimeters"}}, {1, 4}, "Unknown"},
        {CVLEXIF::kFocalPlaneResolutionUnit, {{2, "Inches"}, {3, "Centimeters"}}, {1}, "Unknown"},
        {CVLEXIF::kOrientation,
         {{1, "top/left"},
          {2, "top/right"},
          {3, "bottom/right"},
          {4, "bottom/left"},
          {5, "left/top"},
          {6, "right/top"},
          {7, "right/bottom"},
          {8, "left/bottom"}},
         {0, 9, -1},
         "Unknown"},
        {CVLEXIF::kMeteringMode,
         {{0, "Unknown"},
          {1, "Average"},
          {2, "Center Weighted Average"},
          {3, "Spot"},
          {4, "MultiSpot"},
          {5, "Pattern"},
          {6, "Partial"},
          {255, "Other"}},
         {7, 9, 254},
         "Reserved"},
        {CVLEXIF::kLightSource,
         {{0, "Unidentified"},
          {1, "Daylight"},
          {2, "Fluorescent"},
          {3, "Tungsten"},
          {17, "Standard light A"},
          {18, "Standard light B"},
          {19, "Standard light C"},
          {20, "D55"},
          {21, "D65"},
          {22, "D75"},
          {255, "Unspecified"}},
         {4, 9, 23},
         "reserved"},
        {CVLEXIF::kExposureProgram,
         {{0, "Not defined"},
          {1, "Manual"},
          {2, "Normal program"},
          {3, "Aperture priority"},
          {4, "Shutter priority"},
          {5, "Creative program (biased toward depth of field)"},
          {6, "Action program (biased toward fast shutter speed)"},
          {7, "Portrait mode (for closeup photos with the background out of focus)"},
          {8, "Landscape mode (for landscape photos with the background in focus)"}},
         {9, -1},
         "Reserved"},
        {CVLEXIF::kSensingMethod,
         {{1, "Not defined"},
          {2, "One-chip color area sensor"},
          {3, "Two-chip color area sensor"},
          {4, "Three-chip color area sensor"},
          {5, "Color sequential area sensor"},
          {7, "Trilinear sensor"},
          {8, "Color sequential linear sensor"}},
         {0, 6, 9},
         "Reserved"},
    };
    CVLEXIF exif = Catalogue();
    for (const Enumeration& e : enumerations) {
        for (const auto& [value, text] : e.texts)
            EXPECT_EQ(Formatted(exif, e.tag, {Int(value)}), text) << value;
        for (const std::int32_t value : e.others)
            EXPECT_EQ(Formatted(exif, e.tag, {Int(value)}), e.other) << value;
    }
}

TEST(ExifFormat, DefaultRuleJoinsTheValues) {
    struct Case {
        Tag tag;
        std::vector<CVLProperty> values;
        const char* expected;
    };
    const Case cases[] = {
        {CVLEXIF::kBitsPerSample, {Int(8), Int(8), Int(8)}, "8,8,8"},
        {CVLEXIF::kFNumber, {Real(5.6)}, "5.6"},
        {CVLEXIF::kGPSLatitude, {Real(52), Real(30.5), Real(0)}, "52,30.5,0"},
        {CVLEXIF::kMake, {Text(" \tCanon \r\n")}, "Canon"},
        {CVLEXIF::kMakerNote, {CVLProperty()}, ""},
        {CVLEXIF::kUserComment, {Text("  a"), Text("b  ")}, "a,b"},
        {CVLEXIF::kFlash, {Int(0), Int(1)}, "Not fired"},  // own rules read the first value only
    };
    CVLEXIF exif = Catalogue();
    for (const Case& c : cases) EXPECT_EQ(Formatted(exif, c.tag, c.values), c.expected) << c.tag;

    CVLEXIF::SField unknown;
    unknown.nTag = 0x8830;
    unknown.strName = "Unknown";
    unknown.vValues = {Int(1), Text("x")};
    exif.Fields().push_back(unknown);
    std::string text;
    EXPECT_TRUE(exif.GetFormattedField(static_cast<Tag>(0x8830), text));
    EXPECT_EQ(text, "1,x");
}

TEST(ExifFormat, FieldsWithoutValuesAndUnknownTags) {
    CVLEXIF exif = Catalogue();
    std::string text = "left over";
    EXPECT_FALSE(exif.GetFormattedField(CVLEXIF::kXResolution, text));
    EXPECT_EQ(text, "");
    exif.bUseDefaults = true;
    EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kXResolution, text));
    EXPECT_EQ(text, "72");
    EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kYResolution, text));
    EXPECT_EQ(text, "72");
    EXPECT_FALSE(exif.GetFormattedField(CVLEXIF::kMake, text));  // no default
    EXPECT_FALSE(exif.GetFormattedField(static_cast<Tag>(0x8830), text));
    EXPECT_FALSE(exif.GetFormattedField(CVLEXIF::kNoField, text));
    EXPECT_EQ(text, "");
}

TEST(ExifFormat, RegionalFormatIsReadOncePerCallAndOnlyWhenUsed) {
    CVLEXIF exif;
    int reads = 0;
    exif.SetNumberFormatSource([&reads] {
        ++reads;
        NumberFormat format;
        format.decimalSeparator = ",";
        format.thousandSeparator = ".";
        format.negativeOrder = 0;
        return format;
    });
    std::string text;
    Set(exif, CVLEXIF::kSubjectDistance, {Real(-1234.5)});
    Set(exif, CVLEXIF::kOrientation, {Int(1)});
    EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kSubjectDistance, text));
    EXPECT_EQ(text, "(1.234,50) m");
    EXPECT_EQ(reads, 1);
    EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kOrientation, text));
    EXPECT_EQ(reads, 1);

    // 301 digits grouped by 10-character separators pass the 511 characters
    // the host's buffer holds: the number shows as nothing.
    exif.SetNumberFormatSource([] {
        NumberFormat format;
        format.thousandSeparator = "<thousand>";
        return format;
    });
    Set(exif, CVLEXIF::kSubjectDistance, {Real(1e300)});
    EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kSubjectDistance, text));
    EXPECT_EQ(text, "m");
}

TEST(ExifFormat, FormatStringExpandsTagNumbers) {
    CVLEXIF exif = Catalogue();
    Set(exif, CVLEXIF::kExposureTime, {Real(1.0 / 250)});
    Set(exif, CVLEXIF::kFNumber, {Real(5.6)});
    Set(exif, CVLEXIF::kGPSAltitudeRef, {Int(1)});  // tag 5
    const std::pair<const char*, const char*> cases[] = {
        {"#33434 at #33437", "1/250 s at 5.6"},
        {"a#b#", "a#b#"},
        {"##33434", "#1/250 s"},
        {"#0033434!", "1/250 s!"},
        {"#5", "1"},
        // "%d" skips a blank or a sign, but only the digits right after the
        // "#" are used up: what was skipped follows as text.
        {"# 5", "1 5"},
        {"#+5x", "1+5x"},
        {"#-5", "-5"},
        {"#33435 and #282.", " and ."},  // not catalogued; no value
        {"#99999999999", ""},            // beyond an int
        {"", ""},
    };
    for (const auto& [templ, expected] : cases) {
        std::string out = "left over";
        EXPECT_EQ(exif.FormatString(templ, out), CVLEXIF::errOK);
        EXPECT_EQ(out, expected) << '"' << templ << '"';
    }
    std::string out = "left over";
    EXPECT_EQ(exif.FormatString(nullptr, out), CVLEXIF::errOK);
    EXPECT_EQ(out, "");
}

}  // namespace
