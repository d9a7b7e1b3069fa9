// The trailer form: chunks stacked at the end of a file, walked back from the
// end. Reader and writer must agree on both chunk layouts (the cataloguers'
// one and the one the writer appends).

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "tests/containers/ContainerSupport.h"

namespace vliptc::test {
namespace {

using iptc::LocateInTrailer;
using iptc::WriteTrailer;

const Bytes kImage = Jpeg({Segment(0xDB, Bytes(65, 1))});
const Bytes kIim = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(120, "trailer caption")});

struct LocateCase {
    const char* name;
    Bytes file;
    CIPTC::EError error;
    iptc::BlockLocation::Kind kind;
    Bytes data;  // what the candidate must start with
};

TEST(TrailerLocate, WalksChunksBackFromTheEnd) {
    const Bytes other = TrailerChunk(2, Bytes(48, 7));
    Bytes badMagic = Cat({kImage, TrailerChunk(1, kIim), other});
    badMagic[badMagic.size() - 60] ^= 0xFF;  // the magic of the kind-1 trailer
    Bytes tooLong = Cat({kImage, TrailerChunk(1, kIim)});
    tooLong[tooLong.size() - 7] = 0x7F;  // a length far beyond the file
    const Bytes resources = Resource(0x0404, kIim);
    using Kind = iptc::BlockLocation::Kind;
    const std::vector<LocateCase> cases = {
        {"bare IIM, kind 2 behind it", Cat({kImage, TrailerChunk(1, kIim), other}), CIPTC::kSuccess, Kind::kIIM, kIim},
        {"image resources", Cat({kImage, TrailerChunk(1, resources)}), CIPTC::kSuccess, Kind::kImageResources,
         resources},
        {"no magic at the end", kImage, CIPTC::kUnsupportedFormat, Kind::kIIM, {}},
        {"ten bytes", Bytes{0, 1, 0, 0, 0, 10, 0xA1, 0xB2, 0xC3, 0xD4}, CIPTC::kUnsupportedFormat, Kind::kIIM, {}},
        {"no kind-1 chunk", Cat({kImage, other}), CIPTC::kNoIPTCBlock, Kind::kIIM, {}},
        {"no magic further back: the stack ends", badMagic, CIPTC::kNoIPTCBlock, Kind::kIIM, {}},
        {"length past the start", tooLong, CIPTC::kNoIPTCBlock, Kind::kIIM, {}},
        {"zero trailer without header", Cat({kImage, Bytes(6, 0), Bytes{0xA1, 0xB2, 0xC3, 0xD4}}),
         CIPTC::kUnsupportedFormat, Kind::kIIM, {}},
    };
    for (const LocateCase& c : cases) {
        const auto result = LocateInTrailer(c.file);
        EXPECT_EQ(result.error, c.error) << c.name;
        EXPECT_FALSE(result.bigEndian) << c.name;
        if (c.error != CIPTC::kSuccess) continue;
        ASSERT_EQ(result.candidates.size(), 1u) << c.name;
        const auto& location = result.candidates.front();
        EXPECT_EQ(location.kind, c.kind) << c.name;
        ASSERT_LE(location.offset + location.size, c.file.size()) << c.name;
        EXPECT_EQ(Bytes(c.file.begin() + static_cast<long>(location.offset),
                        c.file.begin() + static_cast<long>(location.offset + c.data.size())),
                  c.data)
            << c.name;
    }
}

Bytes Block(std::size_t size, std::uint8_t fill) {
    Bytes block = Dataset(120, std::string(size - 5, static_cast<char>(fill)));
    return block;
}

class TrailerWriter : public ContainerTest {
protected:
    std::string m_path = File("catalogued.jpg");

    Bytes DataOfIptcChunk() {
        const Bytes file = ReadBytes(m_path);
        const auto located = LocateInTrailer(file);
        EXPECT_EQ(located.error, CIPTC::kSuccess);
        if (located.candidates.empty()) return {};
        const auto& c = located.candidates.front();
        return Bytes(file.begin() + static_cast<long>(c.offset), file.begin() + static_cast<long>(c.offset + c.size));
    }
};

TEST_F(TrailerWriter, BlockThatFitsIsWrittenInPlace) {
    const Bytes other = TrailerChunk(2, Bytes(48, 7));
    const Bytes original = Cat({kImage, TrailerChunk(1, Bytes(400, 0x55)), other});
    WriteBytes(m_path, original);
    const Bytes block = Block(100, 'a');
    ASSERT_EQ(WriteTrailer(m_path, block), CIPTC::kSuccess);
    Bytes expectedData = block;
    expectedData.resize(400, 0);
    EXPECT_EQ(ReadBytes(m_path), Cat({kImage, TrailerChunk(1, expectedData), other}));
}

TEST_F(TrailerWriter, LargerBlockMovesTheChunksBehind) {
    const Bytes other = TrailerChunk(2, Bytes(48, 7));
    WriteBytes(m_path, Cat({kImage, TrailerChunk(1, Bytes(40, 0x55)), other}));
    const Bytes block = Block(300, 'b');
    ASSERT_EQ(WriteTrailer(m_path, block), CIPTC::kSuccess);
    Bytes expectedData = block;
    expectedData.resize(300 + 512, 0);  // the block and the reserve
    EXPECT_EQ(ReadBytes(m_path), Cat({kImage, TrailerChunk(1, expectedData), other}));
}

