// "vliptcusr.dat": reading user lists and synonyms, the writer's exact text,
// what survives a save and a load, and the ".bak" backup with its rollback.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "tests/support/Unprivileged.h"
#include "tests/tags/TagsTestSupport.h"

namespace vliptc::test {
namespace {

using Words = std::vector<std::string>;

std::vector<CVLProperty> Props(const Words& words) {
    std::vector<CVLProperty> out;
    for (const std::string& word : words) out.emplace_back(word);
    return out;
}

constexpr const char* kKeywordTag = "{\nID 25\nNAME Keywords\n}\n";

TEST(UserLists, ReadFromUserData) {
    std::string data =
        "; lists of the user\r\n"
        "[\r\nID\t25\r\n\"sun\"\r\n  sea  \r\nsun\r\n]\r\n"
        "[\r\nID\t999\r\n\"kept without a descriptor\"\r\n]\r\n"
        "[\r\nSID\t25\r\n"
        "\"sea\",\"ocean\",\"ocean\",\"water\",\"ocean\"\r\n"
        "\"sea\",\"brine\",\"water\"\r\n"
        "\"sky\", \"blue\"\r\n"
        "\"big\"";
    // A keyword with many synonyms, repeats among them: order of first reading.
    Words many;
    for (int i = 0; i < 100; ++i) {
        many.push_back("s" + std::to_string(i));
        data += ",\"s" + std::to_string(i) + "\"";
        if (i % 7 == 0) data += ",\"s" + std::to_string(i / 2) + "\"";
    }
    data += "\r\n]\r\n[\r\nSID\t7\r\n\"x\",\"y\"\r\n]\r\n";
    TagFolder folder(kKeywordTag, data.c_str());
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    std::vector<CVLProperty> values;
    ASSERT_TRUE(ini.GetUserList(25, values));
    EXPECT_EQ(Texts(values), (Words{"sun", "sea", "sun"}));
    ASSERT_TRUE(ini.GetUserList(999, values));
    EXPECT_EQ(Texts(values), Words{"kept without a descriptor"});
    EXPECT_FALSE(ini.GetUserList(1, values));
    EXPECT_TRUE(values.empty());

    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("sea"), values));
    EXPECT_EQ(Texts(values), (Words{"ocean", "water", "brine"}));
    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("sky"), values));
    EXPECT_EQ(Texts(values), Words{" blue"});
    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("big"), values));
    EXPECT_EQ(Texts(values), many);
    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("sun"), values)) << "user keywords get an entry";
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(ini.GetSynonyms(25, CVLProperty("moon"), values));
    EXPECT_TRUE(ini.GetSynonyms(7, CVLProperty("x"), values));
    EXPECT_EQ(Texts(values), Words{"y"});

    CVLIPTCINI::SynonymList list;
    EXPECT_FALSE(ini.GetSynonymList(3, list));
    EXPECT_FALSE(ini.SetSynonymList(3, list)) << "entries come only from loading";
    EXPECT_TRUE(ini.SetSynonymList(7, list));
    EXPECT_TRUE(ini.GetSynonymList(7, list));
    EXPECT_TRUE(list.empty());
}

TEST(UserLists, BadSectionHeaderDropsTheRest) {
    TagFolder folder(kKeywordTag, "[\nID 5\na\n]\n[\nNAME 6\nb\n]\n[\nID 7\nc\n]\n");
    CVLIPTCINI ini;
    EXPECT_TRUE(folder.Load(ini)) << "the user data never decides Load's result";
    EXPECT_EQ(ini.UserLists().size(), 1u);
    EXPECT_EQ(ini.UserLists().count(5), 1u);
    EXPECT_EQ(ini.Synonyms().count(25), 1u) << "the keywords entry exists all the same";
}

TEST(UserLists, WriterText) {
    TagFolder folder(std::string(kKeywordTag) + "[\nSID 20\n\"cat\",\"feline\"\n]\n");
    CVLIPTCINI ini;
    EXPECT_TRUE(ini.StoreUserLists()) << "nothing to do before Load";
    EXPECT_FALSE(platform::Exists(folder.UserData()));

    ASSERT_TRUE(folder.Load(ini));
    ASSERT_TRUE(ini.SetUserList(25, Props({"sun", "sea"})));
    ASSERT_TRUE(ini.SetUserList(5, Props({"a", "say \"hi\""})));
    CVLIPTCINI::SynonymList keywords;
    keywords[CVLProperty("sea")] = Props({"ocean", "water"});
    keywords[CVLProperty("sun")] = {};
    ASSERT_TRUE(ini.SetSynonymList(25, keywords));
    ASSERT_TRUE(ini.StoreUserLists());

    EXPECT_EQ(ReadFile(folder.UserData()),
              "[\r\nID\t5\r\n\"a\"\r\n\"say \"\"hi\"\"\"\r\n]\r\n\r\n"
              "[\r\nID\t25\r\n\"sun\"\r\n\"sea\"\r\n]\r\n\r\n"
              "[\r\nSID\t20\r\n\"cat\",\"feline\"\r\n]\r\n\r\n"
              "[\r\nSID\t25\r\n\"sea\",\"ocean\",\"water\"\r\n]\r\n\r\n");
    EXPECT_FALSE(platform::Exists(folder.Backup())) << "there was nothing to back up";
    EXPECT_FALSE(ini.IsDirty()) << "our own save is not a change";
}

