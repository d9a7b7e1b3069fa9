// CVLEXIF::LoadFile on a fuzzed file, read as the library reads: from a file
// in a private temporary folder. The first input byte picks the name: a
// ".jpg", ".tif" or ".psd" (the content decides the container), or a ".crw"
// whose ".THM" companion holds the bytes. The result must be one of the read
// codes; a successful read leaves the catalogue in display order; every
// field formats (under a fixed number format, so the run does not depend on
// the locale); the same bytes taken as TIFF data must give every FindTag
// location inside them; a walk over a start of the bytes that wanted nothing
// past it (the reader's first walk sees only a file's first 64 KB) must
// store just what the walk over all of them stores.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

#include "exif/EXIF.h"
#include "exif/internal/ContainerWalk.h"
#include "exif/internal/ExifStream.h"
#include "exif/internal/IFDParser.h"
#include "host/ByteOrder.h"

namespace {

void Check(bool condition) {
    if (!condition) std::abort();
}

// The harness's folder, removed when the process ends normally.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "fuzz-exif-XXXXXX").string();
        Check(::mkdtemp(pattern.data()) != nullptr);
        m_path = pattern + "/";
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

void Write(const std::string& path, const std::uint8_t* data, std::size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    Check(static_cast<bool>(out));
}

void CheckCatalogue(const CVLEXIF& exif, CVLEXIF::EError result) {
    Check(result <= CVLEXIF::errEmpty && result != CVLEXIF::errException);
    const auto& fields = exif.Fields();
    Check(fields.size() >= 105);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        Check(fields[i].bPresent || fields[i].vValues.empty());
        if (result == CVLEXIF::errOK && i > 0) {
            const auto& a = fields[i - 1];
            const auto& b = fields[i];
            Check(a.nGroup < b.nGroup || (a.nGroup == b.nGroup && !(b.strName < a.strName)));
        }
    }
}

// The write path's search over the bytes taken as TIFF data.
void CheckFindTag(std::span<const std::uint8_t> bytes) {
    std::vector<CVLEXIF::SField> fields;
    vliptc::exif::ExifStream stream(bytes);
    vliptc::exif::IFDParser parser(stream, fields);
    stream.SetMotorola(!bytes.empty() && bytes[0] == 'M');
    const auto first = stream.ReadDWord(4);
    if (!first) return;
    const CVLEXIF::STIFFHeader header{0, 42, *first};
    for (const auto tag : {CVLEXIF::kDateTime, CVLEXIF::kDateTimeOriginal, CVLEXIF::kDateTimeDigitized}) {
        const auto found = parser.FindTag(tag, header);
        if (found) {
            Check(found->entry.nTag == tag);
            Check(vliptc::bytes::InBounds(bytes.size(), found->valueOffset, 4));
        }
    }
}

bool SameFields(const std::vector<CVLEXIF::SField>& a, const std::vector<CVLEXIF::SField>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.nTag == y.nTag && x.strName == y.strName && x.bPresent == y.bPresent && x.nGroup == y.nGroup &&
               x.bGPS == y.bGPS && x.vValues == y.vValues;
    });
}

void CheckStartWalk(std::span<const std::uint8_t> bytes, std::size_t startSize) {
    std::vector<CVLEXIF::SField> whole = CVLEXIF().Fields();
    std::vector<CVLEXIF::SField> part = whole;
    vliptc::exif::ContainerWalk full(bytes, bytes.size(), whole);
    vliptc::exif::ContainerWalk start(bytes.first(startSize), bytes.size(), part);
    const CVLEXIF::EError fullResult = full.ParseEXIF();
    const CVLEXIF::EError startResult = start.ParseEXIF();
    Check(!full.Missed());
    if (start.Missed()) {
        Check(start.MissedEnd() > startSize && start.MissedEnd() <= bytes.size());
        return;
    }
    Check(fullResult == startResult && full.Motorola() == start.Motorola() && SameFields(whole, part));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    if (size == 0) return 0;
    static const char* const kNames[] = {"image.jpg", "image.tif", "image.psd", "image.crw"};
    const std::string name = kNames[data[0] % 4];
    const std::uint8_t* file = data + 1;
    const std::size_t fileSize = size - 1;

    const std::string path = folder.Path() + name;
    if (name == "image.crw") {
        Write(path, nullptr, 0);  // raw data is never read
        Write(folder.Path() + "image.THM", file, fileSize);
    } else {
        Write(path, file, fileSize);
    }
    CVLEXIF exif;
    const CVLEXIF::EError result = exif.LoadFile(path.c_str());
    CheckCatalogue(exif, result);
    exif.SetNumberFormatSource([] { return vliptc::platform::NumberFormat{}; });
    exif.bUseDefaults = (data[0] & 4) != 0;
    std::string text;
    for (const auto& field : exif.Fields()) {
        static_cast<void>(exif.GetFormattedField(static_cast<CVLEXIF::EFieldTags>(field.nTag), text));
    }
    Check((result == CVLEXIF::errEmpty) == (fileSize == 0));
    CheckFindTag({file, fileSize});
    CheckStartWalk({file, fileSize}, fileSize * (data[0] >> 3) / 32);
    return 0;
}
