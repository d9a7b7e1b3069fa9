#pragma once

// A host engine over plain files: a catalogue that maps ids to paths, "file://"
// URIs, mutability = a regular file this process may write, refreshes counted,
// and an optional log file. The vliptc tool, the desktop host and the tests
// run the editors on it.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/QXTLogfile.h"
#include "host/VLEngine.h"

class CVLReferenceEngine : public CVLWinEngine, public CVLFileSystemAccessor {
public:
    // Host error codes of this engine.
    static constexpr std::uint32_t kErrorUnknownFile = 10002;  // the id is not catalogued
    static constexpr std::uint32_t kErrorFileGone = 10003;     // refresh: no regular file at the path

    // logPath empty: the engine keeps no log (Logfile() is null).
    explicit CVLReferenceEngine(const std::string& logPath = {});

    // Catalogues a file and returns its id (1, 2, ... in the order added). A
    // relative path is taken from the current folder and kept absolute.
    std::uint32_t AddFile(const std::string& path);
    std::optional<std::string> PathOf(std::uint32_t fileId) const;
    // How often RefreshFile was called for the id.
    unsigned RefreshCount(std::uint32_t fileId) const;

    std::uint32_t GetFileURI(std::uint32_t fileId, CVLURI& uri) override;
    CVLFileSystemAccessor& FileSystemAccessor() override { return *this; }
    CQXTLogfile* Logfile() override { return m_log.get(); }
    // Counts the call; kVLSuccess while the file is still a regular file.
    std::uint32_t RefreshFile(std::uint32_t fileId) override;
    bool IsFileMutable(std::uint32_t fileId) override;

    // The log's words for this engine's error codes ("" for other numbers).
    static std::string ErrorText(std::uint32_t code);

private:
    std::vector<std::string> m_paths;  // id - 1 -> path
    std::map<std::uint32_t, unsigned> m_refreshes;
    std::unique_ptr<CQXTLogfile> m_log;
};
