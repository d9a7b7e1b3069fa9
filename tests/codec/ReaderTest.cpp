// The shared byte-order primitives and the IPTC byte reader built on them.
#include <gtest/gtest.h>

#include <limits>

#include "host/ByteOrder.h"
#include "tests/codec/CodecFixture.h"

namespace vliptc::test {
namespace {

using bytes::ByteOrder;
constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

TEST(ByteOrder, NumbersInBothOrdersAndOffsetsThatWouldWrap) {
    const Bytes data{0x12, 0x34, 0x56, 0x78, 0x9A};
    EXPECT_EQ(bytes::Read16(data, 0, ByteOrder::kBigEndian), 0x1234);
    EXPECT_EQ(bytes::Read16(data, 3, ByteOrder::kLittleEndian), 0x9A78);
    EXPECT_EQ(bytes::Read32(data, 1, ByteOrder::kBigEndian), 0x3456789Au);
    EXPECT_EQ(bytes::Read32(data, 1, ByteOrder::kLittleEndian), 0x9A785634u);
    for (const std::uint64_t offset : {std::uint64_t{4}, std::uint64_t{5}, kMax - 1, kMax}) {
        EXPECT_FALSE(bytes::Read16(data, offset, ByteOrder::kBigEndian)) << offset;
        EXPECT_FALSE(bytes::Read32(data, offset - 2, ByteOrder::kBigEndian)) << offset;
        EXPECT_FALSE(bytes::Slice(data, offset, kMax)) << offset;
    }
    EXPECT_FALSE(bytes::Read8(data, 5));
    EXPECT_EQ(bytes::ClampedEnd(kMax - 1, 10, 100), 100u);
    EXPECT_EQ(bytes::ClampedEnd(10, kMax, 100), 100u);
    EXPECT_EQ(bytes::ClampedEnd(10, 20, 100), 30u);

    Bytes out(6, 0);
    for (const auto order : {ByteOrder::kBigEndian, ByteOrder::kLittleEndian}) {
        ASSERT_TRUE(bytes::Write32(out, 2, 0xCAFEF00Du, order));
        EXPECT_EQ(bytes::Read32(out, 2, order), 0xCAFEF00Du);
        ASSERT_TRUE(bytes::Write16(out, 0, 0xBEEF, order));
        EXPECT_EQ(bytes::Read16(out, 0, order), 0xBEEF);
    }
    EXPECT_FALSE(bytes::Write32(out, 3, 1, ByteOrder::kBigEndian));
    EXPECT_FALSE(bytes::Write16(out, kMax, 1, ByteOrder::kBigEndian));
}

TEST(CIPTCReader, FailedReadsDoNotMoveAndSkipsStayInside) {
    const Bytes data{0x01, 0x02, 0x03};
    CIPTCReader reader(data);
    EXPECT_FALSE(reader.Read32());
    EXPECT_EQ(reader.Read16(), 0x0102);
    EXPECT_FALSE(reader.Read16());
    EXPECT_EQ(reader.Position(), 2u);
    EXPECT_FALSE(reader.ReadText(2));
    EXPECT_EQ(reader.ReadByte(), 0x03);
    EXPECT_EQ(reader.ReadByte(), 0xFF);  // at the end: 255, not moving
    EXPECT_EQ(reader.Position(), 3u);

    reader.Seek(0);
    reader.SetSwap(false);
    EXPECT_EQ(reader.Read16(), 0x0201);
    reader.Skip(kMax);
    EXPECT_EQ(reader.Position(), 3u);
    EXPECT_TRUE(reader.AtEnd());
}

TEST(CIPTCReader, TextLineBreaksBecomeCrLf) {
    struct Case {
        std::string value;
        std::string after;  // bytes of the region behind the value
        std::string expected;
    };
    using namespace std::string_literals;
    const Case cases[] = {
        {"a\nb", "", "a\r\nb"},
        {"\nx", "", "\nx"},          // an LF at the very start stays bare
        {"\0\nx"s, "", "\nx"},       // ... also behind a dropped NUL
        {"a\r", "\x1C", "a\r\n"},    // a CR ending the value is completed ...
        {"a\r", "", "a\r"},          // ... unless the region ends there
        {"a\r", "\n", "a\r"},        // ... or LF follows it
        {"a\r\nb", "", "a\r\nb"},
        {"\r\r", "x", "\r\n\r\n"},
        {"a\0b\0"s, "", "ab"},
        {"a\n\n", "", "a\r\n\r\n"},
        {"\xFF\x1C\x7F", "", "\xFF\x1C\x7F"},
    };
    for (const Case& c : cases) {
        const Bytes region = Raw(c.value + c.after);
        CIPTCReader reader(region);
        EXPECT_EQ(reader.ReadText(c.value.size()), c.expected) << testing::PrintToString(c.value);
        EXPECT_EQ(reader.Position(), c.value.size());
    }
}

}  // namespace
}  // namespace vliptc::test
