#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/VLProperty.h"
#include "platform/NumberFormat.h"

// The EXIF data of one image file at a time: a catalogue of the 105 fields the
// library knows by name, plus one record for every unknown tag the file
// carried, filled by LoadFile.
//
// LoadFile reads the file and recognises the container by its first bytes:
// TIFF and TIFF-structured raw files ("II"/"MM"), Photoshop documents ("8BPS",
// resource 1058), JPEG (the first APP1 segment, "Exif"); a ".CRW" raw file is
// read through its ".thm" companion. It walks the chain of TIFF directories
// with the EXIF and GPS directories they point to and stores each entry's
// values in the field with its tag; the first occurrence of a tag wins.
//
// The values keep the reading rules of the application this library serves,
// including those that differ from the EXIF standard:
//   - SHORT, LONG and SLONG values are taken from the entry's value field,
//     never from the data it points to: a SHORT field with several values
//     holds that many copies of the first one (and, past two values, of half
//     of the offset); SHORTs are sign-extended.
//   - Values of at most four bytes are read from the entry's value field as
//     decoded in the file's byte order and laid out least-significant byte
//     first. In little-endian files that is file order; in big-endian files
//     the bytes come reversed (a GPS reference "N" reads as empty text, the
//     GPS version 2.2.0.0 as 0, 0, 2, 2). Only "Exif Version" and "FlashPix
//     Version" are put back in file order.
//   - RATIONAL and SRATIONAL both read numerator and denominator as signed
//     32-bit numbers; a zero denominator gives 0.0.
//   - A BYTE entry of more than 1,000 values is one blob; an entry of 0 or of
//     65,536 or more values stores nothing (the field is still present).
//   - The XP fields are little-endian UTF-16 text, read up to twice the
//     entry's length and stopped at the first zero unit; "User Comment" is
//     UTF-16 when its code is "UNICODE" or "JIS", 8-bit text otherwise.
//   - "File source" and "Scene type" are decimal text of the value field's
//     first byte.
// Text values are Windows-1252 (UTF-16 texts are converted to it).
//
// Beyond the application's rules, every read is bounds-checked: an entry
// whose data would pass the end of the file is absent, a directory whose
// count or link lies past the end ends the chain there, and a chain that
// loops or runs on ends at the first directory met again or at the caps of
// host/Limits.h.
class CVLEXIF {
public:
    // A field's identifier: its tag number in the directory entry. The GPS
    // tags (0 to 26) do not overlap the others, so one number space serves.
    enum EFieldTags : std::uint32_t {
        kGPSVersionID = 0,
        kGPSLatitudeRef = 1,
        kGPSLatitude = 2,
        kGPSLongitudeRef = 3,
        kGPSLongitude = 4,
        kGPSAltitudeRef = 5,
        kGPSAltitude = 6,
        kGPSTimeStamp = 7,
        kGPSSatellites = 8,
        kGPSStatus = 9,
        kGPSMeasureMode = 10,
        kGPSDOP = 11,
        kGPSSpeedRef = 12,
        kGPSSpeed = 13,
        kGPSTrackRef = 14,
        kGPSTrack = 15,
        kGPSImgDirectionRef = 16,
        kGPSImgDirection = 17,
        kGPSMapDatum = 18,
        kGPSDestLatitudeRef = 19,
        kGPSDestLatitude = 20,
        kGPSDestLongitudeRef = 21,
        kGPSDestLongitude = 22,
        kGPSDestBearingRef = 23,
        kGPSDestBearing = 24,
        kGPSDestDistanceRef = 25,
        kGPSDestDistance = 26,
        kImageWidth = 256,
        kImageLength = 257,
        kBitsPerSample = 258,
        kCompression = 259,
        kPhotometricInterpretation = 262,
        kImageDescription = 270,
        kMake = 271,
        kModel = 272,
        kStripOffsets = 273,
        kOrientation = 274,
        kSamplesPerPixel = 277,
        kRowsPerStrip = 278,
        kStripByteCounts = 279,
        kXResolution = 282,
        kYResolution = 283,
        kPlanarConfiguration = 284,
        kResolutionUnit = 296,
        kTransferFunction = 301,
        kSoftware = 305,
        kDateTime = 306,
        kArtist = 315,
        kWhitePoint = 318,
        kPrimaryChromaticities = 319,
        kJPEGInterchangeFormat = 513,
        kJPEGInterchangeFormatLength = 514,
        kYCbCrCoefficients = 529,
        kYCbCrSubSampling = 530,
        kYCbCrPositioning = 531,
        kReferenceBlackWhite = 532,
        kCopyright = 33432,
        kExposureTime = 33434,
        kFNumber = 33437,
        kExposureProgram = 34850,
        kSpectralSensitivity = 34852,
        kISOSpeedRatings = 34855,
        kOECF = 34856,
        kExifVersion = 36864,
        kDateTimeOriginal = 36867,
        kDateTimeDigitized = 36868,
        kComponentsConfiguration = 37121,
        kCompressedBitsPerPixel = 37122,
        kShutterSpeedValue = 37377,
        kApertureValue = 37378,
        kBrightnessValue = 37379,
        kExposureBiasValue = 37380,
        kMaxApertureValue = 37381,
        kSubjectDistance = 37382,
        kMeteringMode = 37383,
        kLightSource = 37384,
        kFlash = 37385,
        kFocalLength = 37386,
        kMakerNote = 37500,
        kUserComment = 37510,
        kSubsecTime = 37520,
        kSubsecTimeOriginal = 37521,
        kSubsecTimeDigitized = 37522,
        kXPTitle = 40091,
        kXPComments = 40092,
        kXPAuthor = 40093,
        kXPKeywords = 40094,
        kXPSubject = 40095,
        kFlashPixVersion = 40960,
        kColorSpace = 40961,
        kPixelXDimension = 40962,
        kPixelYDimension = 40963,
        kRelatedSoundFile = 40964,
        kIFDPointer = 40965,  // the interoperability directory's pointer, kept as a LONG
        kFlashEnergy = 41483,
        kSpatialFrequencyResponse = 41484,
        kFocalPlaneXResolution = 41486,
        kFocalPlaneYResolution = 41487,
        kFocalPlaneResolutionUnit = 41488,
        kSubjectLocation = 41492,
        kExposureIndex = 41493,
        kSensingMethod = 41495,
        kFileSource = 41728,
        kSceneType = 41729,
        kCFAPattern = 41730,
        kNoField = 65535,
    };

