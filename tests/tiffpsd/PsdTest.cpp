// The Photoshop-document reader and writer on crafted documents.

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

const Bytes kBefore = Resource(0x03ED, {0, 0x48, 0, 0, 0, 1, 0, 1});
const Bytes kAfter = Resource(0x0425, Bytes(16, 0x5A), "digest");
constexpr std::size_t kSectionStart = 26 + 4 + 4 + 4;  // header, colour-mode length and data, section length

// The writer's record: name "Caption", data of dataSize bytes starting with
// the block (here blockSize bytes of 0x1C) and then zero bytes.
Bytes CaptionRecord(std::size_t blockSize, std::size_t dataSize) {
    Bytes data(dataSize, 0);
    std::fill_n(data.begin(), blockSize, 0x1C);
    return Resource(0x0404, data, "Caption");
}

// Old IPTC records and new blocks around the room test: the record's real
// extent in the file (header with its own name, data, pad byte) must be
// longer than the block plus the 18 header bytes of a "Caption" record.
TEST(PsdWrite, RewritesInPlaceExactlyWhenTheOldRecordHasRoom) {
    const struct {
        const char* name;
        std::string oldName;
        std::size_t oldData;  // extent = 4 + 2 + name field + 4 + data + pad
        std::size_t block;
        bool inPlace;
    } cases[] = {
        {"empty_name_room", "", 15, 8, true},                   // extent 28 > 26
        {"empty_name_no_room", "", 15, 10, false},              // 28 > 28 fails
        {"long_name_counts", "IPTC-NAA record", 20, 26, true},  // extent 46: the name makes the room
        {"exact_fit_is_not_room", "Caption", 100, 100, false},  // 118 > 118 fails
        {"pad_byte_counts", "Caption", 101, 100, true},         // 120 > 118
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes old = Resource(0x0404, Bytes(c.oldData, 0x77), c.oldName);
        const Bytes before = MakePsd({kBefore, old, kAfter});
        const std::string path = dir.File(std::string(c.name) + ".psd");
        WriteBytes(path, before);
        ASSERT_EQ(iptc::WritePSD(path, Bytes(c.block, 0x1C)), CIPTC::kSuccess);
        const Bytes after = ReadBytes(path);
        if (c.inPlace) {
            // Same size, every byte outside the record unchanged, the record
            // named "Caption" and keeping its old extent.
            const std::size_t at = kSectionStart + kBefore.size();
            ASSERT_EQ(after.size(), before.size());
            EXPECT_TRUE(std::equal(before.begin(), before.begin() + at, after.begin()));
            EXPECT_TRUE(
                std::equal(before.begin() + at + old.size(), before.end(), after.begin() + at + old.size()));
            EXPECT_EQ(Bytes(after.begin() + at, after.begin() + at + old.size()),
                      CaptionRecord(c.block, old.size() - 18));
        } else {
            // Rebuilt: the new record where the old one was, with 256 reserve bytes.
            EXPECT_EQ(after, MakePsd({kBefore, CaptionRecord(c.block, c.block + c.block % 2 + 256), kAfter}));
        }
    }
    EXPECT_EQ(Listing(dir.Path()).size(), std::size(cases));
}

TEST(PsdWrite, RebuildsTheSectionKeepingEveryOtherRecord) {
    const Bytes block = IimBlock({{25, "sea"}});
    const Bytes phut = Resource(0x0404, {1, 2, 3}, "", "PHUT");  // not an IPTC record: another signature
    const Bytes iptc = Resource(0x0404, IimBlock({{5, "old"}}));
    const Bytes iptc2 = Resource(0x0404, IimBlock({{5, "older"}}), "", "8bim");
    Bytes data = block;
    data.resize(block.size() + 256, 0);
    const Bytes ours = Resource(0x0404, data, "Caption");
    const struct {
        const char* name;
        std::vector<Bytes> before, after;
    } cases[] = {
        {"none_goes_last", {kBefore, phut, kAfter}, {kBefore, phut, kAfter, ours}},
        {"takes_the_first_place", {kBefore, iptc, kAfter, iptc2}, {kBefore, ours, kAfter}},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.File("doc.psd");
        WriteBytes(path, MakePsd(c.before, {9, 8, 7}));
        ASSERT_EQ(iptc::WritePSD(path, block), CIPTC::kSuccess);
        const Bytes written = ReadBytes(path);
        EXPECT_EQ(written, MakePsd(c.after, {9, 8, 7}));

        // The reserve lets the next, slightly larger block go in place.
        const Bytes larger = IimBlock({{25, "sea"}, {25, "sky"}, {120, std::string(200, 'c')}});
        ASSERT_EQ(iptc::WritePSD(path, larger), CIPTC::kSuccess);
        const Bytes again = ReadBytes(path);
        EXPECT_EQ(again.size(), written.size());
        EXPECT_EQ(ReadDatasets(again),
                  (Datasets{{0, {"2"}}, {25, {"sea", "sky"}}, {120, {std::string(200, 'c')}}}));
    }
}