TEST_F(TrailerWriter, AppendedChunkIsFoundAndRewrittenByBothSides) {
    WriteBytes(m_path, kImage);
    const Bytes first = Block(200, 'c');
    ASSERT_EQ(WriteTrailer(m_path, first), CIPTC::kSuccess);
    Bytes expected = kImage;
    Put16(expected, 1);
    Put32(expected, static_cast<std::uint32_t>(first.size() + 522));
    Put32(expected, 0xA1B2C3D4);
    expected.insert(expected.end(), first.begin(), first.end());
    expected.resize(expected.size() + 512, 0);
    Put32(expected, 0xA1B2C3D4);
    ASSERT_EQ(ReadBytes(m_path), expected);
    const Bytes data = DataOfIptcChunk();
    ASSERT_GE(data.size(), first.size());
    EXPECT_EQ(Bytes(data.begin(), data.begin() + 200), first);

    // Smaller and slightly larger blocks fit the reserve; much larger ones grow
    // the chunk. Every state reads back, and the image stays in front.
    for (const std::size_t size : {60u, 700u, 4000u, 100u}) {
        const Bytes block = Block(size, static_cast<std::uint8_t>('d' + size % 7));
        ASSERT_EQ(WriteTrailer(m_path, block), CIPTC::kSuccess) << size;
        const Bytes data = DataOfIptcChunk();
        ASSERT_GE(data.size(), size);
        EXPECT_EQ(Bytes(data.begin(), data.begin() + static_cast<long>(size)), block) << size;
        EXPECT_TRUE(std::all_of(data.begin() + static_cast<long>(size), data.end(), [](auto b) { return b == 0; }));
        const Bytes file = ReadBytes(m_path);
        EXPECT_EQ(Bytes(file.begin(), file.begin() + static_cast<long>(kImage.size())), kImage);
    }
}

TEST_F(TrailerWriter, RefusalsAndTheirCodes) {
    struct Case {
        const char* name;
        Bytes file;
        CIPTC::EError expected;
    };
    Bytes badMagic = Cat({kImage, TrailerChunk(1, kIim), TrailerChunk(2, Bytes(8, 0))});
    badMagic[badMagic.size() - 20] ^= 0xFF;  // the magic of the kind-1 trailer
    Bytes tooLong = Cat({kImage, TrailerChunk(1, kIim)});
    tooLong[tooLong.size() - 7] = 0x7F;
    const std::vector<Case> cases = {
        {"no kind-1 chunk: the walk meets the image", Cat({kImage, TrailerChunk(2, Bytes(8, 0))}),
         CIPTC::kUnsupportedFormat},
        {"no kind-1 chunk, nothing in front", TrailerChunk(2, Bytes(8, 0)), CIPTC::kNoIPTCBlock},
        {"bad magic further back", badMagic, CIPTC::kUnsupportedFormat},
        {"length past the start", tooLong, CIPTC::kUnsupportedFormat},
        {"empty", Bytes{}, CIPTC::kEmptyFile},
    };
    for (const Case& c : cases) {
        WriteBytes(m_path, c.file);
        EXPECT_EQ(WriteTrailer(m_path, kIim), c.expected) << c.name;
        EXPECT_EQ(ReadBytes(m_path), c.file) << c.name;
    }
    EXPECT_EQ(WriteTrailer(File("missing.jpg"), kIim), CIPTC::kCannotOpen);
    EXPECT_EQ(WriteTrailer(m_path, Bytes(65538, 0)), CIPTC::kBlockTooLarge);
}

TEST_F(TrailerWriter, FailedGrowthLeavesTheFileAsItWas) {
    const Bytes original = Cat({kImage, TrailerChunk(1, Bytes(40, 0x55)), TrailerChunk(2, Bytes(8, 0))});
    WriteBytes(m_path, original);
    platform::fault::FailNth(platform::fault::Step::Resize, 1);
    EXPECT_EQ(WriteTrailer(m_path, Block(300, 'e')), CIPTC::kCannotMapOrWrite);
    EXPECT_EQ(ReadBytes(m_path), original);
}

TEST_F(TrailerWriter, StoreWritesTheTrailerOfACataloguedJpeg) {
    // The trailer is written first for format 3; the JPEG writer then refuses
    // the file (no application segment behind SOI) and the write stands.
    WriteBytes(m_path, Cat({kImage, TrailerChunk(1, kIim)}));
    CIPTC::SIPTCFormatInfo format;
    ASSERT_EQ(m_store.ReadIPTCBlob(m_path.c_str(), format), CIPTC::kSuccess);
    EXPECT_EQ(format.nFormat, CIPTC::kFormatTrailer);
    EXPECT_FALSE(format.bBigEndian);
    EXPECT_EQ(Values(120), std::vector<std::string>{"trailer caption"});
    m_store.SetField(25, CVLProperty(std::string("kw")), false);
    ASSERT_EQ(m_store.WriteIPTCBlob(m_path.c_str(), format), CIPTC::kSuccess);
    ASSERT_EQ(m_store.ReadIPTCBlob(m_path.c_str(), format), CIPTC::kSuccess);
    EXPECT_EQ(format.nFormat, CIPTC::kFormatTrailer);
    EXPECT_EQ(Values(25), std::vector<std::string>{"kw"});
    EXPECT_EQ(Values(120), std::vector<std::string>{"trailer caption"});

    // With an APP0 the JPEG writer adds an APP13 too: both places agree.
    const std::string both = File("both.jpg");
    WriteBytes(both, Cat({Jpeg({App0()}), TrailerChunk(1, kIim)}));
    ASSERT_EQ(m_store.ReadIPTCBlob(both.c_str(), format), CIPTC::kSuccess);
    ASSERT_EQ(m_store.WriteIPTCBlob(both.c_str(), format), CIPTC::kSuccess);
    const Bytes written = ReadBytes(both);
    const auto located = iptc::LocateInJPEG(written);
    EXPECT_EQ(located.candidates.size(), 1u);
}

}  // namespace
}  // namespace vliptc::test
