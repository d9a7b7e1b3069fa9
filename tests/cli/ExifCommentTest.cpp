// exif comment: comments given on the command line, and copied from another
// file, land in the JPEG as ExifTool reads them; bad arguments and files that
// cannot take comments leave the file alone.

#include <gtest/gtest.h>

#include <map>

#include <nlohmann/json.hpp>

#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

// ExifTool's EXIF text tags of a file ("Artist" -> value), its text read as
// Windows-1252, as the tool stores it.
std::map<std::string, std::string> ExifText(const std::string& path) {
    const auto parsed = nlohmann::json::parse(
        RunCommand("exiftool -j -api CharsetEXIF=cp1252 -EXIF:all " + Quote(path) + " 2>/dev/null"));
    std::map<std::string, std::string> out;
    for (const auto& [key, value] : parsed.at(0).items()) {
        if (value.is_string()) out[key] = value.get<std::string>();
    }
    return out;
}

TEST_F(CliTest, ExifCommentSetsAndCopies) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    VLIPTC_SKIP_WITHOUT_EXIFTOOL();
    Copy("jpeg/ian_Canon_40D.jpg", "canon.jpg");
    Copy("jpeg/et_AFCP.jpg", "plain.jpg");  // no EXIF yet

    const auto set =
        Run({"exif", "comment", "canon.jpg", "--artist", "Zoë", "--copyright", "(c) Zoë", "--description",
             "Lake", "--user-comment", "Hi", "--datetime", "2002-05-17 14:30:00", "--original",
             "2002:05:17 14:30:01", "--digitized", "2002-05-17T14:30:02"});
    ASSERT_EQ(set.status, 0) << set.err;
    auto tags = ExifText(dir.File("canon.jpg"));
    EXPECT_EQ(tags["Artist"], "Zoë");
    EXPECT_EQ(tags["ImageDescription"], "Lake");
    EXPECT_EQ(tags["UserComment"], ")5+11Hi");
    EXPECT_EQ(tags["ModifyDate"], "2002:05:17 14:30:00");
    EXPECT_EQ(tags["DateTimeOriginal"], "2002:05:17 14:30:01");
    EXPECT_EQ(tags["CreateDate"], "2002:05:17 14:30:02");
    EXPECT_EQ(tags["Model"], "Canon EOS 40D");  // the other tags stay

    const auto copied = Run({"exif", "comment", "plain.jpg", "--from", "canon.jpg", "--description", "Sea"});
    ASSERT_EQ(copied.status, 0) << copied.err;
    const auto plain = ExifText(dir.File("plain.jpg"));
    EXPECT_EQ(plain.at("Copyright"), "(c) Zoë");
    EXPECT_EQ(plain.at("ImageDescription"), "Sea");
    EXPECT_EQ(plain.at("CreateDate"), "2002:05:17 14:30:02");
    EXPECT_EQ(plain.at("Model"), "Canon EOS 40D");  // a comment number the stand-in embeds
}

TEST_F(CliTest, ExifCommentRefusals) {
    const std::string jpeg("\xFF\xD8\xFF\xDA\x00\x02\x12\x34\xFF\xD9", 10);
    WriteFile(dir.File("a.jpg"), jpeg);
    WriteFile(dir.File("a.txt"), "text");
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"a.jpg", "--datetime", "2002-13-01 00:00:00"}, 2, "--datetime: not a date and time"},
        {{"a.jpg", "--original", "2002-02-30 00:00:00"}, 2, "--original: not a date and time"},
        {{"a.jpg", "--digitized", "2002-05-17 14:30"}, 2, "--digitized: not a date and time"},
        {{"a.jpg", "--artist", "\xE2\x98\x83"}, 2, "--artist"},  // a snowman has no Windows-1252 byte
        {{"a.jpg"}, 2, "nothing to set"},
        {{"a.txt", "--artist", "x"}, 1, "a.txt: not a JPEG file"},
        {{"a.jpg", "--from", "a.txt"}, 1, "a.txt: not a JPEG file"},
        {{"missing.jpg", "--artist", "x"}, 1, "missing.jpg: cannot open the file"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"exif", "comment"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto run = Run(args);
        SCOPED_TRACE(run.err);
        EXPECT_EQ(run.status, c.status);
        EXPECT_NE(run.err.find(c.message), std::string::npos);
        EXPECT_EQ(ReadFile(dir.File("a.jpg")), jpeg);
    }
}

}  // namespace
}  // namespace vliptc::test
