// The TIFF reader and writer on crafted files in both byte orders.

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

const Bytes kBlock = IimBlock({{25, "sea"}});
const Datasets kBlockDatasets = {{0, {"2"}}, {25, {"sea"}}};

Bytes Pixels(std::size_t n, std::uint8_t seed) {
    Bytes out(n);
    for (std::size_t i = 0; i < n; ++i) out[i] = static_cast<std::uint8_t>(seed + 7 * i);
    return out;
}

enum class Shape {
    kAllTagsBelow,    // every tag < 33723: the entry goes before the last one
    kExifGpsBehind,   // EXIF and GPS directories and out-of-line values behind the insertion point
    kDirectoryAtEnd,  // image data first, the directory last
    kTilesAndFree,    // tile and free offsets; a tag > 33723 that is not the last entry
    kExistingEntry,   // an IPTC-NAA entry (LONG) to rewrite in place
    kLinkedPictures,  // a thumbnail, a sub-IFD and an interoperability directory behind the insertion point
};

struct Crafted {
    Bytes file;
    std::size_t index;  // where the IPTC entry must stand in the first directory
};

Crafted Make(Shape shape, bool bigEndian) {
    TiffMaker t(bigEndian);
    switch (shape) {
        case Shape::kAllTagsBelow: {
            const auto ifd0 = t.Reserve(9);
            const auto strip1 = t.Append(Pixels(12, 1));
            const auto strip2 = t.Append(Pixels(12, 2));
            const auto ifd1 = t.Reserve(4);
            const auto strip3 = t.Append(Pixels(13, 3));  // odd: the file ends on an odd size
            t.Fill(ifd0,
                   {t.Long(256, {4}), t.Long(257, {2}), t.Short(258, {8, 8, 8}),
                    t.Ascii(270, "crafted description"), t.Long(273, {strip1, strip2}), t.Short(277, {3}),
                    t.Long(279, {12, 12}), t.Rational(282, 72, 1), t.Short(296, {2})},
                   ifd1);
            t.Fill(ifd1, {t.Long(256, {2}), t.Long(257, {2}), t.Long(273, {strip3}), t.Long(279, {13})});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 8};
        }
        case Shape::kExifGpsBehind: {
            const auto ifd0 = t.Reserve(5);
            const auto strip = t.Append(Pixels(24, 4));
            const auto exif = t.Reserve(2);
            const auto gps = t.Reserve(2);
            t.Fill(ifd0, {t.Long(256, {4}), t.Short(273, {strip}), t.Short(279, {24}), t.Long(34665, {exif}),
                          t.Long(34853, {gps})});
            t.Fill(exif, {t.Rational(33434, 1, 250), t.Ascii(36867, "2024:02:29 10:20:30")});
            t.Fill(gps, {{0, 1, 4, {2, 3, 0, 0}}, {2, 5, 3, t.Encode32({52, 1, 30, 1, 0, 1})}});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 3};
        }
        case Shape::kDirectoryAtEnd: {
            const auto strip = t.Append(Pixels(20, 5));
            const auto ifd0 = t.Reserve(4);
            t.Fill(ifd0, {t.Long(256, {5}), t.Long(273, {strip}), t.Long(279, {20}),
                          t.Ascii(305, "after the directory")});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 3};
        }
        case Shape::kTilesAndFree: {
            const auto ifd0 = t.Reserve(8);
            const auto tile1 = t.Append(Pixels(16, 6));
            const auto tile2 = t.Append(Pixels(16, 7));
            const auto free = t.Append(Pixels(6, 8));
            t.Fill(ifd0, {t.Long(256, {8}), t.Long(288, {free}), t.Long(289, {6}), t.Short(322, {16}),
                          t.Long(324, {tile1, tile2}), t.Long(325, {16, 16}), t.Ascii(37000, "a private tag"),
                          t.Short(50000, {1})});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 6};
        }
        case Shape::kExistingEntry: {
            const auto ifd0 = t.Reserve(4);
            const auto strip = t.Append(Pixels(10, 9));
            const Bytes old = IimBlock({{120, "old caption"}});
            t.Fill(ifd0, {t.Long(256, {1}),
                          t.Long(273, {strip}),
                          t.Long(279, {10}),
                          {33723, 4, static_cast<std::uint32_t>(old.size() / 4), old}});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 3};
        }
        case Shape::kLinkedPictures: {
            const auto ifd0 = t.Reserve(5);
            const auto ifd1 = t.Reserve(2);
            const auto sub = t.Reserve(2);
            const auto exif = t.Reserve(1);
            const auto interop = t.Reserve(2);
            const auto strip = t.Append(Pixels(8, 10));
            const auto thumbnail = t.Append(Pixels(30, 11));
            const auto full = t.Append(Pixels(14, 12));
            t.Fill(ifd0,
                   {t.Long(256, {2}), t.Long(273, {strip}), t.Long(279, {8}), t.Long(330, {sub}),
                    t.Long(34665, {exif})},
                   ifd1);
            t.Fill(ifd1, {t.Long(513, {thumbnail}), t.Long(514, {30})});
            t.Fill(sub, {t.Long(273, {full}), t.Long(279, {14})});
            t.Fill(exif, {t.Long(40965, {interop})});
            t.Fill(interop, {t.Ascii(1, "R98"), t.Ascii(2, "an out-of-line interop text")});
            t.SetFirstDirectory(ifd0);
            return {t.Data(), 4};
        }
    }
    return {};
}

