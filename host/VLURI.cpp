#include "host/VLURI.h"

#include <cctype>
#include <string_view>

namespace {

constexpr std::string_view kFileScheme = "file://";
constexpr std::string_view kLocalHost = "localhost";

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsUnescaped(unsigned char c) {
    if (c < 0x80 && std::isalnum(c) != 0) return true;
    return c == '-' || c == '.' || c == '_' || c == '~' || c == '/';
}

// The scheme is compared without regard to case ("FILE://" is the same URI).
bool StartsWithFileScheme(std::string_view uri) {
    if (uri.size() < kFileScheme.size()) return false;
    for (std::size_t i = 0; i < kFileScheme.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(uri[i])) != kFileScheme[i]) return false;
    }
    return true;
}

}  // namespace

std::string CVLURI::WindowsPath() const {
    const std::string_view uri = m_uri;
    if (!StartsWithFileScheme(uri)) return {};
    // "file://HOST/path": the path starts at the first "/" after the host.
    const std::string_view rest = uri.substr(kFileScheme.size());
    const std::size_t slash = rest.find('/');
    if (slash == std::string_view::npos) return {};
    const std::string_view host = rest.substr(0, slash);
    if (!host.empty() && host != kLocalHost) return {};

    const std::string_view path = rest.substr(slash);
    std::string out;
    out.reserve(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '%' && i + 2 < path.size() && HexValue(path[i + 1]) >= 0 &&
            HexValue(path[i + 2]) >= 0) {
            out += static_cast<char>(HexValue(path[i + 1]) * 16 + HexValue(path[i + 2]));
            i += 2;
        } else {
            out += path[i];
        }
    }
    return out;
}

CVLURI CVLURI::FromPath(const std::string& path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string uri(kFileScheme);
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (IsUnescaped(byte)) {
            uri += c;
        } else {
            uri += '%';
            uri += kHex[byte >> 4];
            uri += kHex[byte & 0x0F];
        }
    }
    return CVLURI(std::move(uri));
}
