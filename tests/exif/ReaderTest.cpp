// The reader's rules on files built here: every value rule in both byte
// orders, the directory chain's ends, the containers and their result codes,
// the ".CRW" companion, and the catalogue around a read.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ExifStream.h"
#include "exif/internal/IFDParser.h"
#include "tests/exif/ExifFiles.h"
#include "tests/support/TempDir.h"

namespace {

using namespace vliptc::test::exiffiles;
using vliptc::test::TempDir;
using vliptc::test::WriteFile;

// A field's values as text: "absent", "" for none, "''" for empty text,
// "(empty)" for an empty value, blobs as <N bytes>, more than 8 values as
// the first three and the count.
std::string Values(const CVLEXIF& exif, std::uint32_t tag) {
    const CVLEXIF::SField* field = nullptr;
    if (!exif.GetField(static_cast<CVLEXIF::EFieldTags>(tag), field) || !field->bPresent) return "absent";
    std::string out;
    const auto& values = field->vValues;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values.size() > 8 && i == 3) return out + ",...(" + std::to_string(values.size()) + ")";
        const CVLProperty& v = values[i];
        const bool blob = v.GetKind() == CVLProperty::kBlob;
        out += (i > 0 ? "," : "") + (blob                 ? "<" + std::to_string(v.Bytes().size()) + " bytes>"
                                     : v.IsEmpty()        ? std::string("(empty)")
                                     : v.String().empty() ? std::string("''")
                                                          : v.String());
    }
    return out;
}

struct Case {
    const char* name;  // what it breaks
    std::string file;
    CVLEXIF::EError result;
    std::vector<std::pair<std::uint32_t, std::string>> values;
};

