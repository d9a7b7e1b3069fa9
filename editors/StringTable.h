#pragma once

// The numbered strings that the editors show (message boxes, captions,
// progress texts), from resources/strings.tsv. Texts are UTF-8.

#include <initializer_list>
#include <string>
#include <string_view>

namespace vliptc::editors {

// The text of string id; empty for a number the table lacks.
std::string_view StringText(unsigned id);

// The text with each printf-style placeholder ("%s", "%lu", "%u", "%d") in
// turn replaced by the next argument, taken verbatim; "%%" is a "%". A
// placeholder without an argument is left out. Arguments are never read as
// formats, so a path holding "%s" is shown as it is.
std::string FormatText(std::string_view format, std::initializer_list<std::string_view> args);

}  // namespace vliptc::editors
