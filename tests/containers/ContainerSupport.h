#pragma once

// Shared pieces of the container tests (JPEG, trailer, TIFF and Photoshop):
// byte builders for IIM blocks, image resources, JPEG segments and trailer
// chunks, an independent walk of a JPEG's segments and resources, and a
// ready store.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "iptc/IPTC.h"
#include "platform/FaultInjection.h"
#include "tests/support/ExifTool.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes ToBytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

inline void Put16(Bytes& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void Put32(Bytes& out, std::uint32_t value) {
    Put16(out, value >> 16);
    Put16(out, value & 0xFFFF);
}

inline std::uint32_t Get32(const Bytes& bytes, std::size_t at) {
    return (std::uint32_t{bytes[at]} << 24) | (std::uint32_t{bytes[at + 1]} << 16) |
           (std::uint32_t{bytes[at + 2]} << 8) | bytes[at + 3];
}

inline Bytes Cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

inline Bytes ReadBytes(const std::string& path) { return ToBytes(ReadFile(path)); }

inline void WriteBytes(const std::string& path, const Bytes& bytes) {
    WriteFile(path, std::string(bytes.begin(), bytes.end()));
}

// One record-2 dataset with a big-endian length.
inline Bytes Dataset(std::uint8_t id, std::string_view value, std::uint8_t record = 2) {
    Bytes out{0x1C, record, id};
    Put16(out, static_cast<std::uint32_t>(value.size()));
    out.insert(out.end(), value.begin(), value.end());
    return out;
}

// A block as the encoder writes it: the version dataset 2:0 = 2, then the
// datasets, padded to even size.
inline Bytes IimBlock(std::initializer_list<std::pair<std::uint8_t, std::string>> datasets) {
    Bytes out = Dataset(0, std::string_view("\x00\x02", 2));
    for (const auto& [id, text] : datasets) {
        const Bytes dataset = Dataset(id, text);
        out.insert(out.end(), dataset.begin(), dataset.end());
    }
    if (out.size() % 2 != 0) out.push_back(0);
    return out;
}

// An image resource with its name padded and its data padded to even size.
inline Bytes Resource(std::uint16_t id, const Bytes& data, std::string_view name = "",
                      std::string_view signature = "8BIM") {
    Bytes out = ToBytes(signature);
    Put16(out, id);
    out.push_back(static_cast<std::uint8_t>(name.size()));
    out.insert(out.end(), name.begin(), name.end());
    if ((name.size() + 1) % 2 != 0) out.push_back(0);
    Put32(out, static_cast<std::uint32_t>(data.size()));
    out.insert(out.end(), data.begin(), data.end());
    if (data.size() % 2 != 0) out.push_back(0);
    return out;
}

// A marker segment with a correct length.
inline Bytes Segment(std::uint8_t marker, const Bytes& payload) {
    Bytes out{0xFF, marker};
    Put16(out, static_cast<std::uint32_t>(payload.size() + 2));
    out.insert(out.end(), payload.begin(), payload.end());
    return out;
}

inline Bytes Photoshop(const Bytes& resources) {
    return Segment(0xED, Cat({ToBytes(std::string_view("Photoshop 3.0\0", 14)), resources}));
}

inline Bytes App0() { return Segment(0xE0, ToBytes(std::string_view("JFIF\0\1\1\0\0\1\0\1\0\0", 14))); }

inline Bytes App1() { return Segment(0xE1, ToBytes("Exif-ish payload")); }

inline Bytes Dqt() { return Segment(0xDB, Bytes(65, 1)); }

// SOI, the given segments, then a short scan and EOI.
inline Bytes Jpeg(std::initializer_list<Bytes> segments) {
    Bytes out{0xFF, 0xD8};
    for (const Bytes& s : segments) out.insert(out.end(), s.begin(), s.end());
    const Bytes scan{0xFF, 0xDA, 0x00, 0x02, 0x12, 0x34, 0xFF, 0x00, 0x56, 0xFF, 0xD9};
    out.insert(out.end(), scan.begin(), scan.end());
    return out;
}

// A trailer chunk of the cataloguers' layout: data, then kind, length, magic.
inline Bytes TrailerChunk(std::uint16_t kind, const Bytes& data) {
    Bytes out = data;
    Put16(out, kind);
    Put32(out, static_cast<std::uint32_t>(data.size() + 10));
    Put32(out, 0xA1B2C3D4);
    return out;
}

// ---- Reading a JPEG back, independently of the library -------------------

struct JpegSegment {
    std::uint8_t marker = 0;
    std::size_t start = 0;
    Bytes payload;
};

// A JPEG's segments up to the scan; bytes between segments that are not a
// marker are passed over, as decoders do.
inline std::vector<JpegSegment> Segments(const Bytes& file) {
    std::vector<JpegSegment> out;
    std::size_t pos = 2;
    while (pos + 4 <= file.size()) {
        if (file[pos] != 0xFF || file[pos + 1] == 0xFF || file[pos + 1] == 0x00) {
            ++pos;
            continue;
        }
        const std::uint8_t marker = file[pos + 1];
        if (marker == 0xDA || marker == 0xD9) break;
        const std::size_t length = (std::size_t{file[pos + 2]} << 8) | file[pos + 3];
        if (length < 2 || pos + 2 + length > file.size()) break;
        out.push_back({marker, pos,
                       Bytes(file.begin() + static_cast<long>(pos + 4),
                             file.begin() + static_cast<long>(pos + 2 + length))});
        pos += 2 + length;
    }
    return out;
}

inline bool IsPhotoshopPayload(const Bytes& payload) {
    return payload.size() >= 14 && std::equal(payload.begin(), payload.begin() + 14, "Photoshop 3.0");
}

// A "Photoshop 3.0" payload cut into the resource records that parse and
// whatever follows them.
struct Cut {
    std::vector<Bytes> records;
    std::vector<std::uint16_t> ids;
    std::vector<bool> photoshop;  // signed "8BIM" (others: "AgHg", "PHUT", ...)
    Bytes tail;
};

inline Cut CutPayload(const Bytes& payload) {
    Cut cut;
    std::size_t pos = 14;
    auto isSignature = [&](std::size_t at) {
        return std::all_of(payload.begin() + static_cast<long>(at),
                           payload.begin() + static_cast<long>(at + 4),
                           [](std::uint8_t c) { return std::isalnum(c) != 0; });
    };
    while (pos + 12 <= payload.size() && isSignature(pos)) {
        const std::size_t nameBytes = payload[pos + 6] + 1 + ((payload[pos + 6] + 1) % 2);
        const std::size_t sizeAt = pos + 6 + nameBytes;
        if (sizeAt + 4 > payload.size()) break;
        const std::size_t size = Get32(payload, sizeAt);
        if (sizeAt + 4 + size > payload.size()) break;
        const std::size_t end = std::min(payload.size(), sizeAt + 4 + size + size % 2);
        cut.records.emplace_back(payload.begin() + static_cast<long>(pos),
                                 payload.begin() + static_cast<long>(end));
        cut.ids.push_back(static_cast<std::uint16_t>((payload[pos + 4] << 8) | payload[pos + 5]));
        cut.photoshop.push_back(std::equal(payload.begin() + static_cast<long>(pos),
                                           payload.begin() + static_cast<long>(pos + 4), "8BIM"));
        pos = end;
    }
    cut.tail.assign(payload.begin() + static_cast<long>(std::min(pos, payload.size())), payload.end());
    return cut;
}

struct IptcCounts {
    int app13 = 0;    // "Photoshop 3.0" segments
    int iptc = 0;     // resources 0x0404 signed "8BIM"
    int anyIptc = 0;  // under any signature (exiv2 reads them all)
};

inline IptcCounts CountIptc(const Bytes& file) {
    IptcCounts counts;
    for (const auto& s : Segments(file)) {
        // Other APP13 segments ("Adobe_CM") are not resource sections.
        if (s.marker != 0xED || !IsPhotoshopPayload(s.payload)) continue;
        ++counts.app13;
        const Cut cut = CutPayload(s.payload);
        for (std::size_t i = 0; i < cut.ids.size(); ++i) {
            if (cut.ids[i] != 0x0404) continue;
            ++counts.anyIptc;
            counts.iptc += cut.photoshop[i] ? 1 : 0;
        }
    }
    return counts;
}

// ---- Failing the file-system steps ---------------------------------------

// Names in a folder, apart from a definitions folder "defs".
inline std::set<std::string> Listing(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name != "defs") names.insert(name);
    }
    return names;
}

// ---- A store ---------------------------------------------------------------

// A store initialised from a small definition file in a temporary folder.
class ContainerTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(m_dir.File("defs"));
        WriteFile(m_dir.File("defs/vliptctags.ipt"),
                  "{\nID 5\nNAME Title\n}\n"
                  "{\nID 25\nNAME Keywords\nREPEATABLE 1\n}\n"
                  "{\nID 80\nNAME By-line\nREPEATABLE 1\n}\n"
                  "{\nID 120\nNAME Caption\n}\n");
        ASSERT_EQ(m_store.Initialize(m_dir.File("defs"), m_dir.Path()), CIPTC::kSuccess);
    }

    std::string File(std::string_view name) const { return m_dir.File(name); }

    std::vector<std::string> Values(std::uint32_t id) {
        const Datasets datasets = FromStore(m_store);
        const auto it = datasets.find(static_cast<int>(id));
        return it == datasets.end() ? std::vector<std::string>{} : it->second;
    }

    TempDir m_dir;
    CIPTC m_store;
    platform::fault::ScopedReset m_faults;
};

}  // namespace vliptc::test
