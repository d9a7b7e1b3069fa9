#pragma once

// Shared by the tag-store tests: a CVLIPTCINI that opens its parsing steps,
// and a folder holding the three files the store reads.

#include <string>
#include <string_view>
#include <vector>

#include "tags/IPTCINI.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

class OpenINI : public CVLIPTCINI {
public:
    using CVLIPTCINI::FormatUserLists;
    using CVLIPTCINI::LoadLists;
    using CVLIPTCINI::m_afterUserListsWritten;
    using CVLIPTCINI::NextLine;
    using CVLIPTCINI::NextLineMultiple;
    using CVLIPTCINI::NextTagBlock;
    using CVLIPTCINI::SplitTag;

    // Parses text the way Load parses one definition file (no user folder).
    bool Parse(std::string_view text) {
        std::string buffer(text);
        return LoadINIFile(buffer.data());
    }
};

// One folder serves as definitions folder and user folder at once. The
// constructor writes the definition file and, when given, the user data.
struct TagFolder {
    TempDir dir;
    TagFolder() = default;
    explicit TagFolder(std::string_view tags, const char* userData = nullptr) {
        WriteFile(Tags(), tags);
        if (userData != nullptr) WriteFile(UserData(), userData);
    }
    std::string Tags() const { return dir.File("vliptctags.ipt"); }
    std::string UserTags() const { return dir.File("vliptcusr.ipt"); }
    std::string UserData() const { return dir.File("vliptcusr.dat"); }
    std::string Backup() const { return dir.File("vliptcusr.dat.bak"); }
    bool Load(CVLIPTCINI& ini) const { return ini.Load(dir.Path(), dir.Path()); }
};

inline std::vector<std::string> Texts(const std::vector<CVLProperty>& values) {
    std::vector<std::string> out;
    out.reserve(values.size());
    for (const CVLProperty& value : values) out.push_back(value.String());
    return out;
}

inline std::vector<std::uint32_t> IDs(const CVLIPTCINI& ini) {
    std::vector<std::uint32_t> out;
    for (const auto& tag : ini.Tags()) out.push_back(tag.nID);
    return out;
}

}  // namespace vliptc::test
