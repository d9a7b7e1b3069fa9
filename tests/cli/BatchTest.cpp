// A batch of 200 files: parallel workers write the same bytes as one worker,
// and print in the order of the files given.

#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

TEST_F(CliTest, ParallelBatchWritesWhatOneWorkerWrites) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    // Copies of the small corpus JPEGs, 200 in all; the few whose layout the
    // JPEG writer refuses fail alike in both runs.
    std::vector<std::string> sources;
    for (const auto& file : CorpusFiles({"jpeg"})) {
        if (std::filesystem::file_size(kCorpus + file) < 16 * 1024) sources.push_back(file);
    }
    ASSERT_GT(sources.size(), 20u);
    std::vector<std::string> names;
    for (const std::string folder : {"one", "two"}) std::filesystem::create_directory(dir.File(folder));
    for (std::size_t i = 0; i < 200; ++i) {
        names.push_back("f" + std::to_string(i) + ".jpg");
        Copy(sources[i % sources.size()], "one/" + names.back());
        Copy(sources[i % sources.size()], "two/" + names.back());
    }
    auto args = [&names](const char* jobs, std::vector<std::string> command) {
        std::vector<std::string> out = {"--jobs", jobs};
        out.insert(out.end(), command.begin(), command.end());
        out.insert(out.end(), names.begin(), names.end());
        return out;
    };
    const std::vector<std::string> set = {
        "iptc", "set", "--add", "keywords=batch", "--set", "object name=Run", "--remove", "keywords=one"};
    const auto single = Run(args("1", set), dir.File("one"));
    const auto parallel = Run(args("2", set), dir.File("two"));
    EXPECT_EQ(single.status, parallel.status);
    EXPECT_EQ(single.err, parallel.err);  // failures in input order; no progress bar off a terminal
    EXPECT_EQ(parallel.out, "");
    for (const auto& name : names) {
        EXPECT_EQ(ReadFile(dir.File("one/" + name)), ReadFile(dir.File("two/" + name))) << name;
    }

    const auto shown = Run(args("2", {"iptc", "show", "--json"}), dir.File("two"));
    EXPECT_EQ(shown.out, Run(args("1", {"iptc", "show", "--json"}), dir.File("two")).out);
    const auto parsed = nlohmann::json::parse(shown.out);
    ASSERT_EQ(parsed.size(), names.size());
    std::size_t tagged = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(parsed[i]["file"], names[i]);
        for (const auto& field : parsed[i]["fields"]) {
            tagged += field["id"] == 5 && field["values"][0] == "Run" ? 1 : 0;
        }
    }
    EXPECT_GT(tagged, 180u);

    if (!HaveTool("exiftool")) return;
    const auto read = nlohmann::json::parse(
        RunCommand("cd " + Quote(dir.File("two")) + " && exiftool -j -IPTC:ObjectName f1.jpg f2.jpg f3.jpg"));
    for (const auto& file : read) EXPECT_EQ(file["ObjectName"], "Run");
}

}  // namespace
}  // namespace vliptc::test
