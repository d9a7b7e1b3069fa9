#include "tests/support/ExifTool.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include "platform/Charset.h"
#include "tests/support/Corpus.h"

namespace vliptc::test {

namespace {

// ExifTool's names of the application record, by dataset. Record 1 reuses
// many of these numbers, and ExifTool puts both records in one group, so the
// name is what tells a record-2 dataset.
bool IsApplicationRecordName(int id, const std::string& name) {
    // " dataset:Name " for every name.
    static const std::string kNames =
        " 0:ApplicationRecordVersion 3:ObjectTypeReference 4:ObjectAttributeReference 5:ObjectName"
        " 7:EditStatus 8:EditorialUpdate 10:Urgency 12:SubjectReference 15:Category"
        " 20:SupplementalCategories 22:FixtureIdentifier 25:Keywords 26:ContentLocationCode"
        " 27:ContentLocationName 30:ReleaseDate 35:ReleaseTime 37:ExpirationDate 38:ExpirationTime"
        " 40:SpecialInstructions 42:ActionAdvised 45:ReferenceService 47:ReferenceDate"
        " 50:ReferenceNumber 55:DateCreated 60:TimeCreated 62:DigitalCreationDate"
        " 63:DigitalCreationTime 65:OriginatingProgram 70:ProgramVersion 75:ObjectCycle 80:By-line"
        " 85:By-lineTitle 90:City 92:Sub-location 95:Province-State 100:Country-PrimaryLocationCode"
        " 101:Country-PrimaryLocationName 103:OriginalTransmissionReference 105:Headline 110:Credit"
        " 115:Source 116:CopyrightNotice 118:Contact 120:Caption-Abstract 121:LocalCaption"
        " 122:Writer-Editor 125:RasterizedCaption 130:ImageType 131:ImageOrientation"
        " 135:LanguageIdentifier 150:AudioType 151:AudioSamplingRate 152:AudioSamplingResolution"
        " 153:AudioDuration 154:AudioOutcue 184:JobID 185:MasterDocumentID 186:ShortDocumentID"
        " 187:UniqueDocumentID 188:OwnerID 200:ObjectPreviewFileFormat 201:ObjectPreviewFileVersion"
        " 202:ObjectPreviewData 221:Prefs 225:ClassifyState 228:SimilarityIndex 230:DocumentNotes"
        " 231:DocumentHistory 232:ExifCameraInfo 255:CatalogSets ";
    return name == "IPTC_ApplicationRecord_" + std::to_string(id) ||
           kNames.find(" " + std::to_string(id) + ":" + name + " ") != std::string::npos;
}

std::string DecodeBase64(const std::string& text) {
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    unsigned buffer = 0;
    int bits = 0;
    for (char c : text) {
        const std::size_t v = kDigits.find(c);
        if (v == std::string::npos) continue;
        buffer = (buffer << 6) | static_cast<unsigned>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<char>((buffer >> bits) & 0xFF));
        }
    }
    return out;
}

std::string Comparable(std::string text, int id, bool decodeCp1252, bool exiv2) {
    if (decodeCp1252) text = platform::Cp1252ToUtf8(text);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\0') continue;
        if (c == '\r') {
            out.push_back('\n');
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
            continue;
        }
        out.push_back(c);
    }
    static const std::set<int> kDates = {30, 37, 47, 55, 62};
    static const std::set<int> kTimes = {35, 38, 60, 63};
    if (kDates.count(id) != 0) {
        std::erase(out, ':');
        std::erase(out, '-');
    }
    if (kTimes.count(id) != 0) {
        std::erase(out, ':');
        if (out.size() == 11 && out.ends_with("+0000")) out.resize(6);
    }
    if (exiv2) {
        const std::size_t first = out.find_first_not_of(' ');
        out = first == std::string::npos ? std::string()
                                         : out.substr(first, out.find_last_not_of(' ') - first + 1);
    }
    return out;
}

}  // namespace

Datasets FromStore(const CIPTC& store) {
    Datasets out;
    for (const auto& item : store.Fields()) {
        for (const auto& value : item.vValues) out[static_cast<int>(item.nID)].push_back(value.String());
    }
    return out;
}