    // TIFF value types (the type field of a directory entry).
    enum EValueType : std::uint32_t {
        kTypeByte = 1,
        kTypeAscii = 2,
        kTypeShort = 3,
        kTypeLong = 4,
        kTypeRational = 5,
        kTypeSByte = 6,
        kTypeUndefined = 7,
        kTypeSShort = 8,
        kTypeSLong = 9,
        kTypeSRational = 10,
        kTypeFloat = 11,
        kTypeDouble = 12,
    };

    // Display groups: the three date-and-time fields, the others, GPS.
    enum EGroup : std::int32_t {
        kGroupDate = 0,
        kGroupGeneral = 1,
        kGroupGPS = 2,
    };

    enum EError : std::uint32_t {
        errOK = 0,
        errException = 1,  // an exception was caught (out of memory, a host exception)
        errFormat = 2,     // not a recognised container, bad TIFF header, unusable directory chain
        errNoEXIF = 3,     // a JPEG or Photoshop file without EXIF, or EXIF that could not be parsed
        errOpen = 4,       // the file (or a ".CRW"'s ".thm" companion) cannot be opened or does not exist
        errMap = 5,        // the file could not be mapped (or, reading, its first bytes not read)
        errEmpty = 6,      // the file is empty
        errReadOnly = 7,   // the file cannot be written (write path only)
    };

    // One catalogue entry.
    struct SField {
        std::uint32_t nTag = kNoField;         // the EFieldTags value
        std::uint32_t nType = kTypeUndefined;  // the type the catalogue expects (informational)
        std::string strName;                   // display name; "Unknown" for tags not catalogued
        std::vector<CVLProperty> vValues;      // the values read, in file order
        bool bPresent = false;                 // the tag was met in the file
        std::int32_t nGroup = kGroupGeneral;
        bool bDate = false;      // one of the three date-and-time fields
        bool bGPS = false;       // a GPS field, or a field stored from the GPS directory
        bool bReserved = false;  // never set
    };

    // One 12-byte directory entry as decoded in the file's byte order.
    struct SIFDEntry {
        std::uint16_t nTag = 0;
        std::uint16_t nType = 0;
        std::uint32_t nCount = 0;
        std::uint32_t nValue = 0;  // the value itself (at most 4 bytes) or the offset of the data
    };

    // The 8-byte TIFF header.
    struct STIFFHeader {
        std::uint16_t nByteOrder = 0;  // "II" or "MM"
        std::uint16_t nMagic = 0;      // 42
        std::uint32_t nIFDOffset = 0;  // first directory, from the header's start
    };

