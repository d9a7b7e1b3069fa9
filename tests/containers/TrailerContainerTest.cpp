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

const Bytes kImage = Jpeg({Dqt()});
const Bytes kIim = Cat({Dataset(0, std::string_view("\x00\x02", 2)), Dataset(120, "trailer caption")});
const Bytes kOther = TrailerChunk(2, Bytes(48, 7));

// A caption dataset of size bytes.
Bytes Block(std::size_t size, char fill) { return Dataset(120, std::string(size - 5, fill)); }

// data followed by zero bytes up to size.
Bytes Padded(const Bytes& data, std::size_t size) {
    Bytes out = data;
    out.resize(size, 0);
    return out;
}

class TrailerWriter : public ContainerTest {
protected:
    std::string m_path = File("catalogued.jpg");
};

TEST_F(TrailerWriter, RewritesTheChunkInPlaceOrMovesTheChunksBehind) {
    const struct {
        const char* name;
        std::size_t oldData;
        std::size_t block;
        std::size_t newData;
    } cases[] = {
        {"fits: cleared and written in place", 400, 100, 400},
        {"larger: grows to the block and the reserve", 40, 300, 300 + 512},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WriteBytes(m_path, Cat({kImage, TrailerChunk(1, Bytes(c.oldData, 0x55)), kOther}));
        const Bytes block = Block(c.block, 'a');
        ASSERT_EQ(WriteTrailer(m_path, block), CIPTC::kSuccess);
        EXPECT_EQ(ReadBytes(m_path), Cat({kImage, TrailerChunk(1, Padded(block, c.newData)), kOther}));
    }
}

TEST_F(TrailerWriter, AppendedChunkIsFoundAndRewrittenByBothSides) {
    WriteBytes(m_path, kImage);
    const Bytes first = Block(200, 'c');
    ASSERT_EQ(WriteTrailer(m_path, first), CIPTC::kSuccess);
    // header (kind 1, length = block + 522, magic) | block | 512 zero bytes | magic
    Bytes header;
    Put16(header, 1);
    Put32(header, static_cast<std::uint32_t>(first.size() + 522));
    Put32(header, 0xA1B2C3D4);
    Bytes magic;
    Put32(magic, 0xA1B2C3D4);
    ASSERT_EQ(ReadBytes(m_path), Cat({kImage, header, Padded(first, first.size() + 512), magic}));

    // Smaller and slightly larger blocks fit the reserve; much larger ones grow
    // the chunk. Every state reads back, and the image stays in front.
    for (const std::size_t size : {200u, 60u, 700u, 4000u, 100u}) {
        SCOPED_TRACE(size);
        const Bytes block = Block(size, static_cast<char>('d' + size % 7));
        if (size != 200) {
            ASSERT_EQ(WriteTrailer(m_path, block), CIPTC::kSuccess);
        }
        const Bytes file = ReadBytes(m_path);
        const auto located = LocateInTrailer(file);
        ASSERT_EQ(located.error, CIPTC::kSuccess);
        const auto& chunk = located.candidates.front();
        ASSERT_GE(chunk.size, size);
        const Bytes data(file.begin() + static_cast<long>(chunk.offset),
                         file.begin() + static_cast<long>(chunk.offset + chunk.size));
        EXPECT_EQ(data, Padded(size == 200 ? first : block, data.size()));
        EXPECT_TRUE(std::equal(kImage.begin(), kImage.end(), file.begin()));
    }
}

