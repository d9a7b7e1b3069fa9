// The IIM block codec: exact bytes of small encodings, round trips of field
// lists through BuildBlob and the decoder, and hand-made blocks for every
// decoder rule.
#include <gtest/gtest.h>

#include "tests/codec/CodecFixture.h"

namespace vliptc::test {
namespace {

// The store as one line: "id=[v|v] ..." for items with values; non-text
// values carry their kind ("k3:2"), line breaks show as \r and \n.
std::string Dump(const CIPTC::FieldList& fields) {
    std::string out;
    for (const auto& item : fields) {
        if (item.vValues.empty()) {
            continue;
        }
        out += (out.empty() ? "" : " ") + std::to_string(item.nID) + "=[";
        for (std::size_t i = 0; i < item.vValues.size(); ++i) {
            const CVLProperty& value = item.vValues[i];
            out += i > 0 ? "|" : "";
            if (value.GetKind() != CVLProperty::kText) {
                out += "k" + std::to_string(value.GetKind()) + ":";
            }
            for (const char c : value.String()) {
                out += c == '\r' ? std::string("\\r") : c == '\n' ? std::string("\\n") : std::string(1, c);
            }
        }
        out += "]";
    }
    return out;
}

const Bytes kVersion = Dataset(2, 0, std::string_view("\x00\x02", 2));

TEST(CodecEncode, ExactBytesOfSmallBlocks) {
    Codec codec;
    // Nothing but the version dataset and the pad byte.
    EXPECT_EQ(codec.Encode({}, true), (Bytes{0x1C, 2, 0, 0, 2, 0, 2, 0}));
    // The version bytes do not follow the flag; a version item is never written.
    CIPTC::FieldList fields{{0, {Text("9")}}, {5, {Text("abc")}}};
    EXPECT_EQ(codec.Encode(fields, false), Concat({kVersion, {0x1C, 2, 5, 3, 0, 'a', 'b', 'c', 0}}));
    EXPECT_EQ(codec.Encode(fields, true), Concat({kVersion, Dataset(2, 5, "abc"), {0}}));
    fields[1].vValues[0] = Text("ab");  // even already: no pad
    EXPECT_EQ(codec.Encode(fields, true), Concat({kVersion, Dataset(2, 5, "ab")}));

    // Kind 3 goes out as its two bytes with no length field.
    CVLProperty number;
    number.SetNumber16(0x0102);
    fields = {{0x1FF, {number}}};  // only the low byte of the dataset number is written
    EXPECT_EQ(codec.Encode(fields, true), Concat({kVersion, {0x1C, 2, 0xFF, 0x01, 0x02}}));
    EXPECT_EQ(codec.Encode(fields, false), Concat({kVersion, {0x1C, 2, 0xFF, 0x02, 0x01}}));

    // Over 65,535 bytes: the whole text behind the low 16 bits of its length.
    fields = {{7, {Text(std::string(65536 + 3, 'x'))}}};
    const Bytes big = codec.Encode(fields, true);
    ASSERT_EQ(big.size(), 7 + 5 + 65539 + 1);
    EXPECT_EQ(big[10], 0x00);
    EXPECT_EQ(big[11], 0x03);
}

TEST(CodecRoundTrip, EveryDatasetNumberAndRepeatsInOrder) {
    CIPTC::FieldList fields;
    for (std::uint32_t id = 1; id <= 255; ++id) {
        fields.push_back({id, {Text("v" + std::to_string(id))}});
    }
    fields[24].vValues = {Text("one"), Text("two"), Text(""), Text("one")};  // 25, repeated
    for (const bool bigEndian : {true, false}) {
        Codec writer;
        Codec reader;
        // A little-endian block is read with little-endian numbers from the
        // start (an "II" TIFF). Its version bytes are always big-endian, so
        // there the version length reads 0x0200 and the version is not kept.
        ASSERT_EQ(reader.DecodeIIMBytes(writer.Encode(fields, bigEndian), bigEndian), CIPTC::kSuccess);
        EXPECT_EQ(Dump(reader.Fields()), (bigEndian ? "0=[k3:2] " : "") + Dump(fields));
    }
}

TEST(CodecRoundTrip, ValueAndBlockSizesAroundTheLimits) {
    struct Case {
        std::vector<std::size_t> valueSizes;
        std::size_t blockSize;
        bool fits;
    };
    // A block is 7 version bytes, 5 header bytes per value, the values and a
    // pad byte when odd.
    const Case cases[] = {
        {{0, 1}, 7 + 5 + 0 + 5 + 1 + 0, true},
        {{32767}, 7 + 5 + 32767 + 1, true},
        {{65535}, 7 + 5 + 65535 + 1, false},
        {{65522}, 65534, true},              // just under
        {{65524}, 65536, true},              // at the limit
        {{65523}, 65536, true},              // padded up to the limit
        {{65525}, 65538, false},             // just over
        {{40000, 30000}, 70017 + 1, false},  // over, with values that fit alone
    };
    for (const Case& c : cases) {
        CIPTC::FieldList fields{{120, {}}};
        char fill = 'a';
        for (const std::size_t size : c.valueSizes) {
            fields[0].vValues.push_back(Text(std::string(size, fill++)));
        }
        Codec writer;
        bool fits = false;
        const Bytes block = writer.Encode(fields, true, &fits);
        EXPECT_EQ(block.size(), c.blockSize);
        EXPECT_EQ(fits, c.fits) << c.blockSize;
        Codec reader;
        ASSERT_EQ(reader.DecodeIIMBytes(block), CIPTC::kSuccess);
        EXPECT_EQ(Dump(reader.Fields()), "0=[k3:2] " + Dump(fields)) << c.blockSize;
    }
}

TEST(CodecRoundTrip, LineBreaksComeBackAsCrLf) {
    CIPTC::FieldList fields{{120, {Text("a\nb"), Text("\nx"), Text("end\r"), Text("c\r\nd\re")}}};
    Codec writer;
    Codec reader;
    ASSERT_EQ(reader.DecodeIIMBytes(writer.Encode(fields, true)), CIPTC::kSuccess);
    EXPECT_EQ(Dump(reader.Fields()), "0=[k3:2] 120=[a\\r\\nb|\\nx|end\\r\\n|c\\r\\nd\\r\\ne]");
}

struct DecodeCase {
    const char* name;
    Bytes bytes;
    bool resources;  // walk image resources (else bare IIM)
    CIPTC::EError result;
    std::string fields;
};

TEST(CodecDecode, HandMadeBlocks) {
    const Bytes iptc = Concat({kVersion, Dataset(2, 120, "hi"), Dataset(2, 25, "k1"), Dataset(2, 25, "k2")});
    const std::string iptcFields = "0=[k3:2] 120=[hi] 25=[k1|k2]";
    const Bytes inner = Concat({Raw("\x1B"), Dataset(2, 5, "X")});
    const Bytes falseMarker = Dataset(1, 90, std::string(inner.begin(), inner.end()));
    Bytes cutShort = Resource("8BIM", 0x0409, "", Raw("abcd"));
    cutShort.resize(cutShort.size() - 2);
    const DecodeCase cases[] = {
        {"record 1 first, with a false dataset inside", Concat({Dataset(1, 0, std::string_view("\x00\x04", 2)), falseMarker, iptc}), false,
         CIPTC::kSuccess, "5=[X] " + iptcFields},
        {"record 1 only", Concat({Dataset(1, 0, "ab"), Dataset(1, 20, "cd")}), false, CIPTC::kUnsupportedFormat, ""},
        {"garbage between datasets is passed over", Concat({Raw("zz"), Dataset(2, 120, "a"), Raw("\xFF"), Dataset(2, 120, "b")}),
         false, CIPTC::kSuccess, "120=[a|b]"},
        {"length beyond the region drops the value only", Concat({{0x1C, 2, 120, 0x00, 0x20}, Dataset(2, 25, "k")}),
         false, CIPTC::kSuccess, "25=[k]"},
        {"truncated length", {0x1C, 2, 120, 0x00}, false, CIPTC::kSuccess, ""},
        {"marker at the very end", {0x1C}, false, CIPTC::kUnsupportedFormat, ""},
        {"version of another size stores nothing", Concat({Dataset(2, 0, "abc"), Dataset(2, 5, "x")}), false,
         CIPTC::kSuccess, "5=[x]"},
        {"other version numbers are kept", Concat({Dataset(2, 0, std::string_view("\x00\x04", 2)), Dataset(2, 0, std::string_view("\x00\x03", 2))}),
         false, CIPTC::kSuccess, "0=[k3:3]"},
        {"little-endian block", Concat({Dataset(2, 0, std::string_view("\x02\x00", 2)), Dataset(2, 120, "le", false), Dataset(2, 25, "kw", false)}),
         false, CIPTC::kSuccess, "0=[k2:2] 120=[le] 25=[kw]"},

        {"IPTC resource", Resource("8BIM", 0x0404, "", iptc), true, CIPTC::kSuccess, iptcFields},
        {"lower-case signature", Resource("8bim", 0x0404, "", iptc), true, CIPTC::kSuccess, iptcFields},
        {"odd sizes and names before IPTC",
         Concat({Resource("8BIM", 0x0409, "n", Raw("abc")), Resource("8BIM", 0x03ED, "ab", Raw("x")),
                 Resource("8BIM", 0x0404, "iptc", iptc)}),
         true, CIPTC::kSuccess, iptcFields},
        {"resource of size 0 ends the walk with success",
         Concat({Resource("8BIM", 0x0409, "", {}), Resource("8BIM", 0x0404, "", iptc)}), true, CIPTC::kSuccess, ""},
        {"IPTC resource without record 2, the walk goes on",
         Concat({Resource("8BIM", 0x0404, "", Dataset(1, 0, "abc")), Resource("8BIM", 0x0404, "", iptc)}), true,
         CIPTC::kSuccess, iptcFields},
        // The walk resumes where the IIM scan stopped, on the pad byte.
        {"odd IPTC resource without record 2 ends the walk",
         Concat({Resource("8BIM", 0x0404, "", Dataset(1, 0, "ab")), Resource("8BIM", 0x0404, "", iptc)}), true,
         CIPTC::kUnsupportedFormat, ""},
        {"unknown signature", Concat({Resource("MeSa", 0x0409, "", Raw("ab")), Resource("8BIM", 0x0404, "", iptc)}),
         true, CIPTC::kUnsupportedFormat, ""},
        {"name runs out", {'8', 'B', 'I', 'M', 0x04, 0x04, 0x09, 'a'}, true, CIPTC::kUnsupportedFormat, ""},
        {"identifier runs out", {'8', 'B', 'I', 'M', 0x04}, true, CIPTC::kUnsupportedFormat, ""},
        {"size cannot be read", {'8', 'B', 'I', 'M', 0x04, 0x04, 0x00, 0x00, 0x00, 0x01}, true, CIPTC::kSuccess, ""},
        {"resource size beyond the section", cutShort, true, CIPTC::kUnsupportedFormat, ""},
        {"empty section", {}, true, CIPTC::kUnsupportedFormat, ""},
    };
    for (const DecodeCase& c : cases) {
        Codec codec;
        const auto result = c.resources ? codec.DecodeResourceBytes(c.bytes) : codec.DecodeIIMBytes(c.bytes);
        EXPECT_EQ(result, c.result) << c.name;
        EXPECT_EQ(Dump(codec.Fields()), c.fields) << c.name;
    }
}

TEST(CodecDecode, ScansOnlyTheGivenSizeButReadsValuesFromTheRegion) {
    const Bytes bytes = Concat({Dataset(2, 120, "inside"), Dataset(2, 25, "behind")});
    Codec codec;
    CIPTCReader reader(bytes);
    // The size covers the first dataset's header only; its value is still read
    // whole, and the scan stops behind it.
    EXPECT_EQ(codec.DecodeIIM(reader, 5), CIPTC::kSuccess);
    EXPECT_EQ(reader.Position(), 11u);
    EXPECT_EQ(Dump(codec.Fields()), "120=[inside]");
}

TEST(CodecFormatIPTCString, Placeholders) {
    Codec codec;
    codec.Fields() = {{80, {Text("A"), Text("B")}}, {5, {}}, {7, {Text("x")}}};
    CVLProperty number;
    number.SetNumber16(12);
    codec.Fields()[2].vValues.push_back(number);
    const std::pair<const char*, const char*> cases[] = {
        {"By #80, #999 #x", "By A; B,  #x"},
        {"", ""},
        {"#", "#"},
        {"##80#", "#A; B#"},
        {"#080x", "A; Bx"},
        {"#+80 # 80", "A; B A; B"},  // read as "%d" reads: sign and leading blanks
        {"#-80|#99999999999|", "||"},
        {"#5.", "."},  // present without values
        {"#7", "x; 12"},
    };
    for (const auto& [pattern, expected] : cases) {
        std::string out = "stale";
        EXPECT_EQ(codec.FormatIPTCString(pattern, out), CIPTC::kSuccess);
        EXPECT_EQ(out, expected) << pattern;
    }
    std::string out = "stale";
    EXPECT_EQ(codec.FormatIPTCString(nullptr, out), CIPTC::kSuccess);
    EXPECT_EQ(out, "");
}

}  // namespace
}  // namespace vliptc::test
