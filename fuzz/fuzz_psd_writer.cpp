// The Photoshop writer on fuzzed documents: the IPTC record rewritten in
// place or the resource section rebuilt, or the file left alone (see
// ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::CheckWriter(data, size, "image.psd", vliptc::iptc::WritePSD, vliptc::iptc::LocateInPSD);
    return 0;
}
