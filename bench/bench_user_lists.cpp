// Start-up cost of the tag store with a heavily used user folder: a
// definition file of 60 fields and a "vliptcusr.dat" with 100,000 list
// entries over five datasets and 20,000 synonym lines. Goal: Load well under
// 100 ms.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tags/IPTCINI.h"

namespace {

constexpr int kListEntries = 100'000;
constexpr int kSynonymLines = 20'000;
constexpr unsigned kListIDs[] = {20, 25, 80, 90, 110};

// A temporary folder holding the generated files, removed at the end.
class BenchFolder {
public:
    BenchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vliptc-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
        m_path = pattern + "/";
        Write("vliptctags.ipt", Definitions());
        Write("vliptcusr.dat", UserData());
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;
    ~BenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& Path() const { return m_path; }

private:
    void Write(const char* name, const std::string& text) const {
        std::ofstream out(m_path + name, std::ios::binary);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        if (!out) throw std::runtime_error(std::string("cannot write ") + name);
    }

    static std::string Definitions() {
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
    static std::string Padded(int n) {
        std::string digits = std::to_string(n);
        return std::string(digits.size() < 5 ? 5 - digits.size() : 0, '0') + digits;
    }

    // The text the user-list writer produces.
    static std::string UserData() {
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

    std::string m_path;
};

void BM_LoadUserFolder(benchmark::State& state) {
    const BenchFolder folder;
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
