#include "platform/MappedFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/FileSystem.h"
#include "tests/support/TempDir.h"
#include "tests/support/Unprivileged.h"

namespace vliptc::platform {
namespace {

using Access = MappedFile::Access;
using Status = MappedFile::Status;
using test::OpenToOthers;
using test::ReadFile;
using test::TempDir;
using test::WriteFile;

std::string Contents(const MappedFile& file) {
    return {reinterpret_cast<const char*>(file.Data()), file.Size()};
}

TEST(MappedFile, WriteThroughMapReachesFile) {
    TempDir dir;
    WriteFile(dir.File("f"), "hello world");
    MappedFile file;
    ASSERT_EQ(file.Open(dir.File("f"), Access::ReadWrite), Status::Ok);
    ASSERT_NE(file.MutableData(), nullptr);
    file.MutableData()[0] = 'J';
    file.MutableData()[10] = 'D';
    // Shared mapping: other readers see the change before it is unmapped.
    EXPECT_EQ(ReadWholeFile(dir.File("f"), 100), "Jello worlD");
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(ReadFile(dir.File("f")), "Jello worlD");
}

TEST(MappedFile, ReadAtStaysInsideTheFile) {
    TempDir dir;
    WriteFile(dir.File("f"), "hello world");
    MappedFile file;
    std::array<std::uint8_t, 5> out{};
    EXPECT_FALSE(file.ReadAt(0, out));  // not open
    ASSERT_EQ(file.Open(dir.File("f"), Access::ReadOnly), Status::Ok);
    struct Case {
        std::size_t offset;
        bool ok;
    };
    for (const Case c : {Case{0, true}, Case{6, true}, Case{7, false}, Case{11, false}, Case{SIZE_MAX, false}}) {
        out.fill(0);
        EXPECT_EQ(file.ReadAt(c.offset, out), c.ok) << c.offset;
        if (c.ok) {
            EXPECT_EQ(std::string(out.begin(), out.end()), std::string("hello world").substr(c.offset, 5));
        }
    }
}

TEST(MappedFile, FailuresLeaveItClosed) {
    TempDir dir;
    WriteFile(dir.File("empty"), "");
    ASSERT_EQ(::mkdir(dir.File("folder").c_str(), 0755), 0);
    struct Case {
        const char* name;
        Status expected;
    };
    const Case cases[] = {
        {"empty", Status::Empty},
        {"missing", Status::CannotOpen},
        {"folder", Status::CannotOpen},
    };
    for (const Case& c : cases) {
        for (const Access access : {Access::ReadOnly, Access::ReadWrite}) {
            MappedFile file;
            EXPECT_EQ(file.Open(dir.File(c.name), access), c.expected) << c.name;
            EXPECT_FALSE(file.IsOpen()) << c.name;
            EXPECT_EQ(file.Size(), 0u) << c.name;
            EXPECT_EQ(file.Data(), nullptr) << c.name;
        }
    }
}

TEST(MappedFile, ReadWriteNeedsWritePermission) {
    TempDir dir;
    WriteFile(dir.File("f"), "x");
    ASSERT_EQ(::chmod(dir.File("f").c_str(), 0444), 0);
    OpenToOthers(dir.Path());
    VLIPTC_EXPECT_AS_UNPRIVILEGED([&] {
        MappedFile file;
        return file.Open(dir.File("f"), Access::ReadWrite) == Status::CannotOpen &&
               file.Open(dir.File("f"), Access::ReadOnly) == Status::Ok;
    });
}

TEST(MappedFile, MoveAndReopen) {
    TempDir dir;
    const std::string binary("\xFF\xD8\0\x01 tail", 8);
    WriteFile(dir.File("a"), "aaaa");
    WriteFile(dir.File("b"), binary);

    MappedFile first;
    ASSERT_EQ(first.Open(dir.File("a"), Access::ReadWrite), Status::Ok);
    MappedFile second(std::move(first));
    EXPECT_FALSE(first.IsOpen());
    EXPECT_EQ(first.Size(), 0u);
    ASSERT_TRUE(second.IsOpen());
    EXPECT_EQ(Contents(second), "aaaa");
    EXPECT_NE(second.MutableData(), nullptr);

    MappedFile third;
    ASSERT_EQ(third.Open(dir.File("b"), Access::ReadOnly), Status::Ok);
    third = std::move(second);  // drops the mapping of "b"
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(Contents(third), "aaaa");
    third.MutableData()[0] = 'z';
    EXPECT_EQ(ReadFile(dir.File("a")), "zaaa");

    // Opening again replaces the mapping (read-only: no writable bytes); a
    // failed open leaves nothing mapped.
    ASSERT_EQ(third.Open(dir.File("b"), Access::ReadOnly), Status::Ok);
    EXPECT_EQ(Contents(third), binary);
    EXPECT_EQ(third.Bytes().size(), binary.size());
    EXPECT_EQ(third.MutableData(), nullptr);
    EXPECT_EQ(third.Open(dir.File("missing"), Access::ReadOnly), Status::CannotOpen);
    EXPECT_FALSE(third.IsOpen());
}

}  // namespace
}  // namespace vliptc::platform
