// Field names and numbers, and the value checks of the command line.

#include "apps/vliptc/Fields.h"

#include <cctype>
#include <charconv>
#include <vector>

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

namespace {

constexpr std::uint32_t kRecordVersion = 0;  // 2:00, binary, written by the library
constexpr std::uint32_t kLastDataset = 255;  // a dataset number is one byte on the wire

// Lower-case letters and digits only, so "By-line", "by line" and "BYLINE"
// meet.
std::string Key(std::string_view text) {
    std::string key;
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalnum(u) != 0 && u < 0x80) key += static_cast<char>(std::tolower(u));
    }
    return key;
}

}  // namespace

FieldNames::FieldNames(const CIPTC& store) {
    std::vector<CVLIPTCINI::STagInfo> tags;
    static_cast<void>(store.GetDescriptors(tags));
    for (const auto& tag : tags) {
        m_names.emplace(tag.nID, ToUtf8(tag.strName));
        m_byKey.emplace(Key(tag.strName), tag.nID);  // the first of equal keys wins, as in the definitions
    }
}

std::string FieldNames::Name(std::uint32_t id) const {
    if (const auto it = m_names.find(id); it != m_names.end()) return it->second;
    if (id == kRecordVersion) return "Record Version";
    return "Dataset " + std::to_string(id);
}

std::uint32_t FieldNames::Resolve(std::string_view text) const {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size() && !text.empty()) {
        if (number == kRecordVersion) {
            throw UsageError("dataset 0 (the record version) is written by vliptc itself");
        }
        if (number > kLastDataset) {
            throw UsageError("no dataset " + std::string(text) + ": numbers run from 1 to 255");
        }
        return number;
    }
    const std::string key = Key(text);
    if (const auto it = m_byKey.find(key); it != m_byKey.end() && !key.empty()) return it->second;
    // The start of one name is enough ("caption" for "Caption/Abstract").
    std::vector<std::uint32_t> matches;
    for (auto it = m_byKey.lower_bound(key);
         !key.empty() && it != m_byKey.end() && it->first.starts_with(key); ++it) {
        matches.push_back(it->second);
    }
    if (matches.size() == 1) return matches.front();
    if (matches.size() > 1) {
        std::string names;
        for (const std::uint32_t id : matches) names += (names.empty() ? "" : ", ") + Name(id);
        throw UsageError("field \"" + std::string(text) + "\" is ambiguous: " + names);
    }
    throw UsageError("unknown field \"" + std::string(text) +
                     "\" (give a dataset number or a name such as keywords)");
}

CVLProperty CheckedValue(CIPTC& store, const FieldNames& names, std::uint32_t id, std::string_view utf8) {
    const std::string field = names.Name(id);
    CVLProperty value(ToStored(utf8, "the value for " + field));
    CVLIPTCINI::STagInfo tag;
    if (store.GetDescriptor(id, tag) && tag.nMaxLen > 0) {
        // Measured as it will be written: a macro by its expansion. The file
        // macros need a file's status; any status gives the same length.
        store.SetWriteFileStatus(platform::FileStatus{});
        const std::size_t length = store.Translate(value).size();
        store.SetWriteFileStatus(std::nullopt);
        if (length > static_cast<std::size_t>(tag.nMaxLen)) {
            throw UsageError("the value for " + field + " is " + std::to_string(length) +
                             " bytes; the field holds at most " + std::to_string(tag.nMaxLen) + ": \"" +
                             std::string(utf8) + "\"");
        }
    }
    return value;
}

bool IsRepeatable(const CIPTC& store, std::uint32_t id) {
    CVLIPTCINI::STagInfo tag;
    return !store.GetDescriptor(id, tag) || tag.nRepeatable != 0;
}

std::pair<std::string, std::string> SplitAssignment(std::string_view text, std::string_view option) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        throw UsageError(std::string(option) + " expects ID=VALUE, got \"" + std::string(text) + "\"");
    }
    return {std::string(text.substr(0, equals)), std::string(text.substr(equals + 1))};
}

}  // namespace vliptc::cli
