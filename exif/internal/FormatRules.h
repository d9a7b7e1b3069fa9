#pragma once

// The viewer's text for the EXIF fields that have a rule of their own: the
// APEX values converted to what a photographer reads, the exposure-time forms,
// the flash bit and the enumerations. Every other field is shown by joining
// its values (CVLEXIF::GetFormattedField).

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "host/VLProperty.h"
#include "platform/NumberFormat.h"

namespace vliptc::exif {

// Gives the regional number format; asked at most once per field, and only by
// the rules that write a number in it.
using NumberFormatSource = std::function<platform::NumberFormat()>;

// The text of the field with the tag, from its first value: read as a double
// for the rational fields, as a 32-bit integer for the others. nullopt for a
// tag without a rule of its own. Not trimmed.
std::optional<std::string> FormatByOwnRule(std::uint32_t tag, const CVLProperty& first,
                                           const NumberFormatSource& numberFormat);

}  // namespace vliptc::exif
