#include "exif/internal/DatePatch.h"

#include <algorithm>
#include <array>
#include <optional>

#include "host/ByteOrder.h"

namespace vliptc::exif {
namespace {

// The fields written, in the order they are written.
constexpr std::array<CVLEXIF::EFieldTags, 3> kWritableDates{CVLEXIF::kDateTime, CVLEXIF::kDateTimeOriginal,
                                                            CVLEXIF::kDateTimeDigitized};

// "YYYY:MM:DD HH:MM:SS" and the zero that ends it.
constexpr std::size_t kDateTextLength = 19;
constexpr std::uint32_t kDateValueBytes = 20;

// The text to write for the tag: the record's first value when it is text
// of the date's length.
std::optional<std::string> DateText(const CVLEXIF& exif, CVLEXIF::EFieldTags tag) {
    CVLEXIF::SField field;
    if (!exif.GetField(tag, field) || field.vValues.empty()) return std::nullopt;
    const CVLProperty& value = field.vValues.front();
    if (value.GetKind() != CVLProperty::kText) return std::nullopt;
    std::string text = value.String();
    if (text.size() != kDateTextLength) return std::nullopt;
    return text;
}

}  // namespace

DatePatch::DatePatch(std::span<std::uint8_t> file, CVLEXIF& exif)
    : ContainerWalk(file, file.size(), exif.Fields(), Purpose::kWrite), m_file(file), m_exif(exif) {}

CVLEXIF::EError DatePatch::ParseEXIFforWrite() {
    m_writes.clear();
    const CVLEXIF::EError result = ParseEXIF();
    if (result != CVLEXIF::errOK) return result;
    for (const DateWrite& write : m_writes) {
        const auto value = m_file.subspan(static_cast<std::size_t>(write.offset), kDateValueBytes);
        std::fill(value.begin(), value.end(), std::uint8_t{0});
        std::copy(write.text.begin(), write.text.end(), value.begin());
    }
    return CVLEXIF::errOK;
}

CVLEXIF::EError DatePatch::ProcessEXIF(bool atTiffHeader) { return ProcessEXIFforWrite(atTiffHeader); }

CVLEXIF::EError DatePatch::ProcessEXIFforWrite(bool atTiffHeader) {
    if (!atTiffHeader && !SkipExifIdentifier()) return CVLEXIF::errFormat;
    const auto header = m_ifd.ReadTIFFHeader();
    if (!header) return CVLEXIF::errFormat;

    for (const CVLEXIF::EFieldTags tag : kWritableDates) {
        const auto location = m_ifd.FindTag(tag, *header);
        if (!location) continue;  // a date the file lacks is never added
        if (location->entry.nType != CVLEXIF::kTypeAscii || location->entry.nCount < kDateValueBytes ||
            !bytes::InBounds(m_file.size(), location->valueOffset, kDateValueBytes)) {
            continue;
        }
        auto text = DateText(m_exif, tag);
        if (text) m_writes.push_back(DateWrite{location->valueOffset, std::move(*text)});
    }
    return CVLEXIF::errOK;
}

}  // namespace vliptc::exif
