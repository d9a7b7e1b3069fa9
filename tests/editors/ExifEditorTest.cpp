// The EXIF editor's checks, questions and notices, its write pass and its
// log, run headless with a scripted dialog; and a date edited through it on
// copies of real files, read back by ExifTool.

#include <nlohmann/json.hpp>

#include "editors/VLEXIFEditor.h"
#include "exif/EXIF.h"
#include "platform/FileSystem.h"
#include "tests/editors/EditorSupport.h"

namespace vliptc::test {
namespace {

constexpr std::uint32_t kOk = kVLSuccess;
constexpr std::uint32_t kAborted = CVLEXIFEditor::kResultAborted;
const std::string kOldDate = "2001:01:01 00:00:00";
const std::string kNewDate = "2024:02:29 13:45:07";

std::string Le(std::uint32_t value, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> 8 * i) & 0xFF));
    return out;
}

// A little-endian TIFF stream whose first directory holds one "Date and time"
// (ASCII, 20 bytes) with kOldDate, padded to size bytes.
std::string DateTiff(std::size_t size) {
    std::string out = "II" + Le(42, 2) + Le(8, 4);
    out +=
        Le(1, 2) + Le(CVLEXIF::kDateTime, 2) + Le(CVLEXIF::kTypeAscii, 2) + Le(20, 4) + Le(26, 4) + Le(0, 4);
    out += kOldDate + '\0';
    out.resize(std::max(size, out.size()), '\0');
    return out;
}

// A JPEG whose EXIF carries the date, large enough for the date writer.
std::string DateJpeg() {
    const std::string app1 = std::string("\xFF\xE1\x00\xA8", 4) + std::string("Exif\0\0", 6) + DateTiff(160);
    return "\xFF\xD8" + app1 + "\xFF\xD9";
}

// "Date and time" as the library reads it back ("" when absent).
std::string DateOf(const std::string& path) {
    CVLEXIF exif;
    const CVLEXIF::SField* field = nullptr;
    if (exif.LoadFile(path.c_str()) != CVLEXIF::errOK || !exif.GetField(CVLEXIF::kDateTime, field) ||
        field->vValues.empty())
        return {};
    return field->vValues.front().String();
}

// The dialog of a user who sets the date field and presses OK.
bool SetDate(CVLEXIF& exif, CVLEXIF::EFieldTags tag) {
    CVLEXIF::SField* field = nullptr;
    EXPECT_TRUE(exif.GetField(tag, field));
    EXPECT_TRUE(field->bPresent);
    field->vValues = {CVLProperty(kNewDate)};
    return true;
}

class ExifEditorTest : public EditorTest {
protected:
    CVLEXIFEditor exifEditor{&engine, &ui};

    void SetUp() override {
        EditorTest::SetUp();
        ui.progressTitle = "Velora EXIF Viewer";
    }
    std::uint32_t ShowExif(const std::vector<std::uint32_t>& ids, std::uint32_t templateId, int flags = 0) {
        return exifEditor.ShowEditor(ids, templateId, changed, flags, nullptr);
    }
    void DateDialog() {
        ui.exifDialog = [](CVLEXIF& exif) { return SetDate(exif, CVLEXIF::kDateTime); };
    }
};

// The selection checks with this driver's texts; whether a file may be
// written is the host's word alone. The dialog edits the date and is
// cancelled: nothing is written or listed.
TEST_F(ExifEditorTest, SelectionAsksAndTellsInOrder) {
    enum Kind { kExif, kNotMutable, kPng };
    const struct {
        std::vector<Kind> files;
        std::vector<std::string> events;
        std::uint32_t result;
    } cases[] = {
        {{kNotMutable}, {"msg 213 information", "msg 215 exclamation"}, kAborted},
        // One writable file left: told, not asked; the template moves to it.
        {{kNotMutable, kExif}, {"msg 213 information", "exif dialog edit"}, kOk},
        {{kPng}, {"msg 211 information"}, kAborted},
        // Two writable files left: the read-only files are asked about.
        {{kPng, kNotMutable, kExif, kExif},
         {"ask 212 question yes", "ask 214 question yes", "exif dialog edit"},
         kOk},
    };
    ui.exifDialog = [](CVLEXIF& exif) { return !SetDate(exif, CVLEXIF::kDateTime); };
    int count = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.events.front());
        std::vector<std::uint32_t> ids;
        for (const Kind kind : c.files) {
            const std::string stem = "f" + std::to_string(count++);
            ids.push_back(kind == kExif  ? Add(stem + ".jpg", DateJpeg())
                          : kind == kPng ? Add(stem + ".png", "\x89PNG\r\n\x1a\n")
                                         : AddMissing(stem + ".jpg"));  // the host may not write it
        }
        ui.events.clear();
        changed = {42};
        EXPECT_EQ(ShowExif(ids, ids.front()), c.result);
        EXPECT_EQ(ui.events, c.events);
        EXPECT_EQ(changed, std::vector<std::uint32_t>{42});
        for (const std::uint32_t id : ids) EXPECT_EQ(engine.RefreshCount(id), 0u);
    }
    EXPECT_EQ(ui.waitDepth, 0);
}

