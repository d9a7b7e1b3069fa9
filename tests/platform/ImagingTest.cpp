// The imaging stand-in end to end: comments set through CVLLeadEXIF and saved
// into copies of the corpus JPEGs are read back by ExifTool and by CVLEXIF,
// the file's other EXIF tags and its image data stay as they were, and a save
// that fails or cannot be made leaves the file's bytes alone.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "exif/EXIF.h"
#include "exif/LeadEXIF.h"
#include "host/VLProperty.h"
#include "platform/FaultInjection.h"
#include "platform/imaging/CommentNumbers.h"
#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/LBitmap.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

namespace {

using namespace vliptc::imaging;
using vliptc::test::Quote;
using vliptc::test::ReadFile;
using vliptc::test::TempDir;
using vliptc::test::WriteFile;
namespace fault = vliptc::platform::fault;

// The start of scan (or a lone end of image) to the end: the compressed
// image data a save must not touch. Walks the marker segments from the
// start-of-image marker; empty when they do not lead there.
std::string ImageData(const std::string& file) {
    std::size_t at = 2;
    while (at + 2 <= file.size() && static_cast<unsigned char>(file[at]) == 0xFF) {
        const auto marker = static_cast<unsigned char>(file[at + 1]);
        if (marker == 0xDA || marker == 0xD9) return file.substr(at);
        if (at + 4 > file.size()) break;
        if (marker == 0xFF) {
            ++at;
            continue;
        }
        at += 2 + (static_cast<unsigned char>(file[at + 2]) << 8 | static_cast<unsigned char>(file[at + 3]));
    }
    return {};
}

CVLProperty Days(int year, int month, int day, int hour, int minute, int second) {
    CVLProperty value;
    value.SetDouble(COleDateTime(year, month, day, hour, minute, second).GetDays());
    return value;
}

// The seven comments every corpus file gets, and how ExifTool names and
// prints each.
struct Comment {
    bool (CVLLeadEXIF::*set)(const CVLProperty&);
    CVLProperty value;
    const char* tag;
    const char* text;
};
const Comment kComments[] = {
    {&CVLLeadEXIF::SetArtist, CVLProperty("Ann Artist"), "IFD0:Artist", "Ann Artist"},
    {&CVLLeadEXIF::SetCopyright, CVLProperty("(c) Ann"), "IFD0:Copyright", "(c) Ann"},
    {&CVLLeadEXIF::SetDateTime, Days(2002, 5, 17, 14, 30, 0), "IFD0:ModifyDate", "2002:05:17 14:30:00"},
    {&CVLLeadEXIF::SetImageDescription, CVLProperty("Lake"), "IFD0:ImageDescription", "Lake"},
    {&CVLLeadEXIF::SetDateTimeOriginal, Days(2001, 1, 2, 3, 4, 5), "ExifIFD:DateTimeOriginal",
     "2001:01:02 03:04:05"},
    {&CVLLeadEXIF::SetDateTimeDigitized, Days(2001, 1, 2, 3, 4, 6), "ExifIFD:CreateDate",
     "2001:01:02 03:04:06"},
    // The code bytes are not a code ExifTool knows: it shows them as text.
    {&CVLLeadEXIF::SetUserComment, CVLProperty("Hello"), "ExifIFD:UserComment", ")5+11Hello"},
};

// ExifTool's EXIF tags of each file ("IFD0:Artist" -> value as JSON text),
// maker notes left out: libexif lays the EXIF data out anew, and a maker
// note that points into it by absolute offsets does not survive a move.
std::map<std::string, std::map<std::string, std::string>> ExifToolTags(
    const std::vector<std::string>& paths) {
    std::string command = "exiftool -j -G1 -a -EXIF:all --MakerNotes:all";
    for (const auto& path : paths) command += " " + Quote(path);
    const auto parsed = nlohmann::json::parse(vliptc::test::RunCommand(command + " 2>/dev/null"));
    std::map<std::string, std::map<std::string, std::string>> out;
    for (const auto& object : parsed) {
        auto& tags = out[object.at("SourceFile").get<std::string>()];
        for (const auto& [key, value] : object.items()) {
            if (key != "SourceFile") tags[key] = value.is_string() ? value.get<std::string>() : value.dump();
        }
    }
    return out;
}

class ImagingTest : public ::testing::Test {
protected:
    void SetUp() override { lead.ClearComments(); }
    TempDir dir;
    CVLLeadEXIF lead;
};

TEST_F(ImagingTest, CorpusCommentsReadBackAndTheRestStays) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    if (!vliptc::test::HaveTool("exiftool")) GTEST_SKIP() << "exiftool is not installed";
    for (const Comment& comment : kComments) ASSERT_TRUE((lead.*comment.set)(comment.value));

