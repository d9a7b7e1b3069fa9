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

}  // namespace vliptc::limits
