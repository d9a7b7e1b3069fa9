#include "iptc/RecordMerge.h"

#include <algorithm>

#include "platform/FileSystem.h"

namespace vliptc::iptc {

namespace {

constexpr std::uint32_t kCategory = 15;
constexpr std::uint32_t kSupplementalCategories = 20;
constexpr std::uint32_t kKeywords = 25;

constexpr const char* kRawExtension = ".CRW";
constexpr const char* kCompanionExtension = ".thm";

bool AnyNonEmpty(const std::vector<CVLProperty>& values) {
    return std::any_of(values.begin(), values.end(),
                       [](const CVLProperty& v) { return !v.String().empty(); });
}

// The user left the field as the template file had it: the template record
// holds the dataset, and every item of it carries the edited values.
bool Untouched(const CIPTC::SIPTCItem& edited, const CIPTC::FieldList& templateRecord) {
    bool found = false;
    for (const auto& item : templateRecord) {
        if (item.nID != edited.nID) continue;
        if (!SameValues(item.vValues, edited.vValues)) return false;
        found = true;
    }
    return found;
}

bool HasRawExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.find_last_of("/\\");
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return false;
    std::string ext = path.substr(dot);
    for (char& c : ext) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return ext == kRawExtension;
}

}  // namespace

bool IsKeywordLike(std::uint32_t id) {
    return id == kKeywords || id == kCategory || id == kSupplementalCategories;
}

bool SameValues(const std::vector<CVLProperty>& a, const std::vector<CVLProperty>& b) {
    if (a.size() != b.size()) return false;
    if (a.size() == 1) return a.front() == b.front();
    return std::is_permutation(a.begin(), a.end(), b.begin(), b.end());
}

FieldAction DecideField(const CIPTC::SIPTCItem& edited, const CIPTC::FieldList& templateRecord,
                        const CIPTC& store, const MergeOptions& options) {
    if (options.isTemplateFile || options.onlyFile) return FieldAction::kSet;
    std::vector<CVLProperty> current;
    const bool fileHasField = store.GetField(edited.nID, current);
    switch (options.writeMode) {
        case kWriteReplace:
            return FieldAction::kSet;
        case kWriteKeep:
            if (IsKeywordLike(edited.nID)) return FieldAction::kKeywords;
            return fileHasField && AnyNonEmpty(current) ? FieldAction::kKeep : FieldAction::kSet;
        case kWriteModified:
            if (fileHasField && Untouched(edited, templateRecord)) return FieldAction::kKeep;
            if (IsKeywordLike(edited.nID)) return FieldAction::kKeywords;
            return AnyNonEmpty(edited.vValues) ? FieldAction::kSet : FieldAction::kKeep;
        default:
            return FieldAction::kKeep;
    }
}

void MergeKeywords(const CIPTC::SIPTCItem& edited, CIPTC& store, int keywordMode) {
    std::vector<CVLProperty> current;
    static_cast<void>(store.GetField(edited.nID, current));  // an absent field reads as no values
    switch (keywordMode) {
        case kKeywordsReplace:
            store.SetField(edited.nID, edited.vValues);
            break;
        case kKeywordsMerge:
            for (const CVLProperty& value : edited.vValues) {
                if (std::find(current.begin(), current.end(), value) == current.end())
                    current.push_back(value);
            }
            store.SetField(edited.nID, current);
            break;
        default:
            break;
    }
}

void MergeRecord(const CIPTC::FieldList& edited, const CIPTC::FieldList& templateRecord, CIPTC& store,
                 const MergeOptions& options) {
    for (const auto& item : edited) {
        switch (DecideField(item, templateRecord, store, options)) {
            case FieldAction::kSet:
                store.SetField(item.nID, item.vValues);
                break;
            case FieldAction::kKeywords:
                MergeKeywords(item, store, options.keywordMode);
                break;
            case FieldAction::kKeep:
                break;
        }
    }
}

std::string WrittenFile(const std::string& path) {
    if (!HasRawExtension(path)) return path;
    return vliptc::platform::FindCompanion(path, kCompanionExtension).value_or(path);
}

}  // namespace vliptc::iptc
