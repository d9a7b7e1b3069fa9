#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "host/Limits.h"
#include "host/VLException.h"
#include "host/VLFile.h"
#include "host/VLProperty.h"
#include "tests/support/TempDir.h"

namespace {

CVLProperty Text(std::string text) { return CVLProperty(std::move(text)); }
CVLProperty Wide(const char16_t* text) { CVLProperty p; p.SetString(text); return p; }
CVLProperty Num16(std::int16_t v, std::uint8_t kind = CVLProperty::kNumber16) { CVLProperty p; p.SetNumber16(v, kind); return p; }
CVLProperty Int32(std::int32_t v) { CVLProperty p; p.SetInt32(v); return p; }
CVLProperty Real(double v) { CVLProperty p; p.SetDouble(v); return p; }
CVLProperty Date(const COleDateTime& d) { CVLProperty p; p.SetDate(d); return p; }
CVLProperty Time(const COleDateTime& t) { CVLProperty p; p.SetTime(t); return p; }
CVLProperty Blob(const std::string& bytes) { CVLProperty p; p.SetBlob(bytes.data(), static_cast<std::uint32_t>(bytes.size())); return p; }

std::string Sequence(int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(i));
    return bytes;
}

struct Sample {
    const char* name;
    CVLProperty value;
    std::uint8_t kind;
    std::string text;
};

// One of each kind, with the edge values of each.
std::vector<Sample> Samples() {
    const COleDateTime leapAfternoon(2024, 2, 29, 13, 14, 15);
    COleDateTime invalidDate;
    invalidDate.SetStatus(COleDateTime::invalid);
    return {
        {"empty", CVLProperty(), CVLProperty::kEmpty, ""},
        {"text", Text("Hello"), CVLProperty::kText, "Hello"},
        {"empty text", Text(""), CVLProperty::kText, ""},
        {"wide", Wide(u"Caf\u00e9 \u20ac \u4e2d"), CVLProperty::kText, "Caf\xE9 \x80 ?"},
        {"number16", Num16(-5), CVLProperty::kNumber16, "-5"},
        {"number16 le", Num16(2, CVLProperty::kNumber16LE), CVLProperty::kNumber16LE, "2"},
        {"int32 min", Int32(std::numeric_limits<std::int32_t>::min()), CVLProperty::kNumber32, "-2147483648"},
        {"real tenth", Real(0.1), CVLProperty::kReal, "0.1"},
        {"real integer", Real(-2.0), CVLProperty::kReal, "-2"},
        {"real big", Real(1e300), CVLProperty::kReal, "1e+300"},
        {"real inf", Real(INFINITY), CVLProperty::kReal, "inf"},
        {"real nan", Real(std::nan("")), CVLProperty::kReal, "nan"},
        {"date", Date(leapAfternoon), CVLProperty::kDate, "2024-02-29"},
        {"date rounded up", Date(COleDateTime::FromDays(0.99999999)), CVLProperty::kDate, "1899-12-31"},
        {"date invalid", Date(invalidDate), CVLProperty::kDate, ""},
        {"time", Time(leapAfternoon), CVLProperty::kTime, "13:14:15"},
        {"blob", Blob("\x01\xAB\xFF"), CVLProperty::kBlob, "[3 bytes: 01 AB FF]"},
        {"blob empty", Blob(""), CVLProperty::kBlob, "[0 bytes]"},
        {"blob 16", Blob(Sequence(16)),
         CVLProperty::kBlob, "[16 bytes: 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F]"},
        {"blob 20", Blob(Sequence(20)),
         CVLProperty::kBlob, "[20 bytes: 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F ...]"},
    };
}

