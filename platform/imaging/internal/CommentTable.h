#pragma once

// What the imaging stand-in's own code needs of the comment table and of
// comment copies, beyond the public interface.

#include <cstdint>
#include <span>

#include "platform/imaging/CommentNumbers.h"

class LBuffer;

namespace vliptc::imaging {

// A copy of every entry of the pending-comment table, taken at once.
CommentSet PendingComments();

// The reading rule that LFileSettings::GetComment and LBitmap::ReadComment
// share: the comment's size when buffer is null; else the comment copied to
// the buffer's start and its size, or kImagingBadParameter when the buffer is
// smaller than the comment.
int CopyComment(std::span<const std::uint8_t> comment, LBuffer* buffer);

}  // namespace vliptc::imaging
