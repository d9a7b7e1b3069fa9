#pragma once

// Results of the imaging operations, in the imaging library's convention: a
// positive number is success (or a size), a negative one an error.

namespace vliptc::imaging {

enum EImagingResult : int {
    kImagingSuccess = 1,
    kImagingBadIndex = -1,      // a comment number outside 0..177
    kImagingBadParameter = -2,  // null data with a size, a comment over kMaxCommentBytes, a buffer too small
    kImagingNoMemory = -3,
    kImagingBufferLocked = -4,  // an LBuffer cannot be reallocated while locked
    kImagingNotLoaded = -5,     // the bitmap holds no file
    kImagingCannotOpen = -6,    // missing, unreadable, or larger than the load cap
    kImagingNotJpeg = -7,       // no start-of-image marker: not a JPEG file
    kImagingBadJpeg = -8,       // a marker segment is cut off, or no image data follows
    kImagingExifTooLarge = -9,  // the new EXIF data would not fit one APP1 segment
    kImagingCannotWrite = -10,  // the new file could not be written or swapped in; the old one is kept
};

}  // namespace vliptc::imaging
