#pragma once

#include <cstdio>
#include <functional>
#include <string>

class CException;

// The host's log: one text line per entry,
//   "YYYY-MM-DD HH:MM:SS<TAB>LEVEL<TAB>source:line<TAB>text"
// where LEVEL is "ERROR" for AddError and "INFO<n>" for AddInformal at level n.
// Every entry form returns true when the line was written.
class CQXTLogfile {
public:
    // Turns a string-table id into its text for AddError(unsigned, ...);
    // without one the line reads "message <id>".
    using MessageLookup = std::function<std::string(unsigned id)>;

    // Appends to the file at path (created when missing).
    explicit CQXTLogfile(std::string path, MessageLookup lookup = {});
    CQXTLogfile(const CQXTLogfile&) = delete;
    CQXTLogfile& operator=(const CQXTLogfile&) = delete;
    virtual ~CQXTLogfile();

    bool AddError(CException* exception, int line, const char* sourceFile);
    bool AddError(unsigned messageId, int line, const char* sourceFile);
    bool AddError(unsigned errorCode, const char* text, int line, const char* sourceFile);
    bool AddError(const char* text, int line, const char* sourceFile);
    bool AddInformal(const char* text, int level, int line, const char* sourceFile);

    const std::string& Path() const noexcept { return m_path; }

private:
    bool WriteLine(const std::string& level, int line, const char* sourceFile, const std::string& text);

    std::string m_path;
    MessageLookup m_lookup;
    std::FILE* m_file = nullptr;
};
