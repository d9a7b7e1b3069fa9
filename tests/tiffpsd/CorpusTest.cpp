// The TIFF and Photoshop containers on the public corpus: every file read
// (and written, on a copy) without a crash; our datasets against ExifTool's
// reading; and round trips through exiftool and exiv2 of files we rewrote.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "iptc/internal/Containers.h"
#include "iptc/internal/PsdLayout.h"
#include "platform/Charset.h"
#include "tests/support/TempDir.h"
#include "tests/tiffpsd/Crafted.h"
#include "tests/tiffpsd/MiniJson.h"

namespace vliptc::test {
namespace {

namespace fs = std::filesystem;
const std::string kCorpus = "../shared/corpus/";

#define SKIP_WITHOUT_CORPUS()                                                             \
    if (!fs::is_directory(kCorpus + "tiff")) {                                            \
        GTEST_SKIP() << "corpus not found at " << kCorpus << " (run from the repo root)"; \
    }

std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(kCorpus + folder))
        files.push_back(folder + "/" + entry.path().filename().string());
    std::sort(files.begin(), files.end());
    return files;
}

bool IsPsd(const Bytes& file) {
    return file.size() >= 4 && std::equal(file.begin(), file.begin() + 4, "8BPS");
}

// The TIFFs and documents we read and write: every file of tiff/ and psd/
// and the TIFF-based raw file with IPTC.
std::vector<std::string> ContainerFiles() {
    auto files = FilesIn("tiff");
    const auto psd = FilesIn("psd");
    files.insert(files.end(), psd.begin(), psd.end());
    files.push_back("raw/et_Nikon.nef");
    return files;
}

std::string Shell(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
        pclose(pipe);
    }
    return out;
}

// ---- ExifTool's view -----------------------------------------------------

// Envelope-record (record 1) names, which ExifTool puts in the same group.
const std::set<std::string> kEnvelopeNames = {
    "EnvelopeRecordVersion", "Destination",      "FileFormat",       "FileVersion", "ServiceIdentifier",
    "EnvelopeNumber",        "ProductID",        "EnvelopePriority", "DateSent",    "TimeSent",
    "CodedCharacterSet",     "UniqueObjectName", "ARMIdentifier",    "ARMVersion"};

std::string Lines(std::string text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            out += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

// Record-2 datasets of one file's first IPTC block as ExifTool read it: keys
// "IPTC:<place>:<Name>" (the oracle) or "IPTC:<Name>" (our own runs).
Datasets FromExifTool(const Json& object, const std::string& prefix, bool& utf8) {
    Datasets out;
    utf8 = false;
    for (const auto& [key, value] : object.members) {
        if (key.rfind(prefix, 0) != 0 || key.find(':', prefix.size()) != std::string::npos) continue;
        const std::string name = key.substr(prefix.size());
        const Json* val = value.Find("val");
        if (name == "CodedCharacterSet") utf8 = val->text == "\x1b%G";
        if (kEnvelopeNames.count(name) != 0) continue;
        std::vector<std::string> values;
        if (val->kind == Json::Kind::kArray) {
            for (const Json& item : val->items) values.push_back(Lines(item.text));
        } else {
            values.push_back(Lines(val->text));
        }
        out.emplace_back(static_cast<std::uint32_t>(std::stoul(value.Find("id")->text)), values);
    }
    return out;
}

bool ValidUtf8(const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80         ? 1
                                   : (lead >> 5) == 6  ? 2
                                   : (lead >> 4) == 14 ? 3
                                   : (lead >> 3) == 30 ? 4
                                                       : 0;
        if (length == 0 || i + length > text.size()) return false;
        for (std::size_t k = 1; k < length; ++k) {
            if ((static_cast<unsigned char>(text[i + k]) >> 6) != 2) return false;
        }
        i += length;
    }
    return true;
}

// IIM dates (CCYYMMDD) and times (HHMMSS+HHMM) as the tools print them:
// dates with the separator given, times as HH:MM:SS+HH:MM (a time without a
// zone gets the zone given).
std::string DateTimeForm(std::uint32_t id, std::string text, const char* dateSeparator, const char* noZone) {
    const bool digits8 = text.size() == 8 && std::all_of(text.begin(), text.end(), ::isdigit);
    if (digits8 && (id == 30 || id == 37 || id == 47 || id == 55 || id == 62)) {
        text = text.substr(0, 4) + dateSeparator + text.substr(4, 2) + dateSeparator + text.substr(6, 2);
    } else if ((id == 35 || id == 38 || id == 60 || id == 63) && (text.size() == 6 || text.size() == 11)) {
        std::string time = text.substr(0, 2) + ":" + text.substr(2, 2) + ":" + text.substr(4, 2);
        time += text.size() == 11 ? text.substr(6, 3) + ":" + text.substr(9, 2) : noZone;
        text = time;
    }
    return text;
}

