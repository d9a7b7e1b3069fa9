#pragma once

// Bounds-checked reading and writing of 8-, 16- and 32-bit numbers in either
// byte order over a byte span. Every parser of outside data reads through
// these, and keeps the exact reading rules of its own format on top of them.
//
// Offsets and counts are 64-bit and every range test is written as
// "offset <= size && count <= size - offset", so offset + count can never
// wrap, whatever a file claims.

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace vliptc::bytes {

enum class ByteOrder : std::uint8_t {
    kBigEndian,     // most-significant byte first ("MM", JPEG, Photoshop)
    kLittleEndian,  // least-significant byte first ("II")
};

// True when the count bytes at offset lie inside a buffer of size bytes.
constexpr bool InBounds(std::uint64_t size, std::uint64_t offset, std::uint64_t count) noexcept {
    return offset <= size && count <= size - offset;
}

// offset + count, held at limit (for an end position that must stay inside
// its parent range). An offset already past limit gives limit.
constexpr std::uint64_t ClampedEnd(std::uint64_t offset, std::uint64_t count, std::uint64_t limit) noexcept {
    if (offset >= limit) {
        return limit;
    }
    return count <= limit - offset ? offset + count : limit;
}

// The sub-span of count bytes at offset; nullopt when it does not fit.
inline std::optional<std::span<const std::uint8_t>> Slice(std::span<const std::uint8_t> data, std::uint64_t offset,
                                                          std::uint64_t count) noexcept {
    if (!InBounds(data.size(), offset, count)) {
        return std::nullopt;
    }
    return data.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
}

// Reads; nullopt when the number does not fit inside data.
inline std::optional<std::uint8_t> Read8(std::span<const std::uint8_t> data, std::uint64_t offset) noexcept {
    if (!InBounds(data.size(), offset, 1)) {
        return std::nullopt;
    }
    return data[static_cast<std::size_t>(offset)];
}

inline std::optional<std::uint16_t> Read16(std::span<const std::uint8_t> data, std::uint64_t offset,
                                           ByteOrder order) noexcept {
    if (!InBounds(data.size(), offset, 2)) {
        return std::nullopt;
    }
    const auto* p = data.data() + offset;
    const unsigned first = p[0];
    const unsigned second = p[1];
    return static_cast<std::uint16_t>(order == ByteOrder::kBigEndian ? (first << 8) | second
                                                                     : (second << 8) | first);
}

inline std::optional<std::uint32_t> Read32(std::span<const std::uint8_t> data, std::uint64_t offset,
                                           ByteOrder order) noexcept {
    if (!InBounds(data.size(), offset, 4)) {
        return std::nullopt;
    }
    const auto* p = data.data() + offset;
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const std::uint32_t byte = p[order == ByteOrder::kBigEndian ? i : 3 - i];
        value = (value << 8) | byte;
    }
    return value;
}

// The bytes of a number in the given order.
constexpr std::array<std::uint8_t, 2> Encode16(std::uint16_t value, ByteOrder order) noexcept {
    const auto high = static_cast<std::uint8_t>(value >> 8);
    const auto low = static_cast<std::uint8_t>(value & 0xFF);
    return order == ByteOrder::kBigEndian ? std::array<std::uint8_t, 2>{high, low}
                                          : std::array<std::uint8_t, 2>{low, high};
}

constexpr std::array<std::uint8_t, 4> Encode32(std::uint32_t value, ByteOrder order) noexcept {
    std::array<std::uint8_t, 4> out{};
    for (int i = 0; i < 4; ++i) {
        const auto byte = static_cast<std::uint8_t>((value >> (8 * (3 - i))) & 0xFF);
        out[static_cast<std::size_t>(order == ByteOrder::kBigEndian ? i : 3 - i)] = byte;
    }
    return out;
}

// Writes in place; false (and nothing written) when the number does not fit.
inline bool Write16(std::span<std::uint8_t> data, std::uint64_t offset, std::uint16_t value,
                    ByteOrder order) noexcept {
    if (!InBounds(data.size(), offset, 2)) {
        return false;
    }
    const auto bytes = Encode16(value, order);
    data[static_cast<std::size_t>(offset)] = bytes[0];
    data[static_cast<std::size_t>(offset) + 1] = bytes[1];
    return true;
}

inline bool Write32(std::span<std::uint8_t> data, std::uint64_t offset, std::uint32_t value,
                    ByteOrder order) noexcept {
    if (!InBounds(data.size(), offset, 4)) {
        return false;
    }
    const auto bytes = Encode32(value, order);
    for (std::size_t i = 0; i < 4; ++i) {
        data[static_cast<std::size_t>(offset) + i] = bytes[i];
    }
    return true;
}

// A read position over a span. Every read either succeeds and moves past what
// it read, or fails (nullopt / false) and does not move. The position never
// leaves [0, size].
class SpanCursor {
public:
    SpanCursor() = default;
    explicit SpanCursor(std::span<const std::uint8_t> data, ByteOrder order = ByteOrder::kBigEndian) noexcept
        : m_data(data), m_order(order) {}

    std::span<const std::uint8_t> Data() const noexcept { return m_data; }
    std::uint64_t Size() const noexcept { return m_data.size(); }
    std::uint64_t Position() const noexcept { return m_position; }
    std::uint64_t Remaining() const noexcept { return Size() - m_position; }
    bool AtEnd() const noexcept { return m_position >= Size(); }

    ByteOrder Order() const noexcept { return m_order; }
    void SetOrder(ByteOrder order) noexcept { m_order = order; }

    // Fails and does not move when position is past the end.
    bool Seek(std::uint64_t position) noexcept {
        if (position > Size()) {
            return false;
        }
        m_position = position;
        return true;
    }
    // Fails and does not move when fewer than count bytes are left.
    bool Skip(std::uint64_t count) noexcept {
        if (count > Remaining()) {
            return false;
        }
        m_position += count;
        return true;
    }
    // Moves by count, or to the end when fewer are left. Returns how far it moved.
    std::uint64_t SkipClamped(std::uint64_t count) noexcept {
        const std::uint64_t moved = count < Remaining() ? count : Remaining();
        m_position += moved;
        return moved;
    }

    // The byte ahead bytes behind the position, without moving.
    std::optional<std::uint8_t> Peek8(std::uint64_t ahead = 0) const noexcept {
        return ahead > Remaining() ? std::nullopt : bytes::Read8(m_data, m_position + ahead);
    }

    std::optional<std::uint8_t> Read8() noexcept { return Advance(bytes::Read8(m_data, m_position), 1); }
    std::optional<std::uint16_t> Read16() noexcept {
        return Advance(bytes::Read16(m_data, m_position, m_order), 2);
    }
    std::optional<std::uint32_t> Read32() noexcept {
        return Advance(bytes::Read32(m_data, m_position, m_order), 4);
    }
    // The next count bytes as a view into the data.
    std::optional<std::span<const std::uint8_t>> ReadBytes(std::uint64_t count) noexcept {
        return Advance(bytes::Slice(m_data, m_position, count), count);
    }

private:
    template <typename T>
    std::optional<T> Advance(std::optional<T> value, std::uint64_t count) noexcept {
        if (value) {
            m_position += count;
        }
        return value;
    }

    std::span<const std::uint8_t> m_data;
    std::uint64_t m_position = 0;
    ByteOrder m_order = ByteOrder::kBigEndian;
};

}  // namespace vliptc::bytes
