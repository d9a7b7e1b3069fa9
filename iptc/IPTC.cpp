// The record store of CIPTC: lifecycle, the field list, the forwarders to the
// tag store and the format-by-extension queries. The block codec, the dates and
// the container readers and writers live in their own sources.

#include "iptc/IPTC.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

// File names of the configuration files, relative to their folders.
constexpr std::string_view kTemplateFileName = "vliptctmpl.dat";

// Extensions are compared upper-cased with plain ASCII rules, so the result
// does not depend on the user's locale.
std::string UpperExtension(const char* path) {
    if (path == nullptr) return {};
    const char* dot = std::strrchr(path, '.');
    if (dot == nullptr) return {};
    std::string ext(dot);
    for (char& c : ext) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return ext;
}

struct ExtensionFormat {
    std::string_view ext;
    CIPTC::SIPTCFormatInfo info;
};

// JPEG and Photoshop store their numbers most-significant byte first; a TIFF
// reader learns the byte order from the file, so by name it starts as "II".
constexpr std::array<ExtensionFormat, 8> kFormatsByExtension{{
    {".JPG", {CIPTC::kFormatJPEG, true}},
    {".JPEG", {CIPTC::kFormatJPEG, true}},
    {".JFIF", {CIPTC::kFormatJPEG, true}},
    {".TIF", {CIPTC::kFormatTIFF, false}},
    {".TIFF", {CIPTC::kFormatTIFF, false}},
    {".EXIF", {CIPTC::kFormatTIFF, false}},
    {".THM", {CIPTC::kFormatTIFF, false}},
    {".PSD", {CIPTC::kFormatPSD, true}},
}};

// A ".CRW" raw file carries no IPTC itself; its ".thm" companion is edited in
// its place, so it counts as supported without having a format of its own.
constexpr std::string_view kRawWithCompanionExtension = ".CRW";

}  // namespace

std::string WithTrailingSeparator(const std::string& folder) {
    // An empty folder stays empty: the files are then looked up by bare name,
    // in the current folder. Appending "\" here would name a file "\x" on
    // POSIX systems instead.
    if (folder.empty()) return folder;
    const char last = folder.back();
    if (last == '/' || last == '\\') return folder;
    return folder + (folder.find('/') != std::string::npos ? '/' : '\\');
}

// ---------------------------------------------------------------------------
// Lifecycle

CIPTC::EError CIPTC::Initialize(const std::string& definitionFolder, const std::string& userFolder) {
    m_definitionFolder = definitionFolder;
    m_userFolder = userFolder;
    m_templatePath = WithTrailingSeparator(userFolder) + std::string(kTemplateFileName);

    if (!m_tags.Load(WithTrailingSeparator(definitionFolder), WithTrailingSeparator(userFolder))) {
        // A failed start leaves the flag as it was: a store that was running
        // keeps running on the definitions it had.
        return kNotInitialized;
    }
    // A damaged template file must not stop the editor from starting; it then
    // simply offers no templates.
    static_cast<void>(LoadTemplates(m_templatePath));
    m_initialized = true;
    return kSuccess;
}

CIPTC::EError CIPTC::ShutDown() {
    // Nothing is saved here: the host calls SaveChanges first when it wants to
    // keep its changes. Fields, tags and templates stay in memory.
    m_initialized = false;
    return kSuccess;
}

CIPTC::EError CIPTC::SaveChanges() {
    if (m_initialized) {
        // Neither result is reported: the caller has no way to act on a failed
        // save of the configuration files at this point.
        static_cast<void>(m_tags.StoreUserLists());
        static_cast<void>(SaveTemplates(m_templatePath));
    }
    return kSuccess;
}

bool CIPTC::IsDirty() const {
    // Templates do not count: StoreTemplate writes the file at once, and a
    // deletion is meant to wait for SaveChanges.
    return !m_initialized || m_tags.IsDirty();
}

// ---------------------------------------------------------------------------
// The field list

CIPTC::SIPTCItem* CIPTC::Field(std::uint32_t id) {
    const auto it = std::find_if(m_fields.begin(), m_fields.end(),
                                 [id](const SIPTCItem& item) { return item.nID == id; });
    return it == m_fields.end() ? nullptr : &*it;
}

