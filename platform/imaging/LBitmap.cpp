#include "platform/imaging/LBitmap.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "host/ByteOrder.h"
#include "host/Limits.h"
#include "platform/FileSystem.h"
#include "platform/SafeReplace.h"
#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/internal/CommentTable.h"
#include "platform/imaging/internal/ExifComments.h"
#include "platform/imaging/internal/JpegLayout.h"

using namespace vliptc::imaging;

namespace {

std::span<const std::uint8_t> Bytes(const std::string& file) {
    return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
}

// The file with the range the layout names replaced by an APP1 segment
// holding payload.
std::vector<std::uint8_t> Rebuilt(std::span<const std::uint8_t> file, const JpegLayout& layout,
                                  std::span<const std::uint8_t> payload) {
    constexpr std::uint8_t kMarkerPrefix = 0xFF;
    constexpr std::uint8_t kAPP1 = 0xE1;
    constexpr std::uint64_t kLengthBytes = 2;  // the length field counts itself
    const auto length = vliptc::bytes::Encode16(static_cast<std::uint16_t>(payload.size() + kLengthBytes),
                                                vliptc::bytes::ByteOrder::kBigEndian);
    const std::array<std::uint8_t, 4> header{kMarkerPrefix, kAPP1, length[0], length[1]};
    std::vector<std::uint8_t> out;
    out.reserve(file.size() + header.size() + payload.size());
    out.insert(out.end(), file.begin(), file.begin() + static_cast<std::ptrdiff_t>(layout.exifStart));
    out.insert(out.end(), header.begin(), header.end());
    out.insert(out.end(), payload.begin(), payload.end());
    out.insert(out.end(), file.begin() + static_cast<std::ptrdiff_t>(layout.exifEnd), file.end());
    return out;
}

}  // namespace

int LBitmap::Load(const std::string& path) {
    *this = LBitmap();
    auto file = vliptc::platform::ReadWholeFile(path, vliptc::limits::kMaxImagingFileBytes);
    if (!file) return kImagingCannotOpen;
    const auto bytes = Bytes(*file);
    if (!StartsLikeJpeg(bytes)) return kImagingNotJpeg;
    const auto layout = ReadJpegLayout(bytes);
    if (!layout) return kImagingBadJpeg;
    m_comments = ReadExifComments(layout->ExifPayload(bytes));
    m_file = std::move(*file);
    m_loaded = true;
    return kImagingSuccess;
}

int LBitmap::ReadComment(unsigned index, LBuffer* buffer) const {
    if (index >= kCommentCount) return kImagingBadIndex;
    if (!m_loaded) return kImagingNotLoaded;
    return CopyComment(m_comments[index], buffer);
}

int LBitmap::Save(const std::string& path) const {
    if (!m_loaded) return kImagingNotLoaded;
    // A file the user may not write is not replaced behind their back,
    // although its folder would allow the swap.
    if (!vliptc::platform::IsRegularFile(path) || vliptc::platform::IsReadOnly(path)) {
        return kImagingCannotWrite;
    }
    const auto file = Bytes(m_file);
    const CommentSet pending = PendingComments();
    std::vector<std::uint8_t> rebuilt;
    std::span<const std::uint8_t> content = file;
    if (HasEmbeddedComment(pending)) {
        // Load accepted the file, so its layout reads again.
        const auto layout = ReadJpegLayout(file);
        const auto payload = BuildExifPayload(layout->ExifPayload(file), pending);
        if (!payload) return kImagingExifTooLarge;
        rebuilt = Rebuilt(file, *layout, *payload);
        content = rebuilt;
    }
    return vliptc::platform::ReplaceFileContent(path, content) == vliptc::platform::ReplaceStatus::Replaced
               ? kImagingSuccess
               : kImagingCannotWrite;
}
