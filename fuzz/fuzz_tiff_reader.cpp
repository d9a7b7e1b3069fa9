// The TIFF reader: the bytes are taken as a TIFF file, the IPTC-NAA entries
// of its chain of directories located, and each candidate decoded the way
// the store decodes it (most-significant byte first). Every candidate must
// lie inside the file; the result must be one of the reader's codes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "host/ByteOrder.h"
#include "iptc/IPTC.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/IPTCReader.h"

namespace {

class Decoder : public CIPTC {
public:
    using CIPTC::DecodeIIM;
};

void Check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);
    const auto located = vliptc::iptc::LocateInTIFF(file);
    Check(located.error == CIPTC::kSuccess || located.error == CIPTC::kNoIPTCBlock ||
          located.error == CIPTC::kUnsupportedFormat);
    Check((located.error == CIPTC::kSuccess) == !located.candidates.empty());
    for (const auto& candidate : located.candidates) {
        const auto region = vliptc::bytes::Slice(file, candidate.offset, candidate.size);
        Check(region.has_value() && candidate.kind == vliptc::iptc::BlockLocation::Kind::kIIM);
        Decoder decoder;
        CIPTCReader reader(*region, true);
        const auto result = decoder.DecodeIIM(reader, region->size());
        Check(result == CIPTC::kSuccess || result == CIPTC::kUnsupportedFormat);
    }
    return 0;
}
