// The trailer writer, in place on a fuzzed file: the IPTC chunk rewritten,
// moved or appended, or the file left alone (see ContainerFuzz.h).
#include "fuzz/ContainerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vliptc::fuzz::CheckWriter(data, size, "catalogued.jpg", vliptc::iptc::WriteTrailer,
                              vliptc::iptc::LocateInTrailer);
    return 0;
}
