#pragma once

// The read state of one EXIF read over a mapped file, and the reading rules
// the containers and directories are parsed with. Every read goes through the
// bounds-checked primitives of host/ByteOrder.h; the position never leaves
// [0, size].
//
// Two kinds of reader, with opposite byte orders for the same flag:
//   - stream readers (NextByte, Next2Bytes) read at the position and move it.
//     A missing byte reads as 0xFF and the position stays at the end, so a
//     marker scan at the end of a JPEG sees fill bytes and stops. Next2Bytes
//     is big-endian while the flag is clear (JPEG lengths) and little-endian
//     when it is set;
//   - pointer readers (ReadWord, ReadDWord) read at an offset without moving:
//     little-endian ("II") while the flag is clear, big-endian ("MM") when it
//     is set. They fail (nullopt) rather than read past the end.

#include <cstdint>
#include <optional>
#include <span>

#include "host/ByteOrder.h"

namespace vliptc::exif {

class ExifStream {
public:
    explicit ExifStream(std::span<const std::uint8_t> data) noexcept : m_data(data) {}

    std::span<const std::uint8_t> Data() const noexcept { return m_data; }
    std::uint64_t Size() const noexcept { return m_data.size(); }

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
        return m_data[static_cast<std::size_t>(m_position++)];
    }
    std::uint16_t Next2Bytes() noexcept {
        const unsigned first = NextByte();
        const unsigned second = NextByte();
        return static_cast<std::uint16_t>(m_motorola ? (second << 8) | first : (first << 8) | second);
    }

    std::optional<std::uint16_t> ReadWord(std::uint64_t offset) const noexcept {
        return bytes::Read16(m_data, offset, PointerOrder());
    }
    std::optional<std::uint32_t> ReadDWord(std::uint64_t offset) const noexcept {
        return bytes::Read32(m_data, offset, PointerOrder());
    }

private:
    std::span<const std::uint8_t> m_data;
    std::uint64_t m_position = 0;
    std::uint64_t m_tiff = 0;
    bool m_motorola = false;
};

}  // namespace vliptc::exif
