// IPTC in the trailer form: chunks stacked at the end of a file (behind the
// image data of a JPEG, for instance), each closed by a 10-byte trailer:
//
//     16-bit chunk kind | 32-bit chunk length | 32-bit magic 0xA1B2C3D4
//
// The chunk length counts the chunk's data and its trailer, so a reader steps
// from the end of the file back over one chunk after the other. Kind 1 holds
// the IPTC data: bare IIM datasets (what real files hold and what this writer
// writes) or an image-resource section; the reader accepts both. Numbers are
// most-significant byte first.
//
// The writer appends a chunk of its own layout when the file has no trailer:
//
//     header (kind 1, length = block + 522, magic) | block | 512 zero bytes | magic
//
// Its last 10 bytes are six reserve zero bytes and the magic, which read as a
// trailer of kind 0 and length 0: no real chunk can be that short (its
// trailer alone has 10 bytes), so that is how the reader tells this layout
// apart. It then looks back for the header whose length points exactly at the
// closing magic (header offset + length + 4 = chunk end) and takes the data
// behind it. The reader and the writer walk the chunks through FindIptcChunk
// below, so they always agree. They differ only in what a broken stack
// means: for the reader a trailer without the magic further back (or a
// length reaching before the start of the file) ends the stack, so the file
// has no IPTC chunk (3); the writer refuses to touch such a file (11). When the writer rewrites such a
// chunk in place, the six zero bytes before the closing magic are never
// written to: the chunk keeps its marks.
//
// The trailer writer works in place, without a temporary file or backup.
// What an interrupted or failed write can leave:
//   - the only step of the file system it takes apart from opening and
//     mapping is growing the file (when the new block does not fit the old
//     chunk, or a chunk is appended). When growing fails the file is as it was;
//     when the mapping fails after growing, the file is cut back to its old
//     size (should that fail too, zero bytes stay appended, and the trailer is
//     no longer at the end of the file: the data are all still there).
//   - everything after that is stores into the mapped file: the chunks behind
//     the IPTC chunk move towards the end, the chunk is cleared and the block
//     and the trailer are written. Growing reserves the disk blocks first, so
//     these stores cannot fail for want of space; a crash or power loss in
//     the middle of them can leave the chunks behind half moved, or the chunk
//     cleared without its new block. Everything before the IPTC chunk (the
//     image itself) is never touched.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include "host/ByteOrder.h"
#include "iptc/internal/ContainerFile.h"
#include "iptc/internal/Containers.h"
#include "platform/MappedFile.h"
#include "platform/OutputFile.h"

