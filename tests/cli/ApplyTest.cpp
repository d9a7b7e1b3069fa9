// vliptc iptc apply: the editor's write pass from the command line, read
// back by ExifTool.

#include "platform/FileSystem.h"
#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

using Tags = std::map<std::string, std::vector<std::string>>;

class ApplyTest : public CliTest {
protected:
    // ExifTool's IPTC tags without the record version.
    static Tags Iptc(const std::string& path) {
        Tags tags = ExifToolIptc(path);
        tags.erase("ApplicationRecordVersion");
        return tags;
    }
};

// The template T is edited by the options; F takes only what the edit
// changed (modified), with keywords merged, and keeps its times; G, which has
// no IPTC, takes what it lacks (keep) without keywords (none). T itself takes
// the edit as it stands.
TEST_F(ApplyTest, WritesByTheModes) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    VLIPTC_SKIP_WITHOUT_EXIFTOOL();
    const std::string t = Copy("jpeg/ian_Canon_40D.jpg", "t.jpg");
    const std::string f = Copy("jpeg/ian_Canon_40D.jpg", "f.jpg");
    const std::string g = Copy("jpeg/ian_Canon_40D.jpg", "g.jpg");
    ASSERT_EQ(Run({"iptc", "set", "t.jpg", "--set", "object name=T title", "--set", "city=Oslo", "--add",
                   "keywords=b", "--set", "headline=T headline"})
                  .status,
              0);
    ASSERT_EQ(Run({"iptc", "set", "f.jpg", "--set", "object name=F title", "--add", "keywords=a", "--add",
                   "keywords=b", "--set", "headline=F headline"})
                  .status,
              0);
    const platform::FileTimes old{std::nullopt, {981'173'106'123'456'789}, {981'173'106'987'654'321}};
    ASSERT_TRUE(platform::SetFileTimes(f, old));

    const auto modified = Run({"iptc", "apply", "--from", "t.jpg", "--write-mode", "modified", "--keywords",
                               "merge", "--set", "object name=New title", "--add", "keywords=c", "--clear",
                               "headline", "--keep-times", "f.jpg", "t.jpg"});
    ASSERT_EQ(modified.status, 0) << modified.err;
    EXPECT_EQ(modified.out + modified.err, "");
    EXPECT_EQ(platform::GetFileTimes(f)->write, old.write);
    EXPECT_EQ(platform::GetFileTimes(f)->access, old.access);
    EXPECT_EQ(
        Iptc(f),
        (Tags{{"ObjectName", {"New title"}}, {"Keywords", {"a", "b", "c"}}, {"Headline", {"F headline"}}}));
    EXPECT_EQ(Iptc(t), (Tags{{"ObjectName", {"New title"}}, {"Keywords", {"b", "c"}}, {"City", {"Oslo"}}}));

    const auto keep = Run({"iptc", "apply", "--from", "t.jpg", "--write-mode", "keep", "--keywords", "none",
                           "--set", "city=Bergen", "f.jpg", "g.jpg"});
    ASSERT_EQ(keep.status, 0) << keep.err;
    EXPECT_EQ(Iptc(g), (Tags{{"ObjectName", {"New title"}}, {"City", {"Bergen"}}}));
    EXPECT_EQ(Iptc(f), (Tags{{"ObjectName", {"New title"}},
                             {"Keywords", {"a", "b", "c"}},
                             {"Headline", {"F headline"}},
                             {"City", {"Bergen"}}}));
}

// Mistakes stop the command before any file is touched.
TEST_F(ApplyTest, RefusesBeforeTouchingFiles) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const std::string f = Copy("jpeg/et_PhotoMechanic.jpg", "f.jpg");
    Copy("jpeg/ian_Canon_40D.jpg", "t.jpg");
    WriteFile(dir.File("bad.jpg"), "not a JPEG");
    const std::string before = ReadFile(f);
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"f.jpg"}, "--from is required"},
        {{"--from", "missing.jpg", "f.jpg"}, "the template file missing.jpg: cannot open the file"},
        {{"--from", "bad.jpg", "f.jpg"}, "the template file bad.jpg: unsupported or malformed file"},
        {{"--from", "t.jpg", "--write-mode", "all", "f.jpg"},
         "--write-mode: all not in {keep,modified,replace}"},
        {{"--from", "t.jpg", "--keywords", "add", "f.jpg"}, "--keywords: add not in {merge,none,replace}"},
        {{"--from", "t.jpg", "--add", "city=Oslo", "f.jpg"}, "City holds one value: use --set, not --add"},
    };
    for (const auto& [args, message] : cases) {
        std::vector<std::string> command = {"iptc", "apply"};
        command.insert(command.end(), args.begin(), args.end());
        const auto result = Run(command);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(ReadFile(f), before) << message;
    }
}

}  // namespace
}  // namespace vliptc::test
