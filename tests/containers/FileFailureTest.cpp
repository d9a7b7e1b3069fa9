// Safe replacement and the failure cases of reading and writing: every
// failure returns its documented code and leaves the original bytes at the
// original path, with no temporary file left behind.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/SafeReplace.h"
#include "tests/containers/ContainerSupport.h"
#include "tests/support/Unprivileged.h"

namespace vliptc::test {
namespace {

namespace fault = platform::fault;
using platform::SafeReplace;

const Bytes kIim = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(120, "caption")});

Bytes SampleJpeg() {
    return Jpeg({App0(), App1(), Photoshop(Cat({Resource(0x03ED, Bytes(16, 1)), Resource(0x0404, kIim)}))});
}

TEST(SafeReplaceNames, NumberGoesBehindTheWholeName) {
    EXPECT_EQ(SafeReplace::BackupName("a/photo.jpg", 0), "a/photo.jpg.000");
    EXPECT_EQ(SafeReplace::BackupName("photo", 7), "photo.007");
    EXPECT_EQ(SafeReplace::BackupName("a.b/photo", 42), "a.b/photo.042");
    EXPECT_EQ(SafeReplace::BackupName("a/photo.tar.gz", 999), "a/photo.tar.gz.999");
}

// A JPEG whose keywords the store has changed, to be written as a JPEG.
class FileFailure : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        WriteBytes(m_path, m_original);
        CIPTC::SIPTCFormatInfo format;
        ASSERT_EQ(m_store.ReadIPTCBlob(m_path.c_str(), format), CIPTC::kSuccess);
        EXPECT_TRUE(format.nFormat == CIPTC::kFormatJPEG && format.bBigEndian);
        m_store.SetField(25, CVLProperty(std::string("changed")), false);
    }
    CIPTC::EError Write() {
        return m_store.WriteIPTCBlob(m_path.c_str(), CIPTC::SIPTCFormatInfo{CIPTC::kFormatJPEG, true});
    }
    void ExpectUntouched() {
        EXPECT_EQ(ReadBytes(m_path), m_original);
        EXPECT_EQ(Listing(m_dir.Path()), std::set<std::string>{"image.jpg"});
    }

    std::string m_path = File("image.jpg");
    Bytes m_original = SampleJpeg();
};

TEST_F(FileFailure, GuardPicksTheFirstFreeNameAndRestoresWhenNotCommitted) {
    WriteBytes(m_path + ".000", ToBytes("taken"));
    WriteBytes(m_path + ".001", ToBytes("taken"));
    {
        SafeReplace guard(m_path);
        ASSERT_TRUE(guard.MakeBackup());
        EXPECT_EQ(guard.BackupPath(), m_path + ".002");
        EXPECT_FALSE(std::filesystem::exists(m_path));
        WriteBytes(m_path, ToBytes("half-written"));
    }  // destroyed while pending: the failed file goes, the original returns
    EXPECT_EQ(ReadBytes(m_path), m_original);
    EXPECT_FALSE(std::filesystem::exists(m_path + ".002"));
    EXPECT_EQ(ReadBytes(m_path + ".000"), ToBytes("taken"));  // other files never touched
}

TEST_F(FileFailure, AllThousandBackupNamesTaken) {
    for (int n = 0; n < 1000; ++n) WriteBytes(SafeReplace::BackupName(m_path, n), ToBytes("x"));
    EXPECT_EQ(Write(), CIPTC::kCannotReplace);
    EXPECT_EQ(ReadBytes(m_path), m_original);
    EXPECT_EQ(Listing(m_dir.Path()).size(), 1001u);  // no temporary file left
}

TEST_F(FileFailure, ReadOnlyFileIsNotReplaced) {
    ASSERT_EQ(::chmod(m_path.c_str(), 0444), 0);
    OpenToOthers(m_dir.Path());
    VLIPTC_EXPECT_AS_UNPRIVILEGED([&] { return Write() == CIPTC::kCannotMapOrWrite; });
    ::chmod(m_path.c_str(), 0644);
    ExpectUntouched();
}

