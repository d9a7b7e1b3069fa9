#pragma once

// Where a JPEG file's EXIF segment is, or where a new one goes.

#include <cstdint>
#include <optional>
#include <span>

namespace vliptc::imaging {

// A segment's 16-bit length counts itself: at most 65,533 bytes of payload.
inline constexpr std::uint64_t kMaxSegmentPayloadBytes = 65533;

struct JpegLayout {
    // The bytes a new EXIF segment takes the place of: the file's EXIF
    // segment (marker to end), or, when it has none, an empty range right
    // behind the start-of-image marker or behind an APP0 segment that
    // directly follows it (JFIF wants its APP0 first).
    std::uint64_t exifStart = 0;
    std::uint64_t exifEnd = 0;
    bool hasExif = false;

    // The EXIF segment's payload: "Exif", two zero bytes, the TIFF data.
    std::span<const std::uint8_t> ExifPayload(std::span<const std::uint8_t> file) const;
};

// True when the file starts with the start-of-image marker.
bool StartsLikeJpeg(std::span<const std::uint8_t> file);

// Walks the marker segments up to the start of scan. The EXIF segment is the
// first APP1 segment whose payload starts with "Exif" and two zero bytes.
// nullopt when the file is not a JPEG, a segment length is cut off, smaller
// than its own two bytes or runs past the end, or the file ends before a
// start of scan or end of image.
std::optional<JpegLayout> ReadJpegLayout(std::span<const std::uint8_t> file);

}  // namespace vliptc::imaging
