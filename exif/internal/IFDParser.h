#pragma once

// The TIFF directory parser of the EXIF reader: the chain of IFDs at a TIFF
// header, the EXIF and GPS directories they point to, and the decoding of
// each entry into the values of its catalogue field.

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "exif/EXIF.h"
#include "exif/internal/ExifStream.h"

namespace vliptc::exif {

// Where a tag's value lies in the file (FindTag).
struct TagLocation {
    CVLEXIF::SIFDEntry entry;
    std::uint64_t valueOffset = 0;  // from the start of the file
};

// Size in bytes of one value of a TIFF type; 0 for type 0 and types above 12.
std::uint32_t TypeSize(std::uint32_t type) noexcept;

class IFDParser {
public:
    // fields: the catalogue the values go to.
    IFDParser(ExifStream& stream, std::vector<CVLEXIF::SField>& fields);

    // At the stream position, a TIFF header: sets the TIFF start and the byte
    // order (big-endian unless the mark is "II"). nullopt for a mark other
    // than "II" or "MM", a magic other than 42, or a header cut short.
    std::optional<CVLEXIF::STIFFHeader> ReadTIFFHeader();

    // At the stream position, a TIFF header (ReadTIFFHeader), then the chain
    // of directories:
    //   errFormat  bad byte-order mark or magic; a chain that ends without
    //              having met a catalogued tag or an EXIF/GPS pointer; a link
    //              past the end of the file (values read so far are kept);
    //   errOK      otherwise, and when the first directory lies past the end
    //              (nothing stored).
    CVLEXIF::EError HandleEXIFNormal();

    // The EXIF and GPS directories at a file offset: every entry is stored
    // (the GPS ones marked bGPS); pointers inside them are not followed and
    // no link follows them.
    void ParseExifAttr(std::uint64_t directory);
    void ParseExifGPS(std::uint64_t directory);

    // The 12-byte entry at a file offset; nullopt when it passes the end.
    std::optional<CVLEXIF::SIFDEntry> ReadIFD(std::uint64_t offset) const;

    // Stores the entry's values in the field with the tag (an "Unknown" record
    // is appended for a tag the catalogue lacks), unless the field already
    // holds values. tiff is the file offset the entry's data offset counts
    // from. An entry whose data passes the end of the file, or that would pass
    // the read's value or byte budget, is treated as absent.
    void SetField(std::uint32_t tag, std::uint64_t tiff, const CVLEXIF::SIFDEntry& entry, bool gps);

    // Searches the chain at the TIFF start for the tag, following EXIF and GPS
    // pointers one level: the entry and where its value lies (its data, or
    // the entry's value field when the value fits in 4 bytes). nullopt when
    // the tag is not found or its value passes the end of the file.
    std::optional<TagLocation> FindTag(std::uint32_t tag, const CVLEXIF::STIFFHeader& header) const;

private:
    CVLEXIF::SField* Find(std::uint32_t tag);
    CVLEXIF::SField& AppendUnknown(std::uint32_t tag);
    // Counts one more directory against the cap; false when it is spent.
    bool CountDirectory();
    void ParseSubDirectory(std::uint64_t directory, bool gps);
    // The values of an entry; false when the entry is to be treated as absent.
    bool DecodeValues(std::uint32_t tag, std::uint64_t tiff, const CVLEXIF::SIFDEntry& entry,
                      std::vector<CVLProperty>& values);
    // Takes values and bytes from the read's budget; false (nothing taken)
    // when they do not fit.
    bool Spend(std::uint64_t values, std::uint64_t bytes);

    ExifStream& m_stream;
    std::vector<CVLEXIF::SField>& m_fields;
    bool m_creationOrder = false;                            // known tags sit at their creation position
    std::unordered_map<std::uint32_t, std::size_t> m_index;  // other records: tag -> catalogue index
    std::vector<std::uint64_t> m_chain;                      // chain directories walked
    std::uint32_t m_directories = 0;
    std::uint64_t m_valuesLeft;
    std::uint64_t m_bytesLeft;
};

}  // namespace vliptc::exif
