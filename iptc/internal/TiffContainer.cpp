// IPTC in TIFF files: the value of the IPTC-NAA entry (tag 33723) of a
// directory on the chain of image file directories.
//
// The TIFF byte order governs the directories only. The IIM data in the
// entry's value keep their own order, most-significant byte first, whatever
// the file's mark says: the "II" files we have met all store them so, and so
// does our writer, which always builds big-endian blocks. The decoder reads a
// TIFF candidate with the swap flag set (its version dataset 0x0200 still
// switches to least-significant first); bigEndian in the result reports the
// file's mark for the format information.

#include <algorithm>
#include <new>
#include <utility>

#include "iptc/internal/ContainerFile.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/TiffLayout.h"
#include "iptc/internal/TiffRewrite.h"
#include "platform/FileSystem.h"

namespace vliptc::iptc {

LocateResult LocateInTIFF(std::span<const std::uint8_t> file) {
    LocateResult result;
    const tiff::HeaderResult header = tiff::ReadHeader(file);
    if (header.status != tiff::HeaderStatus::kOk) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    result.bigEndian = header.header.order == bytes::ByteOrder::kBigEndian;
    // BigTIFF lays its directories out with 64-bit counts and offsets; other
    // versions (raw formats on the TIFF layout) are walked as classic TIFF.
    if (header.header.version == tiff::kBigTiffVersion) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    const tiff::Walk walk = tiff::WalkDirectories(file, header.header, false);
    if (walk.directories.empty()) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    for (const tiff::Directory& directory : walk.directories) {
        for (const tiff::Entry& entry : directory.entries) {
            if (entry.tag != tiff::kTagIptcNaa || entry.ValueBytes() == 0 ||
                entry.ValuePosition() >= file.size()) {
                continue;
            }
            // A count that runs past the end of the file still gives the
            // datasets that are there.
            const std::uint64_t size =
                std::min<std::uint64_t>(entry.ValueBytes(), file.size() - entry.ValuePosition());
            result.candidates.push_back({BlockLocation::Kind::kIIM, entry.ValuePosition(), size});
        }
    }
    result.error = result.candidates.empty() ? CIPTC::kNoIPTCBlock : CIPTC::kSuccess;
    return result;
}

CIPTC::EError WriteTIFF(const std::string& path, std::span<const std::uint8_t> block) {
    if (block.size() > kMaxBlockBytes) {
        return CIPTC::kBlockTooLarge;
    }
    tiff::Rewrite rewrite;
    const auto describe = [&](const platform::MappedFile& mapped) -> Described {
        // A file the user may not write is not replaced behind their back,
        // although its folder would allow the swap.
        if (platform::IsReadOnly(path)) {
            return CIPTC::kCannotMapOrWrite;
        }
        try {
            rewrite = tiff::DescribeTiffWithBlock(mapped.Bytes(), block);
        } catch (const std::bad_alloc&) {
            return CIPTC::kCannotMapOrWrite;
        }
        if (rewrite.error != CIPTC::kSuccess) {
            return rewrite.error;
        }
        return std::move(rewrite.file);
    };
    // The new directories are checked on the file as written, mapped
    // read-only: the walk touches the pages of the directories and of the
    // block, not the image data. It also checks the writing itself.
    const auto check = [&](const std::string& tempPath) {
        platform::MappedFile written;
        if (MapFile(tempPath, platform::MappedFile::Access::ReadOnly, written) != CIPTC::kSuccess) {
            return CIPTC::kCannotMapOrWrite;
        }
        return tiff::ShowsBlockAndOldDirectories(rewrite, written.Bytes(), block) ? CIPTC::kSuccess
                                                                                  : CIPTC::kUnsupportedFormat;
    };
    return ReplaceWithDescribedFile(path, describe, check);
}

}  // namespace vliptc::iptc