namespace vliptc::iptc {

namespace {

using bytes::ByteOrder;

constexpr std::uint32_t kTrailerMagic = 0xA1B2C3D4;
constexpr std::uint64_t kTrailerBytes = 10;  // kind, length, magic
constexpr std::uint64_t kMagicBytes = 4;
constexpr std::uint16_t kIptcChunkKind = 1;
constexpr std::uint8_t kTagMarker = 0x1C;  // first byte of a bare IIM block

// The writer's chunks: the block, then this many zero bytes of reserve, and
// lengths of block + 522 (reserve and the 10 bytes of a trailer or header).
constexpr std::uint64_t kReserveBytes = 512;
constexpr std::uint64_t kChunkOverhead = kReserveBytes + kTrailerBytes;  // 522
// In an appended chunk the six zero bytes in front of the closing magic (the
// end of the reserve) read as a trailer of kind 0 and length 0, which marks
// the layout.

// The longest appended chunk the reader looks back for: the largest block the
// store writes, the reserve, the header and the closing magic.
constexpr std::uint64_t kMaxAppendedChunkBytes = kMaxBlockBytes + kChunkOverhead + kMagicBytes;
constexpr std::uint64_t kMinAppendedChunkBytes = kChunkOverhead + kMagicBytes;

// Where a chunk of kind 1 sits.
struct Chunk {
    bool appended = false;       // the writer's appended layout
    std::uint64_t start = 0;     // first byte of the chunk (data, or the header)
    std::uint64_t end = 0;       // one past its trailer (or closing magic)
    std::uint64_t dataStart = 0;
    std::uint64_t capacity = 0;  // bytes a block may fill in place
    std::uint32_t length = 0;    // the chunk length as recorded
};

enum class WalkFailure {
    kNone,
    kNoChunk,   // walked back to the start without meeting kind 1
    kBadMagic,  // a trailer without the magic number
    kTooLong,   // a chunk length that reaches before the start of the file
    kNoHeader,  // a zero trailer with no appended-chunk header in front of it
};

struct ChunkSearch {
    WalkFailure failure = WalkFailure::kNone;
    Chunk chunk;
};

bool HasMagicAt(std::span<const std::uint8_t> file, std::uint64_t offset) {
    return bytes::Read32(file, offset, ByteOrder::kBigEndian) == kTrailerMagic;
}

// The header of an appended chunk that ends at end: kind 1, a length that
// points exactly at the closing magic, the magic.
std::optional<std::uint64_t> FindAppendedHeader(std::span<const std::uint8_t> file, std::uint64_t end) {
    if (end < kMinAppendedChunkBytes) return std::nullopt;
    const std::uint64_t lowest = end > kMaxAppendedChunkBytes ? end - kMaxAppendedChunkBytes : 0;
    for (std::uint64_t header = end - kMinAppendedChunkBytes + 1; header-- > lowest;) {
        if (bytes::Read16(file, header, ByteOrder::kBigEndian) != kIptcChunkKind) continue;
        const auto length = bytes::Read32(file, header + 2, ByteOrder::kBigEndian);
        if (length && header + *length + kMagicBytes == end && HasMagicAt(file, header + 6)) return header;
    }
    return std::nullopt;
}

// Walks the chunks back from the end of the file to the first of kind 1.
// The caller has checked that the file ends in the magic number.
ChunkSearch FindIptcChunk(std::span<const std::uint8_t> file) {
    ChunkSearch search;
    std::uint64_t end = file.size();
    while (true) {
        if (end < kTrailerBytes) {
            search.failure = WalkFailure::kNoChunk;
            return search;
        }
        const std::uint64_t trailer = end - kTrailerBytes;
        if (!HasMagicAt(file, trailer + 6)) {
            search.failure = WalkFailure::kBadMagic;
            return search;
        }
        const std::uint16_t kind = *bytes::Read16(file, trailer, ByteOrder::kBigEndian);
        const std::uint32_t length = *bytes::Read32(file, trailer + 2, ByteOrder::kBigEndian);
        Chunk chunk;
        chunk.end = end;
        if (length < kTrailerBytes) {
            // Too short to be a real chunk: the closing bytes of an appended one.
            const auto header = FindAppendedHeader(file, end);
            if (!header) {
                search.failure = WalkFailure::kNoHeader;
                return search;
            }
            chunk.appended = true;
            chunk.start = *header;
            chunk.dataStart = *header + kTrailerBytes;
            chunk.length = *bytes::Read32(file, *header + 2, ByteOrder::kBigEndian);
            chunk.capacity = end - kTrailerBytes - chunk.dataStart;
            search.chunk = chunk;
            return search;  // only the writer appends, and always kind 1
        }
        if (length > end) {
            search.failure = WalkFailure::kTooLong;
            return search;
        }
        chunk.start = end - length;
        chunk.dataStart = chunk.start;
        chunk.length = length;
        chunk.capacity = length - kTrailerBytes;
        if (kind == kIptcChunkKind) {
            search.chunk = chunk;
            return search;
        }
        end = chunk.start;
    }
}

bool EndsWithMagic(std::span<const std::uint8_t> file) {
    return file.size() >= kMagicBytes && HasMagicAt(file, file.size() - kMagicBytes);
}

void PutTrailer(std::span<std::uint8_t> file, std::uint64_t at, std::uint64_t length) {
    bytes::Write16(file, at, kIptcChunkKind, ByteOrder::kBigEndian);
    bytes::Write32(file, at + 2, static_cast<std::uint32_t>(length), ByteOrder::kBigEndian);
    bytes::Write32(file, at + 6, kTrailerMagic, ByteOrder::kBigEndian);
}

void PutBlock(std::span<std::uint8_t> file, std::uint64_t at, std::uint64_t area,
              std::span<const std::uint8_t> block) {
    std::memset(file.data() + at, 0, static_cast<std::size_t>(area));
    std::memcpy(file.data() + at, block.data(), block.size());
}

// Grows the file by delta bytes and maps it again read-write; on failure the
// file keeps (or gets back) its old size.
CIPTC::EError GrowAndMap(const std::string& path, platform::MappedFile& map, std::uint64_t delta) {
    const std::uint64_t oldSize = map.Size();
    map.Close();
    if (!platform::ResizeFile(path, oldSize + delta)) return CIPTC::kCannotMapOrWrite;
    if (map.Open(path, platform::MappedFile::Access::ReadWrite) != platform::MappedFile::Status::Ok ||
        map.Size() != oldSize + delta) {
        map.Close();
        static_cast<void>(platform::ResizeFile(path, oldSize));
        return CIPTC::kCannotMapOrWrite;
    }
    return CIPTC::kSuccess;
}

std::span<std::uint8_t> Writable(platform::MappedFile& map) {
    return {map.MutableData(), map.Size()};
}

}  // namespace

LocateResult LocateInTrailer(std::span<const std::uint8_t> file) {
    LocateResult result;
    result.bigEndian = false;  // the trailer form reports "not big-endian"
    if (file.size() < kTrailerBytes + 1 || !EndsWithMagic(file)) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    const ChunkSearch search = FindIptcChunk(file);
    switch (search.failure) {
        case WalkFailure::kNone:
            break;
        case WalkFailure::kNoChunk:
        case WalkFailure::kTooLong:
        case WalkFailure::kBadMagic:
            // Walked past the start of the file, or past the first chunk of
            // the stack into the data in front of it: no IPTC chunk.
            result.error = CIPTC::kNoIPTCBlock;
            return result;
        case WalkFailure::kNoHeader:
            result.error = CIPTC::kUnsupportedFormat;
            return result;
    }
    const Chunk& chunk = search.chunk;
    BlockLocation location;
    location.offset = chunk.dataStart;
    location.size = chunk.capacity;
    location.kind = bytes::Read8(file, chunk.dataStart) == kTagMarker ? BlockLocation::Kind::kIIM
                                                                      : BlockLocation::Kind::kImageResources;
    result.candidates.push_back(location);
    return result;
}

CIPTC::EError WriteTrailer(const std::string& path, std::span<const std::uint8_t> block) {
    if (block.size() > kMaxBlockBytes) return CIPTC::kBlockTooLarge;
    const std::uint64_t n = block.size();

    platform::MappedFile map;
    const CIPTC::EError opened = MapFile(path, platform::MappedFile::Access::ReadWrite, map);
    if (opened != CIPTC::kSuccess) return opened;

    if (map.Size() < kTrailerBytes || !EndsWithMagic(map.Bytes())) {
        // No trailer yet: append a chunk of the writer's own layout.
        const std::uint64_t at = map.Size();
        const CIPTC::EError grown = GrowAndMap(path, map, kTrailerBytes + n + kReserveBytes + kMagicBytes);
        if (grown != CIPTC::kSuccess) return grown;
        const auto file = Writable(map);
        PutTrailer(file, at, n + kChunkOverhead);
        PutBlock(file, at + kTrailerBytes, n + kReserveBytes, block);
        bytes::Write32(file, at + kTrailerBytes + n + kReserveBytes, kTrailerMagic, ByteOrder::kBigEndian);
        return CIPTC::kSuccess;
    }

    const ChunkSearch search = FindIptcChunk(map.Bytes());
    switch (search.failure) {
        case WalkFailure::kNone:
            break;
        case WalkFailure::kNoChunk:
            return CIPTC::kNoIPTCBlock;
        case WalkFailure::kBadMagic:
        case WalkFailure::kTooLong:
        case WalkFailure::kNoHeader:
            return CIPTC::kUnsupportedFormat;
    }
    const Chunk chunk = search.chunk;

    if (n <= chunk.capacity) {
        // The block fits: the chunk's data area is cleared and the block
        // written at its start; nothing moves.
        PutBlock(Writable(map), chunk.dataStart, chunk.capacity, block);
        return CIPTC::kSuccess;
    }

    // The chunk grows to the block plus the reserve; the chunks behind it
    // move towards the end of the file.
    const std::uint64_t newChunkBytes = chunk.appended ? kTrailerBytes + n + kReserveBytes + kMagicBytes
                                                       : n + kReserveBytes + kTrailerBytes;
    const std::uint64_t oldChunkBytes = chunk.end - chunk.start;
    const std::uint64_t delta = newChunkBytes - oldChunkBytes;
    const std::uint64_t oldSize = map.Size();
    const CIPTC::EError grown = GrowAndMap(path, map, delta);
    if (grown != CIPTC::kSuccess) return grown;
    const auto file = Writable(map);
    std::memmove(file.data() + chunk.end + delta, file.data() + chunk.end,
                 static_cast<std::size_t>(oldSize - chunk.end));
    if (chunk.appended) {
        PutTrailer(file, chunk.start, n + kChunkOverhead);
        PutBlock(file, chunk.start + kTrailerBytes, n + kReserveBytes, block);
        bytes::Write32(file, chunk.start + kTrailerBytes + n + kReserveBytes, kTrailerMagic, ByteOrder::kBigEndian);
    } else {
        PutBlock(file, chunk.start, n + kReserveBytes, block);
        PutTrailer(file, chunk.start + n + kReserveBytes, n + kChunkOverhead);
    }
    return CIPTC::kSuccess;
}

}  // namespace vliptc::iptc
