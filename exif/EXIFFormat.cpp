// CVLEXIF: the text the EXIF viewer shows for a field, and templates built
// from such texts. The per-field rules are in internal/FormatRules.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

#include "exif/EXIF.h"
#include "exif/internal/FormatRules.h"

namespace {

constexpr const char* kWhiteSpace = " \t\n\v\f\r";
constexpr char kFieldMark = '#';
constexpr char kValueSeparator = ',';  // between the values of the default rule, no blank

void Trim(std::string& text) {
    text.erase(0, text.find_first_not_of(kWhiteSpace));
    text.erase(text.find_last_not_of(kWhiteSpace) + 1);
}

// The default rule: each value's own text, in order.
std::string JoinValues(const std::vector<CVLProperty>& values) {
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) text += kValueSeparator;
        text += values[i].String();
    }
    return text;
}

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace

void CVLEXIF::SetNumberFormatSource(std::function<vliptc::platform::NumberFormat()> source) {
    m_numberFormatSource = std::move(source);
}

bool CVLEXIF::GetFormattedField(EFieldTags id, std::string& text) const {
    text.clear();
    const SField* field = nullptr;
    if (!GetField(id, field)) return false;
    if (field->vValues.empty()) return bUseDefaults && GetDefault(field, text);

    const vliptc::exif::NumberFormatSource numberFormat = [this] {
        return m_numberFormatSource ? m_numberFormatSource() : vliptc::platform::UserNumberFormat();
    };
    auto own = vliptc::exif::FormatByOwnRule(field->nTag, field->vValues.front(), numberFormat);
    text = own ? std::move(*own) : JoinValues(field->vValues);
    Trim(text);
    return true;
}

CVLEXIF::EError CVLEXIF::FormatString(const char* templ, std::string& out) const {
    out.clear();
    if (templ == nullptr) return errOK;
    for (const char* p = templ; *p != '\0'; ++p) {
        if (*p != kFieldMark) {
            out += *p;
            continue;
        }
        // The tag is read as "%d" reads it, so blanks and a sign may stand
        // between the "#" and the digits.
        char* end = nullptr;
        const long long tag = std::strtoll(p + 1, &end, 10);
        if (end == p + 1) {
            out += kFieldMark;
            continue;
        }
        // A number beyond an int (undefined for "%d") names no field; a
        // negative one names the tag of the same 32 bits, as an int passed on
        // as a tag would.
        std::string text;
        if (tag >= std::numeric_limits<std::int32_t>::min() &&
            tag <= std::numeric_limits<std::int32_t>::max() &&
            GetFormattedField(static_cast<EFieldTags>(static_cast<std::uint32_t>(tag)), text)) {
            out += text;
        }
        // Only the digits right after the "#" are used up: a blank or a sign
        // that "%d" skipped is copied, with the digits after it.
        while (IsDigit(p[1])) ++p;
    }
    return errOK;
}
