#pragma once

// The imaging library's table of pending file comments: one table for the
// whole process, which every later LBitmap::Save embeds until it is cleared
// (see CommentNumbers.h for the numbers). Any thread may use it: each call
// sees and leaves the table whole.

class LBuffer;

class LFileSettings {
public:
    // Copies size bytes at data into entry index; size 0 clears the entry.
    // kImagingSuccess, or kImagingBadIndex, kImagingBadParameter (null data
    // with a size, or more than kMaxCommentBytes), kImagingNoMemory; on an
    // error the entry is unchanged.
    static int SetComment(unsigned index, const void* data, unsigned size);
    // Entry index: with no buffer, its size (0 when clear); with a buffer that
    // holds at least that many bytes, copies it to the buffer's start and
    // returns its size. kImagingBadIndex, or kImagingBadParameter when the
    // buffer is too small (nothing copied).
    static int GetComment(unsigned index, LBuffer* buffer);
};
