#pragma once

// Reading the public corpus (../shared/corpus, relative to the repository
// root where the tests run) and what ExifTool and exiv2 make of a file.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::test {

inline const std::string kCorpus = "../shared/corpus/";

inline bool CorpusPresent() {
    return std::filesystem::exists(kCorpus + "MANIFEST.tsv");
}

#define VLIPTC_SKIP_WITHOUT_CORPUS()                                                                        \
    if (!::vliptc::test::CorpusPresent())                                                                   \
    GTEST_SKIP() << "the public corpus is not at ../shared/corpus (tests run from the repository root); " \
                    "corpus tests skipped"

// Corpus paths ("jpeg/x.jpg") of the files in the folders, sorted.
inline std::vector<std::string> CorpusFiles(std::initializer_list<const char*> folders) {
    std::vector<std::string> out;
    for (const char* folder : folders) {
        for (const auto& entry : std::filesystem::directory_iterator(kCorpus + folder)) {
            if (entry.is_regular_file()) out.push_back(std::string(folder) + "/" + entry.path().filename().string());
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

// Runs a shell command and returns what it printed (standard output).
inline std::string RunCommand(const std::string& command, int* status = nullptr) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return out;
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, got);
    const int result = ::pclose(pipe);
    if (status != nullptr) *status = result;
    return out;
}

inline bool HaveTool(const char* name) {
    int status = 0;
    RunCommand(std::string("command -v ") + name + " >/dev/null 2>&1", &status);
    return status == 0;
}

inline std::string Quote(const std::string& path) {
    std::string out = "'";
    for (char c : path) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// Record-2 datasets and their values.
using Datasets = std::map<int, std::vector<std::string>>;

// The record-2 datasets of a store (its values as stored bytes).
inline Datasets FromStore(const CIPTC& store) {
    Datasets out;
    for (const auto& item : store.Fields()) {
        for (const auto& value : item.vValues) out[static_cast<int>(item.nID)].push_back(value.String());
    }
    return out;
}

// ExifTool's names of the application record, by dataset. Record 1 reuses
// many of these numbers, and ExifTool puts both records in one group, so the
// name is what tells a record-2 dataset.
inline bool IsApplicationRecordName(int id, const std::string& name) {
    static const std::map<int, std::vector<std::string>> names = {
        {0, {"ApplicationRecordVersion"}}, {3, {"ObjectTypeReference"}}, {4, {"ObjectAttributeReference"}},
        {5, {"ObjectName"}}, {7, {"EditStatus"}}, {8, {"EditorialUpdate"}}, {10, {"Urgency"}},
        {12, {"SubjectReference"}}, {15, {"Category"}}, {20, {"SupplementalCategories"}},
        {22, {"FixtureIdentifier"}}, {25, {"Keywords"}}, {26, {"ContentLocationCode"}},
        {27, {"ContentLocationName"}}, {30, {"ReleaseDate"}}, {35, {"ReleaseTime"}}, {37, {"ExpirationDate"}},
        {38, {"ExpirationTime"}}, {40, {"SpecialInstructions"}}, {42, {"ActionAdvised"}},
        {45, {"ReferenceService"}}, {47, {"ReferenceDate"}}, {50, {"ReferenceNumber"}}, {55, {"DateCreated"}},
        {60, {"TimeCreated"}}, {62, {"DigitalCreationDate"}}, {63, {"DigitalCreationTime"}},
        {65, {"OriginatingProgram"}}, {70, {"ProgramVersion"}}, {75, {"ObjectCycle"}}, {80, {"By-line"}},
        {85, {"By-lineTitle"}}, {90, {"City"}}, {92, {"Sub-location"}}, {95, {"Province-State"}},
        {100, {"Country-PrimaryLocationCode"}}, {101, {"Country-PrimaryLocationName"}},
        {103, {"OriginalTransmissionReference"}}, {105, {"Headline"}}, {110, {"Credit"}}, {115, {"Source"}},
        {116, {"CopyrightNotice"}}, {118, {"Contact"}}, {120, {"Caption-Abstract"}}, {121, {"LocalCaption"}},
        {122, {"Writer-Editor"}}, {125, {"RasterizedCaption"}}, {130, {"ImageType"}}, {131, {"ImageOrientation"}},
        {135, {"LanguageIdentifier"}}, {150, {"AudioType"}}, {151, {"AudioSamplingRate"}},
        {152, {"AudioSamplingResolution"}}, {153, {"AudioDuration"}}, {154, {"AudioOutcue"}}, {184, {"JobID"}},
        {185, {"MasterDocumentID"}}, {186, {"ShortDocumentID"}}, {187, {"UniqueDocumentID"}}, {188, {"OwnerID"}},
        {200, {"ObjectPreviewFileFormat"}}, {201, {"ObjectPreviewFileVersion"}}, {202, {"ObjectPreviewData"}},
        {221, {"Prefs"}}, {225, {"ClassifyState"}}, {228, {"SimilarityIndex"}}, {230, {"DocumentNotes"}},
        {231, {"DocumentHistory"}}, {232, {"ExifCameraInfo"}}, {255, {"CatalogSets"}},
    };
    if (name == "IPTC_ApplicationRecord_" + std::to_string(id)) return true;
    const auto it = names.find(id);
    return it != names.end() && std::find(it->second.begin(), it->second.end(), name) != it->second.end();
}

inline std::string DecodeBase64(const std::string& text) {
    std::string out;
    unsigned buffer = 0;
    int bits = 0;
    for (char c : text) {
        int v = -1;
        if (c >= 'A' && c <= 'Z') v = c - 'A';
        else if (c >= 'a' && c <= 'z') v = c - 'a' + 26;
        else if (c >= '0' && c <= '9') v = c - '0' + 52;
        else if (c == '+') v = 62;
        else if (c == '/') v = 63;
        if (v < 0) continue;
        buffer = (buffer << 6) | static_cast<unsigned>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<char>((buffer >> bits) & 0xFF));
        }
    }
    return out;
}

