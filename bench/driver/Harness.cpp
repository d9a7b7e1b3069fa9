// The shared harness loop: argument check, the list, the timed passes and one
// JSON line per pass.

#include "bench/driver/Harness.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <vector>

namespace vliptc::bench {

namespace {

constexpr int kExitOk = 0;
constexpr int kExitUsage = 2;

struct Arguments {
    std::string task;
    std::string list;
    long passes = 1;
};

std::optional<long> PositiveNumber(const char* text) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < 1) return std::nullopt;
    return value;
}

std::optional<Arguments> ParseArguments(int argc, char** argv) {
    Arguments arguments;
    std::vector<std::string> positional;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--passes") {
            if (i + 1 == argc) return std::nullopt;
            const std::optional<long> passes = PositiveNumber(argv[++i]);
            if (!passes) return std::nullopt;
            arguments.passes = *passes;
        } else if (word.starts_with("--")) {
            return std::nullopt;
        } else {
            positional.emplace_back(word);
        }
    }
    if (positional.size() != 2) return std::nullopt;
    arguments.task = positional[0];
    arguments.list = positional[1];
    return arguments;
}

void PrintUsage(std::string_view harness, std::span<const Task> tasks) {
    std::fprintf(stderr,
                 "usage: bench_%.*s TASK LIST_FILE [--passes N]\ntasks:", static_cast<int>(harness.size()),
                 harness.data());
    for (const Task& task : tasks) std::fprintf(stderr, " %s", task.name.c_str());
    std::fputc('\n', stderr);
}

// One path a line; blank lines are skipped, a CR before the line end dropped.
std::optional<std::vector<std::string>> ReadList(const std::string& path) {
    std::ifstream in(path);
    if (!in) return std::nullopt;
    std::vector<std::string> files;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) files.push_back(line);
    }
    if (in.bad()) return std::nullopt;
    return files;
}

std::uint64_t TotalSize(const std::vector<std::string>& files) {
    std::uint64_t total = 0;
    for (const std::string& file : files) {
        struct stat st {};
        if (::stat(file.c_str(), &st) == 0) total += static_cast<std::uint64_t>(st.st_size);
    }
    return total;
}

// The resident set now: the second number of /proc/self/statm, in pages.
long ResidentKb() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    if (!(statm >> size >> resident)) return 0;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

// The peak resident set of the process; Linux gives ru_maxrss in kilobytes.
// The kernel keeps that figure lazily, so it can lag behind the resident set
// read from statm by a few pages; the peak is at least the present one.
long PeakResidentKb() {
    rusage usage{};
    const long peak = ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
    return std::max(peak, ResidentKb());
}

}  // namespace

int RunHarness(std::string_view harness, std::span<const Task> tasks, int argc, char** argv) {
    const std::optional<Arguments> arguments = ParseArguments(argc, argv);
    if (!arguments) {
        PrintUsage(harness, tasks);
        return kExitUsage;
    }
    const Task* task = nullptr;
    for (const Task& candidate : tasks) {
        if (candidate.name == arguments->task) task = &candidate;
    }
    if (task == nullptr) {
        std::fprintf(stderr, "bench_%.*s: unknown task \"%s\"\n", static_cast<int>(harness.size()),
                     harness.data(), arguments->task.c_str());
        PrintUsage(harness, tasks);
        return kExitUsage;
    }
    const std::optional<std::vector<std::string>> files = ReadList(arguments->list);
    if (!files) {
        std::fprintf(stderr, "bench_%.*s: cannot read the list %s\n", static_cast<int>(harness.size()),
                     harness.data(), arguments->list.c_str());
        return kExitUsage;
    }

    const long baseKb = ResidentKb();
    for (long pass = 1; pass <= arguments->passes; ++pass) {
        // Sizes first: a write task changes them, and MB/s is of what it read.
        const std::uint64_t bytes = TotalSize(*files);
        std::size_t failures = 0;
        const auto start = std::chrono::steady_clock::now();
        for (const std::string& file : *files) {
            if (!task->run(file)) ++failures;
        }
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        std::printf(
            "{\"harness\":\"%.*s\",\"task\":\"%s\",\"pass\":%ld,\"files\":%zu,\"failures\":%zu,"
            "\"seconds\":%.6f,\"bytes\":%llu,\"base_rss_kb\":%ld,\"peak_rss_kb\":%ld}\n",
            static_cast<int>(harness.size()), harness.data(), task->name.c_str(), pass, files->size(),
            failures, seconds.count(), static_cast<unsigned long long>(bytes), baseKb, PeakResidentKb());
        std::fflush(stdout);
    }
    return kExitOk;
}

}  // namespace vliptc::bench
