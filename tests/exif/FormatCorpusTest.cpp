// The viewer's texts on the public corpus, set beside the values ExifTool
// prints for the same fields (its -j output without -n). Where the two
// conventions differ by design, the table below says how our text reads in
// ExifTool's words and why; any other difference fails.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "tests/support/Corpus.h"
#include "tests/support/ExifTool.h"

namespace {

using Json = nlohmann::ordered_json;
using vliptc::test::kCorpus;
using vliptc::test::WalkedByExifReader;

// Our text and ExifTool's printed value agree.
using Agreement = std::function<bool(const std::string& ours, const std::string& theirs)>;

// Our enumeration texts in ExifTool's words; a text not listed reads the same.
Agreement Words(std::map<std::string, std::set<std::string>> theirWords) {
    return [words = std::move(theirWords)](const std::string& ours, const std::string& theirs) {
        const auto it = words.find(ours);
        return it == words.end() ? ours == theirs : it->second.count(theirs) > 0;
    };
}

// A number we show in full (the default rule) and ExifTool rounds to the
// decimals it prints, after stripping its unit.
Agreement Rounded(const std::string& unit) {
    return [unit](const std::string& ours, const std::string& theirs) {
        if (theirs.size() < unit.size() ||
            theirs.compare(theirs.size() - unit.size(), unit.size(), unit) != 0)
            return false;
        const std::string number = theirs.substr(0, theirs.size() - unit.size());
        const auto point = number.find('.');
        const int decimals = point == std::string::npos ? 0 : int(number.size() - point - 1);
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", decimals, std::strtod(ours.c_str(), nullptr));
        return number == text;
    };
}

// ExifTool prints times from 1/4 s up as decimals ("0.6", "8"), shorter
// ones as 1/x with x rounded; we show every time below 1 s as 1/x, and whole
// seconds without decimals.
bool SameExposureTime(const std::string& ours, const std::string& theirs) {
    if (theirs.rfind("1/", 0) == 0) return ours == theirs + " s";
    const double seconds = std::strtod(theirs.c_str(), nullptr);
    char text[64];
    if (seconds <= 0) return ours == "1/inf s";  // a zero time: 1/0
    if (seconds < 1) {
        std::snprintf(text, sizeof text, "1/%.0f s", 1 / seconds);
    } else {
        std::snprintf(text, sizeof text, seconds == std::floor(seconds) ? "%.0f s" : "%.2f s", seconds);
    }
    return ours == text;
}

// Bit 0 of the flash value is all we show; ExifTool names every bit ("On,
// Red-eye reduction" has fired, "Off, Red-eye reduction" has not).
bool SameFlash(const std::string& ours, const std::string& theirs) {
    bool fired = theirs.find("Did not fire") == std::string::npos && theirs.rfind("No ", 0) != 0 &&
                 theirs.rfind("Off", 0) != 0;
    unsigned value = 0;
    if (std::sscanf(theirs.c_str(), "Unknown (0x%x)", &value) == 1) fired = (value & 1) != 0;
    return ours == (fired ? "Fired" : "Not fired");
}

struct Comparison {
    CVLEXIF::EFieldTags tag;
    const char* exifToolName;
    Agreement agree;
};

const Comparison kComparisons[] = {
    {CVLEXIF::kExposureTime, "ExposureTime", SameExposureTime},
    // The default rule shows the rational in full ("5.6", "4"); ExifTool
    // prints one decimal ("5.6", "4.0"), two below 1.
    {CVLEXIF::kFNumber, "FNumber", Rounded("")},
    // Several values: we join them with ",", ExifTool with ", ".
    {CVLEXIF::kISOSpeedRatings, "ISO",
     [](const std::string& ours, std::string theirs) {
         for (auto at = theirs.find(", "); at != std::string::npos; at = theirs.find(", ", at))
             theirs.erase(at + 1, 1);
         return ours == theirs;
     }},
    // The default rule again; ExifTool adds one decimal and its unit.
    {CVLEXIF::kFocalLength, "FocalLength", Rounded(" mm")},
    // We name where row 0 and column 0 of the stored image lie; ExifTool
    // names the turn that shows it upright.
    {CVLEXIF::kOrientation, "Orientation",
     Words({{"top/left", {"Horizontal (normal)"}},
            {"top/right", {"Mirror horizontal"}},
            {"bottom/right", {"Rotate 180"}},
            {"bottom/left", {"Mirror vertical"}},
            {"left/top", {"Mirror horizontal and rotate 270 CW"}},
            {"right/top", {"Rotate 90 CW"}},
            {"right/bottom", {"Mirror horizontal and rotate 90 CW"}},
            {"left/bottom", {"Rotate 270 CW"}}})},
    {CVLEXIF::kFlash, "Flash", SameFlash},
    // The names of the EXIF standard; ExifTool's own spelling.
    {CVLEXIF::kMeteringMode, "MeteringMode",
     Words({{"Center Weighted Average", {"Center-weighted average"}},
            {"MultiSpot", {"Multi-spot"}},
            {"Pattern", {"Multi-segment"}}})},
    // Our table knows the light sources of the first EXIF versions; the
    // later ones (flash, weather, more fluorescent kinds) read "reserved".
    {CVLEXIF::kLightSource, "LightSource",
     Words({{"Unidentified", {"Unknown"}},
            {"Unspecified", {"Other"}},
            {"reserved",
             {"Flash", "Fine Weather", "Cloudy", "Shade", "Daylight Fluorescent", "Day White Fluorescent",
              "Cool White Fluorescent", "White Fluorescent", "Warm White Fluorescent", "D50",
              "ISO Studio Tungsten"}}})},
    // The standard's long names; ExifTool's short ones (and its reading of
    // 5 and 6 as slow and high speed).
    {CVLEXIF::kExposureProgram, "ExposureProgram",
     Words({{"Not defined", {"Not Defined"}},
            {"Normal program", {"Program AE"}},
            {"Aperture priority", {"Aperture-priority AE"}},
            {"Shutter priority", {"Shutter speed priority AE"}},
            {"Creative program (biased toward depth of field)", {"Creative (Slow speed)"}},
            {"Action program (biased toward fast shutter speed)", {"Action (High speed)"}},
            {"Portrait mode (for closeup photos with the background out of focus)", {"Portrait"}},
            {"Landscape mode (for landscape photos with the background in focus)", {"Landscape"}}})},
};

// Values that the reader reads otherwise than ExifTool (CorpusTest checks
// the reading): here the rationals' halves are 2^31 or more and read as
// negative.
const std::set<std::pair<std::string, std::string>> kReadOtherwise = {
    {"jpeg/mde_FujiFilm_FinePixS2Pro.jpg", "ExposureTime"},
    {"jpeg/mde_FujiFilm_FinePixS2Pro.jpg", "FocalLength"},
};

// ExifTool's first printed value of each tag name in the walked locations
// (keys GROUP:LOCATION:NAME, in file order).
std::map<std::string, std::string> TheirPrintedValues(const std::string& file) {
    std::map<std::string, std::string> values;
    std::ifstream in(kCorpus + "oracle/exiftool-print/" + file + ".json");
    const Json oracle = Json::parse(in, nullptr, false);
    if (!oracle.is_object()) return values;
    for (const auto& [key, value] : oracle.items()) {
        const auto first = key.find(':');
        const auto second = key.find(':', first + 1);
        if (second == std::string::npos || !WalkedByExifReader(key.substr(first + 1, second - first - 1)))
            continue;
        values.emplace(key.substr(second + 1), value.is_string() ? value.get<std::string>() : value.dump());
    }
    return values;
}

}  // namespace

