#pragma once

// The file steps the container readers and writers share: mapping a file with
// CIPTC's result codes, and the frames of the writers that make the new file
// from the mapped one and swap it in: built whole in memory, or described and
// written out in chunks.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "host/Limits.h"
#include "iptc/IPTC.h"
#include "iptc/internal/DescribedFile.h"
#include "platform/FileSystem.h"
#include "platform/MappedFile.h"
#include "platform/OutputFile.h"
#include "platform/SafeReplace.h"

namespace vliptc::iptc {

// The largest block a writer accepts (what the encoder can produce).
inline constexpr std::size_t kMaxBlockBytes = 65536;

// CIPTC's result code for how opening or mapping a file ended.
[[nodiscard]] CIPTC::EError OpenResult(platform::MappedFile::Status status);

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

// What a describing writer's first step made of the mapped file: the new
// file described, or a result to return as it is.
using Described = std::variant<CIPTC::EError, DescribedFile>;

// Maps path read-only and lets describe(map) decide. The described file is
// written to a temporary file beside path while the original is still mapped;
// check(tempPath) then looks at the complete, closed temporary file (anything
// but kSuccess removes it and is returned). The original's view and handle are
// released before the temporary file is swapped in (backup, move, commit).
template <typename Describe, typename Check>
CIPTC::EError ReplaceWithDescribedFile(const std::string& path, Describe&& describe, Check&& check) {
    std::optional<std::string> temp;
    {
        platform::MappedFile map;
        const CIPTC::EError opened = MapFile(path, platform::MappedFile::Access::ReadOnly, map);
        if (opened != CIPTC::kSuccess) return opened;
        if (map.Size() > limits::kMaxRewrittenFileBytes) return CIPTC::kCannotMapOrWrite;
        const Described described = describe(map);
        if (const auto* result = std::get_if<CIPTC::EError>(&described)) return *result;
        const DescribedFile& file = std::get<DescribedFile>(described);
        temp = platform::WriteTempBeside(path,
                                         [&](platform::OutputFile& out) { return file.WriteTo(out, map); });
        if (!temp) return CIPTC::kCannotMapOrWrite;
        const CIPTC::EError checked = check(*temp);
        if (checked != CIPTC::kSuccess) {
            static_cast<void>(platform::RemoveFile(*temp));
            return checked;
        }
    }
    return ReplaceResult(platform::SwapInTempFile(path, *temp));
}

}  // namespace vliptc::iptc