// One of our values as ExifTool prints it with -n: text decoded, dates and
// times in its colon form, line breaks as LF.
std::string AsExifTool(std::uint32_t id, const std::string& raw, bool utf8) {
    return Lines(DateTimeForm(id, utf8 && ValidUtf8(raw) ? raw : platform::Cp1252ToUtf8(raw), ":", ""));
}

Datasets AsExifTool(const Datasets& ours, bool utf8) {
    Datasets out;
    for (const auto& [id, values] : ours) {
        if (values.empty()) continue;
        std::vector<std::string> converted;
        for (const auto& value : values) converted.push_back(AsExifTool(id, value, utf8));
        out.emplace_back(id, converted);
    }
    return out;
}

std::string Describe(const Datasets& datasets) {
    std::ostringstream out;
    for (const auto& [id, values] : datasets) {
        out << id << "=";
        for (const auto& v : values) out << "[" << v << "]";
        out << " ";
    }
    return out.str();
}

// ---- exiv2's view --------------------------------------------------------

// Record-2 datasets per file from "exiv2 -u -PIxkv" over several files: lines
// "<file>  0x<id> Iptc.Application2.<Name>  <value>"; a value with line
// breaks goes on over the following lines.
std::map<std::string, Datasets> FromExiv2(const std::string& listing, const std::vector<std::string>& files) {
    std::map<std::string, Datasets> out;
    Datasets* current = nullptr;
    std::string* value = nullptr;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        const auto file = std::find_if(files.begin(), files.end(),
                                       [&](const std::string& f) { return line.rfind(f + "  0x", 0) == 0; });
        if (file == files.end()) {
            if (value != nullptr) *value += "\n" + line;
            continue;
        }
        std::istringstream fields(line.substr(file->size()));
        std::string hex, key;
        fields >> hex >> key;
        value = nullptr;
        if (key.rfind("Iptc.Application2.", 0) != 0) continue;
        std::string text;
        std::getline(fields >> std::ws, text);
        const auto id = static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16));
        current = &out[*file];
        auto item =
            std::find_if(current->begin(), current->end(), [&](const auto& d) { return d.first == id; });
        if (item == current->end()) item = current->insert(current->end(), {id, {}});
        item->second.push_back(text);
        value = &item->second.back();
    }
    return out;
}

// Ours as exiv2 prints them: the bytes as they are, dates with dashes.
Datasets AsExiv2(Datasets datasets) {
    for (auto& [id, values] : datasets) {
        for (auto& v : values) v = Lines(id == 0 ? v : DateTimeForm(id, v, "-", "+00:00"));
    }
    return datasets;
}

// ---- Tests ---------------------------------------------------------------

// Every file of the corpus that could reach these containers, malformed ones
// included, is located, decoded and written on a copy: no crash, and a write
// either leaves the copy as it was or gives a file that reads back the block.
TEST(TiffPsdCorpus, EveryFileReadsAndWritesWithoutHarm) {
    SKIP_WITHOUT_CORPUS();
    const Bytes block = IimBlock({{25, "sea"}});
    std::vector<std::string> files = ContainerFiles();
    for (const char* folder : {"raw", "malformed"}) {
        const auto more = FilesIn(folder);
        files.insert(files.end(), more.begin(), more.end());
    }
    TempDir dir;
    for (const auto& name : files) {
        SCOPED_TRACE(name);
        const Bytes original = Load(kCorpus + name);
        for (const auto& located : {iptc::LocateInTIFF(original), iptc::LocateInPSD(original)}) {
            for (const auto& candidate : located.candidates) {
                EXPECT_LE(candidate.offset + candidate.size, original.size());
            }
        }
        (void)ReadDatasets(original);
        if (original.empty()) continue;
        for (const bool psd : {false, true}) {
            const std::string copy = dir.File(psd ? "copy.psd" : "copy.tif");
            Save(copy, original);
            const auto result = psd ? iptc::WritePSD(copy, block) : iptc::WriteTIFF(copy, block);
            const Bytes written = Load(copy);
            if (result == CIPTC::kSuccess) {
                EXPECT_EQ(ReadDatasets(written), (Datasets{{0, {"2"}}, {25, {"sea"}}}));
            } else {
                EXPECT_EQ(written, original) << "result " << result;
            }
            fs::remove(copy);
        }
    }
    EXPECT_TRUE(fs::is_empty(dir.Path()));
}