    std::vector<std::string> originals, saved;
    for (const auto& name : vliptc::test::CorpusFiles({"jpeg"})) {
        SCOPED_TRACE(name);
        const std::string original = ReadFile(vliptc::test::kCorpus + name);
        const std::string path = dir.File(std::filesystem::path(name).filename().string());
        WriteFile(path, original);
        LBitmap bitmap;
        ASSERT_EQ(bitmap.Load(path), kImagingSuccess);
        const int result = bitmap.Save(path);
        // A file whose EXIF data, with the comments, outgrows its segment
        // keeps its bytes.
        if (result == kImagingExifTooLarge) {
            EXPECT_EQ(ReadFile(path), original);
            continue;
        }
        ASSERT_EQ(result, kImagingSuccess);
        const std::string after = ReadFile(path);
        ASSERT_FALSE(ImageData(original).empty());
        EXPECT_EQ(ImageData(after), ImageData(original));

        // CVLEXIF reads the first APP1 segment only: an EXIF segment that
        // follows an XMP one stays out of its sight, before and after.
        CVLEXIF exif;
        const bool hidden = exif.LoadFile((vliptc::test::kCorpus + name).c_str()) == CVLEXIF::errNoEXIF &&
                            original.find(std::string("Exif\0\0", 6)) != std::string::npos;
        if (hidden) continue;
        ASSERT_EQ(exif.LoadFile(path.c_str()), CVLEXIF::errOK);
        const CVLEXIF::SField* artist = nullptr;
        ASSERT_TRUE(exif.GetField(CVLEXIF::kArtist, artist));
        ASSERT_EQ(artist->vValues.size(), 1u);
        EXPECT_EQ(artist->vValues[0].String(), "Ann Artist");

        originals.push_back(vliptc::test::kCorpus + name);
        saved.push_back(path);
    }
    EXPECT_GT(saved.size(), 100u);

    const auto before = ExifToolTags(originals);
    const auto after = ExifToolTags(saved);
    for (std::size_t i = 0; i < saved.size(); ++i) {
        SCOPED_TRACE(saved[i]);
        auto expected = before.at(originals[i]);
        const auto& actual = after.at(saved[i]);
        for (const Comment& comment : kComments) expected[comment.tag] = comment.text;
        // The thumbnail moves with the new layout; one of no bytes is dropped.
        expected.erase("IFD1:ThumbnailOffset");
        if (const auto length = expected.find("IFD1:ThumbnailLength");
            length != expected.end() && length->second == "0") {
            expected.erase(length);
        }
        for (const auto& [tag, value] : expected) {
            const auto found = actual.find(tag);
            EXPECT_TRUE(found != actual.end() && found->second == value)
                << tag << ": " << value << " -> " << (found == actual.end() ? "(none)" : found->second);
        }
    }
}

TEST_F(ImagingTest, ANewExifSegmentGoesBehindTheJfifSegment) {
    const std::string path = dir.File("plain.jpg");
    // Start of image, a JFIF APP0, start of scan, two data bytes, end of image.
    const std::string jfif("\xFF\xD8\xFF\xE0\x00\x07JFIF\x00\xFF\xDA\x00\x02\x12\x34\xFF\xD9", 19);
    WriteFile(path, jfif);
    ASSERT_TRUE(lead.SetUserComment(CVLProperty("abc")));
    LBitmap bitmap;
    ASSERT_EQ(bitmap.Load(path), kImagingSuccess);
    ASSERT_EQ(bitmap.Save(path), kImagingSuccess);
    const std::string saved = ReadFile(path);
    EXPECT_EQ(saved.substr(0, 11), jfif.substr(0, 11));
    EXPECT_EQ(saved.substr(11, 2), "\xFF\xE1");
    EXPECT_EQ(saved.substr(saved.size() - 8), jfif.substr(11));
    LBitmap reloaded;
    ASSERT_EQ(reloaded.Load(path), kImagingSuccess);
    EXPECT_EQ(reloaded.ReadComment(kCommentUserComment, nullptr), 12);
}

