#pragma once

// Shared pieces of the container fuzz targets: decoding what a reader
// located, and a writer harness that writes into a fuzzed file in a private
// temporary folder and checks that the file is either untouched or replaced
// by one that reads back.

#include <cstddef>
#include <cstdint>
#include <cstdio>
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
#include "iptc/internal/IPTCReader.h"

namespace vliptc::fuzz {

class Store : public CIPTC {
public:
    using CIPTC::DecodeIIM;
    using CIPTC::DecodeImageResources;
};

inline void Check(bool condition) {
    if (!condition) std::abort();
}

// Decodes the located candidates in order, as ReadIPTCBlob does; every
// location must lie inside the file.
inline CIPTC::EError DecodeFirst(std::span<const std::uint8_t> file, const iptc::LocateResult& located, Store& store) {
    for (const auto& location : located.candidates) {
        const auto region = bytes::Slice(file, location.offset, location.size);
        Check(region.has_value());
        CIPTCReader reader(*region, true);
        const CIPTC::EError result = location.kind == iptc::BlockLocation::Kind::kIIM
                                         ? store.DecodeIIM(reader, region->size())
                                         : store.DecodeImageResources(reader, region->size());
        if (result == CIPTC::kSuccess) return result;
    }
    return CIPTC::kNoIPTCBlock;
}

// A block with the record version and one keyword whose length the input's
// last byte chooses, so that blocks of many sizes meet the containers.
inline std::vector<std::uint8_t> BlockFor(std::span<const std::uint8_t> data) {
    const std::size_t length = data.empty() ? 4 : std::size_t{data.back()} * 8 + 4;
    std::vector<std::uint8_t> block{0x1C, 0x02, 0x00, 0x00, 0x02, 0x00, 0x02, 0x1C, 0x02, 0x19};
    block.push_back(static_cast<std::uint8_t>(length >> 8));
    block.push_back(static_cast<std::uint8_t>(length & 0xFF));
    block.insert(block.end(), length, 'k');
    if (block.size() % 2 != 0) block.push_back(0);
    return block;
}

inline const std::string& Folder() {
    static const std::string folder = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "vliptc-fuzz-XXXXXX").string();
        Check(::mkdtemp(pattern.data()) != nullptr);
        return pattern + "/";
    }();
    return folder;
}

inline std::vector<std::uint8_t> Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Writes data to a file, runs the writer on it, and checks the outcome: on
// success the located block decodes and holds the keyword; on failure the
// bytes are the input's. The folder holds nothing else afterwards.
template <typename Writer, typename Locator>
void RunWriter(const std::uint8_t* data, std::size_t size, const char* name, Writer write, Locator locate) {
    const std::span<const std::uint8_t> input(data, size);
    const std::string path = Folder() + name;
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        Check(static_cast<bool>(out));
    }
    const std::vector<std::uint8_t> block = BlockFor(input);
    const CIPTC::EError result = write(path, std::span<const std::uint8_t>(block));
    const std::vector<std::uint8_t> after = Slurp(path);
    if (result == CIPTC::kSuccess) {
        Store store;
        Check(DecodeFirst(after, locate(std::span<const std::uint8_t>(after)), store) == CIPTC::kSuccess);
        std::vector<CVLProperty> keywords;
        Check(store.GetField(25, keywords) && keywords.size() == 1);
        Check(keywords.front().String().size() == std::size_t{block[10]} * 256 + block[11]);
    } else {
        Check(after.size() == size && std::equal(after.begin(), after.end(), data));
    }
    std::size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(Folder())) ++entries;
    Check(entries == 1);  // no backup or temporary file left behind
}

}  // namespace vliptc::fuzz