TEST(Property, SettersReplaceKindAndGettersConvert) {
    CVLProperty p = Blob("xyz");
    p.SetInt32(7);
    EXPECT_TRUE(p.Bytes().empty());
    EXPECT_EQ(p.GetDouble(), 7.0);
    p.SetDouble(-3.9);
    EXPECT_EQ(p.GetInt32(), -3);
    p.SetDouble(1e20);
    EXPECT_EQ(p.GetInt32(), std::numeric_limits<std::int32_t>::max());
    p.SetDouble(std::nan(""));
    EXPECT_EQ(p.GetInt32(), 0);
    // Text reads as atol/atof read it (the EXIF reader keeps some numbers as text).
    for (const auto& [text, integer, real] : {std::tuple{"12", 12, 12.0}, {" \t-7.5x", -7, -7.5},
                                              {"+3", 3, 3.0}, {"abc", 0, 0.0}, {"--1", 0, 0.0},
                                              {"99999999999", std::numeric_limits<std::int32_t>::max(), 99999999999.0}}) {
        p.SetString(text);
        EXPECT_EQ(p.GetInt32(), integer) << text;
        EXPECT_EQ(p.GetDouble(), real) << text;
    }
    EXPECT_EQ(p.GetDateTime().GetStatus(), COleDateTime::invalid);
    p.SetTime(COleDateTime(2024, 2, 29, 13, 14, 15));
    EXPECT_EQ(p.GetDateTime(), COleDateTime(1899, 12, 30, 13, 14, 15));
    p.Clear();
    EXPECT_TRUE(p.IsEmpty());
    EXPECT_EQ(p, CVLProperty());
    EXPECT_THROW(p.SetNumber16(1, CVLProperty::kNumber32), CVLException);
    EXPECT_THROW(p.SetBlob(nullptr, 3), CVLException);
    p.SetString(static_cast<const char*>(nullptr));
    EXPECT_EQ(p, Text(""));
}

// The order is the key order of the synonym maps: it must be a strict total
// order that agrees with ==, NaN included.
TEST(Property, OrderIsTotalAndAgreesWithEquality) {
    std::vector<CVLProperty> values;
    for (const Sample& s : Samples()) values.push_back(s.value);
    // Duplicates and the values a naive order gets wrong.
    for (const CVLProperty& extra : {Real(std::nan("")), Real(-std::nan("")), Real(0.0), Real(-0.0),
                                     Real(-INFINITY), Text("Hello"), Text("Hell"), Text("\xE9"), Text("z"),
                                     Int32(-1), Num16(-5)}) {
        values.push_back(extra);
    }
    const std::size_t n = values.size();
    for (std::size_t i = 0; i < n; ++i) {
        EXPECT_FALSE(values[i] < values[i]) << i;
        EXPECT_EQ(values[i], values[i]) << i;
        for (std::size_t j = 0; j < n; ++j) {
            const bool less = values[i] < values[j];
            const bool greater = values[j] < values[i];
            EXPECT_FALSE(less && greater) << i << " " << j;
            EXPECT_EQ(values[i] == values[j], !less && !greater) << i << " " << j;
            for (std::size_t k = 0; k < n; ++k) {
                if (less && values[j] < values[k]) {
                    EXPECT_TRUE(values[i] < values[k]) << i << " " << j << " " << k;
                }
            }
        }
    }

    std::vector<CVLProperty> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    const std::set<CVLProperty> keys(values.begin(), values.end());
    EXPECT_EQ(keys.size(), sorted.size());

    EXPECT_TRUE(Text("9") < Int32(1));                 // kind first
    EXPECT_TRUE(Text("z") < Text("\xE9"));             // bytes unsigned
    EXPECT_TRUE(Text("Hell") < Text("Hello"));         // prefix first
    EXPECT_TRUE(Real(INFINITY) < Real(std::nan("")));  // NaN above all numbers
    EXPECT_EQ(Real(std::nan("")), Real(-std::nan("")));
    EXPECT_EQ(Real(0.0), Real(-0.0));
    EXPECT_FALSE(Num16(2, CVLProperty::kNumber16LE) == Num16(2));
    EXPECT_FALSE(Text("") == CVLProperty());
}

// Every kind through a memory file and a disk file: the same bytes, and
// each value back with its kind, its text and (for reals) its exact bits. The
// text of the value read back, equal to the sample, is the sample's text.
TEST(PropertyStream, RoundTripThroughMemoryAndDiskFiles) {
    const std::vector<Sample> samples = Samples();
    vliptc::test::TempDir dir;
    const std::string path = dir.File("values.dat");
    CVLMemFile mem(false, 65536, 4096);
    {
        CVLFile disk;
        disk.Create(path);
        for (const Sample& s : samples) {
            mem << s.value;
            disk << s.value;
        }
    }
    EXPECT_EQ(vliptc::test::ReadFile(path),
              std::string(reinterpret_cast<const char*>(mem.GetBuffer(0)), mem.GetFileSize()));

    CVLFile disk;
    disk.Open(path);
    mem.Rewind();
    for (CVLFile* file : {static_cast<CVLFile*>(&mem), &disk}) {
        for (const Sample& s : samples) {
            SCOPED_TRACE(s.name);
            CVLProperty read = Text("left over");
            *file >> read;
            EXPECT_EQ(read.GetKind(), s.kind);
            EXPECT_EQ(read, s.value);
            EXPECT_EQ(read.String(), s.text);
            EXPECT_EQ(std::bit_cast<std::uint64_t>(read.GetDouble()), std::bit_cast<std::uint64_t>(s.value.GetDouble()));
        }
        EXPECT_EQ(file->GetPosition(), file->GetFileSize());
    }
}

