#pragma once

// The two printed forms of a field list: text for people, JSON for programs
// (its shape is fixed; other tools parse it).

#include <string>

#include <nlohmann/json.hpp>

#include "apps/vliptc/Fields.h"
#include "iptc/IPTC.h"

namespace vliptc::cli {

// One line per field that has values: its name, a tab, the values joined by
// "; ". A line break inside a value is printed as "\n", so a field stays on
// one line.
std::string FieldLines(const FieldNames& names, const CIPTC::FieldList& fields);

// [{"id": N, "name": NAME, "values": [TEXT...]}] for every field that has
// values, in store order, text in UTF-8 exactly as stored; keys in this
// order (ordered_json).
nlohmann::ordered_json FieldsJson(const FieldNames& names, const CIPTC::FieldList& fields);

// Compact JSON; bytes of a file name that are not UTF-8 become U+FFFD.
std::string JsonText(const nlohmann::ordered_json& value);

}  // namespace vliptc::cli
