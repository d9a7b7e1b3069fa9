#include "platform/FileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>
#include <optional>
#include <string>

#include "platform/internal/PosixFiles.h"
#include "tests/support/TempDir.h"
#include "tests/support/Unprivileged.h"

namespace vliptc::platform {
namespace {

using test::OpenToOthers;
using test::ReadFile;
using test::TempDir;
using test::WriteFile;

constexpr std::int64_t kSecond = 1'000'000'000;

TEST(FileSystem, PathKinds) {
    TempDir dir;
    WriteFile(dir.File("file"), "12345");
    ASSERT_EQ(::mkdir(dir.File("folder").c_str(), 0755), 0);
    ASSERT_EQ(::symlink("file", dir.File("link").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", dir.File("dangling").c_str()), 0);

    struct Case {
        const char* name;
        bool exists;
        bool directory;
        bool regular;
        std::uint64_t size;
    };
    const Case cases[] = {
        {"file", true, false, true, 5},
        {"folder", true, true, false, 0},
        {"link", true, false, true, 5},  // links are followed
        {"dangling", false, false, false, 0},
        {"missing", false, false, false, 0},
    };
    for (const Case& c : cases) {
        const std::string path = dir.File(c.name);
        EXPECT_EQ(Exists(path), c.exists) << c.name;
        EXPECT_EQ(IsDirectory(path), c.directory) << c.name;
        EXPECT_EQ(IsRegularFile(path), c.regular) << c.name;
        const auto status = GetFileStatus(path);
        ASSERT_EQ(status.has_value(), c.exists) << c.name;
        if (status) {
            EXPECT_EQ(status->isDirectory, c.directory) << c.name;
            if (c.regular) {
                EXPECT_EQ(status->size, c.size) << c.name;
            }
        }
        EXPECT_EQ(GetLastWriteTime(path).has_value(), c.exists) << c.name;
        EXPECT_EQ(GetFileTimes(path).has_value(), c.exists) << c.name;
    }
}

// The public call and the hard-link fallback promise the same thing.
struct RenameCase {
    const char* name;
    bool (*rename)(const std::string&, const std::string&);
};
class RenameNoReplaceTest : public ::testing::TestWithParam<RenameCase> {};

TEST_P(RenameNoReplaceTest, MovesOnlyToAFreeName) {
    TempDir dir;
    EXPECT_FALSE(GetParam().rename(dir.File("a"), dir.File("b")));  // no source
    EXPECT_FALSE(Exists(dir.File("b")));

    WriteFile(dir.File("a"), "first");
    WriteFile(dir.File("b"), "second, longer");
    EXPECT_FALSE(GetParam().rename(dir.File("a"), dir.File("b")));  // touches neither
    EXPECT_EQ(ReadFile(dir.File("a")), "first");
    EXPECT_EQ(ReadFile(dir.File("b")), "second, longer");

    ASSERT_TRUE(GetParam().rename(dir.File("a"), dir.File("c")));
    EXPECT_FALSE(Exists(dir.File("a")));
    EXPECT_EQ(ReadFile(dir.File("c")), "first");
}

INSTANTIATE_TEST_SUITE_P(Both, RenameNoReplaceTest,
                         ::testing::Values(RenameCase{"renameat2", &RenameNoReplace},
                                           RenameCase{"hardlink", &internal::RenameByHardLink}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FileSystem, FileTimesRoundTripWithNanoseconds) {
    TempDir dir;
    const std::string path = dir.File("f");
    WriteFile(path, "x");
    const auto before = GetFileTimes(path);
    ASSERT_TRUE(before);

    struct Case {
        std::int64_t access;
        std::int64_t write;
    };
    const Case cases[] = {
        {1'234'567'890 * kSecond + 123'456'789, 1'600'000'000 * kSecond + 987'654'321},
        {0, 1},
        {4'102'444'800 * kSecond + 999'999'999, 946'684'800 * kSecond},  // 2100 and 2000
    };
    for (const Case& c : cases) {
        FileTimes wanted;
        wanted.access = FileTime{c.access};
        wanted.write = FileTime{c.write};
        wanted.creation = FileTime{42};  // cannot be set; must be ignored, not fail
        ASSERT_TRUE(SetFileTimes(path, wanted));
        const auto got = GetFileTimes(path);
        ASSERT_TRUE(got);
        EXPECT_EQ(got->access, wanted.access);
        EXPECT_EQ(got->write, wanted.write);
        EXPECT_EQ(got->creation, before->creation);
        EXPECT_EQ(GetLastWriteTime(path), wanted.write);
    }
    EXPECT_FALSE(SetFileTimes(dir.File("missing"), FileTimes{}));
}

TEST(FileSystem, TimeConversions) {
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    struct Case {
        std::int64_t nanoseconds;
        std::int64_t seconds;
        std::int64_t fraction;
    };
    const Case cases[] = {
        {0, 0, 0},
        {kSecond - 1, 0, 999'999'999},
        {kSecond, 1, 0},
        {-1, -1, 999'999'999},
        {-kSecond, -1, 0},
        {kMax, 9'223'372'036, 854'775'807},
        {kMin, -9'223'372'037, 145'224'192},
    };
    for (const Case& c : cases) {
        const FileTime time{c.nanoseconds};
        const auto parts = internal::PartsFromFileTime(time);
        EXPECT_EQ(parts.seconds, c.seconds) << c.nanoseconds;
        EXPECT_EQ(parts.nanoseconds, c.fraction) << c.nanoseconds;
        EXPECT_EQ(time.Seconds(), c.seconds) << c.nanoseconds;
        EXPECT_EQ(internal::FileTimeFromParts(parts.seconds, parts.nanoseconds), time) << c.nanoseconds;
    }
    // Out of range saturates instead of wrapping.
    EXPECT_EQ(internal::FileTimeFromParts(kMax, 0).nanoseconds, kMax);
    EXPECT_EQ(internal::FileTimeFromParts(kMin, 0).nanoseconds, kMin);
    EXPECT_EQ(internal::FileTimeFromParts(9'223'372'036, 999'999'999).nanoseconds, kMax);
    EXPECT_EQ(internal::FileTimeFromParts(-9'223'372'037, 0).nanoseconds, kMin);
}

TEST(FileSystem, ReadWholeFileLimits) {
    TempDir dir;
    std::string binary;
    for (int i = 0; i < 300; ++i) binary += static_cast<char>(i);
    WriteFile(dir.File("empty"), "");
    WriteFile(dir.File("abc"), "abc");
    WriteFile(dir.File("binary"), binary);
    ASSERT_EQ(::mkdir(dir.File("folder").c_str(), 0755), 0);
    ASSERT_EQ(::mkfifo(dir.File("fifo").c_str(), 0644), 0);  // must not block the open

    struct Case {
        const char* name;
        std::uint64_t maxBytes;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {"empty", 0, ""},
        {"abc", 3, "abc"},
        {"abc", 2, std::nullopt},
        {"abc", std::numeric_limits<std::uint64_t>::max(), "abc"},
        {"binary", 300, binary},
        {"folder", 1 << 20, std::nullopt},
        {"fifo", 1 << 20, std::nullopt},
        {"missing", 1 << 20, std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ReadWholeFile(dir.File(c.name), c.maxBytes), c.expected) << c.name << " max " << c.maxBytes;
    }
}

TEST(FileSystem, IsReadOnly) {
    TempDir dir;
    const std::string path = dir.File("f");
    WriteFile(path, "x");
    EXPECT_FALSE(IsReadOnly(path));
    EXPECT_TRUE(IsReadOnly(dir.File("missing")));
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    OpenToOthers(dir.Path());
    VLIPTC_EXPECT_AS_UNPRIVILEGED([&] { return IsReadOnly(path); });
}

}  // namespace
}  // namespace vliptc::platform
