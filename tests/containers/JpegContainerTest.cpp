// The JPEG reader and writer on crafted files: where the reader looks, the
// exact bytes the writer produces, and the files it refuses.

#include <gtest/gtest.h>

#include <algorithm>

#include "iptc/internal/Containers.h"
#include "tests/containers/ContainerSupport.h"

namespace vliptc::test {
namespace {

using iptc::LocateInJPEG;
using iptc::WriteJPEG;

const Bytes kOldIim = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(120, "old caption")});
const Bytes kBlock = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(25, "new"), Bytes{0}});

Bytes Dqt() {
    return Segment(0xDB, Bytes(65, 1));
}

struct LocateCase {
    const char* name;
    Bytes file;
    CIPTC::EError error;
    std::size_t candidates;
};

TEST(JpegLocate, FindsPhotoshopSegmentsUpToTheScan) {
    const Bytes resources = Resource(0x0404, kOldIim);
    Bytes truncated = Jpeg({App0(), Photoshop(resources)});
    truncated.resize(30);
    Bytes cutAfter = Cat({Bytes{0xFF, 0xD8}, Photoshop(resources), Bytes{0xFF, 0xE1, 0x40, 0x00, 1, 2}});
    Bytes afterScan = Jpeg({App0()});
    const Bytes late = Photoshop(resources);
    afterScan.insert(afterScan.end() - 2, late.begin(), late.end());
    Bytes junk = Jpeg({App0(), Bytes{0x00, 0x13, 0x37}, Photoshop(resources)});
    const std::vector<LocateCase> cases = {
        {"not a JPEG", ToBytes("GIF89a........"), CIPTC::kUnsupportedFormat, 0},
        {"no APP13", Jpeg({App0(), Dqt()}), CIPTC::kNoIPTCBlock, 0},
        {"Photoshop APP13", Jpeg({App0(), Photoshop(resources)}), CIPTC::kSuccess, 1},
        {"identifier in other case", Jpeg({Segment(0xED, Cat({ToBytes(std::string_view("PHOTOSHOP 3.0\0", 14)), resources}))}),
         CIPTC::kSuccess, 1},
        {"identifier naming Adobe", Jpeg({Segment(0xED, Cat({ToBytes(std::string_view("Adobe_CM\0", 9)), resources}))}),
         CIPTC::kSuccess, 1},
        {"misspelt identifier", Jpeg({Segment(0xED, Cat({ToBytes(std::string_view("Photoshp 3.0\0", 13)), resources}))}),
         CIPTC::kNoIPTCBlock, 0},
        {"identifier without terminator", Jpeg({Segment(0xED, ToBytes("Photoshop 3.0"))}), CIPTC::kNoIPTCBlock, 0},
        {"two segments", Jpeg({Photoshop(resources), App1(), Photoshop(resources)}), CIPTC::kSuccess, 2},
        {"APP13 behind the scan", afterScan, CIPTC::kNoIPTCBlock, 0},
        {"length past the end", truncated, CIPTC::kUnsupportedFormat, 0},
        {"cut off behind the APP13", cutAfter, CIPTC::kSuccess, 1},
        {"junk between segments", junk, CIPTC::kSuccess, 1},
        {"fill bytes before a marker", Cat({Bytes{0xFF, 0xD8, 0xFF, 0xFF}, Photoshop(resources)}), CIPTC::kSuccess, 1},
        {"bare start of image", Bytes{0xFF, 0xD8}, CIPTC::kNoIPTCBlock, 0},
    };
    for (const LocateCase& c : cases) {
        const auto result = LocateInJPEG(c.file);
        EXPECT_EQ(result.error, c.error) << c.name;
        EXPECT_EQ(result.candidates.size(), c.candidates) << c.name;
        for (const auto& location : result.candidates) {
            EXPECT_LE(location.offset + location.size, c.file.size()) << c.name;
            EXPECT_EQ(location.kind, iptc::BlockLocation::Kind::kImageResources) << c.name;
        }
    }
}

