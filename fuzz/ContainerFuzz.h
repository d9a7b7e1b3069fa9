#pragma once

// The checks shared by the container fuzz targets.
//
// A reader target (CheckReader) takes the bytes as a file of its container,
// locates the IPTC places and decodes each the way the store decodes it:
// every candidate lies inside the file, and the results are the reader's and
// the decoder's codes.
//
// A writer target (CheckWriter) makes the bytes a file in a private temporary
// folder and lets a container writer put an IPTC block into it. Then either
//   - the writer failed and the file holds exactly the input, or
//   - it succeeded, the first candidate that decodes holds the block's
//     keywords, and a first candidate of bare IIM data starts with the block;
// and nothing but the file is left in the folder (no temporary file, no
// backup). The block's size comes from the input, so that small and large
// blocks meet every file (the Photoshop writer's in-place path needs room,
// the trailer writer's moving path a block larger than the chunk).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "host/ByteOrder.h"
#include "iptc/IPTC.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/IPTCReader.h"

namespace vliptc::fuzz {

using Locator = iptc::LocateResult (*)(std::span<const std::uint8_t>);
using Writer = CIPTC::EError (*)(const std::string&, std::span<const std::uint8_t>);

class Store : public CIPTC {
public:
    using CIPTC::DecodeIIM;
    using CIPTC::DecodeImageResources;
};

inline void Check(bool condition) {
    if (!condition) std::abort();
}

// Decodes one location (it must lie inside the file) into store.
inline CIPTC::EError Decode(std::span<const std::uint8_t> file, const iptc::BlockLocation& location,
                            Store& store) {
    const auto region = bytes::Slice(file, location.offset, location.size);
    Check(region.has_value());
    CIPTCReader reader(*region, true);
    const CIPTC::EError result = location.kind == iptc::BlockLocation::Kind::kIIM
                                     ? store.DecodeIIM(reader, region->size())
                                     : store.DecodeImageResources(reader, region->size());
    Check(result == CIPTC::kSuccess || result == CIPTC::kUnsupportedFormat);
    return result;
}

// Locates with locate and decodes every candidate, each into a store of its own.
inline iptc::LocateResult CheckReader(std::span<const std::uint8_t> file, Locator locate) {
    const iptc::LocateResult located = locate(file);
    Check(located.error == CIPTC::kSuccess || located.error == CIPTC::kNoIPTCBlock ||
          located.error == CIPTC::kUnsupportedFormat);
    Check((located.error == CIPTC::kSuccess) == !located.candidates.empty());
    for (const auto& location : located.candidates) {
        Store store;
        static_cast<void>(Decode(file, location, store));
    }
    return located;
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
            Check(::mkdtemp(pattern.data()) != nullptr);
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

// The record version, then the keyword "sea" until the block has about size
// bytes, padded to even size.
struct FuzzBlock {
    std::vector<std::uint8_t> bytes{0x1C, 0x02, 0x00, 0x00, 0x02, 0x00, 0x02};
    std::size_t keywords = 0;
};

inline FuzzBlock BlockOfSize(std::size_t size) {
    FuzzBlock block;
    for (; block.bytes.size() + 8 <= size; ++block.keywords) {
        block.bytes.insert(block.bytes.end(), {0x1C, 0x02, 0x19, 0x00, 0x03, 's', 'e', 'a'});
    }
    if (block.bytes.size() % 2 != 0) block.bytes.push_back(0);
    return block;
}

inline void CheckWriter(const std::uint8_t* data, std::size_t size, const char* name, Writer write,
                        Locator locate) {
    static constexpr std::size_t kBlockSizes[] = {8, 16, 120, 600, 2100};
    const std::string path = Folder() + name;
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        Check(static_cast<bool>(out));
    }
    const FuzzBlock block = BlockOfSize(kBlockSizes[size % std::size(kBlockSizes)]);
    const CIPTC::EError result = write(path, block.bytes);

    std::ifstream in(path, std::ios::binary);
    const std::vector<std::uint8_t> after{std::istreambuf_iterator<char>(in),
                                          std::istreambuf_iterator<char>()};
    if (result == CIPTC::kSuccess) {
        const iptc::LocateResult located = CheckReader(after, locate);
        Check(located.error == CIPTC::kSuccess);
        const iptc::BlockLocation& first = located.candidates.front();
        if (first.kind == iptc::BlockLocation::Kind::kIIM) {
            const auto region = bytes::Slice(after, first.offset, block.bytes.size());
            Check(region && std::equal(block.bytes.begin(), block.bytes.end(), region->begin()));
        }
        const auto decodes = std::find_if(located.candidates.begin(), located.candidates.end(),
                                          [&](const iptc::BlockLocation& location) {
                                              Store probe;
                                              return Decode(after, location, probe) == CIPTC::kSuccess;
                                          });
        Check(decodes != located.candidates.end());
        Store store;
        static_cast<void>(Decode(after, *decodes, store));
        std::vector<CVLProperty> keywords;
        static_cast<void>(store.GetField(25, keywords));
        Check(keywords.size() == block.keywords);
        for (const CVLProperty& keyword : keywords) Check(keyword.String() == "sea");
    } else {
        Check(after == std::vector<std::uint8_t>(data, data + size));
    }
    std::filesystem::remove(path);
    Check(std::filesystem::is_empty(Folder()));
}

}  // namespace vliptc::fuzz
