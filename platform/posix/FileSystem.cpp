// POSIX implementation of the file-system calls. Paths are passed to the
// kernel as they are (bytes); times are kept to the nanosecond.

#include "platform/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>  // renameat2, RENAME_NOREPLACE (glibc 2.28+)
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FaultInjection.h"
#include "platform/internal/PosixFiles.h"

namespace vliptc::platform {

namespace internal {

namespace {
constexpr std::int64_t kNanosPerSecond = 1'000'000'000;
}  // namespace

FileTime FileTimeFromParts(std::int64_t seconds, std::int64_t nanoseconds) noexcept {
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    if (seconds > kMax / kNanosPerSecond) return FileTime{kMax};
    if (seconds < kMin / kNanosPerSecond) return FileTime{kMin};
    const std::int64_t scaled = seconds * kNanosPerSecond;
    if (nanoseconds > 0 && scaled > kMax - nanoseconds) return FileTime{kMax};
    if (nanoseconds < 0 && scaled < kMin - nanoseconds) return FileTime{kMin};
    return FileTime{scaled + nanoseconds};
}

TimeParts PartsFromFileTime(FileTime time) noexcept {
    // Division truncates toward zero; a time before 1970 must instead count
    // back a whole second and then forward by a positive nanosecond part,
    // which is how timespec expresses it.
    TimeParts parts{time.nanoseconds / kNanosPerSecond, time.nanoseconds % kNanosPerSecond};
    if (parts.nanoseconds < 0) {
        parts.nanoseconds += kNanosPerSecond;
        --parts.seconds;
    }
    return parts;
}

bool RenameByHardLink(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) != 0) return false;  // EEXIST when "to" exists
    if (::unlink(from.c_str()) != 0) {
        // Both names now point at the file; drop the new one so nothing moved.
        const int saved = errno;
        ::unlink(to.c_str());
        errno = saved;
        return false;
    }
    return true;
}

}  // namespace internal

std::int64_t FileTime::Seconds() const noexcept {
    return internal::PartsFromFileTime(*this).seconds;
}

namespace {

struct PathInfo {
    mode_t mode = 0;
    FileStatus status;
};

FileTime FromStatx(const struct statx_timestamp& t) {
    return internal::FileTimeFromParts(t.tv_sec, t.tv_nsec);
}

FileTime FromTimespec(const timespec& t) {
    return internal::FileTimeFromParts(t.tv_sec, t.tv_nsec);
}

timespec ToTimespec(FileTime time) {
    const internal::TimeParts parts = internal::PartsFromFileTime(time);
    timespec t{};
    t.tv_sec = static_cast<time_t>(parts.seconds);
    t.tv_nsec = static_cast<long>(parts.nanoseconds);
    return t;
}

// Follows symbolic links, as the host's attribute and time queries do.
std::optional<PathInfo> QueryPath(const std::string& path) {
    struct statx sx {};
    if (::statx(AT_FDCWD, path.c_str(), AT_STATX_SYNC_AS_STAT, STATX_BASIC_STATS | STATX_BTIME,
                &sx) == 0) {
        PathInfo info;
        info.mode = sx.stx_mode;
        info.status.size = sx.stx_size;
        info.status.isDirectory = S_ISDIR(sx.stx_mode);
        info.status.times.access = FromStatx(sx.stx_atime);
        info.status.times.write = FromStatx(sx.stx_mtime);
        // Only some file systems record a birth time; the mask says whether
        // this one did.
        if ((sx.stx_mask & STATX_BTIME) != 0) info.status.times.creation = FromStatx(sx.stx_btime);
        return info;
    }
    // Some sandboxes filter statx out (EPERM) or the kernel lacks it
    // (ENOSYS); plain stat still gives everything but the birth time.
    if (errno != ENOSYS && errno != EPERM) return std::nullopt;
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return std::nullopt;
    PathInfo info;
    info.mode = st.st_mode;
    info.status.size = static_cast<std::uint64_t>(st.st_size);
    info.status.isDirectory = S_ISDIR(st.st_mode);
    info.status.times.access = FromTimespec(st.st_atim);
    info.status.times.write = FromTimespec(st.st_mtim);
    return info;
}

// The status and time queries go through the fault seam; the plain existence
// and kind queries above do not.
std::optional<PathInfo> QueryTimes(const std::string& path) {
    if (fault::ShouldFail(fault::Step::Time)) {
        errno = EIO;
        return std::nullopt;
    }
    return QueryPath(path);
}

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) noexcept : m_fd(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }
    int Get() const noexcept { return m_fd; }