// The value rules, in one byte order; pick(little, big) gives the values
// that depend on it.
std::vector<Case> ValueCases(bool big) {
    const auto pick = [big](const char* little, const char* bigger) {
        return std::string(big ? bigger : little);
    };
    const Tiff t(big);
    const auto text = [](const char* bytes, std::size_t size) { return std::string(bytes, size); };
    const auto tiff = [big] { return Tiff(big); };
    std::string badMagic = tiff().Add(0, 256, kLong, 1, t.Longs({1})).Build();
    badMagic[big ? 3 : 2] = 43;
    // clang-format off
    return {
        {"short_long_from_value_field",
         tiff().Add(0, 258, kShort, 3, t.Shorts({8, 8, 8}))  // the value field holds the data's offset, 0x400
               .Add(0, 277, kShort, 2, t.Shorts({3, 5})).Add(0, 274, kShort, 1, t.Shorts({40000}))
               .Add(0, 273, kLong, 2, t.Longs({10, 20})).Add(0, 279, kLong, 1, t.Longs({0xFFFFFFFF})).Build(),
         CVLEXIF::errOK,
         {{258, pick("1024,1024,1024", "0,0,0")}, {277, "3,3"}, {274, "-25536"}, {273, "1030,1030"}, {279, "-1"}}},
        {"signed_rationals",
         tiff().Add(0, 282, kRational, 1, t.Longs({1, 4})).Add(0, 283, kRational, 1, t.Longs({0x80000000, 1}))
               .Add(Tiff::kExif, 33434, kRational, 1, t.Longs({5, 0})).Add(Tiff::kExif, 37377, kSRational, 1, t.Longs({0xFFFFFFFF, 2}))
               .Add(Tiff::kGPS, 2, kRational, 3, t.Longs({1, 1, 30, 1, 9, 2})).Build(),
         CVLEXIF::errOK, {{282, "0.25"}, {283, "-2147483648"}, {33434, "0"}, {37377, "-0.5"}, {2, "1,30,4.5"}}},
        {"small_values_from_decoded_field",
         tiff().Add(0, 271, kAscii, 6, text("Canon\0", 6)).Add(0, 272, kAscii, 4, text("EOS\0", 4))
               .Add(Tiff::kExif, 36864, kUndefined, 4, "0230").Add(Tiff::kExif, 41728, kUndefined, 1, "\x03")
               .Add(Tiff::kExif, 37121, kUndefined, 4, text("\x01\x02\x03\0", 4))
               .Add(Tiff::kGPS, 0, kByte, 4, text("\x02\x03\0\0", 4)).Add(Tiff::kGPS, 1, kAscii, 2, text("N\0", 2)).Build(),
         CVLEXIF::errOK,
         {{271, "Canon"}, {272, pick("EOS", "''")}, {36864, "0230"}, {41728, pick("3", "0")}, {37121, "<4 bytes>"},
          {0, pick("2,3,0,0", "0,0,3,2")}, {1, pick("N", "''")}}},
        {"counts_and_other_types",
         tiff().Add(0, 700, kByte, 1001, std::string(1001, 'x')).Add(0, 701, kByte, 1000, std::string(1000, 'x'))
               .Add(0, 270, kAscii, 0, "").Add(0, 274, kShort, 65536, "")
               .Add(0, 0x9998, kSShort, 2, t.Longs({1}))        // a blob of count bytes from the value field
               .Add(0, 0x9997, kFloat, 3, t.Longs({0x20000})).Build(),  // a field past 65535: empty values
         CVLEXIF::errOK,
         {{700, "<1001 bytes>"}, {701, "120,120,120,...(1000)"}, {270, ""}, {274, ""}, {0x9998, "<2 bytes>"},
          {0x9997, "(empty),(empty),(empty)"}}},
        {"utf16_texts",  // XP texts are read to twice their length, up to a zero unit or the data's end
         tiff().Add(0, 40091, kByte, 6, text("H\0i\0\0\0", 6)).Add(0, 40092, kByte, 4, text("O\0K\0", 4))
               .Add(Tiff::kExif, 37510, kUndefined, 13, text("ASCII\0\0\0hello", 13)).Build(),
         CVLEXIF::errOK, {{40091, "Hi"}, {40092, pick("OK", "??")}, {37510, "hello"}}},
        {"comment_unicode", tiff().Add(0, 37510, kUndefined, 12, text("Unicode\0h\0i\0", 12)).Build(), CVLEXIF::errOK, {{37510, "hi"}}},
        {"comment_jis_as_utf16", tiff().Add(0, 37510, kUndefined, 10, text("JIS\0\0\0\0\0A\0", 10)).Build(), CVLEXIF::errOK, {{37510, "A"}}},
        {"comment_shorter_than_code", tiff().Add(0, 37510, kUndefined, 3, "abc").Build(), CVLEXIF::errOK, {{37510, "''"}}},
        {"first_directory_wins",
         tiff().Add(0, 271, kAscii, 4, text("One\0", 4)).Add(1, 271, kAscii, 6, text("Two12\0", 6)).Add(1, 305, kAscii, 6, text("Soft\0\0", 6)).Build(),
         CVLEXIF::errOK, {{271, pick("One", "''")}, {305, "Soft"}}},
        {"data_past_end_is_absent", tiff().Add(0, 282, kRational, 1, t.Longs({0xFFFF})).Add(0, 283, kRational, 1, t.Longs({1, 1})).Build(),
         CVLEXIF::errOK, {{282, "absent"}, {283, "1"}}},
        {"link_past_end_keeps_values", tiff().Add(0, 256, kLong, 1, t.Longs({640})).Build(8, 0xFFFFF), CVLEXIF::errFormat, {{256, "640"}}},
        {"chain_loop_ends", tiff().Add(0, 256, kLong, 1, t.Longs({1})).Add(1, 257, kLong, 1, t.Longs({2})).Build(8, 8),
         CVLEXIF::errOK, {{256, "1"}, {257, "2"}}},
        {"first_directory_past_end", tiff().Add(0, 256, kLong, 1, t.Longs({1})).Build(0xFFFFF), CVLEXIF::errOK, {{256, "absent"}}},
        {"unknown_tags_only", tiff().Add(0, 0x9999, kShort, 1, t.Shorts({1})).Build(), CVLEXIF::errFormat, {{0x9999, "1"}}},
        {"bad_magic", badMagic, CVLEXIF::errFormat, {{256, "absent"}}},
    };
    // clang-format on
}

std::string ExifTiff() { return Tiff(false).Add(0, 271, kAscii, 6, std::string("Canon\0", 6)).Build(); }

