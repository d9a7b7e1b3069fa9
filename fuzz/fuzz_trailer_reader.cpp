// The trailer reader: the walk back over the chunks at the end of a file and
// the kind-1 chunk it hands to the decoder.
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);
    const auto located = vliptc::iptc::LocateInTrailer(file);
    vliptc::fuzz::Check(located.error == CIPTC::kSuccess || located.candidates.empty());
    vliptc::fuzz::Check(located.candidates.size() <= 1);
    vliptc::fuzz::Store store;
    static_cast<void>(vliptc::fuzz::DecodeFirst(file, located, store));
    return 0;
}
