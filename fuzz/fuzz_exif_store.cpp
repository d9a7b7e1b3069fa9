// CVLEXIF::StoreFile on a fuzzed file, written as the library writes: in
// place, in a private temporary folder. The first input byte picks the name
// (".jpg", ".tif" or ".psd"; the content decides the container), the rest is
// the file. It is loaded, its three dates are set to texts of 19 characters,
// and stored. Then:
//   - the result is errOK, errFormat or errNoEXIF, and the size is unchanged;
//   - a failed store leaves every byte;
//   - every byte that changed lies in a 20-byte window inside the file that
//     was written with one of the texts and a zero. The dates' values may
//     overlap in a hostile file, so a later window can cover part of an
//     earlier one; the texts draw on three disjoint alphabets, so each written
//     character names its text and its place, and with it the window's start;
//   - TIFF data is exactly the original with each text written at its date's
//     value as FindTag locates it in the original bytes, when that entry is
//     ASCII of at least 20 characters lying inside the file.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
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
// The texts written, each with its zero: 20 bytes. The library writes any
// 19 characters; no character is in two texts or twice in one.
const std::string kTexts[] = {std::string("ABCDEFGHIJKLMNOPQRS") + '\0',
                              std::string("abcdefghijklmnopqrs") + '\0',
                              std::string("0123456789!#$%&()*+") + '\0'};
constexpr std::size_t kWindow = 20;
constexpr std::size_t kMinStoreFileBytes = 128;

// A written window: where it starts and which text it holds.
struct Window {
    std::size_t at;
    std::size_t text;
};

// The window a written character belongs to, if it is one of the texts'.
std::optional<Window> WindowOf(std::uint8_t byte, std::size_t position) {
    for (std::size_t t = 0; t < std::size(kTexts); ++t) {
        const std::size_t k = kTexts[t].find(static_cast<char>(byte));
        if (k < kWindow - 1 && k <= position) return Window{position - k, t};
    }
    return std::nullopt;
}

// Every changed byte is a character of a window lying inside the file, or a
// zero that ends one (after a character or another window's zero). Each
// window's bytes hold its text, except where a later window wrote over them.
void CheckChangesInWindows(const Bytes& before, const Bytes& after) {
    std::vector<Window> windows;
    std::vector<bool> written(after.size(), false);
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] == before[i]) continue;
        if (after[i] == 0) {
            Check(i >= kWindow - 1 && (WindowOf(after[i - 1], i - 1) || after[i - 1] == 0));
            written[i] = true;
            continue;
        }
        const auto window = WindowOf(after[i], i);
        Check(window.has_value() && window->at + kWindow <= after.size());
        windows.push_back(*window);
    }
    for (const Window& window : windows) {
        for (std::size_t k = 0; k < kWindow; ++k) written[window.at + k] = true;
    }
    for (const Window& window : windows) {
        for (std::size_t k = 0; k < kWindow; ++k) {
            const std::uint8_t byte = after[window.at + k];
            const auto owner = WindowOf(byte, window.at + k);
            Check(byte == static_cast<std::uint8_t>(kTexts[window.text][k]) || byte == 0 ||
                  (owner && written[owner->at]));
        }
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
