// Loading the tag definitions (from the definitions folder or from text held
// by the host): logical lines, tag blocks, descriptors, and the change check
// against the files on disk. The list sections behind the tag blocks are read
// in IPTCINILists.cpp, the user-list writer lives in IPTCINIStore.cpp.

#include "tags/IPTCINI.h"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/Limits.h"
#include "tags/internal/LineReader.h"

namespace fs = vliptc::platform;
namespace text = vliptc::tags::internal;

namespace {

constexpr const char* kTagsFileName = "vliptctags.ipt";     // definitions folder
constexpr const char* kUserDataFileName = "vliptcusr.dat";  // user folder
constexpr const char* kUserTagsFileName = "vliptcusr.ipt";  // user folder

// A descriptor is kept only when it names its field, and an extension field
// ("STANDARD 0") only when it says whose it is.
bool IsUsableTag(const CVLIPTCINI::STagInfo& tag) {
    if (tag.strName.empty() || tag.nType == 0) return false;
    if (tag.bNonStandard != 0 && tag.strVendor.empty()) return false;
    return true;
}

}  // namespace

bool CVLIPTCINI::Load(const std::string& definitionFolder, const std::string& userFolder) {
    return LoadDefinitions(definitionFolder, false, userFolder);
}

bool CVLIPTCINI::LoadFromText(const std::string& definitionsText, const std::string& userFolder) {
    return LoadDefinitions(definitionsText, true, userFolder);
}

bool CVLIPTCINI::LoadDefinitions(const std::string& source, bool fromText, const std::string& userFolder) {
    bool result = false;
    try {
        // Plain concatenation: the folders carry their own trailing separator.
        m_tagsFromText = fromText;
        if (fromText) {
            m_tagsPath.clear();
        } else {
            m_tagsPath = source + kTagsFileName;
        }
        m_userDataPath = userFolder + kUserDataFileName;
        m_userTagsPath = userFolder + kUserTagsFileName;
        m_tags.clear();
        m_userLists.clear();
        m_synonyms.clear();
        if (fromText) {
            m_tagsTime.reset();
        } else {
            m_tagsTime = fs::GetLastWriteTime(m_tagsPath);
        }
        m_userDataTime = fs::GetLastWriteTime(m_userDataPath);
        m_userTagsTime = fs::GetLastWriteTime(m_userTagsPath);

        // The shipped definitions, then the user's, which add to them; the
        // result is that of the last one parsed. Text is parsed from the
        // parser's own zero-terminated copy, and empty text counts as a
        // missing file.
        bool shipped = false;
        if (fromText) {
            shipped = !source.empty();
            if (shipped) m_buffer = source;
        } else {
            shipped = ReadFileToBuffer(m_tagsPath, m_buffer);
        }
        if (shipped) result = LoadINIFile(m_buffer.data());
        FreeBuffer();
        if (ReadFileToBuffer(m_userTagsPath, m_buffer)) result = LoadINIFile(m_buffer.data());
        FreeBuffer();
    } catch (...) {
        FreeBuffer();
        result = false;
    }
    m_loaded = true;
    return result;
}

bool CVLIPTCINI::ReadFileToBuffer(const std::string& path, std::string& buffer) const {
    // These files are hand-edited text of a few hundred kilobytes. A file above
    // the cap is taken as unreadable and skipped like a missing one, so a
    // stray huge file cannot make start-up allocate without bound.
    auto bytes = fs::ReadWholeFile(path, vliptc::limits::kMaxDefinitionFileBytes);
    if (!bytes || bytes->empty()) {
        buffer.clear();
        return false;
    }
    // std::string keeps a terminating zero behind its bytes: the parsers stop
    // there, and at the first zero byte inside the file.
    buffer = std::move(*bytes);
    return true;
}

void CVLIPTCINI::FreeBuffer() noexcept { std::string().swap(m_buffer); }

bool CVLIPTCINI::LoadINIFile(char* buffer) {
    if (buffer == nullptr) return false;
    try {
        const char* cursor = buffer;
        // IDs present so far, so that "first definition wins" costs no search
        // of the whole vector per block.
        std::unordered_set<std::uint32_t> known;
        known.reserve(m_tags.size());
        for (const STagInfo& tag : m_tags) known.insert(tag.nID);

        auto addIfUsable = [&](STagInfo& tag) {
            if (!IsUsableTag(tag)) return;
            if (!known.insert(tag.nID).second) return;  // an earlier block has this ID
            m_tags.push_back(std::move(tag));
        };

        STagInfo tag;
        while (NextTagBlock(cursor, tag)) addIfUsable(tag);
        // The block in hand when the tag part ended: the last block of a file
        // without anything behind its "}", or a block left open.
        addIfUsable(tag);

        // The test looks at every tag read so far, so a user file with list
        // sections and no tag block of its own still has its lists read.
        if (m_tags.empty()) return false;
        if (!LoadLists(cursor, false)) return false;
        return LoadUserLists();
    } catch (...) {
        return false;
    }
}

