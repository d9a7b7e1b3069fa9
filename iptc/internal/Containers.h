#pragma once

// The container layer: where the IPTC data sits inside a JPEG, TIFF or
// Photoshop file or a trailer-form file, and how a new block is put back.
// Readers only locate the data (the store decodes it); writers take the
// encoded block and replace the file safely.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::iptc {

// Where a reader found IPTC data, as offsets into the mapped file.
struct BlockLocation {
    enum class Kind {
        kImageResources,  // a run of "8BIM" resources to walk for resource 0x0404
        kIIM,             // bare IIM datasets
    };
    Kind kind = Kind::kImageResources;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

struct LocateResult {
    CIPTC::EError error = CIPTC::kSuccess;
    bool bigEndian = true;                  // the container's byte order (SIPTCFormatInfo)
    std::vector<BlockLocation> candidates;  // in file order; decode until one succeeds
    // The bytes from here on played no part in the result: a locator that
    // stops early (the JPEG walk at the start of scan) says where, so that the
    // same result holds for any longer file with these first bytes.
    std::uint64_t examined = UINT64_MAX;
};

LocateResult LocateInJPEG(std::span<const std::uint8_t> file);
LocateResult LocateInTIFF(std::span<const std::uint8_t> file);
LocateResult LocateInPSD(std::span<const std::uint8_t> file);
LocateResult LocateInTrailer(std::span<const std::uint8_t> file);

CIPTC::EError WriteJPEG(const std::string& path, std::span<const std::uint8_t> block);
CIPTC::EError WritePSD(const std::string& path, std::span<const std::uint8_t> block);
CIPTC::EError WriteTIFF(const std::string& path, std::span<const std::uint8_t> block);
CIPTC::EError WriteTrailer(const std::string& path, std::span<const std::uint8_t> block);

}  // namespace vliptc::iptc
