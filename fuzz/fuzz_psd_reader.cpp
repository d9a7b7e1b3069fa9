// The Photoshop reader: the "8BIM" 1028 records of the image-resource section,
// each a candidate of bare IIM data (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto located = vliptc::fuzz::CheckReader({data, size}, vliptc::iptc::LocateInPSD);
    vliptc::fuzz::Check(located.bigEndian);
    for (const auto& candidate : located.candidates) {
        vliptc::fuzz::Check(candidate.kind == vliptc::iptc::BlockLocation::Kind::kIIM);
    }
    return 0;
}
