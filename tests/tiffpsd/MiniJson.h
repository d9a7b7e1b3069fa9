#pragma once

// Just enough JSON to read ExifTool's "-j" output in tests: objects keep their
// member order, strings are UTF-8, numbers keep their text.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vliptc::test {

struct Json {
    enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };
    Kind kind = Kind::kNull;
    std::string text;  // a string's value, a number's or a literal's text
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;

    const Json* Find(std::string_view key) const;
};

std::optional<Json> ParseJson(std::string_view text);

}  // namespace vliptc::test
