// The libiptcdata side of the comparison: the IPTC of a JPEG read the way the
// library's own tool does it (copy the Photoshop APP13 segment out of the
// file, find the IPTC resource in it, decode the datasets) and every
// dataset's value turned into text. The library reads JPEG only.
//
//   bench_libiptcdata iptc-read LIST_FILE [--passes N]
#include <libiptcdata/iptc-data.h>
#include <libiptcdata/iptc-jpeg.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "bench/driver/Harness.h"

namespace {

// Keeps the compiler from dropping text that is produced and never used.
volatile std::size_t g_sink = 0;

// An APP13 segment holds at most 65,533 bytes of Photoshop data.
std::array<unsigned char, 65536> g_ps3;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool ReadIptc(const std::string& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) return false;
    const int ps3Length = iptc_jpeg_read_ps3(file.get(), g_ps3.data(), g_ps3.size());
    if (ps3Length < 0) return false;
    if (ps3Length == 0) return true;  // no Photoshop segment: nothing to decode
    unsigned int iptcLength = 0;
    const int offset =
        iptc_jpeg_ps3_find_iptc(g_ps3.data(), static_cast<unsigned int>(ps3Length), &iptcLength);
    if (offset < 0) return false;
    if (offset == 0) return true;  // a Photoshop segment without IPTC
    IptcData* data = iptc_data_new_from_data(g_ps3.data() + offset, iptcLength);
    if (data == nullptr) return false;
    std::array<char, 1024> text{};
    std::size_t length = 0;
    for (unsigned int i = 0; i < data->count; ++i) {
        if (iptc_dataset_get_as_str(data->datasets[i], text.data(), text.size()) != nullptr) {
            length += std::strlen(text.data());
        }
    }
    iptc_data_unref(data);
    g_sink = g_sink + length;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const std::array<vliptc::bench::Task, 1> tasks = {{{"iptc-read", ReadIptc}}};
    return vliptc::bench::RunHarness("libiptcdata", tasks, argc, argv);
}
