// CVLEXIF: the field catalogue, its look-ups, and LoadFile (the reading of
// the file; the walk itself is in internal/ContainerWalk and IFDParser).

#include "exif/EXIF.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>
#include <vector>

#include "exif/internal/ContainerWalk.h"
#include "exif/internal/FieldCatalogue.h"
#include "platform/FileName.h"
#include "platform/MappedFile.h"

namespace {

constexpr std::array<std::string_view, 10> kSupportedExtensions{".JPG",  ".JPEG", ".JFIF", ".TIF", ".TIFF",
                                                                ".EXIF", ".THM",  ".PSD",  ".NEF", ".CRW"};

// The text shown for a resolution the file does not state: the 72 dots per
// inch that TIFF readers assume.
constexpr const char* kDefaultResolution = "72";

using SField = CVLEXIF::SField;

// The catalogue's order: by group, then by name byte by byte, a prefix first.
// Records of equal group and name (several "Unknown") keep no defined order.
bool CatalogueLess(const SField& a, const SField& b) {
    if (a.nGroup != b.nGroup) return a.nGroup < b.nGroup;
    return a.strName < b.strName;
}

// The fresh catalogue, and the order SortFields gives it, made once: every
// read starts from the former and mostly ends in the latter, which spares
// each read the building of a hundred names and the sort.
struct FreshCatalogue {
    std::vector<SField> fields;       // in the table's order
    std::vector<std::size_t> sorted;  // the indices of fields in sorted order
};

const FreshCatalogue& Fresh() {
    static const FreshCatalogue fresh = [] {
        FreshCatalogue made;
        made.fields.reserve(vliptc::exif::kCatalogueSize);
        for (const auto& row : vliptc::exif::CatalogueRows()) {
            SField field;
            field.nTag = row.tag;
            field.nType = row.type;
            field.strName = row.name;
            field.nGroup = CVLEXIF::kGroupGeneral;
            if (vliptc::exif::IsDateTag(field.nTag)) {
                field.bDate = true;
                field.nGroup = CVLEXIF::kGroupDate;
            } else if (vliptc::exif::IsGPSTag(field.nTag)) {
                field.bGPS = true;
                field.nGroup = CVLEXIF::kGroupGPS;
            }
            made.fields.push_back(std::move(field));
        }
        made.sorted.resize(made.fields.size());
        for (std::size_t i = 0; i < made.sorted.size(); ++i) made.sorted[i] = i;
        std::sort(made.sorted.begin(), made.sorted.end(), [&](std::size_t a, std::size_t b) {
            return CatalogueLess(made.fields[a], made.fields[b]);
        });
        return made;
    }();
    return fresh;
}

// Whether fields starts with the fresh catalogue's records in the table's
// order (values aside), as a read leaves it before the sort.
bool StartsWithFreshCatalogue(const std::vector<SField>& fields) {
    const std::vector<SField>& fresh = Fresh().fields;
    return fields.size() >= fresh.size() &&
           std::equal(fresh.begin(), fresh.end(), fields.begin(), [](const SField& a, const SField& b) {
               return a.nTag == b.nTag && a.nGroup == b.nGroup && a.strName == b.strName;
           });
}

// How much of a file LoadFile reads, step by step, before it maps it.
constexpr std::array<std::size_t, 2> kStartSteps{16 * 1024, 64 * 1024};

struct Walked {
    CVLEXIF::EError result = CVLEXIF::errOK;
    bool motorola = false;
    bool missed = false;        // the walk wanted bytes beyond those it was given,
    std::uint64_t missedEnd = 0;  // up to here
};

// The container walk over the first bytes of a file of size bytes.
Walked Walk(std::span<const std::uint8_t> start, std::size_t size, std::vector<SField>& fields) {
    vliptc::exif::ContainerWalk walk(start, size, fields);
    Walked walked;
    walked.result = walk.ParseEXIF();
    walked.motorola = walk.Motorola();
    walked.missed = walk.Missed();
    walked.missedEnd = walk.MissedEnd();
    return walked;
}

}  // namespace

CVLEXIF::CVLEXIF() { Reset(); }

void CVLEXIF::Reset() {
    bMotorola = false;
    SetupFieldVector();
}

void CVLEXIF::SetupFieldVector() {
    m_vFields = Fresh().fields;  // assigned element by element: the names keep their storage
}

void CVLEXIF::SortFields() {
    if (std::is_sorted(m_vFields.begin(), m_vFields.end(), CatalogueLess)) return;
    if (!StartsWithFreshCatalogue(m_vFields)) {
        std::sort(m_vFields.begin(), m_vFields.end(), CatalogueLess);
        return;
    }
    // The fresh catalogue takes its known order; the records a read added
    // behind it ("Unknown" tags) are sorted and merged in.
    const std::vector<std::size_t>& order = Fresh().sorted;
    std::vector<SField> sorted;
    sorted.reserve(m_vFields.size());
    for (const std::size_t i : order) sorted.push_back(std::move(m_vFields[i]));
    const auto added = m_vFields.begin() + static_cast<std::ptrdiff_t>(order.size());
    std::sort(added, m_vFields.end(), CatalogueLess);
    std::move(added, m_vFields.end(), std::back_inserter(sorted));
    std::inplace_merge(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(order.size()),
                       sorted.end(), CatalogueLess);
    m_vFields = std::move(sorted);
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
        switch (file.OpenFile(*target, vliptc::platform::MappedFile::Access::ReadOnly)) {
            case vliptc::platform::MappedFile::Status::Ok:
                break;
            case vliptc::platform::MappedFile::Status::CannotOpen:
                return errOpen;
            case vliptc::platform::MappedFile::Status::Empty:
                return errEmpty;
            case vliptc::platform::MappedFile::Status::CannotMap:
                return errMap;
        }
        // The end of the data is the start of the file plus the low 32 bits
        // of its size, as for the 32-bit system the format rules come from.
        const auto size = static_cast<std::size_t>(static_cast<std::uint32_t>(file.Size()));

        // The EXIF data of nearly every file lies in its first 64 KB (a JPEG's
        // APP1 segment cannot be longer), mostly in its first 16 KB: the walk
        // reads those first, a copy from the page cache that costs less than
        // mapping the file, and walks again over more of it only when it
        // wanted more: the first 64 KB if that holds what it wanted, else the
        // whole mapped file.
        thread_local std::vector<std::uint8_t> start(kStartSteps.back());
        std::size_t have = 0;
        Walked walked;
        for (const std::size_t step : kStartSteps) {
            const std::size_t want = std::min(size, step);
            if (walked.missed && want < walked.missedEnd) break;
            if (!file.ReadAt(have, std::span<std::uint8_t>(start.data() + have, want - have))) return errMap;
            have = want;
            walked = Walk(std::span<const std::uint8_t>(start.data(), have), size, m_vFields);
            if (!walked.missed) break;
            Reset();
        }
        if (walked.missed) {
            if (file.Map() != vliptc::platform::MappedFile::Status::Ok) return errMap;
            walked = Walk(file.Bytes().first(size), size, m_vFields);
        }
        bMotorola = walked.motorola;
        if (walked.result == errOK) SortFields();
        return walked.result;
    } catch (...) {
        // Out of memory, a host exception: the catalogue keeps what it holds.
        return errException;
    }
}
