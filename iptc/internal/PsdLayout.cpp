#include "iptc/internal/PsdLayout.h"

#include <algorithm>
#include <cctype>

#include "host/ByteOrder.h"
#include "host/Limits.h"

namespace vliptc::iptc::psd {

namespace {

using bytes::ByteOrder;

constexpr std::uint64_t kVersionOffset = 4;
constexpr std::uint64_t kLengthBytes = 4;

bool IsImageResourceSignature(std::span<const std::uint8_t> signature) {
    static constexpr char kExpected[] = "8BIM";
    for (std::size_t i = 0; i < 4; ++i) {
        if (std::toupper(signature[i]) != kExpected[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

Status ReadLayout(std::span<const std::uint8_t> file, Layout& layout) {
    layout = Layout{};
    const auto signature = bytes::Slice(file, 0, 4);
    const auto version = bytes::Read16(file, kVersionOffset, ByteOrder::kBigEndian);
    if (!signature || !version) {
        return Status::kTruncated;
    }
    if (!std::equal(signature->begin(), signature->end(), "8BPS") ||
        (*version != kVersion && *version != kLargeDocumentVersion)) {
        return Status::kNotDocument;
    }
    layout.version = *version;

    const auto colourModeLength = bytes::Read32(file, kHeaderBytes, ByteOrder::kBigEndian);
    if (!colourModeLength) {
        return Status::kTruncated;
    }
    layout.sectionLengthOffset = kHeaderBytes + kLengthBytes + *colourModeLength;
    const auto sectionLength = bytes::Read32(file, layout.sectionLengthOffset, ByteOrder::kBigEndian);
    if (!sectionLength) {
        return Status::kTruncated;
    }
    layout.sectionStart = layout.sectionLengthOffset + kLengthBytes;
    layout.sectionEnd = layout.sectionStart + *sectionLength;

    // Records are read inside the section and inside the file.
    const std::uint64_t end = std::min<std::uint64_t>(layout.sectionEnd, file.size());
    const auto section = file.first(static_cast<std::size_t>(end));
    std::uint64_t position = layout.sectionStart;
    while (position < end && layout.resources.size() < limits::kMaxImageResources) {
        Resource resource;
        resource.offset = position;
        const auto recordSignature = bytes::Slice(section, position, 4);
        const auto id = bytes::Read16(section, position + 4, ByteOrder::kBigEndian);
        const auto nameLength = bytes::Read8(section, position + 6);
        if (!recordSignature || !id || !nameLength) {
            break;
        }
        // The length byte and the name together take an even number of bytes.
        const std::uint64_t nameField = (std::uint64_t{*nameLength} + 2) & ~std::uint64_t{1};
        const auto dataSize = bytes::Read32(section, position + 6 + nameField, ByteOrder::kBigEndian);
        if (!dataSize) {
            break;
        }
        resource.id = *id;
        resource.imageResource = IsImageResourceSignature(*recordSignature);
        resource.dataOffset = position + kRecordFixedBytes + nameField;
        resource.dataSize = *dataSize;
        resource.extent = kRecordFixedBytes + nameField + *dataSize + (*dataSize % 2);
        if (!bytes::InBounds(end, position, resource.extent)) {
            break;
        }
        layout.resources.push_back(resource);
        position += resource.extent;
    }
    layout.complete = position == layout.sectionEnd && layout.sectionEnd <= file.size();
    return Status::kOk;
}

}  // namespace vliptc::iptc::psd
