#pragma once

// One image file directory of a little-endian TIFF stream, as the corpus
// writes them: the entries in tag order, each value that does not fit in the
// entry's four bytes placed in a value area right behind the entry table.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/corpus/Corpus.h"

namespace vliptc::bench {

class TiffDirectory {
public:
    using Fraction = std::pair<std::uint32_t, std::uint32_t>;

    TiffDirectory& Byte(std::uint16_t tag, std::initializer_list<std::uint8_t> values);
    TiffDirectory& Ascii(std::uint16_t tag, std::string_view text);  // the NUL is added
    TiffDirectory& Short(std::uint16_t tag, std::initializer_list<std::uint16_t> values);
    TiffDirectory& Long(std::uint16_t tag, std::uint32_t value);
    TiffDirectory& Rational(std::uint16_t tag, std::initializer_list<Fraction> values);
    TiffDirectory& SignedRational(std::uint16_t tag, std::int32_t numerator, std::int32_t denominator);
    TiffDirectory& Undefined(std::uint16_t tag, std::string_view bytes);
    // A byte stream stored as LONGs, zero-padded to a multiple of four, as
    // image editors store the IPTC-NAA entry.
    TiffDirectory& LongPadded(std::uint16_t tag, const Bytes& bytes);

    // The bytes AppendTo adds: entry count, entries, next-directory offset and
    // the value area. Setting a Long to another value does not change it.
    std::size_t Size() const;
    // Appends the directory at out.size(), which is at offset
    // out.size() - tiffStart of the TIFF stream that starts at tiffStart.
    void AppendTo(Bytes& out, std::size_t tiffStart, std::uint32_t next) const;

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        Bytes value;  // in the file's byte order
    };
    TiffDirectory& Add(std::uint16_t tag, std::uint16_t type, std::uint32_t count, Bytes value);

    std::vector<Entry> m_entries;  // in tag order; Add replaces an entry of the same tag
};

}  // namespace vliptc::bench
