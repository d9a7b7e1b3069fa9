#pragma once

// Crafted TIFF files and Photoshop documents for the container tests, built
// in code, plus an independent reader of what a TIFF's directories say (used
// to check that a rewrite kept every value) and the IPTC read-back path.

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "tests/containers/ContainerSupport.h"

namespace vliptc::test {

// ---- TIFF ---------------------------------------------------------------

struct TiffField {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    Bytes value;  // encoded in the file's byte order; out of line when longer than 4 bytes
};

// Appends pieces to a growing TIFF; offsets are known as soon as a piece is placed.
class TiffMaker {
public:
    explicit TiffMaker(bool bigEndian);

    Bytes Encode16(std::initializer_list<std::uint32_t> values) const { return Encode(values, 2); }
    Bytes Encode32(std::initializer_list<std::uint32_t> values) const { return Encode(values, 4); }
    TiffField Short(std::uint16_t tag, std::initializer_list<std::uint32_t> values) const;
    TiffField Long(std::uint16_t tag, std::initializer_list<std::uint32_t> values) const;
    TiffField Ascii(std::uint16_t tag, const std::string& text) const;
    TiffField Rational(std::uint16_t tag, std::uint32_t numerator, std::uint32_t denominator) const;

    // Places data at the end of the file (at an even offset) and returns its offset.
    std::uint32_t Append(const Bytes& data);
    // Places an empty directory of n entries; Fill writes it later.
    std::uint32_t Reserve(std::size_t entries);
    // Writes the directory at offset; out-of-line values go to the end of the file.
    void Fill(std::uint32_t offset, const std::vector<TiffField>& fields, std::uint32_t next = 0);
    void SetFirstDirectory(std::uint32_t offset);

    const Bytes& Data() const { return m_bytes; }

private:
    Bytes Encode(std::initializer_list<std::uint32_t> values, int width) const;

    bool m_bigEndian;
    Bytes m_bytes;
};

// What the directories of a TIFF say, read without the library's walker: per
// directory (the chain, then the EXIF and GPS directories) the entries with
// their resolved values. Offsets are replaced by what they point at: strips,
// tiles and free areas by their bytes, directory pointers by nothing (the
// directories are listed themselves), so that a file whose bytes moved
// compares equal when nothing it says changed. IPTC-NAA entries are left out.
struct TiffValue {
    std::uint16_t tag, type;
    std::uint32_t count;
    Bytes value;
    bool operator==(const TiffValue&) const = default;
};
std::vector<std::vector<TiffValue>> TiffValues(const Bytes& file);

// The IPTC-NAA entries on the chain: (directory index, entry index, type, count, offset).
struct IptcEntryInfo {
    std::size_t directory, index;
    std::uint16_t type;
    std::uint32_t count, offset;
};
std::vector<IptcEntryInfo> IptcEntries(const Bytes& file);

// ---- Photoshop documents ------------------------------------------------

// Header (3 channels, 4 x 5 pixels, 8 bits, RGB), colour-mode data, the
// resource records (see Resource), then a stand-in for the layer and image data.
Bytes MakePsd(const std::vector<Bytes>& records, const Bytes& colourMode = {1, 2, 3, 4});
inline const Bytes kPsdRest = {0, 0, 0, 0, 0, 0, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE};

// ---- Reading back --------------------------------------------------------

// The record-2 datasets of a TIFF or Photoshop file's first decodable IPTC
// place; nullopt when none.
std::optional<Datasets> ReadDatasets(const Bytes& file);

}  // namespace vliptc::test