// The template's load results 0, 2 (no container the reader knows) and 3 (no
// EXIF data) open the dialog; any other ends the call with a log line. A host
// error for an id is logged and passed on.
TEST_F(ExifEditorTest, TemplateLoadResults) {
    const struct {
        const char* name;
        std::string bytes;
        std::uint32_t result;
    } cases[] = {
        {"exif.jpg", DateJpeg(), kOk},
        {"garbage.jpg", "not an image at all", kOk},
        {"plain.jpg", SmallJpeg(), kOk},
        {"empty.jpg", "", CVLEXIFEditor::kResultTemplateUnreadable},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ui.events.clear();
        const std::uint32_t id = Add(c.name, c.bytes);
        EXPECT_EQ(ShowExif({id}, id), c.result);
        EXPECT_EQ(ui.events.size(), c.result == kOk ? 1u : 0u);
    }
    ui.events.clear();
    EXPECT_EQ(ShowExif({1, 77}, 1), CVLReferenceEngine::kErrorUnknownFile);
    EXPECT_TRUE(ui.events.empty());
    EXPECT_EQ(LogLines(), (std::vector<std::string>{
                              "ERROR\tVLEXIFEditor\tEXIFEdit: Failed to parse template file: 6",
                              "ERROR\tVLEXIFEditor\terror 10002: the file id is not in the catalogue"}));
}

// OK: every file gets the edited record. A file that went away under the
// dialog is passed over without a progress step; one whose EXIF data can no
// longer be read is passed over silently but counts in the progress.
TEST_F(ExifEditorTest, WritePassWritesRefreshesAndLogs) {
    const std::uint32_t a = Add("a a.jpg", DateJpeg());
    const std::uint32_t b = Add("b.jpg", DateJpeg());
    const std::uint32_t c = Add("c.jpg", DateJpeg());
    changed = {99};
    ui.exifDialog = [&](CVLEXIF& exif) {
        WriteFile(PathOf(b), "garbage now");
        std::filesystem::remove(PathOf(c));
        return SetDate(exif, CVLEXIF::kDateTime);
    };
    EXPECT_EQ(ShowExif({a, b, c}, a), kOk);
    EXPECT_EQ(ui.events, (std::vector<std::string>{"exif dialog edit", "drain", "progress 0..3",
                                                   "text Processing " + PathOf(a), "pos 0",
                                                   "text Processing " + PathOf(b), "pos 1"}));
    EXPECT_EQ(changed, (std::vector<std::uint32_t>{99, a}));
    EXPECT_EQ(DateOf(PathOf(a)), kNewDate);
    EXPECT_EQ(ReadFile(PathOf(b)), "garbage now");
    EXPECT_EQ(engine.RefreshCount(a), 1u);
    EXPECT_EQ(engine.RefreshCount(b), 0u);
    EXPECT_FALSE(ui.waitUnbalanced);
    EXPECT_EQ(ui.waitDepth, 0);
    EXPECT_EQ(LogLines(), (std::vector<std::string>{"INFO4\tVLEXIFEditor\tEXIF: Processing file file://" +
                                                    dir.Path() + "a%20a.jpg"}));
}

