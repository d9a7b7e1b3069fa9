// The libexif side of the comparison: the EXIF of a file read the library's
// usual way (its loader finds the EXIF segment and decodes every directory)
// and every entry of every directory turned into its text.
//
//   bench_libexif exif-read LIST_FILE [--passes N]
#include <libexif/exif-data.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "bench/driver/Harness.h"

namespace {

// Keeps the compiler from dropping text that is produced and never used.
volatile std::size_t g_sink = 0;

bool ReadExif(const std::string& path) {
    ExifData* data = exif_data_new_from_file(path.c_str());
    if (data == nullptr) return false;  // no EXIF found, or the file could not be read
    std::array<char, 1024> text{};
    std::size_t length = 0;
    for (ExifContent* content : data->ifd) {
        for (unsigned int i = 0; i < content->count; ++i) {
            if (exif_entry_get_value(content->entries[i], text.data(), text.size()) != nullptr) {
                length += std::strlen(text.data());
            }
        }
    }
    exif_data_unref(data);
    g_sink = g_sink + length;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const std::array<vliptc::bench::Task, 1> tasks = {{{"exif-read", ReadExif}}};
    return vliptc::bench::RunHarness("libexif", tasks, argc, argv);
}
