// EXIF read per file against the read floor. The floor is what any reader of
// a file pays: open, map, touch the first 64 KB, close. CVLEXIF::LoadFile
// maps the file once and parses in place, so its cost above the floor is the
// walk and the values it keeps. Files: the JPEGs of the public corpus
// (../shared/corpus/jpeg, from the repository root) when present, otherwise
// generated JPEGs with a camera-like EXIF block and 200 KB of image data.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "platform/MappedFile.h"

namespace {

namespace fs = std::filesystem;

std::string LE(std::uint32_t value, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    return out;
}

// A JPEG whose APP1 carries IFD0 (12 entries), an EXIF directory (30) and IFD1.
std::string GeneratedJpeg(int seed) {
    struct Entry {
        std::uint16_t tag, type;
        std::uint32_t count;
        std::string data;
    };
    const std::string date = "2024:05:" + std::to_string(10 + seed % 20) + " 12:00:00";
    std::vector<Entry> ifd0 = {{271, 2, 6, std::string("Maker\0", 6)},
                               {272, 2, 8, std::string("Model X\0", 8)},
                               {274, 3, 1, LE(1, 2)},
                               {282, 5, 1, LE(72, 4) + LE(1, 4)},
                               {283, 5, 1, LE(72, 4) + LE(1, 4)},
                               {296, 3, 1, LE(2, 2)},
                               {305, 2, 10, std::string("Firmware\0\0", 10)},
                               {306, 2, 20, date + std::string(1, '\0')},
                               {315, 2, 8, std::string("Someone\0", 8)},
                               {531, 3, 1, LE(2, 2)},
                               {33432, 2, 10, std::string("(c) 2024\0\0", 10)}};
    std::vector<Entry> exif;
    for (std::uint16_t i = 0; i < 24; ++i)
        exif.push_back({static_cast<std::uint16_t>(33434 + i), 5, 1, LE(i + 1, 4) + LE(10, 4)});
    exif.push_back({36864, 7, 4, "0230"});
    exif.push_back({36867, 2, 20, date + std::string(1, '\0')});
    exif.push_back({37500, 7, 600, std::string(600, 'm')});
    exif.push_back({37510, 7, 40, std::string("ASCII\0\0\0", 8) + std::string(32, 'c')});
    exif.push_back({41728, 7, 1, "\x03"});
    exif.push_back({41729, 7, 1, "\x01"});
    std::vector<Entry> ifd1 = {{259, 3, 1, LE(6, 2)}, {513, 4, 1, LE(4000, 4)}, {514, 4, 1, LE(5000, 4)}};

    const std::uint32_t exifAt = 8 + 2 + 12 * static_cast<std::uint32_t>(ifd0.size() + 1) + 4;
    const std::uint32_t ifd1At = exifAt + 2 + 12 * static_cast<std::uint32_t>(exif.size()) + 4;
    std::uint32_t dataAt = ifd1At + 2 + 12 * static_cast<std::uint32_t>(ifd1.size()) + 4;
    ifd0.push_back({34665, 4, 1, LE(exifAt, 4)});
    std::string tiff = "II" + LE(42, 2) + LE(8, 4);
    std::string data;
    const auto directory = [&](const std::vector<Entry>& entries, std::uint32_t next) {
        tiff += LE(static_cast<std::uint32_t>(entries.size()), 2);
        for (const Entry& e : entries) {
            tiff += LE(e.tag, 2) + LE(e.type, 2) + LE(e.count, 4);
            if (e.data.size() > 4) {
                tiff += LE(dataAt + static_cast<std::uint32_t>(data.size()), 4);
                data += e.data;
            } else {
                tiff += e.data + std::string(4 - e.data.size(), '\0');
            }
        }
        tiff += LE(next, 4);
    };
    directory(ifd0, ifd1At);
    directory(exif, 0);
    directory(ifd1, 0);
    tiff += data;
    const std::string app1 = "Exif" + std::string(2, '\0') + tiff;
    const std::size_t length = app1.size() + 2;
    std::string jpeg = "\xFF\xD8\xFF\xE1";
    jpeg.push_back(static_cast<char>(length >> 8));
    jpeg.push_back(static_cast<char>(length & 0xFF));
    jpeg += app1 + "\xFF\xDA" + LE(0x0C00, 2) + std::string(200 * 1024, '\x5A') + "\xFF\xD9";
    return jpeg;
}

class Files {
public:
    Files() {
        const fs::path corpus = "../shared/corpus/jpeg";
        std::error_code error;
        if (fs::is_directory(corpus, error)) {
            for (const auto& entry : fs::directory_iterator(corpus)) {
                if (entry.is_regular_file()) m_paths.push_back(entry.path().string());
            }
            std::sort(m_paths.begin(), m_paths.end());
            m_source = "corpus JPEGs";
            return;
        }
        std::string pattern = (fs::temp_directory_path() / "vliptc-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
        m_folder = pattern;
        for (int i = 0; i < 64; ++i) {
            m_paths.push_back(m_folder + "/image" + std::to_string(i) + ".jpg");
            std::ofstream(m_paths.back(), std::ios::binary) << GeneratedJpeg(i);
        }
        m_source = "generated JPEGs";
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    ~Files() {
        std::error_code ignored;
        if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
    }
    const std::vector<std::string>& Paths() const { return m_paths; }
    const std::string& Source() const { return m_source; }

private:
    std::vector<std::string> m_paths;
    std::string m_folder;
    std::string m_source;
};

const Files& TheFiles() {
    static const Files files;
    return files;
}

void BM_ReadFloor(benchmark::State& state) {
    const auto& files = TheFiles();
    constexpr std::size_t kTouched = 64 * 1024;
    for (auto _ : state) {
        for (const std::string& path : files.Paths()) {
            vliptc::platform::MappedFile map;
            if (map.Open(path, vliptc::platform::MappedFile::Access::ReadOnly) !=
                vliptc::platform::MappedFile::Status::Ok) {
                continue;
            }
            unsigned sum = 0;
            const std::size_t end = std::min(map.Size(), kTouched);
            for (std::size_t i = 0; i < end; ++i) sum += map.Data()[i];
            benchmark::DoNotOptimize(sum);
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * files.Paths().size()));
    state.SetLabel(files.Source());
}

void BM_ExifRead(benchmark::State& state) {
    const auto& files = TheFiles();
    CVLEXIF exif;
    for (auto _ : state) {
        for (const std::string& path : files.Paths()) {
            benchmark::DoNotOptimize(exif.LoadFile(path.c_str()));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * files.Paths().size()));
    state.SetLabel(files.Source());
}

}  // namespace

BENCHMARK(BM_ReadFloor)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ExifRead)->Unit(benchmark::kMicrosecond);
