// The JPEG reader: the marker walk and the APP13 segments it hands to the
// decoder (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(vliptc::fuzz::CheckReader({data, size}, vliptc::iptc::LocateInJPEG));
    return 0;
}
