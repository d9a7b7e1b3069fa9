// The exiv2 side of the comparison: the same tasks as bench_vliptc, done the
// way an exiv2 program does them (open the image, read all its metadata, work
// on the decoded data, write it back).
//
//   bench_exiv2 TASK LIST_FILE [--passes N]
//
//   iptc-read    every IPTC datum's value as text
//   exif-read    every EXIF datum's interpreted text, as `exiv2 -pt` prints it
//   jpeg-write   caption set and the twelve keywords put in place of the old
//   tiff-write   ones, written back (the same edit for JPEG and TIFF)
#include <exiv2/exiv2.hpp>

#include <array>
#include <cstddef>
#include <exception>
#include <string>

#include "bench/driver/Harness.h"

namespace {

// Keeps the compiler from dropping text that is produced and never used.
volatile std::size_t g_sink = 0;

constexpr const char* kCaptionKey = "Iptc.Application2.Caption";
constexpr const char* kKeywordsKey = "Iptc.Application2.Keywords";
constexpr const char* kCaption = "Benchmark caption";
constexpr std::array<const char*, 12> kKeywords = {"keyword 01", "keyword 02", "keyword 03", "keyword 04",
                                                   "keyword 05", "keyword 06", "keyword 07", "keyword 08",
                                                   "keyword 09", "keyword 10", "keyword 11", "keyword 12"};

// Runs `work` on the opened image whose metadata has been read; exiv2 reports
// every failure (unreadable file, unknown format, bad data) by an exception.
template <typename Work>
bool WithImage(const std::string& path, Work work) {
    try {
        auto image = Exiv2::ImageFactory::open(path);
        image->readMetadata();
        return work(*image);
    } catch (const std::exception&) {
        return false;
    }
}

bool ReadIptc(const std::string& path) {
    return WithImage(path, [](Exiv2::Image& image) {
        std::size_t length = 0;
        for (const auto& datum : image.iptcData()) length += datum.toString().size();
        g_sink = g_sink + length;
        return true;
    });
}

bool ReadExif(const std::string& path) {
    return WithImage(path, [](Exiv2::Image& image) {
        Exiv2::ExifData& exif = image.exifData();
        std::size_t length = 0;
        for (const auto& datum : exif) length += datum.print(&exif).size();
        g_sink = g_sink + length;
        return true;
    });
}

bool WriteCaptionAndKeywords(const std::string& path) {
    return WithImage(path, [](Exiv2::Image& image) {
        Exiv2::IptcData& iptc = image.iptcData();
        iptc[kCaptionKey] = kCaption;
        for (auto it = iptc.begin(); it != iptc.end();) {
            if (it->key() == kKeywordsKey) {
                it = iptc.erase(it);
            } else {
                ++it;
            }
        }
        const Exiv2::IptcKey keywordsKey(kKeywordsKey);
        for (const char* keyword : kKeywords) {
            Exiv2::StringValue value(keyword);
            if (iptc.add(keywordsKey, &value) != 0) return false;
        }
        image.writeMetadata();
        return true;
    });
}

}  // namespace

int main(int argc, char** argv) {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    const std::array<vliptc::bench::Task, 4> tasks = {{
        {"iptc-read", ReadIptc},
        {"exif-read", ReadExif},
        {"jpeg-write", WriteCaptionAndKeywords},
        {"tiff-write", WriteCaptionAndKeywords},
    }};
    return vliptc::bench::RunHarness("exiv2", tasks, argc, argv);
}
