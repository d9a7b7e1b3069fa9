// IPTC in JPEG files. The block lives in an APP13 segment: the marker 0xFF
// 0xED, a 16-bit big-endian length that counts itself, the identifier
// "Photoshop 3.0" with a zero byte, then Photoshop image resources ("8BIM", a
// 16-bit identifier, a Pascal name padded to even size, a 32-bit data size,
// the data padded to even size). Resource 0x0404 holds the IIM datasets.
//
// The reader only says where the resource sections are; the store decodes
// them. The writer rebuilds the whole file in a memory file with the new
// resource 0x0404 and swaps it in through the safe-replace steps: every byte
// outside the rewritten APP13 segment is copied unchanged. The copies are read
// through the file, not the mapping, so that the pages of the scan data are
// never mapped in: only the memory file counts in the resident set.

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "host/ByteOrder.h"
#include "host/JpegMarkers.h"
#include "host/VLFile.h"
#include "iptc/internal/ContainerFile.h"
#include "iptc/internal/Containers.h"
#include "platform/FileSystem.h"

namespace vliptc::iptc {

namespace {

using bytes::ByteOrder;

using namespace vliptc::jpeg;

// The length field counts itself, so 2 is the smallest valid length and
// 65,535 the largest.
constexpr std::uint64_t kMinSegmentLength = 2;
constexpr std::uint64_t kMaxSegmentLength = 0xFFFF;

// APP13 identifiers: at most this many bytes before their zero terminator.
constexpr std::uint64_t kMaxIdentifierBytes = 200;
constexpr std::string_view kPhotoshopIdentifier = "Photoshop 3.0";
constexpr std::uint64_t kPhotoshopIdentifierBytes = 14;  // with its zero byte

constexpr std::string_view kResourceSignature = "8BIM";
constexpr std::uint16_t kIptcResourceId = 0x0404;  // IPTC-NAA record
// "8BIM", the identifier, the empty Pascal name (length byte and pad byte)
// and the 32-bit data size.
constexpr std::uint64_t kResourceHeaderBytes = 12;

// The new file is built in memory with room for the old file and a block.
constexpr std::uint64_t kBuildSlackBytes = 65536;
constexpr unsigned kBuildGrowBytes = 4096;
// Bytes of the original read at once on their way into the memory file.
constexpr std::uint64_t kCopyBytes = 65536;

struct Segment {
    std::uint8_t marker = 0;
    std::uint64_t start = 0;  // offset of the 0xFF
    std::uint64_t end = 0;    // one past the last byte of the segment
    std::uint64_t Payload() const noexcept { return start + kMarkerBytes + kLengthBytes; }
    std::uint64_t Length() const noexcept { return end - start - kMarkerBytes; }
};

enum class WalkEnd {
    kScan,       // reached the start of scan or the end of image
    kEndOfFile,  // ran out of file between segments
    kBroken,     // a segment length is cut off, too small or runs past the end
};

struct MarkerWalk {
    std::vector<Segment> segments;
    WalkEnd end = WalkEnd::kEndOfFile;
    std::uint64_t stop = 0;  // the walk looked at nothing from here on
};

// Walks the marker segments behind the start-of-image marker up to the first
// start of scan or end of image. Bytes between segments that are not a marker
// are passed over, as JPEG decoders do with such junk; 0xFF fill bytes before
// a marker are allowed.
MarkerWalk WalkMarkers(std::span<const std::uint8_t> file) {
    MarkerWalk walk;
    bytes::SpanCursor cursor(file, ByteOrder::kBigEndian);
    if (!cursor.Seek(kMarkerBytes)) return walk;
    while (!cursor.AtEnd()) {
        if (cursor.Read8() != kMarkerPrefix) continue;  // junk
        std::optional<std::uint8_t> marker = cursor.Read8();
        while (marker == kMarkerPrefix) marker = cursor.Read8();  // fill bytes
        if (!marker) break;
        if (*marker == kStuffed) continue;
        if (*marker == kSOS || *marker == kEOI) {
            walk.end = WalkEnd::kScan;
            walk.stop = cursor.Position();
            return walk;
        }
        if (IsStandalone(*marker)) continue;
        const std::uint64_t markerEnd = cursor.Position();
        const auto length = cursor.Read16();
        if (!length || *length < kMinSegmentLength || !cursor.Skip(*length - kLengthBytes)) {
            walk.end = WalkEnd::kBroken;
            return walk;
        }
        // A segment is recorded as starting at its last 0xFF, so that any
        // fill bytes before it stay with whatever precedes it.
        Segment segment;
        segment.marker = *marker;
        segment.start = markerEnd - kMarkerBytes;
        segment.end = cursor.Position();
        walk.segments.push_back(segment);
    }
    walk.end = WalkEnd::kEndOfFile;
    return walk;
}

bool StartsWithSOI(std::span<const std::uint8_t> file) {
    return file.size() >= 2 && file[0] == kMarkerPrefix && file[1] == kSOI;
}

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualsIgnoreCase(std::span<const std::uint8_t> bytes, std::string_view text) {
    if (bytes.size() != text.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (UpperAscii(static_cast<char>(bytes[i])) != UpperAscii(text[i])) return false;
    }
    return true;
}

// The zero-terminated identifier at the start of a segment's payload; nullopt
// when no zero byte ends it within 200 bytes and the segment.
std::optional<std::span<const std::uint8_t>> Identifier(std::span<const std::uint8_t> file,
                                                        const Segment& segment) {
    const std::uint64_t payload = segment.Payload();
    const std::uint64_t limit = std::min(segment.end, payload + kMaxIdentifierBytes + 1);
    for (std::uint64_t i = payload; i < limit; ++i) {
        if (file[static_cast<std::size_t>(i)] == 0) return file.subspan(payload, i - payload);
    }
    return std::nullopt;
}

bool Contains(std::span<const std::uint8_t> bytes, std::string_view text) {
    const std::string_view view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return view.find(text) != std::string_view::npos;
}

// An APP13 segment that the reader walks: "Photoshop 3.0" in any case, or any
// identifier naming Adobe or a caption (older writers used such names for the
// same resource layout).
bool CountsForReading(std::span<const std::uint8_t> identifier) {
    return EqualsIgnoreCase(identifier, kPhotoshopIdentifier) || Contains(identifier, "Adobe") ||
           Contains(identifier, "Caption");
}

// Where the image resources of an APP13 segment that the reader walks
// start (behind its identifier's zero byte); nullopt for other segments.
std::optional<std::uint64_t> ReaderSection(std::span<const std::uint8_t> file, const Segment& segment) {
    if (segment.marker != kAPP13) return std::nullopt;
    const auto identifier = Identifier(file, segment);
    if (!identifier || !CountsForReading(*identifier)) return std::nullopt;
    return segment.Payload() + identifier->size() + 1;
}

// A segment the writer may insert a new resource into: an APP13 segment
// whose payload starts with "Photoshop 3.0" (any case) and its zero byte.
bool IsPhotoshopSegment(std::span<const std::uint8_t> file, const Segment& segment) {
    if (segment.marker != kAPP13 || segment.end - segment.Payload() < kPhotoshopIdentifierBytes) return false;
    const auto identifier = file.subspan(segment.Payload(), kPhotoshopIdentifierBytes);
    return identifier.back() == 0 &&
           EqualsIgnoreCase(identifier.first(kPhotoshopIdentifier.size()), kPhotoshopIdentifier);
}

enum class ResourceScan {
    kFound,     // the IPTC resource the reader decodes in this segment
    kAbsent,    // none: the reader goes on to the next segment
    kWalkEnds,  // none, but the reader's walk ends here with success (a
                // resource of size 0, or a size cut off by the end), so it
                // never looks at a later segment
    kBroken,    // the IPTC resource runs past its segment
};

struct ResourceExtent {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

// Finds the IPTC resource that the reader would decode first in the image
// resources of [begin, end). The walk stops where the decoder's walk stops:
// at a signature other than "8BIM" (any case), at a header cut off by the
// end, and at a resource of data size 0 that is not 0x0404; past such a point
// the bytes are kept as they are. The extent includes the pad byte of an odd
// size when the segment has it. kBroken: the 0x0404 resource claims more data
// than the segment holds (a section that Photoshop continued in the next
// segment), so its end is unknown and it cannot be replaced.
ResourceScan FindIptcResource(std::span<const std::uint8_t> file, std::uint64_t begin, std::uint64_t end,
                              ResourceExtent& found) {
    bytes::SpanCursor cursor(file.subspan(begin, end - begin), ByteOrder::kBigEndian);
    while (!cursor.AtEnd()) {
        const std::uint64_t start = cursor.Position();
        const auto signature = cursor.ReadBytes(kResourceSignature.size());
        if (!signature || !EqualsIgnoreCase(*signature, kResourceSignature)) return ResourceScan::kAbsent;
        const auto id = cursor.Read16();
        const auto nameLength = cursor.Read8();
        if (!id || !nameLength) return ResourceScan::kAbsent;
        // The length byte and the name together have an even size.
        const std::uint64_t nameBytes = *nameLength + ((*nameLength + 1) % 2);
        if (!cursor.Skip(nameBytes)) return ResourceScan::kAbsent;
        const auto size = cursor.Read32();
        if (!size) return ResourceScan::kWalkEnds;
        if (*id == kIptcResourceId) {
            if (*size > cursor.Remaining()) return ResourceScan::kBroken;
            const std::uint64_t padded = std::uint64_t{*size} + (*size % 2);
            found.start = begin + start;
            found.end = begin + cursor.Position() + std::min(padded, cursor.Remaining());
            return ResourceScan::kFound;
        }
        if (*size == 0) return ResourceScan::kWalkEnds;
        if (!cursor.Skip(std::uint64_t{*size} + (*size % 2))) return ResourceScan::kAbsent;
    }
    return ResourceScan::kAbsent;
}

// Appends to a memory file; CVLMemFile takes unsigned counts.
void Append(CVLMemFile& out, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto chunk = static_cast<unsigned>(std::min<std::size_t>(bytes.size(), UINT_MAX));
        out.Write(bytes.data(), chunk);
        bytes = bytes.subspan(chunk);
    }
}

// Copies bytes [from, to) of the original through the file; false when they
// cannot be read.
bool AppendOriginal(CVLMemFile& out, const platform::MappedFile& original, std::uint64_t from,
                    std::uint64_t to) {
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(std::min(kCopyBytes, to - from)));
    for (std::uint64_t at = from; at < to; at += buffer.size()) {
        const auto part = std::span(buffer).first(
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), to - at)));
        if (!original.ReadAt(static_cast<std::size_t>(at), part)) return false;
        Append(out, part);
    }
    return true;
}

