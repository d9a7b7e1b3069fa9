#pragma once

// What the two editor drivers share on their way to the user and the host:
// message boxes by string number, the host's log under the driver's source
// name, and catalogue ids resolved to URIs.

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "editors/EditorUI.h"
#include "host/VLEngine.h"

namespace vliptc::editors::internal {

// Both drivers end a call that way when there is nothing valid to do, the
// user answered No, or pressed Cancel during the write pass.
inline constexpr std::uint32_t kResultAborted = 10010;

// String numbers (resources/strings.tsv) of a notice, told when nothing is
// left to do, and of a Yes/No question, asked otherwise.
struct NoticeAndQuestion {
    unsigned notice;
    unsigned question;
};

// The string numbers of what a driver shows.
struct DriverStrings {
    NoticeAndQuestion unsupported;  // files in a format that cannot carry the data
    NoticeAndQuestion readOnly;     // files that cannot be written
    unsigned noValidFiles;
    NoticeAndQuestion writeError;  // told when the only file fails, asked when one of several does
    unsigned progressText;         // "%s": the path
    // Raw images whose companion file, which holds their metadata, is
    // missing (for a driver that looks for companions).
    NoticeAndQuestion missingCompanion{};
};

class DriverHost {
public:
    // engine may be null (the driver then has nothing to work on); without a
    // ui nothing is shown: questions are answered No, dialogs cancelled.
    DriverHost(CVLWinEngine* engine, EditorUI* ui, const char* logSource);
    DriverHost(const DriverHost&) = delete;
    DriverHost& operator=(const DriverHost&) = delete;
    ~DriverHost();

    CVLWinEngine* Engine() const noexcept { return m_engine; }
    EditorUI& UI() const noexcept { return *m_ui; }

    // String stringId, its "%s" filled with path (texts that name no file
    // have no placeholder); returns the button pressed.
    Answer Message(unsigned stringId, const std::string& path, Buttons buttons, Icon icon);

    // The URI of a catalogued file; a host error is logged and returned.
    std::uint32_t Resolve(std::uint32_t fileId, CVLURI& uri);
    // Resolves the file and asks the host whether it may be written now.
    bool ResolveMutable(std::uint32_t fileId, CVLURI& uri);

    // Log lines, when the host keeps a log. The texts are printf-style
    // formats filled by editors::FormatText.
    void LogError(std::string_view format, std::initializer_list<std::string_view> args);
    void LogHostError(std::uint32_t code, const char* text);
    void LogProgress(std::string_view format, std::initializer_list<std::string_view> args);

private:
    CVLWinEngine* m_engine;
    std::unique_ptr<EditorUI> m_ownUI;
    EditorUI* m_ui;
    const char* m_logSource;
};

}  // namespace vliptc::editors::internal
