#pragma once

// The file steps the container readers and writers share: mapping a file with
// CIPTC's result codes, and the frame of a writer that builds the new file
// from the mapped one and swaps it in.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "host/Limits.h"
#include "iptc/IPTC.h"
#include "platform/MappedFile.h"
#include "platform/SafeReplace.h"

namespace vliptc::iptc {

// The largest block a writer accepts (what the encoder can produce).
inline constexpr std::size_t kMaxBlockBytes = 65536;

// Opens and maps path: kSuccess, kCannotOpen (missing, a folder, no
// permission), kEmptyFile or kCannotMapOrWrite.
[[nodiscard]] CIPTC::EError MapFile(const std::string& path, platform::MappedFile::Access access,
                                    platform::MappedFile& map);

// CIPTC's result code for how a replacement ended: kSuccess,
// kCannotMapOrWrite (no temporary file could be made or written) or
// kCannotReplace (the backup or the final move failed).
[[nodiscard]] CIPTC::EError ReplaceResult(platform::ReplaceStatus status);

// What a writer's build step made of the mapped file: the complete new
// content to swap in (bytes the writer owns, so they outlive the mapping), or
// a result to return as it is (kSuccess: the file was changed in place).
using Built = std::variant<CIPTC::EError, std::span<const std::uint8_t>>;

// Maps path, lets build(map) decide, releases the view and the handle, and
// only then swaps the new content in (platform::ReplaceFileContent). A file
// too large to rebuild in memory gives kCannotMapOrWrite before build is
// called.
template <typename Build>
CIPTC::EError RebuildFile(const std::string& path, platform::MappedFile::Access access, Build&& build) {
    Built built;
    {
        platform::MappedFile map;
        const CIPTC::EError opened = MapFile(path, access, map);
        if (opened != CIPTC::kSuccess) return opened;
        if (map.Size() > limits::kMaxRewrittenFileBytes) return CIPTC::kCannotMapOrWrite;
        built = build(map);
    }
    if (const auto* result = std::get_if<CIPTC::EError>(&built)) return *result;
    return ReplaceResult(platform::ReplaceFileContent(path, std::get<std::span<const std::uint8_t>>(built)));
}

}  // namespace vliptc::iptc
