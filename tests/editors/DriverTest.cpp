// The IPTC editor's checks, questions and notices, its write pass and its
// log, run headless with scripted answers.

#include "platform/FileSystem.h"
#include "tests/editors/EditorSupport.h"

namespace vliptc::test {
namespace {

constexpr std::uint32_t kOk = kVLSuccess;
constexpr std::uint32_t kAborted = CVLIPTCEditor::kResultAborted;

// What a selection holds, file by file.
enum class Kind {
    kJpeg,       // a writable JPEG
    kMissing,    // nothing at the path: read-only
    kFolder,     // a folder named like a JPEG: read-only
    kPng,        // an unsupported format
    kCrwNoThm,   // a raw image without its companion
    kCrwWithThm  // a raw image whose ".THM" companion is there
};

struct SelectionCase {
    const char* name;
    std::vector<Kind> files;
    std::size_t templateIndex;  // into files; past the end: an id not in the selection
    std::deque<Answer> answers;
    std::vector<std::string> events;
    std::uint32_t result;
};

inline void PrintTo(const SelectionCase& c, std::ostream* out) { *out << c.name; }

class SelectionTest : public EditorTest, public ::testing::WithParamInterface<SelectionCase> {
protected:
    std::uint32_t AddKind(Kind kind, std::size_t index) {
        const std::string stem = "f" + std::to_string(index);
        switch (kind) {
            case Kind::kJpeg:
                return AddJpeg(stem + ".jpg");
            case Kind::kMissing:
                return AddMissing(stem + ".jpg");
            case Kind::kFolder:
                std::filesystem::create_directory(dir.File(stem + ".jpg"));
                return engine.AddFile(dir.File(stem + ".jpg"));
            case Kind::kPng:
                return Add(stem + ".png", "\x89PNG\r\n\x1a\n");
            case Kind::kCrwNoThm:
                return Add(stem + ".crw", "raw");
            case Kind::kCrwWithThm:
                WriteFile(dir.File(stem + ".THM"), SmallJpeg());
                return Add(stem + ".CRW", "raw");
        }
        return 0;
    }
};

// The sheet is cancelled in every case: what matters is what came before it.
TEST_P(SelectionTest, AsksAndTellsInOrder) {
    const SelectionCase& c = GetParam();
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < c.files.size(); ++i) ids.push_back(AddKind(c.files[i], i));
    const std::uint32_t templateId = c.templateIndex < ids.size() ? ids[c.templateIndex] : 999;
    ui.answers = c.answers;
    changed = {42};

