#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

#include "host/VLException.h"
#include "host/VLFile.h"

CVLMemFile::CVLMemFile(bool /*owned*/, unsigned initialSize, unsigned growBy) : m_growBy(growBy != 0 ? growBy : 1) {
    m_data.reserve(initialSize);
}

void CVLMemFile::Open(const std::string& path, bool /*share*/, bool /*sequential*/) {
    throw CVLException("a memory file cannot open \"" + path + "\"");
}

void CVLMemFile::Create(const std::string& path, bool /*share*/) {
    throw CVLException("a memory file cannot create \"" + path + "\"");
}

// The capacity grows in whole steps, and by at least half of itself, so that
// assembling a whole image file (megabytes, appended piecewise) stays linear.
void CVLMemFile::Reserve(std::size_t needed) {
    const std::size_t capacity = m_data.capacity();
    if (needed <= capacity) return;
    const std::size_t maxSize = m_data.max_size();
    std::size_t target = std::max(needed, capacity + capacity / 2);
    if (target > maxSize - m_growBy) throw CVLException("memory file too large");
    target = (target + m_growBy - 1) / m_growBy * m_growBy;
    m_data.reserve(target);
}

unsigned CVLMemFile::Write(const void* data, unsigned count) {
    if (count == 0) return 0;
    if (data == nullptr) throw CVLException("write from a null buffer");
    if (m_position > std::numeric_limits<std::size_t>::max() - count) throw CVLException("memory file too large");
    const std::size_t end = m_position + count;

    // The source may lie in our own buffer (copying a part of the file onto its
    // end); growing would move it, so take a copy first.
    const auto* source = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> own;
    const std::uint8_t* begin = m_data.data();
    if (begin != nullptr && std::less_equal<>()(begin, source) && std::less<>()(source, begin + m_data.capacity())) {
        own.assign(source, source + count);
        source = own.data();
    }

    Reserve(end);
    if (end > m_data.size()) m_data.resize(end);
    std::memcpy(m_data.data() + m_position, source, count);
    m_position = end;
    return count;
}

unsigned CVLMemFile::Read(void* data, unsigned count) {
    if (count == 0 || m_position >= m_data.size()) return 0;
    if (data == nullptr) throw CVLException("read into a null buffer");
    const std::size_t available = m_data.size() - m_position;
    const auto read = static_cast<unsigned>(std::min<std::size_t>(count, available));
    std::memcpy(data, m_data.data() + m_position, read);
    m_position += read;
    return read;
}

std::int64_t CVLMemFile::GetFileSize() const {
    return static_cast<std::int64_t>(m_data.size());
}

std::int64_t CVLMemFile::GetPosition() const {
    return static_cast<std::int64_t>(m_position);
}

void CVLMemFile::Seek(std::uint64_t position) noexcept {
    m_position = static_cast<std::size_t>(std::min<std::uint64_t>(position, m_data.size()));
}

void CVLMemFile::Assign(const void* data, std::size_t size) {
    if (data == nullptr && size != 0) throw CVLException("assign from a null buffer");
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> copy(bytes, bytes + size);
    Reserve(size);
    m_data.assign(copy.begin(), copy.end());
    m_position = 0;
}