std::vector<Case> ContainerCases() {
    const std::string exif = std::string("Exif\0\0", 6) + ExifTiff();
    const std::string xmp("http://ns.adobe.com/xap/1.0/\0<x/>", 33);
    std::string foreign = Resource(0x0404, "x");
    foreign[0] = 'P';
    std::string version2 = Psd(Resource(0x0422, ExifTiff()));
    version2[5] = 2;
    // The reader reads a file's first 16 KB, then its first 64 KB, and maps
    // it only when the walk wants more: EXIF data, or a value, past them.
    const std::string beyond(70000, 'b');
    const std::string valueBeyond = Tiff(false)
                                        .Add(0, 0x9990, kByte, std::uint32_t(beyond.size()), beyond)
                                        .Add(0, 271, kAscii, 6, std::string("Canon\0", 6))
                                        .Build();
    // clang-format off
    return {
        {"jpeg_exif", kSOI + Segment(0xE0, "JFIF") + Segment(0xE1, exif) + kSOS, CVLEXIF::errOK, {{271, "Canon"}}},
        {"jpeg_identifier_any_case", kSOI + Segment(0xE1, "eXiF" + exif.substr(4)), CVLEXIF::errOK, {{271, "Canon"}}},
        {"jpeg_first_app1_not_exif", kSOI + Segment(0xE1, xmp) + Segment(0xE1, exif), CVLEXIF::errNoEXIF, {{271, "absent"}}},
        {"jpeg_no_app1_before_scan", kSOI + Segment(0xE0, "JFIF") + kSOS + Segment(0xE1, exif), CVLEXIF::errNoEXIF, {}},
        {"jpeg_comment_payload_is_scanned", kSOI + Segment(0xFE, std::string("note \xFF\xE1\0\0", 9) + exif), CVLEXIF::errOK, {{271, "Canon"}}},
        {"jpeg_bad_tiff_header", kSOI + Segment(0xE1, exif.substr(0, 6) + "IX*"), CVLEXIF::errNoEXIF, {}},
        {"jpeg_without_soi", std::string("\xFF\x00\xFF\xD8", 4), CVLEXIF::errFormat, {}},
        {"psd_exif_resource", Psd(Resource(0x0404, "iptc") + Resource(0x0422, ExifTiff())), CVLEXIF::errOK, {{271, "Canon"}}},
        {"psd_without_exif", Psd(Resource(0x0404, "iptc")), CVLEXIF::errNoEXIF, {}},
        {"psd_foreign_signature_ends_walk", Psd(foreign + Resource(0x0422, ExifTiff())), CVLEXIF::errNoEXIF, {}},
        {"psd_20_bytes", "8BPS" + std::string(16, '\0'), CVLEXIF::errFormat, {}},
        {"psd_version_2", version2, CVLEXIF::errFormat, {}},
        {"text_file", "hello, world", CVLEXIF::errFormat, {}},
        {"jpeg_exif_past_16k", kSOI + Segment(0xE0, beyond.substr(0, 20000)) + Segment(0xE1, exif) + kSOS, CVLEXIF::errOK, {{271, "Canon"}}},
        {"jpeg_exif_past_64k", kSOI + Segment(0xE0, beyond.substr(0, 65000)) + Segment(0xE1, exif) + kSOS, CVLEXIF::errOK, {{271, "Canon"}}},
        {"tiff_values_past_64k", valueBeyond, CVLEXIF::errOK, {{0x9990, "<70000 bytes>"}, {271, "Canon"}}},
        {"psd_exif_past_64k", Psd(Resource(0x0404, beyond) + Resource(0x0422, ExifTiff())), CVLEXIF::errOK, {{271, "Canon"}}},
    };
    // clang-format on
}

void RunCases(const std::vector<Case>& cases, const std::string& variant) {
    TempDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.name) + variant);
        const std::string path = dir.File(c.name);
        WriteFile(path, c.file);
        CVLEXIF exif;
        EXPECT_EQ(exif.LoadFile(path.c_str()), c.result);
        for (const auto& [tag, expected] : c.values) EXPECT_EQ(Values(exif, tag), expected) << "tag " << tag;
    }
}

}  // namespace

TEST(ExifReader, ValueRulesLittleEndian) { RunCases(ValueCases(false), " (II)"); }

TEST(ExifReader, ValueRulesBigEndian) { RunCases(ValueCases(true), " (MM)"); }

TEST(ExifReader, Containers) { RunCases(ContainerCases(), ""); }

TEST(ExifReader, FileErrorsAndTheCompanionOfARawFile) {
    TempDir dir;
    const std::string jpeg = kSOI + ExifSegment(ExifTiff());
    WriteFile(dir.File("upper.THM"), jpeg);
    WriteFile(dir.File("mixed.tHm"), jpeg);
    WriteFile(dir.File("empty.jpg"), "");
    for (const char* raw : {"upper.crw", "mixed.CRW", "alone.crw"})
        WriteFile(dir.File(raw), "raw data is never read");
    const std::vector<std::pair<std::string, CVLEXIF::EError>> cases = {
        {"upper.crw", CVLEXIF::errOK},     {"mixed.CRW", CVLEXIF::errOK}, {"alone.crw", CVLEXIF::errOpen},
        {"missing.jpg", CVLEXIF::errOpen}, {"", CVLEXIF::errOpen},        {"empty.jpg", CVLEXIF::errEmpty},
    };
    for (const auto& [name, result] : cases) {
        CVLEXIF exif;
        EXPECT_EQ(exif.LoadFile(dir.File(name).c_str()), result) << name;
    }
}

