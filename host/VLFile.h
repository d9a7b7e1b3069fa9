#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "host/VLBase.h"

// A binary disk file opened for reading or created for writing. Failures to
// open, create, read or write throw CVLException. Number helpers write and read
// least-significant byte first, the order of every host stream.
// A created file is unbuffered, so a write that fails (a full disk) throws in
// Write rather than being lost in Close.
class CVLFile : public CVLBase {
public:
    CVLFile() = default;
    CVLFile(const CVLFile&) = delete;
    CVLFile& operator=(const CVLFile&) = delete;
    ~CVLFile() override;

    // Opens an existing file for reading. The two flags of the host signature
    // (share, sequential) carry no meaning here.
    virtual void Open(const std::string& path, bool share = true, bool sequential = true);
    // Creates or truncates a file for writing. The flag (share) is ignored.
    virtual void Create(const std::string& path, bool share = false);
    virtual void Close() noexcept;
    static bool FileExists(const std::string& path);

    // Appends count bytes at the position; returns count. Throws on failure.
    virtual unsigned Write(const void* data, unsigned count);
    // Reads up to count bytes; returns how many were read (0 at the end).
    virtual unsigned Read(void* data, unsigned count);
    // Reads exactly count bytes or throws CVLException ("short stream").
    void ReadExact(void* data, unsigned count);
    // Both throw CVLException when the file is not open.
    virtual std::int64_t GetFileSize() const;
    virtual std::int64_t GetPosition() const;

    void WriteUInt16(std::uint16_t value);
    void WriteUInt32(std::uint32_t value);
    std::uint16_t ReadUInt16();
    std::uint32_t ReadUInt32();

    const std::string& GetFilePath() const noexcept { return m_path; }

private:
    std::FILE* m_file = nullptr;
    std::string m_path;
};

// A growable byte buffer with the file interface: a position, a size and a
// buffer that can be fetched whole. Writing at the position overwrites and
// extends; reading starts at the position too (Rewind before reading back).
// The capacity grows in whole multiples of the step, and by at least half of
// itself, so appending a whole image file piecewise stays linear.
// Open and Create throw CVLException: a memory file has no path.
class CVLMemFile : public CVLFile {
public:
    // (owned flag of the host signature, initial capacity, growth step).
    // The library passes (false, 65536, 4096).
    explicit CVLMemFile(bool /*owned*/ = false, unsigned initialSize = 65536, unsigned growBy = 4096);
    ~CVLMemFile() override = default;

    void Open(const std::string& path, bool share = true, bool sequential = true) override;
    void Create(const std::string& path, bool share = false) override;
    void Close() noexcept override {}

    unsigned Write(const void* data, unsigned count) override;
    unsigned Read(void* data, unsigned count) override;
    std::int64_t GetFileSize() const override;
    std::int64_t GetPosition() const override;

    // The whole buffer from its start; the argument is ignored.
    std::uint8_t* GetBuffer(unsigned /*unused*/ = 0) noexcept { return m_data.data(); }
    const std::uint8_t* GetBuffer(unsigned /*unused*/ = 0) const noexcept { return m_data.data(); }
    void Rewind() noexcept { m_position = 0; }
    // Moves the position (clamped to the size).
    void Seek(std::uint64_t position) noexcept;
    // Replaces the contents with a copy of bytes and rewinds (for reading back).
    void Assign(const void* data, std::size_t size);

private:
    void Reserve(std::size_t needed);

    std::vector<std::uint8_t> m_data;
    std::size_t m_position = 0;
    std::size_t m_growBy;
};
