// The field edits shared by "iptc set" and "iptc apply".

#include "apps/vliptc/Edits.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

namespace {

constexpr std::uint32_t kRecordVersion = 0;

bool Holds(const std::vector<CVLProperty>& values, const CVLProperty& value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace

void AddEditOptions(CLI::App& command, EditOptions& options) {
    command.add_option("--set", options.sets, "Replace the field's values (repeat for several values)")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    command.add_option("--add", options.adds, "Append a value the field does not hold yet")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    command.add_option("--remove", options.removes, "Remove a value from the field")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    command.add_option("--clear", options.clears, "Remove all values of the field")
        ->type_name("ID")
        ->allow_extra_args(false);
}

EditPlan MakePlan(CIPTC& store, const FieldNames& names, const EditOptions& options) {
    EditPlan plan;
    if (!options.templateName.empty()) {
        const std::string name = ToStored(options.templateName, "the template name");
        for (const auto& stored : store.Templates()) {
            if (stored.strName == name) plan.templateFields = stored.vFields;
        }
        if (!plan.templateFields) throw UsageError("no template named \"" + options.templateName + "\"");
    }
    for (const auto& id : options.clears) plan.clears.push_back(names.Resolve(id));
    for (const auto& assignment : options.sets) {
        const auto [idText, valueText] = SplitAssignment(assignment, "--set");
        const std::uint32_t id = names.Resolve(idText);
        CVLProperty value = CheckedValue(store, names, id, valueText);
        auto it = std::find_if(plan.sets.begin(), plan.sets.end(),
                               [id](const auto& set) { return set.first == id; });
        if (it == plan.sets.end()) it = plan.sets.insert(plan.sets.end(), {id, {}});
        it->second.push_back(std::move(value));
        if (it->second.size() > 1 && !IsRepeatable(store, id)) {
            throw UsageError(names.Name(id) + " holds one value: give --set " + idText + "=... once");
        }
    }
    for (const auto& assignment : options.removes) {
        const auto [idText, valueText] = SplitAssignment(assignment, "--remove");
        const std::uint32_t id = names.Resolve(idText);
        plan.removes.emplace_back(id, CVLProperty(ToStored(valueText, "the value for " + names.Name(id))));
    }
    for (const auto& assignment : options.adds) {
        const auto [idText, valueText] = SplitAssignment(assignment, "--add");
        const std::uint32_t id = names.Resolve(idText);
        if (!IsRepeatable(store, id)) {
            throw UsageError(names.Name(id) + " holds one value: use --set, not --add");
        }
        plan.adds.emplace_back(id, CheckedValue(store, names, id, valueText));
    }
    return plan;
}

void ApplyEdits(CIPTC& store, const EditPlan& plan) {
    if (plan.templateFields) {
        for (const auto& item : *plan.templateFields) {
            if (item.nID != kRecordVersion && !item.vValues.empty()) store.SetField(item.nID, item.vValues);
        }
    }
    for (const std::uint32_t id : plan.clears) {
        if (CIPTC::SIPTCItem* item = store.Field(id)) item->vValues.clear();
    }
    for (const auto& [id, values] : plan.sets) store.SetField(id, values);
    for (const auto& [id, value] : plan.removes) {
        if (CIPTC::SIPTCItem* item = store.Field(id)) std::erase(item->vValues, value);
    }
    for (const auto& [id, value] : plan.adds) {
        const CIPTC::SIPTCItem* item = store.Field(id);
        if (item == nullptr || !Holds(item->vValues, value)) store.SetField(id, value, false);
    }
}

std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>> ValuedFields(const CIPTC::FieldList& fields) {
    std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>> out;
    for (const auto& item : fields) {
        if (!item.vValues.empty()) out.emplace_back(item.nID, item.vValues);
    }
    return out;
}

std::vector<std::string> DistinctFiles(const std::vector<std::string>& files) {
    std::vector<std::string> out;
    std::set<std::filesystem::path> seen;
    for (const auto& file : files) {
        std::error_code error;
        auto key = std::filesystem::weakly_canonical(file, error);
        if (error) key = file;
        if (seen.insert(key).second) out.push_back(file);
    }
    return out;
}

FileOutcome WriteChanged(CIPTC& store, const std::string& path, const CIPTC::SIPTCFormatInfo& format,
                         const std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>>& before,
                         const std::optional<platform::FileTimes>& times, const std::string& timesPath) {
    if (ValuedFields(store.Fields()) == before) {  // nothing to write
        if (times) static_cast<void>(platform::SetFileTimes(timesPath, *times));
        return {};
    }
    const CIPTC::EError written = store.WriteIPTCBlob(path.c_str(), format);
    if (written != CIPTC::kSuccess) return {{}, FileMessage(path, written), true};
    if (times && !platform::SetFileTimes(timesPath, *times)) {
        return {{}, "vliptc: " + path + ": written, but its times could not be restored\n", true};
    }
    return {};
}

}  // namespace vliptc::cli
