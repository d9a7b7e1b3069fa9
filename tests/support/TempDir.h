#pragma once

#include <string>
#include <string_view>

namespace vliptc::test {

// A fresh folder under the system temp folder, removed with its contents on
// destruction. Path() ends with "/".
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::string& Path() const noexcept { return m_path; }
    std::string File(std::string_view name) const { return m_path + std::string(name); }

private:
    std::string m_path;
};

// Whole-file helpers for tests (binary, exact bytes).
void WriteFile(const std::string& path, std::string_view bytes);
std::string ReadFile(const std::string& path);

}  // namespace vliptc::test
