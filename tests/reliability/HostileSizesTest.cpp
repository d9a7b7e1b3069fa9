// Files whose sizes, counts and offsets are built to make a reader loop, wrap
// a 32-bit sum or walk gigabytes: TIFF directory chains that loop, offsets and
// counts near 2^32, a directory of 65,535 entries in a file of 256 bytes,
// files of more than 4 GiB (sparse: a header, a few pages near 2^32, holes),
// JPEGs of 100,000 fill bytes. Each file goes through the four operations that
// read outside data from a path: ReadIPTCBlob, WriteIPTCBlob, CVLEXIF's
// LoadFile and StoreFile. Each must end with its documented result code and
// leave the file as it was (a write that succeeds must read back).
//
// Every operation runs in a child process under a watchdog: a hang ends the
// child with SIGALRM and fails the case, a crash fails it with its signal,
// and neither takes the other cases down. The durations are printed; they are
// not asserted.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "exif/EXIF.h"
#include "iptc/IPTC.h"
#include "tests/containers/ContainerSupport.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

namespace fs = std::filesystem;

// Far above anything these operations need (milliseconds), far below the
// test's own time limit.
constexpr unsigned kWatchdogSeconds = 60;

// 4 GiB and one page: a 32-bit truncation of this size leaves one page.
constexpr std::uint64_t kBeyond4G = (std::uint64_t{1} << 32) + 4096;

// What the write puts into the caption (2:120).
constexpr const char* kWrittenCaption = "written over a hostile file";

constexpr std::uint32_t kTagIptcNaa = 33723;
constexpr std::uint32_t kTagExifIfd = 34665;
constexpr std::uint32_t kTagGpsIfd = 34853;
constexpr std::uint32_t kTagStripOffsets = 273;
constexpr std::uint16_t kTypeAscii = 2;
constexpr std::uint16_t kTypeLong = 4;
constexpr std::uint16_t kTypeRational = 5;

// A file as bytes at its start, optionally a second run of bytes far behind
// them, and its total size (holes between and behind, where larger).
struct HostileFile {
    Bytes head;
    std::uint64_t farOffset = 0;
    Bytes far;
    std::uint64_t size = 0;  // 0: the file ends with the last byte given
};

// CVLEXIF::StoreFile refuses files of fewer than 128 bytes before it looks at
// them; small crafted files are padded with zero bytes so that it walks them.
constexpr std::size_t kPaddedBytes = 256;

HostileFile Plain(Bytes bytes) {
    if (bytes.size() < kPaddedBytes) bytes.resize(kPaddedBytes, 0);
    return {std::move(bytes), 0, {}, 0};
}

// The result code each of the four operations must give for a file.
struct Expected {
    CIPTC::EError read, write;
    CVLEXIF::EError load, store;
};

struct HostileCase {
    const char* name;
    const char* extension;
    std::function<HostileFile()> make;
    Expected expected;
};

// The case's name in test names and messages.
void PrintTo(const HostileCase& c, std::ostream* out) { *out << c.name; }

// ---- Crafting ------------------------------------------------------------

TiffField Raw(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::uint32_t valueField,
              const TiffMaker& tiff) {
    return {tag, type, count, tiff.Encode32({valueField})};
}

// A little-endian TIFF whose first directories are laid out by lay(tiff),
// which returns the offset of the first one.
HostileFile Tiff(const std::function<std::uint32_t(TiffMaker&)>& lay) {
    TiffMaker tiff(false);
    tiff.SetFirstDirectory(lay(tiff));
    return Plain(tiff.Data());
}

// One directory with the given entries and link; returns its offset.
std::uint32_t Directory(TiffMaker& tiff, std::vector<TiffField> fields, std::uint32_t next = 0) {
    const std::uint32_t at = tiff.Reserve(fields.size());
    tiff.Fill(at, fields, next);
    return at;
}

// An IPTC-NAA entry holding a caption, so that a read has something to find
// where the walk gets that far.
TiffField IptcEntry() {
    const Bytes block = IimBlock({{120, "hostile"}});
    return {static_cast<std::uint16_t>(kTagIptcNaa), 7, static_cast<std::uint32_t>(block.size()), block};
}

HostileFile DirectoryLinkingToItself() {
    return Tiff([](TiffMaker& t) {
        const std::uint32_t at = t.Reserve(2);
        t.Fill(at, {t.Short(256, {1}), IptcEntry()}, at);
        return at;
    });
}

