#include "tags/internal/LineReader.h"

#include <limits>

namespace vliptc::tags::internal {

namespace {

// Characters that need no decision of their own in a logical line; runs of
// them are copied in one piece.
constexpr bool IsPlain(char c) noexcept {
    return c != '\0' && c != ' ' && c != '\t' && c != '\n' && c != '\r' && c != '"';
}

constexpr bool IsCSpace(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// A collected value counts unless it is empty or a commented-out entry.
bool IsValue(const std::string& text) noexcept { return !text.empty() && text.front() != ';'; }

}  // namespace

bool ReadLogicalLine(const char*& cursor, std::string& line) {
    line.clear();
    bool atLineStart = true;
    bool inQuotes = false;
    const char* p = cursor;
    while (*p != '\0') {
        const char c = *p;
        switch (c) {
            case ' ':
            case '\t':
                if (inQuotes || !atLineStart) line.push_back(c);
                break;
            case '\n':
                if (inQuotes) {
                    line.push_back(c);
                } else if (IsValue(line)) {
                    cursor = p + 1;
                    return true;
                } else {
                    // An empty line or a comment: forget it and start afresh.
                    line.clear();
                    atLineStart = true;
                }
                break;
            case '\r':
                if (inQuotes) {
                    line.push_back(c);
                } else {
                    atLineStart = false;
                }
                break;
            case '"':
                // p[1] is readable: p is not on the terminating zero. A pair
                // keeps one quote and moves on by one character only, so the
                // second quote is judged again by this same rule.
                if (p[1] == '"') {
                    line.push_back('"');
                } else {
                    inQuotes = !inQuotes;
                }
                break;
            default: {
                const char* run = p + 1;
                while (IsPlain(*run)) ++run;
                line.append(p, run);
                atLineStart = false;
                p = run;
                continue;
            }
        }
        ++p;
    }
    cursor = p;
    line.clear();
    return false;
}

bool ReadQuotedValues(const char*& cursor, std::vector<std::string>& values) {
    values.clear();
    std::string pending;
    bool inQuotes = false;
    bool atLineStart = true;
    const char* p = cursor;
    auto takePending = [&] {
        if (IsValue(pending)) values.push_back(std::move(pending));
        pending.clear();
    };
    while (*p != '\0') {
        const char c = *p;
        switch (c) {
            case '"':
                if (p[1] == '"') {
                    pending.push_back('"');
                } else if (inQuotes) {
                    takePending();
                    inQuotes = false;
                } else {
                    // An opening quote keeps what was collected before it
                    // (blanks behind a comma become part of the value).
                    inQuotes = true;
                }
                break;
            case '[':
            case ']':
                if (!inQuotes) {
                    cursor = p;
                    return false;
                }
                pending.push_back(c);
                break;
            case ' ':
            case '\t':
                if (inQuotes || !atLineStart) pending.push_back(c);
                break;
            case '\n':
                if (inQuotes) {
                    pending.push_back(c);
                    break;
                }
                takePending();
                if (!values.empty()) {
                    cursor = p + 1;
                    return true;
                }
                // Nothing on this line: go on with the next one. Unlike a
                // logical line, the at-line-start state is not renewed here.
                break;
            case '\r':
                if (inQuotes) {
                    pending.push_back(c);
                } else {
                    atLineStart = false;
                }
                break;
            default:
                atLineStart = false;
                if (inQuotes) {
                    const char* run = p + 1;
                    while (IsPlain(*run)) ++run;
                    pending.append(p, run);
                    p = run;
                    continue;
                }
                break;  // commas and unquoted words are dropped
        }
        ++p;
    }
    cursor = p;
    return false;
}

std::int64_t ParseNumber(std::string_view text) noexcept {
    std::size_t i = 0;
    while (i < text.size() && IsCSpace(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    // Accumulate towards the sign's side so that the most negative value
    // needs no special case.
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        const int digit = text[i] - '0';
        if (negative) {
            if (value < (kMin + digit) / 10) return kMin;
            value = value * 10 - digit;
        } else {
            if (value > (kMax - digit) / 10) return kMax;
            value = value * 10 + digit;
        }
    }
    return value;
}

std::int32_t ParseInt32(std::string_view text) noexcept {
    const std::int64_t value = ParseNumber(text);
    if (value > std::numeric_limits<std::int32_t>::max()) return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min()) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

std::uint32_t ParseDatasetNumber(std::string_view text) noexcept {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(ParseNumber(text)));
}

void ToUpperAscii(std::string& text) noexcept {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
}

std::string_view TrimBlanks(std::string_view text) noexcept {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && IsBlank(text[begin])) ++begin;
    while (end > begin && IsBlank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

}  // namespace vliptc::tags::internal