// A file that loads but cannot be written (a TIFF too short for the writer).
// Alone: notice 210, whose text speaks of IPTC, and abort. With others:
// question 216, and No stops.
TEST_F(ExifEditorTest, WriteFailures) {
    const std::uint32_t bad = Add("short.tif", DateTiff(0));
    ASSERT_EQ(DateOf(PathOf(bad)), kOldDate);
    DateDialog();
    EXPECT_EQ(ShowExif({bad}, bad), kAborted);
    EXPECT_EQ(ui.events.at(3), "msg 210 error");
    EXPECT_EQ(ui.texts.at(210), "Error while writing the IPTC information to the file\n" + PathOf(bad));
    EXPECT_TRUE(changed.empty());
    EXPECT_EQ(LogLines().back(), "ERROR\tVLEXIFEditor\tEXIF: Failed to update EXIF comments to file file://" +
                                     PathOf(bad) + " (2)");

    const std::uint32_t a = Add("a.jpg", DateJpeg());
    ui.events.clear();
    ui.answers = {Answer::kNo};
    EXPECT_EQ(ShowExif({bad, a}, a), kAborted);
    EXPECT_EQ(ui.events,
              (std::vector<std::string>{"exif dialog edit", "drain", "progress 0..2", "ask 216 error no"}));
    EXPECT_EQ(ui.texts.at(216), "Error while writing the EXIF information to the file\n" + PathOf(bad) +
                                    "\n\nDo you want to continue with the remaining files?");
    EXPECT_EQ(DateOf(PathOf(a)), kOldDate);
    EXPECT_TRUE(changed.empty());
    EXPECT_EQ(ui.waitDepth, 0);
}

// Bit 0 of the flags: the written file keeps its access and modification
// times to the nanosecond. Without it the modification time moves.
TEST_F(ExifEditorTest, KeepsFileTimesOnBitZero) {
    const std::uint32_t a = Add("a.jpg", DateJpeg());
    const platform::FileTimes old{std::nullopt, {981'173'106'123'456'789}, {981'173'106'987'654'321}};
    DateDialog();
    for (const int flags : {CVLEXIFEditor::kFlagKeepFileTimes, 0}) {
        ASSERT_TRUE(platform::SetFileTimes(PathOf(a), old));
        EXPECT_EQ(ShowExif({a}, a, flags), kOk);
        const auto times = platform::GetFileTimes(PathOf(a));
        ASSERT_TRUE(times);
        EXPECT_EQ(times->write == old.write && times->access == old.access, flags != 0) << flags;
    }
    EXPECT_EQ(DateOf(PathOf(a)), kNewDate);
}

// Three camera files that carry only "Date and time Original": the date set
// in the dialog on the first reaches all three, each file changing in the 20
// bytes of that value and nowhere else.
TEST_F(ExifEditorTest, EditsTheOriginalDateOfCorpusFiles) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const char* const files[] = {"jpeg/et_MWG.jpg", "jpeg/ex2_DSC_3079.jpg", "jpeg/ian_kodak-dc210.jpg"};
    std::vector<std::uint32_t> ids;
    std::vector<std::string> before;
    for (const char* file : files) {
        const std::string bytes = ReadFile(kCorpus + file);
        ASSERT_EQ(bytes.find(kNewDate), std::string::npos);
        before.push_back(bytes);
        ids.push_back(Add(std::filesystem::path(file).filename().string(), bytes));
    }
    ui.exifDialog = [](CVLEXIF& exif) { return SetDate(exif, CVLEXIF::kDateTimeOriginal); };

    EXPECT_EQ(ShowExif(ids, ids.front()), kOk);
    EXPECT_EQ(changed, ids);
    const bool exiftool = HaveTool("exiftool");
    for (std::size_t i = 0; i < ids.size(); ++i) {
        SCOPED_TRACE(files[i]);
        const std::string after = ReadFile(PathOf(ids[i]));
        const std::size_t at = after.find(kNewDate + '\0');
        ASSERT_NE(at, std::string::npos);
        std::string expected = before[i];
        expected.replace(at, 20, kNewDate + '\0');
        EXPECT_EQ(after, expected);
        if (!exiftool) continue;
        const auto json =
            nlohmann::json::parse(RunCommand("exiftool -j -EXIF:DateTimeOriginal " + Quote(PathOf(ids[i]))));
        EXPECT_EQ(ExifToolText(json.at(0).at("DateTimeOriginal")), kNewDate);
    }
    if (!exiftool) GTEST_SKIP() << "exiftool is not installed: the dates were not read back by it";
}

}  // namespace
}  // namespace vliptc::test