class JpegWriter : public ContainerTest {
protected:
    // Writes kBlock into a file holding original; returns the result and
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

Bytes NewIptcResource(const Bytes& block) {
    return Resource(0x0404, block);
}

TEST_F(JpegWriter, NewSegmentGoesBehindTheFirstSegment) {
    const Bytes original = Jpeg({App0(), App1(), Dqt()});
    ASSERT_EQ(Write(original), CIPTC::kSuccess);
    const Bytes app13 = Photoshop(NewIptcResource(kBlock));
    ASSERT_EQ(app13.size(), 30 + kBlock.size());  // length field 28 + block
    const Bytes expected = Cat({Bytes{0xFF, 0xD8}, App0(), app13, App1(), Dqt(),
                                Bytes(original.end() - 11, original.end())});
    EXPECT_EQ(m_written, expected);
}

TEST_F(JpegWriter, RewriteKeepsEveryOtherResourceInItsPlace) {
    const Bytes before = Resource(0x03ED, Bytes(16, 0xAB), "resolution");
    const Bytes after = Resource(0x0425, Bytes(16, 0xCD));
    // The old IPTC resource has a name and an odd size with its pad byte.
    const Bytes oldIptc = Resource(0x0404, kOldIim, "Caption");
    ASSERT_EQ(kOldIim.size() % 2, 1u);
    const Bytes original = Jpeg({App0(), Photoshop(Cat({before, oldIptc, after})), App1()});
    ASSERT_EQ(Write(original), CIPTC::kSuccess);
    const Bytes expected = Jpeg({App0(), Photoshop(Cat({before, NewIptcResource(kBlock), after})), App1()});
    EXPECT_EQ(m_written, expected);
    StrictSegments(m_written);
}

TEST_F(JpegWriter, SegmentWithoutIptcGetsItBehindTheIdentifier) {
    const Bytes others = Cat({Resource(0x03ED, Bytes(16, 1)), Resource(0x0425, Bytes(16, 2))});
    const Bytes original = Jpeg({App1(), Photoshop(others)});
    ASSERT_EQ(Write(original), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({App1(), Photoshop(Cat({NewIptcResource(kBlock), others}))}));
    // Old length plus the 12 header bytes and the block.
    const auto segments = StrictSegments(m_written);
    ASSERT_EQ(segments.size(), 2u);
    EXPECT_EQ(segments[1].payload.size() + 2, 2 + 14 + others.size() + 12 + kBlock.size());
}

TEST_F(JpegWriter, IptcBehindAnEndMarkerIsNotReplaced) {
    // The reader's walk ends at a resource of size 0; an IPTC resource behind
    // it is never read, so the new one goes in front where it is.
    const Bytes stop = Resource(0x0425, Bytes{});
    const Bytes hidden = Resource(0x0404, kOldIim);
    ASSERT_EQ(Write(Jpeg({App0(), Photoshop(Cat({stop, hidden}))})), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({App0(), Photoshop(Cat({NewIptcResource(kBlock), stop, hidden}))}));
}

TEST_F(JpegWriter, SegmentTheReaderTakesForAdobesIsRewrittenWhereItIs) {
    // The reader decodes any APP13 whose identifier names Adobe; the writer
    // must replace the IPTC resource there, or the old one would still be
    // read first. Its identifier stays as it was.
    const Bytes identifier = ToBytes(std::string_view("PhAdobeop 3.0\0", 14));
    const Bytes original = Jpeg({Segment(0xED, Cat({identifier, Resource(0x0404, kOldIim)}))});
    ASSERT_EQ(Write(original), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({Segment(0xED, Cat({identifier, NewIptcResource(kBlock)}))}));
    // An "Adobe_CM" segment holds no resources: a new segment goes behind it.
    const Bytes cm = Segment(0xED, ToBytes(std::string_view("Adobe_CM\0\x01\x02\x03", 12)));
    ASSERT_EQ(Write(Jpeg({cm})), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({cm, Photoshop(NewIptcResource(kBlock))}));
}

TEST_F(JpegWriter, EmptyIptcResourceAndMissingPadByte) {
    // Size 0 is replaced like any other; an odd-sized last resource whose pad
    // byte is missing ends at the segment.
    ASSERT_EQ(Write(Jpeg({App0(), Photoshop(Resource(0x0404, Bytes{}))})), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({App0(), Photoshop(NewIptcResource(kBlock))}));

    Bytes unpadded = Resource(0x0404, Bytes{1, 2, 3});
    unpadded.pop_back();
    ASSERT_EQ(Write(Jpeg({App0(), Photoshop(unpadded)})), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({App0(), Photoshop(NewIptcResource(kBlock))}));

    const Bytes oddBlock = Cat({kBlock, Bytes{7}});
    ASSERT_EQ(Write(Jpeg({App0()}), oddBlock), CIPTC::kSuccess);
    EXPECT_EQ(m_written, Jpeg({App0(), Photoshop(NewIptcResource(oddBlock))}));
    StrictSegments(m_written);
}

TEST_F(JpegWriter, RefusedFilesStayAsTheyWere) {
    Bytes overlong = Resource(0x0404, kOldIim);
    overlong[11] = 0x7F;  // data size far beyond the segment
    const Bytes big = Resource(0x0425, Bytes(65000, 3));
    const Bytes bigBlock(600, 0x20);
    struct Case {
        const char* name;
        Bytes file;
        Bytes block;
        CIPTC::EError expected;
    };
    const std::vector<Case> cases = {
        {"quantisation table behind SOI", Jpeg({Dqt(), App0()}), kBlock, CIPTC::kUnsupportedFormat},
        {"comment behind SOI", Jpeg({Segment(0xFE, ToBytes("hi")), App0()}), kBlock, CIPTC::kUnsupportedFormat},
        {"fill byte behind SOI", Cat({Bytes{0xFF, 0xD8, 0xFF}, App0()}), kBlock, CIPTC::kUnsupportedFormat},
        {"not a JPEG", ToBytes("not a jpeg at all"), kBlock, CIPTC::kUnsupportedFormat},
        {"IPTC resource past its segment", Jpeg({App0(), Photoshop(overlong)}), kBlock, CIPTC::kUnsupportedFormat},
        {"segment length cut off", Cat({Bytes{0xFF, 0xD8}, App0(), Bytes{0xFF, 0xE1, 0x10}}), kBlock,
         CIPTC::kUnsupportedFormat},
        {"segment would pass 65,535 bytes", Jpeg({App0(), Photoshop(big)}), bigBlock, CIPTC::kBlockTooLarge},
        {"block over 65,536 bytes", Jpeg({App0()}), Bytes(65538, 0), CIPTC::kBlockTooLarge},
        {"new segment would pass 65,535 bytes", Jpeg({App0()}), Bytes(65510, 0), CIPTC::kBlockTooLarge},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Write(c.file, c.block), c.expected) << c.name;
        EXPECT_EQ(m_written, c.file) << c.name;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_dir.Path()), {}), 2) << c.name;  // defs + image
    }
}

