// POSIX implementation of OutputFile and ResizeFile. Every step asks the fault
// seam first, so tests can make any create, write or resize fail.

#include "platform/OutputFile.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FaultInjection.h"
#include "platform/FileSystem.h"

namespace vliptc::platform {

namespace {

// mkostemps replaces these six characters with a unique run.
constexpr const char* kUniqueRun = "XXXXXX";
constexpr const char* kTempSuffix = ".tmp";
constexpr int kTempSuffixLength = 4;

int CloseKeepingErrno(int fd) {
    const int saved = errno;
    const int result = ::close(fd);
    errno = saved;
    return result;
}

}  // namespace

OutputFile::~OutputFile() {
    if (m_fd >= 0) CloseKeepingErrno(m_fd);
}

bool OutputFile::CreateUnique(const std::string& folder, const std::string& prefix) {
    if (m_fd >= 0) return false;
    if (fault::ShouldFail(fault::Step::Create)) {
        errno = EACCES;
        return false;
    }
    std::string pattern = folder;
    if (!pattern.empty() && pattern.back() != '/') pattern += '/';
    pattern += prefix;
    pattern += kUniqueRun;
    pattern += kTempSuffix;
    // O_EXCL creation with a fresh name each try; the file starts with mode
    // 0600 and gets the replaced file's bits through CopyPermissionsFrom.
    const int fd = ::mkostemps(pattern.data(), kTempSuffixLength, O_CLOEXEC);
    if (fd < 0) return false;
    m_fd = fd;
    m_path = pattern;
    return true;
}

bool OutputFile::Write(std::span<const std::uint8_t> bytes) {
    if (m_fd < 0) return false;
    if (fault::ShouldFail(fault::Step::Write)) {
        errno = ENOSPC;
        return false;
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(m_fd, bytes.data() + done, bytes.size() - done);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (written == 0) {
            errno = ENOSPC;
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

bool OutputFile::Close() {
    if (m_fd < 0) return false;
    // fsync before the caller swaps the file in: after a crash the new name
    // must not point at a file whose data never reached the disk.
    const bool synced = ::fsync(m_fd) == 0;
    const bool closed = ::close(m_fd) == 0;
    m_fd = -1;
    return synced && closed;
}

void OutputFile::CopyPermissionsFrom(const std::string& path) {
    if (m_fd < 0) return;
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return;
    static_cast<void>(::fchmod(m_fd, st.st_mode & 07777));
}

void OutputFile::Discard() {
    if (m_fd >= 0) {
        CloseKeepingErrno(m_fd);
        m_fd = -1;
    }
    if (!m_path.empty()) {
        static_cast<void>(RemoveFile(m_path));
        m_path.clear();
    }
}

bool ResizeFile(const std::string& path, std::uint64_t size) {
    if (fault::ShouldFail(fault::Step::Resize)) {
        errno = ENOSPC;
        return false;
    }
    const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return false;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        CloseKeepingErrno(fd);
        return false;
    }
    const auto old = static_cast<std::uint64_t>(st.st_size);
    bool ok = false;
    if (size > old) {
        // posix_fallocate allocates the blocks (glibc writes them where the
        // file system cannot), so a later store through a mapping of the new
        // area cannot raise SIGBUS on a full disk.
        const int error = ::posix_fallocate(fd, static_cast<off_t>(old), static_cast<off_t>(size - old));
        ok = error == 0;
        if (!ok) {
            static_cast<void>(::ftruncate(fd, static_cast<off_t>(old)));  // back to the old size
            errno = error;
        }
    } else {
        ok = ::ftruncate(fd, static_cast<off_t>(size)) == 0;
    }
    const bool closed = ::close(fd) == 0;
    return ok && closed;
}

}  // namespace vliptc::platform
