#pragma once

// The benchmark corpus: generated files that every reader and writer under
// comparison understands, the same bytes on every machine (each file's
// content follows from its number alone).
//
// A JPEG: SOI, APP0 (JFIF), APP1 (Exif: IFD0 with make, model, orientation,
// resolutions, software, date; an EXIF directory with the usual camera
// fields: exposure, aperture, ISO, dates, shutter speed and aperture values,
// bias, metering, flash, focal length, user comment, colour space, pixel
// sizes; a GPS directory; IFD1 with a JPEG thumbnail), APP13 (Photoshop 3.0
// with a resolution resource and an IPTC record 2 of caption, headline,
// by-line, city, country, credit, date created and a dozen keywords), DQT,
// SOF0, DHT, SOS, entropy-coded data (0xFF stuffed) up to the size asked for,
// EOI.
//
// A TIFF: little-endian, one uncompressed RGB strip image filling the size
// asked for, IFD0 with the usual image tags, an IPTC entry (tag 33723) and an
// EXIF directory like the JPEG's.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vliptc::bench {

using Bytes = std::vector<std::uint8_t>;

Bytes MakeJpeg(std::uint32_t number, std::size_t size);
Bytes MakeTiff(std::uint32_t number, std::size_t size);

// The main set's JPEGs are numbered 0 to kMainJpegCount - 1.
inline constexpr std::uint32_t kMainJpegCount = 2000;

// The size of JPEG number `number` of the main set: spread evenly on a log
// scale between 150 KB and 4 MB, in an order fixed by the number.
std::size_t MainJpegSize(std::uint32_t number);

}  // namespace vliptc::bench
