// Every error path of vliptc: its one-line message and exit status. A usage
// error (status 2) writes nothing: neither the image nor the user folder.

#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

struct ErrorCase {
    std::vector<std::string> args;
    int status;
    std::string message;  // part of standard error
};

class CliErrorTest : public CliTest {
protected:
    void SetUp() override {
        VLIPTC_SKIP_WITHOUT_CORPUS();
        Copy("jpeg/et_PhotoMechanic.jpg", "a.jpg");
        Copy("raw/et_CanonRaw.crw", "raw.crw");
        WriteFile(dir.File("empty.jpg"), "");
        WriteFile(dir.File("note.txt"), "not an image\n");
        original = ReadFile(dir.File("a.jpg"));
    }

    void Check(const std::vector<ErrorCase>& cases) {
        for (const auto& c : cases) {
            std::string line;
            for (const auto& arg : c.args) line += arg.substr(0, 40) + " ";
            SCOPED_TRACE(line);
            const auto result = Run(c.args);
            EXPECT_EQ(result.status, c.status);
            EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
            EXPECT_EQ(ReadFile(dir.File("a.jpg")), original);
            EXPECT_FALSE(std::filesystem::exists(user));
        }
    }

    std::string original;
};

TEST_F(CliErrorTest, UsageErrorsWriteNothing) {
    const std::string tooLong(65, 'x');  // Keywords hold 64 bytes
    Check({
        {{"iptc", "set", "a.jpg", "--bogus"}, 2, "not expected: --bogus"},
        {{"frobnicate"}, 2, "A subcommand is required"},
        {{"iptc"}, 2, "subcommand is required"},
        {{"iptc", "show"}, 2, "files is required"},
        {{"--jobs", "0", "iptc", "set", "a.jpg", "--add", "keywords=x"}, 2, "not in range"},
        {{"--defs", "/nonexistent", "iptc", "set", "a.jpg", "--add", "keywords=x"},
         2,
         "no vliptctags.ipt in /nonexistent/"},
        {{"iptc", "set", "a.jpg"}, 2, "nothing to change"},
        {{"iptc", "set", "a.jpg", "--add", "nope=1"}, 2, "unknown field \"nope\""},
        {{"iptc", "set", "a.jpg", "--clear", "country"},
         2,
         "\"country\" is ambiguous: Country/Primary Location Code, Country/Primary Location Name"},
        {{"iptc", "set", "a.jpg", "--add", "keywords"}, 2, "--add expects ID=VALUE"},
        {{"iptc", "set", "a.jpg", "--clear", "0"}, 2, "record version"},
        {{"iptc", "set", "a.jpg", "--clear", "256"}, 2, "numbers run from 1 to 255"},
        {{"iptc", "set", "a.jpg", "--add", "keywords=" + tooLong},
         2,
         "is 65 bytes; the field holds at most 64"},
        {{"iptc", "set", "a.jpg", "--set", "date created=2024-01-31"},
         2,
         "is 10 bytes; the field holds at most 8"},
        {{"iptc", "set", "a.jpg", "--add", "keywords=日本"}, 2, "cannot store"},
        {{"iptc", "set", "a.jpg", "--set", "5=a", "--set", "5=b"}, 2, "Object Name holds one value"},
        {{"iptc", "set", "a.jpg", "--add", "city=x"}, 2, "use --set, not --add"},
        {{"iptc", "set", "a.jpg", "--template", "none"}, 2, "no template named \"none\""},
        {{"templates", "delete", "none"}, 2, "no template named \"none\""},
        {{"lists", "remove", "keywords", "absent"}, 2, "\"absent\" is not in the user list of Keywords"},
        {{"lists", "add", "keywords", "say \"hi\""}, 2, "cannot hold quotes"},
        {{"synonyms", "remove", "sea"}, 2, "no synonyms for \"sea\""},
    });
}

TEST_F(CliErrorTest, FileFailuresNameTheFile) {
    const std::string big(40000, 'x');  // two of them exceed the 64 KB block
    Check({
        {{"iptc", "show", "missing.jpg"}, 1, "vliptc: missing.jpg: cannot open the file\n"},
        {{"iptc", "show", "empty.jpg"}, 1, "vliptc: empty.jpg: the file is empty\n"},
        {{"iptc", "show", "--json", "note.txt"}, 1, "vliptc: note.txt: unsupported or malformed file\n"},
        {{"iptc", "format", "raw.crw", "#5"}, 1, "vliptc: raw.crw: cannot open the file\n"},
        {{"iptc", "set", "a.jpg", "--add", "221=" + big, "--add", "222=" + big},
         1,
         "vliptc: a.jpg: the IPTC data would exceed 65536 bytes; file not changed\n"},
        {{"templates", "store", "T", "--from", "note.txt"}, 1, "note.txt: unsupported or malformed file"},
    });
    // The other files of a batch are still done.
    const auto batch = Run({"iptc", "set", "missing.jpg", "a.jpg", "--add", "keywords=done"});
    EXPECT_EQ(batch.status, 1);
    EXPECT_EQ(batch.err, "vliptc: missing.jpg: cannot open the file\nvliptc: 1 of 2 files failed\n");
    EXPECT_NE(ReadFile(dir.File("a.jpg")), original);
}

TEST_F(CliErrorTest, UnwritableUserFolderFailsTheSave) {
    WriteFile(user, "a file where the folder should be");
    const auto result = Run({"lists", "add", "keywords", "sea"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("cannot create the user folder"), std::string::npos) << result.err;
}

}  // namespace
}  // namespace vliptc::test