HostileFile ChainABA() {
    return Tiff([](TiffMaker& t) {
        const std::uint32_t a = t.Reserve(1);
        const std::uint32_t b = t.Reserve(1);
        t.Fill(a, {t.Short(256, {1})}, b);
        t.Fill(b, {t.Short(257, {1})}, a);
        return a;
    });
}

HostileFile FirstDirectoryAt(std::uint32_t offset) {
    return Tiff([offset](TiffMaker& t) {
        Directory(t, {t.Short(256, {1})});
        return offset;
    });
}

// Entries whose value offsets lie near 2^32: a text, the IPTC entry, the EXIF
// and GPS directory pointers.
HostileFile ValueOffsetsNear4G() {
    return Tiff([](TiffMaker& t) {
        return Directory(
            t, {Raw(270, kTypeAscii, 16, 0xFFFFFFF0, t), Raw(kTagIptcNaa, kTypeLong, 4, 0xFFFFFFF8, t),
                Raw(kTagExifIfd, kTypeLong, 1, 0xFFFFFFF0, t), Raw(kTagGpsIfd, kTypeLong, 1, 0xFFFFFFFE, t)});
    });
}

// Counts near 2^32 whose byte sizes wrap a 32-bit product (2^30 LONGs and
// 2^29 RATIONALs are 2^32 bytes; 0xFFFFFFFF LONGs are 4 bytes less than 16 GiB),
// among them the strip offsets, which an insertion has to shift.
HostileFile CountsNear4G() {
    return Tiff([](TiffMaker& t) {
        return Directory(
            t, {Raw(kTagStripOffsets, kTypeLong, 0x40000000, 8, t), Raw(282, kTypeRational, 0x20000000, 8, t),
                Raw(270, kTypeAscii, 0xFFFFFFFF, 8, t), Raw(kTagIptcNaa, kTypeLong, 0xFFFFFFFF, 8, t)});
    });
}

// A directory that claims 65,535 entries (786 KB) in a file of 256 bytes.
HostileFile FullDirectoryInShortFile() {
    TiffMaker tiff(false);
    tiff.SetFirstDirectory(
        tiff.Append(Cat({tiff.Encode16({65535}), tiff.Encode16({256, 3}), tiff.Encode32({1})})));
    return Plain(tiff.Data());
}

// More than 4 GiB: the IPTC entry's block, the strips, the EXIF directory
// and a text all lie near 2^32, inside the file.
HostileFile SparseTiff() {
    constexpr std::uint32_t kFar = 0xFFFFFF00;
    TiffMaker farPart(false);
    const Bytes block = IimBlock({{120, "far away"}});
    const Bytes exifDirectory = Cat({farPart.Encode16({1}), farPart.Encode16({36867, kTypeAscii}),
                                     farPart.Encode32({20, kFar + 0x40}), farPart.Encode32({0})});
    Bytes far = block;
    far.resize(0x20, 0);
    far.insert(far.end(), exifDirectory.begin(), exifDirectory.end());
    far.resize(0x40, 0);
    const std::string date = "2024:01:02 03:04:05";
    far.insert(far.end(), date.begin(), date.end());
    far.push_back(0);
    HostileFile file = Tiff([&](TiffMaker& t) {
        return Directory(t, {t.Short(256, {1}), Raw(kTagStripOffsets, kTypeLong, 1, kFar + 0x60, t),
                             Raw(kTagIptcNaa, 7, static_cast<std::uint32_t>(block.size()), kFar, t),
                             Raw(kTagExifIfd, kTypeLong, 1, kFar + 0x20, t)});
    });
    file.farOffset = kFar;
    file.far = far;
    file.size = kBeyond4G;
    return file;
}

// More than 4 GiB of JPEG: an EXIF segment whose first directory offset
// points near 2^32 (inside the file, far outside the segment), an IPTC block,
// the start of the scan, then holes.
HostileFile SparseJpeg() {
    const Bytes exif = Cat({ToBytes(std::string_view("Exif\0\0II*\0", 10)), Bytes{0x00, 0xFF, 0xFF, 0xFF}});
    Bytes head =
        Cat({Bytes{0xFF, 0xD8}, App0(), Segment(0xE1, exif),
             Photoshop(Resource(0x0404, IimBlock({{120, "sparse"}}))), Bytes{0xFF, 0xDA, 0x00, 0x02}});
    return {head, 0, {}, kBeyond4G};
}

HostileFile FillBytes(Bytes start) {
    start.insert(start.end(), 100000, 0xFF);
    return Plain(std::move(start));
}

