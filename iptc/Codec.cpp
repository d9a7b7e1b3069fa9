// The IIM block codec: the store's field list to a record-2 dataset stream and
// back, and the walk over Photoshop image resources that finds the IPTC block.
//
// A dataset on the wire is the tag marker 0x1C, the record number, the dataset
// number, a 16-bit data length and the data. Only the standard length form is
// known here: a plain 16-bit length, no extended form.

#include <algorithm>
#include <array>
#include <cctype>
#include <climits>
#include <cstring>
#include <limits>
#include <optional>

#include "host/ByteOrder.h"
#include "host/VLFile.h"
#include "iptc/IPTC.h"
#include "iptc/internal/IPTCReader.h"

namespace {

using vliptc::bytes::ByteOrder;

constexpr std::uint8_t kTagMarker = 0x1C;         // starts every IIM dataset
constexpr std::uint8_t kApplicationRecord = 2;    // record 2, the only one read and written
constexpr std::uint8_t kRecordVersionDataset = 0;  // 2:00, binary, 2 bytes

// The record version is 2, written most-significant first. A block whose
// version reads 0x0200 was written least-significant first, and so are the
// lengths behind it.
constexpr std::uint16_t kLittleEndianVersion = 0x0200;
constexpr std::int16_t kLittleEndianVersionValue = 2;

// Every block starts with 2:00, length 2, value 2. These bytes do not follow
// the byte-order flag: readers recognise a block by them.
constexpr std::array<std::uint8_t, 7> kVersionDataset{kTagMarker, kApplicationRecord, kRecordVersionDataset,
                                                      0x00,       0x02,               0x00,
                                                      0x02};

// Photoshop image resources: "8BIM", a 16-bit identifier, a Pascal name padded
// to even length, a 32-bit data size and the data padded to even length.
constexpr std::array<char, 4> kResourceSignature{'8', 'B', 'I', 'M'};
constexpr std::uint16_t kIptcResourceId = 0x0404;  // the IPTC-NAA record

// The largest block that may go into a file; a larger one is reported as too
// large by the writers and nothing is written.
constexpr std::uint64_t kMaxBlockBytes = 65536;

// The initial capacity and growth step of the memory file a block is built in.
constexpr unsigned kBlockInitialBytes = 65536;
constexpr unsigned kBlockGrowBytes = 4096;

ByteOrder OrderOf(bool bigEndian) {
    return bigEndian ? ByteOrder::kBigEndian : ByteOrder::kLittleEndian;
}

// CVLMemFile::Write takes an unsigned count; a value is a std::string.
void WriteAll(CVLMemFile& file, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const auto chunk = static_cast<unsigned>(std::min<std::size_t>(size, UINT_MAX));
        file.Write(bytes, chunk);
        bytes += chunk;
        size -= chunk;
    }
}

// Four bytes compared with "8BIM" without regard to case; past the end
// ReadByte gives 255, which never matches.
bool ReadResourceSignature(CIPTCReader& reader) {
    bool match = true;
    for (const char expected : kResourceSignature) {
        const auto c = static_cast<unsigned char>(reader.ReadByte());
        match = match && std::toupper(c) == static_cast<unsigned char>(expected);
    }
    return match;
}

// A "%d" conversion at text: optional white space, an optional sign and at
// least one digit; nullopt when there is none. The dataset is the int
// converted to unsigned as the interfaces take it (a negative number names a
// dataset far beyond 255); a number that does not fit an int names none.
struct ParsedNumber {
    std::optional<std::uint32_t> dataset;
    const char* end;
};

std::optional<ParsedNumber> ParseDecimal(const char* text) {
    const char* p = text;
    while (std::isspace(static_cast<unsigned char>(*p))) {
        ++p;
    }
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    if (!std::isdigit(static_cast<unsigned char>(*p))) {
        return std::nullopt;
    }
    constexpr long long kLimit = static_cast<long long>(INT_MAX) + 1;
    long long magnitude = 0;
    bool overflow = false;
    for (; std::isdigit(static_cast<unsigned char>(*p)); ++p) {
        if (!overflow) {
            magnitude = magnitude * 10 + (*p - '0');
            overflow = magnitude > kLimit;
        }
    }
    const long long value = negative ? -magnitude : magnitude;
    if (overflow || value > INT_MAX || value < INT_MIN) {
        return ParsedNumber{std::nullopt, p};
    }
    return ParsedNumber{static_cast<std::uint32_t>(static_cast<int>(value)), p};
}

}  // namespace

bool CIPTC::BuildBlob(const FieldList& fields, SIPTCBlob& blob, bool bigEndian) const {
    const ByteOrder order = OrderOf(bigEndian);
    CVLMemFile file(false, kBlockInitialBytes, kBlockGrowBytes);
    blob.bBigEndian = bigEndian;
    WriteAll(file, kVersionDataset.data(), kVersionDataset.size());

    for (const SIPTCItem& item : fields) {
        if (item.nID == kRecordVersionDataset) {
            continue;  // the version is written above, never taken from the list
        }
        const std::array<std::uint8_t, 3> header{kTagMarker, kApplicationRecord,
                                                 static_cast<std::uint8_t>(item.nID & 0xFF)};
        for (const CVLProperty& value : item.vValues) {
            WriteAll(file, header.data(), header.size());
            if (value.GetKind() == CVLProperty::kNumber16) {
                // A binary number goes out as its two bytes with no length
                // field before it. Only the record version is ever decoded as
                // this kind, and it is skipped above; files written with this
                // layout exist, so the layout stays.
                const auto number = vliptc::bytes::Encode16(static_cast<std::uint16_t>(value.GetInt32()), order);
                WriteAll(file, number.data(), number.size());
            } else {
                WriteField_(file, value, bigEndian);
            }
        }
    }

    if (file.GetFileSize() % 2 != 0) {
        const std::uint8_t pad = 0x00;  // blocks always have an even length
        WriteAll(file, &pad, 1);
    }

    const auto size = static_cast<std::uint64_t>(file.GetFileSize());
    blob.pData = new std::uint8_t[size];
    std::memcpy(blob.pData, file.GetBuffer(0), size);
    blob.nSize = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, std::numeric_limits<std::uint32_t>::max()));
    return size <= kMaxBlockBytes;
}

