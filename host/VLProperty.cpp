#include "host/VLProperty.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "host/Limits.h"
#include "host/VLException.h"
#include "host/VLFile.h"
#include "platform/Charset.h"

namespace {

// A total order on doubles: numeric, with -0 equal to +0, and every NaN equal
// to every other NaN and above all numbers. Plain < on doubles is not a strict
// weak order once NaN is involved, and a std::map keyed on it breaks.
int CompareReal(double a, double b) noexcept {
    const bool aNaN = std::isnan(a);
    const bool bNaN = std::isnan(b);
    if (aNaN || bNaN) return aNaN == bNaN ? 0 : (aNaN ? 1 : -1);
    return a < b ? -1 : (b < a ? 1 : 0);
}

template <typename T>
int CompareValues(const T& a, const T& b) noexcept {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// std::string compares its bytes as char, which may be signed; compare them
// as unsigned so Windows-1252 letters above 0x7F sort after ASCII.
int CompareBytes(const std::string& a, const std::string& b) noexcept {
    const std::basic_string_view<unsigned char> ua(reinterpret_cast<const unsigned char*>(a.data()), a.size());
    const std::basic_string_view<unsigned char> ub(reinterpret_cast<const unsigned char*>(b.data()), b.size());
    const int result = ua.compare(ub);
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

bool IsIntegerKind(std::uint8_t kind) noexcept {
    return kind == CVLProperty::kNumber16LE || kind == CVLProperty::kNumber16 || kind == CVLProperty::kNumber32;
}

bool IsRealKind(std::uint8_t kind) noexcept {
    return kind == CVLProperty::kReal || kind == CVLProperty::kDate || kind == CVLProperty::kTime;
}

// Payload length that a kind requires in the stream; -1 for the variable ones.
std::int64_t FixedPayloadLength(std::uint8_t kind) {
    switch (kind) {
        case CVLProperty::kEmpty: return 0;
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16: return 2;
        case CVLProperty::kNumber32: return 4;
        case CVLProperty::kReal:
        case CVLProperty::kDate:
        case CVLProperty::kTime: return 8;
        case CVLProperty::kText:
        case CVLProperty::kBlob: return -1;
        default: throw CVLException("property stream: unknown kind " + std::to_string(kind));
    }
}

void AppendLE(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

std::uint64_t ReadLE(const unsigned char* bytes, int count) noexcept {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i) value = (value << 8) | bytes[i];
    return value;
}

// The white space that atol and atof skip in the "C" locale.
constexpr const char* kLeadingBlanks = " \t\n\v\f\r";

// Text as atof reads it, but always with "." as the decimal point: blanks, a
// sign, then the longest decimal number (or "inf", "nan") that stands there.
double TextToDouble(const std::string& text) noexcept {
    std::size_t start = text.find_first_not_of(kLeadingBlanks);
    if (start == std::string::npos) return 0.0;
    const bool negative = text[start] == '-';
    if (text[start] == '-' || text[start] == '+') ++start;
    if (start < text.size() && (text[start] == '-' || text[start] == '+')) return 0.0;
    double value = 0.0;  // left as it is when no number stands there, or it is out of range
    std::from_chars(text.data() + start, text.data() + text.size(), value);
    return negative ? -value : value;
}

constexpr std::size_t kBlobPreviewBytes = 16;

std::string BlobPreview(const std::string& bytes) {
    std::string text = "[" + std::to_string(bytes.size()) + " bytes";
    if (!bytes.empty()) text += ':';
    const std::size_t shown = std::min(bytes.size(), kBlobPreviewBytes);
    for (std::size_t i = 0; i < shown; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02X", static_cast<unsigned char>(bytes[i]));
        text += hex;
    }
    if (bytes.size() > shown) text += " ...";
    text += ']';
    return text;
}

}  // namespace

void CVLProperty::SetString(std::string text) {
    Clear();
    m_kind = kText;
    m_bytes = std::move(text);
}

void CVLProperty::SetString(const char* text) {
    SetString(std::string(text != nullptr ? text : ""));
}

void CVLProperty::SetString(const char16_t* wide) {
    SetString(wide != nullptr ? vliptc::platform::Utf16ToCp1252(std::u16string_view(wide)) : std::string());
}

void CVLProperty::SetBlob(const void* data, std::uint32_t size) {
    if (data == nullptr && size != 0) throw CVLException("SetBlob: null data");
    std::string bytes;
    if (size != 0) bytes.assign(static_cast<const char*>(data), size);
    Clear();
    m_kind = kBlob;
    m_bytes = std::move(bytes);
}

void CVLProperty::SetNumber16(std::int16_t value, std::uint8_t kind) {
    if (kind != kNumber16LE && kind != kNumber16) {
        throw CVLException("SetNumber16: kind " + std::to_string(kind) + " is not a 16-bit number kind");
    }
    Clear();
    m_kind = kind;
    m_integer = value;
}

void CVLProperty::SetInt32(std::int32_t value) {
    Clear();
    m_kind = kNumber32;
    m_integer = value;
}

void CVLProperty::SetDouble(double value) {
    Clear();
    m_kind = kReal;
    m_real = value;
}

// Both date setters break the value down first, so they keep what the user
// sees: a value a hair before midnight belongs to the next day, as it displays.
void CVLProperty::SetDate(const COleDateTime& date) {
    std::tm tm{};
    const bool ok = date.GetAsTm(tm);
    Clear();
    m_kind = kDate;
    m_real = ok ? COleDateTime(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, 0, 0, 0).GetDays()
                : std::numeric_limits<double>::quiet_NaN();
}

void CVLProperty::SetTime(const COleDateTime& time) {
    std::tm tm{};
    const bool ok = time.GetAsTm(tm);
    Clear();
    m_kind = kTime;
    m_real = ok ? COleDateTime(1899, 12, 30, tm.tm_hour, tm.tm_min, tm.tm_sec).GetDays()
                : std::numeric_limits<double>::quiet_NaN();
}

void CVLProperty::Clear() noexcept {
    m_kind = kEmpty;
    m_integer = 0;
    m_real = 0.0;
    m_bytes.clear();
}

std::string CVLProperty::String(const char* /*format*/) const {
    switch (m_kind) {
        case kText: return m_bytes;
        case kNumber16LE:
        case kNumber16:
        case kNumber32: return std::to_string(m_integer);
        case kReal: {
            char buffer[32];
            const auto result = std::to_chars(buffer, buffer + sizeof buffer, m_real);
            return std::string(buffer, result.ptr);
        }
        case kDate:
        case kTime: {
            std::tm tm{};
            if (!COleDateTime::FromDays(m_real).GetAsTm(tm)) return {};
            char buffer[32];
            if (m_kind == kDate) {
                std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday);
            } else {
                std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", tm.tm_hour, tm.tm_min, tm.tm_sec);
            }
            return buffer;
        }
        case kBlob: return BlobPreview(m_bytes);
        default: return {};
    }
}

std::int32_t CVLProperty::GetInt32() const noexcept {
    if (IsIntegerKind(m_kind)) return static_cast<std::int32_t>(m_integer);
    if (m_kind == kReal) {
        // Truncate toward zero, clamped; NaN has no integer and gives 0.
        if (std::isnan(m_real)) return 0;
        if (m_real <= static_cast<double>(std::numeric_limits<std::int32_t>::min())) {
            return std::numeric_limits<std::int32_t>::min();
        }
        if (m_real >= static_cast<double>(std::numeric_limits<std::int32_t>::max())) {
            return std::numeric_limits<std::int32_t>::max();
        }
        return static_cast<std::int32_t>(m_real);
    }
    if (m_kind == kText) {
        // strtoll reads as atol does (blanks, sign, digits) and saturates.
        constexpr long long kMin = std::numeric_limits<std::int32_t>::min();
        constexpr long long kMax = std::numeric_limits<std::int32_t>::max();
        return static_cast<std::int32_t>(std::clamp(std::strtoll(m_bytes.c_str(), nullptr, 10), kMin, kMax));
    }
    return 0;
}

double CVLProperty::GetDouble() const noexcept {
    if (IsIntegerKind(m_kind)) return static_cast<double>(m_integer);
    if (m_kind == kReal) return m_real;
    if (m_kind == kText) return TextToDouble(m_bytes);
    return 0.0;
}

COleDateTime CVLProperty::GetDateTime() const noexcept {
    if (m_kind == kDate || m_kind == kTime) return COleDateTime::FromDays(m_real);
    COleDateTime invalidValue;
    invalidValue.SetStatus(COleDateTime::invalid);
    return invalidValue;
}

namespace {

int Compare(std::uint8_t kind, std::int64_t aInt, double aReal, const std::string& aBytes, std::int64_t bInt,
            double bReal, const std::string& bBytes) noexcept {
    if (IsIntegerKind(kind)) return CompareValues(aInt, bInt);
    if (IsRealKind(kind)) return CompareReal(aReal, bReal);
    if (kind == CVLProperty::kText || kind == CVLProperty::kBlob) return CompareBytes(aBytes, bBytes);
    return 0;
}

}  // namespace

bool CVLProperty::operator==(const CVLProperty& other) const noexcept {
    return m_kind == other.m_kind &&
           Compare(m_kind, m_integer, m_real, m_bytes, other.m_integer, other.m_real, other.m_bytes) == 0;
}

bool CVLProperty::operator<(const CVLProperty& other) const noexcept {
    if (m_kind != other.m_kind) return m_kind < other.m_kind;
    return Compare(m_kind, m_integer, m_real, m_bytes, other.m_integer, other.m_real, other.m_bytes) < 0;
}

CVLFile& operator<<(CVLFile& file, const CVLProperty& value) {
    std::string record;
    record.push_back(static_cast<char>(value.m_kind));
    switch (value.m_kind) {
        case CVLProperty::kEmpty: AppendLE(record, 0, 4); break;
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16:
            AppendLE(record, 2, 4);
            AppendLE(record, static_cast<std::uint16_t>(value.m_integer), 2);
            break;
        case CVLProperty::kNumber32:
            AppendLE(record, 4, 4);
            AppendLE(record, static_cast<std::uint32_t>(value.m_integer), 4);
            break;
        case CVLProperty::kReal:
        case CVLProperty::kDate:
        case CVLProperty::kTime:
            AppendLE(record, 8, 4);
            AppendLE(record, std::bit_cast<std::uint64_t>(value.m_real), 8);
            break;
        case CVLProperty::kText:
        case CVLProperty::kBlob:
            // What we could not read back must not be written.
            if (value.m_bytes.size() > vliptc::limits::kMaxPropertyPayloadBytes) {
                throw CVLException("property stream: payload of " + std::to_string(value.m_bytes.size()) +
                                   " bytes is over the limit");
            }
            AppendLE(record, value.m_bytes.size(), 4);
            record += value.m_bytes;
            break;
        default: throw CVLException("property stream: unknown kind " + std::to_string(value.m_kind));
    }
    file.Write(record.data(), static_cast<unsigned>(record.size()));
    return file;
}

CVLFile& operator>>(CVLFile& file, CVLProperty& value) {
    unsigned char header[5];
    file.ReadExact(header, sizeof header);
    const std::uint8_t kind = header[0];
    const auto length = static_cast<std::uint32_t>(ReadLE(header + 1, 4));

    const std::int64_t fixed = FixedPayloadLength(kind);
    if (fixed >= 0 && length != fixed) {
        throw CVLException("property stream: kind " + std::to_string(kind) + " with a payload of " +
                           std::to_string(length) + " bytes");
    }
    if (length > vliptc::limits::kMaxPropertyPayloadBytes) {
        throw CVLException("property stream: payload of " + std::to_string(length) + " bytes is over the limit");
    }
    // The length is outside data: never allocate for more than is really there.
    const std::int64_t remaining = file.GetFileSize() - file.GetPosition();
    if (static_cast<std::int64_t>(length) > remaining) {
        throw CVLException("property stream: short stream (payload of " + std::to_string(length) + " bytes, " +
                           std::to_string(remaining < 0 ? 0 : remaining) + " left)");
    }

    std::string payload(length, '\0');
    if (length != 0) file.ReadExact(payload.data(), length);
    const auto* bytes = reinterpret_cast<const unsigned char*>(payload.data());

    CVLProperty result;
    result.m_kind = kind;
    switch (kind) {
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16:
            result.m_integer = static_cast<std::int16_t>(static_cast<std::uint16_t>(ReadLE(bytes, 2)));
            break;
        case CVLProperty::kNumber32:
            result.m_integer = static_cast<std::int32_t>(static_cast<std::uint32_t>(ReadLE(bytes, 4)));
            break;
        case CVLProperty::kReal:
        case CVLProperty::kDate:
        case CVLProperty::kTime: result.m_real = std::bit_cast<double>(ReadLE(bytes, 8)); break;
        case CVLProperty::kText:
        case CVLProperty::kBlob: result.m_bytes = std::move(payload); break;
        default: break;
    }
    value = std::move(result);
    return file;
}
