#pragma once

// Every resource cap of the library in one place, so a reviewer sees at once
// how much outside data can make us read, allocate or walk.

#include <cstdint>

namespace vliptc::limits {

// Tag-definition files and "vliptcusr.dat" are hand-edited text of a few
// hundred kilobytes; anything larger is treated as unreadable and skipped.
inline constexpr std::uint64_t kMaxDefinitionFileBytes = 32u * 1024 * 1024;

// A property payload in a template or clipboard stream may not claim more
// than this (the whole IIM block is capped at 64 KiB; EXIF blobs stay far below).
inline constexpr std::uint32_t kMaxPropertyPayloadBytes = 16u * 1024 * 1024;

// TIFF: directories visited in one file (the chain of IFDs plus the EXIF and
// GPS directories they point to). Real files have a handful; a longer chain
// is a loop or an attack.
inline constexpr std::uint32_t kMaxTiffDirectories = 256;
// Entries read from one TIFF directory (the count field allows 65,535; real
// directories hold well under 200). The writer refuses a longer directory
// rather than shift offsets it has not seen.
inline constexpr std::uint32_t kMaxTiffEntriesPerDirectory = 4096;

// Photoshop image resources walked in one image-resource section (real
// documents carry a few dozen).
inline constexpr std::uint32_t kMaxImageResources = 65536;

}  // namespace vliptc::limits
