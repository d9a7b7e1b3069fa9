// vliptc iptc apply: the write pass of the IPTC editor without a user
// interface. The record of the template file, changed by the edit options, is
// the edited record; the record as read is what the edit started from. Each
// file then takes the edit by the write mode and keyword mode
// (iptc/RecordMerge.h), exactly as the editor writes a batch.

#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Edits.h"
#include "apps/vliptc/Fields.h"
#include "iptc/RecordMerge.h"
#include "platform/FileSystem.h"

namespace vliptc::cli {

namespace {

struct ApplyOptions {
    std::string from;
    std::vector<std::string> files;
    std::string writeMode = "replace";
    std::string keywordMode = "replace";
    EditOptions edits;
    bool keepTimes = false;
};

// The modes by their command-line names.
const std::map<std::string, int> kWriteModes{
    {"replace", iptc::kWriteReplace}, {"modified", iptc::kWriteModified}, {"keep", iptc::kWriteKeep}};
const std::map<std::string, int> kKeywordModes{
    {"none", iptc::kKeywordsUnchanged}, {"replace", iptc::kKeywordsReplace}, {"merge", iptc::kKeywordsMerge}};

CLI::IsMember NamesOf(const std::map<std::string, int>& modes) {
    std::vector<std::string> names;
    for (const auto& entry : modes) names.push_back(entry.first);
    return CLI::IsMember(names);
}

bool SameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

int RunApply(const GlobalOptions& global, const ApplyOptions& options) {
    const std::vector<std::string> files = DistinctFiles(options.files);
    auto stores = MakeStores(global, files.size());
    CIPTC& first = *stores.front();
    const FieldNames names(first);
    const EditPlan plan = MakePlan(first, names, options.edits);

    // A template file without IPTC data is an empty record; one that cannot
    // be read is refused before any file is touched.
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError read = first.ReadIPTCBlob(options.from.c_str(), format);
    if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock) {
        throw UsageError("the template file " + options.from + ": " + ErrorText(read));
    }
    const CIPTC::FieldList templateRecord = first.Fields();
    ApplyEdits(first, plan);
    const CIPTC::FieldList edited = first.Fields();

    iptc::MergeOptions modes;
    modes.writeMode = kWriteModes.at(options.writeMode);
    modes.keywordMode = kKeywordModes.at(options.keywordMode);

    const FileWork work = [&](CIPTC& store, const std::string& path) -> FileOutcome {
        // Taken before the read, which may move the access time.
        const std::string written = iptc::WrittenFile(path);
        const auto times = options.keepTimes ? platform::GetFileTimes(written) : std::nullopt;
        // Unlike the editor, a file whose data cannot be read is not written
        // over: the tool never replaces what it could not read.
        CIPTC::SIPTCFormatInfo fileFormat;
        const CIPTC::EError fileRead = store.ReadIPTCBlob(path.c_str(), fileFormat);
        if (fileRead != CIPTC::kSuccess && fileRead != CIPTC::kNoIPTCBlock) {
            return {{}, FileMessage(path, fileRead), true};
        }
        const auto before = ValuedFields(store.Fields());
        // The editor also writes every edited field into the lone file of a
        // batch; that file is always its template file. Here the template
        // file may be outside the list, and the modes then stand.
        iptc::MergeOptions merge = modes;
        merge.isTemplateFile = SameFile(path, options.from);
        iptc::MergeRecord(edited, templateRecord, store, merge);
        return WriteChanged(store, path, fileFormat, before, times, written);
    };
    return BatchExitStatus(RunBatch(files, stores, work), files.size());
}

}  // namespace

void AddApplyCommand(CLI::App& iptcCommand, Cli& cli) {
    auto apply = std::make_shared<ApplyOptions>();
    CLI::App* command = iptcCommand.add_subcommand(
        "apply",
        "Write the IPTC fields of a template file, changed by the edit options, into files, as the "
        "IPTC editor writes a batch: by a write mode and a keyword mode");
    command
        ->add_option("files", apply->files,
                     "Image files: JPEG, TIFF, Photoshop (a .CRW through its .thm companion)")
        ->required();
    command->add_option("--from", apply->from, "The template file whose fields are written")
        ->type_name("TEMPLATE_FILE")
        ->required();
    command
        ->add_option("--write-mode", apply->writeMode,
                     "replace: every field of the template overwrites the file's (default); "
                     "modified: only the fields the edit options changed; "
                     "keep: only where the file's field is missing or empty")
        ->type_name("MODE")
        ->check(NamesOf(kWriteModes));
    command
        ->add_option("--keywords", apply->keywordMode,
                     "Keywords, category and supplemental categories in the modes modified and keep: "
                     "none leaves the file's, replace sets the template's (default), merge appends "
                     "the template's values the file lacks")
        ->type_name("MODE")
        ->check(NamesOf(kKeywordModes));
    AddEditOptions(*command, apply->edits);
    command->add_flag("--keep-times", apply->keepTimes, "Keep the files' access and modification times");
    command->callback([&cli, apply] { cli.action = [&cli, apply] { return RunApply(cli.global, *apply); }; });
}

}  // namespace vliptc::cli