TEST_F(ContainerTest, RoundTripThroughTheStoreAndWritingTwice) {
    const std::string path = File("photo.jpg");
    const Bytes others = Resource(0x03ED, Bytes(16, 9));
    WriteBytes(path, Jpeg({App0(), App1(), Photoshop(Cat({others, Resource(0x0404, kOldIim)}))}));

    CIPTC::SIPTCFormatInfo format;
    ASSERT_EQ(m_store.ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
    EXPECT_EQ(format.nFormat, CIPTC::kFormatJPEG);
    EXPECT_TRUE(format.bBigEndian);
    EXPECT_EQ(Values(120), std::vector<std::string>{"old caption"});

    m_store.SetField(120, CVLProperty(std::string("one\ntwo")), true);
    m_store.SetField(25, CVLProperty(std::string("alpha")), false);
    m_store.SetField(25, CVLProperty(std::string("beta")), false);
    m_store.SetField(240, CVLProperty(std::string("unnamed")), true);
    for (int pass = 0; pass < 2; ++pass) {
        ASSERT_EQ(m_store.WriteIPTCBlob(path.c_str(), format), CIPTC::kSuccess) << pass;
        ASSERT_EQ(m_store.ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess) << pass;
        EXPECT_EQ(Values(120), std::vector<std::string>{"one\r\ntwo"});
        EXPECT_EQ(Values(25), (std::vector<std::string>{"alpha", "beta"}));
        EXPECT_EQ(Values(240), std::vector<std::string>{"unnamed"});
    }
    const Bytes written = ReadBytes(path);
    int app13 = 0;
    int iptc = 0;
    for (const auto& segment : StrictSegments(written)) {
        if (segment.marker != 0xED) continue;
        ++app13;
        for (const auto& resource : Resources(segment.payload)) iptc += resource.id == 0x0404 ? 1 : 0;
    }
    EXPECT_EQ(app13, 1);
    EXPECT_EQ(iptc, 1);
    EXPECT_FALSE(std::filesystem::exists(path + ".000"));  // the backup is gone
}

TEST_F(ContainerTest, FileWithoutApplicationSegmentReadsAsEmptyButIsNotWritten) {
    const std::string path = File("bare.jpg");
    const Bytes original = Jpeg({Dqt()});
    WriteBytes(path, original);
    CIPTC::SIPTCFormatInfo format;
    EXPECT_EQ(m_store.ReadIPTCBlob(path.c_str(), format), CIPTC::kNoIPTCBlock);
    EXPECT_EQ(format.nFormat, CIPTC::kFormatJPEG);
    EXPECT_EQ(m_store.WriteIPTCBlob(path.c_str(), format), CIPTC::kUnsupportedFormat);
    EXPECT_EQ(ReadBytes(path), original);
}

}  // namespace
}  // namespace vliptc::test