std::string ExifToolText(const nlohmann::json& value) {
    if (value.is_string()) {
        const std::string text = value.get<std::string>();
        return text.rfind("base64:", 0) == 0 ? DecodeBase64(text.substr(7)) : text;
    }
    return value.dump();
}

std::string PlaceOf(std::uint32_t format) {
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

Datasets FromExifTool(const nlohmann::json& object, const std::string& place) {
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

bool WalkedByExifReader(const std::string& location) {
    for (const std::string container : {"JPEG-APP1-", "TIFF-", "PSD-EXIFInfo-"}) {
        if (location.rfind(container + "IFD", 0) != 0) continue;
        std::string rest = location.substr(container.size() + 3);
        rest.erase(0, rest.find_first_not_of("0123456789"));
        return rest.empty() || rest == "-ExifIFD" || rest == "-GPS";
    }
    return false;
}

nlohmann::json ExifToolOracle(const std::string& file) {
    std::ifstream in(kCorpus + "oracle/exiftool/" + file + ".json");
    if (!in) return nullptr;
    const nlohmann::json json = nlohmann::json::parse(in, nullptr, false);
    return json.is_array() && !json.empty() ? json[0] : json;
}

// "exiv2 -q -u -PIxkyv FILE" prints one line per dataset (tag in hex, key,
// type, value); a value with line breaks goes on over the following lines.
Datasets FromExiv2(const std::string& path) {
    Datasets out;
    const std::string listing = RunCommand("exiv2 -q -u -PIxkyv " + Quote(path) + " 2>/dev/null");
    std::string* last = nullptr;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
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

std::vector<std::string> Differences(const Datasets& ours, const Datasets& theirs, bool exiv2) {
    std::vector<std::string> out;
    std::set<int> ids;
    for (const auto& [id, v] : ours) ids.insert(id);
    for (const auto& [id, v] : theirs) ids.insert(id);
    for (const int id : ids) {
        const std::vector<std::string> none;
        const auto o = ours.find(id);
        const auto t = theirs.find(id);
        const auto& ov = o == ours.end() ? none : o->second;
        const auto& tv = t == theirs.end() ? none : t->second;
        bool same = ov.size() == tv.size();
        for (std::size_t i = 0; same && i < ov.size(); ++i) {
            const std::string want = Comparable(tv[i], id, false, exiv2);
            same = Comparable(ov[i], id, true, exiv2) == want || Comparable(ov[i], id, false, exiv2) == want;
        }
        if (same) continue;
        std::ostringstream line;
        line << "2:" << id << " ours " << ov.size() << " value(s)";
        if (!ov.empty()) line << " [" << platform::Cp1252ToUtf8(ov.front()).substr(0, 40) << "]";
        line << ", other " << tv.size();
        if (!tv.empty()) line << " [" << tv.front().substr(0, 40) << "]";
        out.push_back(line.str());
    }
    return out;
}

std::vector<std::string> ToolsReadBack(const std::vector<WrittenFile>& files) {
    std::vector<std::string> problems;
    std::string command = "exiftool -j -G1:5 -D -a -u -b -n -IPTC:all";
    for (const auto& file : files) command += " " + Quote(file.path);
    const nlohmann::json all = nlohmann::json::parse(RunCommand(command + " 2>/dev/null"), nullptr, false);
    if (!all.is_array()) return {"exiftool printed no JSON"};
    std::map<std::string, const nlohmann::json*> bySource;
    for (const auto& object : all) bySource[object.value("SourceFile", "")] = &object;
    for (const auto& file : files) {
        if (bySource.count(file.path) == 0) {
            problems.push_back(file.label + ": exiftool did not read it");
            continue;
        }
        for (const auto& d :
             Differences(file.expected, FromExifTool(*bySource[file.path], PlaceOf(file.format)))) {
            problems.push_back(file.label + " exiftool: " + d);
        }
        if (!file.forExiv2) continue;
        for (const auto& d : Differences(file.expected, FromExiv2(file.path), true)) {
            problems.push_back(file.label + " exiv2: " + d);
        }
    }
    return problems;
}

}  // namespace vliptc::test
