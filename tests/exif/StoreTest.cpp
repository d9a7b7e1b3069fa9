// The date writer on copies of real files and on files built here: only the
// 20 bytes of each date the file carries change, ExifTool reads the new
// dates, no date is ever added, values of the wrong form and entries the
// writer refuses stay untouched, and each failure gives its result code with
// the file left as it was.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "exif/EXIF.h"
#include "tests/exif/ExifFiles.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"
#include "tests/support/Unprivileged.h"

namespace {

namespace fs = std::filesystem;
using namespace vliptc::test::exiffiles;
using vliptc::test::kCorpus;
using vliptc::test::OpenToOthers;
using vliptc::test::ReadFile;
using vliptc::test::TempDir;
using vliptc::test::WriteFile;

constexpr CVLEXIF::EFieldTags kDates[] = {CVLEXIF::kDateTime, CVLEXIF::kDateTimeOriginal,
                                          CVLEXIF::kDateTimeDigitized};
// New values, one per date, that no file holds already.
const std::string kNewDates[] = {"1999:12:31 23:59:01", "1999:12:31 23:59:02", "1999:12:31 23:59:03"};
// ExifTool's names of the three dates.
const char* const kExifToolNames[] = {"EXIF:ModifyDate", "EXIF:DateTimeOriginal", "EXIF:CreateDate"};

void SetDate(CVLEXIF& exif, CVLEXIF::EFieldTags tag, const CVLProperty& value) {
    CVLEXIF::SField* field = nullptr;
    ASSERT_TRUE(exif.GetField(tag, field));
    field->vValues = {value};
}

void SetNewDates(CVLEXIF& exif) {
    for (int i = 0; i < 3; ++i) SetDate(exif, kDates[i], CVLProperty(kNewDates[i]));
}

// A TIFF stream of size bytes: one directory with one "Date and time" entry
// of the type and count, whose value ("2001:01:01 00:00:00" and a zero, as
// far as it fits) lies at valueAt.
std::string DateTiff(bool big, std::uint16_t type, std::uint32_t count, std::uint32_t valueAt,
                     std::size_t size = 160) {
    // The offset stands in the value field as it is, whatever the type says.
    std::string out = Tiff(big).Add(0, 306, type, count, Num(big, valueAt, 4)).Build().substr(0, size);
    const std::string old = std::string("2001:01:01 00:00:00") + '\0';
    if (valueAt < size) out.replace(valueAt, std::min(old.size(), size - valueAt), old, 0, size - valueAt);
    return out;
}

std::string ExifJpeg(const std::string& before, const std::string& tiff) {
    return kSOI + before + ExifSegment(tiff) + "\xFF\xD9";
}

// The three dates as ExifTool reads them ("" when absent).
std::vector<std::string> ExifToolDates(const std::string& path) {
    const std::string out =
        vliptc::test::RunCommand("exiftool -j -G0 -EXIF:ModifyDate -EXIF:DateTimeOriginal -EXIF:CreateDate " +
                                 vliptc::test::Quote(path));
    const auto json = nlohmann::json::parse(out, nullptr, false);
    std::vector<std::string> dates(3);
    if (!json.is_array() || json.empty()) return dates;
    for (int i = 0; i < 3; ++i) {
        if (json[0].contains(kExifToolNames[i])) dates[i] = json[0][kExifToolNames[i]].get<std::string>();
    }
    return dates;
}

// Corpus files whose EXIF carries some of the dates ("carries": 306, 36867,
// 36868), in each container and byte order. A ".crw" is written through its
// ".THM" companion.
struct CorpusCase {
    const char* file;
    bool carries[3];
};
const CorpusCase kCorpusCases[] = {
    {"jpeg/ian_Canon_40D.jpg", {true, true, true}},                 // JPEG, II
    {"jpeg/ian_Fujifilm_FinePix6900ZOOM.jpg", {true, true, true}},  // JPEG, MM
    {"tiff/ex2_Reagan.tiff", {true, true, true}},                   // TIFF, MM
    {"tiff/et_ExifTool.tif", {true, false, false}},
    {"psd/mde_Issue_524_java.psd", {true, true, true}},  // Photoshop, II EXIF
    {"psd/et_Photoshop.psd", {true, false, false}},      // Photoshop, MM EXIF
    {"raw/ex2_exiv2-canon-powershot-s40.crw", {true, true, true}},
};

TEST(ExifStore, WritesTheDatesTheFileCarriesAndNothingElse) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const bool exiftool = vliptc::test::HaveTool("exiftool");
    for (const CorpusCase& c : kCorpusCases) {
        SCOPED_TRACE(c.file);
        TempDir dir;
        const fs::path source = kCorpus + c.file;
        const std::string copy = dir.File(source.filename().string());
        fs::copy_file(source, copy);
        std::string written = copy;  // the file that changes
        if (source.extension() == ".crw") {
            written = dir.File(source.stem().string() + ".THM");
            fs::copy_file(source.parent_path() / (source.stem().string() + ".THM"), written);
        }
        const std::string before = ReadFile(written);

        CVLEXIF exif;
        ASSERT_EQ(exif.LoadFile(copy.c_str()), CVLEXIF::errOK);
        SetNewDates(exif);
        ASSERT_EQ(exif.StoreFile(copy.c_str()), CVLEXIF::errOK);

        // The file is the old one with a window of 20 bytes (the text and a
        // zero) replaced for each date it carries.
        const std::string after = ReadFile(written);
        std::string expected = before;
        for (int i = 0; i < 3; ++i) {
            const std::size_t at = after.find(kNewDates[i] + '\0');
            ASSERT_EQ(at != std::string::npos, c.carries[i]) << kNewDates[i];
            if (at != std::string::npos) expected.replace(at, 20, kNewDates[i] + '\0');
        }
        EXPECT_TRUE(after == expected) << "bytes outside the date values changed";

        CVLEXIF reread;
        ASSERT_EQ(reread.LoadFile(copy.c_str()), CVLEXIF::errOK);
        std::vector<std::string> ours(3);
        for (int i = 0; i < 3; ++i) {
            const CVLEXIF::SField* field = nullptr;
            if (reread.GetField(kDates[i], field) && field->bPresent) ours[i] = field->vValues.at(0).String();
            EXPECT_EQ(ours[i], c.carries[i] ? kNewDates[i] : "") << kDates[i];
        }
        if (exiftool) {
            EXPECT_EQ(ExifToolDates(written), ours);
        }
    }
    if (!exiftool) GTEST_SKIP() << "exiftool is not installed: the dates were checked by our own reader only";
}

