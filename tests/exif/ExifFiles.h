#pragma once

// Files for the EXIF tests, built in code: TIFF streams in either byte order,
// JPEG segments and Photoshop documents with image resources.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <map>
#include <string>

namespace vliptc::test::exiffiles {

// TIFF value types.
constexpr std::uint16_t kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7,
                        kSShort = 8, kFloat = 11, kSRational = 10;

// A number as its low `bytes` bytes, most significant first when big.
inline std::string Num(bool big, std::uint32_t value, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; ++i) out.push_back(char((value >> 8 * (big ? bytes - 1 - i : i)) & 0xFF));
    return out;
}

// A TIFF stream: a chain of directories (0, 1, ...) and the EXIF and GPS
// directories of the first. Data longer than 4 bytes goes to a data area at
// 0x400 in the order added; shorter data fills the value field.
class Tiff {
public:
    static constexpr std::size_t kExif = 100, kGPS = 101;

    explicit Tiff(bool big) : m_big(big) {}

    std::string Num(std::uint32_t value, int bytes) const { return exiffiles::Num(m_big, value, bytes); }
    std::string Shorts(std::initializer_list<std::uint32_t> values) const { return Join(values, 2); }
    std::string Longs(std::initializer_list<std::uint32_t> values) const { return Join(values, 4); }

    Tiff& Add(std::size_t dir, std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::string data) {
        m_dirs[dir] += Num(tag, 2) + Num(type, 2) + Num(count, 4);
        if (data.size() <= 4) {
            m_dirs[dir] += data + std::string(4 - data.size(), '\0');
        } else {
            m_dirs[dir] += Num(0x400 + std::uint32_t(m_data.size()), 4);
            m_data += data + std::string(data.size() % 2, '\0');
        }
        return *this;
    }

    // lastLink: the link of the last chain directory (0 ends the chain).
    std::string Build(std::uint32_t firstOffset = 8, std::uint32_t lastLink = 0) const {
        auto dirs = m_dirs;
        const auto pointers = 12 * (dirs.count(kExif) + dirs.count(kGPS));
        std::map<std::size_t, std::uint32_t> at;
        std::uint32_t position = 8;
        for (const auto& [index, entries] : dirs) {
            at[index] = position;
            position += std::uint32_t(6 + entries.size() + (index == 0 ? pointers : 0));
        }
        for (const auto& [dir, tag] : {std::pair{kExif, 0x8769}, std::pair{kGPS, 0x8825}}) {
            if (dirs.count(dir)) dirs[0] += Num(tag, 2) + Num(4, 2) + Num(1, 4) + Num(at[dir], 4);
        }
        std::string out = (m_big ? "MM" : "II") + Num(42, 2) + Num(firstOffset, 4);
        for (auto it = dirs.begin(); it != dirs.end(); ++it) {
            const auto next = std::next(it);
            const std::uint32_t link = it->first >= kExif                           ? 0
                                       : next == dirs.end() || next->first >= kExif ? lastLink
                                                                                    : at[next->first];
            out += Num(std::uint32_t(it->second.size() / 12), 2) + it->second + Num(link, 4);
        }
        out.resize(0x400, '\0');
        return out + m_data;
    }

private:
    std::string Join(std::initializer_list<std::uint32_t> values, int bytes) const {
        std::string out;
        for (const auto v : values) out += Num(v, bytes);
        return out;
    }
    bool m_big;
    std::map<std::size_t, std::string> m_dirs;  // entries, 12 bytes each
    std::string m_data;
};

inline std::string Segment(std::uint8_t marker, const std::string& payload) {
    const auto length = payload.size() + 2;
    return std::string{'\xFF', char(marker), char(length >> 8), char(length & 0xFF)} + payload;
}

inline const std::string kSOI = "\xFF\xD8";
inline const std::string kSOS("\xFF\xDA\x00\x02", 4);

// An APP1 segment holding EXIF data.
inline std::string ExifSegment(const std::string& tiff) {
    return Segment(0xE1, std::string("Exif\0\0", 6) + tiff);
}

// An image resource with the empty name.
inline std::string Resource(std::uint16_t id, const std::string& data) {
    return "8BIM" + Num(true, id, 2) + std::string(2, '\0') + Num(true, std::uint32_t(data.size()), 4) +
           data + std::string(data.size() % 2, '\0');
}

// A Photoshop document: header, no colour-mode data, the resources, then some image data.
inline std::string Psd(const std::string& resources) {
    return "8BPS" + Num(true, 1, 2) + std::string(20, '\0') + Num(true, 0, 4) +
           Num(true, std::uint32_t(resources.size()), 4) + resources + std::string(64, '\0');
}

}  // namespace vliptc::test::exiffiles