void CIPTC::SetField(std::uint32_t id, const CVLProperty& value, bool replace) {
    // The value may be one of the store's own values (the caller passing
    // Fields()[i].vValues[j]); copy it before the list changes under it.
    CVLProperty copy = value;
    if (SIPTCItem* item = Field(id)) {
        // Repeatability is the editors' business: the store always appends.
        if (replace) item->vValues.clear();
        item->vValues.push_back(std::move(copy));
        return;
    }
    // Datasets that no descriptor names go behind all described ones.
    SIPTCItem added;
    added.nID = id;
    added.vValues.push_back(std::move(copy));
    m_fields.push_back(std::move(added));
}

void CIPTC::SetField(std::uint32_t id, const std::vector<CVLProperty>& values) {
    if (SIPTCItem* item = Field(id)) {
        if (&item->vValues != &values) item->vValues = values;
        return;
    }
    // Copy before appending: values may belong to another item of this list,
    // which the append may move.
    SIPTCItem added;
    added.nID = id;
    added.vValues = values;
    m_fields.push_back(std::move(added));
}

bool CIPTC::GetField(std::uint32_t id, std::vector<CVLProperty>& values) const {
    const auto it = std::find_if(m_fields.begin(), m_fields.end(),
                                 [id](const SIPTCItem& item) { return item.nID == id; });
    if (it == m_fields.end()) {
        values.clear();
        return false;
    }
    // Assignment empties the out sequence and copies; asked for an item's own
    // values, the caller already holds them.
    if (&it->vValues != &values) values = it->vValues;
    return true;
}

void CIPTC::ResetFields() {
    const auto& tags = m_tags.Tags();
    FieldList fields;
    fields.reserve(tags.size());
    for (const auto& tag : tags) {
        SIPTCItem item;
        item.nID = tag.nID;
        fields.push_back(std::move(item));
    }
    m_fields = std::move(fields);
}

// ---------------------------------------------------------------------------
// Tag definitions, user lists and synonyms

// Always true; before a successful Initialize the copy is simply empty.
bool CIPTC::GetDescriptors(std::vector<CVLIPTCINI::STagInfo>& tags) const {
    tags = m_tags.Tags();
    return true;
}

bool CIPTC::GetDescriptor(std::uint32_t id, CVLIPTCINI::STagInfo& tag) const {
    return m_tags.GetDescriptor(id, tag);
}

bool CIPTC::GetUserList(std::uint32_t id, std::vector<CVLProperty>& values) const {
    return m_tags.GetUserList(id, values);
}

bool CIPTC::SetUserList(std::uint32_t id, const std::vector<CVLProperty>& values) {
    return m_tags.SetUserList(id, values);
}

bool CIPTC::GetSynonymList(std::uint32_t id, CVLIPTCINI::SynonymList& synonyms) const {
    return m_tags.GetSynonymList(id, synonyms);
}

bool CIPTC::SetSynonymList(std::uint32_t id, const CVLIPTCINI::SynonymList& synonyms) {
    return m_tags.SetSynonymList(id, synonyms);
}

bool CIPTC::GetSynonyms(std::uint32_t id, const CVLProperty& word, std::vector<CVLProperty>& synonyms) const {
    return m_tags.GetSynonyms(id, word, synonyms);
}

// ---------------------------------------------------------------------------
// Formats by extension. The extension runs from the last "." of the whole
// path, so a dot in a folder name with an extensionless file behind it yields
// no known extension.

CIPTC::SIPTCFormatInfo CIPTC::GetFormatFromFileExt(const char* path) const {
    const std::string ext = UpperExtension(path);
    for (const auto& entry : kFormatsByExtension) {
        if (ext == entry.ext) return entry.info;
    }
    return {};
}

bool CIPTC::IsSupportedFormat(const char* path) const {
    const std::string ext = UpperExtension(path);
    if (ext == kRawWithCompanionExtension) return true;
    return std::any_of(kFormatsByExtension.begin(), kFormatsByExtension.end(),
                       [&ext](const ExtensionFormat& entry) { return ext == entry.ext; });
}
