#include "editors/internal/KeptFileTimes.h"

#include "platform/FileName.h"

namespace vliptc::editors::internal {

namespace {

// A ".CRW" keeps its metadata in its ".thm" companion: that is the file a
// write changes (the path itself when the companion is missing).
std::string WrittenFile(const std::string& path) { return platform::MetadataFileOf(path).value_or(path); }

}  // namespace

void KeptFileTimes::NoteTemplate(std::uint32_t fileId, const std::string& path) {
    if (!m_keep) return;
    m_templateId = fileId;
    m_templateTimes = platform::GetFileTimes(WrittenFile(path));
}

KeptFileTimes::Noted KeptFileTimes::Note(std::uint32_t fileId, const std::string& path) const {
    Noted noted{WrittenFile(path), std::nullopt};
    if (!m_keep) return noted;
    noted.times =
        fileId == m_templateId && m_templateTimes ? m_templateTimes : platform::GetFileTimes(noted.file);
    return noted;
}

void KeptFileTimes::Restore(const Noted& noted) {
    if (noted.times) static_cast<void>(platform::SetFileTimes(noted.file, *noted.times));
}

}  // namespace vliptc::editors::internal