// Text goes out as it is stored (no character-set conversion, no terminator)
// behind its 16-bit length. A text of more than 65,535 bytes is written whole
// behind the low 16 bits of its length; the block size check of the caller is
// what stops such a block from reaching a file.
void CIPTC::WriteField_(CVLMemFile& file, const CVLProperty& value, bool bigEndian) const {
    const std::string text = Translate(value);
    const auto length = vliptc::bytes::Encode16(static_cast<std::uint16_t>(text.size() & 0xFFFF), OrderOf(bigEndian));
    WriteAll(file, length.data(), length.size());
    WriteAll(file, text.data(), text.size());
}

// Walks the image resources of a section of size bytes from the reader's
// position, and decodes the first IPTC resource that holds record-2 data.
//   kSuccess            IPTC data decoded, or the walk met a resource whose
//                       size is 0 or cannot be read, which is taken as the
//                       end of the section whether or not IPTC came before
//   kUnsupportedFormat  no IPTC found: the section ended, a signature was not
//                       "8BIM", or a header ran out of data
CIPTC::EError CIPTC::DecodeImageResources(CIPTCReader& reader, std::uint64_t size) {
    const std::uint64_t end = vliptc::bytes::ClampedEnd(reader.Position(), size, reader.Size());
    EError result = kUnsupportedFormat;
    while (reader.Position() < end) {
        if (!ReadResourceSignature(reader)) {
            return result;
        }
        const auto id = reader.Read16();
        if (!id) {
            return kUnsupportedFormat;
        }
        // Pascal name: the length byte and the name together have even size.
        // Past the end the length reads as 255 and the name read fails.
        std::uint64_t nameLength = reader.ReadByte();
        if ((nameLength + 1) % 2 != 0) {
            ++nameLength;
        }
        if (!reader.ReadText(nameLength)) {
            return kUnsupportedFormat;
        }
        const auto dataSize = reader.Read32();
        if (!dataSize || *dataSize == 0) {
            return kSuccess;
        }
        if (*id == kIptcResourceId) {
            // Without record-2 data the walk goes on from wherever the IIM
            // scan stopped (no padding skipped).
            result = DecodeIIM(reader, *dataSize);
            if (result == kSuccess) {
                return kSuccess;
            }
        } else {
            reader.Skip(std::uint64_t{*dataSize} + (*dataSize % 2));
        }
    }
    return result;
}

// Decodes the record-2 datasets among size bytes of IIM data from the
// reader's position. kSuccess once any record-2 dataset was met, else
// kUnsupportedFormat.
//
// The scan resynchronises on every 0x1C byte and never skips a dataset by its
// length, so the data of other records are scanned byte by byte like anything
// else (a 0x1C inside them starts a dataset of its own). Values are bounded by
// the reader's region: a length beyond it drops the value and the scan goes on
// behind the length field. Repeated datasets keep their file order.
CIPTC::EError CIPTC::DecodeIIM(CIPTCReader& reader, std::uint64_t size) {
    const std::uint64_t end = vliptc::bytes::ClampedEnd(reader.Position(), size, reader.Size());
    EError result = kUnsupportedFormat;
    while (reader.Position() < end) {
        if (reader.ReadByte() != kTagMarker) {
            continue;
        }
        const std::uint8_t record = reader.ReadByte();
        const std::uint8_t dataset = reader.ReadByte();
        if (record != kApplicationRecord) {
            continue;
        }
        result = kSuccess;
        const auto length = reader.Read16();
        if (!length) {
            continue;
        }
        if (dataset == kRecordVersionDataset) {
            if (*length != 2) {
                continue;  // a version of another size carries nothing we use
            }
            const auto version = reader.Read16();
            if (!version) {
                continue;
            }
            CVLProperty value;
            if (*version == kLittleEndianVersion) {
                reader.SetSwap(false);  // every later number, lengths included
                value.SetNumber16(kLittleEndianVersionValue, CVLProperty::kNumber16LE);
            } else {
                value.SetNumber16(static_cast<std::int16_t>(*version), CVLProperty::kNumber16);
            }
            SetField(kRecordVersionDataset, value, true);
            continue;
        }
        auto text = reader.ReadText(*length);
        if (!text) {
            continue;
        }
        CVLProperty value;
        value.SetString(std::move(*text));
        SetField(dataset, value, false);
    }
    return result;
}

// "#" and a number as "%d" reads it is a placeholder for that dataset's values
// joined by "; " (nothing when the store has no item for it); any other "#"
// is copied. The digits are consumed with the number either way.
CIPTC::EError CIPTC::FormatIPTCString(const char* pattern, std::string& out) const {
    out.clear();
    if (pattern == nullptr) {
        return kSuccess;
    }
    const char* p = pattern;
    while (*p != '\0') {
        if (*p != '#') {
            out.push_back(*p++);
            continue;
        }
        const auto number = ParseDecimal(p + 1);
        if (!number) {
            out.push_back(*p++);
            continue;
        }
        p = number->end;
        std::vector<CVLProperty> values;
        if (number->dataset && GetField(*number->dataset, values)) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (i > 0) {
                    out += "; ";
                }
                out += values[i].String();
            }
        }
    }
    return kSuccess;
}
