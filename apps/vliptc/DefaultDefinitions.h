#pragma once

#include <string_view>

namespace vliptc::cli {

// The default tag definitions (resources/vliptctags.ipt), built into the tool
// so that it works with no installed files.
std::string_view DefaultDefinitions();

}  // namespace vliptc::cli
