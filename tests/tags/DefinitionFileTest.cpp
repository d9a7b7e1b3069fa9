// Tag-definition files on disk: descriptors, value lists, the order in which
// the two files count, Load's result and the change check.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "tests/tags/TagsTestSupport.h"

namespace vliptc::test {
namespace {

using Tag = CVLIPTCINI::STagInfo;
using IdList = std::vector<std::uint32_t>;

// A descriptor as one line: its name, then every field that differs from a
// fresh descriptor.
std::string Summary(const Tag& t) {
    static const char* const kTypes[] = {"string", "date", "time", "number"};
    std::string out = "'" + t.strName + "'";
    const auto add = [&out](const char* key, bool shown, const std::string& value) {
        if (shown) out += std::string(" ") + key + "=" + value;
    };
    const std::uint32_t type = t.nType - CVLIPTCINI::kTypeString;
    add("type", type != 0, type < 4 ? kTypes[type] : std::to_string(t.nType));
    add("min", t.nMinLen != 0, std::to_string(t.nMinLen));
    add("max", t.nMaxLen != 0, std::to_string(t.nMaxLen));
    add("mandatory", t.nMandatory != 0, std::to_string(t.nMandatory));
    add("repeatable", t.nRepeatable != 0, std::to_string(t.nRepeatable));
    add("height", t.nDisplayHeight != 1, std::to_string(t.nDisplayHeight));
    add("nonstandard", t.bNonStandard != 0, std::to_string(t.bNonStandard));
    add("vendor", !t.strVendor.empty(), t.strVendor);
    add("desc", !t.strDesc.empty(), t.strDesc);
    add("list", !t.strListRef.empty(), t.strListRef);
    return out;
}

TEST(DefinitionFile, WorkedExample) {
    TagFolder folder(
        "; the caption first\n"
        "{\nID\t120\nNAME\tCaption\nDESC\t\"What the picture shows,\nin a few lines\"\n"
        "TYPE\tstring\nMAXLEN\t2000\nDISPLAYHEIGHT\t40\n}\n"
        "{\nID\t200\nSTANDARD\t0\nNAME\tJob code\n}\n"
        "{\nID\t25\nNAME\tKeywords\nREPEATABLE\t1\nMAXLEN\t64\nLISTREF\tkeywords\n}\n"
        "[\nID\t25\nsun\n]\n");
    CVLIPTCINI ini;
    EXPECT_TRUE(folder.Load(ini));
    EXPECT_EQ(IDs(ini), (IdList{120, 25}));
    Tag tag;
    ASSERT_TRUE(ini.GetDescriptor(120, tag));
    EXPECT_EQ(Summary(tag), "'Caption' max=2000 height=20 desc=What the picture shows,\nin a few lines");
    ASSERT_TRUE(ini.GetDescriptor(25, tag));
    EXPECT_EQ(Summary(tag), "'Keywords' max=64 repeatable=1 list=keywords");
    EXPECT_EQ(Texts(tag.vValues), std::vector<std::string>{"sun"});
    EXPECT_FALSE(ini.GetDescriptor(200, tag));
}

// One block per case, loaded from a real file: the summary of descriptor 5,
// or "" when it is dropped.
TEST(DefinitionFile, BlockRules) {
    const std::pair<const char*, const char*> cases[] = {
        {"{\nid 5\nname Object\nmaxlen 7\n}\n", "'Object' max=7"},  // keys in lower case
        {"{\nID 5\nNAME x\nTYPE Date\n}\n", "'x' type=date"},
        {"{\nID 5\nNAME x\nTYPE time\n}\n", "'x' type=time"},
        {"{\nID 5\nNAME x\nTYPE NUMBER\n}\n", "'x' type=number"},
        {"{\nID 5\nNAME x\nTYPE date\nTYPE blob\n}\n", "'x' type=date"},  // unknown: the earlier one stays
        {"{\nID 5\nNAME x\nTYPE date \n}\n", "'x'"},                        // a trailing blank: unknown
        {"{\nID 5\nNAME x\nSTANDARD 1\n}\n", "'x'"},
        {"{\nID 5\nNAME x\nSTANDARD 0\nEXTVENDOR Acme\n}\n", "'x' nonstandard=1 vendor=Acme"},
        {"{\nID 5\nNAME x\nSTANDARD 0\n}\n", ""},   // non-standard needs a vendor
        {"{\nID 5\nNAME x\nSTANDARD no\n}\n", ""},  // no digits read as 0
        {"{\nID 5\nDESC nameless\n}\n", ""},
        {"{\nID 5\nNAME Object \n}\n", "'Object '"},
        {"{\nID 5\nNAME first\nNAME second\n}\n", "'second'"},
        {"{\nID 5\nNAME x\nDISPLAYHEIGHT 0\n}\n", "'x'"},  // held within 1..20
        {"{\nID 5\nNAME x\nDISPLAYHEIGHT 21\n}\n", "'x' height=20"},
        {"{\nID 5\nNAME x\nMINLEN +42xyz\nMAXLEN -3\nMANDATORY 7 8\n}\n", "'x' min=42 max=-3 mandatory=7"},
        {"{\nID 5\nNAME x\nMAXLEN 99999999999\nMINLEN -99999999999\n}\n",
         "'x' min=-2147483648 max=2147483647"},
        {"{\nID 5\n[\nNAME x\n}\n", "'x'"},           // a [ line inside a block is a key line
        {"{\nID 5\n{\nNAME x\n}\n", "'x'"},           // a { line inside a block is ignored
        {"{ ID 6\nID 5\nNAME x\n}\n", "'x'"},          // and so is the rest of the { line
        {"{\nID 5\nNAME x\n}", "'x'"},                // } without line feed at the end
        {"{\nID 5\nNAME x\n", "'x'"},                 // block left open at the end
        {"{\nID 5\nNAME x", ""},                      // ... with its name line unterminated
        {"ID 5\nNAME x\n{\n}\n", ""},                 // key lines outside a block
    };
    for (const auto& [text, summary] : cases) {
        TagFolder folder(text);
        CVLIPTCINI ini;
        const bool kept = *summary != '\0';
        EXPECT_EQ(folder.Load(ini), kept) << text;
        Tag tag;
        ASSERT_EQ(ini.GetDescriptor(5, tag), kept) << text;
        if (kept) {
            EXPECT_EQ(ini.Tags().size(), 1u) << text;
            EXPECT_EQ(Summary(tag), summary) << text;
        }
    }
}

TEST(DefinitionFile, FirstDefinitionWinsAcrossBothFiles) {
    TagFolder folder("{\nID 5\nNAME shipped\n}\n{\nID 7\nNAME seven\n}\n{\nID 5\nNAME again\n}\n");
    WriteFile(folder.UserTags(), "{\nID 9\nNAME nine\n}\n{\nID 5\nNAME user\n}\n{\nID 9\nNAME twice\n}\n");
    CVLIPTCINI ini;
    EXPECT_TRUE(folder.Load(ini));
    EXPECT_EQ(IDs(ini), (IdList{5, 7, 9}));
    EXPECT_EQ(ini.Tags()[0].strName, "shipped");
    EXPECT_EQ(ini.Tags()[2].strName, "nine");

    // A second Load starts over instead of adding to what is there.
    EXPECT_TRUE(folder.Load(ini));
    EXPECT_EQ(IDs(ini), (IdList{5, 7, 9}));
}

TEST(DefinitionFile, LoadResultIsThatOfTheLastFileParsed) {
    const std::string good = "{\nID 5\nNAME five\n}\n";
    const std::string badLists = "{\nID 6\nNAME six\n}\n[\nNAME 6\nvalue\n]\n";
    struct Case {
        const char* name;
        const char* tags;      // nullptr: no such file
        const char* userTags;  // nullptr: no such file
        bool result;
        IdList ids;
    };
    const std::string listsOnly = "[\nID 5\nfrom user file\n]\n";
    const Case cases[] = {
        {"both good", good.c_str(), "{\nID 6\nNAME six\n}\n", true, {5, 6}},
        {"user file missing", good.c_str(), nullptr, true, {5}},
        {"user file empty", good.c_str(), "", true, {5}},
        {"user file's lists stop at a bad header", good.c_str(), badLists.c_str(), false, {5, 6}},
        {"shipped lists bad, user file good", badLists.c_str(), "{\nID 5\nNAME five\n}\n", true, {6, 5}},
        {"user file with lists and no tags", good.c_str(), listsOnly.c_str(), true, {5}},
        {"shipped file missing", nullptr, good.c_str(), true, {5}},
        {"both missing", nullptr, nullptr, false, {}},
    };
    for (const Case& c : cases) {
        TagFolder folder;
        if (c.tags != nullptr) WriteFile(folder.Tags(), c.tags);
        if (c.userTags != nullptr) WriteFile(folder.UserTags(), c.userTags);
        CVLIPTCINI ini;
        EXPECT_EQ(folder.Load(ini), c.result) << c.name;
        EXPECT_EQ(IDs(ini), c.ids) << c.name;
    }
}

TEST(DefinitionFile, ValueLists) {
    TagFolder folder(
        "{\nID 5\nNAME five\n}\n{\nID 6\nNAME six\n}\n"
        "text between the last block and the lists is ignored\n"
        "[ anything behind the bracket is ignored\nID 5\n  spaced  \ntwice\ntwice\n"
        "[ a bracket line inside a section is a value\n]\n"
        "ignored between sections\n"
        "{\nID 7\nNAME too late: the tag part has ended\n}\n"
        "[\nID 99\nno descriptor\n]\n"
        "[\nID 5\nsecond section\n]\n"
        "[\nNAME 6\nstops here\n]\n"
        "[\nID 6\nnever read\n]\n");
    CVLIPTCINI ini;
    EXPECT_FALSE(folder.Load(ini)) << "the NAME header ends list parsing with failure";
    EXPECT_EQ(IDs(ini), (IdList{5, 6}));
    Tag five;
    ASSERT_TRUE(ini.GetDescriptor(5, five));
    EXPECT_EQ(Texts(five.vValues),
              (std::vector<std::string>{"spaced", "twice", "twice",
                                        "[ a bracket line inside a section is a value", "second section"}));
    Tag six;
    ASSERT_TRUE(ini.GetDescriptor(6, six));
    EXPECT_TRUE(six.vValues.empty());
    EXPECT_TRUE(ini.UserLists().empty()) << "definition files never fill user lists";
}

TEST(DefinitionFile, SynonymSectionsSurviveOnlyWithoutUserData) {
    TagFolder folder("{\nID 25\nNAME Keywords\n}\n[\nSID 25\n\"sea\",\"ocean\"\n]\n");
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    std::vector<CVLProperty> synonyms;
    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("sea"), synonyms));
    EXPECT_EQ(Texts(synonyms), std::vector<std::string>{"ocean"});

