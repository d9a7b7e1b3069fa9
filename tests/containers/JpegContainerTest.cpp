// The JPEG reader and writer on crafted files: where the reader looks, the
// exact bytes the writer produces, and the files it refuses.

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "tests/containers/ContainerSupport.h"

namespace vliptc::test {
namespace {

using iptc::LocateInJPEG;
using iptc::WriteJPEG;

const Bytes kOldIim = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(120, "old caption")});
const Bytes kBlock = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(25, "new"), Bytes{0}});

Bytes App13(std::string_view identifier, const Bytes& resources) {
    return Segment(0xED, Cat({ToBytes(identifier), resources}));
}

TEST(JpegLocate, FindsPhotoshopSegmentsUpToTheScan) {
    const Bytes resources = Resource(0x0404, kOldIim);
    Bytes truncated = Jpeg({App0(), Photoshop(resources)});
    truncated.resize(30);
    Bytes afterScan = Jpeg({App0()});
    const Bytes late = Photoshop(resources);
    afterScan.insert(afterScan.end() - 2, late.begin(), late.end());
    const struct {
        const char* name;
        Bytes file;
        CIPTC::EError error;
        std::size_t candidates;
    } cases[] = {
        {"not a JPEG", ToBytes("GIF89a........"), CIPTC::kUnsupportedFormat, 0},
        {"no APP13", Jpeg({App0(), Dqt()}), CIPTC::kNoIPTCBlock, 0},
        {"Photoshop APP13", Jpeg({App0(), Photoshop(resources)}), CIPTC::kSuccess, 1},
        {"identifier in other case", Jpeg({App13(std::string_view("PHOTOSHOP 3.0\0", 14), resources)}),
         CIPTC::kSuccess, 1},
        {"identifier naming Adobe", Jpeg({App13(std::string_view("Adobe_CM\0", 9), resources)}),
         CIPTC::kSuccess, 1},
        {"misspelt identifier", Jpeg({App13(std::string_view("Photoshp 3.0\0", 13), resources)}),
         CIPTC::kNoIPTCBlock, 0},
        {"identifier without terminator", Jpeg({App13("Photoshop 3.0", {})}), CIPTC::kNoIPTCBlock, 0},
        {"two segments", Jpeg({Photoshop(resources), App1(), Photoshop(resources)}), CIPTC::kSuccess, 2},
        {"APP13 behind the scan", afterScan, CIPTC::kNoIPTCBlock, 0},
        {"length past the end", truncated, CIPTC::kUnsupportedFormat, 0},
        {"cut off behind the APP13",
         Cat({Bytes{0xFF, 0xD8}, Photoshop(resources), Bytes{0xFF, 0xE1, 0x40, 0x00, 1, 2}}), CIPTC::kSuccess,
         1},
        {"junk between segments", Jpeg({App0(), Bytes{0x00, 0x13, 0x37}, Photoshop(resources)}),
         CIPTC::kSuccess, 1},
        {"fill bytes before a marker", Cat({Bytes{0xFF, 0xD8, 0xFF, 0xFF}, Photoshop(resources)}),
         CIPTC::kSuccess, 1},
        {"bare start of image", Bytes{0xFF, 0xD8}, CIPTC::kNoIPTCBlock, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto result = LocateInJPEG(c.file);
        EXPECT_EQ(result.error, c.error);
        EXPECT_EQ(result.candidates.size(), c.candidates);
        for (const auto& location : result.candidates) {
            EXPECT_LE(location.offset + location.size, c.file.size());
            EXPECT_EQ(location.kind, iptc::BlockLocation::Kind::kImageResources);
        }
    }
}

class JpegWriter : public ContainerTest {
protected:
    // Writes block into a file holding original; returns the result and
    // leaves the new bytes in m_written.
    CIPTC::EError Write(const Bytes& original, const Bytes& block = kBlock) {
        const std::string path = File("image.jpg");
        WriteBytes(path, original);
        const CIPTC::EError result = WriteJPEG(path, block);
        m_written = ReadBytes(path);
        return result;
    }
    Bytes m_written;
};

// Where the new resource 0x0404 (empty name, the block, a pad byte for an
// odd size) goes, byte for byte.
TEST_F(JpegWriter, PutsTheResourceWhereTheReaderMeetsItFirst) {
    const Bytes resolution = Resource(0x03ED, Bytes(16, 0xAB), "resolution");
    const Bytes digest = Resource(0x0425, Bytes(16, 0xCD));
    const Bytes others = Cat({Resource(0x03ED, Bytes(16, 1)), Resource(0x0425, Bytes(16, 2))});
    const Bytes stop = Resource(0x0425, Bytes{});  // size 0: the reader's walk ends here
    const Bytes hidden = Resource(0x0404, kOldIim);
    const Bytes cm = App13(std::string_view("Adobe_CM\0\x01\x02\x03", 12), {});
    Bytes unpadded = Resource(0x0404, Bytes{1, 2, 3});
    unpadded.pop_back();
    const Bytes oddBlock = Cat({kBlock, Bytes{7}});
    const Bytes ours = Resource(0x0404, kBlock);
    ASSERT_EQ(kOldIim.size() % 2, 1u);
    ASSERT_EQ(Photoshop(ours).size(), 30 + kBlock.size());  // length field 28 + block
    const struct {
        const char* name;
        Bytes original;
        Bytes expected;
        Bytes block = kBlock;
    } cases[] = {
        // No APP13 of ours: a new segment directly behind the first segment.
        {"new segment behind the first", Jpeg({App0(), App1(), Dqt()}),
         Jpeg({App0(), Photoshop(ours), App1(), Dqt()})},
        {"odd block gets its pad byte", Jpeg({App0()}), Jpeg({App0(), Photoshop(Resource(0x0404, oddBlock))}),
         oddBlock},
        // The old resource (with a name, an odd size and its pad byte) is replaced where it is.
        {"every other resource kept",
         Jpeg({App0(), Photoshop(Cat({resolution, Resource(0x0404, kOldIim, "Caption"), digest})), App1()}),
         Jpeg({App0(), Photoshop(Cat({resolution, ours, digest})), App1()})},
        {"empty IPTC resource", Jpeg({App0(), Photoshop(Resource(0x0404, Bytes{}))}),
         Jpeg({App0(), Photoshop(ours)})},
        {"missing pad byte ends at the segment", Jpeg({App0(), Photoshop(unpadded)}),
         Jpeg({App0(), Photoshop(ours)})},
        // A segment without an IPTC resource the reader reaches gets it behind the identifier.
        {"segment without IPTC", Jpeg({App1(), Photoshop(others)}),
         Jpeg({App1(), Photoshop(Cat({ours, others}))})},
        {"IPTC behind an end of the walk", Jpeg({App0(), Photoshop(Cat({stop, hidden}))}),
         Jpeg({App0(), Photoshop(Cat({ours, stop, hidden}))})},
        // The reader decodes any APP13 naming Adobe: its resource is replaced
        // there, identifier unchanged; an "Adobe_CM" segment holds no
        // resources and gets a new segment behind it.
        {"segment named after Adobe", Jpeg({App13(std::string_view("PhAdobeop 3.0\0", 14), hidden)}),
         Jpeg({App13(std::string_view("PhAdobeop 3.0\0", 14), ours)})},
        {"Adobe_CM segment", Jpeg({cm}), Jpeg({cm, Photoshop(ours)})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(Write(c.original, c.block), CIPTC::kSuccess);
        EXPECT_EQ(m_written, c.expected);
        // Writing again replaces the resource just written: the file stays as it is.
        const Bytes first = m_written;
        ASSERT_EQ(Write(first, c.block), CIPTC::kSuccess);
        EXPECT_EQ(m_written, first);
    }
}

TEST_F(JpegWriter, RefusedFilesStayAsTheyWere) {
    Bytes overlong = Resource(0x0404, kOldIim);
    overlong[11] = 0x7F;  // data size far beyond the segment
    const Bytes big = Resource(0x0425, Bytes(65000, 3));
    const struct {
        const char* name;
        Bytes file;
        Bytes block;
        CIPTC::EError expected;
    } cases[] = {
        {"comment behind SOI", Jpeg({Segment(0xFE, ToBytes("hi")), App0()}), kBlock,
         CIPTC::kUnsupportedFormat},
        {"fill byte behind SOI", Cat({Bytes{0xFF, 0xD8, 0xFF}, App0()}), kBlock, CIPTC::kUnsupportedFormat},
        {"IPTC resource past its segment", Jpeg({App0(), Photoshop(overlong)}), kBlock,
         CIPTC::kUnsupportedFormat},
        {"segment length cut off", Cat({Bytes{0xFF, 0xD8}, App0(), Bytes{0xFF, 0xE1, 0x10}}), kBlock,
         CIPTC::kUnsupportedFormat},
        {"segment would pass 65,535 bytes", Jpeg({App0(), Photoshop(big)}), Bytes(600, 0x20),
         CIPTC::kBlockTooLarge},
        {"block over 65,536 bytes", Jpeg({App0()}), Bytes(65538, 0), CIPTC::kBlockTooLarge},
        {"new segment would pass 65,535 bytes", Jpeg({App0()}), Bytes(65510, 0), CIPTC::kBlockTooLarge},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Write(c.file, c.block), c.expected);
        EXPECT_EQ(m_written, c.file);
        EXPECT_EQ(Listing(m_dir.Path()), std::set<std::string>{"image.jpg"});
    }
}

// The reader reads the first bytes of a JPEG in steps and maps the file only
// when the segments before the scan run past them; the answer must not
// depend on where the segments end.
TEST_F(ContainerTest, JpegReadDoesNotDependOnHowFarTheSegmentsReach) {
    const Bytes record = Photoshop(Resource(0x0404, kOldIim));
    const Bytes image(300 * 1024, 0x5A);  // behind the scan marker
    struct Case {
        const char* name;
        std::size_t padding;  // bytes of APP2 segments before the APP13
        std::size_t cutAt;    // the file ends here, inside the padding (0: not cut)
        CIPTC::EError expected;
    };
    const Case cases[] = {
        {"within the first step", 0, 0, CIPTC::kSuccess},
        {"across the first step", 4 * 1024 - 40, 0, CIPTC::kSuccess},
        {"within the second step", 20 * 1024, 0, CIPTC::kSuccess},
        {"within the last step", 100 * 1024, 0, CIPTC::kSuccess},
        {"past every step", 200 * 1024, 0, CIPTC::kSuccess},
        {"cut off within a step", 60 * 1024, 30 * 1024, CIPTC::kUnsupportedFormat},
        {"cut off past every step", 200 * 1024, 150 * 1024, CIPTC::kUnsupportedFormat},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes padding;
        for (std::size_t left = c.padding; left > 0;) {
            const std::size_t n = std::min<std::size_t>(left, 60000);
            const Bytes segment = Segment(0xE2, Bytes(n, 0x11));
            padding.insert(padding.end(), segment.begin(), segment.end());
            left -= n;
        }
        Bytes file = Jpeg({App0(), padding, record});
        file.insert(file.end() - 2, image.begin(), image.end());
        if (c.cutAt != 0) file.resize(c.cutAt);
        WriteBytes(File("photo.jpg"), file);
        CIPTC::SIPTCFormatInfo format;
        EXPECT_EQ(m_store.ReadIPTCBlob(File("photo.jpg").c_str(), format), c.expected);
        EXPECT_EQ(LocateInJPEG(file).error, c.expected);
        if (c.expected == CIPTC::kSuccess) {
            EXPECT_EQ(Values(120), std::vector<std::string>{"old caption"});
        }
    }
}

}  // namespace
}  // namespace vliptc::test
