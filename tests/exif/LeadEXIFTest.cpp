// CVLLeadEXIF and the comment table it fills: the exact bytes of each written
// form, what the table refuses, and the clearing on destruction.

#include "exif/LeadEXIF.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/VLProperty.h"
#include "platform/imaging/CommentNumbers.h"
#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/LBuffer.h"
#include "platform/imaging/LFileSettings.h"

namespace {

using namespace vliptc::imaging;

// Entry number of the table as bytes ("" when clear).
std::string Entry(unsigned number) {
    LBuffer buffer;
    const int size = LFileSettings::GetComment(number, nullptr);
    EXPECT_GE(size, 0);
    EXPECT_EQ(buffer.Reallocate(static_cast<unsigned>(size)), kImagingSuccess);
    EXPECT_EQ(LFileSettings::GetComment(number, &buffer), size);
    const auto* bytes = reinterpret_cast<const char*>(buffer.Lock());
    std::string out(bytes == nullptr ? "" : std::string(bytes, buffer.GetSize()));
    buffer.Unlock();
    return out;
}

CVLProperty DaysOf(int year, int month, int day, int hour, int minute, int second) {
    CVLProperty value;
    value.SetDouble(COleDateTime(year, month, day, hour, minute, second).GetDays());
    return value;
}

CVLProperty DateOnly(int year, int month, int day) {
    CVLProperty value;
    value.SetDate(COleDateTime(year, month, day, 0, 0, 0));
    return value;
}

class LeadEXIFTest : public ::testing::Test {
protected:
    void SetUp() override { lead.ClearComments(); }
    CVLLeadEXIF lead;
};

TEST_F(LeadEXIFTest, WrittenForms) {
    using Setter = bool (CVLLeadEXIF::*)(const CVLProperty&);
    struct Case {
        const char* label;
        Setter set;
        CVLProperty value;
        unsigned number;
        std::string bytes;
    };
    const Case cases[] = {
        {"date and time", &CVLLeadEXIF::SetDateTime, DaysOf(2002, 5, 17, 14, 30, 0), 2,
         std::string("2002:05:17 14:30:00\0", 20)},
        {"original, a date property", &CVLLeadEXIF::SetDateTimeOriginal, DateOnly(1999, 12, 31), 22,
         std::string("1999:12:31 00:00:00\0", 20)},
        {"digitized, early year", &CVLLeadEXIF::SetDateTimeDigitized, DaysOf(100, 1, 2, 3, 4, 5), 23,
         std::string("0100:01:02 03:04:05\0", 20)},
        {"empty artist", &CVLLeadEXIF::SetArtist, CVLProperty(std::string()), 0, std::string(1, '\0')},
        {"copyright", &CVLLeadEXIF::SetCopyright, CVLProperty("(c) J\xF6rg"), 1,
         std::string("(c) J\xF6rg\0", 9)},
        {"description", &CVLLeadEXIF::SetImageDescription, CVLProperty("sea"), 3, std::string("sea\0", 4)},
        {"user comment", &CVLLeadEXIF::SetUserComment, CVLProperty("abc"), 37,
         std::string("\x29\x35\x2B\x31\x31\0\0\0abc\0", 12)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        EXPECT_TRUE((lead.*c.set)(c.value));
        EXPECT_EQ(Entry(c.number), c.bytes);
    }
}

TEST_F(LeadEXIFTest, DatesThatAreNotDatesLeaveTheEntry) {
    ASSERT_TRUE(lead.SetDateTime(DaysOf(2002, 5, 17, 14, 30, 0)));
    CVLProperty nan;
    nan.SetDouble(std::nan(""));
    for (const CVLProperty& value : {CVLProperty("2002:05:17 14:30:00"), CVLProperty(), nan}) {
        EXPECT_FALSE(lead.SetDateTime(value));
    }
    EXPECT_EQ(Entry(kCommentDateTime), std::string("2002:05:17 14:30:00\0", 20));
}

TEST_F(LeadEXIFTest, TableRefusals) {
    const unsigned char byte = 'x';
    LBuffer small;
    ASSERT_EQ(LFileSettings::SetComment(5, "abc", 3), kImagingSuccess);
    ASSERT_EQ(small.Reallocate(2), kImagingSuccess);

    EXPECT_EQ(LFileSettings::SetComment(kCommentCount, &byte, 1), kImagingBadIndex);
    EXPECT_EQ(LFileSettings::GetComment(kCommentCount, nullptr), kImagingBadIndex);
    EXPECT_EQ(LFileSettings::SetComment(5, nullptr, 1), kImagingBadParameter);
    EXPECT_EQ(LFileSettings::SetComment(5, &byte, kMaxCommentBytes + 1), kImagingBadParameter);
    EXPECT_EQ(LFileSettings::GetComment(5, &small), kImagingBadParameter);
    small.Lock();
    EXPECT_EQ(small.Reallocate(8), kImagingBufferLocked);
    small.Unlock();
    EXPECT_EQ(Entry(5), "abc");  // no refusal touched it

    EXPECT_EQ(LFileSettings::SetComment(5, nullptr, 0), kImagingSuccess);
    EXPECT_EQ(LFileSettings::GetComment(5, nullptr), 0);
}

TEST(LeadEXIF, DestructionClearsEveryEntry) {
    {
        CVLLeadEXIF lead;
        ASSERT_TRUE(lead.SetArtist(CVLProperty("a")));
        ASSERT_TRUE(lead.SetUserComment(CVLProperty("b")));
        const unsigned char byte = 1;
        for (unsigned number : {0u, 100u, kCommentCount - 1}) {
            ASSERT_EQ(LFileSettings::SetComment(number, &byte, 1), kImagingSuccess);
        }
    }
    for (unsigned number = 0; number < kCommentCount; ++number) {
        EXPECT_EQ(LFileSettings::GetComment(number, nullptr), 0) << number;
    }
}

}  // namespace
