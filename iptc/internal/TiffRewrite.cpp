// The TIFF file with a new IPTC-NAA block, described as ranges of the old
// file, new bytes and patches: the old file is never copied in memory.
//
// Two cases:
//
// * The chain of directories has an IPTC-NAA entry (the first one counts).
//   Its old value area (count times the type's size, when that lies outside
//   the entry) is cleared with zero bytes, the block goes to the end of the
//   file at an even offset, and the 12-byte entry is rewritten in place. No
//   other byte of the file moves.
//
// * No directory has one. The first directory gains an entry, inserted before
//   the first entry whose tag is greater than 33723, or, when no tag is
//   greater, before the directory's last entry (that entry then stands out of
//   tag order: this placement is required, and kept). Everything from the
//   insertion point on moves 12 bytes towards the end, so every offset that
//   points there moves by 12 too:
//     - the value offset of each entry whose value does not fit in 4 bytes,
//     - each value of the offset-carrying tags: strip offsets (273), free
//       offsets (288), tile offsets (324), and the EXIF (34665) and GPS
//       (34853) directory pointers; and, so that no picture of the file
//       loses its data, sub-IFD offsets (330), the JPEG thumbnail offset
//       (513) and the interoperability directory pointer (40965),
//     - the next-directory offsets,
//   in every directory of the chain and in the directories they lead to
//   (EXIF, GPS, sub-IFDs, interoperability). Offsets inside maker notes are
//   private to each camera maker and stay as they are. The block goes to the end of
//   the file: the old size plus the 12 new bytes, plus one when that is odd.
//
// The reserve behind the block is written as zero bytes so that the count of
// the entry never reaches past the end of the file.
//
// Before the new file is swapped in, it is walked again and must show the
// same directories and entries as the old one, with the IPTC entry pointing
// at the block (ShowsBlockAndOldDirectories).

#include "iptc/internal/TiffRewrite.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>

#include "host/ByteOrder.h"
#include "iptc/internal/TiffLayout.h"

