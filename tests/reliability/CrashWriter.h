#pragma once

// What the crash test's writer process (crash_writer) and the test share:
// the record it writes, and its progress file, one line "INDEX RESULT" per
// write, appended after the write returned. The writer resumes behind the
// last line; the test counts the writes from it.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace vliptc::test {

// The writer sets the caption (2:120) to this text and the keywords (2:25)
// to kCrashKeywords, keeping every other field of the file's record.
inline constexpr std::uint32_t kCrashCaptionId = 120;
inline constexpr std::uint32_t kCrashKeywordsId = 25;
inline constexpr const char* kCrashCaption = "Written by the crash test";
inline constexpr const char* kCrashKeywords[] = {"crash", "test"};

struct ProgressLine {
    std::size_t index = 0;
    std::uint32_t result = 0;  // CIPTC::EError
};

// The complete lines of the file. A line that a kill cut off has no newline
// and is left out.
inline std::vector<ProgressLine> ReadProgress(const std::string& path) {
    std::vector<ProgressLine> lines;
    std::ifstream in(path);
    for (std::string text; std::getline(in, text) && !in.eof();) {
        const std::size_t blank = text.find(' ');
        if (blank == std::string::npos) break;
        lines.push_back({std::stoul(text), static_cast<std::uint32_t>(std::stoul(text.substr(blank + 1)))});
    }
    return lines;
}

}  // namespace vliptc::test
