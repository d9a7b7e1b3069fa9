// POSIX implementation of MappedFile: open + fstat + mmap. The descriptor stays
// open as long as the mapping, as the handle pair does on Windows. The fault
// seam can fail the read-write open and the mmap.

#include "platform/MappedFile.h"

#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FaultInjection.h"

namespace vliptc::platform {

MappedFile::MappedFile(MappedFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)),
      m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_writable(std::exchange(other.m_writable, false)) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_fd = std::exchange(other.m_fd, -1);
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_writable = std::exchange(other.m_writable, false);
    }
    return *this;
}

MappedFile::~MappedFile() {
    Close();
}

MappedFile::Status MappedFile::Open(const std::string& path, Access access) {
    const Status opened = OpenFile(path, access);
    return opened == Status::Ok ? Map() : opened;
}

MappedFile::Status MappedFile::OpenFile(const std::string& path, Access access) {
    Close();
    const bool writable = access == Access::ReadWrite;
    if (writable && fault::ShouldFail(fault::Step::Map)) {
        errno = EACCES;
        return Status::CannotOpen;
    }
    // O_NONBLOCK keeps a FIFO at the path from stalling the open; anything
    // that is not a regular file is refused after fstat.
    const int fd = ::open(path.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return Status::CannotOpen;  // read-write open of a folder fails here (EISDIR)

    auto fail = [fd](Status status) {
        ::close(fd);
        return status;
    };
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return fail(Status::CannotOpen);
    if (st.st_size == 0) return fail(Status::Empty);  // mmap refuses a length of 0
    if (static_cast<std::uint64_t>(st.st_size) > std::numeric_limits<std::size_t>::max()) {
        return fail(Status::CannotMap);
    }
    m_fd = fd;
    m_size = static_cast<std::size_t>(st.st_size);
    m_writable = writable;
    return Status::Ok;
}

MappedFile::Status MappedFile::Map() {
    if (m_fd < 0 || m_data != nullptr) return Status::CannotMap;
    if (fault::ShouldFail(fault::Step::Map)) {
        errno = ENOMEM;
        Close();
        return Status::CannotMap;
    }
    // MAP_SHARED: writes through the map go to the file itself.
    void* data = ::mmap(nullptr, m_size, m_writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, m_fd, 0);
    if (data == MAP_FAILED) {
        Close();
        return Status::CannotMap;
    }
    m_data = static_cast<std::uint8_t*>(data);
    return Status::Ok;
}

bool MappedFile::ReadAt(std::size_t offset, std::span<std::uint8_t> out) const noexcept {
    if (m_fd < 0 || offset > m_size || out.size() > m_size - offset) return false;
    std::size_t done = 0;
    while (done < out.size()) {
        const ssize_t got = ::pread(m_fd, out.data() + done, out.size() - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        done += static_cast<std::size_t>(got);
    }
    return true;
}

void MappedFile::Close() noexcept {
    if (m_data != nullptr) ::munmap(m_data, m_size);
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
    m_data = nullptr;
    m_size = 0;
    m_writable = false;
}

}  // namespace vliptc::platform
