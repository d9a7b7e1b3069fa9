#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

#include "iptc/IPTC.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

// Opens the protected parts of the store to the tests.
class TestIPTC : public CIPTC {
public:
    using CIPTC::LoadTemplates;
    using CIPTC::ResetFields;
    using CIPTC::SaveTemplates;
};

// A tag-definition file with one block per (id, name), in this order.
inline std::string Definitions(std::initializer_list<std::pair<int, const char*>> tags) {
    std::string text = "; written by the test\n";
    for (const auto& [id, name] : tags) {
        text += "{\nID " + std::to_string(id) + "\nNAME " + name + "\n}\n";
    }
    return text;
}

// A definitions folder and a user folder, both inside one temporary folder;
// the folder paths carry no trailing separator so Initialize has to add it.
struct StoreFolders {
    TempDir dir;
    std::string defs = dir.Path() + "defs";
    std::string user = dir.Path() + "user";

    StoreFolders() {
        std::filesystem::create_directory(defs);
        std::filesystem::create_directory(user);
        WriteFile(defs + "/vliptctags.ipt", Definitions({{120, "Caption"}, {5, "Title"}, {25, "Keywords"}}));
    }
    std::string UserFile(const char* name) const { return user + "/" + name; }
};

}  // namespace vliptc::test