void AppendSegmentHeader(CVLMemFile& out, std::uint64_t length) {
    const auto number = bytes::Encode16(static_cast<std::uint16_t>(length), ByteOrder::kBigEndian);
    const std::array<std::uint8_t, 4> header{kMarkerPrefix, kAPP13, number[0], number[1]};
    Append(out, header);
}

// Resource 0x0404 with the empty name, the block and a pad byte for an odd size.
void AppendIptcResource(CVLMemFile& out, std::span<const std::uint8_t> block) {
    const auto size = bytes::Encode32(static_cast<std::uint32_t>(block.size()), ByteOrder::kBigEndian);
    const std::array<std::uint8_t, kResourceHeaderBytes> header{
        '8', 'B', 'I', 'M', 0x04, 0x04, 0x00, 0x00, size[0], size[1], size[2], size[3]};
    Append(out, header);
    Append(out, block);
    if (block.size() % 2 != 0) {
        const std::array<std::uint8_t, 1> pad{0};
        Append(out, pad);
    }
}

std::uint64_t ResourceBytes(std::span<const std::uint8_t> block) {
    return kResourceHeaderBytes + block.size() + (block.size() % 2);
}

// Builds the new file into out, or says why it cannot be built. The headers
// are looked at through the mapping; every copied range is read through the
// file.
CIPTC::EError BuildJpeg(const platform::MappedFile& original, const MarkerWalk& walk,
                        std::span<const std::uint8_t> block, CVLMemFile& out) {
    const auto file = original.Bytes();
    // The segment to rewrite is the one whose IPTC resource the reader
    // decodes: among the segments the reader walks, in file order, the first
    // that holds an IPTC resource or where the reader's walk ends. Failing
    // both, the new resource goes into the first "Photoshop 3.0" segment
    // (segments merely named after Adobe, such as "Adobe_CM", need not hold
    // image resources and get nothing inserted).
    auto target = walk.segments.end();
    std::uint64_t sectionStart = 0;
    ResourceScan scan = ResourceScan::kAbsent;
    ResourceExtent old;
    for (auto it = walk.segments.begin(); it != walk.segments.end(); ++it) {
        const auto start = ReaderSection(file, *it);
        if (!start) continue;
        const ResourceScan found = FindIptcResource(file, *start, it->end, old);
        if (found != ResourceScan::kAbsent) {
            target = it;
            sectionStart = *start;
            scan = found;
            break;
        }
        if (target == walk.segments.end() && IsPhotoshopSegment(file, *it)) {
            target = it;
            sectionStart = *start;
        }
    }

    if (target == walk.segments.end()) {
        // No APP13 of ours: a new segment goes directly behind the first
        // segment (the APP0 or APP1 that follows the start-of-image marker).
        const std::uint64_t length = kLengthBytes + kPhotoshopIdentifierBytes + ResourceBytes(block);
        if (length > kMaxSegmentLength) return CIPTC::kBlockTooLarge;
        const Segment& first = walk.segments.front();
        if (!AppendOriginal(out, original, 0, first.end)) return CIPTC::kCannotMapOrWrite;
        AppendSegmentHeader(out, length);
        const std::array<std::uint8_t, kPhotoshopIdentifierBytes> identifier{
            'P', 'h', 'o', 't', 'o', 's', 'h', 'o', 'p', ' ', '3', '.', '0', 0};
        Append(out, identifier);
        AppendIptcResource(out, block);
        return AppendOriginal(out, original, first.end, file.size()) ? CIPTC::kSuccess
                                                                     : CIPTC::kCannotMapOrWrite;
    }

    switch (scan) {
        case ResourceScan::kBroken:
            return CIPTC::kUnsupportedFormat;
        case ResourceScan::kAbsent:
        case ResourceScan::kWalkEnds:
            // The segment holds no IPTC resource the reader would reach: the
            // new one goes directly behind the identifier, where the reader
            // meets it first, and every old resource follows unchanged.
            old.start = sectionStart;
            old.end = sectionStart;
            break;
        case ResourceScan::kFound:
            break;
    }
    // The length is computed from what is written: the kept bytes before and
    // behind the old resource (its name, data and pad byte all replaced) plus
    // the new resource.
    const std::uint64_t length =
        kLengthBytes + (old.start - target->Payload()) + ResourceBytes(block) + (target->end - old.end);
    if (length > kMaxSegmentLength) return CIPTC::kBlockTooLarge;
    if (!AppendOriginal(out, original, 0, target->start)) return CIPTC::kCannotMapOrWrite;
    AppendSegmentHeader(out, length);
    if (!AppendOriginal(out, original, target->Payload(), old.start)) return CIPTC::kCannotMapOrWrite;
    AppendIptcResource(out, block);
    return AppendOriginal(out, original, old.end, file.size()) ? CIPTC::kSuccess : CIPTC::kCannotMapOrWrite;
}

}  // namespace

