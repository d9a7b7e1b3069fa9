// exif show | format | set-date: the EXIF fields of image files as the
// viewer shows them, a pattern of them, and the date write-back.
//
// show, text: one line per present field, its name, a tab and its formatted
// text. JSON (one array, an object per file):
//   {"file", "result", "fields": [{"tag", "name", "type", "group", "values", "text"}]}
// with numbers as JSON numbers, texts as strings, blobs as {"blob": size} and
// an empty value as null; "text" is the formatted text. A file without EXIF
// (result 3) is not a failure. Fields without values are shown as they are
// (no default text): the listing reports the file, not what a reader assumes.
//
// set-date patches the date fields the file already carries, in place; a
// field the file lacks is reported and left out (a date is never added).
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Edits.h"
#include "apps/vliptc/ExifDates.h"
#include "apps/vliptc/Output.h"
#include "exif/EXIF.h"
#include "platform/FileName.h"
#include "platform/FileSystem.h"

namespace vliptc::cli {
namespace {

struct ExifShowOptions {
    std::vector<std::string> files;
    bool json = false;
};

std::string ExifErrorText(CVLEXIF::EError error) {
    switch (error) {
        case CVLEXIF::errOK:
            return "done";
        case CVLEXIF::errException:
            return "the file could not be read";
        case CVLEXIF::errFormat:
            return "unsupported or malformed file";
        case CVLEXIF::errNoEXIF:
            return "no EXIF data";
        case CVLEXIF::errOpen:
            return "cannot open the file";
        case CVLEXIF::errMap:
            return "cannot read the file";
        case CVLEXIF::errEmpty:
            return "the file is empty";
        case CVLEXIF::errReadOnly:
            return "the file cannot be written";
    }
    return "error " + std::to_string(static_cast<unsigned>(error));
}

nlohmann::ordered_json ValueJson(const CVLProperty& value) {
    switch (value.GetKind()) {
        case CVLProperty::kEmpty:
            return nullptr;
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16:
        case CVLProperty::kNumber32:
            return value.GetInt32();
        case CVLProperty::kReal:
            return value.GetDouble();
        case CVLProperty::kBlob:
            return {{"blob", value.Bytes().size()}};
        default:
            return ToUtf8(value.String());
    }
}

std::string FieldText(const CVLEXIF& exif, const CVLEXIF::SField& field) {
    std::string text;
    static_cast<void>(exif.GetFormattedField(static_cast<CVLEXIF::EFieldTags>(field.nTag), text));
    return ToUtf8(text);
}

int RunExifShow(const ExifShowOptions& options) {
    CVLEXIF exif;
    bool anyFailed = false;
    const bool headers = !options.json && options.files.size() > 1;
    if (options.json) std::fputs("[\n", stdout);
    for (std::size_t index = 0; index < options.files.size(); ++index) {
        const std::string& path = options.files[index];
        const CVLEXIF::EError result = exif.LoadFile(path.c_str());
        const bool failed = result != CVLEXIF::errOK && result != CVLEXIF::errNoEXIF;
        anyFailed = anyFailed || failed;
        if (failed) std::fprintf(stderr, "vliptc: %s: %s\n", path.c_str(), ExifErrorText(result).c_str());
        const std::vector<const CVLEXIF::SField*> fields =
            failed ? std::vector<const CVLEXIF::SField*>{} : exif.PresentFields();
        if (options.json) {
            auto list = nlohmann::ordered_json::array();
            for (const CVLEXIF::SField* field : fields) {
                auto values = nlohmann::ordered_json::array();
                for (const CVLProperty& value : field->vValues) values.push_back(ValueJson(value));
                list.push_back({{"tag", field->nTag},
                                {"name", field->strName},
                                {"type", field->nType},
                                {"group", field->nGroup},
                                {"values", std::move(values)},
                                {"text", FieldText(exif, *field)}});
            }
            const nlohmann::ordered_json object{
                {"file", path}, {"result", static_cast<std::uint32_t>(result)}, {"fields", std::move(list)}};
            std::fputs(index == 0 ? "" : ",\n", stdout);
            std::fputs(JsonText(object).c_str(), stdout);
            continue;
        }
        if (headers) std::printf("%s==> %s <==\n", index == 0 ? "" : "\n", path.c_str());
        for (const CVLEXIF::SField* field : fields) {
            std::printf("%s\t%s\n", field->strName.c_str(), FieldText(exif, *field).c_str());
        }
    }
    if (options.json) std::fputs("\n]\n", stdout);
    return anyFailed ? kExitFailed : kExitOk;
}

// ---------------------------------------------------------------------------
// exif format

struct ExifFormatOptions {
    std::string file;
    std::string pattern;
};

int RunExifFormat(const ExifFormatOptions& options) {
    CVLEXIF exif;
    const CVLEXIF::EError result = exif.LoadFile(options.file.c_str());
    if (result != CVLEXIF::errOK && result != CVLEXIF::errNoEXIF) {
        std::fprintf(stderr, "vliptc: %s: %s\n", options.file.c_str(), ExifErrorText(result).c_str());
        return kExitFailed;
    }
    std::string out;
    static_cast<void>(exif.FormatString(ToStored(options.pattern, "the pattern").c_str(), out));
    std::puts(ToUtf8(out).c_str());
    return kExitOk;
}

// ---------------------------------------------------------------------------
// exif set-date

struct ExifSetDateOptions {
    std::vector<std::string> files;
    std::string dateTime;
    std::string original;
    std::string digitized;
    bool keepTimes = false;
};

struct DateChange {
    CVLEXIF::EFieldTags tag;
    std::string text;  // EXIF form
};

std::vector<DateChange> DateChanges(const ExifSetDateOptions& options) {
    const struct {
        CVLEXIF::EFieldTags tag;
        const std::string* value;
        const char* option;
    } given[] = {
        {CVLEXIF::kDateTime, &options.dateTime, "--datetime"},
        {CVLEXIF::kDateTimeOriginal, &options.original, "--original"},
        {CVLEXIF::kDateTimeDigitized, &options.digitized, "--digitized"},
    };
    std::vector<DateChange> changes;
    for (const auto& [tag, value, option] : given) {
        if (!value->empty()) changes.push_back({tag, ParseExifDate(*value, option).text});
    }
    if (changes.empty()) throw UsageError("nothing to change: give --datetime, --original or --digitized");
    return changes;
}

// Loads, sets the catalogue's dates and stores one file. Fields the file
// lacks are reported on standard error; they are not a failure.
bool SetDates(const std::string& path, const std::vector<DateChange>& changes, bool keepTimes) {
    // The file the patch lands in, whose times are kept: a ".CRW"'s companion.
    const std::string patched = platform::MetadataFileOf(path).value_or(path);
    // Taken before the read, which may move the access time.
    const auto times = keepTimes ? platform::GetFileTimes(patched) : std::nullopt;
    CVLEXIF exif;
    const CVLEXIF::EError loaded = exif.LoadFile(path.c_str());
    if (loaded != CVLEXIF::errOK && loaded != CVLEXIF::errNoEXIF) {
        std::fprintf(stderr, "vliptc: %s: %s\n", path.c_str(), ExifErrorText(loaded).c_str());
        return false;
    }
    std::size_t carried = 0;
    for (const DateChange& change : changes) {
        CVLEXIF::SField* field = nullptr;
        if (loaded == CVLEXIF::errOK && exif.GetField(change.tag, field) && field->bPresent) {
            field->vValues.assign(1, CVLProperty(change.text));
            ++carried;
        } else {
            const CVLEXIF::SField* known = nullptr;
            const std::string name =
                exif.GetField(change.tag, known) ? known->strName : std::to_string(change.tag);
            std::fprintf(stderr, "vliptc: %s: carries no \"%s\"; not written\n", path.c_str(), name.c_str());
        }
    }
    if (carried == 0) return true;
    const CVLEXIF::EError stored = exif.StoreFile(path.c_str());
    if (stored != CVLEXIF::errOK) {
        std::fprintf(stderr, "vliptc: %s: %s\n", path.c_str(), ExifErrorText(stored).c_str());
        return false;
    }
    if (times && !platform::SetFileTimes(patched, *times)) {
        std::fprintf(stderr, "vliptc: %s: written, but its times could not be restored\n", path.c_str());
        return false;
    }
    return true;
}

int RunExifSetDate(const ExifSetDateOptions& options) {
    const std::vector<DateChange> changes = DateChanges(options);
    const std::vector<std::string> files = DistinctFiles(options.files);
    std::size_t failed = 0;
    for (const std::string& path : files) {
        if (!SetDates(path, changes, options.keepTimes)) ++failed;
    }
    return BatchExitStatus(failed, files.size());
}

}  // namespace

void AddExifCommands(CLI::App& app, Cli& cli) {
    CLI::App* exif = app.add_subcommand("exif", "Show the EXIF fields of image files and write their dates");
    exif->require_subcommand(1);
    auto show = std::make_shared<ExifShowOptions>();
    CLI::App* showCommand = exif->add_subcommand("show", "Print the EXIF fields present, one line per field");
    showCommand->add_option("files", show->files, "Image files (JPEG, TIFF, raw, Photoshop, .CRW with .thm)")
        ->required();
    showCommand->add_flag("--json", show->json, "Print one JSON array, an object per file");
    showCommand->callback([&cli, show] { cli.action = [show] { return RunExifShow(*show); }; });

    auto format = std::make_shared<ExifFormatOptions>();
    CLI::App* formatCommand = exif->add_subcommand(
        "format", "Expand a pattern: #N stands for the formatted text of the field with tag N");
    formatCommand->add_option("file", format->file, "Image file")->required();
    formatCommand
        ->add_option("pattern", format->pattern, "Text with #N placeholders, e.g. \"#33434 at #33437\"")
        ->required();
    formatCommand->callback([&cli, format] { cli.action = [format] { return RunExifFormat(*format); }; });

    auto setDate = std::make_shared<ExifSetDateOptions>();
    CLI::App* setDateCommand = exif->add_subcommand("set-date",
                                                    "Write date-and-time fields into the files, in place; "
                                                    "only fields a file already carries are written");
    setDateCommand->add_option("files", setDate->files, "Image files (JPEG, TIFF, raw, Photoshop)")
        ->required();
    const char* dateHelp = "YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS";
    setDateCommand->add_option("--datetime", setDate->dateTime, "\"Date and time\" (tag 306)")
        ->type_name(dateHelp);
    setDateCommand->add_option("--original", setDate->original, "\"Date and time Original\" (tag 36867)")
        ->type_name(dateHelp);
    setDateCommand->add_option("--digitized", setDate->digitized, "\"Date and time Digitized\" (tag 36868)")
        ->type_name(dateHelp);
    setDateCommand->add_flag("--keep-times", setDate->keepTimes,
                             "Keep the files' access and modification times");
    setDateCommand->callback(
        [&cli, setDate] { cli.action = [setDate] { return RunExifSetDate(*setDate); }; });

    AddExifCommentCommand(*exif, cli);
}

}  // namespace vliptc::cli
