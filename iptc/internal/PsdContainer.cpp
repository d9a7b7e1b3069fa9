// IPTC in Photoshop documents: the data of the "8BIM" resource 1028 in the
// image-resource section.
//
// Reading walks every record of the section by its sizes: the section has an
// explicit length, so a record under another signature (some programs write
// "PHUT" or "MeSa" records) is stepped over rather than ending the walk. Only
// "8BIM" records (any letter case) are taken for IPTC; every 1028 record is a
// candidate, in file order.
//
// Writing opens the document for reading and writing (a file the process
// may not write gives kCannotOpen) and takes one of two paths:
//
// * In place, when the first IPTC record has room: its real extent in the
//   file (header with whatever name it had, data, pad byte) is longer than
//   the block plus the 18 header bytes of our record. The new record (name
//   "Caption", data size = old extent - 18, the block, zero bytes) is built
//   in memory and copied over the old one through a read-write mapping, so
//   the file keeps its size and every byte outside the record. There is no
//   temporary file and no backup: the copy lands in the user's file. If the
//   process dies during the copy, or the system before the page is written
//   back, the record can hold a mix of old and new bytes. Every byte of the
//   document outside the record is unchanged either way, but when the old
//   record had another name, a mix inside the header (name length against
//   data size) can misplace the end of the record, and with it the walk of
//   the resources behind it: the image data stays where it was.
//
// * Otherwise the document is rebuilt into a temporary file in the same
//   folder and swapped in with a numbered backup (platform::ReplaceFileContent). The new
//   record takes the place of the first IPTC record, or closes the section
//   when there was none; its data size counts the block (padded to even) and
//   256 zero bytes of reserve, so that the next block up to 255 bytes longer
//   goes in place.

#include <cstring>
#include <new>
#include <optional>
#include <span>
#include <vector>

#include "iptc/internal/ContainerFile.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/PsdLayout.h"
#include "iptc/internal/PsdRewrite.h"

namespace vliptc::iptc {

namespace {

// The header and at least one byte more.
constexpr std::size_t kMinWritableBytes = 27;

}  // namespace

LocateResult LocateInPSD(std::span<const std::uint8_t> file) {
    LocateResult result;
    result.bigEndian = true;
    psd::Layout layout;
    if (psd::ReadLayout(file, layout) != psd::Status::kOk) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    for (const psd::Resource& resource : layout.resources) {
        if (resource.imageResource && resource.id == psd::kIptcResourceId && resource.dataSize > 0) {
            result.candidates.push_back({BlockLocation::Kind::kIIM, resource.dataOffset, resource.dataSize});
        }
    }
    result.error = result.candidates.empty() ? CIPTC::kNoIPTCBlock : CIPTC::kSuccess;
    return result;
}

CIPTC::EError WritePSD(const std::string& path, std::span<const std::uint8_t> block) {
    if (block.size() > kMaxBlockBytes) {
        return CIPTC::kBlockTooLarge;
    }
    std::optional<std::vector<std::uint8_t>> rebuilt;
    const auto build = [&](platform::MappedFile& mapped) -> Built {
        if (mapped.Size() < kMinWritableBytes) {
            return CIPTC::kUnsupportedFormat;
        }
        psd::Layout layout;
        if (psd::ReadLayout(mapped.Bytes(), layout) != psd::Status::kOk || layout.version != psd::kVersion ||
            !layout.complete) {
            return CIPTC::kUnsupportedFormat;
        }
        try {
            if (const psd::Resource* old = psd::FindIptcRecord(layout)) {
                if (const auto record = psd::InPlaceRecord(*old, block)) {
                    std::memcpy(mapped.MutableData() + old->offset, record->data(), record->size());
                    return CIPTC::kSuccess;
                }
            }
            rebuilt = psd::RebuildDocument(mapped.Bytes(), layout, block);
        } catch (const std::bad_alloc&) {
            return CIPTC::kCannotMapOrWrite;
        }
        if (!rebuilt) {
            return CIPTC::kUnsupportedFormat;
        }
        return std::span<const std::uint8_t>(*rebuilt);
    };
    return RebuildFile(path, platform::MappedFile::Access::ReadWrite, build);
}

}  // namespace vliptc::iptc
