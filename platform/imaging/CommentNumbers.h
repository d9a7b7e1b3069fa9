#pragma once

// The imaging library's file comments: 178 entries, numbered 0 to 177, that a
// host fills before a save (LFileSettings::SetComment) and reads back from a
// loaded file (LBitmap::ReadComment).
//
// The numbers below are embedded into a JPEG's EXIF by LBitmap::Save and read
// from it by LBitmap::Load; each is one EXIF tag, whose value is the
// comment's bytes as they stand:
//
//   number  tag                        directory  written as
//   0       Artist (0x013B)            IFD0       ASCII, ending in a zero byte
//   1       Copyright (0x8298)         IFD0       ASCII
//   2       DateTime (0x0132)          IFD0       ASCII, "YYYY:MM:DD HH:MM:SS"
//   3       ImageDescription (0x010E)  IFD0       ASCII
//   4       Make (0x010F)              IFD0       ASCII
//   5       Model (0x0110)             IFD0       ASCII
//   6       Software (0x0131)          IFD0       ASCII
//   7       DocumentName (0x010D)      IFD0       ASCII
//   22      DateTimeOriginal (0x9003)  EXIF       ASCII, "YYYY:MM:DD HH:MM:SS"
//   23      DateTimeDigitized (0x9004) EXIF       ASCII, "YYYY:MM:DD HH:MM:SS"
//   24      SubSecTime (0x9290)        EXIF       ASCII
//   25      SubSecTimeOriginal (0x9291) EXIF      ASCII
//   26      SubSecTimeDigitized (0x9292) EXIF     ASCII
//   37      UserComment (0x9286)       EXIF       UNDEFINED: an 8-byte character
//                                                 code, then the text
//   38      ImageUniqueID (0xA420)     EXIF       ASCII
//
// An ASCII comment that does not end in a zero byte gets one when it is
// embedded. Every other number (8 to 21, 27 to 36, 39 to 177) is a plain
// slot: the table keeps it and gives it back, but a save does not embed it
// and a load never fills it.

#include <array>
#include <cstdint>
#include <vector>

namespace vliptc::imaging {

inline constexpr unsigned kCommentCount = 178;

// An APP1 segment holds at most 65,533 bytes of EXIF data, so no larger
// comment could ever be embedded; the table refuses one.
inline constexpr unsigned kMaxCommentBytes = 65533;

enum ECommentNumber : unsigned {
    kCommentArtist = 0,
    kCommentCopyright = 1,
    kCommentDateTime = 2,
    kCommentImageDescription = 3,
    kCommentMake = 4,
    kCommentModel = 5,
    kCommentSoftware = 6,
    kCommentDocumentName = 7,
    kCommentDateTimeOriginal = 22,
    kCommentDateTimeDigitized = 23,
    kCommentSubSecTime = 24,
    kCommentSubSecTimeOriginal = 25,
    kCommentSubSecTimeDigitized = 26,
    kCommentUserComment = 37,
    kCommentImageUniqueID = 38,
};

// One byte string per comment number; an empty one is a clear entry.
using CommentSet = std::array<std::vector<std::uint8_t>, kCommentCount>;

}  // namespace vliptc::imaging
