// CVLEXIF: the field catalogue, its look-ups, and LoadFile (the mapping of
// the file; the walk itself is in internal/ContainerWalk and IFDParser).

#include "exif/EXIF.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "exif/internal/ContainerWalk.h"
#include "platform/FileName.h"
#include "exif/internal/FieldCatalogue.h"
#include "platform/MappedFile.h"

namespace {

constexpr std::array<std::string_view, 10> kSupportedExtensions{".JPG",  ".JPEG", ".JFIF", ".TIF", ".TIFF",
                                                                ".EXIF", ".THM",  ".PSD",  ".NEF", ".CRW"};

// The text shown for a resolution the file does not state: the 72 dots per
// inch that TIFF readers assume.
constexpr const char* kDefaultResolution = "72";

}  // namespace

CVLEXIF::CVLEXIF() { Reset(); }

void CVLEXIF::Reset() {
    bMotorola = false;
    SetupFieldVector();
}

void CVLEXIF::SetupFieldVector() {
    m_vFields.clear();
    m_vFields.reserve(vliptc::exif::kCatalogueSize);
    for (const auto& row : vliptc::exif::CatalogueRows()) {
        SField field;
        field.nTag = row.tag;
        field.nType = row.type;
        field.strName = row.name;
        field.nGroup = kGroupGeneral;
        m_vFields.push_back(std::move(field));
    }
    for (SField& field : m_vFields) {
        if (vliptc::exif::IsDateTag(field.nTag)) {
            field.bDate = true;
            field.nGroup = kGroupDate;
        } else if (vliptc::exif::IsGPSTag(field.nTag)) {
            field.bGPS = true;
            field.nGroup = kGroupGPS;
        }
    }
}

void CVLEXIF::SortFields() {
    // Records of equal group and name (several "Unknown") keep no defined order.
    std::sort(m_vFields.begin(), m_vFields.end(), [](const SField& a, const SField& b) {
        if (a.nGroup != b.nGroup) return a.nGroup < b.nGroup;
        return a.strName < b.strName;  // byte by byte, a prefix first
    });
}

bool CVLEXIF::GetField(EFieldTags tag, SField*& field) {
    const auto it =
        std::find_if(m_vFields.begin(), m_vFields.end(), [tag](const SField& f) { return f.nTag == tag; });
    field = it == m_vFields.end() ? nullptr : &*it;
    return field != nullptr;
}

bool CVLEXIF::GetField(EFieldTags tag, const SField*& field) const {
    const auto it =
        std::find_if(m_vFields.begin(), m_vFields.end(), [tag](const SField& f) { return f.nTag == tag; });
    field = it == m_vFields.end() ? nullptr : &*it;
    return field != nullptr;
}

bool CVLEXIF::GetField(EFieldTags tag, SField& field) const {
    field = SField();
    field.nTag = kNoField;
    field.nType = kTypeUndefined;
    field.nGroup = kGroupGeneral;
    field.bPresent = true;
    const SField* found = nullptr;
    if (!GetField(tag, found)) return false;
    field = *found;
    return true;
}

bool CVLEXIF::GetDefault(const SField* field, std::string& text) const {
    if (field == nullptr || (field->nTag != kXResolution && field->nTag != kYResolution)) return false;
    text = kDefaultResolution;
    return true;
}

std::vector<const CVLEXIF::SField*> CVLEXIF::PresentFields() const {
    std::vector<const SField*> present;
    for (const SField& field : m_vFields) {
        if (field.bPresent) present.push_back(&field);
    }
    return present;
}

bool CVLEXIF::IsSupportedFormat(const char* path) const {
    if (path == nullptr) return false;
    const std::string extension = vliptc::platform::UpperExtension(path);
    return std::find(kSupportedExtensions.begin(), kSupportedExtensions.end(), extension) !=
           kSupportedExtensions.end();
}

CVLEXIF::EError CVLEXIF::LoadFile(const char* path) {
    try {
        // A ".CRW" is read through its companion; without one the read ends
        // before the catalogue is reset.
        const auto target = vliptc::platform::MetadataFileOf(path != nullptr ? path : "");
        if (!target) return errOpen;
        Reset();

        vliptc::platform::MappedFile file;
        switch (file.Open(*target, vliptc::platform::MappedFile::Access::ReadOnly)) {
            case vliptc::platform::MappedFile::Status::Ok:
                break;
            case vliptc::platform::MappedFile::Status::CannotOpen:
                return errOpen;
            case vliptc::platform::MappedFile::Status::Empty:
                return errEmpty;
            case vliptc::platform::MappedFile::Status::CannotMap:
                return errMap;
        }
        // The end of the data is the mapping plus the low 32 bits of the size,
        // as for the 32-bit system the format rules come from.
        const auto bytes =
            file.Bytes().first(static_cast<std::size_t>(static_cast<std::uint32_t>(file.Size())));
        vliptc::exif::ContainerWalk walk(bytes, m_vFields);
        const EError result = walk.ParseEXIF();
        bMotorola = walk.Motorola();
        if (result == errOK) SortFields();
        return result;
    } catch (...) {
        // Out of memory, a host exception: the catalogue keeps what it holds.
        return errException;
    }
}
