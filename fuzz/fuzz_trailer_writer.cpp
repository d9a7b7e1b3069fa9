// The trailer writer, in place on a fuzzed file in a temporary folder: no
// crash, and the file is either untouched or one whose IPTC chunk reads back.
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::RunWriter(data, size, "catalogued.jpg", vliptc::iptc::WriteTrailer, vliptc::iptc::LocateInTrailer);
    return 0;
}
