// vliptc iptc show | set | format: the IPTC fields of image files.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Edits.h"
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
    EditOptions edits;
    bool keepTimes = false;
};

int RunSet(const GlobalOptions& global, const SetOptions& options) {
    if (options.edits.Empty()) {
        throw UsageError("nothing to change: give --set, --add, --remove, --clear or --template");
    }
    const std::vector<std::string> files = DistinctFiles(options.files);
    auto stores = MakeStores(global, files.size());
    const FieldNames names(*stores.front());
    const EditPlan plan = MakePlan(*stores.front(), names, options.edits);

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
        const auto before = ValuedFields(store.Fields());
        ApplyEdits(store, plan);
        return WriteChanged(store, path, format, before, times, path);
    };
    return BatchExitStatus(RunBatch(files, stores, work), files.size());
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
    if (!ReadOneFile(store, options.file)) return kExitFailed;
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
    AddEditOptions(*setCommand, set->edits);
    setCommand
        ->add_option("--template", set->edits.templateName,
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