// A Photoshop document whose resource section and IPTC record claim sizes
// near 2^32.
HostileFile PsdSizesNear4G() {
    Bytes record = Resource(0x0404, IimBlock({{120, "psd"}}));
    record[8] = record[9] = record[10] = 0xFF;  // data size 0xFFFFFFxx
    Bytes file = MakePsd({record});
    // The section length follows the header (26) and the colour-mode data (4 + 4).
    file[34] = file[35] = file[36] = 0xFF;
    file[37] = 0xF0;
    return Plain(std::move(file));
}

// ---- Running -------------------------------------------------------------

void Create(const std::string& path, const HostileFile& file) {
    WriteBytes(path, file.head);
    const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    bool ok = true;
    if (!file.far.empty()) {
        ok = ::pwrite(fd, file.far.data(), file.far.size(), static_cast<off_t>(file.farOffset)) ==
             static_cast<ssize_t>(file.far.size());
    }
    if (ok && file.size > 0) ok = ::ftruncate(fd, static_cast<off_t>(file.size)) == 0;
    ::close(fd);
    if (!ok) GTEST_SKIP() << "the file system refuses a sparse file of " << file.size << " bytes";
}

// What can be seen of a file cheaply: size, blocks, the bytes given.
struct Snapshot {
    std::uint64_t size = 0, blocks = 0;
    Bytes head, far;
    bool operator==(const Snapshot&) const = default;
};

Snapshot Take(const std::string& path, const HostileFile& file) {
    struct stat st {};
    Snapshot snapshot;
    if (::stat(path.c_str(), &st) != 0) return snapshot;
    snapshot.size = static_cast<std::uint64_t>(st.st_size);
    snapshot.blocks = static_cast<std::uint64_t>(st.st_blocks);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    auto read = [fd](std::uint64_t offset, std::size_t count) {
        Bytes bytes(count);
        const ssize_t got = ::pread(fd, bytes.data(), count, static_cast<off_t>(offset));
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes;
    };
    snapshot.head = read(0, file.size == 0 ? static_cast<std::size_t>(snapshot.size) : file.head.size());
    snapshot.far = read(file.farOffset, file.far.size());
    ::close(fd);
    return snapshot;
}

struct ChildRun {
    int code = -1;   // the result code, when the operation returned
    int signal = 0;  // the signal that ended it otherwise (SIGALRM: the watchdog)
    double seconds = 0;
};

// Runs op in a child process under the watchdog; its result code comes back
// as the exit status.
ChildRun Guarded(const std::function<int()>& op) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::alarm(kWatchdogSeconds);
        ::_exit(op());
    }
    ChildRun run;
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) != pid) return run;
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (WIFEXITED(status)) run.code = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
    return run;
}

