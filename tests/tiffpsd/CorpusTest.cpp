// The TIFF and Photoshop containers on the public corpus: every file read
// and written (on a copy) without harm, and round trips through the store
// that exiftool and exiv2 read back. Our reading against ExifTool's is
// checked for every container in tests/containers/CorpusTest.cpp.

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "iptc/internal/PsdLayout.h"
#include "tests/support/Corpus.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

namespace fs = std::filesystem;

bool IsPsd(const Bytes& file) {
    return file.size() >= 4 && std::equal(file.begin(), file.begin() + 4, "8BPS");
}

// Every file of the corpus that could reach these containers, malformed ones
// included, is located, decoded and written on a copy: no crash, and a write
// either leaves the copy as it was or gives a file that reads back the block.
TEST(TiffPsdCorpus, EveryFileReadsAndWritesWithoutHarm) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const Bytes block = IimBlock({{25, "sea"}});
    TempDir dir;
    for (const auto& name : CorpusFiles({"tiff", "psd", "raw", "malformed"})) {
        SCOPED_TRACE(name);
        const Bytes original = ReadBytes(kCorpus + name);
        for (const auto& located : {iptc::LocateInTIFF(original), iptc::LocateInPSD(original)}) {
            for (const auto& candidate : located.candidates) {
                EXPECT_LE(candidate.offset + candidate.size, original.size());
            }
        }
        static_cast<void>(ReadDatasets(original));
        if (original.empty()) continue;
        for (const bool psd : {false, true}) {
            const std::string copy = dir.File(psd ? "copy.psd" : "copy.tif");
            WriteBytes(copy, original);
            const auto result = psd ? iptc::WritePSD(copy, block) : iptc::WriteTIFF(copy, block);
            const Bytes written = ReadBytes(copy);
            if (result == CIPTC::kSuccess) {
                EXPECT_EQ(ReadDatasets(written), (Datasets{{0, {"2"}}, {25, {"sea"}}}));
            } else {
                EXPECT_EQ(written, original) << "result " << result;
            }
            fs::remove(copy);
        }
    }
    EXPECT_TRUE(fs::is_empty(dir.Path()));
}

// What a document holds apart from its IPTC records: everything around the
// resource section, and every other record.
std::vector<Bytes> PsdPartsBesideIptc(const Bytes& file) {
    iptc::psd::Layout layout;
    EXPECT_EQ(iptc::psd::ReadLayout(file, layout), iptc::psd::Status::kOk);
    std::vector<Bytes> out = {Bytes(file.begin(), file.begin() + layout.sectionLengthOffset),
                              Bytes(file.begin() + layout.sectionEnd, file.end())};
    for (const auto& r : layout.resources) {
        if (r.imageResource && r.id == 0x0404) continue;
        out.emplace_back(file.begin() + r.offset, file.begin() + r.offset + r.extent);
    }
    return out;
}

// Copies of every writable corpus TIFF and document (and the NEF) are read
// by the store, get a changed record (keywords added, a caption with line
// breaks, a dataset no descriptor names) and are written twice. Then our
// reader, exiftool and exiv2 read the same datasets; every value of the TIFF
// directories, and every other part of a document, is unchanged; and there is
// exactly one IPTC entry or record.
class TiffPsdInterop : public ContainerTest {};

TEST_F(TiffPsdInterop, StoreWritesWhatExifToolAndExiv2Read) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    if (!HaveTool("exiftool") || !HaveTool("exiv2")) {
        GTEST_SKIP() << "exiftool and exiv2 are needed (Debian: libimage-exiftool-perl, exiv2)";
    }
    std::vector<WrittenFile> written;
    auto files = CorpusFiles({"tiff", "psd"});
    files.push_back("raw/et_Nikon.nef");
    for (const auto& name : files) {
        if (name.ends_with(".btf")) continue;  // BigTIFF: not written
        SCOPED_TRACE(name);
        const Bytes original = ReadBytes(kCorpus + name);
        const bool psd = IsPsd(original);
        const std::string copy = File(fs::path(name).filename().string());
        WriteBytes(copy, original);

        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError read = m_store.ReadIPTCBlob(copy.c_str(), format);
        ASSERT_TRUE(read == CIPTC::kSuccess || read == CIPTC::kNoIPTCBlock) << read;
        EXPECT_EQ(format.nFormat, psd ? CIPTC::kFormatPSD : CIPTC::kFormatTIFF);
        EXPECT_EQ(format.bBigEndian, psd || original[0] == 'M');  // an "II" TIFF reports its own order
        m_store.SetField(25, CVLProperty(std::string("vliptc")), false);
        m_store.SetField(25, CVLProperty(std::string("interop")), false);
        m_store.SetField(120, CVLProperty(std::string("first line\r\nsecond line\r\n\r\nlast")), true);
        m_store.SetField(199, CVLProperty(std::string("no descriptor names 2:199")), true);
        Datasets expected = FromStore(m_store);
        expected[0] = {"2"};
        for (int pass = 0; pass < 2; ++pass) {
            ASSERT_EQ(m_store.WriteIPTCBlob(copy.c_str(), format), CIPTC::kSuccess);
        }
        ASSERT_EQ(m_store.ReadIPTCBlob(copy.c_str(), format), CIPTC::kSuccess);
        for (const auto& d : Differences(FromStore(m_store), expected)) ADD_FAILURE() << "reread: " << d;

        const Bytes result = ReadBytes(copy);
        if (psd) {
            EXPECT_EQ(PsdPartsBesideIptc(result), PsdPartsBesideIptc(original));
            EXPECT_EQ(iptc::LocateInPSD(result).candidates.size(), 1u);
        } else {
            EXPECT_EQ(TiffValues(result), TiffValues(original));
            EXPECT_EQ(IptcEntries(result).size(), 1u);
        }
        written.push_back({name, copy, format.nFormat, expected});
    }
    ASSERT_EQ(written.size(), 27u);
    for (const auto& problem : ToolsReadBack(written)) ADD_FAILURE() << problem;
}

}  // namespace
}  // namespace vliptc::test
