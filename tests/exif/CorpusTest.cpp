// The EXIF reader against the public corpus: on every file that is not
// malformed, the fields it reads agree with what ExifTool read (its numeric
// "-n" values) for every tag the catalogue names, except where one of the
// reader's kept rules (or one of ExifTool's conversions) makes them differ.
// Each such difference is a row of kExpected with its reason; any other
// difference fails, and so does a row no file needs. Every malformed file
// gives a result code and no crash.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "exif/EXIF.h"
#include "platform/Charset.h"
#include "tests/support/Corpus.h"
#include "tests/support/ExifTool.h"

namespace {

using Json = nlohmann::ordered_json;
using vliptc::platform::Cp1252ToUtf8;
using vliptc::platform::Utf8ToCp1252;
using vliptc::test::kCorpus;
using vliptc::test::WalkedByExifReader;

// Values as both sides can state them: numbers are compared as numbers, all
// else as UTF-8 text.
using Tokens = std::vector<std::string>;

std::optional<double> Number(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' ? std::optional<double>(value) : std::nullopt;
}

std::string Token(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", number);
    return text;
}

bool Same(const std::string& a, const std::string& b) {
    const auto x = Number(a);
    const auto y = Number(b);
    if (x && y) return std::fabs(*x - *y) <= 1e-7 * std::max({1.0, std::fabs(*x), std::fabs(*y)});
    return a == b;
}

bool Same(const Tokens& a, const Tokens& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](auto& x, auto& y) { return Same(x, y); });
}

std::vector<double> Numbers(const Tokens& tokens) {
    std::vector<double> out;
    for (const auto& t : tokens) {
        if (const auto n = Number(t)) out.push_back(*n);
    }
    return out;
}

Tokens AsTokens(const std::vector<double>& numbers) {
    Tokens out;
    for (const double n : numbers) out.push_back(Token(n));
    return out;
}

std::string Show(const Tokens& tokens) {
    std::string out = "[";
    for (std::size_t i = 0; i < tokens.size() && i < 12; ++i)
        out += (i ? ", \"" : "\"") + tokens[i].substr(0, 60) + "\"";
    return out + (tokens.size() > 12 ? ", ... (" + std::to_string(tokens.size()) + ")]" : "]");
}

// Our values: numbers, text (Windows-1252, unless the bytes are UTF-8, as
// ExifTool reads them then), blobs as their bytes.
Tokens Ours(const CVLEXIF::SField& field) {
    Tokens out;
    for (const CVLProperty& value : field.vValues) {
        const std::string& bytes = value.Bytes();
        if (value.GetKind() == CVLProperty::kText) {
            out.push_back(Cp1252ToUtf8(Utf8ToCp1252(bytes)) == bytes ? bytes : Cp1252ToUtf8(bytes));
        } else if (value.GetKind() == CVLProperty::kBlob) {
            for (const char byte : bytes) out.push_back(std::to_string(static_cast<unsigned char>(byte)));
        } else {
            out.push_back(value.IsEmpty() ? std::string() : Token(value.GetDouble()));
        }
    }
    return out;
}

// ExifTool's value: a number, numbers separated by blanks, text, or
// "base64:" bytes.
Tokens Theirs(const std::string& format, const Json& value) {
    if (value.is_number()) return {Token(value.get<double>())};
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    if (text.rfind("base64:", 0) == 0) {
        Tokens bytes;
        for (const char byte : vliptc::test::ExifToolText(text))
            bytes.push_back(std::to_string(std::uint8_t(byte)));
        return bytes;
    }
    std::istringstream words(text);
    Tokens numbers;
    for (std::string word; words >> word;) numbers.push_back(word);
    const bool allNumbers = Numbers(numbers).size() == numbers.size();
    return format != "string" && numbers.size() > 1 && allNumbers ? numbers : Tokens{text};
}

