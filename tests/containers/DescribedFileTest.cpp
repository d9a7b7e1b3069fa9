// A described file written through a real temporary file, against the same
// file put together in memory: pieces and patches placed on and across the
// edges of the 1 MiB chunks it is written in.

#include <gtest/gtest.h>

#include "iptc/internal/DescribedFile.h"
#include "platform/MappedFile.h"
#include "platform/OutputFile.h"
#include "tests/containers/ContainerSupport.h"

namespace vliptc::test {
namespace {

constexpr std::uint64_t kMiB = 1024 * 1024;

TEST(DescribedFile, WritesPiecesAndPatchesAcrossChunkEdges) {
    TempDir dir;
    Bytes original(3 * kMiB + 5);
    for (std::size_t i = 0; i < original.size(); ++i)
        original[i] = static_cast<std::uint8_t>(i * 131 + i / 4099);
    WriteBytes(dir.File("original"), original);
    platform::MappedFile map;
    ASSERT_EQ(map.Open(dir.File("original"), platform::MappedFile::Access::ReadOnly),
              platform::MappedFile::Status::Ok);

    iptc::DescribedFile file;
    Bytes expected;
    auto keep = [&](std::uint64_t from, std::uint64_t to) {
        file.AppendOriginal(from, to);
        expected.insert(expected.end(), original.begin() + from, original.begin() + to);
    };
    const Bytes own(5000, 0xA5);
    keep(0, kMiB - 3);
    file.AppendBytes(own);
    expected.insert(expected.end(), own.begin(), own.end());
    file.AppendZeros(7);
    expected.resize(expected.size() + 7, 0);
    keep(kMiB, kMiB);  // empty: adds nothing
    keep(kMiB, original.size());
    file.AppendZeros(kMiB - 11);
    expected.resize(expected.size() + kMiB - 11, 0);
    // Whole chunks of the writer's own bytes go out as they are, unless a
    // patch falls in them; the end falls inside the last chunk.
    Bytes big(3 * kMiB);
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<std::uint8_t>(i / 1021);
    file.AppendBytes(big);
    expected.insert(expected.end(), big.begin(), big.end());
    ASSERT_EQ(file.Size(), expected.size());

    // Added out of order; across, ending on and starting on chunk edges, and
    // at both ends of the file.
    const std::uint64_t edges[] = {
        2 * kMiB, kMiB - 2, 0, 5 * kMiB + 100, 2 * kMiB - 12, 3 * kMiB - 1, expected.size() - 12};
    std::uint8_t value = 1;
    for (const std::uint64_t at : edges) {
        const Bytes patch(12, value++);
        file.Patch(at, std::span(patch).first(at == 0 ? 2 : 12));
        std::copy_n(patch.begin(), at == 0 ? 2 : 12, expected.begin() + static_cast<std::ptrdiff_t>(at));
    }

    platform::OutputFile out;
    ASSERT_TRUE(out.CreateUnique(dir.Path(), "new"));
    ASSERT_TRUE(file.WriteTo(out, map));
    ASSERT_TRUE(out.Close());
    EXPECT_TRUE(ReadBytes(out.Path()) == expected);
}

}  // namespace
}  // namespace vliptc::test
