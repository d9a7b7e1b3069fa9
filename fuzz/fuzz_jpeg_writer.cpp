// The JPEG writer on a fuzzed file: the file rebuilt with the block in an
// APP13 segment, or left alone (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::CheckWriter(data, size, "image.jpg", vliptc::iptc::WriteJPEG, vliptc::iptc::LocateInJPEG);
    return 0;
}
