#pragma once

// Helpers of the POSIX file layer that the tests reach directly: the time
// conversions (negative and far-off times are the easy ones to get wrong) and
// the hard-link way of renaming without replacing, which only runs on file
// systems that refuse renameat2(RENAME_NOREPLACE).

#include <cstdint>
#include <string>

#include "platform/FileSystem.h"

namespace vliptc::platform::internal {

// A time as the kernel reports it: seconds since the epoch (may be negative)
// and 0..999999999 nanoseconds after them. Saturates at the limits of FileTime
// (about the years 1677 and 2262) instead of overflowing.
FileTime FileTimeFromParts(std::int64_t seconds, std::int64_t nanoseconds) noexcept;

// The reverse: nanoseconds is always in 0..999999999, seconds rounds down.
struct TimeParts {
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
};
TimeParts PartsFromFileTime(FileTime time) noexcept;

// link(from, to) then unlink(from). link() fails with EEXIST when "to" exists,
// so this never replaces either. If "from" cannot be unlinked, the new name is
// removed again so the caller sees the state it started with.
bool RenameByHardLink(const std::string& from, const std::string& to);

}  // namespace vliptc::platform::internal
