#pragma once

// Builds, in memory, the TIFF file that holds a new IPTC block: the complete
// bytes that the TIFF writer then swaps in for the old file.

#include <cstdint>
#include <span>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::iptc::tiff {

// Every IPTC entry that we write claims this many bytes beyond its block, so
// that a reader sees room for the record to grow. The bytes are written (as
// zeros) behind the block: the entry's count must never point past the end of
// the file.
inline constexpr std::uint32_t kIptcReserveBytes = 1024;

struct Rewrite {
    CIPTC::EError error = CIPTC::kSuccess;
    std::vector<std::uint8_t> bytes;  // the new file when error is kSuccess
    std::uint64_t blockOffset = 0;    // where the block starts in it
    bool inserted = false;            // a new entry was added to the first directory
};

// The file with block as its IPTC-NAA (33723) value. kUnsupportedFormat for a
// file that is not a classic TIFF, whose directories cannot be read, or that
// could not take the block without damage (see TiffRewrite.cpp).
//
// An existing entry (the first one on the chain of directories) is rewritten
// in place; its old value area is cleared. Otherwise the first directory gains
// the entry and every offset behind the insertion point moves by 12 bytes.
// Either way the block goes to the end of the file at an even offset,
// followed by kIptcReserveBytes zero bytes, and the entry reads: type BYTE,
// count = block size + kIptcReserveBytes, offset = the block's position.
Rewrite BuildTiffWithBlock(std::span<const std::uint8_t> file, std::span<const std::uint8_t> block);

}  // namespace vliptc::iptc::tiff
