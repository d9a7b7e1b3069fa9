#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "host/ByteOrder.h"

// The byte reader that the IIM decoder and the container walks share: a memory
// region (usually a mapped file), a position inside it and a swap flag.
//
// The swap flag is true when multi-byte numbers are stored most-significant
// byte first (the default: JPEG, Photoshop and the trailer form) and false for
// least-significant first (an "II" TIFF, or an IIM block whose record version
// says it was written little-endian).
//
// The reading rules are those of the IPTC formats and are kept exactly:
//   ReadByte   the byte at the position; 255 at or past the end, not moving.
//   Read16/32  fail and do not move when fewer than 2/4 bytes are left.
//   ReadText   fails and does not move when fewer than n bytes are left.
//   Skip       moves by n, but never past the end of the region: a skip that
//              would leave it stops at the end. Nothing inside the region reads
//              differently for it; it only keeps the position meaningful.
// The position never leaves [0, size].
class CIPTCReader {
public:
    explicit CIPTCReader(std::span<const std::uint8_t> region, bool swap = true) noexcept
        : m_cursor(region, swap ? vliptc::bytes::ByteOrder::kBigEndian : vliptc::bytes::ByteOrder::kLittleEndian) {}

    std::span<const std::uint8_t> Region() const noexcept { return m_cursor.Data(); }
    std::uint64_t Size() const noexcept { return m_cursor.Size(); }
    std::uint64_t Position() const noexcept { return m_cursor.Position(); }
    std::uint64_t Remaining() const noexcept { return m_cursor.Remaining(); }
    bool AtEnd() const noexcept { return m_cursor.AtEnd(); }
    // Moves to an absolute position, held at the end of the region.
    void Seek(std::uint64_t position) noexcept { m_cursor.Seek(position < Size() ? position : Size()); }

    bool Swap() const noexcept { return m_cursor.Order() == vliptc::bytes::ByteOrder::kBigEndian; }
    void SetSwap(bool swap) noexcept {
        m_cursor.SetOrder(swap ? vliptc::bytes::ByteOrder::kBigEndian : vliptc::bytes::ByteOrder::kLittleEndian);
    }

    std::uint8_t ReadByte() noexcept { return m_cursor.Read8().value_or(0xFF); }
    std::optional<std::uint16_t> Read16() noexcept { return m_cursor.Read16(); }
    std::optional<std::uint32_t> Read32() noexcept { return m_cursor.Read32(); }
    void Skip(std::uint64_t count) noexcept { m_cursor.SkipClamped(count); }

    // Reads n bytes as text with the line-break normalisation of stored IPTC
    // text (every line break becomes CR LF):
    //   0x00 is dropped;
    //   CR is kept, and LF is added behind it unless the byte that follows it
    //      in the region is LF or the region ends there (so a value ending in
    //      a bare CR, followed by the next dataset, gains its LF);
    //   LF gets a CR put before it unless the text so far is empty or already
    //      ends in CR (an LF at the very start stays bare);
    //   every other byte is kept.
    // nullopt, not moving, when fewer than n bytes are left.
    std::optional<std::string> ReadText(std::uint64_t n);

private:
    vliptc::bytes::SpanCursor m_cursor;
};
