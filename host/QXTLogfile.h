#pragma once

#include <cstdio>
#include <functional>
#include <string>

class CException;

// The host's log: one text line per entry,
//   "YYYY-MM-DD HH:MM:SS<TAB>LEVEL<TAB>source:line<TAB>text"
// where the time is local, LEVEL is "ERROR" for AddError and "INFO<n>" for
// AddInformal at level n, and source is the path as the caller passed it
// ("?" when null). The text of each form:
//   AddError(exception)        the exception's message ("unknown exception" for null)
//   AddError(id)               the looked-up text, else "message <id>"
//   AddError(code, text)       "error <code>: <text>"
//   AddError(text)             the text
//   AddInformal(text, level)   the text
// Line breaks inside a text become blanks; a null text is empty. Each line is
// flushed as it is written. Every entry form returns true when the line was
// written; false when the file could not be opened or written.
class CQXTLogfile {
public:
    // Turns a string-table id into its text for AddError(unsigned, ...);
    // without one, or when it gives "", the line reads "message <id>".
    using MessageLookup = std::function<std::string(unsigned id)>;

    // Appends to the file at path (created when missing). A file that cannot
    // be opened leaves the log silent: every entry then returns false.
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
