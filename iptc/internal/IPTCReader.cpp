#include "iptc/internal/IPTCReader.h"

namespace {

constexpr std::uint8_t kCR = 0x0D;
constexpr std::uint8_t kLF = 0x0A;

}  // namespace

std::optional<std::string> CIPTCReader::ReadText(std::uint64_t n) {
    const std::uint64_t start = m_cursor.Position();
    const auto bytes = m_cursor.ReadBytes(n);
    if (!bytes) {
        return std::nullopt;
    }
    const auto region = m_cursor.Data();
    std::string text;
    text.reserve(bytes->size());
    for (std::size_t i = 0; i < bytes->size(); ++i) {
        const std::uint8_t c = (*bytes)[i];
        if (c == 0x00) {
            continue;
        }
        if (c == kCR) {
            text.push_back(static_cast<char>(kCR));
            // The follower is looked up in the region, not only in the value:
            // a CR that ends a value is completed unless the region ends there.
            const auto next = vliptc::bytes::Read8(region, start + i + 1);
            if (next && *next != kLF) {
                text.push_back(static_cast<char>(kLF));
            }
            continue;
        }
        if (c == kLF && !text.empty() && text.back() != static_cast<char>(kCR)) {
            text.push_back(static_cast<char>(kCR));
        }
        text.push_back(static_cast<char>(c));
    }
    return text;
}
