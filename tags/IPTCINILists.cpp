// The list sections behind the tag blocks, and the user lists and synonyms of
// "vliptcusr.dat":
//
//   [                          opens a section (rest of the line ignored)
//   ID<blanks>n                values for dataset n, one per line, trimmed
//   Monday                     of blanks at both ends
//   ]                          closes it
//
//   [
//   SID<blanks>25              synonyms for dataset n, one keyword per line,
//   "sea","ocean","water"      followed by its synonyms, each quoted
//   ]
//
// Any other key behind "[" stops list parsing for the rest of the file.

#include <iterator>
#include <set>
#include <unordered_map>
#include <utility>

#include "tags/IPTCINI.h"
#include "tags/internal/LineReader.h"

namespace fs = vliptc::platform;
namespace text = vliptc::tags::internal;

// Lookup tables for one run of LoadLists, so that a large file costs linear
// time: the descriptors by ID, and for each synonym vector touched the values
// it holds. They point into m_tags and m_synonyms, which do not change shape
// (other than by the appends made here) while a run lasts.
struct CVLIPTCINI::ListContext {
    // Synonym vectors up to this size are searched directly; larger ones get
    // an ordered index, so a keyword with very many synonyms stays cheap.
    static constexpr std::size_t kIndexFrom = 16;

    bool tagIndexBuilt = false;
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> tagsById;
    std::unordered_map<const std::vector<CVLProperty>*, std::set<CVLProperty>> synonymIndex;

    const std::vector<std::size_t>* TagsWithID(const std::vector<STagInfo>& tags, std::uint32_t id) {
        if (!tagIndexBuilt) {
            for (std::size_t i = 0; i < tags.size(); ++i) tagsById[tags[i].nID].push_back(i);
            tagIndexBuilt = true;
        }
        const auto it = tagsById.find(id);
        return it == tagsById.end() ? nullptr : &it->second;
    }

    // Appends value unless an equal one is there already (equal under
    // CVLProperty's own ordering), keeping the order of first appearance.
    void AppendUnique(std::vector<CVLProperty>& synonyms, CVLProperty value) {
        const auto indexed = synonymIndex.find(&synonyms);
        if (indexed != synonymIndex.end()) {
            if (!indexed->second.insert(value).second) return;
            synonyms.push_back(std::move(value));
            return;
        }
        for (const CVLProperty& present : synonyms) {
            if (present == value) return;
        }
        synonyms.push_back(std::move(value));
        if (synonyms.size() >= kIndexFrom) {
            synonymIndex.emplace(&synonyms, std::set<CVLProperty>(synonyms.begin(), synonyms.end()));
        }
    }
};

bool CVLIPTCINI::LoadLists(const char*& cursor, bool userMode) {
    if (userMode) {
        m_userLists.clear();
        m_synonyms.clear();
    }
    // The tables live for this call; ParseList finds them through the member.
    ListContext context;
    struct Restore {
        ListContext*& slot;
        ListContext* const previous;
        ~Restore() { slot = previous; }
    } restore{m_listContext, m_listContext};
    m_listContext = &context;

    // A file without any list section has nothing wrong with it.
    bool result = true;
    std::string line;
    while (NextLine(cursor, line)) {
        if (line.front() != '[') continue;  // text between sections
        result = ParseList(cursor, userMode);
        if (!result) break;
    }
    EnsureKeywordSynonyms();
    return result;
}

bool CVLIPTCINI::ParseList(const char*& cursor, bool userMode) {
    // Called on its own (not from LoadLists) it brings its own tables.
    ListContext local;
    ListContext& context = m_listContext != nullptr ? *m_listContext : local;

    std::string line;
    std::string key;
    std::string value;
    NextLine(cursor, line);  // at the end of the text the line is empty: a bad header
    SplitTag(line, key, value);
    if (key == "ID") {
        ParseValueSection(cursor, text::ParseDatasetNumber(value), userMode, context);
        return true;
    }
    if (key == "SID") {
        ParseSynonymSection(cursor, text::ParseDatasetNumber(value), context);
        return true;
    }
    return false;
}