// One catalogued tag of one file, as both sides read it.
struct Case {
    std::uint32_t tag = 0;
    std::string format;  // ExifTool's value format ("int16u", "undef", ...); empty when it lists none
    Tokens theirs;       // empty when ExifTool lists no value
    Tokens ours;
    bool motorola = false;  // the TIFF data is big-endian
    const Json* exiv2 = nullptr;

    bool Is(std::initializer_list<const char*> formats) const {
        return std::any_of(formats.begin(), formats.end(), [&](const char* f) { return format == f; });
    }
    bool OneText() const { return ours.size() == 1 && theirs.size() == 1; }
};

// exiv2's raw value (offsets stay relative to the TIFF header; pointers are
// listed), from the main directories: rationals as "n/d" words.
Tokens Exiv2Words(const Case& c) {
    if (c.exiv2 == nullptr) return {};
    for (const Json& entry : (*c.exiv2)["entries"]) {
        const std::string key = entry["key"].get<std::string>();
        if (entry["tag"].get<std::uint32_t>() != c.tag || key.rfind("Exif.Iop.", 0) == 0) continue;
        std::istringstream words(entry["value"].get<std::string>());
        Tokens out;
        for (std::string word; words >> word;) out.push_back(word);
        return out;
    }
    return {};
}

// exiv2's fractions as the reader reads them: both halves signed 32-bit,
// 0.0 for a zero denominator. `when` picks the fractions that matter.
bool SignedFractionsMatch(const Case& c, const std::function<bool(long long, long long)>& when) {
    bool any = false;
    std::vector<double> values;
    for (const std::string& word : Exiv2Words(c)) {
        long long n = 0, d = 0;
        if (std::sscanf(word.c_str(), "%lld/%lld", &n, &d) != 2) return false;
        any |= when(n, d);
        const auto sn = static_cast<std::int32_t>(static_cast<std::uint32_t>(n));
        const auto sd = static_cast<std::int32_t>(static_cast<std::uint32_t>(d));
        values.push_back(sd == 0 ? 0.0 : double(sn) / sd);
    }
    return any && Same(c.ours, AsTokens(values));
}

bool Copies(const Tokens& tokens, std::size_t count) {
    const auto n = Numbers(tokens);
    return n.size() == count && std::adjacent_find(n.begin(), n.end(), std::not_equal_to<>()) == n.end();
}

