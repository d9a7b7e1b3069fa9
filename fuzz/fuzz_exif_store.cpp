// CVLEXIF::StoreFile on a fuzzed file, written as the library writes: in
// place, in a private temporary folder. The first input byte picks the name
// (".jpg", ".tif" or ".psd"; the content decides the container), the rest is
// the file. It is loaded, its three dates are set to texts of the date form,
// and stored. Then:
//   - the result is errOK, errFormat or errNoEXIF, and the size is unchanged;
//   - a failed store leaves every byte;
//   - every byte that changed lies in a window of 20 bytes that now holds
//     one of the texts and a zero;
//   - TIFF data is exactly the original with each text written at its date's
//     value as FindTag locates it in the original bytes, when that entry is
//     ASCII of at least 20 characters lying inside the file.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ExifStream.h"
#include "exif/internal/IFDParser.h"
#include "fuzz/ContainerFuzz.h"
#include "host/ByteOrder.h"

namespace {

using vliptc::fuzz::Check;
using Bytes = std::vector<std::uint8_t>;

constexpr CVLEXIF::EFieldTags kDates[] = {CVLEXIF::kDateTime, CVLEXIF::kDateTimeOriginal,
                                          CVLEXIF::kDateTimeDigitized};
// The texts written, each with its zero: 20 bytes.
const std::string kTexts[] = {std::string("2001:02:03 04:05:06") + '\0',
                              std::string("2011:12:13 14:15:16") + '\0',
                              std::string("2021:10:20 20:30:40") + '\0'};
constexpr std::size_t kWindow = 20;
constexpr std::size_t kMinStoreFileBytes = 128;

bool HoldsText(const Bytes& file, std::size_t at) {
    for (const std::string& text : kTexts) {
        if (at + kWindow <= file.size() && std::equal(text.begin(), text.end(), file.begin() + at))
            return true;
    }
    return false;
}

// Every changed byte lies in a window that now holds one of the texts.
void CheckChangesInWindows(const Bytes& before, const Bytes& after) {
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] == before[i]) continue;
        bool covered = false;
        for (std::size_t at = i >= kWindow - 1 ? i - (kWindow - 1) : 0; at <= i && !covered; ++at) {
            covered = HoldsText(after, at);
        }
        Check(covered);
    }
}

// TIFF data: the store's result and bytes, found independently of the walk.
void CheckTIFF(const Bytes& before, const Bytes& after, CVLEXIF::EError result) {
    std::vector<CVLEXIF::SField> fields;
    vliptc::exif::ExifStream stream(before);
    vliptc::exif::IFDParser parser(stream, fields);
    const auto header = parser.ReadTIFFHeader();
    if (before.size() < kMinStoreFileBytes || !header) {
        Check(result == CVLEXIF::errFormat);
        return;
    }
    Check(result == CVLEXIF::errOK);
    Bytes expected = before;
    for (std::size_t i = 0; i < std::size(kDates); ++i) {
        const auto found = parser.FindTag(kDates[i], *header);
        if (!found || found->entry.nType != CVLEXIF::kTypeAscii || found->entry.nCount < kWindow ||
            !vliptc::bytes::InBounds(before.size(), found->valueOffset, kWindow)) {
            continue;
        }
        std::copy(kTexts[i].begin(), kTexts[i].end(), expected.begin() + std::ptrdiff_t(found->valueOffset));
    }
    Check(after == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const char* const kNames[] = {"image.jpg", "image.tif", "image.psd"};
    const std::string path = vliptc::fuzz::Folder() + kNames[data[0] % 3];
    const Bytes before(data + 1, data + size);
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(before.data()), static_cast<std::streamsize>(before.size()));
        Check(static_cast<bool>(out));
    }

    CVLEXIF exif;
    static_cast<void>(exif.LoadFile(path.c_str()));
    for (std::size_t i = 0; i < std::size(kDates); ++i) {
        CVLEXIF::SField* field = nullptr;
        Check(exif.GetField(kDates[i], field));
        field->vValues = {CVLProperty(kTexts[i].substr(0, kWindow - 1))};
    }
    const CVLEXIF::EError result = exif.StoreFile(path.c_str());
    Check(result == CVLEXIF::errOK || result == CVLEXIF::errFormat || result == CVLEXIF::errNoEXIF);

    std::ifstream in(path, std::ios::binary);
    const Bytes after{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    Check(after.size() == before.size());
    if (result != CVLEXIF::errOK) Check(after == before);
    CheckChangesInWindows(before, after);
    const bool tiff = before.size() >= 2 && before[0] == before[1] && (before[0] == 'I' || before[0] == 'M');
    if (tiff) CheckTIFF(before, after, result);
    return 0;
}