TEST(PsdWrite, RefusesWhatItCannotRewrite) {
    const Bytes good = MakePsd({kBefore});
    auto changed = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
        Bytes out = good;
        std::copy(bytes.begin(), bytes.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
        return out;
    };
    const struct {
        const char* name;
        Bytes file;
        std::size_t block;
        CIPTC::EError expected;
    } cases[] = {
        {"signature", changed(0, {'8', 'B', 'P', 'T'}), 8, CIPTC::kUnsupportedFormat},
        {"large_document_version", changed(4, {0, 2}), 8, CIPTC::kUnsupportedFormat},
        {"shorter_than_27_bytes", Bytes(good.begin(), good.begin() + 26), 8, CIPTC::kUnsupportedFormat},
        {"colour_mode_past_end", changed(26, {0, 1, 0, 0}), 8, CIPTC::kUnsupportedFormat},
        {"record_past_section", changed(34, {0, 0, 0, 14}), 8, CIPTC::kUnsupportedFormat},
        {"empty", {}, 8, CIPTC::kEmptyFile},
        {"block_too_large", good, 65537, CIPTC::kBlockTooLarge},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.File(std::string(c.name) + ".psd");
        WriteBytes(path, c.file);
        EXPECT_EQ(iptc::WritePSD(path, Bytes(c.block, 0x1C)), c.expected);
        EXPECT_EQ(ReadBytes(path), c.file);
    }
    EXPECT_EQ(iptc::WritePSD(dir.File("missing.psd"), good), CIPTC::kCannotOpen);
    EXPECT_EQ(Listing(dir.Path()).size(), std::size(cases));
}

TEST(PsdRead, WalksEveryRecordForIptc) {
    const Bytes caption = IimBlock({{120, "caption"}});
    const Datasets captionDatasets = {{0, {"2"}}, {120, {"caption"}}};
    const Bytes record1Only = {0x1C, 0x01, 0x5A, 0x00, 0x03, 0x1B, 0x25, 0x47};
    Bytes truncated = MakePsd({kBefore, Resource(0x0404, caption)});
    truncated.resize(truncated.size() - kPsdRest.size() - 4);  // the record's data cut short
    Bytes headerOnly = MakePsd({});
    headerOnly.resize(28);
    const struct {
        const char* name;
        Bytes file;
        CIPTC::EError error;
        std::optional<Datasets> datasets;
    } cases[] = {
        {"behind_another_signature", MakePsd({Resource(0x0425, {1}, "", "PHUT"), Resource(0x0404, caption)}),
         CIPTC::kSuccess, captionDatasets},
        {"lower_case_signature", MakePsd({Resource(0x0404, caption, "x", "8bim")}), CIPTC::kSuccess,
         captionDatasets},
        {"first_record_without_record_2",
         MakePsd({Resource(0x0404, record1Only), Resource(0x0404, {}), Resource(0x0404, caption)}),
         CIPTC::kSuccess, captionDatasets},
        {"iptc_under_another_signature", MakePsd({Resource(0x0404, caption, "", "PHUT")}),
         CIPTC::kNoIPTCBlock, std::nullopt},
        {"no_iptc", MakePsd({kBefore, kAfter}), CIPTC::kNoIPTCBlock, std::nullopt},
        {"record_cut_short", truncated, CIPTC::kNoIPTCBlock, std::nullopt},
        {"not_a_document", Bytes(40, '8'), CIPTC::kUnsupportedFormat, std::nullopt},
        {"header_only", headerOnly, CIPTC::kUnsupportedFormat, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto located = iptc::LocateInPSD(c.file);
        EXPECT_EQ(located.error, c.error);
        EXPECT_TRUE(located.bigEndian);
        EXPECT_EQ(ReadDatasets(c.file), c.datasets);
    }
}

}  // namespace
}  // namespace vliptc::test
