#include "exif/LeadEXIF.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <span>
#include <string>
#include <vector>

#include "host/VLProperty.h"
#include "platform/imaging/CommentNumbers.h"
#include "platform/imaging/LBitmap.h"
#include "platform/imaging/LBuffer.h"
#include "platform/imaging/LFileSettings.h"

using namespace vliptc::imaging;

namespace {

// The character code that opens the user comment: these eight bytes exactly.
constexpr std::array<unsigned char, 8> kUserCommentCode{0x29, 0x35, 0x2B, 0x31, 0x31, 0x00, 0x00, 0x00};

// The EXIF date form is 19 characters; it is stored with its zero byte, from
// a zeroed buffer of 100 bytes.
constexpr std::size_t kDateBufferBytes = 100;
constexpr unsigned kDateCommentBytes = 20;

// The buffer's first size bytes into entry index of the table.
bool SetBytes(unsigned index, const std::vector<unsigned char>& buffer, std::size_t size) {
    if (size > kMaxCommentBytes) return false;
    return LFileSettings::SetComment(index, buffer.data(), static_cast<unsigned>(size)) >= 0;
}

// A zeroed buffer holding prefix, then text, then a zero byte.
std::vector<unsigned char> TextBuffer(std::span<const unsigned char> prefix, const std::string& text) {
    std::vector<unsigned char> buffer(prefix.size() + text.size() + 1, 0);
    std::copy(prefix.begin(), prefix.end(), buffer.begin());
    std::copy(text.begin(), text.end(), buffer.begin() + static_cast<std::ptrdiff_t>(prefix.size()));
    return buffer;
}

COleDateTime DateTimeOf(const CVLProperty& value) {
    switch (value.GetKind()) {
        case CVLProperty::kDate:
        case CVLProperty::kTime:
            return value.GetDateTime();
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16:
        case CVLProperty::kNumber32:
        case CVLProperty::kReal:
            return COleDateTime::FromDays(value.GetDouble());
        default: {
            COleDateTime none;
            none.SetStatus(COleDateTime::invalid);
            return none;
        }
    }
}

}  // namespace

CVLLeadEXIF::~CVLLeadEXIF() { ClearComments(); }

bool CVLLeadEXIF::SetArtist(const CVLProperty& value) { return DoString(kCommentArtist, value); }
bool CVLLeadEXIF::SetCopyright(const CVLProperty& value) { return DoString(kCommentCopyright, value); }
bool CVLLeadEXIF::SetImageDescription(const CVLProperty& value) {
    return DoString(kCommentImageDescription, value);
}
bool CVLLeadEXIF::SetDateTime(const CVLProperty& value) { return DoDT(kCommentDateTime, value); }
bool CVLLeadEXIF::SetDateTimeOriginal(const CVLProperty& value) {
    return DoDT(kCommentDateTimeOriginal, value);
}
bool CVLLeadEXIF::SetDateTimeDigitized(const CVLProperty& value) {
    return DoDT(kCommentDateTimeDigitized, value);
}

bool CVLLeadEXIF::SetUserComment(const CVLProperty& value) {
    try {
        const auto buffer = TextBuffer(kUserCommentCode, value.String());
        return SetBytes(kCommentUserComment, buffer, buffer.size());
    } catch (...) {
        return false;
    }
}

bool CVLLeadEXIF::DoString(unsigned index, const CVLProperty& value) {
    try {
        const auto buffer = TextBuffer({}, value.String());
        return SetBytes(index, buffer, buffer.size());
    } catch (...) {
        return false;
    }
}

bool CVLLeadEXIF::DoDT(unsigned index, const CVLProperty& value) {
    try {
        std::tm tm{};
        if (!DateTimeOf(value).GetAsTm(tm)) return false;
        // The valid range keeps the year to four digits, so the text is 19
        // characters: "%Y:%m:%d %H:%M:%S".
        std::vector<unsigned char> buffer(kDateBufferBytes, 0);
        std::snprintf(reinterpret_cast<char*>(buffer.data()), buffer.size(), "%04d:%02d:%02d %02d:%02d:%02d",
                      tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
        return SetBytes(index, buffer, kDateCommentBytes);
    } catch (...) {
        return false;
    }
}

int CVLLeadEXIF::ReadComments(LBitmap& bitmap) {
    LBuffer buffer;
    for (unsigned number = 0; number < kCommentCount; ++number) {
        const int size = bitmap.ReadComment(number, nullptr);
        if (size <= 0 || buffer.Reallocate(static_cast<unsigned>(size)) < 0) continue;
        if (bitmap.ReadComment(number, &buffer) <= 0) continue;
        const unsigned char* bytes = buffer.Lock();
        static_cast<void>(LFileSettings::SetComment(number, bytes, buffer.GetSize()));
        buffer.Unlock();
    }
    return 1;
}

void CVLLeadEXIF::ClearComments() {
    // The first failure ends the loop; nothing is reported.
    try {
        for (unsigned number = 0; number < kCommentCount; ++number) {
            static_cast<void>(LFileSettings::SetComment(number, nullptr, 0));
        }
    } catch (...) {
    }
}