// Only a first value that is text of exactly 19 characters is written; the
// store succeeds all the same.
TEST(ExifStore, ValuesNotOfTheDateFormAreNotWritten) {
    CVLProperty number;
    number.SetInt32(20020517);
    const std::vector<CVLProperty> kNotDates[] = {
        {CVLProperty(std::string("2002:05:17 14:30:0"))},
        {CVLProperty(std::string("2002:05:17 14:30:000"))},
        {number},
        {},
        {CVLProperty(), CVLProperty(std::string("2002:05:17 14:30:00"))},  // text second
    };
    TempDir dir;
    const std::string path = dir.File("image.tif");
    const std::string content = DateTiff(true, 2, 20, 0x40);
    for (const auto& values : kNotDates) {
        WriteFile(path, content);
        CVLEXIF exif;
        for (const auto tag : kDates) {
            CVLEXIF::SField* field = nullptr;
            ASSERT_TRUE(exif.GetField(tag, field));
            field->vValues = values;
        }
        EXPECT_EQ(exif.StoreFile(path.c_str()), CVLEXIF::errOK);
        EXPECT_TRUE(ReadFile(path) == content) << values.size();
    }
}

// The entry of a date must be ASCII text of at least 20 characters whose
// value lies inside the file; anything else is left alone.
TEST(ExifStore, RefusesEntriesThatCannotHoldTheDate) {
    const struct {
        const char* label;
        std::uint16_t type;
        std::uint32_t count;
        std::uint32_t valueAt;
        bool written;
        bool tiffOnly = false;  // inside a JPEG or Photoshop file the end lies further on
    } kCases[] = {
        {"ASCII, 20", 2, 20, 0x40, true},
        {"ASCII, 32", 2, 32, 0x40, true},
        {"ASCII, 20, ending the file", 2, 20, 140, true, true},
        {"ASCII, 19", 2, 19, 0x40, false},
        {"UNDEFINED, 20", 7, 20, 0x40, false},
        {"type 0: the value field itself", 0, 20, 0x40, false},
        {"ASCII, 20, one byte past the end", 2, 20, 141, false, true},
        {"ASCII, 20, offset far past the end", 2, 20, 0xFFFFFFF0u, false},
    };
    for (const bool big : {false, true}) {
        for (const auto& c : kCases) {
            SCOPED_TRACE(std::string(c.label) + (big ? ", MM" : ", II"));
            TempDir dir;
            const std::string before = DateTiff(big, c.type, c.count, c.valueAt);
            for (const auto& [name, content] :
                 {std::pair{"image.tif", before}, std::pair{"image.jpg", ExifJpeg("", before)},
                  std::pair{"image.psd", Psd(Resource(0x0422, before))}}) {
                if (c.tiffOnly && std::string(name) != "image.tif") continue;
                const std::string path = dir.File(name);
                WriteFile(path, content);
                CVLEXIF exif;  // not loaded: the catalogue in creation order
                SetNewDates(exif);
                ASSERT_EQ(exif.StoreFile(path.c_str()), CVLEXIF::errOK) << name;
                std::string expected = content;
                if (c.written) {
                    expected.replace(content.find(before) + c.valueAt, 20, kNewDates[0] + '\0');
                }
                EXPECT_TRUE(ReadFile(path) == expected) << name;
            }
        }
    }
}

