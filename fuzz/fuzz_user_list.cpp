// Feeds bytes to the parser of "vliptcusr.dat" (user mode), writes what it
// read with the user-list writer and reads that again. Values the format can
// carry must come back unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tags/IPTCINI.h"

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

class UserListINI : public CVLIPTCINI {
public:
    using CVLIPTCINI::FormatUserLists;

    // The parser's buffer is exactly size + 1 bytes, so any read behind the
    // terminating zero leaves the allocation and the sanitizer sees it.
    void Parse(const char* data, std::size_t size) {
        auto buffer = std::make_unique<char[]>(size + 1);
        if (size != 0) std::memcpy(buffer.get(), data, size);
        buffer[size] = '\0';
        const char* cursor = buffer.get();
        static_cast<void>(LoadLists(cursor, true));
    }
};

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// A text the writer's quoting carries through a read: no quote (a doubled
// quote also toggles quoting on reading), not empty, not a comment.
bool Quotable(const std::string& text) {
    return !text.empty() && text.front() != ';' && text.find('"') == std::string::npos;
}

// A list value is read as a whole line, trimmed, and a line starting with
// "]" closes the section.
bool ListValueSurvives(const std::string& text) {
    return Quotable(text) && text.front() != ']' && !IsBlank(text.front()) && !IsBlank(text.back());
}

bool AllSurvive(const CVLIPTCINI& ini) {
    for (const auto& [id, values] : ini.UserLists()) {
        for (const CVLProperty& value : values) {
            if (!ListValueSurvives(value.String())) return false;
        }
    }
    for (const auto& [id, list] : ini.Synonyms()) {
        for (const auto& [keyword, synonyms] : list) {
            if (!Quotable(keyword.String())) return false;
            for (const CVLProperty& synonym : synonyms) {
                if (!Quotable(synonym.String())) return false;
            }
        }
    }
    return true;
}

void CheckLoaded(const CVLIPTCINI& ini) {
    // The keywords entry exists and holds every keyword of the user's list.
    const auto keywords = ini.Synonyms().find(CVLIPTCINI::kKeywordsID);
    Require(keywords != ini.Synonyms().end());
    const auto userKeywords = ini.UserLists().find(CVLIPTCINI::kKeywordsID);
    if (userKeywords != ini.UserLists().end()) {
        for (const CVLProperty& word : userKeywords->second) Require(keywords->second.count(word) == 1);
    }
    // Synonyms read from a file hold no value twice.
    for (const auto& [id, list] : ini.Synonyms()) {
        for (const auto& [keyword, synonyms] : list) {
            const std::set<CVLProperty> unique(synonyms.begin(), synonyms.end());
            Require(unique.size() == synonyms.size());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UserListINI ini;
    ini.Parse(reinterpret_cast<const char*>(data), size);
    CheckLoaded(ini);

    std::string text;
    ini.FormatUserLists(text);
    UserListINI again;
    again.Parse(text.data(), text.size());
    CheckLoaded(again);

    if (AllSurvive(ini)) {
        Require(again.UserLists() == ini.UserLists());
        // Keywords without synonyms are not written; those of the keyword
        // list come back through it.
        CVLIPTCINI::SynonymMap expected = ini.Synonyms();
        for (auto& [id, list] : expected) {
            std::erase_if(list, [](const auto& entry) { return entry.second.empty(); });
        }
        const auto userKeywords = ini.UserLists().find(CVLIPTCINI::kKeywordsID);
        if (userKeywords != ini.UserLists().end()) {
            for (const CVLProperty& word : userKeywords->second) {
                expected[CVLIPTCINI::kKeywordsID].try_emplace(word);
            }
        }
        Require(again.Synonyms() == expected);
    }
    return 0;
}
