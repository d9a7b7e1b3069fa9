#pragma once

// The operating-system calls of the library on files and folders. Everything
// that touches the file system by path goes through here, so another platform
// can be added beside the POSIX one.

#include <cstdint>
#include <optional>
#include <string>

namespace vliptc::platform {

// A point in time of a file: nanoseconds since 1970-01-01 UTC.
struct FileTime {
    std::int64_t nanoseconds = 0;
    auto operator<=>(const FileTime&) const = default;
    // Seconds since the epoch (rounded down), for the C time functions.
    std::int64_t Seconds() const noexcept;
};

struct FileTimes {
    // Where the system records it (statx birth time); it can never be set here.
    std::optional<FileTime> creation;
    FileTime access;
    FileTime write;
};

// What a directory search reports about one path (the host's FindFirstFile).
struct FileStatus {
    std::uint64_t size = 0;
    bool isDirectory = false;
    FileTimes times;
};

bool Exists(const std::string& path);
bool IsDirectory(const std::string& path);
bool IsRegularFile(const std::string& path);
// Read-only means this process may not write the file.
bool IsReadOnly(const std::string& path);

std::optional<FileStatus> GetFileStatus(const std::string& path);
std::optional<FileTime> GetLastWriteTime(const std::string& path);
std::optional<FileTimes> GetFileTimes(const std::string& path);
// Sets access and write times; the creation time cannot be set on this
// platform and is ignored.
bool SetFileTimes(const std::string& path, const FileTimes& times);

// Renames from -> to, failing (false) when "to" already exists. Never replaces.
bool RenameNoReplace(const std::string& from, const std::string& to);
bool RemoveFile(const std::string& path);

// The companion of a file: the same folder and base name with another
// extension (the ".thm" beside a ".CRW"). Cameras write extensions in upper
// case, and on a case-sensitive file system the companion must be found
// whatever its case: the extension as given, then upper-cased, then any other
// spelling (the first in name order, so the choice does not depend on the
// order of the folder listing). nullopt when none is a regular file.
std::optional<std::string> FindCompanion(const std::string& path, const std::string& extension);

// Reads a whole regular file. nullopt when it cannot be opened, is not a
// regular file, is larger than maxBytes, or the read comes up short.
std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t maxBytes);

}  // namespace vliptc::platform