// A date in a later directory of the chain (as a thumbnail's directory may
// carry one) is found and written like one in the first.
TEST(ExifStore, WritesADateInALaterDirectory) {
    const std::string old = std::string("2001:01:01 00:00:00") + '\0';
    for (const bool big : {false, true}) {
        SCOPED_TRACE(big ? "MM" : "II");
        TempDir dir;
        const std::string path = dir.File("image.tif");
        const std::string content =
            Tiff(big).Add(0, 256, kLong, 1, Tiff(big).Longs({1})).Add(1, 306, kAscii, 20, old).Build();
        WriteFile(path, content);
        CVLEXIF exif;
        SetNewDates(exif);
        ASSERT_EQ(exif.StoreFile(path.c_str()), CVLEXIF::errOK);
        std::string expected = content;
        expected.replace(content.find(old), 20, kNewDates[0] + '\0');
        EXPECT_TRUE(ReadFile(path) == expected);
    }
}

// The writer skips comment and APP12 segments by their length, so a 0xFF
// inside them cannot stop its walk (the reader scans through them).
TEST(ExifStore, SkipsCommentSegmentsByTheirLength) {
    const std::string tiff = DateTiff(false, 2, 20, 0x40);
    for (const std::uint8_t marker : {0xFE, 0xEC}) {
        TempDir dir;
        const std::string path = dir.File("image.jpg");
        const std::string content = ExifJpeg(Segment(marker, "a\xFF\xE1z"), tiff);
        WriteFile(path, content);
        CVLEXIF exif;
        SetNewDates(exif);
        ASSERT_EQ(exif.StoreFile(path.c_str()), CVLEXIF::errOK);
        EXPECT_NE(ReadFile(path).find(kNewDates[0] + '\0'), std::string::npos);
        // A successful store leaves the catalogue in display order.
        const auto& fields = exif.Fields();
        EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end(), [](const auto& a, const auto& b) {
            return a.nGroup != b.nGroup ? a.nGroup < b.nGroup : a.strName < b.strName;
        }));
    }
}

