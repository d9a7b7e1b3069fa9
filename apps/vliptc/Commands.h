#pragma once

// The command groups of the tool. Each adds its subcommands to the app; the
// one the user chose sets the action that main runs once parsing is done.

#include <functional>

#include <CLI/CLI.hpp>

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

struct Cli {
    GlobalOptions global;
    std::function<int()> action;  // returns the exit status
};

void AddIptcCommands(CLI::App& app, Cli& cli);      // iptc show | set | format
void AddClipboardCommands(CLI::App& iptc, Cli& cli);  // iptc copy | paste (under the iptc group)
void AddApplyCommand(CLI::App& iptc, Cli& cli);      // iptc apply (under the iptc group)
void AddExifCommands(CLI::App& app, Cli& cli);      // exif show | format | set-date
void AddExifCommentCommand(CLI::App& exif, Cli& cli);  // exif comment (under the exif group)
void AddTemplateCommands(CLI::App& app, Cli& cli);  // templates list | show | store | delete
void AddListCommands(CLI::App& app, Cli& cli);      // lists ..., synonyms ...

}  // namespace vliptc::cli
