#pragma once

// The embedded comments in EXIF data, read and written through libexif.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/imaging/CommentNumbers.h"

namespace vliptc::imaging {

// The comments embedded in the payload of an EXIF APP1 segment ("Exif", two
// zero bytes, the TIFF data); the numbers that are not embedded stay clear,
// as do tags libexif cannot read.
CommentSet ReadExifComments(std::span<const std::uint8_t> payload);

// True when comments holds at least one number that a save embeds.
bool HasEmbeddedComment(const CommentSet& comments);

// The payload of a new EXIF APP1 segment: every tag of payload (empty: no
// EXIF yet), with the embedded comments that are set in comments put in
// place of the tags they name. nullopt when it would not fit one segment or
// memory ran out.
std::optional<std::vector<std::uint8_t>> BuildExifPayload(std::span<const std::uint8_t> payload,
                                                          const CommentSet& comments);

}  // namespace vliptc::imaging
