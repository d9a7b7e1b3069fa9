// Start-up cost of the tag store with a heavily used user folder: a
// definition file of 60 fields and a "vliptcusr.dat" with 100,000 list
// entries over five datasets and 20,000 synonym lines. Goal: Load well under
// 100 ms.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/BenchFolder.h"
#include "tags/IPTCINI.h"

namespace {

constexpr int kListEntries = 100'000;
constexpr int kSynonymLines = 20'000;
constexpr unsigned kListIDs[] = {20, 25, 80, 90, 110};

std::string Definitions() {
    std::string text = "; generated for the benchmark\n";
    for (unsigned id = 1; id <= 60; ++id) {
        text += "{\nID\t" + std::to_string(id * 2) + "\nNAME\tField " + std::to_string(id) +
                "\nDESC\t\"Help text of the field,\nover two lines\"\nTYPE\tSTRING\nMAXLEN\t64\n"
                "REPEATABLE\t1\n}\n\n";
    }
    text += "[\nID\t10\n1\n2\n3\n4\n5\n6\n7\n8\n]\n";
    return text;
}

// Five digits, so that the keywords stand in ascending order as the
// user-list writer would put them.
std::string Padded(int n) {
    std::string digits = std::to_string(n);
    return std::string(digits.size() < 5 ? 5 - digits.size() : 0, '0') + digits;
}

// The text the user-list writer produces.
std::string UserData() {
    std::string text;
    constexpr int kPerList = kListEntries / static_cast<int>(std::size(kListIDs));
    for (const unsigned id : kListIDs) {
        text += "[\r\nID\t" + std::to_string(id) + "\r\n";
        for (int i = 0; i < kPerList; ++i) {
            text += "\"entry " + std::to_string(id) + "-" + Padded(i) + "\"\r\n";
        }
        text += "]\r\n\r\n";
    }
    text += "[\r\nSID\t25\r\n";
    for (int i = 0; i < kSynonymLines; ++i) {
        const std::string n = Padded(i);
        text += "\"entry 25-" + n + "\",\"synonym " + n + "a\",\"synonym " + n + "b\",\"synonym " + n +
                "a\"\r\n";
    }
    text += "]\r\n\r\n";
    return text;
}

void BM_LoadUserFolder(benchmark::State& state) {
    const vliptc::bench::BenchFolder folder;
    folder.Write("vliptctags.ipt", Definitions());
    folder.Write("vliptcusr.dat", UserData());
    std::size_t entries = 0;
    for (auto _ : state) {
        CVLIPTCINI ini;
        if (!ini.Load(folder.Path(), folder.Path())) {
            state.SkipWithError("Load failed");
            break;
        }
        entries = 0;
        for (const auto& [id, values] : ini.UserLists()) entries += values.size();
        benchmark::DoNotOptimize(entries);
    }
    state.counters["list_entries"] = static_cast<double>(entries);
}
BENCHMARK(BM_LoadUserFolder)->Unit(benchmark::kMillisecond);

}  // namespace