TEST_F(FileFailure, NewFileKeepsThePermissionsOfTheOld) {
    ASSERT_EQ(::chmod(m_path.c_str(), 0640), 0);
    ASSERT_EQ(Write(), CIPTC::kSuccess);
    struct stat st {};
    ASSERT_EQ(::stat(m_path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST_F(FileFailure, BlockTooLargeWritesNothing) {
    m_store.SetField(120, CVLProperty(std::string(40000, 'a')), true);
    m_store.SetField(25, CVLProperty(std::string(30000, 'b')), false);
    EXPECT_EQ(Write(), CIPTC::kBlockTooLarge);
    ExpectUntouched();
    // Also when the path names no file at all: the size is checked first.
    EXPECT_EQ(m_store.WriteIPTCBlob(File("missing.jpg").c_str(), {}), CIPTC::kBlockTooLarge);
}

TEST_F(ContainerTest, BadFilesGiveTheirCodesAndStayAsTheyWere) {
    Bytes truncated = SampleJpeg();
    truncated.resize(45);  // inside the APP13 length
    const struct {
        const char* name;
        Bytes bytes;
        bool missing;  // no file at all
        CIPTC::EError read;
        CIPTC::EError write;
    } cases[] = {
        {"missing", {}, true, CIPTC::kCannotOpen, CIPTC::kCannotOpen},
        {"empty", {}, false, CIPTC::kEmptyFile, CIPTC::kEmptyFile},
        {"not an image", ToBytes("plain text, not an image"), false, CIPTC::kUnsupportedFormat,
         CIPTC::kUnsupportedFormat},
        {"truncated segment", truncated, false, CIPTC::kUnsupportedFormat, CIPTC::kUnsupportedFormat},
        {"no application segment", Jpeg({Dqt()}), false, CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat},
        {"APP13 without IPTC", Jpeg({App0(), Photoshop(Resource(0x03ED, Bytes(16, 1)))}), false,
         CIPTC::kNoIPTCBlock, CIPTC::kSuccess},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = File("bad.jpg");
        std::filesystem::remove(path);
        if (!c.missing) WriteBytes(path, c.bytes);
        CIPTC::SIPTCFormatInfo format;
        EXPECT_EQ(m_store.ReadIPTCBlob(path.c_str(), format), c.read);
        EXPECT_EQ(m_store.Path(), path);
        if (!c.bytes.empty()) {
            EXPECT_EQ(format.nFormat, c.bytes[0] == 0xFF ? CIPTC::kFormatJPEG : CIPTC::kFormatUnknown);
        }
        EXPECT_EQ(m_store.WriteIPTCBlob(path.c_str(), CIPTC::SIPTCFormatInfo{CIPTC::kFormatJPEG, true}),
                  c.write);
        if (c.write == CIPTC::kSuccess) continue;
        EXPECT_EQ(std::filesystem::exists(path), !c.missing);
        if (!c.missing) {
            EXPECT_EQ(ReadBytes(path), c.bytes);
        }
    }
    CIPTC idle;
    CIPTC::SIPTCFormatInfo format;
    EXPECT_EQ(idle.ReadIPTCBlob(File("bad.jpg").c_str(), format), CIPTC::kNotInitialized);
    EXPECT_EQ(idle.WriteIPTCBlob(File("bad.jpg").c_str(), format), CIPTC::kNotInitialized);
}

TEST_F(ContainerTest, RawFileIsReadAndWrittenThroughItsCompanionOfAnyCase) {
    const Bytes thumb = SampleJpeg();
    const struct {
        std::vector<const char*> companions;  // created beside "shot.CRW"
        const char* expected;                 // the one used, or nullptr
    } cases[] = {
        {{"shot.thm"}, "shot.thm"},
        {{"shot.tHm"}, "shot.tHm"},
        {{"shot.THM", "shot.thm"}, "shot.thm"},
        {{"shot.Thm", "shot.THM"}, "shot.THM"},
        {{"shot.jpg", "other.thm"}, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected == nullptr ? "none" : c.expected);
        const std::string folder = File("raw");
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        const std::string raw = folder + "/shot.CRW";
        WriteBytes(raw, ToBytes("CIFF data is never read"));
        for (const char* name : c.companions) WriteBytes(folder + "/" + name, thumb);

        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError read = m_store.ReadIPTCBlob(raw.c_str(), format);
        EXPECT_EQ(m_store.Path(), raw);
        if (c.expected == nullptr) {
            EXPECT_EQ(read, CIPTC::kCannotOpen);
            EXPECT_EQ(m_store.WriteIPTCBlob(raw.c_str(), format), CIPTC::kCannotOpen);
            continue;
        }
        ASSERT_EQ(read, CIPTC::kSuccess);
        EXPECT_EQ(Values(120), std::vector<std::string>{"caption"});
        m_store.SetField(120, CVLProperty(std::string(c.expected)), true);
        ASSERT_EQ(m_store.WriteIPTCBlob(raw.c_str(), format), CIPTC::kSuccess);
        EXPECT_EQ(ReadBytes(raw), ToBytes("CIFF data is never read"));
        for (const char* name : c.companions) {
            EXPECT_EQ(ReadBytes(folder + "/" + name) != thumb, std::string(name) == c.expected) << name;
        }
        ASSERT_EQ(m_store.ReadIPTCBlob(raw.c_str(), format), CIPTC::kSuccess);
        EXPECT_EQ(Values(120), std::vector<std::string>{c.expected});
    }
}

}  // namespace
}  // namespace vliptc::test
