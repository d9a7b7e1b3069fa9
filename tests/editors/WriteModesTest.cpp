// The write modes times the keyword modes on copies of a camera JPEG, read
// back by ExifTool and exiv2: the template file T always gets the edit as
// shown; the other file F by the rules of its modes.

#include "tests/editors/EditorSupport.h"

namespace vliptc::test {
namespace {

const std::map<std::uint32_t, Values> kTemplateBefore = {
    {5, {"T title"}}, {20, {"s1"}}, {25, {"b"}}, {90, {"Oslo"}}, {105, {"T headline"}}};
const std::map<std::uint32_t, Values> kOtherBefore = {
    {5, {"F title"}}, {20, {"s3"}}, {25, {"a", "b"}}, {105, {"F headline"}}, {120, {"F caption"}}};

// On the sheet the user changes the title, empties the headline, adds the
// keyword "c", replaces the supplemental category and adds a copyright; the
// city stays.
bool EditOnSheet(const SheetRequest& request) {
    request.store.SetField(5, Props({"New title"}));
    request.store.SetField(105, Props({}));
    request.store.SetField(25, Props({"b", "c"}));
    request.store.SetField(20, Props({"s2"}));
    request.store.SetField(116, Props({"(c) me"}));
    return true;
}

// Datasets as written, the record version (2) included.
const Datasets kEditAsShown = {{0, {"2"}},       {5, {"New title"}}, {20, {"s2"}},
                               {25, {"b", "c"}}, {90, {"Oslo"}},     {116, {"(c) me"}}};
// Modified: the title and the copyright were changed; the emptied headline
// is not cleared; the untouched city is not written.
const Datasets kModified = {
    {0, {"2"}}, {5, {"New title"}}, {105, {"F headline"}}, {116, {"(c) me"}}, {120, {"F caption"}}};
// Keep: only the fields F lacks or has empty.
const Datasets kKeep = {{0, {"2"}},        {5, {"F title"}},    {90, {"Oslo"}}, {105, {"F headline"}},
                        {116, {"(c) me"}}, {120, {"F caption"}}};

// F's keywords and supplemental categories by keyword mode: kept, replaced,
// merged ("a", "b" with "b", "c" gives "a", "b", "c").
Datasets WithKeywords(Datasets fields, int keywordMode) {
    const Datasets byMode[] = {{{25, {"a", "b"}}, {20, {"s3"}}},
                               {{25, {"b", "c"}}, {20, {"s2"}}},
                               {{25, {"a", "b", "c"}}, {20, {"s3", "s2"}}}};
    for (const auto& [id, values] : byMode[keywordMode]) fields[id] = values;
    return fields;
}

struct ModeCase {
    const char* name;
    int writeMode;
    int keywordMode;
    Datasets other;  // F after the edit
};

inline void PrintTo(const ModeCase& c, std::ostream* out) { *out << c.name; }

class WriteModeTest : public EditorTest, public ::testing::WithParamInterface<ModeCase> {
protected:
    std::uint32_t AddCameraJpeg(const std::string& name, const std::map<std::uint32_t, Values>& fields) {
        std::filesystem::copy_file(kCorpus + "jpeg/ian_Canon_40D.jpg", dir.File(name));
        Seed(dir.File(name), fields);
        return engine.AddFile(dir.File(name));
    }
};

TEST_P(WriteModeTest, MergesIntoTheOtherFile) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    if (!HaveTool("exiftool") || !HaveTool("exiv2")) GTEST_SKIP() << "exiftool or exiv2 is not installed";
    const ModeCase& c = GetParam();
    const std::uint32_t t = AddCameraJpeg("t.jpg", kTemplateBefore);
    const std::uint32_t f = AddCameraJpeg("f.jpg", kOtherBefore);
    ui.sheet = [&c](const SheetRequest& request, EditModes& modes) {
        modes = {c.writeMode, c.keywordMode};
        return EditOnSheet(request);
    };

    const bool alone = c.other.empty();
    const std::vector<std::uint32_t> files = alone ? std::vector{t} : std::vector{f, t};
    ASSERT_EQ(Show(files, t), kVLSuccess);
    EXPECT_EQ(changed, files);
    std::vector<WrittenFile> written{{"T", PathOf(t), CIPTC::kFormatJPEG, kEditAsShown}};
    if (!alone) written.push_back({"F", PathOf(f), CIPTC::kFormatJPEG, c.other});
    for (const auto& problem : ToolsReadBack(written)) ADD_FAILURE() << problem;
}

INSTANTIATE_TEST_SUITE_P(Editor, WriteModeTest,
                         ::testing::Values(ModeCase{"ReplaceNone", 0, 0, kEditAsShown},
                                           ModeCase{"ReplaceReplace", 0, 1, kEditAsShown},
                                           ModeCase{"ReplaceMerge", 0, 2, kEditAsShown},
                                           ModeCase{"ModifiedNone", 1, 0, WithKeywords(kModified, 0)},
                                           ModeCase{"ModifiedReplace", 1, 1, WithKeywords(kModified, 1)},
                                           ModeCase{"ModifiedMerge", 1, 2, WithKeywords(kModified, 2)},
                                           ModeCase{"KeepNone", 2, 0, WithKeywords(kKeep, 0)},
                                           ModeCase{"KeepReplace", 2, 1, WithKeywords(kKeep, 1)},
                                           ModeCase{"KeepMerge", 2, 2, WithKeywords(kKeep, 2)},
                                           // With one file the modes are not consulted: it is the
                                           // template file.
                                           ModeCase{"OneFileOnly", 2, 0, {}}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace vliptc::test