TEST(ExifStore, FailuresGiveTheirCodeAndLeaveTheFile) {
    const std::string tiff = DateTiff(false, 2, 20, 0x40);
    const std::string xmp = Segment(0xE1, std::string("http://ns.adobe.com/xap/1.0/\0<x/>", 33));
    const struct {
        const char* name;
        std::string content;  // empty: the file is not made
        CVLEXIF::EError result;
    } kCases[] = {
        {"missing.jpg", "", CVLEXIF::errReadOnly},
        {"short.tif", tiff.substr(0, 100), CVLEXIF::errFormat},
        {"image.bmp", tiff, CVLEXIF::errFormat},
        {"junk.jpg", std::string(200, 'x'), CVLEXIF::errFormat},
        {"bad-magic.tif", "II" + Num(false, 43, 2) + tiff.substr(4), CVLEXIF::errFormat},
        {"bad-header.psd", Psd(Resource(0x0422, "II" + Num(false, 43, 2) + tiff.substr(4))),
         CVLEXIF::errFormat},
        {"xmp-first.jpg", ExifJpeg(xmp, tiff), CVLEXIF::errNoEXIF},
        {"no-app1.jpg", kSOI + Segment(0xE0, std::string(150, 'j')) + "\xFF\xDA", CVLEXIF::errNoEXIF},
        {"bad-tiff.jpg", ExifJpeg("", "MM" + Num(true, 7, 2) + tiff.substr(4)), CVLEXIF::errNoEXIF},
        {"no-exif.psd", Psd(Resource(0x0404, tiff)), CVLEXIF::errNoEXIF},
        {"raw.crw", tiff, CVLEXIF::errOpen},  // no ".thm" beside it
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        const std::string path = dir.File(c.name);
        if (!c.content.empty()) WriteFile(path, c.content);
        CVLEXIF exif;
        SetNewDates(exif);
        EXPECT_EQ(exif.StoreFile(path.c_str()), c.result);
        if (!c.content.empty()) {
            EXPECT_TRUE(ReadFile(path) == c.content);
        }
    }
}

TEST(ExifStore, PathsThatCannotBeWritten) {
    TempDir dir;
    CVLEXIF exif;
    SetNewDates(exif);
    fs::create_directory(dir.File("folder.jpg"));
    EXPECT_EQ(exif.StoreFile(dir.File("folder.jpg").c_str()), CVLEXIF::errReadOnly);
    // Writable by its mode but not a regular file: the open refuses it.
    ASSERT_EQ(::mkfifo(dir.File("pipe.jpg").c_str(), 0644), 0);
    EXPECT_EQ(exif.StoreFile(dir.File("pipe.jpg").c_str()), CVLEXIF::errOpen);

    const std::string path = dir.File("locked.tif");
    const std::string content = DateTiff(false, 2, 20, 0x40);
    WriteFile(path, content);
    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    OpenToOthers(dir.Path());
    VLIPTC_EXPECT_AS_UNPRIVILEGED([&] { return exif.StoreFile(path.c_str()) == CVLEXIF::errReadOnly; });
    EXPECT_TRUE(ReadFile(path) == content);
}

// Damaged files end with a result code, whether read or written, and a file
// the write refused keeps every byte.
TEST(ExifStore, MalformedCorpusFilesGiveACode) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    std::map<CVLEXIF::EError, int> loads;
    for (const std::string& file : vliptc::test::CorpusFiles({"malformed"})) {
        SCOPED_TRACE(file);
        TempDir dir;
        const std::string path = dir.File("image.jpg");  // the content decides the container
        fs::copy_file(kCorpus + file, path);
        const std::string before = ReadFile(path);
        CVLEXIF exif;
        const CVLEXIF::EError load = exif.LoadFile(path.c_str());
        EXPECT_TRUE(load != CVLEXIF::errException && load <= CVLEXIF::errEmpty) << load;
        ++loads[load];
        SetNewDates(exif);
        const CVLEXIF::EError result = exif.StoreFile(path.c_str());
        EXPECT_TRUE(result == CVLEXIF::errOK || result == CVLEXIF::errFormat || result == CVLEXIF::errNoEXIF)
            << result;
        const std::string after = ReadFile(path);
        ASSERT_EQ(after.size(), before.size());
        if (result != CVLEXIF::errOK) {
            EXPECT_TRUE(after == before);
        }
    }
    EXPECT_EQ(loads[CVLEXIF::errEmpty], 1);  // empty.jpg
    EXPECT_GE(loads.size(), 3u);
}

}  // namespace
