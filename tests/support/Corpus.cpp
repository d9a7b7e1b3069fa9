#include "tests/support/Corpus.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace vliptc::test {

bool CorpusPresent() { return std::filesystem::exists(kCorpus + "MANIFEST.tsv"); }

std::vector<std::string> CorpusFiles(std::initializer_list<const char*> folders) {
    std::vector<std::string> out;
    for (const char* folder : folders) {
        for (const auto& entry : std::filesystem::directory_iterator(kCorpus + folder)) {
            if (entry.is_regular_file())
                out.push_back(std::string(folder) + "/" + entry.path().filename().string());
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string RunCommand(const std::string& command, int* status) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return out;
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, got);
    const int result = ::pclose(pipe);
    if (status != nullptr) *status = result;
    return out;
}

bool HaveTool(const char* name) {
    int status = 0;
    RunCommand(std::string("command -v ") + name + " >/dev/null 2>&1", &status);
    return status == 0;
}

std::string Quote(const std::string& path) {
    std::string out = "'";
    for (char c : path) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

}  // namespace vliptc::test
