#include "exif/internal/IFDParser.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "exif/internal/FieldCatalogue.h"
#include "host/ByteOrder.h"
#include "host/Limits.h"

namespace vliptc::exif {
namespace {

using bytes::ByteOrder;

// Pointer tags of a TIFF directory.
constexpr std::uint16_t kTagExifIFD = 0x8769;     // 34665, the EXIF directory
constexpr std::uint16_t kTagGPSIFD = 0x8825;      // 34853, the GPS directory
constexpr std::uint16_t kTagInteropIFD = 0xA005;  // 40965, the interoperability directory

// The TIFF header: "II" or "MM", then 42 in that byte order.
constexpr std::uint8_t kLittleEndianMark = 0x49;  // 'I'
constexpr std::uint8_t kBigEndianMark = 0x4D;     // 'M'
constexpr std::uint16_t kTIFFMagic = 42;

constexpr std::uint64_t kEntryBytes = 12;

// Value counts: a BYTE entry longer than this is kept as one blob; an entry
// of kMaxValues or more values stores nothing.
constexpr std::uint32_t kMaxByteValues = 1000;
constexpr std::uint32_t kMaxValues = 65536;

// "User Comment" starts with an 8-byte character code.
constexpr std::uint32_t kCommentCodeBytes = 8;

// The value field holds the data itself when it takes at most this many bytes.
constexpr std::uint64_t kValueFieldBytes = 4;

bool IsXPTag(std::uint32_t tag) { return tag >= CVLEXIF::kXPTitle && tag <= CVLEXIF::kXPSubject; }

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualsNoCase(const std::string& text, const char* word) {
    const std::string_view other(word);
    return text.size() == other.size() &&
           std::equal(text.begin(), text.end(), other.begin(),
                      [](char a, char b) { return UpperAscii(a) == UpperAscii(b); });
}

// Bytes up to the first zero byte.
std::string ZeroTerminated(std::span<const std::uint8_t> data) {
    const auto zero = std::find(data.begin(), data.end(), std::uint8_t{0});
    return std::string(data.begin(), zero);
}

// Little-endian UTF-16 units, at most maxUnits of them, up to the first zero
// unit or the last whole unit of the data.
std::u16string Utf16Text(std::span<const std::uint8_t> data, std::uint64_t maxUnits) {
    std::u16string text;
    for (std::uint64_t i = 0; i < maxUnits; ++i) {
        const auto unit = bytes::Read16(data, 2 * i, ByteOrder::kLittleEndian);
        if (!unit || *unit == 0) break;
        text.push_back(static_cast<char16_t>(*unit));
    }
    return text;
}

CVLProperty Text(std::string text) {
    CVLProperty value;
    value.SetString(std::move(text));
    return value;
}

CVLProperty WideText(const std::u16string& text) {
    CVLProperty value;
    value.SetString(text.c_str());
    return value;
}

CVLProperty Blob(std::span<const std::uint8_t> data) {
    CVLProperty value;
    value.SetBlob(data.data(), static_cast<std::uint32_t>(data.size()));
    return value;
}

CVLProperty Integer(std::int32_t number) {
    CVLProperty value;
    value.SetInt32(number);
    return value;
}

}  // namespace

std::uint32_t TypeSize(std::uint32_t type) noexcept {
    // BYTE ASCII SHORT LONG RATIONAL SBYTE UNDEFINED SSHORT SLONG SRATIONAL FLOAT DOUBLE
    static constexpr std::array<std::uint8_t, 13> kSizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < kSizes.size() ? kSizes[type] : 0;
}

IFDParser::IFDParser(ExifStream& stream, std::vector<CVLEXIF::SField>& fields)
    : m_stream(stream),
      m_fields(fields),
      m_valuesLeft(limits::kMaxExifValuesPerRead),
      m_bytesLeft(limits::kMaxExifBytesPerRead) {
    // Known tags are found at their creation position when the catalogue is
    // in creation order (as Reset leaves it); every other record is indexed.
    const auto rows = CatalogueRows();
    m_creationOrder =
        fields.size() >= rows.size() &&
        std::equal(rows.begin(), rows.end(), fields.begin(),
                   [](const CatalogueRow& row, const CVLEXIF::SField& f) { return row.tag == f.nTag; });
    for (std::size_t i = m_creationOrder ? rows.size() : 0; i < fields.size(); ++i) {
        m_index.emplace(fields[i].nTag, i);  // the first record of a tag wins
    }
}

CVLEXIF::SField* IFDParser::Find(std::uint32_t tag) {
    if (m_creationOrder) {
        if (const auto position = CataloguePosition(tag)) return &m_fields[*position];
    }
    const auto it = m_index.find(tag);
    return it == m_index.end() ? nullptr : &m_fields[it->second];
}

CVLEXIF::SField& IFDParser::AppendUnknown(std::uint32_t tag) {
    CVLEXIF::SField field;
    field.nTag = tag;
    field.nType = CVLEXIF::kTypeUndefined;
    field.strName = "Unknown";
    field.nGroup = CVLEXIF::kGroupGeneral;
    m_index.emplace(tag, m_fields.size());
    m_fields.push_back(std::move(field));
    return m_fields.back();
}

bool IFDParser::CountDirectory() {
    if (m_directories >= limits::kMaxTiffDirectories) return false;
    ++m_directories;
    return true;
}

bool IFDParser::Spend(std::uint64_t values, std::uint64_t bytes) {
    if (values > m_valuesLeft || bytes > m_bytesLeft) return false;
    m_valuesLeft -= values;
    m_bytesLeft -= bytes;
    return true;
}

std::optional<CVLEXIF::SIFDEntry> IFDParser::ReadIFD(std::uint64_t offset) const {
    const auto tag = m_stream.ReadWord(offset);
    const auto type = m_stream.ReadWord(offset + 2);
    const auto count = m_stream.ReadDWord(offset + 4);
    const auto value = m_stream.ReadDWord(offset + 8);
    if (!tag || !type || !count || !value) return std::nullopt;
    return CVLEXIF::SIFDEntry{*tag, *type, *count, *value};
}

std::optional<CVLEXIF::STIFFHeader> IFDParser::ReadTIFFHeader() {
    const std::uint64_t tiff = m_stream.Position();
    m_stream.SetTIFFStart(tiff);
    const auto first = m_stream.ReadByte(tiff);
    const auto second = m_stream.ReadByte(tiff + 1);
    const bool little = first == kLittleEndianMark && second == kLittleEndianMark;
    const bool big = first == kBigEndianMark && second == kBigEndianMark;
    m_stream.SetMotorola(!little);
    const auto magic = m_stream.ReadWord(tiff + 2);
    const auto firstDirectory = m_stream.ReadDWord(tiff + 4);
    if ((!little && !big) || magic != kTIFFMagic || !firstDirectory) return std::nullopt;
    return CVLEXIF::STIFFHeader{m_stream.ReadWord(tiff).value_or(0), *magic, *firstDirectory};
}

CVLEXIF::EError IFDParser::HandleEXIFNormal() {
    const auto header = ReadTIFFHeader();
    if (!header) return CVLEXIF::errFormat;
    const std::uint64_t tiff = m_stream.TIFFStart();

    std::uint64_t directory = tiff + header->nIFDOffset;
    if (directory >= m_stream.Size()) return CVLEXIF::errOK;  // nothing to read, nothing wrong

    // Found: a catalogued tag or an EXIF/GPS pointer was met. A chain of
    // unknown tags only is not EXIF data.
    bool found = false;
    for (;;) {
        // A directory met again would store nothing new: the chain ends there,
        // as it does when the directory cap is spent.
        if (std::find(m_chain.begin(), m_chain.end(), directory) != m_chain.end() || !CountDirectory()) {
            return found ? CVLEXIF::errOK : CVLEXIF::errFormat;
        }
        m_chain.push_back(directory);
        m_stream.SetPosition(directory);

        // A count or link that passes the end of the file is absent: no
        // entries, no next directory.
        const std::uint32_t count = m_stream.ReadWord(directory).value_or(0);
        const std::uint32_t read = std::min(count, limits::kMaxTiffEntriesPerDirectory);
        for (std::uint32_t i = 0; i < read; ++i) {
            const auto entry = ReadIFD(directory + 2 + kEntryBytes * i);
            if (!entry) break;  // this entry and all after it pass the end
            switch (entry->nTag) {
                case kTagExifIFD:
                    found = true;
                    ParseExifAttr(tiff + entry->nValue);
                    break;
                case kTagGPSIFD:
                    found = true;
                    ParseExifGPS(tiff + entry->nValue);
                    break;
                case kTagInteropIFD:
                    break;  // the interoperability directory is not read
                default:
                    if (!found && Find(entry->nTag) != nullptr) found = true;
                    SetField(entry->nTag, tiff, *entry, false);
                    break;
            }
        }
        const std::uint32_t next = m_stream.ReadDWord(directory + 2 + kEntryBytes * count).value_or(0);
        if (next == 0) return found ? CVLEXIF::errOK : CVLEXIF::errFormat;
        directory = tiff + next;
        if (directory >= m_stream.Size()) return CVLEXIF::errFormat;
    }
}

void IFDParser::ParseExifAttr(std::uint64_t directory) { ParseSubDirectory(directory, false); }

void IFDParser::ParseExifGPS(std::uint64_t directory) { ParseSubDirectory(directory, true); }

void IFDParser::ParseSubDirectory(std::uint64_t directory, bool gps) {
    static_assert(limits::kMaxExifDirectoryDepth == 1, "the directories pointed to are read flat");
    if (!CountDirectory()) return;
    const std::uint32_t count = m_stream.ReadWord(directory).value_or(0);
    const std::uint32_t read = std::min(count, limits::kMaxTiffEntriesPerDirectory);
    const std::uint64_t tiff = m_stream.TIFFStart();
    for (std::uint32_t i = 0; i < read; ++i) {
        const auto entry = ReadIFD(directory + 2 + kEntryBytes * i);
        if (!entry) return;
        SetField(entry->nTag, tiff, *entry, gps);
    }
}

void IFDParser::SetField(std::uint32_t tag, std::uint64_t tiff, const CVLEXIF::SIFDEntry& entry, bool gps) {
    CVLEXIF::SField* field = Find(tag);
    if (field != nullptr && !field->vValues.empty()) return;  // the first occurrence wins
    std::vector<CVLProperty> values;
    if (!DecodeValues(tag, tiff, entry, values)) return;
    if (field == nullptr) field = &AppendUnknown(tag);
    field->bGPS = gps;
    field->bPresent = true;
    field->vValues = std::move(values);
}

bool IFDParser::DecodeValues(std::uint32_t tag, std::uint64_t tiff, const CVLEXIF::SIFDEntry& entry,
                             std::vector<CVLProperty>& values) {
    const std::uint32_t count = entry.nCount;
    const std::uint64_t total = std::uint64_t{TypeSize(entry.nType)} * count;
    const bool motorola = m_stream.Motorola();

    // Where the values are read. Data of more than 4 bytes lies at its offset
    // from the TIFF header, and may run to the end of the file. Shorter data
    // is read from the value field as decoded in the file's byte order, laid
    // out least-significant byte first: in file order for little-endian files,
    // reversed for big-endian ones. Only the version texts undo that.
    const auto field = bytes::Encode32(entry.nValue, ByteOrder::kLittleEndian);
    const bool inField = total <= kValueFieldBytes;
    const std::uint64_t offset = tiff + entry.nValue;
    // The n bytes of the data from its start + skip; nullopt makes the entry absent.
    const auto need = [&](std::uint64_t n, std::uint64_t skip = 0) {
        return inField ? bytes::Slice(field, skip, n) : m_stream.Bytes(offset + skip, n);
    };
    // UTF-16 text from the data's start + skip: at most maxUnits units, up to
    // the last whole unit before the end of the value field or of the file;
    // nullopt when those bytes are not at hand.
    const auto wide = [&](std::uint64_t skip, std::uint64_t maxUnits) -> std::optional<std::u16string> {
        const std::uint64_t at = inField ? skip : offset + skip;
        const std::uint64_t end = inField ? field.size() : m_stream.Size();
        const std::uint64_t room = at <= end ? end - at : 0;
        const auto units = need(std::min(2 * maxUnits, room & ~std::uint64_t{1}), skip);
        if (!units) return std::nullopt;
        return Utf16Text(*units, maxUnits);
    };

    if (entry.nType == CVLEXIF::kTypeByte && count > kMaxByteValues) {
        const auto blob = need(count);
        if (!blob || !Spend(1, count)) return false;
        values.push_back(Blob(*blob));
        return true;
    }
    if (count == 0 || count >= kMaxValues) return true;  // present, nothing stored

    if (IsXPTag(tag)) {
        // UTF-16 text of (type size x count) units: twice the bytes the entry
        // declares, stopped at the first zero unit.
        if (!need(total)) return false;
        const auto text = wide(0, total);
        if (!text || !Spend(1, text->size())) return false;
        values.push_back(WideText(*text));
        return true;
    }

    switch (entry.nType) {
        case CVLEXIF::kTypeByte: {
            const auto bytes = need(count);
            if (!bytes || !Spend(count, 0)) return false;
            for (const std::uint8_t byte : *bytes) values.push_back(Integer(byte));
            return true;
        }
        case CVLEXIF::kTypeAscii: {
            const auto chars = need(count);
            if (!chars) return false;
            std::string text = ZeroTerminated(*chars);
            if (!Spend(1, text.size())) return false;
            values.push_back(Text(std::move(text)));
            return true;
        }
        case CVLEXIF::kTypeShort: {
            // Always the value field, every element a copy of its first SHORT.
            if (!Spend(count, 0)) return false;
            const auto half =
                static_cast<std::uint16_t>(motorola ? entry.nValue >> 16 : entry.nValue & 0xFFFF);
            values.assign(count, Integer(static_cast<std::int16_t>(half)));
            return true;
        }
        case CVLEXIF::kTypeLong:
        case CVLEXIF::kTypeSLong:
            if (!Spend(count, 0)) return false;
            values.assign(count, Integer(static_cast<std::int32_t>(entry.nValue)));
            return true;
        case CVLEXIF::kTypeRational:
        case CVLEXIF::kTypeSRational: {
            // Numerator and denominator both signed, for the unsigned type too.
            const auto pairs = need(total);
            if (!pairs || !Spend(count, 0)) return false;
            values.reserve(count);
            for (std::uint64_t i = 0; i < count; ++i) {
                const auto numerator =
                    static_cast<std::int32_t>(*bytes::Read32(*pairs, 8 * i, m_stream.PointerOrder()));
                const auto denominator =
                    static_cast<std::int32_t>(*bytes::Read32(*pairs, 8 * i + 4, m_stream.PointerOrder()));
                CVLProperty value;
                value.SetDouble(denominator == 0 ? 0.0 : static_cast<double>(numerator) / denominator);
                values.push_back(std::move(value));
            }
            return true;
        }
        case CVLEXIF::kTypeUndefined:
            switch (tag) {
                case CVLEXIF::kExifVersion:
                case CVLEXIF::kFlashPixVersion: {
                    // Four characters ("0220") from the value field in file order.
                    const auto chars = bytes::Encode32(
                        entry.nValue, motorola ? ByteOrder::kBigEndian : ByteOrder::kLittleEndian);
                    if (!Spend(1, chars.size())) return false;
                    values.push_back(Text(ZeroTerminated(chars)));
                    return true;
                }
                case CVLEXIF::kUserComment: {
                    const auto comment = need(total);
                    if (!comment) return false;
                    if (count < kCommentCodeBytes) {
                        // Too short to hold its character code: empty text.
                        if (!Spend(1, 0)) return false;
                        values.push_back(Text(std::string()));
                        return true;
                    }
                    // The code names the character set: "UNICODE" (and "JIS",
                    // deliberately) is UTF-16, anything else 8-bit text.
                    const std::string code = ZeroTerminated(comment->first(kCommentCodeBytes));
                    const std::uint32_t rest = count - kCommentCodeBytes;
                    if (EqualsNoCase(code, "UNICODE") || EqualsNoCase(code, "JIS")) {
                        const auto text = wide(kCommentCodeBytes, rest);
                        if (!text || !Spend(1, text->size())) return false;
                        values.push_back(WideText(*text));
                    } else {
                        std::string text = ZeroTerminated(comment->subspan(kCommentCodeBytes));
                        if (!Spend(1, text.size())) return false;
                        values.push_back(Text(std::move(text)));
                    }
                    return true;
                }
                case CVLEXIF::kFileSource:
                case CVLEXIF::kSceneType: {
                    // The value field's first byte as decimal text ("3").
                    std::string text = std::to_string(field[0]);
                    if (!Spend(1, text.size())) return false;
                    values.push_back(Text(std::move(text)));
                    return true;
                }
                default: {
                    // "Maker Note" and every other UNDEFINED field: one blob.
                    const auto blob = need(total);
                    if (!blob || !Spend(1, total)) return false;
                    values.push_back(Blob(*blob));
                    return true;
                }
            }
        default:
            // SBYTE, SSHORT, FLOAT, DOUBLE and unknown types: one blob of count
            // bytes when the value field is below 65536, else count empty values.
            if (entry.nValue < kMaxValues) {
                const auto blob = need(count);
                if (!blob || !Spend(1, count)) return false;
                values.push_back(Blob(*blob));
            } else {
                if (!Spend(count, 0)) return false;
                values.resize(count);
            }
            return true;
    }
}

std::optional<TagLocation> IFDParser::FindTag(std::uint32_t tag, const CVLEXIF::STIFFHeader& header) const {
    const std::uint64_t tiff = m_stream.TIFFStart();
    const std::uint64_t size = m_stream.Size();

    // The entry at offset when it carries the tag, with its value inside the file.
    const auto locate = [&](std::uint64_t offset) -> std::optional<TagLocation> {
        const auto entry = ReadIFD(offset);
        if (!entry || entry->nTag != tag) return std::nullopt;
        const std::uint64_t total = std::uint64_t{TypeSize(entry->nType)} * entry->nCount;
        const std::uint64_t value = total > kValueFieldBytes ? tiff + entry->nValue : offset + 8;
        if (!bytes::InBounds(size, value, std::max(total, kValueFieldBytes))) return std::nullopt;
        return TagLocation{*entry, value};
    };
    const auto entries = [&](std::uint64_t directory) {
        return std::min<std::uint32_t>(m_stream.ReadWord(directory).value_or(0),
                                       limits::kMaxTiffEntriesPerDirectory);
    };

    std::vector<std::uint64_t> chain;
    std::uint64_t directory = tiff + header.nIFDOffset;
    while (directory < size && chain.size() < limits::kMaxTiffDirectories &&
           std::find(chain.begin(), chain.end(), directory) == chain.end()) {
        chain.push_back(directory);
        const std::uint32_t count = m_stream.ReadWord(directory).value_or(0);
        const std::uint32_t read = entries(directory);
        for (std::uint32_t i = 0; i < read; ++i) {
            const std::uint64_t offset = directory + 2 + kEntryBytes * i;
            const auto entry = ReadIFD(offset);
            if (!entry) break;
            if (entry->nTag == tag) return locate(offset);
            if (entry->nTag != kTagExifIFD && entry->nTag != kTagGPSIFD) continue;
            const std::uint64_t sub = tiff + entry->nValue;
            const std::uint32_t subRead = entries(sub);
            for (std::uint32_t j = 0; j < subRead; ++j) {
                const std::uint64_t subOffset = sub + 2 + kEntryBytes * j;
                const auto subEntry = ReadIFD(subOffset);
                if (!subEntry) break;
                if (subEntry->nTag == tag) return locate(subOffset);
            }
        }
        const std::uint32_t next = m_stream.ReadDWord(directory + 2 + kEntryBytes * count).value_or(0);
        if (next == 0) break;
        directory = tiff + next;
    }
    return std::nullopt;
}

}  // namespace vliptc::exif
