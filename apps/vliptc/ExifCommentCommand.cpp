// exif comment: sets EXIF text and date comments through CVLLeadEXIF and
// saves them into a JPEG file through the imaging stand-in, which keeps the
// file's other EXIF tags, its other segments and its image data as they are.
//
// With --from, every comment of the other file is copied first; the options
// given then replace single comments. Texts are read as UTF-8 and stored as
// Windows-1252; dates as "YYYY:MM:DD HH:MM:SS", "YYYY-MM-DD HH:MM:SS" or
// "YYYY-MM-DDTHH:MM:SS". A bad text or date is a usage error (status 2,
// nothing written); a file that cannot be read or saved gives status 1.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/vliptc/Commands.h"
#include "apps/vliptc/ExifDates.h"
#include "exif/LeadEXIF.h"
#include "host/VLProperty.h"
#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/LBitmap.h"

namespace vliptc::cli {
namespace {

using namespace vliptc::imaging;

struct ExifCommentOptions {
    std::string file;
    std::string from;
    std::optional<std::string> artist, copyright, description, userComment;
    std::optional<std::string> dateTime, original, digitized;
};

// A date and time as the OLE day count that the comment setters take.
CVLProperty DateValue(std::string_view text, std::string_view option) {
    CVLProperty value;
    value.SetDouble(ParseExifDate(text, option).when.GetDays());
    return value;
}

// Each setter with the value it gets, checked before any file is touched.
struct Change {
    bool (CVLLeadEXIF::*set)(const CVLProperty&);
    CVLProperty value;
    const char* option;
};

std::vector<Change> Changes(const ExifCommentOptions& options) {
    std::vector<Change> changes;
    const auto text = [&](const std::optional<std::string>& given, auto set, const char* option) {
        if (given) changes.push_back({set, CVLProperty(ToStored(*given, option)), option});
    };
    const auto date = [&](const std::optional<std::string>& given, auto set, const char* option) {
        if (given) changes.push_back({set, DateValue(*given, option), option});
    };
    text(options.artist, &CVLLeadEXIF::SetArtist, "--artist");
    text(options.copyright, &CVLLeadEXIF::SetCopyright, "--copyright");
    text(options.description, &CVLLeadEXIF::SetImageDescription, "--description");
    text(options.userComment, &CVLLeadEXIF::SetUserComment, "--user-comment");
    date(options.dateTime, &CVLLeadEXIF::SetDateTime, "--datetime");
    date(options.original, &CVLLeadEXIF::SetDateTimeOriginal, "--original");
    date(options.digitized, &CVLLeadEXIF::SetDateTimeDigitized, "--digitized");
    if (changes.empty() && options.from.empty()) {
        throw UsageError("nothing to set: give a comment option or --from");
    }
    return changes;
}

std::string ImagingErrorText(int result) {
    switch (result) {
        case kImagingCannotOpen:
            return "cannot open the file";
        case kImagingNotJpeg:
            return "not a JPEG file (comments are saved into JPEG files only)";
        case kImagingBadJpeg:
            return "malformed JPEG file";
        case kImagingExifTooLarge:
            return "the EXIF data would exceed one APP1 segment; file not changed";
        case kImagingCannotWrite:
            return "could not write the file; the original is kept";
        default:
            return "error " + std::to_string(result);
    }
}

// Loads path into bitmap; false (after the message) when it cannot be read.
bool LoadBitmap(LBitmap& bitmap, const std::string& path) {
    const int loaded = bitmap.Load(path);
    if (loaded > 0) return true;
    std::fprintf(stderr, "vliptc: %s: %s\n", path.c_str(), ImagingErrorText(loaded).c_str());
    return false;
}

int RunExifComment(const ExifCommentOptions& options) {
    const std::vector<Change> changes = Changes(options);
    LBitmap bitmap;
    if (!LoadBitmap(bitmap, options.file)) return kExitFailed;
    // The table is the process's; it starts clear and the object clears it
    // again when it goes.
    CVLLeadEXIF comments;
    comments.ClearComments();
    if (!options.from.empty()) {
        LBitmap source;
        if (!LoadBitmap(source, options.from)) return kExitFailed;
        comments.ReadComments(source);
    }
    for (const Change& change : changes) {
        if (!(comments.*change.set)(change.value)) {
            throw CommandError(std::string(change.option) + ": the comment could not be set");
        }
    }
    const int saved = bitmap.Save(options.file);
    if (saved > 0) return kExitOk;
    std::fprintf(stderr, "vliptc: %s: %s\n", options.file.c_str(), ImagingErrorText(saved).c_str());
    return kExitFailed;
}

}  // namespace

void AddExifCommentCommand(CLI::App& exif, Cli& cli) {
    auto options = std::make_shared<ExifCommentOptions>();
    CLI::App* command = exif.add_subcommand("comment", "Save EXIF text and date comments into a JPEG file");
    command->add_option("file", options->file, "The JPEG file")->required();
    command->add_option("--artist", options->artist, "Artist")->type_name("TEXT");
    command->add_option("--copyright", options->copyright, "Copyright")->type_name("TEXT");
    command->add_option("--description", options->description, "Image description")->type_name("TEXT");
    command->add_option("--user-comment", options->userComment, "User comment")->type_name("TEXT");
    command->add_option("--datetime", options->dateTime, "Date and time of the file's change")
        ->type_name("DATETIME");
    command->add_option("--original", options->original, "Date and time the picture was taken")
        ->type_name("DATETIME");
    command->add_option("--digitized", options->digitized, "Date and time the picture was digitized")
        ->type_name("DATETIME");
    command->add_option("--from", options->from, "Copy every comment of this JPEG file first")
        ->type_name("OTHER_FILE");
    command->callback([&cli, options] { cli.action = [options] { return RunExifComment(*options); }; });
}

}  // namespace vliptc::cli