TEST(ExifFormatCorpus, TextsAgreeWithExifToolsPrintedValues) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    std::map<std::string, int> compared;
    for (const std::string& file : vliptc::test::CorpusFiles({"jpeg", "tiff", "psd", "raw"})) {
        CVLEXIF exif;
        exif.SetNumberFormatSource([] { return vliptc::platform::NumberFormat(); });
        if (exif.LoadFile((kCorpus + file).c_str()) != CVLEXIF::errOK) continue;
        // A .crw is read through its companion.
        const bool raw = file.size() > 4 && file.compare(file.size() - 4, 4, ".crw") == 0;
        const auto theirs = TheirPrintedValues(raw ? file.substr(0, file.size() - 4) + ".THM" : file);
        for (const Comparison& c : kComparisons) {
            std::string ours;
            const auto it = theirs.find(c.exifToolName);
            if (!exif.GetFormattedField(c.tag, ours) || it == theirs.end() ||
                kReadOtherwise.count({file, c.exifToolName}) > 0) {
                continue;
            }
            ++compared[c.exifToolName];
            EXPECT_TRUE(c.agree(ours, it->second)) << file << " " << c.exifToolName << ": ours \"" << ours
                                                   << "\", ExifTool \"" << it->second << '"';
        }
    }
    for (const Comparison& c : kComparisons) EXPECT_GT(compared[c.exifToolName], 0) << c.exifToolName;
}
