// The floors: the least any program pays per file for what the other
// harnesses do, in bare system calls.
//
//   touch-4k, touch-64k  open, map read-only, read one byte of every 4 KB page
//                        of the first 4 KB / 64 KB (the whole file when
//                        shorter), unmap, close: a reader that finds its
//                        metadata near the start of the file
//   copy-rename          read the whole file, write NAME.tmp beside it with the
//                        same bytes, fsync, rename over NAME: the cheapest
//                        rewrite that never leaves a partial file at NAME
//   safe-sequence        the steps of our writer's safe replacement
//
// Usage as every harness: bench_floor TASK LIST_FILE [--passes N].

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "bench/driver/Harness.h"

namespace {

constexpr std::size_t kPage = 4096;

volatile unsigned g_sink = 0;  // keeps the touched bytes from being optimised away

// A descriptor closed on every path out.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }
    int Get() const { return m_fd; }
    // Closes now, reporting the result (a write error may show only here).
    bool Close() {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

bool Touch(const std::string& path, std::size_t span) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat st {};
    if (file.Get() < 0 || ::fstat(file.Get(), &st) != 0 || st.st_size == 0) return false;
    const std::size_t length = std::min(span, static_cast<std::size_t>(st.st_size));
    void* map = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, file.Get(), 0);
    if (map == MAP_FAILED) return false;
    const auto* bytes = static_cast<const std::uint8_t*>(map);
    unsigned sum = 0;
    for (std::size_t at = 0; at < length; at += kPage) sum += bytes[at];
    g_sink = g_sink + sum;
    ::munmap(map, length);
    return true;
}

bool WriteAll(int fd, const std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written <= 0) return false;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool ReadAll(int fd, std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const ssize_t got = ::read(fd, data, size);
        if (got <= 0) return false;
        data += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

// One buffer for every file, so the floor does not pay for fresh memory.
std::vector<std::uint8_t>& Buffer(std::size_t size) {
    static std::vector<std::uint8_t> buffer;
    if (buffer.size() < size) buffer.resize(size);
    return buffer;
}

bool CopyRename(const std::string& path) {
    Descriptor in(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat st {};
    if (in.Get() < 0 || ::fstat(in.Get(), &st) != 0) return false;
    const auto size = static_cast<std::size_t>(st.st_size);
    std::vector<std::uint8_t>& buffer = Buffer(size);
    if (!ReadAll(in.Get(), buffer.data(), size) || !in.Close()) return false;
    const std::string temp = path + ".tmp";
    Descriptor out(::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, st.st_mode & 07777));
    if (out.Get() < 0) return false;
    if (!WriteAll(out.Get(), buffer.data(), size) || ::fsync(out.Get()) != 0 || !out.Close()) {
        ::unlink(temp.c_str());
        return false;
    }
    return ::rename(temp.c_str(), path.c_str()) == 0;
}

// What CIPTC::WriteIPTCBlob does to a JPEG or TIFF, without the rebuilding
// of its content (iptc/FileIO.cpp, iptc/internal/ContainerFile.h,
// platform/SafeReplace.cpp, platform/posix/OutputFile.cpp, MappedFile.cpp,
// FileSystem.cpp):
//   stat (statx there: the file's times for the file macros); open, fstat,
//   mmap read-only and access(W_OK) while the new content is built in memory
//   (here: copied); munmap, close; mkostemps ".NAME.vliptc-XXXXXX.tmp" beside it, stat NAME and fchmod the
//   temporary to its bits, write, fsync, close; renameat2 NAME to NAME.000
//   without replacing (the numbered backup), renameat2 the temporary to NAME
//   without replacing, unlink NAME.000.
bool SafeSequence(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return false;
    std::size_t size = 0;
    {
        Descriptor in(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (in.Get() < 0 || ::fstat(in.Get(), &st) != 0 || st.st_size == 0) return false;
        size = static_cast<std::size_t>(st.st_size);
        void* map = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, in.Get(), 0);
        if (map == MAP_FAILED) return false;
        std::memcpy(Buffer(size).data(), map, size);
        const bool writable = ::access(path.c_str(), W_OK) == 0;
        ::munmap(map, size);
        if (!writable) return false;
    }

    const std::size_t slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string temp = folder + "." + name + ".vliptc-XXXXXX.tmp";
    Descriptor out(::mkostemps(temp.data(), 4, O_CLOEXEC));
    if (out.Get() < 0) return false;
    if (::stat(path.c_str(), &st) == 0) static_cast<void>(::fchmod(out.Get(), st.st_mode & 07777));
    if (!WriteAll(out.Get(), Buffer(size).data(), size) || ::fsync(out.Get()) != 0 || !out.Close()) {
        ::unlink(temp.c_str());
        return false;
    }

    const std::string backup = path + ".000";
    if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, backup.c_str(), RENAME_NOREPLACE) != 0) {
        ::unlink(temp.c_str());
        return false;
    }
    if (::renameat2(AT_FDCWD, temp.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0) {
        ::unlink(temp.c_str());
        ::renameat2(AT_FDCWD, backup.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
        return false;
    }
    return ::unlink(backup.c_str()) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const vliptc::bench::Task tasks[] = {
        {"touch-4k", [](const std::string& path) { return Touch(path, 4 * 1024); }},
        {"touch-64k", [](const std::string& path) { return Touch(path, 64 * 1024); }},
        {"copy-rename", CopyRename},
        {"safe-sequence", SafeSequence},
    };
    return vliptc::bench::RunHarness("floor", tasks, argc, argv);
}
