// The marker walk of the imaging stand-in. A JPEG file is the start-of-image
// marker 0xFF 0xD8, then marker segments (0xFF, a marker byte, a 16-bit
// big-endian length that counts itself, the payload) up to the start of scan,
// behind which the entropy-coded image data runs to the end of image. A save
// only ever exchanges the EXIF segment; every other byte, the image data
// included, is copied as it is.

#include "platform/imaging/internal/JpegLayout.h"

#include <algorithm>
#include <array>

#include "host/ByteOrder.h"
#include "host/JpegMarkers.h"

namespace vliptc::imaging {

namespace {

using namespace vliptc::jpeg;

// "Exif" and two zero bytes open the payload of an EXIF APP1 segment.
constexpr std::array<std::uint8_t, 6> kExifIdentifier{'E', 'x', 'i', 'f', 0, 0};

bool HasLength(std::uint8_t marker) { return marker != kStuffed && !IsStandalone(marker); }

bool IsExifPayload(std::span<const std::uint8_t> payload) {
    return payload.size() >= kExifIdentifier.size() &&
           std::equal(kExifIdentifier.begin(), kExifIdentifier.end(), payload.begin());
}

}  // namespace

std::span<const std::uint8_t> JpegLayout::ExifPayload(std::span<const std::uint8_t> file) const {
    if (!hasExif) return {};
    const std::uint64_t payload = exifStart + kMarkerBytes + kLengthBytes;
    return bytes::Slice(file, payload, exifEnd - payload).value_or(std::span<const std::uint8_t>{});
}

bool StartsLikeJpeg(std::span<const std::uint8_t> file) {
    return file.size() >= kMarkerBytes && file[0] == kMarkerPrefix && file[1] == kSOI;
}

std::optional<JpegLayout> ReadJpegLayout(std::span<const std::uint8_t> file) {
    if (!StartsLikeJpeg(file)) return std::nullopt;
    JpegLayout layout;
    layout.exifStart = layout.exifEnd = kMarkerBytes;
    bool firstSegment = true;
    bytes::SpanCursor cursor(file, bytes::ByteOrder::kBigEndian);
    static_cast<void>(cursor.Seek(kMarkerBytes));
    while (const auto byte = cursor.Read8()) {
        // Bytes between segments that are not a marker are passed over, as
        // decoders do; 0xFF fill bytes may stand before a marker.
        if (*byte != kMarkerPrefix) continue;
        auto marker = cursor.Read8();
        while (marker == kMarkerPrefix) marker = cursor.Read8();
        if (!marker) break;
        if (*marker == kSOS || *marker == kEOI) return layout;
        if (!HasLength(*marker)) continue;
        const std::uint64_t start = cursor.Position() - kMarkerBytes;
        const auto length = cursor.Read16();
        if (!length || *length < kLengthBytes) return std::nullopt;
        const auto payload = cursor.ReadBytes(*length - kLengthBytes);
        if (!payload) return std::nullopt;
        if (!layout.hasExif && *marker == kAPP1 && IsExifPayload(*payload)) {
            layout.exifStart = start;
            layout.exifEnd = cursor.Position();
            layout.hasExif = true;
        } else if (!layout.hasExif && firstSegment && *marker == kAPP0) {
            layout.exifStart = layout.exifEnd = cursor.Position();
        }
        firstSegment = false;
    }
    return std::nullopt;
}

}  // namespace vliptc::imaging