// Where ExifTool's reading (the oracle) lists record-2 datasets of the block
// we read, ours are the same values in the same order, apart from line
// breaks (we store CR LF). Differences would be listed here; on the TIFFs,
// documents and the NEF of the corpus there are none.
const std::set<std::string> kKnownDifferences = {};

TEST(TiffPsdCorpus, DatasetsMatchExifTool) {
    SKIP_WITHOUT_CORPUS();
    std::set<std::string> differences;
    int withDatasets = 0;
    for (const auto& name : ContainerFiles()) {
        std::ifstream in(kCorpus + "oracle/exiftool/" + name + ".json");
        if (!in) continue;
        const auto json = ParseJson(std::string(std::istreambuf_iterator<char>(in), {}));
        ASSERT_TRUE(json.has_value()) << name;
        const Json& object = json->kind == Json::Kind::kArray ? json->items.at(0) : *json;
        const Bytes file = Load(kCorpus + name);
        bool utf8 = false;
        const Datasets expected =
            FromExifTool(object, IsPsd(file) ? "IPTC:PSD-IPTC:" : "IPTC:TIFF-IFD0-IPTC:", utf8);
        const Datasets ours = AsExifTool(ReadDatasets(file).value_or(Datasets{}), utf8);
        withDatasets += !expected.empty();
        if (ours != expected) {
            differences.insert(name + ": ours " + Describe(ours) + "| exiftool " + Describe(expected));
        }
    }
    EXPECT_EQ(differences, kKnownDifferences);
    EXPECT_EQ(withDatasets, 11);  // 5 TIFFs, 5 documents and the NEF carry IPTC
}

// Copies of every writable corpus TIFF and document get a changed record
// (keywords added, a caption with line breaks, a dataset no descriptor
// names), written twice. Then our reader, exiftool and exiv2 read the same
// datasets; every value of the TIFF directories, and every other resource of
// a document, is unchanged; and there is exactly one IPTC entry or record.
TEST(TiffPsdInterop, ExifToolAndExiv2ReadWhatWeWrite) {
    SKIP_WITHOUT_CORPUS();
    if (Shell("command -v exiftool").empty() || Shell("command -v exiv2").empty()) {
        GTEST_SKIP() << "exiftool and exiv2 are needed (Debian: libimage-exiftool-perl, exiv2)";
    }
    TempDir dir;
    std::vector<std::string> copies;
    std::map<std::string, Datasets> written;
    for (const auto& name : ContainerFiles()) {
        if (name.ends_with(".btf")) continue;  // BigTIFF: not written
        SCOPED_TRACE(name);
        const Bytes original = Load(kCorpus + name);
        const bool psd = IsPsd(original);
        Datasets datasets = ReadDatasets(original).value_or(Datasets{});
        std::erase_if(datasets,
                      [](const auto& d) { return d.first == 0 || d.first == 120 || d.second.empty(); });
        datasets.insert(datasets.begin(), {0, {"2"}});
        auto keywords =
            std::find_if(datasets.begin(), datasets.end(), [](const auto& d) { return d.first == 25; });
        if (keywords == datasets.end()) keywords = datasets.insert(datasets.end(), {25, {}});
        keywords->second.insert(keywords->second.end(), {"vliptc", "interop"});
        datasets.push_back({120, {"first line\r\nsecond line\r\n\r\nlast"}});
        datasets.push_back({199, {"no descriptor names 2:199"}});

        const std::string copy = dir.File(fs::path(name).filename().string());
        Save(copy, original);
        const Bytes block = EncodeDatasets(datasets);
        for (int pass = 0; pass < 2; ++pass) {
            ASSERT_EQ(psd ? iptc::WritePSD(copy, block) : iptc::WriteTIFF(copy, block), CIPTC::kSuccess);
        }
        const Bytes result = Load(copy);
        EXPECT_EQ(ReadDatasets(result), datasets);
        if (psd) {
            // Every record but the IPTC one, and everything around the
            // section, is unchanged; one IPTC record remains.
            auto parts = [](const Bytes& file) {
                iptc::psd::Layout layout;
                EXPECT_EQ(iptc::psd::ReadLayout(file, layout), iptc::psd::Status::kOk);
                std::vector<Bytes> out = {Bytes(file.begin(), file.begin() + layout.sectionLengthOffset),
                                          Bytes(file.begin() + layout.sectionEnd, file.end())};
                for (const auto& r : layout.resources) {
                    if (r.imageResource && r.id == 0x0404) continue;
                    out.emplace_back(file.begin() + r.offset, file.begin() + r.offset + r.extent);
                }
                return out;
            };
            EXPECT_EQ(parts(result), parts(original));
            EXPECT_EQ(iptc::LocateInPSD(result).candidates.size(), 1u);
        } else {
            EXPECT_EQ(TiffValues(result), TiffValues(original));
            EXPECT_EQ(IptcEntries(result).size(), 1u);
        }
        copies.push_back(copy);
        written[copy] = datasets;
    }

    std::string files;
    for (const auto& copy : copies) files += " '" + copy + "'";
    const auto exiftool = ParseJson(Shell("exiftool -j -n -D -G1 -a -u -IPTC:all" + files + " 2>/dev/null"));
    ASSERT_TRUE(exiftool.has_value());
    const auto exiv2 = FromExiv2(Shell("exiv2 -u -PIxkv" + files + " 2>/dev/null"), copies);
    for (const Json& object : exiftool->items) {
        const std::string copy = object.Find("SourceFile")->text;
        SCOPED_TRACE(copy);
        bool utf8 = false;
        EXPECT_EQ(FromExifTool(object, "IPTC:", utf8), AsExifTool(written[copy], false));
        ASSERT_EQ(exiv2.count(copy), 1u);
        EXPECT_EQ(AsExiv2(exiv2.at(copy)), AsExiv2(written[copy]));
    }
    EXPECT_EQ(exiftool->items.size(), copies.size());
}