bool IsOneOf(std::uint32_t tag, std::initializer_list<CVLEXIF::EFieldTags> tags) {
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

// A difference that a rule explains; a row with a file applies to it alone.
struct ExpectedDifference {
    const char* reason;
    std::function<bool(const Case&)> explains;
    const char* file = nullptr;
};

const std::vector<ExpectedDifference> kExpected = {
    // The reader's rules.
    {"SHORT values come from the value field, sign-extended: several values are copies of the first (two) or "
     "of half the offset (more)",
     [](const Case& c) {
         const auto theirs = Numbers(c.theirs);
         if (!c.Is({"int16u", "int16s"}) || theirs.empty()) return false;
         if (theirs.size() > 2) return Copies(c.ours, theirs.size());
         const double first = static_cast<std::int16_t>(static_cast<std::uint16_t>(theirs[0]));
         return Same(c.ours, AsTokens(std::vector<double>(theirs.size(), first)));
     }},
    {"LONG values come from the value field: several values are copies of the offset",
     [](const Case& c) {
         return c.Is({"int32u", "int32s"}) && c.theirs.size() > 1 && Copies(c.ours, c.theirs.size());
     }},
    {"values of at most 4 bytes come from the value field decoded in the file's byte order, "
     "least-significant "
     "byte first: reversed in big-endian files (the versions excepted)",
     [](const Case& c) {
         if (!c.motorola || !c.Is({"int8u", "string", "undef"}) || c.theirs.empty() ||
             IsOneOf(c.tag, {CVLEXIF::kExifVersion, CVLEXIF::kFlashPixVersion})) {
             return false;
         }
         std::vector<double> field = Numbers(c.theirs);
         if (c.format == "string") {
             field.clear();
             for (const char ch : Utf8ToCp1252(c.theirs[0])) field.push_back(static_cast<unsigned char>(ch));
             field.push_back(0);  // the terminator counts
         }
         const std::size_t count = field.size();
         if (count > 4) return false;
         field.resize(4, 0.0);
         std::reverse(field.begin(), field.end());
         if (IsOneOf(c.tag, {CVLEXIF::kFileSource, CVLEXIF::kSceneType}))
             return Same(c.ours, AsTokens({field[0]}));
         if (c.format != "string")
             return Same(c.ours, AsTokens({field.begin(), field.begin() + long(count)}));
         std::string text;
         for (std::size_t i = 0; i < count && field[i] != 0; ++i) text.push_back(static_cast<char>(field[i]));
         return Same(c.ours, {Cp1252ToUtf8(text)});
     }},
    {"RATIONALs are read as signed 32-bit halves (checked against exiv2's fractions)",
     [](const Case& c) {
         return SignedFractionsMatch(
             c, [](long long n, long long d) { return n >= (1LL << 31) || d >= (1LL << 31); });
     }},
    {"a zero denominator reads as 0; ExifTool shows undef (and no degrees)",
     [](const Case& c) { return SignedFractionsMatch(c, [](long long, long long d) { return d == 0; }); }},
    {"an entry of no values (count 0) stores nothing; ExifTool shows empty text",
     [](const Case& c) { return c.ours.empty() && c.theirs == Tokens{""}; }},
    {"\"File source\" and \"Scene type\" are decimal text of the first byte; ExifTool shows a longer entry's "
     "bytes",
     [](const Case& c) {
         return IsOneOf(c.tag, {CVLEXIF::kFileSource, CVLEXIF::kSceneType}) && c.OneText() &&
                c.theirs[0].size() == 1 &&
                Same(c.ours[0], std::to_string(static_cast<unsigned char>(c.theirs[0][0])));
     }},
    {"UTF-16 text is kept in Windows-1252: the characters it lacks become \"?\"",
     [](const Case& c) { return c.OneText() && c.ours[0] == Cp1252ToUtf8(Utf8ToCp1252(c.theirs[0])); }},
    {"the EXIF data is read to the end of the file; ExifTool drops an entry whose data passes the APP1 "
     "segment",
     [](const Case& c) { return c.theirs.empty(); }, "jpeg/ex2_exiv2-bug855.jpg"},
    {"IFD1 is junk: its entries are read as they stand (no values, or empty ones); ExifTool skips them",
     [](const Case& c) {
         return c.theirs.empty() &&
                std::all_of(c.ours.begin(), c.ours.end(), [](auto& t) { return t.empty(); });
     },
     "jpeg/ex2_exiv2-bug495.jpg"},

    // ExifTool's conversions (-n keeps them) and presentation.
    {"ExifTool gives offsets from the start of the file, the directory from the TIFF header (checked against "
     "exiv2)",
     [](const Case& c) {
         const Tokens raw = Exiv2Words(c);
         return IsOneOf(c.tag, {CVLEXIF::kJPEGInterchangeFormat, CVLEXIF::kStripOffsets}) &&
                (raw.size() > 1 ? Copies(c.ours, raw.size()) : Same(c.ours, raw));
     }},
    {"ExifTool lists no pointer tags: the interoperability pointer is checked against exiv2",
     [](const Case& c) {
         return c.tag == CVLEXIF::kIFDPointer && c.theirs.empty() && Same(c.ours, Exiv2Words(c));
     }},
    {"ExifTool's JSON leaves the maker note out",
     [](const Case& c) { return c.tag == CVLEXIF::kMakerNote && c.theirs.empty(); }},
    {"ExifTool trims trailing blanks from text",
     [](const Case& c) {
         return c.OneText() && c.ours[0].substr(0, c.ours[0].find_last_not_of(' ') + 1) == c.theirs[0];
     }},
    {"ExifTool converts the APEX shutter speed to an exposure time (2^-v)",
     [](const Case& c) {
         return c.tag == CVLEXIF::kShutterSpeedValue && c.OneText() &&
                Same(Token(std::exp2(-Numbers(c.ours).at(0))), c.theirs[0]);
     }},
    {"ExifTool converts APEX apertures to F numbers (2^(v/2))",
     [](const Case& c) {
         return IsOneOf(c.tag, {CVLEXIF::kApertureValue, CVLEXIF::kMaxApertureValue}) && c.OneText() &&
                Same(Token(std::exp2(Numbers(c.ours).at(0) / 2)), c.theirs[0]);
     }},
    {"ExifTool converts GPS degrees, minutes and seconds to decimal degrees",
     [](const Case& c) {
         const auto d = Numbers(c.ours);
         return IsOneOf(c.tag, {CVLEXIF::kGPSLatitude, CVLEXIF::kGPSLongitude, CVLEXIF::kGPSDestLatitude,
                                CVLEXIF::kGPSDestLongitude}) &&
                d.size() == 3 && Same(AsTokens({d[0] + d[1] / 60 + d[2] / 3600}), c.theirs);
     }},
    {"ExifTool shows the GPS time stamp as text (hh:mm:ss)",
     [](const Case& c) {
         double h = 0, m = 0, s = 0;
         return c.tag == CVLEXIF::kGPSTimeStamp && c.theirs.size() == 1 &&
                std::sscanf(c.theirs[0].c_str(), "%lf:%lf:%lf", &h, &m, &s) == 3 &&
                Same(c.ours, AsTokens({h, m, s}));
     }},
    {"ExifTool reads the CFA pattern's two repeat counts as 16-bit numbers",
     [](const Case& c) {
         const auto b = Numbers(c.ours);
         if (c.tag != CVLEXIF::kCFAPattern || b.size() < 4) return false;
         std::vector<double> big{b[0] * 256 + b[1], b[2] * 256 + b[3]},
             little{b[1] * 256 + b[0], b[3] * 256 + b[2]};
         big.insert(big.end(), b.begin() + 4, b.end());
         little.insert(little.end(), b.begin() + 4, b.end());
         return Same(AsTokens(big), c.theirs) || Same(AsTokens(little), c.theirs);
     }},
};

// Files on which the reader's result differs from "read, as ExifTool did".
struct ExpectedResult {
    const char* file;
    CVLEXIF::EError result;
    const char* reason;
    bool compare = false;  // the values stored before the failure are compared too
};

const std::vector<ExpectedResult> kExpectedResults = {
    {"jpeg/ian_no_exif.jpg", CVLEXIF::errNoEXIF, "only the first APP1 is examined, and it is XMP"},
    {"tiff/et_BigTIFF.btf", CVLEXIF::errFormat, "BigTIFF: the magic is 43, not 42"},
    {"raw/et_Panasonic.rw2", CVLEXIF::errFormat, "the magic is 0x55, not 42"},
    {"psd/ex2_exiv2-bug800-PHUT.psd", CVLEXIF::errNoEXIF,
     "a resource signed PHUT ends the walk before the EXIF one"},
    {"jpeg/ex2_exiv2-bug495.jpg", CVLEXIF::errNoEXIF,
     "a link points past the end: the values read so far stay", true},
    {"raw/et_CanonRaw.crw", CVLEXIF::errOpen, "a .CRW without its .thm companion"},
};

std::optional<Json> ReadJson(const std::string& path) {
    std::ifstream in(path);
    if (!in) return std::nullopt;
    return Json::parse(in, nullptr, false);
}

// ExifTool's first value of each tag the reader would read, in file order:
// tag -> (value format, value). Keys are GROUP:LOCATION[:FORMAT]:NAME.
std::map<std::uint32_t, std::pair<std::string, Json>> TheirFirstValues(const std::optional<Json>& oracle) {
    std::map<std::uint32_t, std::pair<std::string, Json>> theirs;
    if (!oracle || !oracle->is_object()) return theirs;
    for (const auto& [key, item] : oracle->items()) {
        const auto first = key.find(':');
        const auto second = key.find(':', first + 1);
        const auto third = key.find(':', second + 1);
        if (second == std::string::npos || !WalkedByExifReader(key.substr(first + 1, second - first - 1)))
            continue;
        const std::string format =
            third == std::string::npos ? "" : key.substr(second + 1, third - second - 1);
        theirs.emplace(item["id"].get<std::uint32_t>(), std::make_pair(format, item["val"]));
    }
    return theirs;
}

}  // namespace

