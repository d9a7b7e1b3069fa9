#pragma once

// The read state of one EXIF read over a file's bytes, and the reading rules
// the containers and directories are parsed with. Every read goes through the
// bounds-checked primitives of host/ByteOrder.h; the position never leaves
// [0, size].
//
// The bytes at hand may be only the start of the file (the reader reads the
// first 64 KB and maps the rest only when the walk needs it). Every bound is
// the file's own size, so the walk takes the same turns either way; a read
// that wants bytes beyond those at hand but inside the file is a miss: it
// reads as nothing, the position jumps to the end so that the walk ends
// promptly, and Missed() tells the caller to walk again over all the bytes.
// A walk without a miss read exactly what a walk over the whole file reads.
//
// Two kinds of reader, with opposite byte orders for the same flag:
//   - stream readers (NextByte, Next2Bytes) read at the position and move it.
//     A missing byte reads as 0xFF and the position stays at the end, so a
//     marker scan at the end of a JPEG sees fill bytes and stops. Next2Bytes
//     is big-endian while the flag is clear (JPEG lengths) and little-endian
//     when it is set;
//   - pointer readers (ReadWord, ReadDWord, Bytes) read at an offset without
//     moving: little-endian ("II") while the flag is clear, big-endian ("MM")
//     when it is set. They fail (nullopt) rather than read past the end.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

#include "host/ByteOrder.h"

namespace vliptc::exif {

class ExifStream {
public:
    // All of the file's data at hand.
    explicit ExifStream(std::span<const std::uint8_t> data) noexcept : ExifStream(data, data.size()) {}
    // The first bytes of data of size bytes (at most size of them).
    ExifStream(std::span<const std::uint8_t> start, std::uint64_t size) noexcept
        : m_data(start.first(static_cast<std::size_t>(std::min<std::uint64_t>(start.size(), size)))),
          m_size(size) {}

    std::uint64_t Size() const noexcept { return m_size; }
    // A read wanted bytes inside the file beyond those at hand; MissedEnd is
    // where the bytes of the first such read end (0 without a miss).
    bool Missed() const noexcept { return m_missedEnd != 0; }
    std::uint64_t MissedEnd() const noexcept { return m_missedEnd; }

    // The byte-order flag: set for big-endian ("MM") TIFF data.
    bool Motorola() const noexcept { return m_motorola; }
    void SetMotorola(bool motorola) noexcept { m_motorola = motorola; }
    bytes::ByteOrder PointerOrder() const noexcept {
        return m_motorola ? bytes::ByteOrder::kBigEndian : bytes::ByteOrder::kLittleEndian;
    }

    // The current position, and where the TIFF header being parsed starts
    // (every directory offset is relative to it).
    std::uint64_t Position() const noexcept { return m_position; }
    void SetPosition(std::uint64_t position) noexcept { m_position = position < Size() ? position : Size(); }
    void Advance(std::uint64_t count) noexcept { m_position = bytes::ClampedEnd(m_position, count, Size()); }
    std::uint64_t TIFFStart() const noexcept { return m_tiff; }
    void SetTIFFStart(std::uint64_t offset) noexcept { m_tiff = offset; }

    bool IsEOF() const noexcept { return m_position >= Size(); }

    std::uint8_t NextByte() noexcept {
        if (IsEOF()) return 0xFF;
        if (m_position >= m_data.size()) {
            Miss(m_position + 1);
            return 0xFF;
        }
        return m_data[static_cast<std::size_t>(m_position++)];
    }
    std::uint16_t Next2Bytes() noexcept {
        const unsigned first = NextByte();
        const unsigned second = NextByte();
        return static_cast<std::uint16_t>(m_motorola ? (second << 8) | first : (first << 8) | second);
    }

    // count bytes at offset.
    std::optional<std::span<const std::uint8_t>> Bytes(std::uint64_t offset, std::uint64_t count) noexcept {
        if (!Reach(offset, count)) return std::nullopt;
        return m_data.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
    }
    std::optional<std::uint8_t> ReadByte(std::uint64_t offset) noexcept {
        if (!Reach(offset, 1)) return std::nullopt;
        return m_data[static_cast<std::size_t>(offset)];
    }
    std::optional<std::uint16_t> ReadWord(std::uint64_t offset) noexcept {
        if (!Reach(offset, 2)) return std::nullopt;
        return bytes::Read16(m_data, offset, PointerOrder());
    }
    std::optional<std::uint32_t> ReadDWord(std::uint64_t offset) noexcept {
        if (!Reach(offset, 4)) return std::nullopt;
        return bytes::Read32(m_data, offset, PointerOrder());
    }

private:
    // Whether [offset, offset + count) lies in the bytes at hand; a range
    // inside the file but past them is a miss.
    bool Reach(std::uint64_t offset, std::uint64_t count) noexcept {
        if (bytes::InBounds(m_data.size(), offset, count)) return true;
        if (bytes::InBounds(m_size, offset, count)) Miss(offset + count);
        return false;
    }
    void Miss(std::uint64_t end) noexcept {
        if (m_missedEnd == 0) m_missedEnd = end;
        m_position = m_size;
    }

    std::span<const std::uint8_t> m_data;
    std::uint64_t m_size = 0;
    std::uint64_t m_position = 0;
    std::uint64_t m_tiff = 0;
    bool m_motorola = false;
    std::uint64_t m_missedEnd = 0;
};

}  // namespace vliptc::exif
