#pragma once

// The date writer: walks a writable mapping of an image file as the reader
// does and overwrites, in place, the text of the date-and-time fields the
// file already carries with the catalogue's values. The file keeps its size
// and layout; no tag is ever added.
//
// The walk differs from the reader's in these points:
//   - a TIFF file, and the data of a Photoshop file's EXIF resource, are
//     patched from their TIFF header;
//   - in a JPEG, APP12 and comment segments are skipped by their length
//     (the reader scans through them); the first APP1 must be EXIF, else the
//     walk ends with errNoEXIF;
//   - a bad TIFF header is errFormat (errNoEXIF inside a JPEG).
//
// For each of "Date and time" (306), "Date and time Original" (36867) and
// "Date and time Digitized" (36868), in that order: the tag is searched as
// IFDParser::FindTag searches (the directory chain and the EXIF and GPS
// directories it points to); a field the file does not carry is skipped. The
// catalogue's record for the tag is written when its first value is text of
// exactly 19 characters ("2002:05:17 14:30:00"): 20 bytes at the value's
// offset become the text and a zero. Anything else is skipped silently.
//
// Beyond those rules, the writer refuses (skips) an entry that
//   - is not of type ASCII: the date fields are ASCII, and the 20 bytes are
//     only known to be the entry's own data for a one-byte type (an entry of
//     an unknown type keeps its value in the directory itself);
//   - counts fewer than 20 characters: the text and its zero would spill
//     over whatever follows the value;
//   - has a value whose 20 bytes would pass the end of the file.
//
// The writes are collected during the walk and made together once it has
// succeeded, so a walk that fails (or throws) leaves the file as it was.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ContainerWalk.h"

namespace vliptc::exif {

class DatePatch : private ContainerWalk {
public:
    // file: the writable mapping of the whole file (up to the end the reader
    // uses). exif: the catalogue whose date fields are written; it is not
    // changed.
    DatePatch(std::span<std::uint8_t> file, CVLEXIF& exif);

    // The whole write walk. errOK whether or not anything was written; the
    // other codes as the reader's walk gives them (see above).
    CVLEXIF::EError ParseEXIFforWrite();

    using ContainerWalk::Motorola;

private:
    // One pending write: the text and a zero at offset.
    struct DateWrite {
        std::uint64_t offset = 0;
        std::string text;
    };

    // At an APP1 length field (atTiffHeader false) or a TIFF header: checks
    // the identifier and the header, then plans the date writes.
    CVLEXIF::EError ProcessEXIF(bool atTiffHeader) override;
    CVLEXIF::EError ProcessEXIFforWrite(bool atTiffHeader);

    std::span<std::uint8_t> m_file;
    const CVLEXIF& m_exif;
    std::vector<DateWrite> m_writes;
};

}  // namespace vliptc::exif
