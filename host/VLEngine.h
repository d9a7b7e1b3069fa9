#pragma once

// The host engine as the editors reach it: catalogue files by id, whether a
// file may be written now, a refresh of a file's catalogue record, and the
// host's log. A host implements these; host/ReferenceEngine.h is the one the
// tool, the desktop host and the tests use.

#include <cstdint>

#include "host/VLURI.h"

class CQXTLogfile;

// The host's result code for success. Every other value an engine operation
// returns is a host error code, which the editors pass on unchanged.
constexpr std::uint32_t kVLSuccess = 10001;

class CVLFileSystemAccessor {
public:
    virtual ~CVLFileSystemAccessor() = default;
    // Whether the catalogued file may be written now.
    virtual bool IsFileMutable(std::uint32_t fileId) = 0;
};

class CVLEngine {
public:
    virtual ~CVLEngine() = default;
    // Fills uri with the address of a catalogued file; kVLSuccess or a host error.
    virtual std::uint32_t GetFileURI(std::uint32_t fileId, CVLURI& uri) = 0;
    virtual CVLFileSystemAccessor& FileSystemAccessor() = 0;
    // The host's log; null when the host keeps none.
    virtual CQXTLogfile* Logfile() = 0;
};

// The engine of a host with a user interface.
class CVLWinEngine : public CVLEngine {
public:
    // Makes the host read the file's catalogue record again after its
    // metadata changed; kVLSuccess or a host error.
    virtual std::uint32_t RefreshFile(std::uint32_t fileId) = 0;
};
