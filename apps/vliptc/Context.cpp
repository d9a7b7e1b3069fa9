// The store set-up, user folder, text conversion and result words of the tool.

#include "apps/vliptc/Context.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include "apps/vliptc/DefaultDefinitions.h"
#include "platform/Charset.h"
#include "platform/FileSystem.h"

namespace vliptc::cli {

namespace {

constexpr const char* kToolFolder = "vliptc/";
constexpr const char* kDefinitionsFile = "vliptctags.ipt";

std::string WithSlash(std::string folder) {
    if (!folder.empty() && folder.back() != '/') folder += '/';
    return folder;
}

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) {
        return entry->pw_dir;
    }
    return {};
}

}  // namespace

std::string UserFolder(const GlobalOptions& options) {
    if (!options.userFolder.empty()) return WithSlash(options.userFolder);
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config == '/') {
        return WithSlash(config) + kToolFolder;
    }
    const std::string home = HomeFolder();
    if (home.empty()) throw UsageError("no user folder: give --user DIR, or set XDG_CONFIG_HOME or HOME");
    return WithSlash(home) + ".config/" + kToolFolder;
}

void EnsureUserFolder(const GlobalOptions& options) {
    const std::string folder = UserFolder(options);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!platform::IsDirectory(folder)) {
        throw CommandError("cannot create the user folder " + folder +
                           (error ? ": " + error.message() : std::string()));
    }
    if (platform::IsReadOnly(folder)) throw CommandError("cannot write to the user folder " + folder);
}

void InitializeStore(CIPTC& store, const GlobalOptions& options) {
    const std::string user = UserFolder(options);
    if (options.defsFolder.empty()) {
        if (store.InitializeFromText(std::string(DefaultDefinitions()), user) != CIPTC::kSuccess) {
            throw UsageError("the built-in tag definitions could not be loaded");
        }
        return;
    }
    // The library would quietly fall back to the user's definitions alone;
    // a --defs folder without the file is a mistake worth naming.
    const std::string defs = WithSlash(options.defsFolder);
    if (!platform::IsRegularFile(defs + kDefinitionsFile)) {
        throw UsageError("no " + std::string(kDefinitionsFile) + " in " + defs);
    }
    if (store.Initialize(defs, user) != CIPTC::kSuccess) {
        throw UsageError("the tag definitions in " + defs + kDefinitionsFile + " could not be loaded");
    }
}

void SaveChecked(CIPTC& store, const GlobalOptions& options, const std::function<bool(const CIPTC&)>& saved) {
    EnsureUserFolder(options);
    static_cast<void>(store.SaveChanges());
    CIPTC reloaded;
    InitializeStore(reloaded, options);
    if (!saved(reloaded)) {
        throw CommandError("the change could not be saved in the user folder " + UserFolder(options));
    }
}

std::vector<std::unique_ptr<CIPTC>> MakeStores(const GlobalOptions& options, std::size_t files) {
    std::size_t jobs = options.jobs;
    if (jobs == 0) jobs = std::max(1u, std::thread::hardware_concurrency());
    jobs = std::max<std::size_t>(1, std::min(jobs, files));
    std::vector<std::unique_ptr<CIPTC>> stores;
    for (std::size_t i = 0; i < jobs; ++i) {
        stores.push_back(std::make_unique<CIPTC>());
        InitializeStore(*stores.back(), options);
    }
    return stores;
}

std::string ToStored(std::string_view utf8, std::string_view what) {
    std::string stored = platform::Utf8ToCp1252(utf8);
    if (platform::Cp1252ToUtf8(stored) != utf8) {
        throw UsageError(std::string(what) +
                         " holds characters that IPTC text (Windows-1252) cannot store: \"" +
                         std::string(utf8) + "\"");
    }
    return stored;
}

std::string ToUtf8(std::string_view stored) { return platform::Cp1252ToUtf8(stored); }

std::string ErrorText(CIPTC::EError error) {
    switch (error) {
        case CIPTC::kSuccess:
            return "done";
        case CIPTC::kBlockTooLarge:
            return "the IPTC data would exceed 65536 bytes; file not changed";
        case CIPTC::kNoIPTCBlock:
            return "no IPTC data";
        case CIPTC::kCannotOpen:
            return "cannot open the file";
        case CIPTC::kCannotMapOrWrite:
            return "cannot read or write the file";
        case CIPTC::kEmptyFile:
            return "the file is empty";
        case CIPTC::kCannotReplace:
            return "could not replace the file; the original is kept";
        case CIPTC::kUnsupportedFormat:
            return "unsupported or malformed file";
        case CIPTC::kNotInitialized:
            return "the tag definitions are not loaded";
    }
    return "error " + std::to_string(static_cast<unsigned>(error));
}

std::string FileMessage(const std::string& path, CIPTC::EError error) {
    return "vliptc: " + path + ": " + ErrorText(error) + "\n";
}

bool ReadOneFile(CIPTC& store, const std::string& path) {
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError read = store.ReadIPTCBlob(path.c_str(), format);
    if (read == CIPTC::kSuccess || read == CIPTC::kNoIPTCBlock) return true;
    std::fputs(FileMessage(path, read).c_str(), stderr);
    return false;
}

}  // namespace vliptc::cli
