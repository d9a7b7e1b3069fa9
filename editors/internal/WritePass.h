#pragma once

// The write pass of both editor drivers: after the user confirmed the edit,
// each valid file in turn is read, given the edit and written, under the wait
// cursor and with a progress window, a log line per file, the host's refresh
// of every file written, and the user's say on failures.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "editors/internal/DriverHost.h"
#include "editors/internal/KeptFileTimes.h"

namespace vliptc::editors::internal {

// What one driver's pass says, and how it edits a file.
struct WritePassSteps {
    std::string progressTitle;
    DriverStrings strings;
    std::string_view processingLog;  // informal log line; "%s": the URI text
    std::string_view failureLog;     // error log line; "%s": the URI text, "%lu": the result
    // Reads the file at path and gives it the edit; false when there is
    // nothing to write, and the file is passed over.
    std::function<bool(std::uint32_t fileId, const std::string& path)> prepare;
    // Writes the edited file to path; 0 on success, else the writer's error.
    std::function<std::uint32_t(const std::string& path)> write;
};

// Runs the pass over valid, appending the id of every file written to
// changed. A file that cannot be resolved or written any more is passed over
// without a word or a progress step. Returns kVLSuccess, or the aborted
// result after a failure the user did not pass over or a Cancel; what was
// written by then stays written.
std::uint32_t RunWritePass(DriverHost& host, const std::vector<std::uint32_t>& valid,
                           const KeptFileTimes& times, const WritePassSteps& steps,
                           std::vector<std::uint32_t>& changed);

}  // namespace vliptc::editors::internal
