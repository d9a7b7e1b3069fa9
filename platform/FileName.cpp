#include "platform/FileName.h"

#include "platform/FileSystem.h"

namespace vliptc::platform {
namespace {

constexpr std::string_view kRawWithCompanionExtension = ".CRW";
constexpr const char* kCompanionExtension = ".thm";  // found whatever its case

}  // namespace

std::string UpperExtension(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.find_last_of("/\\");
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) return {};
    std::string extension(path.substr(dot));
    for (char& c : extension) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return extension;
}

std::optional<std::string> MetadataFileOf(const std::string& path) {
    if (UpperExtension(path) != kRawWithCompanionExtension) return path;
    return FindCompanion(path, kCompanionExtension);
}

}  // namespace vliptc::platform
