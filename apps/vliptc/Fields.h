#pragma once

// Fields as the command line names them: a dataset number of record 2 or a
// descriptor name, and the checks a value passes before it is stored.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "iptc/IPTC.h"

namespace vliptc::cli {

// The display names of the datasets, from the tag definitions of a store.
class FieldNames {
public:
    explicit FieldNames(const CIPTC& store);

    // The descriptor's name; "Record Version" for 0; "Dataset N" for a
    // dataset the definitions do not describe.
    std::string Name(std::uint32_t id) const;
    // A dataset number ("25"), or a name compared without regard to case,
    // blanks and punctuation ("keywords", "By-line", "object name"), or the
    // start of exactly one name ("caption"). UsageError for anything else,
    // and for 0, which the library writes itself.
    std::uint32_t Resolve(std::string_view text) const;

private:
    std::map<std::uint32_t, std::string> m_names;
    std::map<std::string, std::uint32_t> m_byKey;
};

// A command-line value (UTF-8) as a stored value of the field. UsageError when
// it holds characters that Windows-1252 lacks, or when it is longer than the
// field's MAXLEN in bytes. A date macro ("#TODAY") is measured as it will
// expand. The store is used for the descriptor and the macro expansion.
CVLProperty CheckedValue(CIPTC& store, const FieldNames& names, std::uint32_t id, std::string_view utf8);

// Whether the field may hold several values: REPEATABLE in its descriptor,
// or no descriptor at all (the definitions say nothing against it).
bool IsRepeatable(const CIPTC& store, std::uint32_t id);

// Splits "ID=VALUE" at the first "="; UsageError without one.
std::pair<std::string, std::string> SplitAssignment(std::string_view text, std::string_view option);

}  // namespace vliptc::cli
