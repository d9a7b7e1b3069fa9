// Every file-system step of the TIFF writer and of the Photoshop writer's
// rebuilding path made to fail in turn: the original bytes stay at the path.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "iptc/internal/Containers.h"
#include "platform/FaultInjection.h"
#include "tests/support/TempDir.h"
#include "tests/tiffpsd/Crafted.h"

namespace vliptc::test {
namespace {

using platform::fault::Step;
using Writer = CIPTC::EError (*)(const std::string&, std::span<const std::uint8_t>);

std::set<std::string> Names(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

Bytes CraftedTiff() {
    TiffMaker t(false);
    const auto ifd = t.Reserve(3);
    const auto strip = t.Append(Bytes(8, 0x42));
    t.Fill(ifd, {t.Long(256, {2}), t.Long(273, {strip}), t.Long(279, {8})});
    t.SetFirstDirectory(ifd);
    return t.Data();
}

TEST(TiffPsdFaults, EveryFailingStepLeavesTheOriginal) {
    const Bytes block = IimBlock({{25, "sea"}});
    const struct {
        const char* name;
        Bytes file;
        Writer write;
    } containers[] = {
        {"image.tif", CraftedTiff(), iptc::WriteTIFF},
        {"image.psd", MakePsd({{"8BIM", 0x03ED, "", {1, 2}}}), iptc::WritePSD},  // no IPTC: rebuilt
    };
    const struct {
        Step step;
        int n;
        CIPTC::EError expected;
        const char* left;  // a file left beside the image, if any
    } steps[] = {
        {Step::Create, 1, CIPTC::kCannotMapOrWrite, nullptr},  // the temporary file
        {Step::Write, 1, CIPTC::kCannotMapOrWrite, nullptr},
        {Step::Rename, 1, CIPTC::kCannotReplace, nullptr},  // the numbered backup
        {Step::Rename, 2, CIPTC::kCannotReplace,
         nullptr},                                   // the move into place; the guard undoes the backup
        {Step::Remove, 1, CIPTC::kSuccess, ".000"},  // the backup cannot be deleted: it stays
    };
    for (const auto& container : containers) {
        for (const auto& s : steps) {
            SCOPED_TRACE(std::string(container.name) + " step " + std::to_string(static_cast<int>(s.step)) +
                         " #" + std::to_string(s.n));
            TempDir dir;
            const std::string path = dir.File(container.name);
            Save(path, container.file);
            {
                platform::fault::ScopedReset reset;
                platform::fault::FailNth(s.step, s.n);
                EXPECT_EQ(container.write(path, block), s.expected);
            }
            std::set<std::string> expected = {container.name};
            if (s.left != nullptr) expected.insert(std::string(container.name) + s.left);
            EXPECT_EQ(Names(dir.Path()), expected);
            if (s.expected == CIPTC::kSuccess) {
                EXPECT_EQ(ReadDatasets(Load(path)), (Datasets{{0, {"2"}}, {25, {"sea"}}}));
            } else {
                EXPECT_EQ(Load(path), container.file);
            }
        }
    }
}

// The in-place path of the Photoshop writer takes no file-system step at all:
// with every step armed to fail, it still succeeds and leaves nothing beside
// the document (and, having no backup, nothing to roll back to).
TEST(TiffPsdFaults, InPlaceRewriteUsesNoFileSystemStep) {
    TempDir dir;
    const std::string path = dir.File("image.psd");
    const Bytes before = MakePsd({{"8BIM", 0x0404, "", Bytes(64, 0)}});
    Save(path, before);
    platform::fault::ScopedReset reset;
    for (auto step : {Step::Create, Step::Write, Step::Rename, Step::Remove, Step::Resize}) {
        platform::fault::FailNth(step, 1);
    }
    EXPECT_EQ(iptc::WritePSD(path, IimBlock({{25, "sea"}})), CIPTC::kSuccess);
    EXPECT_EQ(Load(path).size(), before.size());
    EXPECT_EQ(Names(dir.Path()), std::set<std::string>{"image.psd"});
}

}  // namespace
}  // namespace vliptc::test
