// vliptc iptc show | set | format: the IPTC fields of image files.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Fields.h"
#include "apps/vliptc/Output.h"
#include "platform/Charset.h"
#include "platform/FileSystem.h"

namespace vliptc::cli {

namespace {

// ---------------------------------------------------------------------------
// iptc show

struct ShowOptions {
    std::vector<std::string> files;
    bool json = false;
};

// A file without IPTC data is not a failure: it simply has no fields (JSON:
// result 3). Any other result fails the file, whose fields are then empty.
int RunShow(const GlobalOptions& global, const ShowOptions& options) {
    auto stores = MakeStores(global, options.files.size());
    const FieldNames names(*stores.front());
    const CIPTC::FieldList none;

    const FileWork work = [&](CIPTC& store, const std::string& path) {
        FileOutcome outcome;
        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError result = store.ReadIPTCBlob(path.c_str(), format);
        outcome.failed = result != CIPTC::kSuccess && result != CIPTC::kNoIPTCBlock;
        if (outcome.failed) outcome.err = FileMessage(path, result);
        const CIPTC::FieldList& fields = outcome.failed ? none : store.Fields();
        if (options.json) {
            const nlohmann::ordered_json object{{"file", path},
                                                {"result", static_cast<std::uint32_t>(result)},
                                                {"format", format.nFormat},
                                                {"bigEndian", format.bBigEndian},
                                                {"fields", FieldsJson(names, fields)}};
            outcome.out = JsonText(object);
        } else {
            outcome.out = FieldLines(names, fields);
        }
        return outcome;
    };

    // Text: with several files each gets a "==> PATH <==" line, as head(1)
    // does. JSON: one array, an object per line.
    const bool headers = !options.json && options.files.size() > 1;
    const Emit emit = [&](std::size_t index, const FileOutcome& outcome) {
        if (options.json) {
            std::fputs(index == 0 ? "[\n" : ",\n", stdout);
        } else if (headers) {
            std::printf("%s==> %s <==\n", index == 0 ? "" : "\n", options.files[index].c_str());
        }
        PrintOutcome(index, outcome);
    };
    const std::size_t failed = RunBatch(options.files, stores, work, emit);
    if (options.json) std::fputs("\n]\n", stdout);
    return failed == 0 ? kExitOk : kExitFailed;
}

// ---------------------------------------------------------------------------
// iptc set

struct SetOptions {
    std::vector<std::string> files;
    std::vector<std::string> sets;
    std::vector<std::string> adds;
    std::vector<std::string> removes;
    std::vector<std::string> clears;
    std::string templateName;
    bool keepTimes = false;
};

// The edits of one call, checked and converted once, applied to every file in
// this order: template, --clear, --set, --remove, --add. A field that holds
// one value only (not REPEATABLE) takes --set once and no --add, so no file
// gets two values where readers expect one.
struct EditPlan {
    std::optional<CIPTC::FieldList> templateFields;
    std::vector<std::uint32_t> clears;
    std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>>
        sets;  // by field, in order of first mention
    std::vector<std::pair<std::uint32_t, CVLProperty>> removes;
    std::vector<std::pair<std::uint32_t, CVLProperty>> adds;
};

EditPlan MakePlan(CIPTC& store, const FieldNames& names, const SetOptions& options) {
    if (options.sets.empty() && options.adds.empty() && options.removes.empty() && options.clears.empty() &&
        options.templateName.empty()) {
        throw UsageError("nothing to change: give --set, --add, --remove, --clear or --template");
    }
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

bool Holds(const std::vector<CVLProperty>& values, const CVLProperty& value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

// The template sets the fields it has values for and leaves the others as
// the file has them. --add skips a value the field holds already.
void Apply(CIPTC& store, const EditPlan& plan) {
    constexpr std::uint32_t kRecordVersion = 0;
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

// The fields that have values, to tell whether an edit changed anything.
std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>> Valued(const CIPTC::FieldList& fields) {
    std::vector<std::pair<std::uint32_t, std::vector<CVLProperty>>> out;
    for (const auto& item : fields) {
        if (!item.vValues.empty()) out.emplace_back(item.nID, item.vValues);
    }
    return out;
}

// A file named twice (or by two spellings of one path) is edited once: two
// workers must never write the same file.
std::vector<std::string> Distinct(const std::vector<std::string>& files) {
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

int RunSet(const GlobalOptions& global, const SetOptions& options) {
    const std::vector<std::string> files = Distinct(options.files);
    auto stores = MakeStores(global, files.size());
    const FieldNames names(*stores.front());
    const EditPlan plan = MakePlan(*stores.front(), names, options);

    // Every check is done; from here on files are written. The library
    // replaces a file only with a complete new one.
    const FileWork work = [&](CIPTC& store, const std::string& path) -> FileOutcome {
        // Taken before the read, which may move the access time.
        const auto times = options.keepTimes ? platform::GetFileTimes(path) : std::nullopt;
        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError read = store.ReadIPTCBlob(path.c_str(), format);
        if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock) {
            return {{}, FileMessage(path, read), true};
        }
        const auto before = Valued(store.Fields());
        Apply(store, plan);
        if (Valued(store.Fields()) == before) {  // nothing to write
            if (times) static_cast<void>(platform::SetFileTimes(path, *times));
            return {};
        }
        const CIPTC::EError written = store.WriteIPTCBlob(path.c_str(), format);
        if (written != CIPTC::kSuccess) return {{}, FileMessage(path, written), true};
        if (times && !platform::SetFileTimes(path, *times)) {
            return {{}, "vliptc: " + path + ": written, but its times could not be restored\n", true};
        }
        return {};
    };
    const std::size_t failed = RunBatch(files, stores, work);
    if (failed > 0 && files.size() > 1) {
        std::fprintf(stderr, "vliptc: %zu of %zu files failed\n", failed, files.size());
    }
    return failed == 0 ? kExitOk : kExitFailed;
}

// ---------------------------------------------------------------------------
// iptc format

struct FormatOptions {
    std::string file;
    std::string pattern;
};

int RunFormat(const GlobalOptions& global, const FormatOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError read = store.ReadIPTCBlob(options.file.c_str(), format);
    if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock) {
        std::fputs(FileMessage(options.file, read).c_str(), stderr);
        return kExitFailed;
    }
    std::string out;
    static_cast<void>(store.FormatIPTCString(platform::Utf8ToCp1252(options.pattern).c_str(), out));
    std::puts(ToUtf8(out).c_str());
    return kExitOk;
}

}  // namespace

void AddIptcCommands(CLI::App& app, Cli& cli) {
    CLI::App* iptc = app.add_subcommand("iptc", "Show and change the IPTC fields of image files");
    iptc->require_subcommand(1);
    const char* filesHelp = "Image files: JPEG, TIFF, Photoshop (a .CRW through its .thm companion)";

    auto show = std::make_shared<ShowOptions>();
    CLI::App* showCommand =
        iptc->add_subcommand("show", "Print the fields that have values, one line per field");
    showCommand->add_option("files", show->files, filesHelp)->required();
    showCommand->add_flag("--json", show->json, "Print one JSON array, an object per file");
    showCommand->callback([&cli, show] { cli.action = [&cli, show] { return RunShow(cli.global, *show); }; });

    auto set = std::make_shared<SetOptions>();
    CLI::App* setCommand = iptc->add_subcommand(
        "set",
        "Change fields and write them into the files. ID is a dataset number or a field name "
        "(case and punctuation ignored); values may be date macros such as #TODAY");
    setCommand->add_option("files", set->files, filesHelp)->required();
    setCommand->add_option("--set", set->sets, "Replace the field's values (repeat for several values)")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    setCommand->add_option("--add", set->adds, "Append a value the field does not hold yet")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    setCommand->add_option("--remove", set->removes, "Remove a value from the field")
        ->type_name("ID=VALUE")
        ->allow_extra_args(false);
    setCommand->add_option("--clear", set->clears, "Remove all values of the field")
        ->type_name("ID")
        ->allow_extra_args(false);
    setCommand
        ->add_option("--template", set->templateName,
                     "Apply a saved template first: its fields with values replace "
                     "the file's")
        ->type_name("NAME");
    setCommand->add_flag("--keep-times", set->keepTimes, "Keep the files' access and modification times");
    setCommand->callback([&cli, set] { cli.action = [&cli, set] { return RunSet(cli.global, *set); }; });

    auto format = std::make_shared<FormatOptions>();
    CLI::App* formatCommand = iptc->add_subcommand(
        "format", "Expand a pattern: #N stands for the values of dataset N joined by \"; \"");
    formatCommand->add_option("file", format->file, "Image file")->required();
    formatCommand->add_option("pattern", format->pattern, "Text with #N placeholders, e.g. \"#5 by #80\"")
        ->required();
    formatCommand->callback(
        [&cli, format] { cli.action = [&cli, format] { return RunFormat(cli.global, *format); }; });
}

}  // namespace vliptc::cli
