// The TIFF reader: the IPTC-NAA entries of the chain of directories, each a
// candidate of bare IIM data read most-significant byte first (see
// ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto located = vliptc::fuzz::CheckReader({data, size}, vliptc::iptc::LocateInTIFF);
    for (const auto& candidate : located.candidates) {
        vliptc::fuzz::Check(candidate.kind == vliptc::iptc::BlockLocation::Kind::kIIM);
    }
    return 0;
}
