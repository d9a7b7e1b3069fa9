#include "host/VLFile.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "host/VLException.h"

namespace {

std::string ErrnoText(int error) {
    return std::generic_category().message(error);
}

}  // namespace

CVLFile::~CVLFile() {
    Close();
}

void CVLFile::Open(const std::string& path, bool /*share*/, bool /*sequential*/) {
    Close();
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) throw CVLException("cannot open \"" + path + "\": " + ErrnoText(errno));
    m_file = file;
    m_path = path;
}

void CVLFile::Create(const std::string& path, bool /*share*/) {
    Close();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) throw CVLException("cannot create \"" + path + "\": " + ErrnoText(errno));
    // Unbuffered: every Write reaches the system at once, so a full disk shows
    // as a failed Write (which throws) and not as a lost flush in Close.
    std::setvbuf(file, nullptr, _IONBF, 0);
    m_file = file;
    m_path = path;
}

void CVLFile::Close() noexcept {
    if (m_file != nullptr) {
        std::fclose(m_file);
        m_file = nullptr;
    }
    m_path.clear();
}

bool CVLFile::FileExists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

unsigned CVLFile::Write(const void* data, unsigned count) {
    if (m_file == nullptr) throw CVLException("write to a file that is not open");
    if (count == 0) return 0;
    if (data == nullptr) throw CVLException("write from a null buffer");
    errno = 0;
    const std::size_t written = std::fwrite(data, 1, count, m_file);
    if (written != count) {
        const int error = errno;
        throw CVLException("short write to \"" + m_path + "\" (" + std::to_string(written) + " of " +
                           std::to_string(count) + " bytes)" + (error != 0 ? ": " + ErrnoText(error) : std::string()));
    }
    return count;
}

unsigned CVLFile::Read(void* data, unsigned count) {
    if (m_file == nullptr) throw CVLException("read from a file that is not open");
    if (count == 0) return 0;
    if (data == nullptr) throw CVLException("read into a null buffer");
    const std::size_t read = std::fread(data, 1, count, m_file);
    if (read != count && std::ferror(m_file) != 0) {
        throw CVLException("cannot read \"" + m_path + "\": " + ErrnoText(errno));
    }
    return static_cast<unsigned>(read);
}

void CVLFile::ReadExact(void* data, unsigned count) {
    const unsigned read = Read(data, count);
    if (read != count) {
        throw CVLException("short stream: " + std::to_string(read) + " of " + std::to_string(count) + " bytes");
    }
}

std::int64_t CVLFile::GetFileSize() const {
    if (m_file == nullptr) throw CVLException("size of a file that is not open");
    const long position = std::ftell(m_file);
    if (position < 0 || std::fseek(m_file, 0, SEEK_END) != 0) {
        throw CVLException("cannot seek in \"" + m_path + "\"");
    }
    const long size = std::ftell(m_file);
    if (std::fseek(m_file, position, SEEK_SET) != 0 || size < 0) {
        throw CVLException("cannot seek in \"" + m_path + "\"");
    }
    return size;
}

std::int64_t CVLFile::GetPosition() const {
    if (m_file == nullptr) throw CVLException("position in a file that is not open");
    const long position = std::ftell(m_file);
    if (position < 0) throw CVLException("cannot tell the position in \"" + m_path + "\"");
    return position;
}

void CVLFile::WriteUInt16(std::uint16_t value) {
    const unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF), static_cast<unsigned char>(value >> 8)};
    Write(bytes, sizeof bytes);
}

void CVLFile::WriteUInt32(std::uint32_t value) {
    unsigned char bytes[4];
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFF);
    Write(bytes, sizeof bytes);
}

std::uint16_t CVLFile::ReadUInt16() {
    unsigned char bytes[2];
    ReadExact(bytes, sizeof bytes);
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

std::uint32_t CVLFile::ReadUInt32() {
    unsigned char bytes[4];
    ReadExact(bytes, sizeof bytes);
    return static_cast<std::uint32_t>(bytes[0]) | (static_cast<std::uint32_t>(bytes[1]) << 8) |
           (static_cast<std::uint32_t>(bytes[2]) << 16) | (static_cast<std::uint32_t>(bytes[3]) << 24);
}
