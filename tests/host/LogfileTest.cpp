#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/QXTLogfile.h"
#include "host/VLException.h"
#include "tests/support/TempDir.h"

namespace {

struct Line {
    std::string time, level, source, text;
};

std::vector<Line> ReadLines(const std::string& path) {
    std::vector<Line> lines;
    std::istringstream in(vliptc::test::ReadFile(path));
    std::string raw;
    while (std::getline(in, raw)) {
        Line line;
        std::istringstream fields(raw);
        std::getline(fields, line.time, '\t');
        std::getline(fields, line.level, '\t');
        std::getline(fields, line.source, '\t');
        std::getline(fields, line.text);
        lines.push_back(line);
    }
    return lines;
}

TEST(Logfile, TheFiveEntryForms) {
    vliptc::test::TempDir dir;
    const std::string path = dir.File("host.log");
    vliptc::test::WriteFile(path, "earlier line\n");

    CQXTLogfile log(path, [](unsigned id) { return id == 15600 ? std::string("Template could not be read") : ""; });
    CVLException failure("cannot open \"a.jpg\"");
    ASSERT_TRUE(log.AddError(&failure, 10, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddError(15600u, 11, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddError(15601u, 12, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddError(5u, "Updating file after IPTC update", 13, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddError("/photos/a.jpg", 14, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddInformal("IPTC: Processing file /photos/a.jpg", 4, 15, "editors/VLIPTCEditor.cpp"));
    ASSERT_TRUE(log.AddInformal("two\r\nlines", 4, 16, nullptr));
    ASSERT_TRUE(log.AddError(static_cast<CException*>(nullptr), 17, "x.cpp"));

    // Each line is flushed as written: readable while the log is still open.
    const std::vector<Line> lines = ReadLines(path);
    ASSERT_EQ(lines.size(), 9u);
    EXPECT_EQ(lines[0].time, "earlier line");  // appended, not truncated

    struct Expected {
        const char* level;
        const char* source;
        const char* text;
    };
    const Expected expected[] = {
        {"ERROR", "editors/VLIPTCEditor.cpp:10", "cannot open \"a.jpg\""},
        {"ERROR", "editors/VLIPTCEditor.cpp:11", "Template could not be read"},
        {"ERROR", "editors/VLIPTCEditor.cpp:12", "message 15601"},
        {"ERROR", "editors/VLIPTCEditor.cpp:13", "error 5: Updating file after IPTC update"},
        {"ERROR", "editors/VLIPTCEditor.cpp:14", "/photos/a.jpg"},
        {"INFO4", "editors/VLIPTCEditor.cpp:15", "IPTC: Processing file /photos/a.jpg"},
        {"INFO4", "?:16", "two  lines"},
        {"ERROR", "x.cpp:17", "unknown exception"},
    };
    const std::regex stamp(R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2})");
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(i);
        const Line& line = lines[i + 1];
        EXPECT_TRUE(std::regex_match(line.time, stamp)) << line.time;
        EXPECT_EQ(line.level, expected[i].level);
        EXPECT_EQ(line.source, expected[i].source);
        EXPECT_EQ(line.text, expected[i].text);
    }
}

TEST(Logfile, UnwritablePathReportsFalse) {
    vliptc::test::TempDir dir;
    CQXTLogfile log(dir.File("no/such/folder/host.log"));
    EXPECT_FALSE(log.AddError("text", 1, "x.cpp"));
    EXPECT_FALSE(log.AddInformal("text", 4, 1, "x.cpp"));
    EXPECT_FALSE(log.AddError(3u, 1, "x.cpp"));
}

}  // namespace
