// The process-wide table of pending comments. It is the one piece of global
// state of the library: the imaging interface makes it global, since a save
// embeds whatever any part of the host set before it.

#include "platform/imaging/LFileSettings.h"

#include <algorithm>
#include <mutex>
#include <new>

#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/LBuffer.h"
#include "platform/imaging/internal/CommentTable.h"

namespace vliptc::imaging {

namespace {

struct Table {
    std::mutex mutex;
    CommentSet entries;
};

Table& TheTable() {
    static Table table;
    return table;
}

}  // namespace

CommentSet PendingComments() {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    return table.entries;
}

int CopyComment(std::span<const std::uint8_t> comment, LBuffer* buffer) {
    if (buffer == nullptr || comment.empty()) return static_cast<int>(comment.size());
    if (buffer->GetSize() < comment.size()) return kImagingBadParameter;
    std::copy(comment.begin(), comment.end(), buffer->Lock());
    buffer->Unlock();
    return static_cast<int>(comment.size());
}

}  // namespace vliptc::imaging

using namespace vliptc::imaging;

int LFileSettings::SetComment(unsigned index, const void* data, unsigned size) {
    if (index >= kCommentCount) return kImagingBadIndex;
    if ((data == nullptr && size > 0) || size > kMaxCommentBytes) return kImagingBadParameter;
    std::vector<std::uint8_t> bytes;
    try {
        const auto* first = static_cast<const std::uint8_t*>(data);
        bytes.assign(first, first + size);
    } catch (const std::bad_alloc&) {
        return kImagingNoMemory;
    }
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    table.entries[index].swap(bytes);
    return kImagingSuccess;
}

int LFileSettings::GetComment(unsigned index, LBuffer* buffer) {
    if (index >= kCommentCount) return kImagingBadIndex;
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    return CopyComment(table.entries[index], buffer);
}