LocateResult LocateInJPEG(std::span<const std::uint8_t> file) {
    LocateResult result;
    result.bigEndian = true;
    if (!StartsWithSOI(file)) {
        result.error = CIPTC::kUnsupportedFormat;
        return result;
    }
    const MarkerWalk walk = WalkMarkers(file);
    if (walk.end == WalkEnd::kScan) result.examined = walk.stop;
    for (const Segment& segment : walk.segments) {
        const auto start = ReaderSection(file, segment);
        if (!start) continue;
        BlockLocation location;
        location.kind = BlockLocation::Kind::kImageResources;
        location.offset = *start;
        location.size = segment.end - *start;
        result.candidates.push_back(location);
    }
    // A walk cut short by a broken length still yields the segments before
    // it; only when nothing was found is the damage the answer.
    if (result.candidates.empty()) {
        result.error = walk.end == WalkEnd::kBroken ? CIPTC::kUnsupportedFormat : CIPTC::kNoIPTCBlock;
    }
    return result;
}

CIPTC::EError WriteJPEG(const std::string& path, std::span<const std::uint8_t> block) {
    // Blocks larger than the encoder makes are refused before anything is read.
    if (block.size() > kMaxBlockBytes) return CIPTC::kBlockTooLarge;

    std::optional<CVLMemFile> out;
    const auto describe = [&](const platform::MappedFile& map) -> Described {
        const auto file = map.Bytes();
        // The writer insists on an application segment right behind the
        // start-of-image marker: a new APP13 goes behind that segment.
        if (!StartsWithSOI(file) || file.size() < 4 || file[2] != kMarkerPrefix ||
            (file[3] != kAPP0 && file[3] != kAPP1 && file[3] != kAPP13)) {
            return CIPTC::kUnsupportedFormat;
        }
        const MarkerWalk walk = WalkMarkers(file);
        if (walk.end == WalkEnd::kBroken || walk.segments.empty()) return CIPTC::kUnsupportedFormat;
        // A file the user may not write is not replaced behind their back,
        // although its folder would allow the swap.
        if (platform::IsReadOnly(path)) return CIPTC::kCannotMapOrWrite;

        const std::uint64_t capacity = std::min<std::uint64_t>(file.size() + kBuildSlackBytes, UINT_MAX);
        out.emplace(false, static_cast<unsigned>(capacity), kBuildGrowBytes);
        const CIPTC::EError built = BuildJpeg(map, walk, block, *out);
        if (built != CIPTC::kSuccess) return built;
        DescribedFile described;
        described.AppendBytes({out->GetBuffer(), static_cast<std::size_t>(out->GetFileSize())});
        return described;
    };
    // Nothing to check: every byte of the memory file was written as it is.
    const auto written = [](const std::string&) { return CIPTC::kSuccess; };
    return ReplaceWithDescribedFile(path, describe, written);
}

}  // namespace vliptc::iptc
