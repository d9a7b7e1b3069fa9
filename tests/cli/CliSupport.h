#pragma once

// Running the built vliptc on copies of corpus files in a temporary folder,
// with a user folder of its own so the real home is never touched.

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/containers/CorpusSupport.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

struct CliResult {
    int status = -1;
    std::string out;
    std::string err;
};

class CliTest : public ::testing::Test {
protected:
    TempDir dir;
    std::string user = dir.Path() + "user";  // never created by the test itself

    // Runs vliptc with "--user" and args in folder cwd (the temp folder when empty).
    CliResult Run(const std::vector<std::string>& args, const std::string& cwd = {}) const {
        std::string command =
            "cd " + Quote(cwd.empty() ? dir.Path() : cwd) + " && " VLIPTC_CLI " --user " + Quote(user);
        for (const auto& arg : args) command += " " + Quote(arg);
        command += " >" + Quote(dir.Path() + ".out") + " 2>" + Quote(dir.Path() + ".err") + " </dev/null";
        const int raw = std::system(command.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFile(dir.Path() + ".out"),
                ReadFile(dir.Path() + ".err")};
    }

    // A writable copy of a corpus file in the temp folder, under name.
    std::string Copy(const std::string& corpusPath, const std::string& name) const {
        const std::string target = dir.File(name);
        std::filesystem::copy_file(kCorpus + corpusPath, target,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::permissions(target, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
        return target;
    }

    // ExifTool's IPTC tags of a file ("Keywords" -> its values as text).
    static std::map<std::string, std::vector<std::string>> ExifToolIptc(const std::string& path) {
        const auto parsed =
            nlohmann::json::parse(RunCommand("exiftool -j -IPTC:all " + Quote(path) + " 2>/dev/null"));
        std::map<std::string, std::vector<std::string>> out;
        for (const auto& [key, value] : parsed.at(0).items()) {
            if (key == "SourceFile") continue;
            if (value.is_array()) {
                for (const auto& v : value) out[key].push_back(ExifToolText(v));
            } else {
                out[key].push_back(ExifToolText(value));
            }
        }
        return out;
    }
};

#define VLIPTC_SKIP_WITHOUT_EXIFTOOL() \
    if (!::vliptc::test::HaveTool("exiftool")) GTEST_SKIP() << "exiftool is not installed"

}  // namespace vliptc::test