TEST(ExifCorpus, ReadsWhatExifToolReadsExceptTheKeptRules) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    std::map<std::string, int> used;
    int compared = 0;
    for (const std::string& file : vliptc::test::CorpusFiles({"jpeg", "tiff", "psd", "raw"})) {
        // A .crw is read through its companion, so ExifTool's reading of that is the oracle.
        const std::string oracleFile =
            file.ends_with(".crw") ? file.substr(0, file.size() - 4) + ".THM" : file;
        const auto theirs = TheirFirstValues(ReadJson(kCorpus + "oracle/exiftool/" + oracleFile + ".json"));
        const auto exiv2 = ReadJson(kCorpus + "oracle/exiv2/" + oracleFile + ".json");

        CVLEXIF exif;
        const CVLEXIF::EError result = exif.LoadFile((kCorpus + file).c_str());
        const auto special = std::find_if(kExpectedResults.begin(), kExpectedResults.end(),
                                          [&](const auto& e) { return file == e.file; });
        if (special == kExpectedResults.end()) {
            EXPECT_EQ(result, theirs.empty() ? CVLEXIF::errNoEXIF : CVLEXIF::errOK) << file;
        } else {
            EXPECT_EQ(result, special->result) << file << ": " << special->reason;
            ++used[special->reason];
            if (!special->compare) continue;
        }
        // A read that succeeds leaves the catalogue sorted by group, then
        // name, unknown tags included.
        EXPECT_TRUE(result != CVLEXIF::errOK ||
                    std::is_sorted(exif.Fields().begin(), exif.Fields().end(),
                                   [](const CVLEXIF::SField& a, const CVLEXIF::SField& b) {
                                       return std::tie(a.nGroup, a.strName) < std::tie(b.nGroup, b.strName);
                                   }))
            << file;

        for (const CVLEXIF::SField& field : exif.Fields()) {
            const auto their = theirs.find(field.nTag);
            if (field.strName == "Unknown" || (!field.bPresent && their == theirs.end())) continue;
            Case c;
            c.tag = field.nTag;
            c.motorola = exif.IsMotorola();
            c.exiv2 = exiv2 ? &*exiv2 : nullptr;
            if (their != theirs.end()) {
                c.format = their->second.first;
                c.theirs = Theirs(c.format, their->second.second);
            }
            c.ours = Ours(field);
            ++compared;
            if (field.bPresent && their != theirs.end() && Same(c.ours, c.theirs)) continue;
            const auto row = std::find_if(kExpected.begin(), kExpected.end(), [&](const auto& r) {
                return field.bPresent && (r.file == nullptr || file == r.file) && r.explains(c);
            });
            if (row != kExpected.end()) {
                ++used[row->reason];
                continue;
            }
            ADD_FAILURE() << file << ": tag " << field.nTag << " (" << field.strName << ", " << c.format
                          << "): ours " << (field.bPresent ? Show(c.ours) : "absent") << ", ExifTool "
                          << (their != theirs.end() ? Show(c.theirs) : "absent");
        }
    }
    EXPECT_GT(compared, 3000);
    for (const auto& row : kExpected) EXPECT_GT(used[row.reason], 0) << "no file needs: " << row.reason;
    for (const auto& row : kExpectedResults)
        EXPECT_GT(used[row.reason], 0) << "no file needs: " << row.reason;
    if (std::getenv("VLIPTC_SHOW_DIFFERENCES") != nullptr) {
        for (const auto& [reason, count] : used) std::printf("%5d  %s\n", count, reason.c_str());
    }
}
