#pragma once

// The imaging library's byte buffer: comments are read into one and set from
// one. The bytes stay where they are while the buffer is locked.

#include <vector>

class LBuffer {
public:
    // Sets the size to size bytes, all zero. kImagingSuccess, or
    // kImagingBufferLocked / kImagingNoMemory (the buffer unchanged).
    int Reallocate(unsigned size);
    // The bytes (null when the size is 0), valid until Unlock.
    unsigned char* Lock() noexcept;
    void Unlock() noexcept;
    unsigned GetSize() const noexcept { return static_cast<unsigned>(m_bytes.size()); }

private:
    std::vector<unsigned char> m_bytes;
    unsigned m_locks = 0;
};
