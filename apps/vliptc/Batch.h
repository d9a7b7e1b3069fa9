#pragma once

// Runs one piece of work per file over many files, in parallel, with output
// in the order of the files given.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::cli {

// What the work on one file has to say.
struct FileOutcome {
    std::string out;  // for standard output
    std::string err;  // for standard error (the file's message)
    bool failed = false;
};

using FileWork = std::function<FileOutcome(CIPTC& store, const std::string& path)>;
// Prints one outcome; called for the files in input order, one call at a time.
using Emit = std::function<void(std::size_t index, const FileOutcome& outcome)>;

// Prints an outcome as it stands: out to standard output, err to standard error.
void PrintOutcome(std::size_t index, const FileOutcome& outcome);

// Runs work for every path, one worker thread per store (a store serves one
// thread only). Each outcome is handed to emit as soon as it and all before it
// are done. While it runs, a progress bar is drawn on standard error when that
// is a terminal and there are more than kProgressFrom files. An exception
// from work fails that file with its message. Returns the number of failed
// files.
std::size_t RunBatch(const std::vector<std::string>& paths, std::vector<std::unique_ptr<CIPTC>>& stores,
                     const FileWork& work, const Emit& emit = PrintOutcome);

constexpr std::size_t kProgressFrom = 8;

// The exit status of a batch of files of which failed ones failed, after a
// "N of M files failed" line when several files were given.
int BatchExitStatus(std::size_t failed, std::size_t files);

}  // namespace vliptc::cli
