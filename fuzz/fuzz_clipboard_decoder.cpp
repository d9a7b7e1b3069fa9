// Feeds the input as the private clipboard data of an IPTC record, as Paste
// and "vliptc iptc paste" receive it. A refused record must leave the field
// list alone. A record that decodes must encode back to exactly the bytes it
// took, and go on as a paste goes on: into the text form and the IIM encoder.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

#include "iptc/ClipboardFormat.h"
#include "iptc/IPTC.h"

namespace {

class PastedStore : public CIPTC {
public:
    using CIPTC::BuildBlob;
};

void Require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vliptc::clipboard;
    CIPTC::FieldList fields = {{7, {}}};
    const DecodeResult result = DecodeBinary(std::span(data, size), fields);
    if (result.status != DecodeStatus::kOk) {
        Require(fields.size() == 1 && fields[0].nID == 7);
        return 0;
    }
    Require(result.consumed >= 6 && result.consumed <= size);

    const std::vector<std::uint8_t> again = EncodeBinary(fields);
    Require(again.size() == result.consumed);
    Require(std::memcmp(again.data(), data, again.size()) == 0);

    PastedStore store;
    store.Fields() = fields;
    static_cast<void>(EncodeText(store));
    CIPTC::SIPTCBlob blob;
    static_cast<void>(store.BuildBlob(store.Fields(), blob, true));
    delete[] blob.pData;
    return 0;
}