// One ExifTool value as text: strings as they are (binary ones decoded from
// their "base64:" form), numbers as JSON writes them.
inline std::string ExifToolText(const nlohmann::json& value) {
    if (value.is_string()) {
        const std::string text = value.get<std::string>();
        return text.rfind("base64:", 0) == 0 ? DecodeBase64(text.substr(7)) : text;
    }
    return value.dump();
}

// The record-2 datasets of the first IPTC group (IPTC, IPTC2, ...) that
// ExifTool found at the given place ("JPEG-APP13-Photoshop-IPTC", ...), from
// an object written with -j -G1:5 -D (keys "GROUP:PATH[:FORMAT]:NAME").
inline Datasets FromExifTool(const nlohmann::json& object, const std::string& place) {
    std::map<std::string, Datasets> groups;
    for (auto it = object.begin(); it != object.end(); ++it) {
        const std::string key = it.key();
        std::vector<std::string> parts;
        std::size_t start = 0;
        for (std::size_t colon; (colon = key.find(':', start)) != std::string::npos; start = colon + 1) {
            parts.push_back(key.substr(start, colon - start));
        }
        parts.push_back(key.substr(start));
        if (parts.size() < 3 || parts[0].rfind("IPTC", 0) != 0 || parts[1] != place) continue;
        if (!it.value().is_object() || !it.value().contains("id")) continue;
        const int id = it.value()["id"].get<int>();
        if (!IsApplicationRecordName(id, parts.back())) continue;
        const auto& val = it.value()["val"];
        auto& values = groups[parts[0]][id];
        if (val.is_array()) {
            for (const auto& v : val) values.push_back(ExifToolText(v));
        } else {
            values.push_back(ExifToolText(val));
        }
    }
    if (groups.empty()) return {};
    // "IPTC" sorts before "IPTC2", "IPTC2" before "IPTC3".
    return groups.begin()->second;
}

// The place ExifTool names for the block that the library read.
inline std::string PlaceOf(std::uint32_t format) {
    switch (format) {
        case CIPTC::kFormatJPEG:
            return "JPEG-APP13-Photoshop-IPTC";
        case CIPTC::kFormatTIFF:
            return "TIFF-IFD0-IPTC";
        case CIPTC::kFormatPSD:
            return "PSD-IPTC";
        case CIPTC::kFormatTrailer:
            return "JPEG-Trailer-FotoStation-IPTC";
        default:
            return "";
    }
}

// exiv2's record-2 datasets: "exiv2 -q -u -PIxkyv FILE" prints one line per
// dataset (tag in hex, key, type, value); a value with line breaks goes on
// over the following lines.
inline Datasets FromExiv2(const std::string& path) {
    Datasets out;
    const std::string listing = RunCommand("exiv2 -q -u -PIxkyv " + Quote(path) + " 2>/dev/null");
    std::string* last = nullptr;
    std::size_t start = 0;
    while (start < listing.size()) {
        std::size_t end = listing.find('\n', start);
        if (end == std::string::npos) end = listing.size();
        const std::string line = listing.substr(start, end - start);
        start = end + 1;
        char key[256] = {};
        char type[64] = {};
        unsigned tag = 0;
        int consumed = 0;
        if (std::sscanf(line.c_str(), "0x%x %255s %63s %n", &tag, key, type, &consumed) >= 3 &&
            std::string(key).rfind("Iptc.", 0) == 0) {
            last = nullptr;
            if (std::string(key).rfind("Iptc.Application2.", 0) != 0) continue;
            out[static_cast<int>(tag)].push_back(line.substr(static_cast<std::size_t>(consumed)));
            last = &out[static_cast<int>(tag)].back();
        } else if (last != nullptr) {
            *last += "\n" + line;
        }
    }
    return out;
}

}  // namespace vliptc::test
