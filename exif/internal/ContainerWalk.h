#pragma once

// The container walk of the EXIF reader: recognises a file by its first
// bytes and finds the TIFF data that carries its EXIF directories.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ExifStream.h"
#include "exif/internal/IFDParser.h"

namespace vliptc::exif {

// One Photoshop image resource block. Its data is a view into the mapped
// file: the EXIF resource is parsed in place, nothing is copied.
struct ImageResource {
    std::uint32_t nSize = 0;  // length of the data
    std::uint16_t nID = 0;    // resource identifier
    std::span<const std::uint8_t> data;
    std::string strName;
};

class ContainerWalk {
public:
    // fields: the catalogue, in creation order (see IFDParser).
    ContainerWalk(std::span<const std::uint8_t> file, std::vector<CVLEXIF::SField>& fields);

    // Reads the whole file: TIFF ("II"/"MM"), Photoshop ("8BPS" version 1)
    // or JPEG (0xFF 0xD8); errFormat for anything else.
    CVLEXIF::EError ParseEXIF();

    // The byte order of the TIFF data last parsed.
    bool Motorola() const noexcept { return m_stream.Motorola(); }

private:
    // JPEG: the marker walk up to the first APP1, and that segment.
    CVLEXIF::EError WalkJpegMarkers();
    std::uint8_t NextMarker();
    CVLEXIF::EError SkipVar();
    CVLEXIF::EError ProcessEXIF();

    // Photoshop: the image resources up to the EXIF resource.
    CVLEXIF::EError HandlePSDEXIF();
    bool ReadIRB(ImageResource& block);
    std::string ReadPString();

    ExifStream m_stream;
    IFDParser m_ifd;
};

}  // namespace vliptc::exif
