#include "iptc/internal/PsdRewrite.h"

#include <algorithm>
#include <limits>

#include "host/ByteOrder.h"

namespace vliptc::iptc::psd {

namespace {

using bytes::ByteOrder;

constexpr std::uint8_t kImageResourceSignature[] = {'8', 'B', 'I', 'M'};

void Append(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void Append16(std::vector<std::uint8_t>& out, std::uint16_t value) {
    Append(out, bytes::Encode16(value, ByteOrder::kBigEndian));
}

void Append32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    Append(out, bytes::Encode32(value, ByteOrder::kBigEndian));
}

// "8BIM", 1028, "Caption", dataSize, the block and zero bytes up to dataSize
// (plus the pad byte when dataSize is odd).
std::vector<std::uint8_t> IptcRecord(std::span<const std::uint8_t> block, std::uint32_t dataSize) {
    std::vector<std::uint8_t> record;
    record.reserve(kRecordHeaderBytes + dataSize + 1);
    Append(record, kImageResourceSignature);
    Append16(record, kIptcResourceId);
    Append(record, kRecordName);
    Append32(record, dataSize);
    Append(record, block);
    record.resize(kRecordHeaderBytes + dataSize + (dataSize % 2), 0);
    return record;
}

}  // namespace

const Resource* FindIptcRecord(const Layout& layout) {
    const auto found = std::find_if(layout.resources.begin(), layout.resources.end(), [](const Resource& r) {
        return r.imageResource && r.id == kIptcResourceId;
    });
    return found == layout.resources.end() ? nullptr : &*found;
}

std::optional<std::vector<std::uint8_t>> InPlaceRecord(const Resource& old,
                                                       std::span<const std::uint8_t> block) {
    if (old.extent <= block.size() + kRecordHeaderBytes || old.extent % 2 != 0) {
        return std::nullopt;
    }
    // The data size keeps the record at its old extent; even, so no pad byte.
    const std::uint64_t dataSize = old.extent - kRecordHeaderBytes;
    if (dataSize > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return IptcRecord(block, static_cast<std::uint32_t>(dataSize));
}

std::optional<std::vector<std::uint8_t>> RebuildDocument(std::span<const std::uint8_t> file,
                                                         const Layout& layout,
                                                         std::span<const std::uint8_t> block) {
    if (!layout.complete) {
        return std::nullopt;  // records that do not fill the section cannot be carried over
    }
    // The block padded to even size, then the reserve.
    const std::uint64_t dataSize = block.size() + (block.size() % 2) + kRebuildReserveBytes;
    const std::vector<std::uint8_t> record = IptcRecord(block, static_cast<std::uint32_t>(dataSize));

    std::vector<std::uint8_t> section;
    bool placed = false;
    for (const Resource& resource : layout.resources) {
        if (resource.imageResource && resource.id == kIptcResourceId) {
            if (!placed) {
                Append(section, record);
                placed = true;
            }
            continue;
        }
        Append(section, file.subspan(static_cast<std::size_t>(resource.offset),
                                     static_cast<std::size_t>(resource.extent)));
    }
    if (!placed) {
        Append(section, record);
    }
    if (section.size() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }

    std::vector<std::uint8_t> document;
    const auto before = file.first(static_cast<std::size_t>(layout.sectionLengthOffset));
    const auto after = file.subspan(static_cast<std::size_t>(layout.sectionEnd));
    document.reserve(before.size() + 4 + section.size() + after.size());
    Append(document, before);
    Append32(document, static_cast<std::uint32_t>(section.size()));
    Append(document, section);
    Append(document, after);
    return document;
}

}  // namespace vliptc::iptc::psd
