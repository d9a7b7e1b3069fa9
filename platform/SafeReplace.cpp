// The safe-replace guard: the original is moved aside to a numbered backup,
// and put back unless the writer commits.

#include "platform/SafeReplace.h"

#include <cstdio>
#include <utility>

#include "platform/FileSystem.h"
#include "platform/OutputFile.h"

namespace vliptc::platform {

namespace {

// Backup suffixes run from ".000" to ".999".
constexpr int kBackupNames = 1000;

}  // namespace

SafeReplace::SafeReplace(std::string path) : m_path(std::move(path)) {}

SafeReplace::~SafeReplace() {
    if (!m_pending) return;
    // The writer gave up after the original was moved aside. Whatever sits at
    // the path now is the failed new file (or nothing, when the final move
    // never happened); the backup goes back under its own name.
    static_cast<void>(RemoveFile(m_path));
    static_cast<void>(RenameNoReplace(m_backupPath, m_path));
}

std::string SafeReplace::BackupName(const std::string& path, int n) {
    // Base (folder and name) and extension are split at the last "." of the
    // file name, and put back together in front of the number, so the backup
    // of "a/photo.jpg" is "a/photo.jpg.000".
    const std::size_t nameStart = path.find_last_of("/\\");
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != std::string::npos && (nameStart == std::string::npos || dot > nameStart);
    const std::string base = hasExtension ? path.substr(0, dot) : path;
    const std::string extension = hasExtension ? path.substr(dot) : std::string();
    char number[16];
    std::snprintf(number, sizeof number, ".%03d", n);
    return base + extension + number;
}

bool SafeReplace::MakeBackup() {
    if (m_pending) return true;
    for (int n = 0; n < kBackupNames; ++n) {
        const std::string candidate = BackupName(m_path, n);
        if (RenameNoReplace(m_path, candidate)) {
            m_backupPath = candidate;
            m_pending = true;
            return true;
        }
        // Only a taken name sends us on to the next number. Any other failure
        // (no right to rename in this folder, the file gone, an I/O error)
        // would fail the same way for every name.
        if (!Exists(candidate)) return false;
    }
    return false;
}

void SafeReplace::Commit() {
    if (!m_pending) return;
    // A backup that cannot be deleted stays beside the new file under its
    // numbered name; the write itself has succeeded.
    if (!m_keepBackup) static_cast<void>(RemoveFile(m_backupPath));
    m_pending = false;
    m_backupPath.clear();
}

}  // namespace vliptc::platform

// ---------------------------------------------------------------------------
// The shared replacement steps

namespace vliptc::platform {

namespace {

// The middle of every temporary file name: ".<name>.vliptc-XXXXXX.tmp".
constexpr const char* kTempMarker = ".vliptc-";

}  // namespace

bool CreateTempBeside(const std::string& path, OutputFile& temp) {
    const std::size_t slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (!temp.CreateUnique(folder, "." + name + kTempMarker)) return false;
    temp.CopyPermissionsFrom(path);
    return true;
}

ReplaceStatus SwapInTempFile(const std::string& path, const std::string& tempPath) {
    SafeReplace guard(path);
    if (!guard.MakeBackup()) {
        static_cast<void>(RemoveFile(tempPath));
        return ReplaceStatus::CannotReplace;
    }
    if (!RenameNoReplace(tempPath, path)) {
        // The guard's destructor puts the backup back under path.
        static_cast<void>(RemoveFile(tempPath));
        return ReplaceStatus::CannotReplace;
    }
    guard.Commit();
    return ReplaceStatus::Replaced;
}

std::optional<std::string> WriteTempBeside(const std::string& path,
                                           const std::function<bool(OutputFile&)>& write) {
    OutputFile temp;
    if (!CreateTempBeside(path, temp)) return std::nullopt;
    if (!write(temp) || !temp.Close()) {
        temp.Discard();
        return std::nullopt;
    }
    return temp.Path();
}

ReplaceStatus ReplaceFileContent(const std::string& path, std::span<const std::uint8_t> bytes) {
    const auto temp = WriteTempBeside(path, [bytes](OutputFile& out) { return out.Write(bytes); });
    if (!temp) return ReplaceStatus::CannotWrite;
    return SwapInTempFile(path, *temp);
}

}  // namespace vliptc::platform
