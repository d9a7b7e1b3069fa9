// Our library in the shared harness loop, through the entry points the vliptc
// tool uses:
//
//   iptc-read   CIPTC::ReadIPTCBlob on a store laid out by the tool's built-in
//               definitions (as `vliptc iptc show`), then each value's text
//   exif-read   CVLEXIF::LoadFile and the formatted text of every present
//               field (as `vliptc exif show`)
//   jpeg-write, tiff-write
//               read the record, set the caption (2:120) to "Benchmark
//               caption", replace the keywords (2:25) with "keyword 01" to
//               "keyword 12", and write the file back with CIPTC::WriteIPTCBlob
//               (a complete new file swapped in). The same edit every pass,
//               and always written: the tool would skip a file whose fields
//               come out unchanged, which is not what is measured here.
//
// The store's user folder is an empty temporary folder, so that the user's
// own lists and definitions do not change what is measured.

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "apps/vliptc/DefaultDefinitions.h"
#include "bench/BenchFolder.h"
#include "bench/driver/Harness.h"
#include "exif/EXIF.h"
#include "iptc/IPTC.h"

namespace {

constexpr std::uint32_t kKeywords = 25;
constexpr std::uint32_t kCaption = 120;

volatile std::size_t g_sink = 0;  // keeps the values' text from being optimised away

// A file without IPTC has an empty record; that is not a failure.
bool ReadRecord(CIPTC& store, const std::string& path, CIPTC::SIPTCFormatInfo& format) {
    const CIPTC::EError read = store.ReadIPTCBlob(path.c_str(), format);
    return read == CIPTC::kSuccess || read == CIPTC::kNoIPTCBlock;
}

bool IptcRead(CIPTC& store, const std::string& path) {
    CIPTC::SIPTCFormatInfo format;
    if (!ReadRecord(store, path, format)) return false;
    std::size_t bytes = 0;
    for (const CIPTC::SIPTCItem& item : store.Fields()) {
        for (const CVLProperty& value : item.vValues) bytes += value.String().size();
    }
    g_sink = g_sink + bytes;
    return true;
}

bool ExifRead(CVLEXIF& exif, const std::string& path) {
    const CVLEXIF::EError loaded = exif.LoadFile(path.c_str());
    if (loaded != CVLEXIF::errOK && loaded != CVLEXIF::errNoEXIF) return false;
    std::size_t bytes = 0;
    std::string text;
    for (const CVLEXIF::SField* field : exif.PresentFields()) {
        static_cast<void>(exif.GetFormattedField(static_cast<CVLEXIF::EFieldTags>(field->nTag), text));
        bytes += text.size();
    }
    g_sink = g_sink + bytes;
    return true;
}

std::vector<CVLProperty> BenchmarkKeywords() {
    std::vector<CVLProperty> keywords;
    for (int i = 1; i <= 12; ++i) {
        keywords.emplace_back(std::string(i < 10 ? "keyword 0" : "keyword ") + std::to_string(i));
    }
    return keywords;
}

// A file of another container than the task's is a failure: the list is wrong.
bool Write(CIPTC& store, const std::string& path, std::uint32_t container) {
    static const std::vector<CVLProperty> keywords = BenchmarkKeywords();
    CIPTC::SIPTCFormatInfo format;
    if (!ReadRecord(store, path, format) || format.nFormat != container) return false;
    store.SetField(kCaption, CVLProperty(std::string("Benchmark caption")), true);
    store.SetField(kKeywords, keywords);
    return store.WriteIPTCBlob(path.c_str(), format) == CIPTC::kSuccess;
}

}  // namespace

int main(int argc, char** argv) {
    const vliptc::bench::BenchFolder userFolder;
    CIPTC store;
    if (store.InitializeFromText(std::string(vliptc::cli::DefaultDefinitions()), userFolder.Path()) !=
        CIPTC::kSuccess) {
        std::fputs("bench_vliptc: the built-in tag definitions could not be loaded\n", stderr);
        return 1;
    }
    CVLEXIF exif;
    const vliptc::bench::Task tasks[] = {
        {"iptc-read", [&store](const std::string& path) { return IptcRead(store, path); }},
        {"exif-read", [&exif](const std::string& path) { return ExifRead(exif, path); }},
        {"jpeg-write", [&store](const std::string& path) { return Write(store, path, CIPTC::kFormatJPEG); }},
        {"tiff-write", [&store](const std::string& path) { return Write(store, path, CIPTC::kFormatTIFF); }},
    };
    return vliptc::bench::RunHarness("vliptc", tasks, argc, argv);
}
