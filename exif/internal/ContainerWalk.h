#pragma once

// The container walk of the EXIF reader and of the date writer: recognises
// a file by its first bytes and finds the TIFF data that carries its EXIF
// directories.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ExifStream.h"
#include "exif/internal/IFDParser.h"

namespace vliptc::exif {

// One Photoshop image resource block, its data left in the file: the EXIF
// resource is parsed in place, nothing is copied.
struct ImageResource {
    std::uint32_t nSize = 0;  // length of the data
    std::uint16_t nID = 0;    // resource identifier
    std::string strName;
};

// The reader's walk. The date writer (DatePatch) walks the same way, with
// its own differences: it skips APP12 and comment segments by their length
// where the reader scans through them, and it patches the TIFF data it finds
// instead of reading it.
class ContainerWalk {
public:
    // fields: the catalogue, in creation order (see IFDParser). start: the
    // first bytes of a file of size bytes, or all of them (see ExifStream).
    ContainerWalk(std::span<const std::uint8_t> start, std::uint64_t size, std::vector<CVLEXIF::SField>& fields);
    virtual ~ContainerWalk() = default;
    ContainerWalk(const ContainerWalk&) = delete;
    ContainerWalk& operator=(const ContainerWalk&) = delete;

    // Walks the whole file: TIFF ("II"/"MM"), Photoshop ("8BPS" version 1)
    // or JPEG (0xFF 0xD8); errFormat for anything else. The JPEG walk ends at
    // the first APP1 segment, errNoEXIF unless its EXIF is processed; a
    // Photoshop file without the EXIF resource is errNoEXIF too.
    CVLEXIF::EError ParseEXIF();

    // The byte order of the TIFF data last parsed.
    bool Motorola() const noexcept { return m_stream.Motorola(); }
    // The walk wanted bytes beyond those it was given (the first such want
    // ended at MissedEnd): what it stored is not to be trusted, and a walk
    // over more of the file will tell.
    bool Missed() const noexcept { return m_stream.Missed(); }
    std::uint64_t MissedEnd() const noexcept { return m_stream.MissedEnd(); }

protected:
    enum class Purpose { kRead, kWrite };
    ContainerWalk(std::span<const std::uint8_t> start, std::uint64_t size, std::vector<CVLEXIF::SField>& fields,
                  Purpose purpose);

    // The EXIF data the walk found, at an APP1 length field (atTiffHeader
    // false) or at a TIFF header (a TIFF file's start, the data of the
    // Photoshop EXIF resource). The reader reads the directories.
    virtual CVLEXIF::EError ProcessEXIF(bool atTiffHeader);

    // At an APP1 length field: skips it and the identifier "Exif" (any case)
    // with its two zero bytes; true at the TIFF header that follows. False,
    // with the position back after the length field, for another identifier
    // or a segment cut short inside its length.
    bool SkipExifIdentifier();

    ExifStream m_stream;
    IFDParser m_ifd;

private:
    // JPEG: the marker walk up to the first APP1.
    CVLEXIF::EError WalkJpegMarkers();
    bool ScansThrough(std::uint8_t code) const;
    std::uint8_t NextMarker();
    CVLEXIF::EError SkipVar();

    // Photoshop: the image resources up to the EXIF resource.
    CVLEXIF::EError HandlePSDEXIF();
    bool ReadIRB(ImageResource& block);
    std::string ReadPString();

    Purpose m_purpose;
};

}  // namespace vliptc::exif
