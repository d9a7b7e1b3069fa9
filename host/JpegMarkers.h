#pragma once

// JPEG marker codes (the byte after 0xFF) and the segment layout that every
// JPEG walker of the library shares.

#include <cstdint>

namespace vliptc::jpeg {

inline constexpr std::uint8_t kMarkerPrefix = 0xFF;
inline constexpr std::uint8_t kSOI = 0xD8;   // start of image, no length
inline constexpr std::uint8_t kEOI = 0xD9;   // end of image
inline constexpr std::uint8_t kSOS = 0xDA;   // start of scan: entropy-coded data follows
inline constexpr std::uint8_t kTEM = 0x01;   // standalone, no length
inline constexpr std::uint8_t kRST0 = 0xD0;  // RST0..RST7: standalone, no length
inline constexpr std::uint8_t kRST7 = 0xD7;
inline constexpr std::uint8_t kStuffed = 0x00;  // 0xFF 0x00 is a data byte, not a marker
inline constexpr std::uint8_t kAPP0 = 0xE0;
inline constexpr std::uint8_t kAPP1 = 0xE1;
inline constexpr std::uint8_t kAPP13 = 0xED;

inline constexpr std::uint64_t kMarkerBytes = 2;
inline constexpr std::uint64_t kLengthBytes = 2;

// A marker that stands alone, without a length field.
constexpr bool IsStandalone(std::uint8_t marker) {
    return marker == kTEM || marker == kSOI || (marker >= kRST0 && marker <= kRST7);
}

}  // namespace vliptc::jpeg