private:
    int m_fd;
};

}  // namespace

bool Exists(const std::string& path) {
    return QueryPath(path).has_value();
}

bool IsDirectory(const std::string& path) {
    const auto info = QueryPath(path);
    return info && S_ISDIR(info->mode);
}

bool IsRegularFile(const std::string& path) {
    const auto info = QueryPath(path);
    return info && S_ISREG(info->mode);
}

// A missing file counts as read-only too: nothing can be written there.
bool IsReadOnly(const std::string& path) {
    return ::access(path.c_str(), W_OK) != 0;
}

std::optional<FileStatus> GetFileStatus(const std::string& path) {
    const auto info = QueryTimes(path);
    if (!info) return std::nullopt;
    return info->status;
}

std::optional<FileTime> GetLastWriteTime(const std::string& path) {
    const auto info = QueryTimes(path);
    if (!info) return std::nullopt;
    return info->status.times.write;
}

std::optional<FileTimes> GetFileTimes(const std::string& path) {
    const auto info = QueryTimes(path);
    if (!info) return std::nullopt;
    return info->status.times;
}

bool SetFileTimes(const std::string& path, const FileTimes& times) {
    if (fault::ShouldFail(fault::Step::Time)) {
        errno = EIO;
        return false;
    }
    // Linux has no call that sets a birth time, so times.creation is ignored.
    const timespec values[2] = {ToTimespec(times.access), ToTimespec(times.write)};
    return ::utimensat(AT_FDCWD, path.c_str(), values, 0) == 0;
}

bool RenameNoReplace(const std::string& from, const std::string& to) {
    if (fault::ShouldFail(fault::Step::Rename)) {
        errno = EIO;
        return false;
    }
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // EINVAL: this file system does not support the flag (some network and
    // FUSE file systems); ENOSYS: the kernel has no renameat2. Every other
    // error, EEXIST above all, is the answer.
    if (errno != EINVAL && errno != ENOSYS) return false;
    return internal::RenameByHardLink(from, to);
}

bool RemoveFile(const std::string& path) {
    if (fault::ShouldFail(fault::Step::Remove)) {
        errno = EIO;
        return false;
    }
    return ::unlink(path.c_str()) == 0;
}

std::optional<std::string> FindCompanion(const std::string& path, const std::string& extension) {
    const auto upper = [](std::string text) {
        for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        return text;
    };
    // The base name: the path without its extension (a dot in a folder name does not count).
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.find_last_of("/\\");
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::string base = hasExtension ? path.substr(0, dot) : path;
    for (const std::string& spelling : {extension, upper(extension)}) {
        if (IsRegularFile(base + spelling)) return base + spelling;
    }
    const std::size_t folderEnd = base.find_last_of('/');
    const std::string folder =
        folderEnd == std::string::npos ? std::string(".") : base.substr(0, folderEnd + 1);
    const std::string stem = folderEnd == std::string::npos ? base : base.substr(folderEnd + 1);
    std::error_code error;
    std::vector<std::string> names;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.size() == stem.size() + extension.size() && name.compare(0, stem.size(), stem) == 0 &&
            upper(name.substr(stem.size())) == upper(extension)) {
            names.push_back(name);
        }
    }
    if (names.empty()) return std::nullopt;
    const std::string candidate = base.substr(0, folderEnd == std::string::npos ? 0 : folderEnd + 1) +
                                  *std::min_element(names.begin(), names.end());
    if (!IsRegularFile(candidate)) return std::nullopt;
    return candidate;
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::uint64_t maxBytes) {
    // O_NONBLOCK so that a FIFO at the path cannot stall the open; it is
    // refused below as not a regular file, and has no effect on regular files.
    const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (fd.Get() < 0) return std::nullopt;
    struct stat st {};
    if (::fstat(fd.Get(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    const auto size = static_cast<std::uint64_t>(st.st_size);
    if (size > maxBytes || size > std::string().max_size()) return std::nullopt;

    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(fd.Get(), bytes.data() + done, bytes.size() - done);
        if (got < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (got == 0) return std::nullopt;  // the file shrank under us
        done += static_cast<std::size_t>(got);
    }
    return bytes;
}

}  // namespace vliptc::platform
