#include "host/QXTLogfile.h"

#include "host/OleDateTime.h"
#include "host/VLException.h"

namespace {

// One entry is one line: breaks inside a text would start a false entry.
std::string OneLine(std::string text) {
    for (char& c : text) {
        if (c == '\r' || c == '\n') c = ' ';
    }
    return text;
}

}  // namespace

CQXTLogfile::CQXTLogfile(std::string path, MessageLookup lookup)
    : m_path(std::move(path)), m_lookup(std::move(lookup)), m_file(std::fopen(m_path.c_str(), "a")) {}

CQXTLogfile::~CQXTLogfile() {
    if (m_file != nullptr) std::fclose(m_file);
}

bool CQXTLogfile::AddError(CException* exception, int line, const char* sourceFile) {
    return WriteLine("ERROR", line, sourceFile,
                     exception != nullptr ? exception->GetErrorMessage() : std::string("unknown exception"));
}

bool CQXTLogfile::AddError(unsigned messageId, int line, const char* sourceFile) {
    std::string text = m_lookup ? m_lookup(messageId) : std::string();
    if (text.empty()) text = "message " + std::to_string(messageId);
    return WriteLine("ERROR", line, sourceFile, text);
}

bool CQXTLogfile::AddError(unsigned errorCode, const char* text, int line, const char* sourceFile) {
    return WriteLine("ERROR", line, sourceFile,
                     "error " + std::to_string(errorCode) + ": " + (text != nullptr ? text : ""));
}

bool CQXTLogfile::AddError(const char* text, int line, const char* sourceFile) {
    return WriteLine("ERROR", line, sourceFile, text != nullptr ? text : "");
}

bool CQXTLogfile::AddInformal(const char* text, int level, int line, const char* sourceFile) {
    return WriteLine("INFO" + std::to_string(level), line, sourceFile, text != nullptr ? text : "");
}

bool CQXTLogfile::WriteLine(const std::string& level, int line, const char* sourceFile, const std::string& text) {
    if (m_file == nullptr) return false;
    const std::string entry = COleDateTime::GetCurrentTime().Format("%Y-%m-%d %H:%M:%S") + '\t' + level + '\t' +
                              (sourceFile != nullptr ? sourceFile : "?") + ':' + std::to_string(line) + '\t' +
                              OneLine(text) + '\n';
    // Flushed per entry: the log is read while the host runs, and must keep
    // the last lines before a crash.
    if (std::fwrite(entry.data(), 1, entry.size(), m_file) != entry.size()) return false;
    return std::fflush(m_file) == 0;
}
