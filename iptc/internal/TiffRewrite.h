#pragma once

// Describes the TIFF file that holds a new IPTC block (the ranges of the old
// file, the new bytes and the patches that make it), for the TIFF writer to
// write out beside the old file, check and swap in.

#include <cstdint>
#include <span>

#include "iptc/IPTC.h"
#include "iptc/internal/DescribedFile.h"
#include "iptc/internal/TiffLayout.h"

namespace vliptc::iptc::tiff {

// Every IPTC entry that we write claims this many bytes beyond its block, so
// that a reader sees room for the record to grow. The bytes are written (as
// zeros) behind the block: the entry's count must never point past the end of
// the file.
inline constexpr std::uint32_t kIptcReserveBytes = 1024;

struct Rewrite {
    CIPTC::EError error = CIPTC::kSuccess;
    DescribedFile file;             // the new file when error is kSuccess
    std::uint64_t blockOffset = 0;  // where the block starts in it
    Walk before;                    // the old file's directories
};

// The file with block as its IPTC-NAA (33723) value. kUnsupportedFormat for a
// file that is not a classic TIFF, whose directories cannot be read, or that
// could not take the block without damage (see TiffRewrite.cpp). The
// description refers to block, which must outlive it.
//
// An existing entry (the first one on the chain of directories) is rewritten
// in place; its old value area is cleared. Otherwise the first directory gains
// the entry and every offset behind the insertion point moves by 12 bytes.
// Either way the block goes to the end of the file at an even offset,
// followed by kIptcReserveBytes zero bytes, and the entry reads: type BYTE,
// count = block size + kIptcReserveBytes, offset = the block's position.
Rewrite DescribeTiffWithBlock(std::span<const std::uint8_t> file, std::span<const std::uint8_t> block);

// True when written, the new file as written from rewrite, shows the old
// directories with the same entries (apart from the IPTC entry), and its first
// IPTC entry holds block at rewrite.blockOffset: whatever a malformed file
// looked like, the writer never puts a file in place that its own reader
// cannot read back.
bool ShowsBlockAndOldDirectories(const Rewrite& rewrite, std::span<const std::uint8_t> written,
                                 std::span<const std::uint8_t> block);

}  // namespace vliptc::iptc::tiff
