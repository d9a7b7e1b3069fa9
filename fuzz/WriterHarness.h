#pragma once

// The check shared by the writer fuzz targets: the bytes become a file in a
// private temporary folder, a container writer puts an IPTC block into it,
// and then either
//   - the writer failed and the file holds exactly the input, or
//   - it succeeded and the container reader's first candidate holds the block;
// and nothing but the file is left in the folder (no temporary file, no backup).
// The block's size comes from the input's size, so that both small and large
// blocks meet every file (the Photoshop writer's in-place path needs room).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "host/ByteOrder.h"
#include "iptc/IPTC.h"
#include "iptc/internal/Containers.h"

namespace fuzzing {

inline void Check(bool condition) {
    if (!condition) std::abort();
}

// A folder of our own, on a memory file system when there is one (the
// writers flush their files to disk), removed when the process ends.
inline const std::string& Folder() {
    static const struct TempFolder {
        TempFolder() {
            const std::filesystem::path base = std::filesystem::is_directory("/dev/shm")
                                                   ? "/dev/shm"
                                                   : std::filesystem::temp_directory_path();
            std::string pattern = (base / "vliptc-fuzz-XXXXXX").string();
            Check(mkdtemp(pattern.data()) != nullptr);
            path = pattern + "/";
        }
        ~TempFolder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::string path;
    } folder;
    return folder.path;
}

// Version dataset, then keywords until the block has about size bytes.
inline std::vector<std::uint8_t> Block(std::size_t size) {
    std::vector<std::uint8_t> block = {0x1C, 0x02, 0x00, 0x00, 0x02, 0x00, 0x02};
    while (block.size() + 8 <= size) block.insert(block.end(), {0x1C, 0x02, 0x19, 0x00, 0x03, 's', 'e', 'a'});
    if (block.size() % 2 != 0) block.push_back(0);
    return block;
}

using Writer = CIPTC::EError (*)(const std::string&, std::span<const std::uint8_t>);
using Locator = vliptc::iptc::LocateResult (*)(std::span<const std::uint8_t>);

inline void WriteAndCheck(const std::uint8_t* data, std::size_t size, const char* name, Writer write,
                          Locator locate) {
    static constexpr std::size_t kBlockSizes[] = {8, 16, 120, 600};
    const std::string path = Folder() + name;
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        Check(static_cast<bool>(out));
    }
    const auto block = Block(kBlockSizes[size % 4]);
    const auto result = write(path, block);

    std::ifstream in(path, std::ios::binary);
    const std::vector<std::uint8_t> after{std::istreambuf_iterator<char>(in),
                                          std::istreambuf_iterator<char>()};
    if (result == CIPTC::kSuccess) {
        const auto located = locate(after);
        Check(located.error == CIPTC::kSuccess && !located.candidates.empty());
        const auto region = vliptc::bytes::Slice(after, located.candidates.front().offset, block.size());
        Check(region && std::equal(block.begin(), block.end(), region->begin()));
    } else {
        Check(after == std::vector<std::uint8_t>(data, data + size));
    }
    std::filesystem::remove(path);
    Check(std::filesystem::is_empty(Folder()));
}

}  // namespace fuzzing
