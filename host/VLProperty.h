#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/VLBase.h"
#include "host/OleDateTime.h"

class CVLFile;

// The host's value type: one value of one kind. Every IPTC value, list entry,
// synonym, template value and EXIF value is a CVLProperty.
//
// Kind codes. 1, 2, 3, 7 and 8 carry meaning in the IPTC data (see below);
// 4, 5 and 9 are this library's own choice for the EXIF values.
//
//   0  empty        never set, or cleared
//   1  text         8-bit Windows-1252 text (the wide SetString converts to it)
//   2  number16le   16-bit number; the record version of a block that was
//                   written with little-endian lengths (value 2)
//   3  number16     16-bit number (IPTC binary dataset, e.g. the record version)
//   4  number32     32-bit signed integer
//   5  real         double
//   7  date         COleDateTime, time of day zero
//   8  time         COleDateTime, date part dropped (time of day on 1899-12-30)
//   9  blob         a copied byte block
//
// String() for each kind:
//   empty -> ""; text -> the bytes verbatim; the numbers -> decimal;
//   real -> the shortest text that reads back as exactly the same double
//           ("0.1", "-2", "1e+300", "nan", "inf");
//   date -> "YYYY-MM-DD"; time -> "HH:MM:SS"; "" when the value is not a
//           valid date (an invalid COleDateTime was stored);
//   blob -> "[N bytes: 01 02 03]", upper-case hex of at most the first 16
//           bytes followed by " ..." when there are more, "[0 bytes]" when
//           empty, so a thumbnail never turns into megabytes of hex.
//
// Order and equality: kinds compare first (by code), then values: text and blob
// as unsigned bytes (byte-wise, a shorter prefix first), numbers numerically,
// reals, dates and times numerically with -0 equal to +0 and every NaN equal
// to every other and above all numbers, so the order stays total (std::map
// keys and std::sort need that). Equal means neither is less.
//
// Stream form (operator<< / operator>> on a CVLFile), the form of the template
// file and of the private clipboard format:
//   1 byte  kind code
//   4 bytes payload length, unsigned 32-bit, least-significant byte first
//   payload text/blob: the bytes; kinds 2 and 3: 2 bytes LE; kind 4: 4 bytes LE;
//           kinds 5, 7, 8: the IEEE double, 8 bytes LE; empty: nothing.
// Reading throws CVLException on a short stream, an unknown kind, a payload
// length that does not suit the kind, or one over
// vliptc::limits::kMaxPropertyPayloadBytes; it never allocates more than the
// bytes left in the file, and leaves the property unchanged when it throws.
// Writing a text or blob over that limit throws too (it could not be read back).
class CVLProperty : public CVLBase {
public:
    enum EKind : std::uint8_t {
        kEmpty = 0,
        kText = 1,
        kNumber16LE = 2,
        kNumber16 = 3,
        kNumber32 = 4,
        kReal = 5,
        kDate = 7,
        kTime = 8,
        kBlob = 9,
    };

    CVLProperty() = default;
    CVLProperty(const CVLProperty&) = default;
    CVLProperty& operator=(const CVLProperty&) = default;
    CVLProperty(CVLProperty&&) noexcept = default;
    CVLProperty& operator=(CVLProperty&&) noexcept = default;
    ~CVLProperty() override = default;

    // Convenience: a text property.
    explicit CVLProperty(std::string text) { SetString(std::move(text)); }

    std::uint8_t GetKind() const noexcept { return m_kind; }
    bool IsEmpty() const noexcept { return m_kind == kEmpty; }

    void SetString(std::string text);
    void SetString(const char* text);
    // Zero-terminated UTF-16; stored as Windows-1252 text ("?" for what it lacks).
    void SetString(const char16_t* wide);
    // Throws CVLException for null data with a non-zero size.
    void SetBlob(const void* data, std::uint32_t size);
    // Typed setters for the numeric kinds; kind must be kNumber16LE or
    // kNumber16 (anything else throws CVLException).
    void SetNumber16(std::int16_t value, std::uint8_t kind = kNumber16);
    void SetInt32(std::int32_t value);
    void SetDouble(double value);
    // Both break the value down (rounded to the second, as it displays) and
    // keep one half: the date at 00:00:00, or the time of day on 1899-12-30.
    // An invalid COleDateTime is stored as NaN and reads back invalid.
    void SetDate(const COleDateTime& date);
    void SetTime(const COleDateTime& time);
    void Clear() noexcept;

    // The value as text; the format argument is accepted for the host's
    // signature and ignored (the library always passes null).
    std::string String(const char* format = nullptr) const;

    // Typed getters. Numbers convert between the numeric kinds (a real to an
    // integer truncates toward zero and clamps; NaN gives 0). Text reads as
    // the C runtime's atol and atof read it: leading white space, a sign, then
    // the decimal number that stands there ("3" is 3, " -12abc" is -12,
    // "2.5" is 2 or 2.5; for GetDouble the decimal point is always "."); text
    // without one gives 0, and GetInt32 clamps to its range. The EXIF reader
    // keeps "File source" and "Scene type" as decimal text, and the viewer
    // reads them as integers. Anything else gives 0. GetDateTime gives an
    // invalid COleDateTime for non-date kinds.
    std::int32_t GetInt32() const noexcept;
    double GetDouble() const noexcept;
    COleDateTime GetDateTime() const noexcept;
    // Text and blob kinds: the bytes; other kinds: empty.
    const std::string& Bytes() const noexcept { return m_bytes; }

    bool operator==(const CVLProperty& other) const noexcept;
    bool operator<(const CVLProperty& other) const noexcept;

private:
    std::uint8_t m_kind = kEmpty;
    std::int64_t m_integer = 0;  // kinds 2, 3, 4
    double m_real = 0.0;         // kinds 5, 7, 8
    std::string m_bytes;         // kinds 1, 9

    friend CVLFile& operator<<(CVLFile& file, const CVLProperty& value);
    friend CVLFile& operator>>(CVLFile& file, CVLProperty& value);
};

CVLFile& operator<<(CVLFile& file, const CVLProperty& value);
CVLFile& operator>>(CVLFile& file, CVLProperty& value);