    WriteFile(folder.UserData(), "[\nID 25\nsun\n]\n");
    ASSERT_TRUE(folder.Load(ini));
    EXPECT_FALSE(ini.GetSynonyms(25, CVLProperty("sea"), synonyms));
    EXPECT_TRUE(ini.GetSynonyms(25, CVLProperty("sun"), synonyms));
    EXPECT_TRUE(synonyms.empty());
}

TEST(DefinitionFile, ShippedDefaultFile) {
    // Tests run from the repository root. The prefix test of BadInput counts
    // the fields.
    const std::string text = ReadFile("resources/vliptctags.ipt");
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n') << "a last line without line feed would be lost";

    TagFolder folder(text);
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    for (std::size_t i = 1; i < ini.Tags().size(); ++i) {
        EXPECT_LT(ini.Tags()[i - 1].nID, ini.Tags()[i].nID) << "datasets in ascending order";
    }
    for (const Tag& tag : ini.Tags()) {
        EXPECT_EQ(tag.bNonStandard, 0) << tag.nID;
        EXPECT_GT(tag.nMaxLen, 0) << tag.nID;
        EXPECT_FALSE(tag.strDesc.empty()) << tag.nID;
        EXPECT_NE(tag.nID, 0u) << "the record version is written by the codec";
        EXPECT_LT(tag.nID, 200u) << "binary preview datasets are not described";
    }
    // The fields whose type, length, repetition or list the codec and the
    // editors depend on.
    const std::pair<std::uint32_t, const char*> expected[] = {
        {10, "'Urgency' type=number min=1 max=1"},
        {25, "'Keywords' max=64 repeatable=1 list=keywords"},
        {55, "'Date Created' type=date min=8 max=8"},
        {60, "'Time Created' type=time min=11 max=11"},
        {80, "'By-line' max=32 repeatable=1"},
    };
    for (const auto& [id, summary] : expected) {
        Tag tag;
        ASSERT_TRUE(ini.GetDescriptor(id, tag)) << id;
        tag.strDesc.clear();
        EXPECT_EQ(Summary(tag), summary);
    }
    Tag tag;
    ASSERT_TRUE(ini.GetDescriptor(120, tag));
    EXPECT_EQ(tag.nMaxLen, 2000);
    EXPECT_GT(tag.nDisplayHeight, 1);
    ASSERT_TRUE(ini.GetDescriptor(10, tag));
    EXPECT_EQ(Texts(tag.vValues), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7", "8"}));
}

// Moves a file's last-write time by whole seconds, so no test has to sleep.
void ShiftWriteTime(const std::string& path, std::int64_t seconds) {
    auto times = platform::GetFileTimes(path);
    ASSERT_TRUE(times.has_value()) << path;
    times->write.nanoseconds += seconds * 1'000'000'000;
    ASSERT_TRUE(platform::SetFileTimes(path, *times)) << path;
}

TEST(DefinitionFile, IsDirty) {
    TagFolder folder;
    auto writeAll = [&] {
        WriteFile(folder.Tags(), "{\nID 5\nNAME five\n}\n");
        WriteFile(folder.UserTags(), "{\nID 6\nNAME six\n}\n");
        WriteFile(folder.UserData(), "[\nID 25\nsun\n]\n");
    };
    struct Case {
        const char* name;
        std::function<void()> change;
        bool dirty;
    };
    const Case cases[] = {
        {"nothing changed", [] {}, false},
        {"shipped file touched", [&] { ShiftWriteTime(folder.Tags(), 10); }, true},
        {"shipped file removed", [&] { platform::RemoveFile(folder.Tags()); }, true},
        {"user data touched", [&] { ShiftWriteTime(folder.UserData(), -10); }, true},
        {"user data removed", [&] { platform::RemoveFile(folder.UserData()); }, true},
        {"user definitions touched", [&] { ShiftWriteTime(folder.UserTags(), 10); }, true},
        {"user definitions removed", [&] { platform::RemoveFile(folder.UserTags()); }, false},
    };
    for (const Case& c : cases) {
        writeAll();
        CVLIPTCINI ini;
        EXPECT_TRUE(ini.IsDirty()) << "before any Load";
        ASSERT_TRUE(folder.Load(ini));
        c.change();
        EXPECT_EQ(ini.IsDirty(), c.dirty) << c.name;
    }

    // A user file that appears after Load counts; missing user data always does.
    platform::RemoveFile(folder.UserTags());
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    EXPECT_FALSE(ini.IsDirty());
    WriteFile(folder.UserTags(), "{\nID 6\nNAME six\n}\n");
    EXPECT_TRUE(ini.IsDirty());
    platform::RemoveFile(folder.UserTags());
    platform::RemoveFile(folder.UserData());
    ASSERT_TRUE(folder.Load(ini));
    EXPECT_TRUE(ini.IsDirty()) << "no vliptcusr.dat reads as changed";
}

}  // namespace
}  // namespace vliptc::test