// The write path's search: a date's value in IFD0, the EXIF directory or a
// later directory; nothing for a missing tag or a value past the end.
TEST(ExifReader, FindTagLocatesValues) {
    const std::string date("2020:01:02 03:04:05\0", 20);
    for (const bool big : {false, true}) {
        const std::string file = Tiff(big)
                                     .Add(0, 306, kAscii, 20, date)
                                     .Add(1, 36868, kAscii, 20, "2021" + date.substr(4))
                                     .Add(Tiff::kExif, 36867, kAscii, 20, "2022" + date.substr(4))
                                     .Add(Tiff::kExif, 37520, kRational, 1, Tiff(big).Longs({0xFFFFFF}))
                                     .Build();
        std::vector<CVLEXIF::SField> fields;
        vliptc::exif::ExifStream stream({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
        stream.SetMotorola(big);
        const vliptc::exif::IFDParser parser(stream, fields);
        const CVLEXIF::STIFFHeader header{0, 42, 8};
        for (const auto& [tag, year] :
             std::map<std::uint32_t, std::string>{{306, "2020"}, {36867, "2022"}, {36868, "2021"}}) {
            const auto found = parser.FindTag(tag, header);
            ASSERT_TRUE(found && found->entry.nCount == 20) << tag;
            EXPECT_EQ(file.substr(found->valueOffset, 4), year);
        }
        EXPECT_FALSE(parser.FindTag(36869, header) || parser.FindTag(37520, header));
    }
}

TEST(ExifCatalogue, FreshAndAfterReads) {
    CVLEXIF exif;
    ASSERT_EQ(exif.Fields().size(), 105u);
    std::map<std::int32_t, int> groups;
    for (const auto& field : exif.Fields()) {
        CVLEXIF::SField copy;
        ASSERT_TRUE(exif.GetField(static_cast<CVLEXIF::EFieldTags>(field.nTag), copy)) << field.strName;
        EXPECT_TRUE(copy.vValues.empty() && !copy.bPresent && copy.strName == field.strName);
        EXPECT_TRUE(copy.bDate == (copy.nGroup == 0) && copy.bGPS == (copy.nGroup == 2));
        ++groups[field.nGroup];
    }
    EXPECT_EQ(groups, (std::map<std::int32_t, int>{{0, 3}, {1, 75}, {2, 27}}));
    CVLEXIF::SField none;
    EXPECT_FALSE(exif.GetField(CVLEXIF::kNoField, none));
    EXPECT_TRUE(none.nTag == CVLEXIF::kNoField && none.nType == 7 && none.bPresent && none.strName.empty());

    const CVLEXIF::SField* field = nullptr;
    // A read that succeeds sorts by group, then name; an unknown tag adds a record.
    TempDir dir;
    const Tiff be(true);
    WriteFile(dir.File("a.tif"),
              Tiff(true).Add(0, 0x8830, kShort, 1, be.Shorts({1})).Add(0, 306, kAscii, 4, "x").Build());
    ASSERT_EQ(exif.LoadFile(dir.File("a.tif").c_str()), CVLEXIF::errOK);
    ASSERT_EQ(exif.Fields().size(), 106u);
    std::vector<std::string> names;
    for (const auto& f : exif.Fields()) names.push_back(f.strName);
    EXPECT_EQ(
        std::vector<std::string>(names.begin(), names.begin() + 3),
        (std::vector<std::string>{"Date and time", "Date and time Digitized", "Date and time Original"}));
    EXPECT_EQ(names.back(), "GPS Version ID");
    ASSERT_TRUE(exif.GetField(static_cast<CVLEXIF::EFieldTags>(0x8830), field));
    EXPECT_TRUE(field->strName == "Unknown" && field->nType == 7 && field->vValues.size() == 1);
    ASSERT_EQ(exif.PresentFields().size(), 2u);
    EXPECT_EQ(exif.PresentFields()[0]->nTag, 306u);

    // A read that fails resets, and leaves the creation order.
    WriteFile(dir.File("b.tif"), Tiff(true).Add(0, 0x9999, kShort, 1, "").Build());
    EXPECT_EQ(exif.LoadFile(dir.File("b.tif").c_str()), CVLEXIF::errFormat);
    EXPECT_EQ(exif.Fields().front().strName, "Image width");
}

TEST(ExifCatalogue, SupportedExtensions) {
    const CVLEXIF exif;
    for (const char* path :
         {"a.jpg", "b.JPEG", "c.jfif", "d.Tif", "e.tiff", "f.exif", "g.thm", "h.psd", "i.nef", "j.CRW"}) {
        EXPECT_TRUE(exif.IsSupportedFormat(path)) << path;
    }
    for (const char* path : {"a.bmp", "b.jpg.txt", "/x.jpg/e", ""})
        EXPECT_FALSE(exif.IsSupportedFormat(path)) << path;
}
