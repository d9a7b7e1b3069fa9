#pragma once

// The directory structure of a classic TIFF file, read bounds-checked: the
// 8-byte header, the chain of image file directories (IFDs) and, for the
// writer, the EXIF and GPS directories that they point to. Only structure is
// read here; the IPTC reader and writer decide what to do with it.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/ByteOrder.h"

namespace vliptc::iptc::tiff {

// "II" (least-significant byte first) or "MM" (most-significant first) opens
// every TIFF file; the version that follows is 42 for classic TIFF and 43 for
// BigTIFF, whose directories have a different layout.
inline constexpr std::uint16_t kMarkLittleEndian = 0x4949;
inline constexpr std::uint16_t kMarkBigEndian = 0x4D4D;
inline constexpr std::uint16_t kClassicVersion = 42;
inline constexpr std::uint16_t kBigTiffVersion = 43;
inline constexpr std::uint64_t kHeaderBytes = 8;

// A directory is a 16-bit entry count, 12-byte entries (tag, type, count,
// value or offset of the value) and a 32-bit offset of the next directory.
inline constexpr std::uint64_t kEntryBytes = 12;
inline constexpr std::uint64_t kCountBytes = 2;
inline constexpr std::uint64_t kNextPointerBytes = 4;
// A value of at most 4 bytes sits in the entry itself.
inline constexpr std::uint64_t kInlineValueBytes = 4;

// Tags the container layer cares about.
inline constexpr std::uint16_t kTagStripOffsets = 273;
inline constexpr std::uint16_t kTagFreeOffsets = 288;
inline constexpr std::uint16_t kTagTileOffsets = 324;
inline constexpr std::uint16_t kTagSubIfds = 330;            // offsets of further image directories
inline constexpr std::uint16_t kTagThumbnailOffset = 513;    // JPEGInterchangeFormat: offset of a JPEG thumbnail
inline constexpr std::uint16_t kTagIptcNaa = 33723;  // the IPTC-NAA record (IIM datasets)
inline constexpr std::uint16_t kTagExifDirectory = 34665;
inline constexpr std::uint16_t kTagGpsDirectory = 34853;
inline constexpr std::uint16_t kTagInteropDirectory = 40965;  // in the EXIF directory

// Field types of the entries.
inline constexpr std::uint16_t kTypeByte = 1;
inline constexpr std::uint16_t kTypeShort = 3;
inline constexpr std::uint16_t kTypeLong = 4;
inline constexpr std::uint16_t kTypeIfd = 13;  // a LONG that holds a directory offset

// Bytes of one value of a field type: 1 for BYTE, ASCII, SBYTE, UNDEFINED; 2
// for SHORT, SSHORT; 4 for LONG, SLONG, FLOAT and IFD; 8 for RATIONAL,
// SRATIONAL, DOUBLE. 0 for a type classic TIFF does not define.
std::uint32_t TypeSize(std::uint16_t type) noexcept;

struct Header {
    bytes::ByteOrder order = bytes::ByteOrder::kLittleEndian;
    std::uint16_t version = 0;
    std::uint32_t firstDirectory = 0;
};

enum class HeaderStatus {
    kOk,
    kBadMark,    // neither "II" nor "MM"
    kTruncated,  // fewer than the 8 header bytes
};

struct HeaderResult {
    HeaderStatus status = HeaderStatus::kTruncated;
    Header header;
};

HeaderResult ReadHeader(std::span<const std::uint8_t> file) noexcept;

struct Entry {
    std::uint64_t position = 0;  // of the 12-byte entry in the file
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::uint32_t valueField = 0;  // the last 4 bytes read as a number

    // count * type size (64-bit: it cannot wrap); 0 for an unknown type.
    std::uint64_t ValueBytes() const noexcept { return std::uint64_t{count} * TypeSize(type); }
    bool IsInline() const noexcept { return ValueBytes() <= kInlineValueBytes; }
    // Where the value starts: inside the entry, or at the offset it holds.
    std::uint64_t ValuePosition() const noexcept { return IsInline() ? position + 8 : valueField; }
};

struct Directory {
    enum class Kind { kChain, kExif, kGps, kSubIfd, kInterop };
    Kind kind = Kind::kChain;
    std::uint64_t offset = 0;         // of the entry count
    std::uint16_t declaredCount = 0;  // what the count field says
    std::vector<Entry> entries;       // the entries read, in stored order
    // Every declared entry and the next-directory offset lie in the file and
    // the count is within the cap.
    bool complete = false;
    std::uint32_t next = 0;  // offset of the next directory; 0 when none or unreadable

    // Position of the next-directory offset.
    std::uint64_t NextPointerPosition() const noexcept {
        return offset + kCountBytes + kEntryBytes * declaredCount;
    }
    // One past the last byte of the directory.
    std::uint64_t End() const noexcept { return NextPointerPosition() + kNextPointerBytes; }
};

struct Walk {
    std::vector<Directory> directories;  // the chain in order, then EXIF and GPS directories
    // The walk stopped at a cap of host/Limits.h (too many directories, or a
    // directory with more entries than are read): something may be unseen.
    bool capped = false;
};

// Walks the chain from the header's first directory, stopping at offset 0, at
// a directory outside the file, at a directory met before (a loop) or at the
// cap. With subDirectories the EXIF and GPS directories that the chain's
// entries point to are read too (their own next offsets are not followed).
Walk WalkDirectories(std::span<const std::uint8_t> file, const Header& header, bool subDirectories);

}  // namespace vliptc::iptc::tiff
