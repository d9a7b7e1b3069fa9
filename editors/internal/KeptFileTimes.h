#pragma once

// The access and modification times that the files of a write pass keep when
// the host asks for it (bit 0 of the drivers' flags). The creation time
// cannot be set on POSIX systems and is left alone.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/FileSystem.h"

namespace vliptc::editors::internal {

class KeptFileTimes {
public:
    // The times noted for one file: the file that a write to its path
    // changes (a raw image's ".thm" companion) and its times, if kept.
    struct Noted {
        std::string file;
        std::optional<platform::FileTimes> times;
    };

    explicit KeptFileTimes(bool keep) : m_keep(keep) {}

    // Notes the template file's times before the editor first reads it, as a
    // read may move the access time.
    void NoteTemplate(std::uint32_t fileId, const std::string& path);
    // The times to put back after writing fileId at path: the template's as
    // first noted, any other file's as they are now. Nothing when not kept.
    Noted Note(std::uint32_t fileId, const std::string& path) const;
    // Puts noted times back, whether or not the write succeeded; the owner
    // may set them without write permission, so no attribute needs lifting.
    static void Restore(const Noted& noted);

private:
    bool m_keep;
    std::optional<std::uint32_t> m_templateId;
    std::optional<platform::FileTimes> m_templateTimes;
};

}  // namespace vliptc::editors::internal