    EXPECT_EQ(Show(ids, templateId), c.result);
    EXPECT_EQ(ui.events, c.events);
    EXPECT_EQ(changed, std::vector<std::uint32_t>{42});
    EXPECT_EQ(ui.waitDepth, 0);
    for (const std::uint32_t id : ids) EXPECT_EQ(engine.RefreshCount(id), 0u);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Editor, SelectionTest, ::testing::Values(
    SelectionCase{"Empty", {}, 0, {}, {"msg 202 exclamation"}, kAborted},
    SelectionCase{"OneReadOnly", {Kind::kMissing}, 0, {},
                  {"msg 208 information", "msg 202 exclamation"}, kAborted},
    // One writable file left: told, not asked; the template moves to it.
    SelectionCase{"TwoOneReadOnly", {Kind::kMissing, Kind::kJpeg}, 0, {},
                  {"msg 208 information", "sheet 2 of 1"}, kOk},
    SelectionCase{"ReadOnlyAskedWithTwoLeft", {Kind::kJpeg, Kind::kFolder, Kind::kJpeg}, 2, {Answer::kYes},
                  {"ask 201 question yes", "sheet 3 of 2"}, kOk},
    SelectionCase{"ReadOnlyDeclined", {Kind::kJpeg, Kind::kMissing, Kind::kJpeg}, 0, {Answer::kNo},
                  {"ask 201 question no"}, kAborted},
    SelectionCase{"CrwWithoutThmAlone", {Kind::kCrwNoThm}, 0, {}, {"msg 218 information"}, kAborted},
    SelectionCase{"CrwWithThmKept", {Kind::kCrwWithThm}, 0, {}, {"sheet 1 of 1"}, kOk},
    SelectionCase{"UnsupportedAlone", {Kind::kPng}, 0, {}, {"msg 207 information"}, kAborted},
    SelectionCase{"UnsupportedDeclined", {Kind::kJpeg, Kind::kPng}, 0, {Answer::kNo},
                  {"ask 200 question no"}, kAborted},
    // Every kind at once: THM first, then format, then read-only; Yes to each goes on.
    SelectionCase{"AllThree", {Kind::kFolder, Kind::kPng, Kind::kCrwNoThm, Kind::kJpeg, Kind::kJpeg}, 0, {},
                  {"ask 219 question yes", "ask 200 question yes", "ask 201 question yes", "sheet 4 of 2"},
                  kOk},
    SelectionCase{"TemplateNotSelected", {Kind::kJpeg, Kind::kJpeg}, 9, {}, {"sheet 1 of 2"}, kOk}),
    [](const auto& info) { return std::string(info.param.name); });
// clang-format on

// Cancel on the sheet: success, nothing written or listed; the user lists
// and the modes are saved all the same. Stored modes out of range are dropped.
TEST_F(EditorTest, CancelledSheetSavesListsAndModes) {
    const std::uint32_t a = AddJpeg("a.jpg", {{5, {"Title"}}});
    const std::string before = ReadFile(PathOf(a));
    ui.storedModes = {3, 5};
    ui.sheet = [](const SheetRequest& request, EditModes& modes) {
        EXPECT_TRUE(request.store.SetUserList(90, Props({"Oslo"})));
        request.store.SetField(5, Props({"Changed"}));
        modes = {2, 0};
        return false;
    };
    changed = {7};
    EXPECT_EQ(Show({a}, a), kOk);
    EXPECT_EQ(ui.caption, "Velora IPTC Editor");
    EXPECT_EQ(ui.sheetOpenedWith->writeMode, 0);
    EXPECT_EQ(ui.sheetOpenedWith->keywordMode, 1);
    ASSERT_TRUE(ui.savedModes);
    EXPECT_EQ(ui.savedModes->writeMode, 2);
    EXPECT_EQ(ui.savedModes->keywordMode, 0);
    EXPECT_EQ(changed, std::vector<std::uint32_t>{7});
    EXPECT_EQ(ReadFile(PathOf(a)), before);
    EXPECT_NE(ReadFile(user + "/vliptcusr.dat").find("Oslo"), std::string::npos);
}

// OK: the pass drains, opens the progress window, writes and refreshes each
// file and logs it; a file that became unwritable under the sheet is passed
// over without a word or a progress step; a refresh the host refuses is only
// logged.
TEST_F(EditorTest, WritePassWritesRefreshesAndLogs) {
    const std::uint32_t a = AddJpeg("a a.jpg");
    const std::uint32_t b = AddJpeg("b.jpg");
    const std::uint32_t c = AddJpeg("c.jpg");
    ui.sheet = [&](const SheetRequest& request, EditModes&) {
        request.store.SetField(5, Props({"Title"}));
        std::filesystem::remove(PathOf(b));
        return true;
    };
    engine.refusedRefresh = c;
    changed = {99};
    EXPECT_EQ(Show({a, b, c}, a), kOk);
    EXPECT_EQ(ui.events, (std::vector<std::string>{"sheet 1 of 3", "drain", "progress 0..3",
                                                   "text Processing " + PathOf(a), "pos 0",
                                                   "text Processing " + PathOf(c), "pos 2"}));
    EXPECT_EQ(changed, (std::vector<std::uint32_t>{99, a, c}));
    EXPECT_EQ(Read(PathOf(c)), (Datasets{{5, {"Title"}}}));
    EXPECT_EQ(engine.RefreshCount(a), 1u);
    EXPECT_EQ(engine.RefreshCount(b), 0u);
    EXPECT_EQ(engine.RefreshCount(c), 1u);
    EXPECT_EQ(ui.waitDepth, 0);
    EXPECT_FALSE(ui.waitUnbalanced);
    EXPECT_EQ(LogLines(), (std::vector<std::string>{
                              "INFO4\tVLIPTCEditor\tIPTC: Processing file file://" + dir.Path() + "a%20a.jpg",
                              "INFO4\tVLIPTCEditor\tIPTC: Processing file file://" + PathOf(c),
                              "ERROR\tVLIPTCEditor\terror 10099: Updating file after IPTC update"}));
}

// A single file that cannot be written: notice 217 (the text that speaks of
// EXIF), abort. Several: question 206 for each failure, Yes goes on, No stops.
// Cancel in the progress window stops after the file.
TEST_F(EditorTest, WriteFailuresAndCancel) {
    const std::string broken = "not a JPEG at all";
    const std::uint32_t bad = Add("bad.jpg", broken);
    ui.sheet = [](const SheetRequest& request, EditModes&) {
        request.store.SetField(5, Props({"Title"}));
        return true;
    };
    EXPECT_EQ(Show({bad}, bad), kAborted);
    EXPECT_EQ(ui.events.at(3), "msg 217 error");
    EXPECT_EQ(ui.texts.at(217), "Error while writing the EXIF information to the file\n" + PathOf(bad));
    EXPECT_TRUE(changed.empty());
    EXPECT_EQ(ReadFile(PathOf(bad)), broken);
    EXPECT_EQ(LogLines().back(), "ERROR\tVLIPTCEditor\tIPTC: Failed to add IPTC comments to file file://" +
                                     PathOf(bad) + " (11)");

    const std::uint32_t a = AddJpeg("a.jpg");
    const std::uint32_t b = AddJpeg("b.jpg");
    ui.events.clear();
    ui.answers = {Answer::kYes};
    EXPECT_EQ(Show({bad, a, b}, a), kOk);
    EXPECT_EQ(ui.events, (std::vector<std::string>{"sheet 2 of 3", "drain", "progress 0..3",
                                                   "ask 206 error yes", "text Processing " + PathOf(bad),
                                                   "pos 0", "text Processing " + PathOf(a), "pos 1",
                                                   "text Processing " + PathOf(b), "pos 2"}));
    EXPECT_EQ(ui.texts.at(206), "Error while writing the IPTC information to the file\n" + PathOf(bad) +
                                    "\n\nDo you want to continue with the remaining files?");
    EXPECT_EQ(changed, (std::vector<std::uint32_t>{a, b}));

    changed.clear();
    ui.events.clear();
    ui.answers = {Answer::kNo};
    EXPECT_EQ(Show({bad, a, b}, a), kAborted);
    EXPECT_EQ(ui.events.back(), "ask 206 error no");
    EXPECT_TRUE(changed.empty());

    ui.cancelAtPos = 0;
    EXPECT_EQ(Show({a, b}, a), kAborted);
    EXPECT_EQ(changed, std::vector<std::uint32_t>{a});
    EXPECT_EQ(engine.RefreshCount(b), 1u) << "written by the first pass only";
    EXPECT_EQ(ui.waitDepth, 0);
}

// Ends before anything is shown: a host error for an id (logged, passed on),
// a template file whose data cannot be read, a store that did not start.
TEST_F(EditorTest, EndsWithoutAWord) {
    const std::uint32_t a = AddJpeg("a.jpg");
    EXPECT_EQ(Show({a, 77}, a), CVLReferenceEngine::kErrorUnknownFile);
    const std::uint32_t empty = Add("empty.jpg", "");
    EXPECT_EQ(Show({empty, a}, empty), CVLIPTCEditor::kResultTemplateUnreadable);
    EXPECT_TRUE(ui.events.empty());
    EXPECT_EQ(LogLines(), (std::vector<std::string>{
                              "ERROR\tVLIPTCEditor\terror 10002: the file id is not in the catalogue",
                              "ERROR\tVLIPTCEditor\tIPTCEdit: Failed to parse template file: 6"}));

    CVLIPTCEditor broken(&engine, dir.File("no-definitions"), user, &ui);
    EXPECT_EQ(broken.ShowEditor({a}, a, changed, 0, nullptr), CVLIPTCEditor::kResultNotInitialized);
    EXPECT_TRUE(ui.events.empty());
    EXPECT_TRUE(changed.empty());
}

// Bit 0 of the flags: each written file keeps its access and modification
// times to the nanosecond, the raw image's companion included. Without it the
// modification time moves.
TEST_F(EditorTest, KeepsFileTimesOnBitZero) {
    const std::uint32_t a = AddJpeg("a.jpg");
    AddJpeg("raw.thm");
    const std::uint32_t raw = Add("raw.crw", "raw");
    const platform::FileTimes old{std::nullopt, {981'173'106'123'456'789}, {981'173'106'987'654'321}};
    for (const char* name : {"a.jpg", "raw.thm"}) ASSERT_TRUE(platform::SetFileTimes(dir.File(name), old));
    ui.sheet = [](const SheetRequest& request, EditModes&) {
        request.store.SetField(5, Props({"Title"}));
        return true;
    };

    EXPECT_EQ(Show({a, raw}, a, CVLIPTCEditor::kFlagKeepFileTimes), kOk);
    EXPECT_EQ(changed, (std::vector<std::uint32_t>{a, raw}));
    for (const char* name : {"a.jpg", "raw.thm"}) {
        SCOPED_TRACE(name);
        const auto times = platform::GetFileTimes(dir.File(name));
        ASSERT_TRUE(times);
        EXPECT_EQ(times->access, old.access);
        EXPECT_EQ(times->write, old.write);
        EXPECT_EQ(Read(dir.File(name)), (Datasets{{5, {"Title"}}}));
    }

    EXPECT_EQ(Show({a}, a), kOk);
    EXPECT_GT(platform::GetFileTimes(dir.File("a.jpg"))->write, old.write);
}

}  // namespace
}  // namespace vliptc::test
