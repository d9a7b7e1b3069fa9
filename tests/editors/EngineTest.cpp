// The pieces under the editor: file URIs, the string formatting, and the
// merge rules one by one.

#include "editors/StringTable.h"
#include "host/VLURI.h"
#include "iptc/RecordMerge.h"
#include "tests/editors/EditorSupport.h"

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

TEST(RecordMerge, ListEquality) {
    CVLProperty number;
    number.SetNumber16(1);
    const std::tuple<std::vector<CVLProperty>, std::vector<CVLProperty>, bool> cases[] = {
        {{}, {}, true},
        {Props({"a"}), Props({"A"}), false},
        {Props({"1"}), {number}, false},  // kinds differ
        {Props({"a", "b"}), Props({"b", "a"}), true},
        {Props({"a", "a", "b"}), Props({"a", "b", "b"}), false},
        {Props({"a", "b"}), Props({"a"}), false},
        {Props({""}), {}, false},
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
            {1, Props({"a"}), {}, {}},
            // Appended values count for later repeats; what the file repeats stays.
            {2, Props({"a", "a", "b"}), Props({"b", "c", "c", "a", "d"}), Props({"a", "a", "b", "c", "d"})},
            {5, Props({"a"}), Props({"c"}), Props({"a"})},
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
    store.SetField(90, Props({"Oslo"}));
    store.SetField(15, Props({""}));
    store.SetField(25, Props({"k"}));
    const CIPTC::FieldList templateRecord{{90, Props({"Oslo"})}, {15, Props({"X"})}, {200, Props({"p"})}};
    using iptc::FieldAction;
    const std::tuple<iptc::MergeOptions, CIPTC::SIPTCItem, FieldAction> cases[] = {
        {{7, 1, true, false}, {90, Props({"Bergen"})}, FieldAction::kSet},   // the template file
        {{2, 1, false, true}, {90, Props({"Bergen"})}, FieldAction::kSet},   // the only file
        {{2, 1, false, false}, {15, Props({"Y"})}, FieldAction::kKeywords},  // category is keyword-like
        {{1, 1, false, false}, {200, Props({"p"})}, FieldAction::kSet},  // untouched, but the file lacks it
        {{3, 1, false, false}, {90, Props({"Bergen"})}, FieldAction::kKeep},
    };
    for (const auto& [options, edited, action] : cases) {
        EXPECT_EQ(iptc::DecideField(edited, templateRecord, store, options), action)
            << "mode " << options.writeMode << ", dataset " << edited.nID;
    }
}

}  // namespace
}  // namespace vliptc::test
