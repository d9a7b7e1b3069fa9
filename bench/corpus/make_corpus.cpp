// bench_make_corpus DIR [--small-count N]
//
// Writes the benchmark corpus into DIR, one folder per set, and a list of
// each set's files (absolute paths, one a line) beside them:
//
//   jpeg/0000.jpg..1999.jpg     150 KB to 4 MB (MainJpegSize)   jpeg.list, jpeg-200.list
//   tiff/00.tif..19.tif         30 MiB                          tiff.list
//   tiff-1mb/00.tif..19.tif     1 MiB                           tiff-1mb.list
//   jpeg-30mb/00.jpg..04.jpg    30 MiB                          jpeg-30mb.list
//   small/00000.jpg..           20 to 60 KB, --small-count of them (20,000)   small.list
//
// A file already there with the right size is kept, so a second run only
// rewrites the lists.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "bench/corpus/Corpus.h"

namespace {

namespace fs = std::filesystem;
using vliptc::bench::Bytes;

constexpr std::size_t kMiB = 1024 * 1024;
constexpr std::uint32_t kDefaultSmallCount = 20000;
constexpr std::size_t kFirstFiles = 200;  // jpeg-200.list

// 20 to 60 KB, spread over the range by a multiplicative hash of the number.
std::size_t SmallJpegSize(std::uint32_t number) { return 20000 + (number * 2654435761u) % 40001; }

struct Set {
    std::string name;  // folder and list
    const char* extension;
    int digits;  // of the file names
    std::uint32_t count;
    std::function<std::size_t(std::uint32_t)> size;
    Bytes (*make)(std::uint32_t, std::size_t);
};

struct Totals {
    std::size_t files = 0;
    std::size_t written = 0;
    std::uintmax_t bytes = 0;
};

bool WriteFile(const fs::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return static_cast<bool>(out);
}

bool WriteList(const fs::path& path, const std::vector<std::string>& files) {
    std::ofstream out(path, std::ios::trunc);
    for (const std::string& file : files) out << file << '\n';
    out.close();
    return static_cast<bool>(out);
}

std::string FileName(const Set& set, std::uint32_t number) {
    std::string digits = std::to_string(number);
    if (digits.size() < static_cast<std::size_t>(set.digits))
        digits.insert(0, set.digits - digits.size(), '0');
    return digits + set.extension;
}

// Makes the set's files that are missing or of another size; the paths of
// all of them in order. False when a file could not be written.
bool MakeSet(const fs::path& root, const Set& set, std::vector<std::string>& paths, Totals& totals) {
    const fs::path folder = root / set.name;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        std::fprintf(stderr, "bench_make_corpus: cannot create %s: %s\n", folder.c_str(),
                     error.message().c_str());
        return false;
    }
    for (std::uint32_t number = 0; number < set.count; ++number) {
        const fs::path path = folder / FileName(set, number);
        const std::size_t size = set.size(number);
        paths.push_back(path.string());
        ++totals.files;
        const std::uintmax_t present = fs::file_size(path, error);
        if (!error && present == size) {
            totals.bytes += present;
            continue;
        }
        const Bytes bytes = set.make(number, size);
        if (!WriteFile(path, bytes)) {
            std::fprintf(stderr, "bench_make_corpus: cannot write %s\n", path.c_str());
            return false;
        }
        totals.bytes += bytes.size();
        ++totals.written;
    }
    return true;
}

int Usage() {
    std::fputs("usage: bench_make_corpus DIR [--small-count N]\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string dir;
    std::uint32_t smallCount = kDefaultSmallCount;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--small-count" && i + 1 < argc) {
            char* end = nullptr;
            const unsigned long count = std::strtoul(argv[++i], &end, 10);
            if (*end != '\0' || count > 99999) return Usage();  // five digits in the names
            smallCount = static_cast<std::uint32_t>(count);
        } else if (dir.empty() && !word.starts_with("--")) {
            dir = word;
        } else {
            return Usage();
        }
    }
    if (dir.empty()) return Usage();

    const auto fixed = [](std::size_t size) { return [size](std::uint32_t) { return size; }; };
    const Set sets[] = {
        {"jpeg", ".jpg", 4, vliptc::bench::kMainJpegCount, vliptc::bench::MainJpegSize,
         vliptc::bench::MakeJpeg},
        {"tiff", ".tif", 2, 20, fixed(30 * kMiB), vliptc::bench::MakeTiff},
        {"tiff-1mb", ".tif", 2, 20, fixed(kMiB), vliptc::bench::MakeTiff},
        {"jpeg-30mb", ".jpg", 2, 5, fixed(30 * kMiB), vliptc::bench::MakeJpeg},
        {"small", ".jpg", 5, smallCount, SmallJpegSize, vliptc::bench::MakeJpeg},
    };

    const fs::path root = fs::absolute(dir).lexically_normal();
    const auto start = std::chrono::steady_clock::now();
    Totals all;
    for (const Set& set : sets) {
        const auto setStart = std::chrono::steady_clock::now();
        Totals totals;
        std::vector<std::string> paths;
        if (!MakeSet(root, set, paths, totals)) return 1;
        bool listed = WriteList(root / (set.name + ".list"), paths);
        if (set.name == "jpeg") {
            paths.resize(std::min(paths.size(), kFirstFiles));
            listed = listed && WriteList(root / "jpeg-200.list", paths);
        }
        if (!listed) {
            std::fprintf(stderr, "bench_make_corpus: cannot write the list of %s\n", set.name.c_str());
            return 1;
        }
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - setStart;
        std::fprintf(stderr, "%s: %zu files, %ju bytes (%zu written, %zu kept), %.1f s\n", set.name.c_str(),
                     totals.files, totals.bytes, totals.written, totals.files - totals.written,
                     seconds.count());
        all.files += totals.files;
        all.written += totals.written;
        all.bytes += totals.bytes;
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "corpus %s: %zu files, %ju bytes (%.2f GB), %zu written, %.1f s\n", root.c_str(),
                 all.files, all.bytes, static_cast<double>(all.bytes) / 1e9, all.written, seconds.count());
    return 0;
}
