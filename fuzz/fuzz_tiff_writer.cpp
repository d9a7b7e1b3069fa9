// The TIFF writer on fuzzed files: an entry rewritten or inserted with every
// offset moved, or the file left alone (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::CheckWriter(data, size, "image.tif", vliptc::iptc::WriteTIFF, vliptc::iptc::LocateInTIFF);
    return 0;
}
