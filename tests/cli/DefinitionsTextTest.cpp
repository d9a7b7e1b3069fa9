// CIPTC::InitializeFromText: the definitions given as text serve as the file
// would, with the user folder read as usual.

#include <gtest/gtest.h>

#include <filesystem>

#include "iptc/IPTC.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

std::vector<std::pair<std::uint32_t, std::string>> Names(const CIPTC& store) {
    std::vector<CVLIPTCINI::STagInfo> tags;
    static_cast<void>(store.GetDescriptors(tags));
    std::vector<std::pair<std::uint32_t, std::string>> out;
    for (const auto& tag : tags) out.emplace_back(tag.nID, tag.strName + "/" + std::to_string(tag.nMaxLen));
    return out;
}

TEST(DefinitionsText, ServesAsTheFileWould) {
    TempDir user;
    WriteFile(user.File("vliptcusr.ipt"), "{\nID 200\nSTANDARD 0\nEXTVENDOR Us\nNAME Job\n}\n");
    WriteFile(user.File("vliptcusr.dat"), "[\nID 25\n\"sea\"\n]\n[\nSID 25\n\"sea\",\"ocean\"\n]\n");

    CIPTC fromFile;
    ASSERT_EQ(fromFile.Initialize("resources/", user.Path()), CIPTC::kSuccess);
    CIPTC fromText;
    ASSERT_EQ(fromText.InitializeFromText(ReadFile("resources/vliptctags.ipt"), user.Path()),
              CIPTC::kSuccess);
    EXPECT_EQ(Names(fromText), Names(fromFile));
    EXPECT_EQ(Names(fromText).back().second, "Job/0");
    EXPECT_EQ(fromText.DefinitionFolder(), "");
    EXPECT_EQ(fromText.TemplatePath(), user.Path() + "vliptctmpl.dat");
    std::vector<CVLProperty> list;
    EXPECT_TRUE(fromText.GetUserList(25, list));
    EXPECT_EQ(list, std::vector<CVLProperty>{CVLProperty("sea")});
    EXPECT_TRUE(fromText.GetSynonyms(25, CVLProperty("sea"), list));

    // Only the user files are watched: nothing changed, then the lists did.
    EXPECT_FALSE(fromText.IsDirty());
    EXPECT_TRUE(fromText.SaveChanges() == CIPTC::kSuccess);
    EXPECT_FALSE(fromText.IsDirty());
    std::filesystem::remove(user.File("vliptcusr.dat"));
    EXPECT_TRUE(fromText.IsDirty());
}

TEST(DefinitionsText, NoDefinitionsAtAllFail) {
    TempDir user;
    CIPTC store;
    EXPECT_EQ(store.InitializeFromText("", user.Path()), CIPTC::kNotInitialized);
    EXPECT_EQ(store.InitializeFromText("; only a comment\n", user.Path()), CIPTC::kNotInitialized);
    EXPECT_FALSE(store.IsInitialized());
}

}  // namespace
}  // namespace vliptc::test
