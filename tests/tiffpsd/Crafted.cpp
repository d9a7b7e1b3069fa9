#include "tests/tiffpsd/Crafted.h"

#include <algorithm>
#include <map>
#include <span>

#include "host/ByteOrder.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/IPTCReader.h"

namespace vliptc::test {

using bytes::ByteOrder;

// ---- TIFF ---------------------------------------------------------------

TiffMaker::TiffMaker(bool bigEndian) : m_bigEndian(bigEndian) {
    m_bytes = bigEndian ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    m_bytes.resize(8, 0);
}

Bytes TiffMaker::Encode(std::initializer_list<std::uint32_t> values, int width) const {
    const ByteOrder order = m_bigEndian ? ByteOrder::kBigEndian : ByteOrder::kLittleEndian;
    Bytes out;
    for (auto v : values) {
        if (width == 2) {
            const auto b = bytes::Encode16(static_cast<std::uint16_t>(v), order);
            out.insert(out.end(), b.begin(), b.end());
        } else {
            const auto b = bytes::Encode32(v, order);
            out.insert(out.end(), b.begin(), b.end());
        }
    }
    return out;
}

TiffField TiffMaker::Short(std::uint16_t tag, std::initializer_list<std::uint32_t> values) const {
    return {tag, 3, static_cast<std::uint32_t>(values.size()), Encode16(values)};
}
TiffField TiffMaker::Long(std::uint16_t tag, std::initializer_list<std::uint32_t> values) const {
    return {tag, 4, static_cast<std::uint32_t>(values.size()), Encode32(values)};
}
TiffField TiffMaker::Ascii(std::uint16_t tag, const std::string& text) const {
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    return {tag, 2, static_cast<std::uint32_t>(value.size()), value};
}
TiffField TiffMaker::Rational(std::uint16_t tag, std::uint32_t numerator, std::uint32_t denominator) const {
    return {tag, 5, 1, Encode32({numerator, denominator})};
}

std::uint32_t TiffMaker::Append(const Bytes& data) {
    if (m_bytes.size() % 2 != 0) m_bytes.push_back(0);
    const auto offset = static_cast<std::uint32_t>(m_bytes.size());
    m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    return offset;
}

std::uint32_t TiffMaker::Reserve(std::size_t entries) { return Append(Bytes(2 + 12 * entries + 4, 0)); }

void TiffMaker::Fill(std::uint32_t offset, const std::vector<TiffField>& fields, std::uint32_t next) {
    Bytes directory = Encode16({static_cast<std::uint32_t>(fields.size())});
    for (const TiffField& field : fields) {
        const Bytes head = Encode16({field.tag, field.type});
        const Bytes count = Encode32({field.count});
        directory.insert(directory.end(), head.begin(), head.end());
        directory.insert(directory.end(), count.begin(), count.end());
        Bytes value = field.value;
        if (value.size() > 4) {
            value = Encode32({Append(field.value)});
        }
        value.resize(4, 0);
        directory.insert(directory.end(), value.begin(), value.end());
    }
    const Bytes link = Encode32({next});
    directory.insert(directory.end(), link.begin(), link.end());
    std::copy(directory.begin(), directory.end(), m_bytes.begin() + offset);
}

void TiffMaker::SetFirstDirectory(std::uint32_t offset) {
    const Bytes value = Encode32({offset});
    std::copy(value.begin(), value.end(), m_bytes.begin() + 4);
}

namespace {

struct RawEntry {
    std::uint16_t tag, type;
    std::uint32_t count, field;
    std::uint64_t position;
};

std::uint32_t Size(std::uint16_t type) {
    static const std::map<std::uint16_t, std::uint32_t> sizes = {{1, 1}, {2, 1},  {6, 1}, {7, 1},  {3, 2},
                                                                 {8, 2}, {4, 4},  {9, 4}, {11, 4}, {13, 4},
                                                                 {5, 8}, {10, 8}, {12, 8}};
    const auto it = sizes.find(type);
    return it == sizes.end() ? 0 : it->second;
}

// The chain and the EXIF/GPS directories, each as its raw entries (at most 64).
Bytes ValueOf(const Bytes& file, const RawEntry& e);
std::vector<std::uint32_t> Numbers(const Bytes& file, const RawEntry& e, ByteOrder order);

std::vector<std::vector<RawEntry>> Directories(const Bytes& file, ByteOrder& order) {
    order = file.size() > 1 && file[0] == 'M' ? ByteOrder::kBigEndian : ByteOrder::kLittleEndian;
    std::vector<std::vector<RawEntry>> out;
    std::vector<std::uint32_t> seen;
    auto read = [&](std::uint32_t offset) -> std::optional<std::uint32_t> {
        const auto count = bytes::Read16(file, offset, order);
        if (!count || offset == 0 || seen.size() == 64 ||
            std::find(seen.begin(), seen.end(), offset) != seen.end()) {
            return std::nullopt;
        }
        seen.push_back(offset);
        std::vector<RawEntry> entries;
        for (std::uint32_t i = 0; i < *count && bytes::InBounds(file.size(), offset + 2 + 12 * i, 12); ++i) {
            const std::uint64_t p = offset + 2 + 12 * i;
            entries.push_back({*bytes::Read16(file, p, order), *bytes::Read16(file, p + 2, order),
                               *bytes::Read32(file, p + 4, order), *bytes::Read32(file, p + 8, order), p});
        }
        out.push_back(entries);
        return bytes::Read32(file, offset + 2 + 12 * *count, order);
    };
    for (auto next = bytes::Read32(file, 4, order); next && *next != 0;) next = read(*next);
    // Directories reached from others: EXIF, GPS, sub-IFDs, interoperability.
    for (std::size_t d = 0; d < out.size(); ++d) {
        for (const RawEntry& e : std::vector<RawEntry>(out[d])) {
            if (e.tag == 34665 || e.tag == 34853 || e.tag == 40965) read(e.field);
            if (e.tag == 330) {
                for (const std::uint32_t offset : Numbers(file, e, order)) read(offset);
            }
        }
    }
    return out;
}

// The value's bytes; empty when they lie outside the file.
Bytes ValueOf(const Bytes& file, const RawEntry& e) {
    const std::uint64_t size = std::uint64_t{e.count} * Size(e.type);
    const auto value = bytes::Slice(file, size <= 4 ? e.position + 8 : e.field, size);
    return value ? Bytes(value->begin(), value->end()) : Bytes{};
}

std::vector<std::uint32_t> Numbers(const Bytes& file, const RawEntry& e, ByteOrder order) {
    const Bytes value = ValueOf(file, e);
    std::vector<std::uint32_t> out;
    for (std::size_t i = 0; i < e.count; ++i) {
        const auto n = e.type == 3 ? std::optional<std::uint32_t>(bytes::Read16(value, 2 * i, order))
                                   : bytes::Read32(value, 4 * i, order);
        if (n) out.push_back(*n);
    }
    return out;
}

}  // namespace

std::vector<std::vector<TiffValue>> TiffValues(const Bytes& file) {
    ByteOrder order;
    const auto directories = Directories(file, order);
    // Byte counts that go with each kind of offsets.
    const std::map<std::uint16_t, std::uint16_t> countsOf = {{273, 279}, {324, 325}, {288, 289}, {513, 514}};
    std::vector<std::vector<TiffValue>> out;
    for (const auto& entries : directories) {
        std::vector<TiffValue> values;
        for (const RawEntry& e : entries) {
            if (e.tag == 33723) continue;
            TiffValue value{e.tag, e.type, e.count, {}};
            if (countsOf.count(e.tag) != 0) {
                const auto counts = std::find_if(entries.begin(), entries.end(), [&](const RawEntry& c) {
                    return c.tag == countsOf.at(e.tag);
                });
                const auto offsets = Numbers(file, e, order);
                const auto lengths =
                    counts == entries.end() ? std::vector<std::uint32_t>{} : Numbers(file, *counts, order);
                for (std::size_t i = 0; i < offsets.size() && i < lengths.size(); ++i) {
                    if (const auto strip = bytes::Slice(file, offsets[i], lengths[i])) {
                        value.value.insert(value.value.end(), strip->begin(), strip->end());
                    }
                }
            } else if (e.tag != 34665 && e.tag != 34853 && e.tag != 40965 && e.tag != 330) {
                value.value = ValueOf(file, e);
            }
            values.push_back(value);
        }
        out.push_back(values);
    }
    return out;
}

std::vector<IptcEntryInfo> IptcEntries(const Bytes& file) {
    ByteOrder order;
    const auto directories = Directories(file, order);
    std::vector<IptcEntryInfo> out;
    for (std::size_t d = 0; d < directories.size(); ++d) {
        for (std::size_t i = 0; i < directories[d].size(); ++i) {
            const RawEntry& e = directories[d][i];
            if (e.tag == 33723) out.push_back({d, i, e.type, e.count, e.field});
        }
    }
    return out;
}

// ---- Photoshop documents ------------------------------------------------

Bytes MakePsd(const std::vector<Bytes>& records, const Bytes& colourMode) {
    Bytes out = {'8', 'B', 'P', 'S', 0, 1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 5, 0, 0, 0, 4, 0, 8, 0, 3};
    Put32(out, static_cast<std::uint32_t>(colourMode.size()));
    out.insert(out.end(), colourMode.begin(), colourMode.end());
    Bytes section;
    for (const Bytes& record : records) section.insert(section.end(), record.begin(), record.end());
    Put32(out, static_cast<std::uint32_t>(section.size()));
    return Cat({out, section, kPsdRest});
}

// ---- Reading back --------------------------------------------------------

namespace {

class Decoder : public CIPTC {
public:
    using CIPTC::DecodeIIM;
};

}  // namespace

std::optional<Datasets> ReadDatasets(const Bytes& file) {
    const bool psd = file.size() >= 4 && std::equal(file.begin(), file.begin() + 4, "8BPS");
    const iptc::LocateResult located = psd ? iptc::LocateInPSD(file) : iptc::LocateInTIFF(file);
    for (const iptc::BlockLocation& location : located.candidates) {
        Decoder decoder;
        const auto region = std::span<const std::uint8_t>(file).subspan(location.offset, location.size);
        CIPTCReader reader(region, true);  // IIM is big-endian in every container
        if (decoder.DecodeIIM(reader, region.size()) == CIPTC::kSuccess) return FromStore(decoder);
    }
    return std::nullopt;
}

}  // namespace vliptc::test
