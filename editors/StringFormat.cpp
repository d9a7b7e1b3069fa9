#include "editors/StringTable.h"

#include <array>

namespace vliptc::editors {

std::string FormatText(std::string_view format, std::initializer_list<std::string_view> args) {
    static constexpr std::array<std::string_view, 4> kPlaceholders{"%s", "%lu", "%u", "%d"};
    std::string out;
    auto arg = args.begin();
    for (std::size_t i = 0; i < format.size();) {
        if (format.substr(i, 2) == "%%") {
            out += '%';
            i += 2;
            continue;
        }
        bool replaced = false;
        for (const std::string_view placeholder : kPlaceholders) {
            if (format.substr(i, placeholder.size()) != placeholder) continue;
            if (arg != args.end()) out += *arg++;
            i += placeholder.size();
            replaced = true;
            break;
        }
        if (!replaced) out += format[i++];
    }
    return out;
}

}  // namespace vliptc::editors
