#pragma once

// The imaging library's bitmap, as far as comments go: it loads a JPEG file,
// gives each of the file's comments by number, and saves the image into a
// JPEG file with the pending comments (LFileSettings) embedded as EXIF. The
// image is never decoded: a save keeps the file's compressed data, and every
// segment other than the EXIF one, byte for byte.

#include <string>

#include "platform/imaging/CommentNumbers.h"

class LBuffer;

class LBitmap {
public:
    // Reads the whole file and the comments in its EXIF segment (see
    // CommentNumbers.h). kImagingSuccess; kImagingCannotOpen (missing,
    // unreadable, over vliptc::limits::kMaxImagingFileBytes), kImagingNotJpeg,
    // kImagingBadJpeg. On an error the bitmap holds nothing.
    int Load(const std::string& path);
    bool IsLoaded() const noexcept { return m_loaded; }

    // Comment index of the loaded file: with no buffer, its size (0 when the
    // file has none); with a buffer that holds at least that many bytes, the
    // comment copied to the buffer's start and its size. kImagingBadIndex,
    // kImagingNotLoaded, or kImagingBadParameter when the buffer is too small.
    int ReadComment(unsigned index, LBuffer* buffer) const;

    // Writes the loaded image over the existing file at path (the loaded
    // file itself, or another). The EXIF segment of the loaded file is
    // replaced, or a new one inserted behind the start-of-image marker (or a
    // JFIF APP0 segment), holding the file's EXIF tags (those libexif can
    // read) with the pending embedded comments in place of the tags they
    // name; with no such comment pending the bytes are saved as loaded.
    // libexif lays the EXIF data out anew: the thumbnail moves, and a maker
    // note whose format it does not know moves as it is, which breaks one
    // that points into the EXIF data by absolute offsets. The new file is
    // complete before it takes the old one's place; on any failure the old
    // bytes stay at path. kImagingSuccess; kImagingNotLoaded,
    // kImagingExifTooLarge, kImagingCannotWrite (also when path is missing or
    // may not be written).
    int Save(const std::string& path) const;

private:
    std::string m_file;
    vliptc::imaging::CommentSet m_comments;
    bool m_loaded = false;
};
