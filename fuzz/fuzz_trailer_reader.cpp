// The trailer reader: the walk back over the chunks at the end of a file and
// the one kind-1 chunk it hands to the decoder (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto located = vliptc::fuzz::CheckReader({data, size}, vliptc::iptc::LocateInTrailer);
    vliptc::fuzz::Check(located.candidates.size() <= 1);
    return 0;
}