bool CVLIPTCINI::NextLine(const char*& cursor, std::string& line) {
    return text::ReadLogicalLine(cursor, line);
}

bool CVLIPTCINI::NextTagBlock(const char*& cursor, STagInfo& tag) {
    tag = STagInfo{};
    const char* const start = cursor;
    bool inBlock = false;
    std::string line;
    std::string key;
    std::string value;
    while (NextLine(cursor, line)) {
        const char first = line.front();  // NextLine delivers non-empty lines only
        if (!inBlock) {
            if (first == '{') {
                inBlock = true;
            } else if (first == '[') {
                // The tag part ends here. Hand the list reader everything from
                // the start of this call, so it meets the "[" line itself.
                cursor = start;
                return false;
            }
            continue;
        }
        if (first == '}') return *cursor != '\0';
        if (first == '{') continue;

        SplitTag(line, key, value);
        if (key == "ID") {
            tag.nID = text::ParseDatasetNumber(value);
        } else if (key == "STANDARD") {
            tag.bNonStandard = text::ParseNumber(value) == 0 ? 1 : 0;
        } else if (key == "EXTVENDOR") {
            tag.strVendor = value;
        } else if (key == "NAME") {
            tag.strName = value;
        } else if (key == "DESC") {
            tag.strDesc = value;
        } else if (key == "TYPE") {
            text::ToUpperAscii(value);
            if (value == "STRING") {
                tag.nType = kTypeString;
            } else if (value == "DATE") {
                tag.nType = kTypeDate;
            } else if (value == "TIME") {
                tag.nType = kTypeTime;
            } else if (value == "NUMBER") {
                tag.nType = kTypeNumber;
            }
        } else if (key == "MINLEN") {
            tag.nMinLen = text::ParseInt32(value);
        } else if (key == "MAXLEN") {
            tag.nMaxLen = text::ParseInt32(value);
        } else if (key == "MANDATORY") {
            tag.nMandatory = text::ParseInt32(value);
        } else if (key == "REPEATABLE") {
            tag.nRepeatable = text::ParseInt32(value);
        } else if (key == "DISPLAYHEIGHT") {
            const std::int32_t height = text::ParseInt32(value);
            tag.nDisplayHeight = height < 1 ? 1 : (height > 20 ? 20 : height);
        } else if (key == "LISTREF") {
            tag.strListRef = value;
        }
    }
    return false;
}

void CVLIPTCINI::SplitTag(const std::string& line, std::string& key, std::string& value) {
    // "KEY<blanks>value": no equals sign. The value keeps its inner and
    // trailing blanks; the key is case-insensitive.
    const std::string_view view(line);
    std::size_t pos = 0;
    while (pos < view.size() && text::IsBlank(view[pos])) ++pos;
    const std::size_t keyStart = pos;
    while (pos < view.size() && !text::IsBlank(view[pos])) ++pos;
    key.assign(view.substr(keyStart, pos - keyStart));
    while (pos < view.size() && text::IsBlank(view[pos])) ++pos;
    value.assign(view.substr(pos));
    text::ToUpperAscii(key);
}

bool CVLIPTCINI::GetDescriptor(std::uint32_t id, STagInfo& tag) const {
    for (const STagInfo& candidate : m_tags) {
        if (candidate.nID == id) {
            tag = candidate;
            return true;
        }
    }
    return false;
}

bool CVLIPTCINI::IsDirty() const {
    if (!m_loaded) return true;
    // The shipped definitions and the user lists count as changed when they
    // vanished; the optional user definitions only when they changed, since
    // most users never have that file.
    if (!m_tagsFromText) {
        const auto tagsTime = fs::GetLastWriteTime(m_tagsPath);
        if (!tagsTime || tagsTime != m_tagsTime) return true;
    }
    const auto userDataTime = fs::GetLastWriteTime(m_userDataPath);
    if (!userDataTime || userDataTime != m_userDataTime) return true;
    const auto userTagsTime = fs::GetLastWriteTime(m_userTagsPath);
    if (!userTagsTime) return false;
    return userTagsTime != m_userTagsTime;
}
