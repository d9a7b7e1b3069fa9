// The Photoshop writer on fuzzed documents: the IPTC record rewritten in
// place or the resource section rebuilt, or the file left alone (see
// WriterHarness.h).
#include "fuzz/WriterHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::WriteAndCheck(data, size, "image.psd", vliptc::iptc::WritePSD, vliptc::iptc::LocateInPSD);
    return 0;
}
