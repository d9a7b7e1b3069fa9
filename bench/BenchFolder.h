#pragma once

// A temporary folder for the files a benchmark generates, removed with them
// at the end.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace vliptc::bench {

class BenchFolder {
public:
    BenchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vliptc-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
        m_path = pattern + "/";
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;
    ~BenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    // The folder, with a trailing separator.
    const std::string& Path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + name; }
    // Writes a file of the folder, replacing it.
    void Write(const std::string& name, std::string_view bytes) const {
        std::ofstream out(File(name), std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out) throw std::runtime_error("cannot write " + name);
    }

private:
    std::string m_path;
};

}  // namespace vliptc::bench
