#include "iptc/internal/TiffLayout.h"

#include <algorithm>

#include "host/Limits.h"

namespace vliptc::iptc::tiff {

namespace {

// Reads the directory at offset; nullopt when not even its count lies in the file.
std::optional<Directory> ReadDirectory(std::span<const std::uint8_t> file, bytes::ByteOrder order,
                                       std::uint64_t offset, Directory::Kind kind) {
    const auto count = bytes::Read16(file, offset, order);
    if (!count) {
        return std::nullopt;
    }
    Directory directory;
    directory.kind = kind;
    directory.offset = offset;
    directory.declaredCount = *count;
    const std::uint32_t readable = std::min<std::uint32_t>(*count, limits::kMaxTiffEntriesPerDirectory);
    directory.entries.reserve(readable);
    for (std::uint32_t i = 0; i < readable; ++i) {
        const std::uint64_t position = offset + kCountBytes + kEntryBytes * i;
        const auto tag = bytes::Read16(file, position, order);
        const auto type = bytes::Read16(file, position + 2, order);
        const auto valueCount = bytes::Read32(file, position + 4, order);
        const auto valueField = bytes::Read32(file, position + 8, order);
        if (!tag || !type || !valueCount || !valueField) {
            break;  // a truncated directory: keep the entries that are whole
        }
        directory.entries.push_back({position, *tag, *type, *valueCount, *valueField});
    }
    const auto next = bytes::Read32(file, directory.NextPointerPosition(), order);
    directory.complete = directory.entries.size() == directory.declaredCount && next.has_value();
    directory.next = next.value_or(0);
    return directory;
}

bool Visited(const std::vector<Directory>& directories, std::uint64_t offset) {
    return std::any_of(directories.begin(), directories.end(),
                       [offset](const Directory& d) { return d.offset == offset; });
}

}  // namespace

std::uint32_t TypeSize(std::uint16_t type) noexcept {
    switch (type) {
        case 1:  // BYTE
        case 2:  // ASCII
        case 6:  // SBYTE
        case 7:  // UNDEFINED
            return 1;
        case 3:  // SHORT
        case 8:  // SSHORT
            return 2;
        case 4:   // LONG
        case 9:   // SLONG
        case 11:  // FLOAT
        case 13:  // IFD
            return 4;
        case 5:   // RATIONAL
        case 10:  // SRATIONAL
        case 12:  // DOUBLE
            return 8;
        default:
            return 0;
    }
}

HeaderResult ReadHeader(std::span<const std::uint8_t> file) noexcept {
    HeaderResult result;
    const auto mark = bytes::Read16(file, 0, bytes::ByteOrder::kBigEndian);
    if (!mark) {
        return result;
    }
    if (*mark == kMarkBigEndian) {
        result.header.order = bytes::ByteOrder::kBigEndian;
    } else if (*mark == kMarkLittleEndian) {
        result.header.order = bytes::ByteOrder::kLittleEndian;
    } else {
        result.status = HeaderStatus::kBadMark;
        return result;
    }
    const auto version = bytes::Read16(file, 2, result.header.order);
    const auto first = bytes::Read32(file, 4, result.header.order);
    if (!version || !first) {
        return result;
    }
    result.header.version = *version;
    result.header.firstDirectory = *first;
    result.status = HeaderStatus::kOk;
    return result;
}

Walk WalkDirectories(std::span<const std::uint8_t> file, const Header& header, bool subDirectories) {
    Walk walk;
    auto add = [&](std::uint64_t offset, Directory::Kind kind) -> const Directory* {
        if (offset == 0 || Visited(walk.directories, offset)) {
            return nullptr;
        }
        if (walk.directories.size() >= limits::kMaxTiffDirectories) {
            walk.capped = true;
            return nullptr;
        }
        auto directory = ReadDirectory(file, header.order, offset, kind);
        if (!directory) {
            return nullptr;
        }
        if (directory->declaredCount > limits::kMaxTiffEntriesPerDirectory) {
            walk.capped = true;
        }
        walk.directories.push_back(std::move(*directory));
        return &walk.directories.back();
    };

    std::uint64_t offset = header.firstDirectory;
    while (const Directory* directory = add(offset, Directory::Kind::kChain)) {
        offset = directory->next;
    }
    if (!subDirectories) {
        return walk;
    }
    // Directories reached from the chain: EXIF and GPS, sub-IFDs (of the
    // chain and of other sub-IFDs), and the interoperability directory of an
    // EXIF directory. Each is walked once; the cap bounds the whole walk.
    for (std::size_t i = 0; i < walk.directories.size(); ++i) {
        const Directory::Kind parent = walk.directories[i].kind;
        // Copied: add() may grow the vector under a reference.
        const std::vector<Entry> entries = walk.directories[i].entries;
        for (const Entry& entry : entries) {
            if (entry.type != kTypeLong && entry.type != kTypeIfd) {
                continue;
            }
            const bool fromImage = parent == Directory::Kind::kChain || parent == Directory::Kind::kSubIfd;
            if (entry.tag == kTagSubIfds && fromImage) {
                for (std::uint64_t v = 0; v < entry.count && v < limits::kMaxTiffDirectories; ++v) {
                    if (auto target = bytes::Read32(file, entry.ValuePosition() + 4 * v, header.order)) {
                        add(*target, Directory::Kind::kSubIfd);
                    }
                }
                continue;
            }
            if (entry.count != 1) {
                continue;
            }
            if (parent == Directory::Kind::kChain && entry.tag == kTagExifDirectory) {
                add(entry.valueField, Directory::Kind::kExif);
            } else if (parent == Directory::Kind::kChain && entry.tag == kTagGpsDirectory) {
                add(entry.valueField, Directory::Kind::kGps);
            } else if (parent == Directory::Kind::kExif && entry.tag == kTagInteropDirectory) {
                add(entry.valueField, Directory::Kind::kInterop);
            }
        }
    }
    return walk;
}

}  // namespace vliptc::iptc::tiff