// The file that WriteTIFF leaves after writing block into a copy of before.
Bytes Written(const Bytes& before, const Bytes& block) {
    TempDir dir;
    const std::string path = dir.File("written.tif");
    WriteBytes(path, before);
    EXPECT_EQ(iptc::WriteTIFF(path, block), CIPTC::kSuccess);
    return ReadBytes(path);
}

class TiffWrite : public ::testing::TestWithParam<std::tuple<Shape, bool>> {};

std::string ShapeName(const ::testing::TestParamInfo<std::tuple<Shape, bool>>& info) {
    static const char* const kNames[] = {"AllTagsBelow", "ExifGpsBehind", "DirectoryAtEnd",
                                         "TilesAndFree", "ExistingEntry", "LinkedPictures"};
    return std::string(kNames[static_cast<int>(std::get<0>(info.param))]) +
           (std::get<1>(info.param) ? "_MM" : "_II");
}

TEST_P(TiffWrite, KeepsEveryValueAndPutsTheBlockAtTheEnd) {
    const auto [shape, bigEndian] = GetParam();
    const Crafted crafted = Make(shape, bigEndian);
    const Bytes& before = crafted.file;
    const auto oldEntries = IptcEntries(before);
    const bool insert = oldEntries.empty();

    const Bytes after = Written(before, kBlock);

    // Every value the directories hold, strips and tiles included, reads the same.
    EXPECT_EQ(TiffValues(after), TiffValues(before));

    const std::uint64_t grown = before.size() + (insert ? 12 : 0);
    const std::uint64_t blockOffset = grown + grown % 2;
    const auto entries = IptcEntries(after);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].directory, 0u);
    EXPECT_EQ(entries[0].index, crafted.index);
    EXPECT_EQ(entries[0].type, 1);
    EXPECT_EQ(entries[0].count, kBlock.size() + 1024);
    EXPECT_EQ(entries[0].offset, blockOffset);
    ASSERT_EQ(after.size(), blockOffset + kBlock.size() + 1024);
    EXPECT_TRUE(
        std::equal(kBlock.begin(), kBlock.end(), after.begin() + static_cast<std::ptrdiff_t>(blockOffset)));
    EXPECT_TRUE(std::all_of(after.end() - 1024, after.end(), [](std::uint8_t b) { return b == 0; }));
    EXPECT_EQ(ReadDatasets(after), kBlockDatasets);

    // Writing again rewrites the one entry where it stands (no 12 bytes
    // inserted) and puts the new block at the end.
    const Bytes next = IimBlock({{25, "sea"}, {25, "sky"}});
    const Bytes again = Written(after, next);
    EXPECT_EQ(again.size(), after.size() + after.size() % 2 + next.size() + 1024);
    EXPECT_EQ(IptcEntries(again).size(), 1u);
    EXPECT_EQ(TiffValues(again), TiffValues(before));
    EXPECT_EQ(ReadDatasets(again), (Datasets{{0, {"2"}}, {25, {"sea", "sky"}}}));

    if (!insert) {
        // Only the old value area (now zero), the entry and the tail changed.
        const std::uint64_t area = oldEntries[0].offset, areaEnd = area + 4ull * oldEntries[0].count;
        const std::uint64_t entry = 8 + 2 + 12 * crafted.index;
        for (std::uint64_t i = 0; i < before.size(); ++i) {
            if (i >= area && i < areaEnd) {
                EXPECT_EQ(after[i], 0) << i;
            } else if (i < entry || i >= entry + 12) {
                EXPECT_EQ(after[i], before[i]) << i;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, TiffWrite,
                         ::testing::Combine(::testing::Values(Shape::kAllTagsBelow, Shape::kExifGpsBehind,
                                                              Shape::kDirectoryAtEnd, Shape::kTilesAndFree,
                                                              Shape::kExistingEntry, Shape::kLinkedPictures),
                                            ::testing::Bool()),
                         ShapeName);

// Files the writer must refuse, each with the code and the file left as it was.
TEST(TiffWrite, RefusesWhatItCannotRewriteSafely) {
    // An IPTC entry whose count of LONGs puts its value at offset.
    auto withIptcAt = [](std::uint32_t offset, std::uint32_t count) {
        TiffMaker t(true);
        const auto ifd0 = t.Reserve(1);
        t.Fill(ifd0, {{33723, 4, count, t.Encode32({offset})}});
        t.SetFirstDirectory(ifd0);
        return t.Data();
    };
    TiffMaker big(false);
    const auto ifd = big.Reserve(2);
    big.Append(Bytes(65530, 0x55));
    big.Fill(ifd, {big.Short(273, {65530}), big.Short(279, {4})});
    big.SetFirstDirectory(ifd);
    TiffMaker many(true);
    const auto manyIfd = many.Reserve(5000);
    many.Fill(manyIfd, std::vector<TiffField>(5000, many.Short(300, {1})));
    many.SetFirstDirectory(manyIfd);
    Bytes bigTiff = Make(Shape::kAllTagsBelow, false).file;
    bigTiff[2] = 43;

    const struct {
        const char* name;
        Bytes file;
        std::size_t blockSize;
        CIPTC::EError expected;
    } cases[] = {
        {"bad_mark", {'I', 'M', 42, 0, 8, 0, 0, 0, 0, 0}, 8, CIPTC::kUnsupportedFormat},
        {"big_tiff", bigTiff, 8, CIPTC::kUnsupportedFormat},
        {"header_only", {'M', 'M', 0, 42, 0, 0, 0, 8}, 8, CIPTC::kUnsupportedFormat},
        {"iptc_value_past_end", withIptcAt(40, 100), 8, CIPTC::kUnsupportedFormat},
        {"iptc_value_over_directory", withIptcAt(8, 4), 8, CIPTC::kUnsupportedFormat},
        {"short_offset_would_overflow", big.Data(), 8, CIPTC::kUnsupportedFormat},
        {"more_entries_than_read", many.Data(), 8, CIPTC::kUnsupportedFormat},
        {"empty", {}, 8, CIPTC::kEmptyFile},
        {"block_too_large", Make(Shape::kAllTagsBelow, true).file, 65537, CIPTC::kBlockTooLarge},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.File(std::string(c.name) + ".tif");
        WriteBytes(path, c.file);
        EXPECT_EQ(iptc::WriteTIFF(path, Bytes(c.blockSize, 0x1C)), c.expected);
        EXPECT_EQ(ReadBytes(path), c.file);
    }
    EXPECT_EQ(iptc::WriteTIFF(dir.File("missing.tif"), kBlock), CIPTC::kCannotOpen);
    EXPECT_EQ(Listing(dir.Path()).size(), std::size(cases));
}

TEST(TiffRead, FindsTheEntryAndReadsItsDatasetsMostSignificantByteFirst) {
    const Bytes caption = IimBlock({{120, "caption"}});
    const Datasets captionDatasets = {{0, {"2"}}, {120, {"caption"}}};
    const Bytes record1Only = {0x1C, 0x01, 0x5A, 0x00, 0x03, 0x1B, 0x25, 0x47};
    auto entry = [](std::uint16_t type, std::size_t count, const Bytes& value) {
        return TiffField{33723, type, static_cast<std::uint32_t>(count), value};
    };
    // A chain of directories, one per list of fields.
    auto file = [&](bool bigEndian, std::vector<std::vector<TiffField>> directories) {
        TiffMaker t(bigEndian);
        std::vector<std::uint32_t> offsets;
        for (const auto& fields : directories) offsets.push_back(t.Reserve(fields.size()));
        for (std::size_t i = 0; i < directories.size(); ++i) {
            t.Fill(offsets[i], directories[i], i + 1 < offsets.size() ? offsets[i + 1] : 0);
        }
        t.SetFirstDirectory(offsets[0]);
        return t.Data();
    };
    const struct {
        const char* name;
        Bytes file;
        CIPTC::EError error;
        bool bigEndian;
        std::optional<Datasets> datasets;
    } cases[] = {
        {"ii", file(false, {{entry(7, caption.size(), caption)}}), CIPTC::kSuccess, false, captionDatasets},
        {"mm_long", file(true, {{entry(4, caption.size() / 4, caption)}}), CIPTC::kSuccess, true,
         captionDatasets},
        {"second_directory_has_record_2",
         file(false, {{entry(7, 8, record1Only)}, {entry(7, caption.size(), caption)}}), CIPTC::kSuccess,
         false, captionDatasets},
        {"count_past_end", file(true, {{entry(7, 4000, caption)}}), CIPTC::kSuccess, true, captionDatasets},
        {"no_entry", file(true, {{{256, 3, 1, {0, 1, 0, 0}}}}), CIPTC::kNoIPTCBlock, true, std::nullopt},
        {"big_tiff", ToBytes(std::string_view("II+\0\x08\0\0\0\x10\0\0\0\0\0\0\0", 16)),
         CIPTC::kUnsupportedFormat, false, std::nullopt},
        {"bad_mark", ToBytes(std::string_view("MI\0*\0\0\0\x08", 8)), CIPTC::kUnsupportedFormat, true,
         std::nullopt},
        {"truncated_header", ToBytes(std::string_view("MM\0*\0", 5)), CIPTC::kUnsupportedFormat, true,
         std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto located = iptc::LocateInTIFF(c.file);
        EXPECT_EQ(located.error, c.error);
        EXPECT_EQ(located.bigEndian, c.bigEndian);
        for (const auto& candidate : located.candidates) {
            EXPECT_LE(candidate.offset + candidate.size, c.file.size());
        }
        EXPECT_EQ(ReadDatasets(c.file), c.datasets);
    }
}

}  // namespace
}  // namespace vliptc::test
