// exif set-date and exif format through the tool: the in-place patch on
// corpus copies (ExifTool reads the new dates, the file keeps its size, a
// date the file lacks is reported and never added), --keep-times, and the
// usage errors that stop before any file is touched.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "platform/FileSystem.h"
#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

std::string ExifToolDates(const std::string& path) {
    const auto parsed = nlohmann::json::parse(
        RunCommand("exiftool -j -EXIF:DateTimeOriginal -EXIF:CreateDate -EXIF:ModifyDate " + Quote(path)));
    std::string out;
    for (const char* key : {"ModifyDate", "DateTimeOriginal", "CreateDate"}) {
        out += std::string(key) + "=" + (parsed.at(0).contains(key) ? ExifToolText(parsed.at(0).at(key)) : "-") + ";";
    }
    return out;
}

TEST_F(CliTest, ExifSetDatePatchesOnlyCarriedDates) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const std::string canon = Copy("jpeg/ian_Canon_40D.jpg", "canon.jpg");
    const std::string kodak = Copy("jpeg/ian_kodak-dc210.jpg", "kodak.jpg");  // no CreateDate, no ModifyDate
    const std::string kodakBefore = ReadFile(kodak);
    const auto canonTimes = platform::GetFileTimes(canon);
    ASSERT_TRUE(canonTimes);

    const auto run = Run({"exif", "set-date", "canon.jpg", "kodak.jpg", "--original", "2002-05-17 14:30:00",
                          "--digitized", "2002:05:17 14:31:00", "--datetime", "2003-01-02T03:04:05",
                          "--keep-times"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err,
              "vliptc: kodak.jpg: carries no \"Date and time\"; not written\n"
              "vliptc: kodak.jpg: carries no \"Date and time Digitized\"; not written\n");
    EXPECT_EQ(ExifToolDates(canon),
              "ModifyDate=2003:01:02 03:04:05;DateTimeOriginal=2002:05:17 14:30:00;CreateDate=2002:05:17 14:31:00;");
    EXPECT_EQ(ExifToolDates(kodak), "ModifyDate=-;DateTimeOriginal=2002:05:17 14:30:00;CreateDate=-;");
    EXPECT_EQ(ReadFile(kodak).size(), kodakBefore.size());
    EXPECT_EQ(platform::GetFileTimes(canon)->write, canonTimes->write);

    // The formatted text of the new date, through a pattern.
    const auto format = Run({"exif", "format", "canon.jpg", "#36867 | #33434 at F#33437 | #99999#"});
    EXPECT_EQ(format.status, 0) << format.err;
    EXPECT_EQ(format.out, "2002:05:17 14:30:00 | 1/160 s at F7.1 | #\n");
}

TEST_F(CliTest, ExifSetDateRefusesBadArgumentsBeforeTouchingFiles) {
    WriteFile(dir.File("a.jpg"), "not an image");
    const struct {
        std::vector<std::string> args;
        std::string error;
    } cases[] = {
        {{"exif", "set-date", "a.jpg"}, "nothing to change"},
        {{"exif", "set-date", "a.jpg", "--original", "2002-13-01 00:00:00"}, "not a date and time"},
        {{"exif", "set-date", "a.jpg", "--original", "2002:05:17 14:30"}, "not a date and time"},
        {{"exif", "set-date", "a.jpg", "--datetime", "2002/05/17 14:30:00"}, "not a date and time"},
    };
    for (const auto& c : cases) {
        const auto run = Run(c.args);
        EXPECT_EQ(run.status, 2) << c.args.back();
        EXPECT_NE(run.err.find(c.error), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(dir.File("a.jpg")), "not an image");
    }
}

TEST_F(CliTest, ExifSetDateReportsFilesItCannotWrite) {
    WriteFile(dir.File("short.jpg"), std::string(100, '\xFF'));
    const auto run = Run({"exif", "set-date", "short.jpg", "missing.jpg", "--original", "2002:05:17 14:30:00"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("vliptc: missing.jpg: cannot open the file"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("2 of 2 files failed"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace vliptc::test
