// Damaged and hostile configuration files: truncated, oversized, unbalanced
// quotes, and inputs that would make a careless parser quadratic. None may
// crash; each gives the documented result. Random bytes are the fuzz targets'
// part (fuzz/fuzz_definition_file.cpp, fuzz/fuzz_user_list.cpp).

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "host/Limits.h"
#include "tests/tags/TagsTestSupport.h"

namespace vliptc::test {
namespace {

// What holds for the descriptors whatever the input was.
void ExpectSaneTags(const CVLIPTCINI& ini) {
    std::set<std::uint32_t> seen;
    for (const auto& tag : ini.Tags()) {
        EXPECT_FALSE(tag.strName.empty());
        EXPECT_TRUE(tag.bNonStandard == 0 || !tag.strVendor.empty());
        EXPECT_GE(tag.nDisplayHeight, 1);
        EXPECT_LE(tag.nDisplayHeight, 20);
        EXPECT_TRUE(seen.insert(tag.nID).second) << "duplicate ID " << tag.nID;
    }
}

TEST(BadInput, EveryPrefixOfTheShippedFile) {
    const std::string text = ReadFile("resources/vliptctags.ipt");
    std::size_t previous = 0;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        OpenINI ini;
        ini.Parse(std::string_view(text).substr(0, size));
        // A longer prefix never knows fewer fields: the last line is dropped
        // until its line feed arrives, and an open block still counts.
        ASSERT_GE(ini.Tags().size(), previous) << "prefix of " << size << " bytes";
        previous = ini.Tags().size();
        ExpectSaneTags(ini);
    }
    EXPECT_EQ(previous, 52u);
}

TEST(BadInput, TruncatedUserData) {
    const std::string data =
        "[\r\nID\t25\r\n\"sun\"\r\n\"sea\"\r\n]\r\n\r\n"
        "[\r\nSID\t25\r\n\"sea\",\"ocean\",\"water\"\r\n]\r\n\r\n";
    TagFolder folder("{\nID 25\nNAME Keywords\n}\n");
    for (std::size_t size = 0; size <= data.size(); ++size) {
        WriteFile(folder.UserData(), data.substr(0, size));
        CVLIPTCINI ini;
        ASSERT_TRUE(folder.Load(ini)) << size;
        EXPECT_EQ(ini.Synonyms().count(25), 1u) << size;
        std::vector<CVLProperty> values;
        if (ini.GetUserList(25, values)) {
            EXPECT_LE(values.size(), 2u) << size;
        }
    }
}

TEST(BadInput, FilesAboveTheSizeCapAreSkipped) {
    const std::string block = "{\nID 5\nNAME five\n}\n";
    auto makeFile = [&](const std::string& path, std::uint64_t size) {
        WriteFile(path, block);
        // The rest is zeros (a sparse file, quick to make); parsing stops at
        // the first zero byte, so a file within the cap still gives its block.
        std::filesystem::resize_file(path, size);
    };

    TagFolder folder;
    makeFile(folder.Tags(), limits::kMaxDefinitionFileBytes);
    CVLIPTCINI ini;
    EXPECT_TRUE(folder.Load(ini)) << "exactly at the cap: still read";
    EXPECT_EQ(ini.Tags().size(), 1u);

    makeFile(folder.Tags(), 100u * 1024 * 1024);
    EXPECT_FALSE(folder.Load(ini)) << "100 MB: skipped like a missing file";
    EXPECT_TRUE(ini.Tags().empty());

    // An oversized user-data file is skipped too: no user lists.
    WriteFile(folder.Tags(), block);
    WriteFile(folder.UserData(), "[\nID 25\nsun\n]\n");
    std::filesystem::resize_file(folder.UserData(), limits::kMaxDefinitionFileBytes + 1);
    EXPECT_TRUE(folder.Load(ini));
    EXPECT_TRUE(ini.UserLists().empty());
}

TEST(BadInput, UnbalancedQuotes) {
    const std::string quotes(limits::kMaxDefinitionFileBytes, '"');
    {  // The shipped file: nothing but quotes, up to the size cap.
        TagFolder folder(quotes);
        CVLIPTCINI ini;
        EXPECT_FALSE(folder.Load(ini));
        EXPECT_TRUE(ini.Tags().empty());
    }
    {  // The user file: the good shipped tags stay, and its empty tag part
       // with no list sections counts as success.
        TagFolder folder("{\nID 5\nNAME five\n}\n");
        WriteFile(folder.UserTags(), "{\nID 6\nNAME \"six\n}\n" + quotes.substr(0, 1 << 20));
        CVLIPTCINI ini;
        EXPECT_TRUE(folder.Load(ini));
        EXPECT_EQ(IDs(ini), std::vector<std::uint32_t>{5});
    }
    {  // User data: an opened quote takes the rest of the file into one line
       // that never ends, so the list stays empty.
        TagFolder folder("{\nID 25\nNAME Keywords\n}\n");
        WriteFile(folder.UserData(), "[\nID 25\n\"sun\nmoon\n]\n[\nSID 7\n]\n" + quotes.substr(0, 1 << 20));
        CVLIPTCINI ini;
        EXPECT_TRUE(folder.Load(ini));
        std::vector<CVLProperty> values;
        EXPECT_TRUE(ini.GetUserList(25, values));
        EXPECT_TRUE(values.empty());
        EXPECT_EQ(ini.Synonyms().count(7), 0u) << "swallowed by the open quote";
    }
}

// Inputs that cost quadratic time in a parser that searches its vectors: a
// quarter of a million fields, a value section for each, and one keyword with
// as many synonyms. They finish in well under a second when parsing is linear.
TEST(BadInput, LargeCountsStayLinear) {
    constexpr std::uint32_t kCount = 250'000;
    std::string text;
    for (std::uint32_t id = 1; id <= kCount; ++id) {
        text += "{\nID " + std::to_string(id) + "\nNAME n\n}\n";
    }
    for (std::uint32_t id = 1; id <= kCount; ++id) {
        text += "[\nID " + std::to_string(id) + "\nv\n]\n";
    }
    text += "[\nSID 25\n\"k\"";
    for (std::uint32_t i = 0; i < kCount; ++i) text += ",\"" + std::to_string(i % (kCount / 2)) + "\"";
    text += "\n]\n";

    OpenINI ini;
    EXPECT_TRUE(ini.Parse(text));
    ASSERT_EQ(ini.Tags().size(), kCount);
    EXPECT_EQ(ini.Tags().back().vValues.size(), 1u);
    std::vector<CVLProperty> synonyms;
    ASSERT_TRUE(ini.GetSynonyms(25, CVLProperty("k"), synonyms));
    EXPECT_EQ(synonyms.size(), kCount / 2);
}

}  // namespace
}  // namespace vliptc::test
