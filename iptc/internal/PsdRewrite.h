#pragma once

// The two ways the Photoshop writer puts a new IPTC block into a document:
// over the old IPTC record, inside its old extent, or by rebuilding the
// image-resource section into a new document.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "iptc/internal/PsdLayout.h"

namespace vliptc::iptc::psd {

// The name that our IPTC records carry ("Caption"), as a Pascal string: the
// length byte and seven letters, eight bytes, so no pad byte follows.
inline constexpr std::uint8_t kRecordName[] = {7, 'C', 'a', 'p', 't', 'i', 'o', 'n'};
// Signature, identifier, that name and the data size.
inline constexpr std::uint64_t kRecordHeaderBytes = 18;
// Zero bytes behind the block in a record of a rebuilt document, counted in
// its data size: the next, slightly larger block still fits in place.
inline constexpr std::uint32_t kRebuildReserveBytes = 256;

// The first IPTC record ("8BIM" 1028) of the document, or null.
const Resource* FindIptcRecord(const Layout& layout);

// The new record for an in-place rewrite of old: the same extent, header as
// above with the data size old extent - 18, the block at the start of the
// data and zero bytes after it. nullopt when the old record's real extent
// in the file (its header with whatever name it has, its data and its pad
// byte) is not longer than the block plus 18 bytes, or is odd.
std::optional<std::vector<std::uint8_t>> InPlaceRecord(const Resource& old,
                                                       std::span<const std::uint8_t> block);

// The whole new document: the header and colour-mode data as they are, the
// resource section rebuilt with every record copied in its order except the
// IPTC records (the new one takes the place of the first and the others are
// dropped; with none, the new one closes the section), the section length
// recomputed, then the rest of the document as it is. nullopt when the
// layout is not complete (records that do not fill the section exactly) or
// the section would outgrow its 32-bit length.
std::optional<std::vector<std::uint8_t>> RebuildDocument(std::span<const std::uint8_t> file,
                                                         const Layout& layout,
                                                         std::span<const std::uint8_t> block);

}  // namespace vliptc::iptc::psd