// Reader and writer on every stack: they walk the chunks alike and differ
// only in what a broken stack means (no IPTC chunk for the reader; the writer
// refuses to touch the file).
TEST_F(TrailerWriter, ReaderAndWriterWalkChunksBackFromTheEnd) {
    Bytes badMagic = Cat({kImage, TrailerChunk(1, kIim), kOther});
    badMagic[badMagic.size() - 60] ^= 0xFF;  // the magic of the kind-1 trailer
    Bytes tooLong = Cat({kImage, TrailerChunk(1, kIim)});
    tooLong[tooLong.size() - 7] = 0x7F;  // a length far beyond the file
    const Bytes resources = Resource(0x0404, kIim);
    using Kind = iptc::BlockLocation::Kind;
    const struct {
        const char* name;
        Bytes file;
        CIPTC::EError read;
        CIPTC::EError write;  // a failure leaves the file as it was
        Kind kind = Kind::kIIM;
        Bytes data = {};  // what the candidate must start with
    } cases[] = {
        {"bare IIM, kind 2 behind it", Cat({kImage, TrailerChunk(1, kIim), kOther}), CIPTC::kSuccess,
         CIPTC::kSuccess, Kind::kIIM, kIim},
        {"image resources", Cat({kImage, TrailerChunk(1, resources)}), CIPTC::kSuccess, CIPTC::kSuccess,
         Kind::kImageResources, resources},
        {"no magic at the end: a chunk is appended", kImage, CIPTC::kUnsupportedFormat, CIPTC::kSuccess},
        {"ten bytes", Bytes{0, 1, 0, 0, 0, 10, 0xA1, 0xB2, 0xC3, 0xD4}, CIPTC::kUnsupportedFormat,
         CIPTC::kSuccess},
        {"no kind-1 chunk: the walk meets the image", Cat({kImage, kOther}), CIPTC::kNoIPTCBlock,
         CIPTC::kUnsupportedFormat},
        {"no kind-1 chunk, nothing in front", kOther, CIPTC::kNoIPTCBlock, CIPTC::kNoIPTCBlock},
        {"no magic further back: the stack ends", badMagic, CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat},
        {"length past the start", tooLong, CIPTC::kNoIPTCBlock, CIPTC::kUnsupportedFormat},
        {"zero trailer without header", Cat({kImage, Bytes(6, 0), Bytes{0xA1, 0xB2, 0xC3, 0xD4}}),
         CIPTC::kUnsupportedFormat, CIPTC::kUnsupportedFormat},
        {"empty", Bytes{}, CIPTC::kUnsupportedFormat, CIPTC::kEmptyFile},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto result = LocateInTrailer(c.file);
        EXPECT_EQ(result.error, c.read);
        if (c.read == CIPTC::kSuccess) {
            ASSERT_EQ(result.candidates.size(), 1u);
            const auto& location = result.candidates.front();
            EXPECT_EQ(location.kind, c.kind);
            ASSERT_LE(location.offset + location.size, c.file.size());
            EXPECT_EQ(Bytes(c.file.begin() + static_cast<long>(location.offset),
                            c.file.begin() + static_cast<long>(location.offset + c.data.size())),
                      c.data);
        }
        WriteBytes(m_path, c.file);
        EXPECT_EQ(WriteTrailer(m_path, kIim), c.write);
        if (c.write != CIPTC::kSuccess) {
            EXPECT_EQ(ReadBytes(m_path), c.file);
        }
    }
    EXPECT_EQ(WriteTrailer(File("missing.jpg"), kIim), CIPTC::kCannotOpen);
    EXPECT_EQ(WriteTrailer(m_path, Bytes(65538, 0)), CIPTC::kBlockTooLarge);
}

TEST_F(TrailerWriter, StoreWritesTheTrailerOfACataloguedJpeg) {
    // The trailer is written first for format 3; the JPEG writer then refuses
    // the file (no application segment behind SOI) and the write stands.
    WriteBytes(m_path, Cat({kImage, TrailerChunk(1, kIim)}));
    CIPTC::SIPTCFormatInfo format;
    ASSERT_EQ(m_store.ReadIPTCBlob(m_path.c_str(), format), CIPTC::kSuccess);
    EXPECT_EQ(format.nFormat, CIPTC::kFormatTrailer);
    EXPECT_FALSE(format.bBigEndian);
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
    EXPECT_EQ(iptc::LocateInJPEG(ReadBytes(both)).candidates.size(), 1u);
}

}  // namespace
}  // namespace vliptc::test
