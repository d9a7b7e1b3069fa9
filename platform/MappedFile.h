#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vliptc::platform {

// A file mapped into memory, read-only or read-write (shared, so writes reach
// the file). Unmaps and closes on destruction.
class MappedFile {
public:
    enum class Access { ReadOnly, ReadWrite };
    enum class Status {
        Ok,
        CannotOpen,  // missing, a folder, or no permission
        Empty,       // size 0: nothing to map
        CannotMap,   // mmap failed
    };

    MappedFile() = default;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    ~MappedFile();

    // OpenFile, then Map.
    [[nodiscard]] Status Open(const std::string& path, Access access);
    // The two steps of Open, for a reader that may get by with ReadAt alone:
    // OpenFile opens a regular, non-empty file and learns its size (Bytes()
    // stays empty); Map maps what OpenFile opened (CannotMap when it fails,
    // or when nothing is open).
    [[nodiscard]] Status OpenFile(const std::string& path, Access access);
    [[nodiscard]] Status Map();
    void Close() noexcept;

    bool IsOpen() const noexcept { return m_data != nullptr; }
    std::size_t Size() const noexcept { return m_size; }
    const std::uint8_t* Data() const noexcept { return m_data; }
    // Null unless mapped read-write.
    std::uint8_t* MutableData() noexcept { return m_writable ? m_data : nullptr; }
    std::span<const std::uint8_t> Bytes() const noexcept { return {m_data, m_size}; }

    // Copies out.size() bytes at offset through the file rather than the
    // mapping; false when they do not all lie in the file. A look at a few
    // bytes far from the rest of the reading (the end of a large file) costs a
    // read of the page cache, not a page fault and the mapping of the pages
    // around it.
    bool ReadAt(std::size_t offset, std::span<std::uint8_t> out) const noexcept;

private:
    int m_fd = -1;
    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_writable = false;
};

}  // namespace vliptc::platform