void CVLIPTCINI::ParseValueSection(const char*& cursor, std::uint32_t id, bool userMode,
                                   ListContext& context) {
    // In a definition file the values belong to the descriptors with this ID
    // (none: dropped); in "vliptcusr.dat" they form the user list of the ID.
    std::vector<CVLProperty>* userList = userMode ? &m_userLists[id] : nullptr;
    const std::vector<std::size_t>* tagIndices = userMode ? nullptr : context.TagsWithID(m_tags, id);

    std::string line;
    while (NextLine(cursor, line) && line.front() != ']') {
        if (userList != nullptr) {
            userList->emplace_back(std::string(text::TrimBlanks(line)));
        } else if (tagIndices != nullptr) {
            const CVLProperty entry(std::string(text::TrimBlanks(line)));
            for (const std::size_t index : *tagIndices) m_tags[index].vValues.push_back(entry);
        }
    }
}

void CVLIPTCINI::ParseSynonymSection(const char*& cursor, std::uint32_t id, ListContext& context) {
    SynonymList& list = m_synonyms[id];
    std::vector<CVLProperty> values;
    // The writer puts keywords in ascending order; inserting behind the
    // previous keyword makes reading such a file linear, and costs little
    // more than a plain search when the order is any other.
    auto hint = list.end();
    while (NextLineMultiple(cursor, values) && !values.empty()) {
        const auto keyword = list.try_emplace(hint, std::move(values.front()));
        hint = std::next(keyword);
        for (std::size_t i = 1; i < values.size(); ++i) {
            context.AppendUnique(keyword->second, std::move(values[i]));
        }
    }
}

bool CVLIPTCINI::NextLineMultiple(const char*& cursor, std::vector<CVLProperty>& values) {
    std::vector<std::string> words;
    const bool complete = text::ReadQuotedValues(cursor, words);
    values.clear();
    values.reserve(words.size());
    for (std::string& word : words) values.emplace_back(std::move(word));
    return complete;
}

void CVLIPTCINI::EnsureKeywordSynonyms() {
    // The keywords field always has a synonym entry, and every keyword of the
    // user's keyword list is a key in it (with no synonyms unless the file
    // gave some), so the editors can attach synonyms to any of them.
    SynonymList& keywords = m_synonyms[kKeywordsID];
    const auto userKeywords = m_userLists.find(kKeywordsID);
    if (userKeywords == m_userLists.end()) return;
    for (const CVLProperty& word : userKeywords->second) keywords.try_emplace(word);
}

bool CVLIPTCINI::LoadUserLists() {
    // Reading the file replaces the user lists and the synonyms, including
    // any synonym sections that the definition files held.
    if (!fs::IsRegularFile(m_userDataPath)) return true;
    std::string buffer;
    if (!ReadFileToBuffer(m_userDataPath, buffer)) return true;
    const char* cursor = buffer.data();
    static_cast<void>(LoadLists(cursor, true));
    return true;
}

bool CVLIPTCINI::GetUserList(std::uint32_t id, std::vector<CVLProperty>& values) const {
    values.clear();
    const auto it = m_userLists.find(id);
    if (it == m_userLists.end()) return false;
    values = it->second;
    return true;
}

bool CVLIPTCINI::SetUserList(std::uint32_t id, const std::vector<CVLProperty>& values) {
    m_userLists[id] = values;
    return true;
}

bool CVLIPTCINI::GetSynonymList(std::uint32_t id, SynonymList& synonyms) const {
    synonyms.clear();
    const auto it = m_synonyms.find(id);
    if (it == m_synonyms.end()) return false;
    synonyms = it->second;
    return true;
}

bool CVLIPTCINI::SetSynonymList(std::uint32_t id, const SynonymList& synonyms) {
    // Entries come only from loading; the keywords entry always exists then.
    const auto it = m_synonyms.find(id);
    if (it == m_synonyms.end()) return false;
    it->second = synonyms;
    return true;
}

bool CVLIPTCINI::GetSynonyms(std::uint32_t id, const CVLProperty& word,
                             std::vector<CVLProperty>& synonyms) const {
    synonyms.clear();
    const auto list = m_synonyms.find(id);
    if (list == m_synonyms.end()) return false;
    const auto entry = list->second.find(word);
    if (entry == list->second.end()) return false;
    synonyms = entry->second;
    return true;
}
