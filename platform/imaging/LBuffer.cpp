#include "platform/imaging/LBuffer.h"

#include <new>

#include "platform/imaging/ImagingResult.h"

using namespace vliptc::imaging;

int LBuffer::Reallocate(unsigned size) {
    if (m_locks > 0) return kImagingBufferLocked;
    try {
        std::vector<unsigned char>(size, 0).swap(m_bytes);
    } catch (const std::bad_alloc&) {
        return kImagingNoMemory;
    }
    return kImagingSuccess;
}

unsigned char* LBuffer::Lock() noexcept {
    ++m_locks;
    return m_bytes.empty() ? nullptr : m_bytes.data();
}

void LBuffer::Unlock() noexcept {
    if (m_locks > 0) --m_locks;
}
