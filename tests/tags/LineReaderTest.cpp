// The readers under every file the tag store parses: logical lines, key and
// value, lines of quoted synonyms.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tags/TagsTestSupport.h"

namespace vliptc::test {
namespace {

using Lines = std::vector<std::string>;

Lines AllLines(OpenINI& ini, const std::string& text) {
    const char* cursor = text.c_str();
    Lines lines;
    std::string line;
    while (ini.NextLine(cursor, line)) lines.push_back(line);
    EXPECT_EQ(*cursor, '\0') << "stops on the terminating zero";
    return lines;
}

TEST(NextLine, LogicalLines) {
    struct Case {
        const char* name;
        std::string text;
        Lines lines;
    };
    const Case cases[] = {
        {"plain", "a\nb\n", {"a", "b"}},
        {"last line without line feed is dropped", "a\nb", {"a"}},
        {"only an unterminated line", "ID 5", {}},
        {"empty text", "", {}},
        {"CR LF line ends", "a\r\nb\r\n", {"a", "b"}},
        {"leading blanks dropped, inner and trailing kept", " \t key  value \t\n", {"key  value \t"}},
        {"comments and blank lines skipped", "; note\n\n \t \n\r\n;\nx\n", {"x"}},
        {"a blank behind a CR is no longer leading", "\r  x\n", {"  x"}},
        {"quotes keep blanks", "\"  quoted  \"\n", {"  quoted  "}},
        {"quoted value spans lines", "DESC \"one\ntwo\r\nthree\"\nnext\n",
         {"DESC one\ntwo\r\nthree", "next"}},
        {"quoted comment is still a comment", ";\"a\nb\"\nx\n", {"x"}},
        {"quoted ; opens a comment too", "\";x\"\ny\n", {"y"}},
        {"unbalanced quote swallows the rest", "a\n\"b\nc\nd\n", {"a"}},
        // A doubled quote gives one quote and then toggles quoting.
        {"pairs around a word", "NAME say \"\"hi\"\"\n", {"NAME say \"hi\""}},
        {"pair inside quotes reopens them", "\"a\"\"b\"\nrest\"\n", {"a\"b\nrest"}},
        {"pair inside quotes: the line feed joins the value", "\"a\"\" b\"\n", {}},
        {"three quotes give two and a toggle", "x\"\"\"y\"\n", {"x\"\"y"}},
        {"embedded zero ends the text", std::string("a\n\0b\n", 5), {"a"}},
    };
    for (const Case& c : cases) {
        OpenINI ini;
        EXPECT_EQ(AllLines(ini, c.text), c.lines) << c.name;
    }
}

TEST(NextLine, ResumesBehindEachLineAndStaysAtTheEnd) {
    OpenINI ini;
    const std::string text = "{\nID 5\n[";
    const char* cursor = text.c_str();
    std::string line;
    ASSERT_TRUE(ini.NextLine(cursor, line));
    EXPECT_EQ(cursor, text.c_str() + 2);
    ASSERT_TRUE(ini.NextLine(cursor, line));
    EXPECT_FALSE(ini.NextLine(cursor, line));
    EXPECT_TRUE(line.empty());
    EXPECT_FALSE(ini.NextLine(cursor, line));
}

TEST(NextTagBlock, OneBlockPerCall) {
    OpenINI ini;
    const std::string text =
        "{\nID 5\nNAME five\n}\n"
        "ignored\n{\nID 6\nNAME six\n}\n"
        "{\nID 7\nNAME seven\n}\n"
        "between\n[\nID 5\n]\n";
    const char* cursor = text.c_str();
    CVLIPTCINI::STagInfo tag;
    ASSERT_TRUE(ini.NextTagBlock(cursor, tag));
    EXPECT_EQ(tag.nID, 5u);
    ASSERT_TRUE(ini.NextTagBlock(cursor, tag));
    EXPECT_EQ(tag.strName, "six");
    ASSERT_TRUE(ini.NextTagBlock(cursor, tag));
    EXPECT_EQ(tag.nID, 7u);
    const char* const afterSeven = cursor;
    // The "[" line ends the tag part: back to where the call began, with an
    // empty block.
    EXPECT_FALSE(ini.NextTagBlock(cursor, tag));
    EXPECT_EQ(cursor, afterSeven);
    EXPECT_TRUE(tag.strName.empty());
    EXPECT_FALSE(ini.NextTagBlock(cursor, tag)) << "and again: it does not move";
    EXPECT_EQ(cursor, afterSeven);

    // A block closed at the very end of the text reports false yet is filled.
    const std::string last = "{\nID 9\nNAME nine\n}\n";
    cursor = last.c_str();
    EXPECT_FALSE(ini.NextTagBlock(cursor, tag));
    EXPECT_EQ(tag.strName, "nine");
}

TEST(SplitTag, KeyAndValue) {
    struct Case {
        const char* line;
        const char* key;
        const char* value;
    };
    const Case cases[] = {
        {"ID 120", "ID", "120"},
        {"name\t\tCaption  ", "NAME", "Caption  "},
        {"  Desc  two  words ", "DESC", "two  words "},
        {"LISTREF", "LISTREF", ""},
        {"id=5", "ID=5", ""},  // no equals sign in this syntax
        {"", "", ""},
    };
    for (const Case& c : cases) {
        OpenINI ini;
        std::string key = "stale";
        std::string value = "stale";
        ini.SplitTag(c.line, key, value);
        EXPECT_EQ(key, c.key) << c.line;
        EXPECT_EQ(value, c.value) << c.line;
    }
}

TEST(NextLineMultiple, QuotedValues) {
    struct Case {
        const char* name;
        std::string text;
        bool complete;
        Lines values;
        std::string rest;  // what the cursor is left on
    };
    const Case cases[] = {
        {"keyword and synonyms", "\"sea\",\"ocean\",\"ocean\"\nx", true, {"sea", "ocean", "ocean"}, "x"},
        {"blank after comma starts the value", "\"sea\", \"ocean\",  \"water\"\n", true,
         {"sea", " ocean", "  water"}, ""},
        {"leading blanks skipped", " \t\"a\"\n", true, {"a"}, ""},
        {"lines without values passed over", "\n\r\n;note\n\"a\"\n", true, {"a"}, ""},
        {"unquoted words and commas dropped", "\"a\" junk,\"b\"\n", true, {"a", " b"}, ""},
        {"brackets inside quotes", "\"a[1]\",\"]\"\n", true, {"a[1]", "]"}, ""},
        {"line break inside quotes", "\"a\nb\",\"c\"\r\n", true, {"a\nb", "c"}, ""},
        {";-values dropped", "\";x\",\"y\"\n", true, {"y"}, ""},
        {"closing bracket ends the section", "]\n\"a\"\n", false, {}, "]\n\"a\"\n"},
        {"bracket behind values on the same line", "\"a\",\"b\"[\n", false, {"a", "b"}, "[\n"},
        {"unterminated last line", "\"a\",\"b\"", false, {"a", "b"}, ""},
        // Only the start of the call counts as a line start: after a CR, the
        // blanks of the following lines are collected.
        {"blanks after an empty CR LF line", "\r\n  \"a\"\n", true, {"  a"}, ""},
        // What the writer makes of the value  say "hi"  does not read back.
        {"pairs as the writer doubles them", "\"say \"\"hi\"\"\"\nnext\n", false, {"say \""}, ""},
    };
    for (const Case& c : cases) {
        OpenINI ini;
        const char* cursor = c.text.c_str();
        std::vector<CVLProperty> values{CVLProperty("stale")};
        EXPECT_EQ(ini.NextLineMultiple(cursor, values), c.complete) << c.name;
        EXPECT_EQ(Texts(values), c.values) << c.name;
        EXPECT_EQ(std::string(cursor), c.rest) << c.name;
    }
}

}  // namespace
}  // namespace vliptc::test
