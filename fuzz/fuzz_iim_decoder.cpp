// Read -> write over the IIM codec: the bytes are walked as a Photoshop
// image-resource section and, separately, scanned as bare IIM data (in both
// byte orders); whatever each decode leaves in the store is encoded again and
// the encoded block is decoded once more.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "iptc/IPTC.h"
#include "iptc/internal/IPTCReader.h"

namespace {

class Codec : public CIPTC {
public:
    using CIPTC::BuildBlob;
    using CIPTC::DecodeIIM;
    using CIPTC::DecodeImageResources;
};

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// Encodes the store and checks what every block must look like.
void WriteBack(const Codec& codec) {
    CIPTC::SIPTCBlob blob;
    const bool fits = codec.BuildBlob(codec.Fields(), blob, true);
    Check(blob.pData != nullptr);
    Check(fits == (blob.nSize <= 65536));
    Check(blob.nSize >= 8 && blob.nSize % 2 == 0);
    Check(blob.pData[0] == 0x1C && blob.pData[1] == 0x02 && blob.pData[2] == 0x00);

    Codec again;
    CIPTCReader reader(std::span<const std::uint8_t>(blob.pData, blob.nSize));
    Check(again.DecodeIIM(reader, blob.nSize) == CIPTC::kSuccess);
    delete[] blob.pData;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    {
        Codec codec;
        CIPTCReader reader(bytes);
        const auto result = codec.DecodeImageResources(reader, size);
        Check(result == CIPTC::kSuccess || result == CIPTC::kUnsupportedFormat);
        Check(reader.Position() <= size);
        WriteBack(codec);
    }
    for (const bool swap : {true, false}) {
        Codec codec;
        CIPTCReader reader(bytes, swap);
        const auto result = codec.DecodeIIM(reader, size);
        Check(result == CIPTC::kSuccess || result == CIPTC::kUnsupportedFormat);
        Check(reader.Position() <= size);
        WriteBack(codec);
    }
    return 0;
}
