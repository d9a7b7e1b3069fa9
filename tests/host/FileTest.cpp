#include <cstring>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/VLException.h"
#include "host/VLFile.h"
#include "tests/support/TempDir.h"

namespace {

std::string Contents(const CVLMemFile& mem) {
    return std::string(reinterpret_cast<const char*>(mem.GetBuffer(0)), static_cast<std::size_t>(mem.GetFileSize()));
}

std::string ReadRest(CVLFile& file) {
    std::string out;
    char chunk[7];
    while (const unsigned n = file.Read(chunk, sizeof chunk)) out.append(chunk, n);
    return out;
}

// Many appends of odd sizes past a tiny initial size and step: every byte
// must land where it was written, whatever the reallocations did.
TEST(MemFile, GrowsAcrossManyWrites) {
    for (unsigned step : {1u, 3u, 4096u}) {
        SCOPED_TRACE(step);
        CVLMemFile mem(false, 5, step);
        std::string expected;
        for (int i = 0; i < 600; ++i) {
            const std::string piece(static_cast<std::size_t>(i % 37), static_cast<char>('a' + i % 26));
            EXPECT_EQ(mem.Write(piece.data(), static_cast<unsigned>(piece.size())), piece.size());
            expected += piece;
        }
        EXPECT_EQ(mem.GetFileSize(), static_cast<std::int64_t>(expected.size()));
        EXPECT_EQ(mem.GetPosition(), mem.GetFileSize());
        EXPECT_EQ(Contents(mem), expected);
        mem.Rewind();
        EXPECT_EQ(ReadRest(mem), expected);
    }
}

TEST(MemFile, PositionedWritesShortReadsAndNoPath) {
    CVLMemFile mem(false, 65536, 4096);
    mem.Write("abcdef", 6);
    mem.Seek(2);
    mem.Write("XY", 2);
    EXPECT_EQ(Contents(mem), "abXYef");
    EXPECT_EQ(mem.GetPosition(), 4);
    mem.Seek(5);
    mem.Write("123", 3);
    EXPECT_EQ(Contents(mem), "abXYe123");
    mem.Seek(100);  // clamped to the end
    EXPECT_EQ(mem.GetPosition(), 8);
    mem.Rewind();
    mem.Write("Z", 1);
    EXPECT_EQ(Contents(mem), "ZbXYe123");
    EXPECT_EQ(ReadRest(mem), "bXYe123");

    // Copying a part of the buffer onto its own end survives the growth.
    CVLMemFile self(false, 4, 4);
    self.Write("wxyz", 4);
    self.Write(self.GetBuffer(), 4);
    self.Write(self.GetBuffer(), 8);
    EXPECT_EQ(Contents(self), "wxyzwxyzwxyzwxyz");

    mem.Assign("new", 3);
    EXPECT_EQ(mem.GetPosition(), 0);
    EXPECT_EQ(ReadRest(mem), "new");
    char four[4];
    EXPECT_EQ(mem.Read(four, 1), 0u);
    mem.Seek(1);
    EXPECT_THROW(mem.ReadExact(four, 4), CVLException);  // 2 bytes left

    EXPECT_THROW(mem.Open("/tmp/x"), CVLException);  // no path
    EXPECT_THROW(mem.Create("/tmp/x"), CVLException);
    mem.Close();  // a no-op: the contents stay
    EXPECT_EQ(mem.GetFileSize(), 3);
}

TEST(DiskFile, WriteReadAndSizes) {
    vliptc::test::TempDir dir;
    const std::string path = dir.File("data.bin");
    EXPECT_FALSE(CVLFile::FileExists(path));
    {
        CVLFile out;
        out.Create(path);
        out.WriteUInt16(0xBEEF);
        out.WriteUInt32(7);
        EXPECT_EQ(out.Write("tail", 4), 4u);
        EXPECT_EQ(out.GetFileSize(), 10);
        EXPECT_EQ(out.GetPosition(), 10);
        EXPECT_THROW(out.ReadUInt16(), CVLException);  // created for writing
    }  // the destructor closes
    EXPECT_TRUE(CVLFile::FileExists(path));
    EXPECT_EQ(vliptc::test::ReadFile(path), std::string("\xEF\xBE\x07\x00\x00\x00tail", 10));

    CVLFile in;
    in.Open(path);
    EXPECT_EQ(in.GetFileSize(), 10);
    EXPECT_EQ(in.ReadUInt16(), 0xBEEF);
    EXPECT_EQ(in.GetPosition(), 2);
    EXPECT_EQ(in.GetFileSize(), 10);  // asking the size does not move
    EXPECT_EQ(in.ReadUInt32(), 7u);
    EXPECT_EQ(ReadRest(in), "tail");
    char byte;
    EXPECT_THROW(in.ReadExact(&byte, 1), CVLException);
    EXPECT_THROW(in.Write("x", 1), CVLException);  // opened for reading
    in.Close();
    in.Close();
    EXPECT_THROW(in.Read(&byte, 1), CVLException);
    EXPECT_THROW(in.GetFileSize(), CVLException);

    // Create truncates.
    CVLFile again;
    again.Create(path);
    again.Close();
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
}

TEST(DiskFile, FailuresThrow) {
    vliptc::test::TempDir dir;
    CVLFile file;
    EXPECT_THROW(file.Open(dir.File("missing.bin")), CVLException);
    EXPECT_THROW(file.Create(dir.File("no/such/folder.bin")), CVLException);
    EXPECT_THROW(file.Write("x", 1), CVLException);
    file.Close();
    EXPECT_FALSE(CVLFile::FileExists(dir.File("missing.bin")));
    EXPECT_TRUE(CVLFile::FileExists(dir.Path()));

    // A full device: the write itself must fail, not a later flush.
    if (std::filesystem::exists("/dev/full")) {
        CVLFile full;
        full.Create("/dev/full");
        EXPECT_THROW(full.Write("data", 4), CVLException);
    }
}

}  // namespace
