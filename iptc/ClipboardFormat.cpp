// The binary and text clipboard forms of an IPTC record (see ClipboardFormat.h).

#include "iptc/ClipboardFormat.h"

#include <limits>

#include "host/Limits.h"
#include "host/VLException.h"
#include "host/VLFile.h"

namespace vliptc::clipboard {

namespace {

constexpr std::uint32_t kRecordVersionDataset = 0;

// The fewest bytes one element can take: a count whose elements cannot fit in
// the bytes left is refused before anything is allocated or looped over.
constexpr std::uint64_t kMinFieldBytes = 4 + 4;  // dataset number, value count
constexpr std::uint64_t kMinValueBytes = 1 + 4;  // kind byte, payload length

std::uint64_t BytesLeft(const CVLMemFile& file) {
    const std::int64_t left = file.GetFileSize() - file.GetPosition();
    return left > 0 ? static_cast<std::uint64_t>(left) : 0;
}

void RequireRoomFor(const CVLMemFile& file, std::uint32_t count, std::uint64_t minBytesEach) {
    // A 32-bit count times a small constant cannot overflow 64 bits.
    if (static_cast<std::uint64_t>(count) * minBytesEach > BytesLeft(file)) {
        throw CVLException("clipboard record: count exceeds the data");
    }
}

std::uint32_t Count(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max())
        throw CVLException("clipboard record: too many entries");
    return static_cast<std::uint32_t>(size);
}

}  // namespace

std::vector<std::uint8_t> EncodeBinary(const CIPTC::FieldList& fields) {
    CVLMemFile file(false, 65536, 4096);
    file.WriteUInt16(kFormatVersion);
    file.WriteUInt32(Count(fields.size()));
    for (const CIPTC::SIPTCItem& item : fields) {
        file.WriteUInt32(item.nID);
        file.WriteUInt32(Count(item.vValues.size()));
        for (const CVLProperty& value : item.vValues) file << value;
    }
    if (file.GetFileSize() > vliptc::limits::kMaxClipboardBytes) {
        throw CVLException("clipboard record: larger than the clipboard form allows");
    }
    const auto* begin = file.GetBuffer();
    return {begin, begin + file.GetFileSize()};
}

DecodeResult DecodeBinary(std::span<const std::uint8_t> data, CIPTC::FieldList& fields) {
    DecodeResult result;
    if (data.size() < 2) return result;
    result.version = static_cast<std::uint16_t>(data[0] | (data[1] << 8));
    if (result.version != kFormatVersion) {
        result.status = DecodeStatus::kOtherVersion;
        return result;
    }
    if (data.size() > vliptc::limits::kMaxClipboardBytes) return result;

    try {
        CVLMemFile file(false, 0, 4096);
        file.Assign(data.data(), data.size());
        static_cast<void>(file.ReadUInt16());  // the version, checked above
        const std::uint32_t fieldCount = file.ReadUInt32();
        RequireRoomFor(file, fieldCount, kMinFieldBytes);
        CIPTC::FieldList read;
        read.reserve(fieldCount);
        for (std::uint32_t f = 0; f < fieldCount; ++f) {
            CIPTC::SIPTCItem item;
            item.nID = file.ReadUInt32();
            const std::uint32_t valueCount = file.ReadUInt32();
            RequireRoomFor(file, valueCount, kMinValueBytes);
            // Grown value by value: each one has to be there before it costs memory.
            for (std::uint32_t v = 0; v < valueCount; ++v) {
                CVLProperty value;
                file >> value;
                item.vValues.push_back(std::move(value));
            }
            read.push_back(std::move(item));
        }
        result.consumed = static_cast<std::size_t>(file.GetPosition());
        result.status = DecodeStatus::kOk;
        fields = std::move(read);
    } catch (const CVLException&) {
        result.status = DecodeStatus::kMalformed;
    }
    return result;
}

std::string DisplayName(const CIPTC& store, std::uint32_t id) {
    CVLIPTCINI::STagInfo tag;
    if (store.GetDescriptor(id, tag)) return tag.strName;
    if (id == kRecordVersionDataset) return "Record Version";
    return "Dataset " + std::to_string(id);
}

std::string EncodeText(const CIPTC& store) {
    std::string text;
    for (const CIPTC::SIPTCItem& item : store.Fields()) {
        text += DisplayName(store, item.nID);
        text += '\t';
        for (std::size_t i = 0; i < item.vValues.size(); ++i) {
            if (i != 0) text += '\t';
            text += item.vValues[i].String();
        }
        text += "\r\n";
    }
    return text;
}

}  // namespace vliptc::clipboard