TEST_F(ImagingTest, FilesThatAreNotSavedKeepTheirBytes) {
    const std::string path = dir.File("plain.jpg");
    const std::string jpeg("\xFF\xD8\xFF\xDA\x00\x02\x12\x34\xFF\xD9", 10);
    WriteFile(path, jpeg);
    LBitmap bitmap;
    ASSERT_EQ(bitmap.Load(path), kImagingSuccess);

    // Nothing pending: the bytes go back as they are.
    ASSERT_EQ(bitmap.Save(path), kImagingSuccess);
    EXPECT_EQ(ReadFile(path), jpeg);

    // Every file-system step of the save fails in turn.
    ASSERT_TRUE(lead.SetArtist(CVLProperty("a")));
    {
        const fault::ScopedReset reset;
        fault::StartCounting();
        ASSERT_EQ(bitmap.Save(path), kImagingSuccess);
        const std::map<fault::Step, int> calls{{fault::Step::Create, fault::Calls(fault::Step::Create)},
                                               {fault::Step::Write, fault::Calls(fault::Step::Write)},
                                               {fault::Step::Rename, fault::Calls(fault::Step::Rename)}};
        EXPECT_EQ(calls.at(fault::Step::Rename), 2);  // the original aside, the new file in
        WriteFile(path, jpeg);
        for (const auto& [step, count] : calls) {
            for (int n = 1; n <= count; ++n) {
                SCOPED_TRACE(n);
                fault::FailNth(step, n);
                EXPECT_EQ(bitmap.Save(path), kImagingCannotWrite);
                fault::Reset();
                EXPECT_EQ(ReadFile(path), jpeg);
                EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
            }
        }
    }

    // EXIF data that outgrows one segment.
    const std::string huge(kMaxCommentBytes - 8, 'x');
    ASSERT_TRUE(lead.SetImageDescription(CVLProperty(huge)));
    EXPECT_EQ(bitmap.Save(path), kImagingExifTooLarge);
    EXPECT_EQ(ReadFile(path), jpeg);
    // No file to replace.
    EXPECT_EQ(bitmap.Save(dir.File("missing.jpg")), kImagingCannotWrite);
    EXPECT_FALSE(std::filesystem::exists(dir.File("missing.jpg")));
}

TEST_F(ImagingTest, LoadResults) {
    struct Case {
        const char* label;
        std::string bytes;
        int result;
    };
    const Case cases[] = {
        {"text", "hello", kImagingNotJpeg},
        {"segment past the end",
         std::string("\xFF\xD8\xFF\xE1\x00\x10"
                     "Exif",
                     10),
         kImagingBadJpeg},
        {"length below two", std::string("\xFF\xD8\xFF\xE1\x00\x01\xFF\xD9", 8), kImagingBadJpeg},
        {"no start of scan", std::string("\xFF\xD8\xFF\xFE\x00\x03x", 7), kImagingBadJpeg},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        WriteFile(dir.File("f"), c.bytes);
        LBitmap bitmap;
        EXPECT_EQ(bitmap.Load(dir.File("f")), c.result);
        EXPECT_FALSE(bitmap.IsLoaded());
        EXPECT_EQ(bitmap.ReadComment(0, nullptr), kImagingNotLoaded);
        EXPECT_EQ(bitmap.Save(dir.File("f")), kImagingNotLoaded);
    }
    LBitmap bitmap;
    EXPECT_EQ(bitmap.Load(dir.File("missing")), kImagingCannotOpen);
}

}  // namespace