// clang-format off
const HostileCase kCases[] = {
    // name, extension, file, {read, write, EXIF load, EXIF store}
    {"TiffDirectoryLinksToItself", ".tif", DirectoryLinkingToItself,
     {CIPTC::kSuccess, CIPTC::kSuccess, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffChainLoopsAToBToA", ".tif", ChainABA,
     {CIPTC::kNoIPTCBlock, CIPTC::kSuccess, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffFirstDirectoryAt0xFFFFFFF0", ".tif", [] { return FirstDirectoryAt(0xFFFFFFF0); },
     {CIPTC::kUnsupportedFormat, CIPTC::kUnsupportedFormat, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffFirstDirectoryAt0xFFFFFFFF", ".tif", [] { return FirstDirectoryAt(0xFFFFFFFF); },
     {CIPTC::kUnsupportedFormat, CIPTC::kUnsupportedFormat, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffValueOffsetsNear4G", ".tif", ValueOffsetsNear4G,
     {CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffCountsNear4G", ".tif", CountsNear4G,
     {CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"TiffDirectoryOf65535EntriesIn256Bytes", ".tif", FullDirectoryInShortFile,
     {CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"SparseTiffBeyond4G", ".tif", SparseTiff,
     {CIPTC::kSuccess, CIPTC::kCannotMapOrWrite, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"SparseJpegBeyond4G", ".jpg", SparseJpeg,
     {CIPTC::kSuccess, CIPTC::kCannotMapOrWrite, CVLEXIF::errOK, CVLEXIF::errOK}},
    {"JpegSoiThen100000FillBytes", ".jpg", [] { return FillBytes({0xFF, 0xD8}); },
     {CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat, CVLEXIF::errNoEXIF, CVLEXIF::errNoEXIF}},
    {"JpegApp0Then100000FillBytes", ".jpg", [] { return FillBytes(Cat({Bytes{0xFF, 0xD8}, App0()})); },
     {CIPTC::kNoIPTCBlock, CIPTC::kSuccess, CVLEXIF::errNoEXIF, CVLEXIF::errNoEXIF}},
    {"JpegOf100000FillBytesWithoutSoi", ".jpg", [] { return FillBytes({}); },
     {CIPTC::kUnsupportedFormat, CIPTC::kUnsupportedFormat, CVLEXIF::errFormat, CVLEXIF::errFormat}},
    {"PsdSizesNear4G", ".psd", PsdSizesNear4G,
     {CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat, CVLEXIF::errNoEXIF, CVLEXIF::errNoEXIF}},
};
// clang-format on

class HostileSizes : public ::testing::TestWithParam<HostileCase> {
protected:
    void SetUp() override { ASSERT_EQ(m_store.Initialize("resources/", m_dir.Path()), CIPTC::kSuccess); }

    // Runs one operation on a fresh file and checks what it left; returns its result code.
    int Check(const char* operation, const std::function<int(const char*)>& op, bool writes) {
        const HostileCase& c = GetParam();
        const HostileFile file = c.make();
        const std::string folder = m_dir.Path() + operation + "/";
        fs::create_directory(folder);
        const std::string path = folder + c.name + c.extension;
        Create(path, file);
        if (IsSkipped() || HasFatalFailure()) return -1;
        const Snapshot before = Take(path, file);

        const ChildRun run = Guarded([&] { return op(path.c_str()); });
        std::printf("%-40s %-12s result %3d  %8.3f s\n", c.name, operation, run.code, run.seconds);
        EXPECT_NE(run.signal, SIGALRM) << operation << " did not end within " << kWatchdogSeconds << " s";
        EXPECT_EQ(run.signal, 0) << operation << " ended with signal " << run.signal;

        EXPECT_EQ(Listing(folder), std::set<std::string>{fs::path(path).filename().string()})
            << operation << " left files behind";
        if (writes && run.code == CIPTC::kSuccess) {
            CIPTC::SIPTCFormatInfo format;
            std::vector<CVLProperty> caption;
            EXPECT_EQ(m_store.ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess) << "the written file";
            EXPECT_TRUE(m_store.GetField(120, caption) && caption.size() == 1 &&
                        caption[0].String() == kWrittenCaption)
                << "the written file's caption";
        } else {
            EXPECT_TRUE(Take(path, file) == before) << operation << " changed the file";
        }
        fs::remove_all(folder);
        return run.code;
    }

    TempDir m_dir;
    CIPTC m_store;
};

TEST_P(HostileSizes, EveryOperationEndsWithItsResult) {
    const Expected& expected = GetParam().expected;
    const int read = Check(
        "read",
        [this](const char* path) {
            CIPTC::SIPTCFormatInfo format;
            return static_cast<int>(m_store.ReadIPTCBlob(path, format));
        },
        false);
    if (IsSkipped()) return;
    EXPECT_EQ(read, expected.read) << "ReadIPTCBlob";

    const int write = Check(
        "write",
        [this](const char* path) {
            CIPTC::SIPTCFormatInfo format;
            if (m_store.ReadIPTCBlob(path, format) != CIPTC::kSuccess)
                format = m_store.GetFormatFromFileExt(path);
            m_store.SetField(120, CVLProperty(std::string(kWrittenCaption)), true);
            return static_cast<int>(m_store.WriteIPTCBlob(path, format));
        },
        true);
    EXPECT_EQ(write, expected.write) << "WriteIPTCBlob";

    const int load = Check(
        "exif-load", [](const char* path) { return static_cast<int>(CVLEXIF().LoadFile(path)); }, false);
    EXPECT_EQ(load, expected.load) << "CVLEXIF::LoadFile";

    // The dates are written back only where the file has them, and these
    // files have none (or one the catalogue holds unchanged).
    const int store = Check(
        "exif-store",
        [](const char* path) {
            CVLEXIF exif;
            static_cast<void>(exif.LoadFile(path));
            return static_cast<int>(exif.StoreFile(path));
        },
        false);
    EXPECT_EQ(store, expected.store) << "CVLEXIF::StoreFile";
}

INSTANTIATE_TEST_SUITE_P(Files, HostileSizes, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<HostileCase>& info) { return info.param.name; });

}  // namespace
}  // namespace vliptc::test
