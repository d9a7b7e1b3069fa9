#pragma once

// Replacing a user's file with new content so that the file is never lost:
// the new content goes to a temporary file beside it, the original is moved
// aside to a numbered backup, the new file takes its place, and only then is
// the backup deleted. Any failure on the way leaves the original bytes at the
// original path and no temporary file behind.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace vliptc::platform {

class OutputFile;

// Guards the replacement of a user's file. The writer first moves the
// original aside to a numbered backup ("<base><ext>.000", ".001", ... the
// first name the never-replacing rename accepts), then moves the complete new
// file to the original path and commits. If the guard is destroyed while the
// backup is still pending, the new file at the original path (if any) is
// removed and the backup is renamed back: the original bytes are at the
// original path again.
class SafeReplace {
public:
    explicit SafeReplace(std::string path);
    SafeReplace(const SafeReplace&) = delete;
    SafeReplace& operator=(const SafeReplace&) = delete;
    ~SafeReplace();

    // Renames the file to its first free numbered backup name; false after
    // 1,000 taken names or any other failure (the file is then untouched).
    // Only a name that is taken moves the search on to the next number; a
    // rename that fails for another reason ends it at once.
    [[nodiscard]] bool MakeBackup();
    // Deletes the backup unless it is to be kept, and forgets it.
    void Commit();

    // No writer of the library sets this: a backup is deleted after every
    // successful write. It is there for a host that wants to keep one.
    void SetKeepBackup(bool keep) noexcept { m_keepBackup = keep; }
    const std::string& BackupPath() const noexcept { return m_backupPath; }

    // The n-th backup name of path: "%s%s.%03d" of base, extension and n.
    static std::string BackupName(const std::string& path, int n);

private:
    std::string m_path;
    std::string m_backupPath;
    bool m_pending = false;
    bool m_keepBackup = false;
};

// How a replacement ended. Each failure leaves the original at its path.
enum class ReplaceStatus {
    Replaced,
    CannotWrite,    // the temporary file could not be created or written
    CannotReplace,  // the backup or the final move failed
};

// The steps every replacing writer takes, for the writers to share.
//
// Temporary files are made in the file's own folder, so the final move never
// crosses file systems: ".<name>.vliptc-XXXXXX.tmp" (a hidden name made from
// the file's name and a unique run, created with O_EXCL).
//
// Creates the temporary file for path in its folder and gives it path's
// permission bits; false when it cannot be created.
[[nodiscard]] bool CreateTempBeside(const std::string& path, OutputFile& temp);

// Creates the temporary file for path (CreateTempBeside), lets write fill it
// (false: it could not), then flushes and closes it. Its path, or nullopt
// when it could not be created or written (it is then removed).
[[nodiscard]] std::optional<std::string> WriteTempBeside(const std::string& path,
                                                         const std::function<bool(OutputFile&)>& write);

// Swaps a complete, closed temporary file in for path: numbered backup of the
// original, move of the temporary file to path, commit (the backup deleted).
// CannotReplace when the backup or the move fails; the original is then at
// path again and the temporary file is removed.
[[nodiscard]] ReplaceStatus SwapInTempFile(const std::string& path, const std::string& tempPath);

// Writes bytes as the new content of path: a temporary file beside it,
// written, flushed and closed, then SwapInTempFile. CannotWrite when the
// temporary file cannot be created or written (the original untouched, the
// temporary file removed).
[[nodiscard]] ReplaceStatus ReplaceFileContent(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace vliptc::platform
