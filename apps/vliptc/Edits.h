#pragma once

// The field edits of "iptc set" and "iptc apply" (--set, --add, --remove,
// --clear, --template): checked and converted once, before any file is
// touched, then applied to one record after another.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Fields.h"
#include "iptc/IPTC.h"
#include "platform/FileSystem.h"

namespace vliptc::cli {

struct EditOptions {
    std::vector<std::string> sets;
    std::vector<std::string> adds;
    std::vector<std::string> removes;
    std::vector<std::string> clears;
    std::string templateName;

    bool Empty() const {
        return sets.empty() && adds.empty() && removes.empty() && clears.empty() && templateName.empty();
    }
};

// Adds --set, --add, --remove and --clear to a command.
void AddEditOptions(CLI::App& command, EditOptions& options);

// Applied in this order: template, --clear, --set, --remove, --add. A field
// that holds one value only (not REPEATABLE) takes --set once and no --add,
// so no file gets two values where readers expect one.
struct EditPlan {
    std::optional<CIPTC::FieldList> templateFields;
    std::vector<std::uint32_t> clears;
    std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>>
        sets;  // by field, in order of first mention
    std::vector<std::pair<std::uint32_t, CVLProperty>> removes;
    std::vector<std::pair<std::uint32_t, CVLProperty>> adds;
};

// UsageError for an unknown field or template, a value too long or not
// storable, a second value for a field that holds one.
EditPlan MakePlan(CIPTC& store, const FieldNames& names, const EditOptions& options);

// The template sets the fields it has values for and leaves the others as
// the record has them. --add skips a value the field holds already.
void ApplyEdits(CIPTC& store, const EditPlan& plan);

// The fields that have values, to tell whether an edit changed anything.
std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>> ValuedFields(const CIPTC::FieldList& fields);

// The files in order with repeats dropped (also two spellings of one path):
// two workers must never write the same file.
// Writes the store into path when its valued fields differ from before (a
// file that comes out unchanged is not rewritten), then puts back times on
// timesPath (the file actually written: a .CRW's companion) when given.
FileOutcome WriteChanged(CIPTC& store, const std::string& path, const CIPTC::SIPTCFormatInfo& format,
                         const std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>>& before,
                         const std::optional<platform::FileTimes>& times, const std::string& timesPath);

std::vector<std::string> DistinctFiles(const std::vector<std::string>& files);

}  // namespace vliptc::cli
