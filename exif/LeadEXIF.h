#pragma once

// EXIF text and date comments for the next image the imaging library saves.
// The comments go into the imaging library's process-wide table of pending
// comments (LFileSettings, numbers in platform/imaging/CommentNumbers.h):
// setting one here affects every later LBitmap::Save in the process until the
// table is cleared, and destroying any CVLLeadEXIF clears all 178 entries.
//
// Written forms:
//   text          the property's text (Windows-1252) and a zero byte
//   date          "YYYY:MM:DD HH:MM:SS" and a zero byte, 20 bytes
//   user comment  the eight code bytes 0x29 0x35 0x2B 0x31 0x31 0x00 0x00
//                 0x00, the text, a zero byte
// Setters give false when the table refuses the comment or anything throws.

#include "host/VLBase.h"

class CVLProperty;
class LBitmap;

class CVLLeadEXIF : public CVLBase {
public:
    CVLLeadEXIF() = default;
    CVLLeadEXIF(const CVLLeadEXIF&) = default;
    CVLLeadEXIF& operator=(const CVLLeadEXIF&) = default;
    ~CVLLeadEXIF() override;

    bool SetArtist(const CVLProperty& value);            // comment 0, text
    bool SetCopyright(const CVLProperty& value);         // comment 1, text
    bool SetImageDescription(const CVLProperty& value);  // comment 3, text
    // Dates: a date or time property, or a number of days since 1899-12-30
    // whose fraction is the time of day (the property keeps no other kind
    // that holds both). Any other value, or one outside 0100..9999, is false.
    bool SetDateTime(const CVLProperty& value);           // comment 2
    bool SetDateTimeOriginal(const CVLProperty& value);   // comment 22
    bool SetDateTimeDigitized(const CVLProperty& value);  // comment 23
    bool SetUserComment(const CVLProperty& value);        // comment 37

    // Copies every comment of the bitmap's file into the table (comments the
    // file lacks, or that cannot be read, leave their entries as they are).
    // Returns 1.
    int ReadComments(LBitmap& bitmap);
    // Clears every entry of the table.
    void ClearComments();

protected:
    bool DoString(unsigned index, const CVLProperty& value);
    bool DoDT(unsigned index, const CVLProperty& value);
};
