// Feeds the input as the contents of the template file "vliptctmpl.dat".
// A failed load must leave no templates. Whatever loads must save, load back
// to the same templates, and save again to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "host/VLFile.h"
#include "iptc/IPTC.h"

namespace {

class TemplateStore : public CIPTC {
public:
    using CIPTC::LoadTemplates;
    using CIPTC::SaveTemplates;
};

void Require(bool condition) {
    if (!condition) std::abort();
}

bool SameItems(const CIPTC::FieldList& a, const CIPTC::FieldList& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i].nID != b[i].nID || a[i].vValues.size() != b[i].vValues.size()) return false;
        for (std::size_t v = 0; v < a[i].vValues.size(); ++v) {
            if (!(a[i].vValues[v] == b[i].vValues[v])) return false;
        }
    }
    return true;
}

bool SameTemplates(const CIPTC& a, const CIPTC& b) {
    const auto& x = a.Templates();
    const auto& y = b.Templates();
    if (x.size() != y.size()) return false;
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (x[i].strName != y[i].strName || x[i].szReserved != y[i].szReserved) return false;
        if (!SameItems(x[i].vFields, y[i].vFields)) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CVLMemFile input(false, 65536, 4096);
    input.Assign(data, size);
    TemplateStore store;
    if (!store.LoadTemplates(input)) {
        Require(store.Templates().empty());
        return 0;
    }

    CVLMemFile saved(false, 65536, 4096);
    store.SaveTemplates(saved);
    saved.Rewind();
    TemplateStore again;
    Require(again.LoadTemplates(saved));
    Require(SameTemplates(store, again));

    CVLMemFile resaved(false, 65536, 4096);
    again.SaveTemplates(resaved);
    Require(resaved.GetFileSize() == saved.GetFileSize());
    Require(std::memcmp(resaved.GetBuffer(), saved.GetBuffer(), static_cast<std::size_t>(saved.GetFileSize())) == 0);
    return 0;
}