// Through the store: an "II" TIFF (its IIM
// data most-significant byte first) and a document, read, changed, written
// and read again by ReadIPTCBlob and WriteIPTCBlob.
TEST(TiffPsdCorpus, StoreReadsChangesAndWritesBack) {
    SKIP_WITHOUT_CORPUS();
    const struct {
        const char* file;
        std::uint32_t format;
        bool bigEndian;
        std::string firstKeyword;
    } cases[] = {
        {"tiff/ex2_ReaganLargeTiff.tiff", CIPTC::kFormatTIFF, false, "ronald reagan"},
        {"tiff/et_ExifTool.tif", CIPTC::kFormatTIFF, true, "exiftool"},
        {"psd/et_Photoshop.psd", CIPTC::kFormatPSD, true, ""},
    };
    TempDir dir;
    fs::create_directory(dir.File("defs"));
    WriteFile(dir.File("defs/vliptctags.ipt"), "{\nID 25\nNAME Keywords\nREPEATABLE 1\n}\n");
    CIPTC store;
    ASSERT_EQ(store.Initialize(dir.File("defs"), dir.Path()), CIPTC::kSuccess);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string copy = dir.File(fs::path(c.file).filename().string());
        fs::copy_file(kCorpus + c.file, copy);
        fs::permissions(copy, fs::perms::owner_write, fs::perm_options::add);
        CIPTC::SIPTCFormatInfo format;
        ASSERT_EQ(store.ReadIPTCBlob(copy.c_str(), format), CIPTC::kSuccess);
        EXPECT_EQ(format.nFormat, c.format);
        EXPECT_EQ(format.bBigEndian, c.bigEndian);
        std::vector<CVLProperty> keywords;
        store.GetField(25, keywords);
        EXPECT_EQ(keywords.empty() ? "" : keywords[0].String(), c.firstKeyword);
        store.SetField(25, CVLProperty(std::string("added")), false);
        ASSERT_EQ(store.WriteIPTCBlob(copy.c_str(), format), CIPTC::kSuccess);
        ASSERT_EQ(store.ReadIPTCBlob(copy.c_str(), format), CIPTC::kSuccess);
        store.GetField(25, keywords);
        ASSERT_FALSE(keywords.empty());
        EXPECT_EQ(keywords.back().String(), "added");
    }
}

}  // namespace
}  // namespace vliptc::test
