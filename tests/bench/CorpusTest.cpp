// The generated benchmark files: our IPTC and EXIF readers find the values
// the generator put in, the bytes follow from the number alone, and ExifTool
// and exiv2 read the files without a warning.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/corpus/Corpus.h"
#include "exif/EXIF.h"
#include "iptc/IPTC.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

namespace {

using vliptc::bench::Bytes;

struct Case {
    const char* file;
    std::uint32_t number;
    std::size_t size;
    std::uint32_t format;
    const char* dateCreated;  // IPTC 2:55
    const char* dateTime;     // EXIF DateTimeOriginal
    const char* exposure;     // as the EXIF viewer shows it
};

const Case kCases[] = {
    {"small.jpg", 0, 30000, CIPTC::kFormatJPEG, "20200101", "2020:01:01 00:00:00", "1/30 s"},
    {"main.jpg", 1234, 200000, CIPTC::kFormatJPEG, "20230903", "2023:09:03 10:58:22", "1/500 s"},
    {"strip.tif", 7, 256 * 1024, CIPTC::kFormatTIFF, "20200108", "2020:01:08 07:49:31", "1/60 s"},
};

Bytes Make(const Case& c) {
    return c.format == CIPTC::kFormatTIFF ? vliptc::bench::MakeTiff(c.number, c.size)
                                          : vliptc::bench::MakeJpeg(c.number, c.size);
}

std::string Text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

class BenchCorpusTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const Case& c : kCases) {
            const Bytes bytes = Make(c);
            ASSERT_EQ(bytes.size(), c.size) << c.file;
            vliptc::test::WriteFile(m_dir.File(c.file), Text(bytes));
        }
    }
    vliptc::test::TempDir m_dir;
};

TEST_F(BenchCorpusTest, OurReadersFindTheGeneratedValues) {
    CIPTC store;
    ASSERT_EQ(store.InitializeFromText("{\nID 25\nNAME Keywords\nREPEATABLE 1\n}\n", m_dir.Path()),
              CIPTC::kSuccess);
    CVLEXIF exif;
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.file);
        const std::string path = m_dir.File(c.file);
        CIPTC::SIPTCFormatInfo format;
        ASSERT_EQ(store.ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
        EXPECT_EQ(format.nFormat, c.format);
        std::vector<CVLProperty> values;
        ASSERT_TRUE(store.GetField(120, values));
        ASSERT_EQ(values.size(), 1u);
        EXPECT_EQ(values[0].String(),
                  "Fishing boats in the harbour at dusk, generated image " + std::to_string(c.number) + ".");
        ASSERT_TRUE(store.GetField(25, values));
        EXPECT_EQ(values.size(), 12u);
        ASSERT_TRUE(store.GetField(55, values));
        EXPECT_EQ(values.at(0).String(), c.dateCreated);

        ASSERT_EQ(exif.LoadFile(path.c_str()), CVLEXIF::errOK);
        std::string text;
        EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kDateTimeOriginal, text));
        EXPECT_EQ(text, c.dateTime);
        EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kExposureTime, text));
        EXPECT_EQ(text, c.exposure);
        EXPECT_TRUE(exif.GetFormattedField(CVLEXIF::kGPSLatitude, text));
    }
}

TEST_F(BenchCorpusTest, BytesFollowFromTheNumber) {
    for (const Case& c : kCases) {
        EXPECT_EQ(Make(c), Make(c)) << c.file;
        Case other = c;
        ++other.number;
        EXPECT_NE(Make(other), Make(c)) << c.file;
    }
    // The main set's sizes run from 150 KB to 4 MB, each number its own place.
    std::vector<std::size_t> sizes;
    for (std::uint32_t n = 0; n < vliptc::bench::kMainJpegCount; ++n)
        sizes.push_back(vliptc::bench::MainJpegSize(n));
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes.front(), 150000u);
    EXPECT_EQ(sizes.back(), 4000000u);
    EXPECT_EQ(std::adjacent_find(sizes.begin(), sizes.end()), sizes.end());
}

TEST_F(BenchCorpusTest, PeersReadThemWithoutAWarning) {
    std::string files;
    for (const Case& c : kCases) files += " " + vliptc::test::Quote(m_dir.File(c.file));
    bool ran = false;
    if (vliptc::test::HaveTool("exiftool")) {
        ran = true;
        EXPECT_EQ(vliptc::test::RunCommand("exiftool -q -a -G1 -s -Warning -Error" + files + " 2>&1"), "");
    }
    if (vliptc::test::HaveTool("exiv2")) {
        ran = true;
        for (const Case& c : kCases) {
            const std::string command = "exiv2 -pa " + vliptc::test::Quote(m_dir.File(c.file));
            EXPECT_EQ(vliptc::test::RunCommand(command + " 2>&1 >/dev/null"), "") << c.file;
        }
    }
    if (!ran) GTEST_SKIP() << "neither exiftool nor exiv2 is on the PATH";
}

}  // namespace
