#pragma once

// The fields the library knows by name, in the order in which the catalogue
// creates them (its order before a read sorts it for display).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vliptc::exif {

struct CatalogueRow {
    std::uint16_t tag;
    std::uint8_t type;  // the TIFF type the catalogue expects
    const char* name;
};

inline constexpr std::size_t kCatalogueSize = 105;

// The 105 rows, in creation order.
std::span<const CatalogueRow> CatalogueRows() noexcept;

// The creation-order position of a known tag; nullopt for tags the catalogue
// does not name.
std::optional<std::size_t> CataloguePosition(std::uint32_t tag) noexcept;

// The three date-and-time fields (group 0) and the GPS fields (tags 0 to 26,
// group 2).
bool IsDateTag(std::uint32_t tag) noexcept;
bool IsGPSTag(std::uint32_t tag) noexcept;

}  // namespace vliptc::exif
