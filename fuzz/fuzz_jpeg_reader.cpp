// The JPEG reader: the marker walk and the APP13 segments it hands to the
// decoder.
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);
    const auto located = vliptc::iptc::LocateInJPEG(file);
    vliptc::fuzz::Check(located.error == CIPTC::kSuccess || located.candidates.empty());
    vliptc::fuzz::Store store;
    static_cast<void>(vliptc::fuzz::DecodeFirst(file, located, store));
    return 0;
}
