// The JPEG writer on a fuzzed file in a temporary folder: no crash, and the
// file is either untouched or replaced by one whose IPTC block reads back.
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::RunWriter(data, size, "image.jpg", vliptc::iptc::WriteJPEG, vliptc::iptc::LocateInJPEG);
    return 0;
}
