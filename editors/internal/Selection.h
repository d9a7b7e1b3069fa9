#pragma once

// The checks both editor drivers make before their dialog: every file of the
// selection is resolved and checked, the user hears about the files dropped,
// and the template file is chosen among those left.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "editors/internal/DriverHost.h"
#include "editors/internal/KeptFileTimes.h"

namespace vliptc::editors::internal {

// What a driver's check makes of one file.
enum class FileCheck { kValid, kUnsupported, kReadOnly, kMissingCompanion };

// The files that passed, in the order given, and the template file.
struct Selection {
    explicit Selection(bool keepTimes) : times(keepTimes) {}
    std::vector<std::uint32_t> valid;
    std::uint32_t templateId = 0;
    std::string templatePath;
    KeptFileTimes times;  // the template's noted before the driver first reads it
};

// Resolves and checks every file of fileIds in order (a host error is logged
// and ends the call at once, before anything is shown). The files dropped are
// reported in the order missing companions, formats, read-only files: with
// none left the user is told and the call ends; otherwise asked whether to go
// on, except that with one writable file left (or none) read-only files are
// only told. The template stays when it is valid, else the first valid file
// takes its place; with none, strings.noValidFiles is told. Returns
// kVLSuccess, kResultAborted, or the host error.
std::uint32_t SelectFiles(
    DriverHost& host, const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
    const DriverStrings& strings,
    const std::function<FileCheck(std::uint32_t fileId, const std::string& path)>& check,
    Selection& selection);

}  // namespace vliptc::editors::internal
