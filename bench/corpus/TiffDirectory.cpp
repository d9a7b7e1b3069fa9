// Directory entries and their value area, little-endian.

#include "bench/corpus/TiffDirectory.h"

#include <algorithm>

#include "bench/corpus/ByteWriter.h"

namespace vliptc::bench {

namespace {

// TIFF field types.
constexpr std::uint16_t kTypeByte = 1;
constexpr std::uint16_t kTypeAscii = 2;
constexpr std::uint16_t kTypeShort = 3;
constexpr std::uint16_t kTypeLong = 4;
constexpr std::uint16_t kTypeRational = 5;
constexpr std::uint16_t kTypeUndefined = 7;
constexpr std::uint16_t kTypeSignedRational = 10;

// Entry count (2), entries (12 each), next-directory offset (4).
constexpr std::size_t kEntryBytes = 12;
constexpr std::size_t kInlineValueBytes = 4;

std::size_t Even(std::size_t size) { return size + (size & 1); }

}  // namespace

TiffDirectory& TiffDirectory::Add(std::uint16_t tag, std::uint16_t type, std::uint32_t count, Bytes value) {
    const auto at = std::lower_bound(m_entries.begin(), m_entries.end(), tag,
                                     [](const Entry& entry, std::uint16_t t) { return entry.tag < t; });
    if (at != m_entries.end() && at->tag == tag) {
        *at = Entry{tag, type, count, std::move(value)};
    } else {
        m_entries.insert(at, Entry{tag, type, count, std::move(value)});
    }
    return *this;
}

TiffDirectory& TiffDirectory::Byte(std::uint16_t tag, std::initializer_list<std::uint8_t> values) {
    return Add(tag, kTypeByte, static_cast<std::uint32_t>(values.size()), Bytes(values));
}

TiffDirectory& TiffDirectory::Ascii(std::uint16_t tag, std::string_view text) {
    Bytes value;
    Append(value, text);
    Append(value, {0});
    const auto count = static_cast<std::uint32_t>(value.size());
    return Add(tag, kTypeAscii, count, std::move(value));
}

TiffDirectory& TiffDirectory::Short(std::uint16_t tag, std::initializer_list<std::uint16_t> values) {
    Bytes value;
    for (const std::uint16_t v : values) PutLE16(value, v);
    return Add(tag, kTypeShort, static_cast<std::uint32_t>(values.size()), std::move(value));
}

TiffDirectory& TiffDirectory::Long(std::uint16_t tag, std::uint32_t number) {
    Bytes value;
    PutLE32(value, number);
    return Add(tag, kTypeLong, 1, std::move(value));
}

TiffDirectory& TiffDirectory::Rational(std::uint16_t tag, std::initializer_list<Fraction> values) {
    Bytes value;
    for (const auto& [numerator, denominator] : values) {
        PutLE32(value, numerator);
        PutLE32(value, denominator);
    }
    return Add(tag, kTypeRational, static_cast<std::uint32_t>(values.size()), std::move(value));
}

TiffDirectory& TiffDirectory::SignedRational(std::uint16_t tag, std::int32_t numerator,
                                             std::int32_t denominator) {
    Bytes value;
    PutLE32(value, static_cast<std::uint32_t>(numerator));
    PutLE32(value, static_cast<std::uint32_t>(denominator));
    return Add(tag, kTypeSignedRational, 1, std::move(value));
}

TiffDirectory& TiffDirectory::Undefined(std::uint16_t tag, std::string_view bytes) {
    Bytes value;
    Append(value, bytes);
    return Add(tag, kTypeUndefined, static_cast<std::uint32_t>(bytes.size()), std::move(value));
}

TiffDirectory& TiffDirectory::LongPadded(std::uint16_t tag, const Bytes& bytes) {
    Bytes value = bytes;
    value.resize((value.size() + 3) / 4 * 4, 0);
    const auto count = static_cast<std::uint32_t>(value.size() / 4);
    return Add(tag, kTypeLong, count, std::move(value));
}

std::size_t TiffDirectory::Size() const {
    std::size_t size = 2 + kEntryBytes * m_entries.size() + 4;
    for (const Entry& entry : m_entries) {
        if (entry.value.size() > kInlineValueBytes) size += Even(entry.value.size());
    }
    return size;
}

void TiffDirectory::AppendTo(Bytes& out, std::size_t tiffStart, std::uint32_t next) const {
    const std::size_t at = out.size() - tiffStart;
    // Values start behind the table, each on a word boundary.
    const std::size_t valueAt = at + 2 + kEntryBytes * m_entries.size() + 4;
    Bytes values;
    PutLE16(out, static_cast<std::uint32_t>(m_entries.size()));
    for (const Entry& entry : m_entries) {
        PutLE16(out, entry.tag);
        PutLE16(out, entry.type);
        PutLE32(out, entry.count);
        if (entry.value.size() <= kInlineValueBytes) {
            Append(out, entry.value);
            out.resize(out.size() + kInlineValueBytes - entry.value.size(), 0);
            continue;
        }
        PutLE32(out, static_cast<std::uint32_t>(valueAt + values.size()));
        Append(values, entry.value);
        values.resize(Even(values.size()), 0);
    }
    PutLE32(out, next);
    Append(out, values);
}

}  // namespace vliptc::bench
