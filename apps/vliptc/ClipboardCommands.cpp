// vliptc iptc copy | paste: a whole IPTC record carried from one file to
// others through a clipboard file, which holds the binary clipboard form of
// the editors (iptc/ClipboardFormat.h). Paste replaces the whole field list
// of each file, as the editor's Paste button does: fields the record lacks
// are removed.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <system_error>

#include "apps/vliptc/Batch.h"
#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Edits.h"
#include "host/Limits.h"
#include "host/VLException.h"
#include "iptc/ClipboardFormat.h"
#include "platform/FileSystem.h"
#include "platform/OutputFile.h"

namespace vliptc::cli {

namespace {

constexpr const char* kClipFile = "vliptcclp.dat";  // in the user folder

std::string ClipPath(const GlobalOptions& global, const std::string& clip) {
    return clip.empty() ? UserFolder(global) + kClipFile : clip;
}

// The new clipboard file is written whole beside the old one, then takes its
// name in one step, so a reader never sees half a record.
void WriteClip(const std::string& path, std::span<const std::uint8_t> bytes) {
    const std::filesystem::path target(path);
    const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
    platform::OutputFile out;
    if (!out.CreateUnique(folder, target.filename().string() + ".")) {
        throw CommandError("cannot write the clipboard file " + path);
    }
    if (!out.Write(bytes) || !out.Close()) {
        out.Discard();
        throw CommandError("cannot write the clipboard file " + path);
    }
    std::error_code error;
    std::filesystem::rename(out.Path(), target, error);
    if (error) {
        out.Discard();
        throw CommandError("cannot write the clipboard file " + path + ": " + error.message());
    }
}

// The record of the clipboard file. UsageError, before any file is touched,
// when there is none or it is not one this tool reads.
CIPTC::FieldList ReadClip(const std::string& path) {
    const auto bytes = platform::ReadWholeFile(path, limits::kMaxClipboardBytes);
    if (!bytes) {
        if (!platform::Exists(path)) {
            throw UsageError("no clipboard file " + path + ": copy a record first (vliptc iptc copy FILE)");
        }
        throw UsageError("cannot read the clipboard file " + path);
    }
    CIPTC::FieldList fields;
    const auto result = clipboard::DecodeBinary(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()), fields);
    switch (result.status) {
        case clipboard::DecodeStatus::kOk:
            return fields;
        case clipboard::DecodeStatus::kOtherVersion:
            throw UsageError("the clipboard file " + path + " holds format version " +
                             std::to_string(result.version) + "; this vliptc reads version " +
                             std::to_string(clipboard::kFormatVersion));
        case clipboard::DecodeStatus::kMalformed:
            break;
    }
    throw UsageError(path + " is not a clipboard file of vliptc, or it is damaged");
}

// The fields that have values, to tell whether a paste changes a file.
CIPTC::FieldList Valued(const CIPTC::FieldList& fields) {
    CIPTC::FieldList out;
    for (const auto& item : fields) {
        if (!item.vValues.empty()) out.push_back(item);
    }
    return out;
}

bool SameFields(const CIPTC::FieldList& a, const CIPTC::FieldList& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return x.nID == y.nID && x.vValues == y.vValues; });
}

struct CopyOptions {
    std::string file;
    std::string clip;
    bool text = false;
};

int RunCopy(const GlobalOptions& global, const CopyOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    if (!ReadOneFile(store, options.file)) return kExitFailed;
    std::vector<std::uint8_t> bytes;
    try {
        bytes = clipboard::EncodeBinary(store.Fields());
    } catch (const CVLException& error) {
        throw CommandError(options.file + ": " + error.what());
    }
    if (options.clip.empty()) EnsureUserFolder(global);
    WriteClip(ClipPath(global, options.clip), bytes);
    if (options.text) std::fputs(ToUtf8(clipboard::EncodeText(store)).c_str(), stdout);
    return kExitOk;
}

struct PasteOptions {
    std::vector<std::string> files;
    std::string clip;
};

int RunPaste(const GlobalOptions& global, const PasteOptions& options) {
    const CIPTC::FieldList pasted = ReadClip(ClipPath(global, options.clip));
    const CIPTC::FieldList pastedValues = Valued(pasted);
    const std::vector<std::string> files = DistinctFiles(options.files);
    auto stores = MakeStores(global, files.size());

    const FileWork work = [&](CIPTC& store, const std::string& path) -> FileOutcome {
        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError read = store.ReadIPTCBlob(path.c_str(), format);
        if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock)
            return {{}, FileMessage(path, read), true};
        if (SameFields(Valued(store.Fields()), pastedValues)) return {};  // nothing to write
        store.Fields() = pasted;
        const CIPTC::EError written = store.WriteIPTCBlob(path.c_str(), format);
        if (written != CIPTC::kSuccess) return {{}, FileMessage(path, written), true};
        return {};
    };
    return BatchExitStatus(RunBatch(files, stores, work), files.size());
}

}  // namespace

void AddClipboardCommands(CLI::App& iptc, Cli& cli) {
    const char* clipHelp = "Clipboard file (default: vliptcclp.dat in the user folder)";

    auto copy = std::make_shared<CopyOptions>();
    CLI::App* copyCommand =
        iptc.add_subcommand("copy", "Copy the whole IPTC record of a file to the clipboard file");
    copyCommand->add_option("file", copy->file, "Image file")->required();
    copyCommand->add_option("--clip", copy->clip, clipHelp)->type_name("PATH");
    copyCommand->add_flag("--text", copy->text,
                          "Also print the record as text: a line per field, its name and values "
                          "separated by tabs");
    copyCommand->callback([&cli, copy] { cli.action = [&cli, copy] { return RunCopy(cli.global, *copy); }; });

    auto paste = std::make_shared<PasteOptions>();
    CLI::App* pasteCommand = iptc.add_subcommand(
        "paste", "Replace the whole IPTC record of files with the one in the clipboard file");
    pasteCommand->add_option("files", paste->files, "Image files: JPEG, TIFF, Photoshop")->required();
    pasteCommand->add_option("--clip", paste->clip, clipHelp)->type_name("PATH");
    pasteCommand->callback(
        [&cli, paste] { cli.action = [&cli, paste] { return RunPaste(cli.global, *paste); }; });
}

}  // namespace vliptc::cli
