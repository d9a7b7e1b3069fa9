#include "host/ReferenceEngine.h"

#include <filesystem>
#include <system_error>

#include "platform/FileSystem.h"

CVLReferenceEngine::CVLReferenceEngine(const std::string& logPath) {
    // The host logs a host error by its code as a message id; the lookup
    // gives the code its words.
    if (!logPath.empty()) {
        m_log = std::make_unique<CQXTLogfile>(logPath, [](unsigned id) { return ErrorText(id); });
    }
}

std::uint32_t CVLReferenceEngine::AddFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    m_paths.push_back(error ? path : absolute.string());
    return static_cast<std::uint32_t>(m_paths.size());
}

std::optional<std::string> CVLReferenceEngine::PathOf(std::uint32_t fileId) const {
    if (fileId == 0 || fileId > m_paths.size()) return std::nullopt;
    return m_paths[fileId - 1];
}

unsigned CVLReferenceEngine::RefreshCount(std::uint32_t fileId) const {
    const auto it = m_refreshes.find(fileId);
    return it == m_refreshes.end() ? 0 : it->second;
}

std::uint32_t CVLReferenceEngine::GetFileURI(std::uint32_t fileId, CVLURI& uri) {
    const auto path = PathOf(fileId);
    if (!path) return kErrorUnknownFile;
    uri = CVLURI::FromPath(*path);
    return kVLSuccess;
}

std::uint32_t CVLReferenceEngine::RefreshFile(std::uint32_t fileId) {
    const auto path = PathOf(fileId);
    if (!path) return kErrorUnknownFile;
    ++m_refreshes[fileId];
    return vliptc::platform::IsRegularFile(*path) ? kVLSuccess : kErrorFileGone;
}

bool CVLReferenceEngine::IsFileMutable(std::uint32_t fileId) {
    const auto path = PathOf(fileId);
    return path && vliptc::platform::IsRegularFile(*path) && !vliptc::platform::IsReadOnly(*path);
}

std::string CVLReferenceEngine::ErrorText(std::uint32_t code) {
    switch (code) {
        case kErrorUnknownFile:
            return "error " + std::to_string(code) + ": the file id is not in the catalogue";
        case kErrorFileGone:
            return "error " + std::to_string(code) + ": the catalogued file is no longer there";
        default:
            return {};
    }
}
