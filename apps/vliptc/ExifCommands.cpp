// exif show: the EXIF fields present in each file, in catalogue order.
//
// Text: one line per field, its name, a tab and its values' text joined by
// ",". JSON (one array, an object per file):
//   {"file", "result", "fields": [{"tag", "name", "type", "group", "values", "text"}]}
// with numbers as JSON numbers, texts as strings, blobs as {"blob": size} and
// an empty value as null. A file without EXIF (result 3) is not a failure.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Output.h"
#include "exif/EXIF.h"

namespace vliptc::cli {
namespace {

struct ExifShowOptions {
    std::vector<std::string> files;
    bool json = false;
};

std::string ExifErrorText(CVLEXIF::EError error) {
    switch (error) {
        case CVLEXIF::errOK: return "done";
        case CVLEXIF::errException: return "the file could not be read";
        case CVLEXIF::errFormat: return "unsupported or malformed file";
        case CVLEXIF::errNoEXIF: return "no EXIF data";
        case CVLEXIF::errOpen: return "cannot open the file";
        case CVLEXIF::errMap: return "cannot read the file";
        case CVLEXIF::errEmpty: return "the file is empty";
        case CVLEXIF::errReadOnly: return "the file cannot be written";
    }
    return "error " + std::to_string(static_cast<unsigned>(error));
}

nlohmann::ordered_json ValueJson(const CVLProperty& value) {
    switch (value.GetKind()) {
        case CVLProperty::kEmpty: return nullptr;
        case CVLProperty::kNumber16LE:
        case CVLProperty::kNumber16:
        case CVLProperty::kNumber32: return value.GetInt32();
        case CVLProperty::kReal: return value.GetDouble();
        case CVLProperty::kBlob: return {{"blob", value.Bytes().size()}};
        default: return ToUtf8(value.String());
    }
}

// The values' text joined by ",", until the formatter gives each field its own text.
std::string FieldText(const CVLEXIF::SField& field) {
    std::string text;
    for (std::size_t i = 0; i < field.vValues.size(); ++i) {
        if (i > 0) text += ',';
        text += field.vValues[i].String();
    }
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
                                {"text", FieldText(*field)}});
            }
            const nlohmann::ordered_json object{
                {"file", path}, {"result", static_cast<std::uint32_t>(result)}, {"fields", std::move(list)}};
            std::fputs(index == 0 ? "" : ",\n", stdout);
            std::fputs(JsonText(object).c_str(), stdout);
            continue;
        }
        if (headers) std::printf("%s==> %s <==\n", index == 0 ? "" : "\n", path.c_str());
        for (const CVLEXIF::SField* field : fields) {
            std::printf("%s\t%s\n", field->strName.c_str(), FieldText(*field).c_str());
        }
    }
    if (options.json) std::fputs("\n]\n", stdout);
    return anyFailed ? kExitFailed : kExitOk;
}

}  // namespace

void AddExifCommands(CLI::App& app, Cli& cli) {
    CLI::App* exif = app.add_subcommand("exif", "Show the EXIF fields of image files");
    exif->require_subcommand(1);
    auto show = std::make_shared<ExifShowOptions>();
    CLI::App* showCommand = exif->add_subcommand("show", "Print the EXIF fields present, one line per field");
    showCommand->add_option("files", show->files, "Image files (JPEG, TIFF, raw, Photoshop, .CRW with .thm)")
        ->required();
    showCommand->add_flag("--json", show->json, "Print one JSON array, an object per file");
    showCommand->callback([&cli, show] { cli.action = [show] { return RunExifShow(*show); }; });
}

}  // namespace vliptc::cli
