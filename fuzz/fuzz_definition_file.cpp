// Feeds bytes to the tag-definition parser as one whole file, the way Load
// hands it "vliptctags.ipt" and then "vliptcusr.ipt", and checks what must
// hold for any input.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "tags/IPTCINI.h"

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

// The parser's buffer is exactly size + 1 bytes, so any read behind the
// terminating zero leaves the allocation and the sanitizer sees it.
std::unique_ptr<char[]> Terminated(const std::uint8_t* data, std::size_t size) {
    auto buffer = std::make_unique<char[]>(size + 1);
    if (size != 0) std::memcpy(buffer.get(), data, size);
    buffer[size] = '\0';
    return buffer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CVLIPTCINI ini;
    auto first = Terminated(data, size);
    const bool result = ini.LoadINIFile(first.get());
    Require(!result || !ini.Tags().empty());

    std::set<std::uint32_t> ids;
    for (const auto& tag : ini.Tags()) {
        Require(!tag.strName.empty());
        Require(tag.bNonStandard == 0 || !tag.strVendor.empty());
        Require(tag.nDisplayHeight >= 1 && tag.nDisplayHeight <= 20);
        Require(tag.nType >= CVLIPTCINI::kTypeString && tag.nType <= CVLIPTCINI::kTypeNumber);
        Require(ids.insert(tag.nID).second);
        CVLIPTCINI::STagInfo copy;
        Require(ini.GetDescriptor(tag.nID, copy) && copy.strName == tag.strName);
    }

    // The same text again, as the user's file: every ID is known already, so
    // the first definitions stay and no descriptor is added.
    const std::size_t count = ini.Tags().size();
    auto second = Terminated(data, size);
    static_cast<void>(ini.LoadINIFile(second.get()));
    Require(ini.Tags().size() == count);
    return 0;
}
