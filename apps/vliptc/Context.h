#pragma once

// What every command of the tool shares: the global options, the store set-up
// on the built-in or given definitions, the user folder, the text conversion
// at the edge, and the words for the library's result codes.

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::cli {

// Exit statuses.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;  // a file (or a save) failed
constexpr int kExitUsage = 2;   // bad arguments; nothing was written

// A bad argument, field name, value or configuration, found before any file
// is touched: "vliptc: <message>", exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failure after work began (a save that did not reach the disk): exit 1.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct GlobalOptions {
    std::string defsFolder;  // --defs; empty: the built-in definitions
    std::string userFolder;  // --user; empty: the default user folder
    unsigned jobs = 0;       // --jobs; 0: one per core
};

// The folder of the user lists, synonyms and templates: --user, else
// $XDG_CONFIG_HOME/vliptc/, else ~/.config/vliptc/ (home from $HOME or the
// password database). Always ends with "/".
std::string UserFolder(const GlobalOptions& options);

// Creates the user folder with its parents, for commands that save.
// CommandError when it cannot be created or written.
void EnsureUserFolder(const GlobalOptions& options);

// Saves the user lists and templates of store with SaveChanges, then loads
// the user folder again into a fresh store and asks saved whether the change
// is there: SaveChanges reports nothing, and a save that did not reach the
// disk must not pass for done. CommandError when it is not there.
void SaveChecked(CIPTC& store, const GlobalOptions& options, const std::function<bool(const CIPTC&)>& saved);

// Starts a store on --defs (which must hold "vliptctags.ipt") or on the
// definitions built into the tool, with the user folder. UsageError when the
// definitions cannot be loaded.
void InitializeStore(CIPTC& store, const GlobalOptions& options);

// Stores for a batch: one per worker, as many as --jobs asks (one per core by
// default) and no more than there are files.
std::vector<std::unique_ptr<CIPTC>> MakeStores(const GlobalOptions& options, std::size_t files);

// Command-line text (UTF-8) to stored text (Windows-1252). UsageError, naming
// what the text is for, when it holds characters Windows-1252 lacks or is not
// valid UTF-8: they would be stored as "?".
std::string ToStored(std::string_view utf8, std::string_view what);
std::string ToUtf8(std::string_view stored);

// Words for a result code of the file operations.
std::string ErrorText(CIPTC::EError error);
// "vliptc: PATH: <words>\n"
std::string FileMessage(const std::string& path, CIPTC::EError error);
// Reads one file's record into the store; a file without IPTC is fine. On
// failure prints the file's message and returns false.
bool ReadOneFile(CIPTC& store, const std::string& path);

}  // namespace vliptc::cli
