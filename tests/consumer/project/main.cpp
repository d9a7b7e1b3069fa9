// A host program that uses the installed library: the store works on its own.
#include "iptc/IPTC.h"

int main() {
    CIPTC store;
    store.SetField(25, CVLProperty("sea"), false);
    store.SetField(25, CVLProperty("sky"), false);
    std::vector<CVLProperty> values;
    if (!store.GetField(25, values) || values.size() != 2 || values[1].String() != "sky") return 1;
    return store.IsDirty() ? 0 : 1;  // never initialised: dirty
}
