#include "exif/internal/FieldCatalogue.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vliptc::exif {
namespace {

// TIFF types as the catalogue states them.
constexpr std::uint8_t kByte = 1;
constexpr std::uint8_t kAscii = 2;
constexpr std::uint8_t kShort = 3;
constexpr std::uint8_t kLong = 4;
constexpr std::uint8_t kRational = 5;
constexpr std::uint8_t kUndefined = 7;
constexpr std::uint8_t kSRational = 10;

// The catalogue's own type expectations are kept as the application states
// them, even where the EXIF standard differs: the GPS reference fields and
// "Spectral sensitivity" are SHORT, the XP fields UNDEFINED. The reader never
// consults them; it decodes every value by the type of its directory entry.
constexpr std::array<CatalogueRow, kCatalogueSize> kRows{{
    {256, kLong, "Image width"},
    {257, kLong, "Image length"},
    {258, kShort, "Bits per sample"},
    {259, kShort, "Compression"},
    {262, kShort, "Photometric interpretation"},
    {274, kShort, "Orientation"},
    {277, kShort, "Samples per pixel"},
    {284, kShort, "Planar configuration"},
    {530, kShort, "YCbCr SubSampling"},
    {531, kShort, "YCbCr positioning"},
    {282, kRational, "X Resolution"},
    {283, kRational, "Y Resolution"},
    {296, kShort, "Resolution unit"},
    {273, kLong, "Strip offsets"},
    {278, kLong, "Rows per strip"},
    {279, kLong, "Strip byte counts"},
    {513, kLong, "JPEG interchange format"},
    {514, kLong, "JPEG interchange format length"},
    {301, kShort, "Transfer function"},
    {318, kRational, "White point"},
    {319, kRational, "Primary chromaticities"},
    {529, kRational, "YCbCr coefficients"},
    {532, kRational, "Reference black/white"},
    {306, kAscii, "Date and time"},
    {270, kAscii, "Image description"},
    {271, kAscii, "Make"},
    {272, kAscii, "Model"},
    {305, kAscii, "Software"},
    {315, kAscii, "Artist"},
    {33432, kAscii, "Copyright"},
    {36864, kUndefined, "Exif Version"},
    {40960, kUndefined, "FlashPix Version"},
    {40961, kShort, "Colorspace"},
    {37121, kUndefined, "Components Configuration"},
    {37122, kRational, "Compressed bits per pixel"},
    {40962, kLong, "Pixel X Dimension"},
    {40963, kLong, "Pixel Y Dimension"},
    {37500, kUndefined, "Maker Note"},
    {37510, kUndefined, "User Comment"},
    {40964, kAscii, "Related Soundfile"},
    {36867, kAscii, "Date and time Original"},
    {36868, kAscii, "Date and time Digitized"},
    {37520, kAscii, "Subsec time"},
    {37521, kAscii, "Subsec time Original"},
    {37522, kAscii, "Subsec time Digitized"},
    {33434, kRational, "Exposure time"},
    {33437, kRational, "F Number"},
    {34850, kShort, "Exposure program"},
    {34852, kShort, "Spectral sensitivity"},
    {34855, kShort, "ISO speed ratings"},
    {34856, kUndefined, "OECF"},
    {37377, kSRational, "Shutter speed value"},
    {37378, kRational, "Aperture value"},
    {37379, kSRational, "Brightness value"},
    {37380, kSRational, "Exposure bias value"},
    {37381, kRational, "Max. Aperture value"},
    {37382, kRational, "Subject distance"},
    {37383, kShort, "Metering mode"},
    {37384, kShort, "Light source"},
    {37385, kShort, "Flash"},
    {37386, kRational, "Focal length"},
    {41483, kRational, "Flash energy"},
    {41484, kUndefined, "Spatial frequency response"},
    {41486, kRational, "Focal plane X resolution"},
    {41487, kRational, "Focal plane Y resolution"},
    {41488, kShort, "Focal plane resolution unit"},
    {41492, kShort, "Subject location"},
    {41493, kRational, "Exposure index"},
    {41495, kShort, "Sensing method"},
    {41728, kUndefined, "File source"},
    {41729, kUndefined, "Scene type"},
    {41730, kUndefined, "CFA pattern"},
    {40965, kLong, "IFD pointer"},
    {0, kByte, "GPS Version ID"},
    {1, kShort, "GPS Latitude ref"},
    {2, kRational, "GPS Latitude"},
    {3, kShort, "GPS Longitude ref"},
    {4, kRational, "GPS Longitude"},
    {5, kByte, "GPS Altitude ref"},
    {6, kRational, "GPS Altitude"},
    {7, kRational, "GPS Time stamp"},
    {8, kShort, "GPS Satellites"},
    {9, kShort, "GPS Status"},
    {10, kShort, "GPS Measure mode"},
    {11, kRational, "GPS DOP"},
    {12, kShort, "GPS Speed ref"},
    {13, kRational, "GPS Speed"},
    {14, kShort, "GPS Track ref"},
    {15, kRational, "GPS Track"},
    {16, kShort, "GPS ImgDirection ref"},
    {17, kRational, "GPS ImgDirection"},
    {18, kShort, "GPS Map datum"},
    {19, kShort, "GPS Dest latitude ref"},
    {20, kRational, "GPS Dest latitude"},
    {21, kShort, "GPS Dest longitude ref"},
    {22, kRational, "GPS Dest longitude"},
    {23, kShort, "GPS Dest bearing ref"},
    {24, kRational, "GPS Dest bearing"},
    {25, kShort, "GPS Dest distance ref"},
    {26, kRational, "GPS Dest distance"},
    {40091, kUndefined, "XP Title"},
    {40092, kUndefined, "XP Comments"},
    {40093, kUndefined, "XP Author"},
    {40094, kUndefined, "XP Keywords"},
    {40095, kUndefined, "XP Subject"},
}};

// (tag, creation position) sorted by tag, for the reader's look-ups.
constexpr auto kByTag = [] {
    std::array<std::pair<std::uint16_t, std::uint8_t>, kCatalogueSize> index{};
    for (std::size_t i = 0; i < kCatalogueSize; ++i) {
        index[i] = {kRows[i].tag, static_cast<std::uint8_t>(i)};
    }
    std::sort(index.begin(), index.end());
    return index;
}();

static_assert(std::adjacent_find(kByTag.begin(), kByTag.end(),
                                 [](const auto& a, const auto& b) { return a.first == b.first; }) ==
                  kByTag.end(),
              "every catalogued tag is unique");

constexpr std::uint32_t kLastGPSTag = 26;

}  // namespace

std::span<const CatalogueRow> CatalogueRows() noexcept { return kRows; }

std::optional<std::size_t> CataloguePosition(std::uint32_t tag) noexcept {
    const auto it = std::lower_bound(kByTag.begin(), kByTag.end(), tag,
                                     [](const auto& entry, std::uint32_t t) { return entry.first < t; });
    if (it == kByTag.end() || it->first != tag) return std::nullopt;
    return it->second;
}

bool IsDateTag(std::uint32_t tag) noexcept { return tag == 306 || tag == 36867 || tag == 36868; }

bool IsGPSTag(std::uint32_t tag) noexcept { return tag <= kLastGPSTag; }

}  // namespace vliptc::exif
