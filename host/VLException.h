#pragma once

#include <exception>
#include <string>

// Base of every exception the host libraries throw; the log accepts it by
// pointer (CQXTLogfile::AddError).
class CException : public std::exception {
public:
    explicit CException(std::string message) : m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }
    // Text for logs and message boxes.
    const std::string& GetErrorMessage() const noexcept { return m_message; }

private:
    std::string m_message;
};

// What the host's file and property operations throw when they fail:
// a file that cannot be opened or created, a short or malformed property stream.
class CVLException : public CException {
public:
    using CException::CException;
};