TEST(UserLists, SaveAndLoadAgain) {
    TagFolder folder(kKeywordTag);
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    const Words keywords{"sun", "sea", "sea", "caf\xE9", "two words", "[x]", "line\r\nbreak", "4294967295"};
    ASSERT_TRUE(ini.SetUserList(25, Props(keywords)));
    ASSERT_TRUE(ini.SetUserList(4294967295u, Props({"largest dataset number"})));
    ASSERT_TRUE(ini.SetUserList(0, {}));
    CVLIPTCINI::SynonymList synonyms;
    synonyms[CVLProperty("sea")] = Props({"ocean", " water", "a]b"});
    synonyms[CVLProperty("sun")] = {};  // in the keyword list: comes back empty
    synonyms[CVLProperty("sky")] = {};  // not in it: gone after the save
    synonyms[CVLProperty("x\ny")] = Props({"z"});
    ASSERT_TRUE(ini.SetSynonymList(25, synonyms));
    ASSERT_TRUE(ini.StoreUserLists());

    CVLIPTCINI again;
    ASSERT_TRUE(folder.Load(again));
    EXPECT_EQ(again.UserLists(), ini.UserLists());
    CVLIPTCINI::SynonymList expected = synonyms;
    expected.erase(CVLProperty("sky"));
    for (const std::string& word : keywords) expected.try_emplace(CVLProperty(word));
    CVLIPTCINI::SynonymList read;
    ASSERT_TRUE(again.GetSynonymList(25, read));
    EXPECT_EQ(read, expected);
}

// What one value of a user list turns into after a save and a load, with the
// value "next" behind it. The file format cannot carry every text.
TEST(UserLists, ValuesThatDoNotSurviveASave) {
    struct Case {
        const char* value;
        Words after;
    };
    const Case cases[] = {
        {"plain", {"plain", "next"}},
        {"  padded\t", {"padded", "next"}},  // trimmed on reading
        {";comment", {"next"}},              // reads as a comment line
        {"]x", {}},                          // closes the section early
        {"", {}},                            // "" is a doubled quote
        {"say \"hi\"", {}},                  // the pair reopens quoting
    };
    for (const Case& c : cases) {
        TagFolder folder(kKeywordTag);
        CVLIPTCINI ini;
        ASSERT_TRUE(folder.Load(ini));
        ASSERT_TRUE(ini.SetUserList(5, Props({c.value, "next"})));
        ASSERT_TRUE(ini.StoreUserLists());
        ASSERT_TRUE(folder.Load(ini));
        std::vector<CVLProperty> values;
        ASSERT_TRUE(ini.GetUserList(5, values)) << c.value;
        EXPECT_EQ(Texts(values), c.after) << c.value;
    }
}

constexpr const char* kPrevious = "[\nID 25\nold\n]\n";

// Loads the folder into ini and replaces the keyword list, ready for a save.
void LoadAndReplace(const TagFolder& folder, CVLIPTCINI& ini) {
    ASSERT_TRUE(folder.Load(ini));
    ASSERT_TRUE(ini.SetUserList(25, Props({"new"})));
}

// The outcomes of a save over the previous list, one hurdle at a time.
TEST(UserLists, BackupAndRollback) {
    {  // A save keeps the previous file as the backup, replacing an older one.
        TagFolder folder(kKeywordTag, kPrevious);
        WriteFile(folder.Backup(), "stale backup");
        CVLIPTCINI ini;
        LoadAndReplace(folder, ini);
        ASSERT_TRUE(ini.StoreUserLists());
        EXPECT_EQ(ReadFile(folder.Backup()), kPrevious);
        const std::string first = ReadFile(folder.UserData());
        EXPECT_NE(first.find("\"new\""), std::string::npos);
        ASSERT_TRUE(ini.StoreUserLists());
        EXPECT_EQ(ReadFile(folder.Backup()), first);
    }
    {  // An exception while writing puts the previous file back.
        TagFolder folder(kKeywordTag, kPrevious);
        OpenINI ini;
        ini.m_afterUserListsWritten = [] { throw std::runtime_error("disk gone"); };
        LoadAndReplace(folder, ini);
        EXPECT_FALSE(ini.StoreUserLists());
        EXPECT_EQ(ReadFile(folder.UserData()), kPrevious);
        EXPECT_FALSE(platform::Exists(folder.Backup()));
        EXPECT_FALSE(ini.IsDirty()) << "the restored file is the one we loaded";
    }
    {  // A backup that cannot be removed stops the save before anything moves.
        TagFolder folder(kKeywordTag, kPrevious);
        ASSERT_EQ(::mkdir(folder.Backup().c_str(), 0755), 0);
        WriteFile(folder.Backup() + "/inside", "x");
        CVLIPTCINI ini;
        LoadAndReplace(folder, ini);
        EXPECT_FALSE(ini.StoreUserLists());
        EXPECT_EQ(ReadFile(folder.UserData()), kPrevious);
        EXPECT_TRUE(platform::IsDirectory(folder.Backup()));
    }
    {  // A data file that cannot be created is a stream error, not a failure.
        TagFolder folder(kKeywordTag);
        ASSERT_EQ(::mkdir(folder.UserData().c_str(), 0755), 0);
        CVLIPTCINI ini;
        LoadAndReplace(folder, ini);
        EXPECT_TRUE(ini.StoreUserLists());
        EXPECT_TRUE(platform::IsDirectory(folder.UserData()));
        EXPECT_FALSE(platform::Exists(folder.Backup()));
    }
}

TEST(UserLists, ReadOnlyFolderKeepsTheFile) {
    TagFolder folder(kKeywordTag, kPrevious);
    CVLIPTCINI ini;
    LoadAndReplace(folder, ini);
    ASSERT_EQ(::chmod(folder.dir.Path().c_str(), 0555), 0);
    // The move to the backup fails.
    VLIPTC_EXPECT_AS_UNPRIVILEGED([&] { return !ini.StoreUserLists(); });
    ::chmod(folder.dir.Path().c_str(), 0755);
    EXPECT_EQ(ReadFile(folder.UserData()), kPrevious);
}

}  // namespace
}  // namespace vliptc::test
