#pragma once

// File names as the readers and writers see them: the extension that names
// a format, and the ".thm" companion a ".CRW" raw file stands for.

#include <optional>
#include <string>
#include <string_view>

namespace vliptc::platform {

// The extension of the file name (from its last "."), upper-cased with plain
// ASCII rules so the result does not depend on the user's locale; empty when
// the name has none. A dot in a folder name does not count; "/" and "\" both
// separate folders.
std::string UpperExtension(std::string_view path);

// The file that holds the metadata of path: path itself, or for a ".CRW" raw
// file its ".thm" companion beside it (found whatever its case); nullopt when
// a ".CRW" has no companion. Raw ".CRW" data is never read or written.
std::optional<std::string> MetadataFileOf(const std::string& path);

}  // namespace vliptc::platform
