// Every file-system step of the TIFF writer and of the Photoshop writer's
// rebuilding path made to fail in turn: the original bytes stay at the path.

#include <gtest/gtest.h>

#include "iptc/internal/Containers.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

using platform::fault::Step;

TEST(TiffPsdFaults, EveryFailingStepLeavesTheOriginal) {
    const Bytes block = IimBlock({{25, "sea"}});
    TiffMaker tiff(false);
    const auto ifd = tiff.Reserve(3);
    const auto strip = tiff.Append(Bytes(8, 0x42));
    tiff.Fill(ifd, {tiff.Long(256, {2}), tiff.Long(273, {strip}), tiff.Long(279, {8})});
    tiff.SetFirstDirectory(ifd);
    const struct {
        const char* name;
        Bytes file;
        CIPTC::EError (*write)(const std::string&, std::span<const std::uint8_t>);
    } containers[] = {
        {"image.tif", tiff.Data(), iptc::WriteTIFF},
        {"image.psd", MakePsd({Resource(0x03ED, {1, 2})}), iptc::WritePSD},  // no IPTC: rebuilt
    };
    for (const auto& container : containers) {
        TempDir dir;
        const std::string path = dir.File(container.name);
        platform::fault::ScopedReset reset;
        ExpectEveryFailingStepKeepsTheOriginal(path, container.file,
                                               [&] { return container.write(path, block); });
    }
}

// The in-place path of the Photoshop writer takes no file-system step at all:
// with every step armed to fail, it still succeeds and leaves nothing beside
// the document (and, having no backup, nothing to roll back to).
TEST(TiffPsdFaults, InPlaceRewriteUsesNoFileSystemStep) {
    TempDir dir;
    const std::string path = dir.File("image.psd");
    const Bytes before = MakePsd({Resource(0x0404, Bytes(64, 0))});
    WriteBytes(path, before);
    platform::fault::ScopedReset reset;
    for (auto step : {Step::Create, Step::Write, Step::Rename, Step::Remove, Step::Resize}) {
        platform::fault::FailNth(step, 1);
    }
    EXPECT_EQ(iptc::WritePSD(path, IimBlock({{25, "sea"}})), CIPTC::kSuccess);
    EXPECT_EQ(ReadBytes(path).size(), before.size());
    EXPECT_EQ(Listing(dir.Path()), std::set<std::string>{"image.psd"});
}

}  // namespace
}  // namespace vliptc::test
