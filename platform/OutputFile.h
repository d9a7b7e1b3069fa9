#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vliptc::platform {

// A new file being written, for the writers that build a complete file beside
// the original before swapping it in. Every step goes through the fault seam.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();  // closes; does not remove the file

    // Creates a file that did not exist (O_EXCL) in folder, named
    // prefix + a unique suffix; false when none could be made.
    [[nodiscard]] bool CreateUnique(const std::string& folder, const std::string& prefix);
    [[nodiscard]] bool Write(std::span<const std::uint8_t> bytes);
    // Flushes to disk and closes; false when anything was lost.
    [[nodiscard]] bool Close();
    // Gives the new file the permission bits of an existing file (the one it
    // is about to replace), so a swap does not change who may read or write
    // it. Best effort: the bits stay as created when that fails.
    void CopyPermissionsFrom(const std::string& path);
    // Closes (if open) and removes the file, for a write that is abandoned.
    // Goes through RemoveFile, so the fault seam sees it too.
    void Discard();

    const std::string& Path() const noexcept { return m_path; }

private:
    int m_fd = -1;
    std::string m_path;
};

// Grows or shrinks a file in place. Growing reserves the disk blocks at once,
// so a later write through a mapping of the new area cannot fail for want of
// space; when the blocks cannot be had the file keeps its old size.
[[nodiscard]] bool ResizeFile(const std::string& path, std::uint64_t size);

}  // namespace vliptc::platform