    CVLEXIF();
    virtual ~CVLEXIF() = default;
    CVLEXIF(const CVLEXIF&) = default;
    CVLEXIF& operator=(const CVLEXIF&) = default;

    // Forgets the byte order and rebuilds the catalogue: the 105 known fields,
    // empty, in creation order.
    void Reset();

    // Reads the EXIF data of the file into the catalogue (reset first; a
    // ".CRW" without its ".thm" companion returns errOpen before the reset).
    // On success the catalogue is put in display order: group, then name.
    // On failure it keeps what was stored before the failure, unsorted.
    EError LoadFile(const char* path);

    // True when the path's extension is one this library reads or writes
    // (".JPG", ".JPEG", ".JFIF", ".TIF", ".TIFF", ".EXIF", ".THM", ".PSD",
    // ".NEF", ".CRW", any case). LoadFile decides by content instead.
    bool IsSupportedFormat(const char* path) const;

    std::vector<SField>& Fields() noexcept { return m_vFields; }
    const std::vector<SField>& Fields() const noexcept { return m_vFields; }

    // The first record with the tag in the catalogue's current order. The
    // pointer forms point into the catalogue (null when not found); the
    // copying form first resets the record to the no-field state (tag 65535,
    // type 7, no name or values, group 1, bPresent set, other flags clear).
    bool GetField(EFieldTags tag, SField*& field);
    bool GetField(EFieldTags tag, const SField*& field) const;
    bool GetField(EFieldTags tag, SField& field) const;

    // The text to show for a field without values: "72" for "X Resolution"
    // and "Y Resolution"; false (text untouched) for every other field.
    bool GetDefault(const SField* field, std::string& text) const;

    // The fields the last read met (bPresent), in catalogue order: what a
    // listing of a file's EXIF shows, tag, name, type, group and values.
    std::vector<const SField*> PresentFields() const;

    // The byte order of the last TIFF data read (true: big-endian, "MM").
    bool IsMotorola() const noexcept { return bMotorola; }

    // The viewer's text of one field: its own rule for the fields with one
    // (APEX conversions, exposure-time forms, the flash bit, enumerations),
    // taken from the first value; otherwise every value's String() joined by
    // "," (no blank). Trimmed. Apertures, brightness, exposure bias and
    // subject distance are written in the regional number format; a number
    // the formatter refuses (infinity, NaN) shows as nothing ("F" alone).
    // False when the catalogue has no such field, or the field has no values
    // and bUseDefaults is clear (when set, GetDefault answers, untrimmed).
    // text is emptied first.
    bool GetFormattedField(EFieldTags id, std::string& text) const;

    // Expands a template: "#" and a tag number read as "%d" reads it (blanks
    // and a sign may come first) become that field's formatted text (nothing
    // when it has none). Only the digits right after the "#" are used up, so
    // in "# 5" the field 5's text is followed by " 5". Any other character,
    // and a "#" without a number, is copied. Always errOK.
    EError FormatString(const char* templ, std::string& out) const;

    // Where the regional number format comes from: by default the user's
    // locale, read at most once per GetFormattedField call; tests set a
    // fixed one.
    void SetNumberFormatSource(std::function<vliptc::platform::NumberFormat()> source);

    // Writes the three date-and-time fields ("Date and time", "... Original",
    // "... Digitized") from the catalogue back into the file, in place: each
    // one the file already carries, whose first value is text of exactly 19
    // characters, overwrites the 20 bytes of its value (the text and a zero).
    // Nothing else in the file changes; no tag is ever added.
    //   errOK       the walk succeeded, whether or not anything was written
    //   errFormat   not a supported extension, shorter than 128 bytes, not a
    //               recognised container or TIFF header, a host exception
    //   errNoEXIF   a JPEG whose first APP1 is not EXIF, a Photoshop file
    //               without the EXIF resource
    //   errOpen     cannot be opened read-write; a ".CRW" without ".thm"
    //   errMap      cannot be mapped
    //   errReadOnly missing, read-only, a folder
    //   errException any other exception
    // The dates are written only once the whole walk has succeeded, so a
    // failure leaves the file as it was.
    EError StoreFile(const char* path);

    // When set, a field without values is shown by GetDefault. The
    // constructor leaves it clear; the object's user sets it.
    bool bUseDefaults = false;

protected:
    // Empties the catalogue and creates the 105 known fields.
    void SetupFieldVector();
    // Display order: group ascending, then name byte by byte.
    void SortFields();

    std::vector<SField> m_vFields;
    bool bMotorola = false;
    std::function<vliptc::platform::NumberFormat()> m_numberFormatSource;  // empty: the user's locale
};
