// Tag-definition files on disk: descriptors, value lists, the order in which
// the two files count, Load's result and the change check.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "tests/tags/TagsTestSupport.h"

namespace vliptc::test {
namespace {

using Tag = CVLIPTCINI::STagInfo;
using IdList = std::vector<std::uint32_t>;

TEST(DefinitionFile, WorkedExample) {
    TagFolder folder;
    WriteFile(folder.Tags(),
              "; the caption first\n"
              "{\n"
              "ID\t120\n"
              "NAME\tCaption\n"
              "DESC\t\"What the picture shows,\n"
              "in a few lines\"\n"
              "TYPE\tstring\n"
              "MAXLEN\t2000\n"
              "DISPLAYHEIGHT\t40\n"
              "}\n"
              "{\n"
              "ID\t200\n"
              "STANDARD\t0\n"
              "NAME\tJob code\n"
              "}\n"
              "{\n"
              "ID\t25\n"
              "NAME\tKeywords\n"
              "REPEATABLE\t1\n"
              "MAXLEN\t64\n"
              "LISTREF\tkeywords\n"
              "}\n"
              "[\n"
              "ID\t25\n"
              "sun\n"
              "]\n");
    CVLIPTCINI ini;
    EXPECT_TRUE(folder.Load(ini));
    EXPECT_EQ(IDs(ini), (IdList{120, 25}));

    Tag caption;
    ASSERT_TRUE(ini.GetDescriptor(120, caption));
    EXPECT_EQ(caption.strName, "Caption");
    EXPECT_EQ(caption.strDesc, "What the picture shows,\nin a few lines");
    EXPECT_EQ(caption.nType, CVLIPTCINI::kTypeString);
    EXPECT_EQ(caption.nMaxLen, 2000);
    EXPECT_EQ(caption.nDisplayHeight, 20);
    EXPECT_EQ(caption.nMinLen, 0);
    EXPECT_EQ(caption.nMandatory, 0);
    EXPECT_EQ(caption.nRepeatable, 0);
    EXPECT_EQ(caption.bNonStandard, 0);

    Tag keywords;
    ASSERT_TRUE(ini.GetDescriptor(25, keywords));
    EXPECT_EQ(keywords.nDisplayHeight, 1);
    EXPECT_EQ(keywords.nType, CVLIPTCINI::kTypeString);
    EXPECT_EQ(keywords.nRepeatable, 1);
    EXPECT_EQ(keywords.nMaxLen, 64);
    EXPECT_EQ(keywords.strListRef, "keywords");
    EXPECT_EQ(Texts(keywords.vValues), std::vector<std::string>{"sun"});

    Tag none;
    EXPECT_FALSE(ini.GetDescriptor(200, none));
}

// One block per case, loaded from a real file; `kept` says whether descriptor
// 5 survives, `check` looks at it.
TEST(DefinitionFile, BlockRules) {
    struct Case {
        const char* name;
        std::string text;
        bool kept;
        std::function<void(const Tag&)> check;
    };
    const Case cases[] = {
        {"keys in lower case", "{\nid 5\nname Object\nmaxlen 7\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nMaxLen, 7); }},
        {"type Date in mixed case", "{\nID 5\nNAME x\nTYPE Date\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nType, CVLIPTCINI::kTypeDate); }},
        {"type time", "{\nID 5\nNAME x\nTYPE time\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nType, CVLIPTCINI::kTypeTime); }},
        {"type NUMBER", "{\nID 5\nNAME x\nTYPE NUMBER\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nType, CVLIPTCINI::kTypeNumber); }},
        {"unknown type keeps the earlier one", "{\nID 5\nNAME x\nTYPE date\nTYPE blob\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nType, CVLIPTCINI::kTypeDate); }},
        {"type with a trailing blank is unknown", "{\nID 5\nNAME x\nTYPE date \n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nType, CVLIPTCINI::kTypeString); }},
        {"STANDARD 1", "{\nID 5\nNAME x\nSTANDARD 1\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.bNonStandard, 0); }},
        {"STANDARD 0 with vendor", "{\nID 5\nNAME x\nSTANDARD 0\nEXTVENDOR Acme\n}\n", true,
         [](const Tag& t) {
             EXPECT_EQ(t.bNonStandard, 1);
             EXPECT_EQ(t.strVendor, "Acme");
         }},
        {"STANDARD 0 without vendor", "{\nID 5\nNAME x\nSTANDARD 0\n}\n", false, nullptr},
        {"STANDARD without digits reads as 0", "{\nID 5\nNAME x\nSTANDARD no\n}\n", false, nullptr},
        {"no name", "{\nID 5\nDESC nameless\n}\n", false, nullptr},
        {"name keeps a trailing blank", "{\nID 5\nNAME Object \n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.strName, "Object "); }},
        {"later key overwrites", "{\nID 5\nNAME first\nNAME second\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.strName, "second"); }},
        {"display height 0 held at 1", "{\nID 5\nNAME x\nDISPLAYHEIGHT 0\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nDisplayHeight, 1); }},
        {"display height -5 held at 1", "{\nID 5\nNAME x\nDISPLAYHEIGHT -5\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nDisplayHeight, 1); }},
        {"display height 21 held at 20", "{\nID 5\nNAME x\nDISPLAYHEIGHT 21\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.nDisplayHeight, 20); }},
        {"numbers read like atol", "{\nID 5\nNAME x\nMINLEN +42xyz\nMAXLEN -3\nMANDATORY 7 8\n}\n", true,
         [](const Tag& t) {
             EXPECT_EQ(t.nMinLen, 42);
             EXPECT_EQ(t.nMaxLen, -3);
             EXPECT_EQ(t.nMandatory, 7);
         }},
        {"huge numbers clamp", "{\nID 5\nNAME x\nMAXLEN 99999999999\nMINLEN -99999999999\n}\n", true,
         [](const Tag& t) {
             EXPECT_EQ(t.nMaxLen, std::numeric_limits<std::int32_t>::max());
             EXPECT_EQ(t.nMinLen, std::numeric_limits<std::int32_t>::min());
         }},
        {"a [ line inside a block is a key line", "{\nID 5\n[\nNAME x\n}\n", true,
         [](const Tag& t) { EXPECT_EQ(t.strName, "x"); }},
        {"a { line inside a block is ignored", "{\nID 5\n{\nNAME x\n}\n", true, nullptr},
        {"the rest of the { line is ignored", "{ ID 6\nID 5\nNAME x\n}\n", true, nullptr},
        {"} without line feed at the end", "{\nID 5\nNAME x\n}", true, nullptr},
        {"block left open at the end", "{\nID 5\nNAME x\n", true, nullptr},
        {"open block whose name line lacks its line feed", "{\nID 5\nNAME x", false, nullptr},
        {"key lines outside a block are ignored", "ID 5\nNAME x\n{\n}\n", false, nullptr},
    };
    for (const Case& c : cases) {
        TagFolder folder;
        WriteFile(folder.Tags(), c.text);
        CVLIPTCINI ini;
        EXPECT_EQ(folder.Load(ini), c.kept) << c.name;
        Tag tag;
        ASSERT_EQ(ini.GetDescriptor(5, tag), c.kept) << c.name;
        if (c.kept) {
            EXPECT_EQ(ini.Tags().size(), 1u) << c.name;
            if (c.check) c.check(tag);
        }
    }
}

TEST(DefinitionFile, FirstDefinitionWinsAcrossBothFiles) {
    TagFolder folder;
    WriteFile(folder.Tags(), "{\nID 5\nNAME shipped\n}\n{\nID 7\nNAME seven\n}\n{\nID 5\nNAME again\n}\n");
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
        {"user file with nothing usable", good.c_str(), "; only a comment\n", true, {5}},
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
    TagFolder folder;
    WriteFile(folder.Tags(),
              "{\nID 5\nNAME five\n}\n"
              "{\nID 6\nNAME six\n}\n"
              "text between the last block and the lists is ignored\n"
              "[ anything behind the bracket is ignored\n"
              "ID 5\n"
              "  spaced  \n"
              "twice\n"
              "twice\n"
              "[ a bracket line inside a section is a value\n"
              "]\n"
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
    const std::string tags = "{\nID 25\nNAME Keywords\n}\n[\nSID 25\n\"sea\",\"ocean\"\n]\n";
    TagFolder folder;
    WriteFile(folder.Tags(), tags);
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
    // Tests run from the repository root.
    const std::string text = ReadFile("resources/vliptctags.ipt");
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n') << "a last line without line feed would be lost";

    TagFolder folder;
    WriteFile(folder.Tags(), text);
    CVLIPTCINI ini;
    ASSERT_TRUE(folder.Load(ini));
    EXPECT_EQ(ini.Tags().size(), 52u);
    for (std::size_t i = 1; i < ini.Tags().size(); ++i) {
        EXPECT_LT(ini.Tags()[i - 1].nID, ini.Tags()[i].nID) << "datasets in ascending order";
    }
    for (const Tag& tag : ini.Tags()) {
        EXPECT_EQ(tag.bNonStandard, 0) << tag.nID;
        EXPECT_GT(tag.nMaxLen, 0) << tag.nID;
        EXPECT_NE(tag.nID, 0u) << "the record version is written by the codec";
        EXPECT_LT(tag.nID, 200u) << "binary preview datasets are not described";
    }

    struct Expect {
        std::uint32_t id;
        const char* name;
        std::uint32_t type;
        std::int32_t maxLen;
        std::int32_t repeatable;
    };
    const Expect expected[] = {
        {5, "Object Name", CVLIPTCINI::kTypeString, 64, 0},
        {10, "Urgency", CVLIPTCINI::kTypeNumber, 1, 0},
        {25, "Keywords", CVLIPTCINI::kTypeString, 64, 1},
        {55, "Date Created", CVLIPTCINI::kTypeDate, 8, 0},
        {60, "Time Created", CVLIPTCINI::kTypeTime, 11, 0},
        {80, "By-line", CVLIPTCINI::kTypeString, 32, 1},
        {116, "Copyright Notice", CVLIPTCINI::kTypeString, 128, 0},
        {120, "Caption/Abstract", CVLIPTCINI::kTypeString, 2000, 0},
        {122, "Writer/Editor", CVLIPTCINI::kTypeString, 32, 1},
    };
    for (const Expect& e : expected) {
        Tag tag;
        ASSERT_TRUE(ini.GetDescriptor(e.id, tag)) << e.id;
        EXPECT_EQ(tag.strName, e.name);
        EXPECT_EQ(tag.nType, e.type) << e.name;
        EXPECT_EQ(tag.nMaxLen, e.maxLen) << e.name;
        EXPECT_EQ(tag.nRepeatable, e.repeatable) << e.name;
        EXPECT_FALSE(tag.strDesc.empty()) << e.name;
    }
    Tag tag;
    ASSERT_TRUE(ini.GetDescriptor(25, tag));
    EXPECT_EQ(tag.strListRef, "keywords");
    ASSERT_TRUE(ini.GetDescriptor(120, tag));
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
