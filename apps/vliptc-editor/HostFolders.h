#pragma once

// Where the desktop host finds the tag definitions and keeps the user's
// files (user lists, synonyms, templates, its log).

#include <string>

#include <QString>

namespace vliptc::host_app {

struct HostFolders {
    std::string definitions;  // holds vliptctags.ipt; ends with "/"
    std::string user;         // ends with "/"
    std::string log;          // the log file in the user folder
};

// definitions: the given folder, else "share/vliptc" beside the program's
// "bin" folder (the install layout, which the build tree repeats). user: the
// given folder, else "vliptc" in the user's configuration folder (the one
// the vliptc tool uses, so both see the same lists and templates); it is
// created when missing.
HostFolders ResolveHostFolders(const QString& definitions, const QString& user);

}  // namespace vliptc::host_app