namespace vliptc::iptc::tiff {

namespace {

using bytes::ByteOrder;

// Offsets and counts in classic TIFF are 32-bit: the new file may not grow past them.
constexpr std::uint64_t kMaxFileBytes = std::numeric_limits<std::uint32_t>::max();
// The entry count of a directory is 16-bit.
constexpr std::uint16_t kMaxEntries = std::numeric_limits<std::uint16_t>::max();

// A number at position (2 or 4 bytes wide) that is an offset to move.
struct OffsetPatch {
    std::uint64_t position = 0;
    std::uint8_t width = 4;
    auto operator<=>(const OffsetPatch&) const = default;
};

Rewrite Refuse() {
    Rewrite rewrite;
    rewrite.error = CIPTC::kUnsupportedFormat;
    return rewrite;
}

bool Overlap(std::uint64_t startA, std::uint64_t endA, std::uint64_t startB, std::uint64_t endB) {
    return startA < endB && startB < endA;
}

bool IsOffsetTag(std::uint16_t tag) {
    return tag == kTagStripOffsets || tag == kTagFreeOffsets || tag == kTagTileOffsets ||
           tag == kTagSubIfds || tag == kTagThumbnailOffset || tag == kTagExifDirectory ||
           tag == kTagGpsDirectory || tag == kTagInteropDirectory;
}

const Entry* FirstIptcEntry(const Walk& walk) {
    for (const Directory& directory : walk.directories) {
        if (directory.kind != Directory::Kind::kChain) {
            continue;
        }
        for (const Entry& entry : directory.entries) {
            if (entry.tag == kTagIptcNaa) {
                return &entry;
            }
        }
    }
    return nullptr;
}

std::array<std::uint8_t, kEntryBytes> IptcEntryBytes(ByteOrder order, std::size_t blockSize,
                                                     std::uint64_t blockOffset) {
    std::array<std::uint8_t, kEntryBytes> entry{};
    const std::span<std::uint8_t> out(entry);
    bytes::Write16(out, 0, kTagIptcNaa, order);
    bytes::Write16(out, 2, kTypeByte, order);
    bytes::Write32(out, 4, static_cast<std::uint32_t>(blockSize + kIptcReserveBytes), order);
    bytes::Write32(out, 8, static_cast<std::uint32_t>(blockOffset), order);
    return entry;
}

// Whether the new file, ending in the block at blockOffset and the reserve,
// stays within 32-bit offsets.
bool FitsOffsets(std::uint64_t blockOffset, std::size_t blockSize) {
    return blockOffset + blockSize + kIptcReserveBytes <= kMaxFileBytes;
}

void AppendBlock(DescribedFile& out, std::uint64_t blockOffset, std::span<const std::uint8_t> block) {
    out.AppendZeros(blockOffset - out.Size());  // the pad byte to an even offset
    out.AppendBytes(block);
    out.AppendZeros(kIptcReserveBytes);
}

// Clears the old value and rewrites the entry where it stands.
Rewrite RewriteEntry(std::span<const std::uint8_t> file, const Header& header, const Walk& walk,
                     const Entry& entry, std::span<const std::uint8_t> block) {
    if (!entry.IsInline()) {
        // The area to clear must be the entry's own: inside the file, clear of
        // the header and of every directory. Anything else is a broken entry
        // whose "value" could be image data.
        const std::uint64_t start = entry.valueField;
        const std::uint64_t length = entry.ValueBytes();
        if (!bytes::InBounds(file.size(), start, length) || Overlap(start, start + length, 0, kHeaderBytes)) {
            return Refuse();
        }
        for (const Directory& directory : walk.directories) {
            if (Overlap(start, start + length, directory.offset, directory.End())) {
                return Refuse();
            }
        }
    }
    const std::uint64_t blockOffset = file.size() + (file.size() % 2);
    if (!FitsOffsets(blockOffset, block.size())) {
        return Refuse();
    }

    Rewrite rewrite;
    if (entry.IsInline()) {
        rewrite.file.AppendOriginal(0, file.size());
    } else {
        rewrite.file.AppendOriginal(0, entry.valueField);
        rewrite.file.AppendZeros(entry.ValueBytes());
        rewrite.file.AppendOriginal(entry.valueField + entry.ValueBytes(), file.size());
    }
    AppendBlock(rewrite.file, blockOffset, block);
    rewrite.file.Patch(entry.position, IptcEntryBytes(header.order, block.size(), blockOffset));
    rewrite.blockOffset = blockOffset;
    return rewrite;
}

// Collects every offset at or behind insertionPoint. False when the file
// holds an offset that cannot move (a 16-bit offset that would overflow) or
// its values are laid over each other so that moving one would change another.
bool CollectPatches(std::span<const std::uint8_t> file, ByteOrder order, const Walk& walk,
                    std::uint64_t insertionPoint, std::vector<OffsetPatch>& patches) {
    auto moves = [&](std::uint64_t position, std::uint8_t width) -> std::optional<bool> {
        const std::optional<std::uint32_t> value =
            width == 2 ? std::optional<std::uint32_t>(bytes::Read16(file, position, order))
                       : bytes::Read32(file, position, order);
        if (!value) {
            return false;  // not in the file: nothing there to move
        }
        if (*value < insertionPoint) {
            return false;
        }
        if (width == 2 && *value + kEntryBytes > std::numeric_limits<std::uint16_t>::max()) {
            return std::nullopt;
        }
        return true;
    };
    auto add = [&](std::uint64_t position, std::uint8_t width) {
        const auto result = moves(position, width);
        if (!result) {
            return false;
        }
        if (*result) {
            patches.push_back({position, width});
        }
        return true;
    };

    for (const Directory& directory : walk.directories) {
        for (const Entry& entry : directory.entries) {
            if (!entry.IsInline() && !add(entry.position + 8, 4)) {
                return false;
            }
            if (!IsOffsetTag(entry.tag)) {
                continue;
            }
            const std::uint8_t width = entry.type == kTypeShort                            ? 2
                                       : entry.type == kTypeLong || entry.type == kTypeIfd ? 4
                                                                                           : 0;
            if (width == 0 || !bytes::InBounds(file.size(), entry.ValuePosition(), entry.ValueBytes())) {
                continue;  // not offsets we can read, or not in the file
            }
            for (std::uint64_t i = 0; i < entry.count; ++i) {
                if (!add(entry.ValuePosition() + i * width, width)) {
                    return false;
                }
            }
        }
        if (directory.next != 0 && !add(directory.NextPointerPosition(), 4)) {
            return false;
        }
    }

    std::sort(patches.begin(), patches.end());
    patches.erase(std::unique(patches.begin(), patches.end()), patches.end());
    for (std::size_t i = 0; i + 1 < patches.size(); ++i) {
        if (patches[i].position + patches[i].width > patches[i + 1].position) {
            return false;
        }
    }
    // No number may lie in the header or straddle the insertion point (it
    // would be cut in two).
    return std::none_of(patches.begin(), patches.end(), [&](const OffsetPatch& p) {
        return p.position < kHeaderBytes ||
               (p.position < insertionPoint && insertionPoint < p.position + p.width);
    });
}

Rewrite InsertEntry(std::span<const std::uint8_t> file, const Header& header, const Walk& walk,
                    std::span<const std::uint8_t> block) {
    if (walk.capped || walk.directories.empty()) {
        return Refuse();
    }
    const Directory& first = walk.directories.front();
    if (!first.complete || first.declaredCount == kMaxEntries) {
        return Refuse();
    }
    std::size_t index = 0;
    const auto greater = std::find_if(first.entries.begin(), first.entries.end(),
                                      [](const Entry& e) { return e.tag > kTagIptcNaa; });
    if (greater != first.entries.end()) {
        index = static_cast<std::size_t>(greater - first.entries.begin());
    } else if (!first.entries.empty()) {
        index = first.entries.size() - 1;  // before the last entry, as required
    }
    const std::uint64_t insertionPoint = first.offset + kCountBytes + kEntryBytes * index;

    std::vector<OffsetPatch> patches;
    if (!CollectPatches(file, header.order, walk, insertionPoint, patches)) {
        return Refuse();
    }
    // The count of the first directory changes too; no offset may sit on it.
    for (const OffsetPatch& patch : patches) {
        if (Overlap(patch.position, patch.position + patch.width, first.offset, first.offset + kCountBytes)) {
            return Refuse();
        }
    }

    const std::uint64_t grown = file.size() + kEntryBytes;
    const std::uint64_t blockOffset = grown + (grown % 2);
    if (!FitsOffsets(blockOffset, block.size())) {
        return Refuse();
    }

    // The new entry is a run of zeros at the insertion point with the entry
    // laid over it. Patches are placed in the new file, where everything from
    // the insertion point on stands 12 bytes later.
    Rewrite rewrite;
    rewrite.file.AppendOriginal(0, insertionPoint);
    rewrite.file.AppendZeros(kEntryBytes);
    rewrite.file.AppendOriginal(insertionPoint, file.size());
    AppendBlock(rewrite.file, blockOffset, block);
    rewrite.file.Patch(insertionPoint, IptcEntryBytes(header.order, block.size(), blockOffset));
    rewrite.file.Patch(first.offset,
                       bytes::Encode16(static_cast<std::uint16_t>(first.declaredCount + 1), header.order));
    for (const OffsetPatch& patch : patches) {
        const std::uint64_t moved =
            patch.position < insertionPoint ? patch.position : patch.position + kEntryBytes;
        if (patch.width == 2) {
            const auto value = bytes::Read16(file, patch.position, header.order).value_or(0);
            rewrite.file.Patch(
                moved, bytes::Encode16(static_cast<std::uint16_t>(value + kEntryBytes), header.order));
        } else {
            const auto value = bytes::Read32(file, patch.position, header.order).value_or(0);
            rewrite.file.Patch(
                moved, bytes::Encode32(static_cast<std::uint32_t>(value + kEntryBytes), header.order));
        }
    }
    rewrite.blockOffset = blockOffset;
    return rewrite;
}

bool SameEntry(const Entry& a, const Entry& b) {
    return a.tag == b.tag && a.type == b.type && a.count == b.count;
}

}  // namespace

Rewrite DescribeTiffWithBlock(std::span<const std::uint8_t> file, std::span<const std::uint8_t> block) {
    // The 8-byte header and at least a byte of directory.
    if (file.size() <= kHeaderBytes) {
        return Refuse();
    }
    const HeaderResult header = ReadHeader(file);
    if (header.status != HeaderStatus::kOk || header.header.version != kClassicVersion) {
        return Refuse();
    }
    Walk walk = WalkDirectories(file, header.header, true);
    // A directory laid over the header would change the header with it.
    if (walk.directories.empty() || std::any_of(walk.directories.begin(), walk.directories.end(),
                                                [](const Directory& d) { return d.offset < kHeaderBytes; })) {
        return Refuse();
    }
    const Entry* existing = FirstIptcEntry(walk);
    Rewrite rewrite = existing != nullptr ? RewriteEntry(file, header.header, walk, *existing, block)
                                          : InsertEntry(file, header.header, walk, block);
    rewrite.before = std::move(walk);
    return rewrite;
}

bool ShowsBlockAndOldDirectories(const Rewrite& rewrite, std::span<const std::uint8_t> written,
                                 std::span<const std::uint8_t> block) {
    const HeaderResult header = ReadHeader(written);
    if (header.status != HeaderStatus::kOk || header.header.version != kClassicVersion) {
        return false;
    }
    const Walk& before = rewrite.before;
    const Walk after = WalkDirectories(written, header.header, true);
    if (after.directories.size() != before.directories.size()) {
        return false;
    }
    for (std::size_t d = 0; d < after.directories.size(); ++d) {
        const Directory& old = before.directories[d];
        const Directory& now = after.directories[d];
        std::vector<Entry> expected;
        for (const Entry& entry : old.entries) {
            if (entry.tag != kTagIptcNaa) {
                expected.push_back(entry);
            }
        }
        std::vector<Entry> found;
        for (const Entry& entry : now.entries) {
            if (entry.tag != kTagIptcNaa) {
                found.push_back(entry);
            }
        }
        if (now.kind != old.kind ||
            !std::equal(expected.begin(), expected.end(), found.begin(), found.end(), SameEntry)) {
            return false;
        }
    }
    const Entry* iptc = FirstIptcEntry(after);
    if (iptc == nullptr || iptc->type != kTypeByte || iptc->count != block.size() + kIptcReserveBytes ||
        iptc->valueField != rewrite.blockOffset) {
        return false;
    }
    const auto stored = bytes::Slice(written, rewrite.blockOffset, block.size());
    return stored && std::equal(block.begin(), block.end(), stored->begin());
}

}  // namespace vliptc::iptc::tiff
