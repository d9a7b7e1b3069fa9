// The pieces under the editor: file URIs, the string formatting, and the
// merge rules one by one.

#include <gtest/gtest.h>

#include "editors/StringTable.h"
#include "host/VLURI.h"
#include "iptc/RecordMerge.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

TEST(FileURI, PathsRoundTripAndTextsParse) {
    for (const std::string path : {"/tmp/a b.jpg", "/x/100%.jpg", "/x/#1?;=&+.jpg", "/x/\xC3\x85lesund.jpg",
                                   "/x/%41.jpg", "/x/back\\slash.jpg"}) {
        EXPECT_EQ(CVLURI::FromPath(path).WindowsPath(), path) << path;
    }
    EXPECT_EQ(CVLURI::FromPath("/tmp/a b%.jpg").AsString(), "file:///tmp/a%20b%25.jpg");
    const std::pair<const char*, const char*> cases[] = {
        {"FILE:///a", "/a"},
        {"file://localhost/a%20b", "/a b"},
        {"file://server/a", ""},
        {"http://host/a.jpg", ""},
        {"file:", ""},
        {"file:///a%2", "/a%2"},
        {"file:///a%zz", "/a%zz"},
        {"file:///a%2f%2F", "/a//"},
    };
    for (const auto& [uri, path] : cases) EXPECT_EQ(CVLURI(uri).WindowsPath(), path) << uri;
}

TEST(StringTable, FormatsArgumentsVerbatim) {
    using editors::FormatText;
    EXPECT_EQ(FormatText(editors::StringText(300), {"/a/%s%lu.jpg"}), "Processing /a/%s%lu.jpg");
    EXPECT_EQ(FormatText(editors::StringText(204), {"3", "file:///t.jpg"}),
              "3 files in selection. Template file: file:///t.jpg");
    EXPECT_EQ(FormatText("100%% of %s %d", {"x"}), "100% of x ");
}

std::vector<CVLProperty> Texts(std::initializer_list<const char*> values) {
    std::vector<CVLProperty> out;
    for (const char* v : values) out.emplace_back(v);
    return out;
}

TEST(RecordMerge, ListEquality) {
    CVLProperty number;
    number.SetNumber16(1);
    const std::tuple<std::vector<CVLProperty>, std::vector<CVLProperty>, bool> cases[] = {
        {{}, {}, true},
        {Texts({"a"}), Texts({"A"}), false},
        {Texts({"1"}), {number}, false},  // kinds differ
        {Texts({"a", "b"}), Texts({"b", "a"}), true},
        {Texts({"a", "a", "b"}), Texts({"a", "b", "b"}), false},
        {Texts({"a", "b"}), Texts({"a"}), false},
        {Texts({""}), {}, false},
    };
    for (const auto& [a, b, same] : cases) {
        EXPECT_EQ(iptc::SameValues(a, b), same) << a.size() << " / " << b.size();
        EXPECT_EQ(iptc::SameValues(b, a), same);
    }
}

class MergeTest : public ::testing::Test {
protected:
    TempDir dir;
    CIPTC store;
    void SetUp() override { ASSERT_EQ(store.Initialize("resources/", dir.Path()), CIPTC::kSuccess); }
};

TEST_F(MergeTest, KeywordModes) {
    const std::tuple<int, std::vector<CVLProperty>, std::vector<CVLProperty>, std::vector<CVLProperty>>
        cases[] = {
            {0, Texts({"a", "b"}), Texts({"c"}), Texts({"a", "b"})},
            {1, Texts({"a"}), {}, {}},
            // Appended values count for later repeats; what the file repeats stays.
            {2, Texts({"a", "a", "b"}), Texts({"b", "c", "c", "a", "d"}), Texts({"a", "a", "b", "c", "d"})},
            {5, Texts({"a"}), Texts({"c"}), Texts({"a"})},
        };
    for (const auto& [mode, file, edited, after] : cases) {
        store.SetField(25, file);
        iptc::MergeKeywords(CIPTC::SIPTCItem{25, edited}, store, mode);
        EXPECT_EQ(store.Field(25)->vValues, after) << "mode " << mode;
    }
}

// The first rule that applies wins. The file holds city "Oslo", category "",
// keywords "k"; the template record held city "Oslo", category "X" and an
// undescribed dataset 200.
TEST_F(MergeTest, FirstRuleWins) {
    store.SetField(90, Texts({"Oslo"}));
    store.SetField(15, Texts({""}));
    store.SetField(25, Texts({"k"}));
    const CIPTC::FieldList templateRecord{{90, Texts({"Oslo"})}, {15, Texts({"X"})}, {200, Texts({"p"})}};
    using iptc::FieldAction;
    const std::tuple<iptc::MergeOptions, CIPTC::SIPTCItem, FieldAction> cases[] = {
        {{7, 1, true, false}, {90, Texts({"Bergen"})}, FieldAction::kSet},   // the template file
        {{2, 1, false, true}, {90, Texts({"Bergen"})}, FieldAction::kSet},   // the only file
        {{0, 0, false, false}, {25, Texts({"z"})}, FieldAction::kSet},       // replace: keywords too
        {{2, 1, false, false}, {15, Texts({"Y"})}, FieldAction::kKeywords},  // category is keyword-like
        {{1, 1, false, false}, {90, Texts({"Oslo"})}, FieldAction::kKeep},   // untouched
        {{1, 1, false, false}, {90, Texts({""})}, FieldAction::kKeep},       // emptied: not cleared
        {{1, 0, false, false}, {15, Texts({"Y"})}, FieldAction::kKeywords},
        {{1, 1, false, false}, {200, Texts({"p"})}, FieldAction::kSet},  // untouched, but the file lacks it
        {{3, 1, false, false}, {90, Texts({"Bergen"})}, FieldAction::kKeep},
    };
    for (const auto& [options, edited, action] : cases) {
        EXPECT_EQ(iptc::DecideField(edited, templateRecord, store, options), action)
            << "mode " << options.writeMode << ", dataset " << edited.nID;
    }
}

}  // namespace
}  // namespace vliptc::test