// The stored form is part of the template file and the clipboard format.
TEST(PropertyStream, FixedBytes) {
    struct Case {
        CVLProperty value;
        std::string bytes;
    };
    const Case cases[] = {
        {CVLProperty(), std::string("\x00\x00\x00\x00\x00", 5)},
        {Text("ab"), std::string("\x01\x02\x00\x00\x00" "ab", 7)},
        {Num16(0x1234), std::string("\x03\x02\x00\x00\x00\x34\x12", 7)},
        {Num16(2, CVLProperty::kNumber16LE), std::string("\x02\x02\x00\x00\x00\x02\x00", 7)},
        {Int32(-2), std::string("\x04\x04\x00\x00\x00\xFE\xFF\xFF\xFF", 9)},
        {Real(1.0), std::string("\x05\x08\x00\x00\x00\x00\x00\x00\x00\x00\x00\xF0\x3F", 13)},
        {Date(COleDateTime(1899, 12, 31, 0, 0, 0)), std::string("\x07\x08\x00\x00\x00\x00\x00\x00\x00\x00\x00\xF0\x3F", 13)},
        {Blob(std::string("\x00\x01", 2)), std::string("\x09\x02\x00\x00\x00\x00\x01", 7)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value.String());
        CVLMemFile mem;
        mem << c.value;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(mem.GetBuffer()), mem.GetFileSize()), c.bytes);
    }
}

TEST(PropertyStream, MalformedInputThrowsAndLeavesTheValue) {
    struct Case {
        const char* name;
        std::string bytes;
    };
    const std::string overLimit = [] {
        std::string length(4, '\0');
        const std::uint32_t n = vliptc::limits::kMaxPropertyPayloadBytes + 1;
        for (int i = 0; i < 4; ++i) length[i] = static_cast<char>((n >> (8 * i)) & 0xFF);
        return length;
    }();
    const Case cases[] = {
        {"nothing", ""},
        {"short length", std::string("\x01\x05\x00", 3)},
        {"unknown kind 6", std::string("\x06\x00\x00\x00\x00", 5)},
        {"unknown kind 10", std::string("\x0A\x00\x00\x00\x00", 5)},
        {"empty with payload", std::string("\x00\x01\x00\x00\x00\x00", 6)},
        {"number16 of 1 byte", std::string("\x03\x01\x00\x00\x00\x01", 6)},
        {"number32 of 2 bytes", std::string("\x04\x02\x00\x00\x00\x01\x02", 7)},
        {"real of 4 bytes", std::string("\x05\x04\x00\x00\x00\x01\x02\x03\x04", 9)},
        {"date of 0 bytes", std::string("\x07\x00\x00\x00\x00", 5)},
        {"real cut", std::string("\x05\x08\x00\x00\x00\x01\x02\x03", 8)},
        {"text cut", std::string("\x01\x0A\x00\x00\x00" "abc", 8)},
        {"blob over the limit", "\x09" + overLimit + "abc"},
        {"blob at the limit, cut", std::string("\x09\x00\x00\x00\x01" "abc", 8)},
    };
    vliptc::test::TempDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CVLMemFile mem;
        mem.Assign(c.bytes.data(), c.bytes.size());
        CVLProperty value = Text("kept");
        EXPECT_THROW(mem >> value, CVLException);
        EXPECT_EQ(value, Text("kept"));

        const std::string path = dir.File("bad.dat");
        vliptc::test::WriteFile(path, c.bytes);
        CVLFile file;
        file.Open(path);
        EXPECT_THROW(file >> value, CVLException);
        EXPECT_EQ(value, Text("kept"));
    }
}

TEST(PropertyStream, GoodValueThenGarbageAndOversizedWrites) {
    CVLMemFile mem;
    mem << Text("first");
    mem.Write("\x01\x40", 2);
    mem.Rewind();
    CVLProperty value;
    mem >> value;
    EXPECT_EQ(value, Text("first"));
    EXPECT_THROW(mem >> value, CVLException);
    EXPECT_EQ(value, Text("first"));

    // What could not be read back is not written.
    CVLMemFile out;
    EXPECT_THROW(out << Blob(std::string(vliptc::limits::kMaxPropertyPayloadBytes + 1, 'x')), CVLException);
    EXPECT_EQ(out.GetFileSize(), 0);
}

}  // namespace
