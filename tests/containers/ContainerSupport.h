#pragma once

// Shared pieces of the container tests: a ready store, byte builders for
// JPEG segments, image resources and trailer chunks, and a JPEG segment walk
// that checks every length of a written file.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "iptc/IPTC.h"
#include "platform/FaultInjection.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes ToBytes(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

inline std::string ToString(const Bytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

inline void Put16(Bytes& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void Put32(Bytes& out, std::uint32_t value) {
    Put16(out, value >> 16);
    Put16(out, value & 0xFFFF);
}

inline Bytes Cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

// One record-2 dataset with a big-endian length.
inline Bytes Dataset(std::uint8_t id, std::string_view value, std::uint8_t record = 2) {
    Bytes out{0x1C, record, id};
    Put16(out, static_cast<std::uint32_t>(value.size()));
    out.insert(out.end(), value.begin(), value.end());
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

inline Bytes App0() {
    return Segment(0xE0, ToBytes(std::string_view("JFIF\0\1\1\0\0\1\0\1\0\0", 14)));
}

inline Bytes App1(std::string_view text = "Exif-ish payload") {
    return Segment(0xE1, ToBytes(text));
}

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

struct JpegSegment {
    std::uint8_t marker = 0;
    std::size_t start = 0;
    Bytes payload;
};

// Walks a JPEG up to SOS with strict rules (no junk, exact lengths) and
// checks that the resources of every "Photoshop 3.0" APP13 end exactly at
// the end of their segment. Fails the test on any inconsistency.
inline std::vector<JpegSegment> StrictSegments(const Bytes& file) {
    std::vector<JpegSegment> out;
    EXPECT_GE(file.size(), 4u);
    if (file.size() < 4) return out;
    EXPECT_EQ(file[0], 0xFF);
    EXPECT_EQ(file[1], 0xD8);
    std::size_t pos = 2;
    while (pos + 4 <= file.size()) {
        EXPECT_EQ(file[pos], 0xFF) << "at " << pos;
        if (file[pos] != 0xFF) return out;
        const std::uint8_t marker = file[pos + 1];
        if (marker == 0xDA || marker == 0xD9) return out;
        const std::size_t length = (std::size_t{file[pos + 2]} << 8) | file[pos + 3];
        EXPECT_GE(length, 2u);
        EXPECT_LE(pos + 2 + length, file.size());
        if (length < 2 || pos + 2 + length > file.size()) return out;
        out.push_back({marker, pos, Bytes(file.begin() + static_cast<long>(pos + 4),
                                          file.begin() + static_cast<long>(pos + 2 + length))});
        pos += 2 + length;
    }
    return out;
}

struct ParsedResource {
    std::uint16_t id = 0;
    Bytes record;  // the whole resource, header to pad byte
    Bytes data;
};

// The resources of a "Photoshop 3.0" payload; expects them to fill it exactly.
inline std::vector<ParsedResource> Resources(const Bytes& payload) {
    std::vector<ParsedResource> out;
    std::size_t pos = 14;
    while (pos < payload.size()) {
        if (pos + 8 > payload.size()) {
            ADD_FAILURE() << "resource header cut off at " << pos;
            return out;
        }
        ParsedResource r;
        r.id = static_cast<std::uint16_t>((payload[pos + 4] << 8) | payload[pos + 5]);
        const std::size_t nameBytes = payload[pos + 6] + 1 + ((payload[pos + 6] + 1) % 2);
        const std::size_t sizeAt = pos + 6 + nameBytes;
        if (sizeAt + 4 > payload.size()) {
            ADD_FAILURE() << "resource size cut off at " << pos;
            return out;
        }
        const std::size_t size = (std::size_t{payload[sizeAt]} << 24) | (std::size_t{payload[sizeAt + 1]} << 16) |
                                 (std::size_t{payload[sizeAt + 2]} << 8) | payload[sizeAt + 3];
        const std::size_t end = sizeAt + 4 + size + size % 2;
        if (end > payload.size()) {
            ADD_FAILURE() << "resource data run past the segment at " << pos;
            return out;
        }
        r.data.assign(payload.begin() + static_cast<long>(sizeAt + 4), payload.begin() + static_cast<long>(sizeAt + 4 + size));
        r.record.assign(payload.begin() + static_cast<long>(pos), payload.begin() + static_cast<long>(end));
        out.push_back(std::move(r));
        pos = end;
    }
    return out;
}

inline bool IsPhotoshopPayload(const Bytes& payload) {
    return payload.size() >= 14 && std::string_view(reinterpret_cast<const char*>(payload.data()), 14) ==
                                       std::string_view("Photoshop 3.0\0", 14);
}

inline Bytes ReadBytes(const std::string& path) {
    return ToBytes(ReadFile(path));
}

inline void WriteBytes(const std::string& path, const Bytes& bytes) {
    WriteFile(path, ToString(bytes));
}

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
        std::vector<CVLProperty> values;
        m_store.GetField(id, values);
        std::vector<std::string> out;
        for (const auto& v : values) out.push_back(v.String());
        return out;
    }

    // Writes the store into path with the format that reading it gave.
    CIPTC::EError Rewrite(const std::string& path) {
        CIPTC::SIPTCFormatInfo format;
        const CIPTC::EError read = m_store.ReadIPTCBlob(path.c_str(), format);
        if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock) return read;
        m_store.SetField(25, CVLProperty(std::string("added")), false);
        return m_store.WriteIPTCBlob(path.c_str(), format);
    }

    TempDir m_dir;
    CIPTC m_store;
    platform::fault::ScopedReset m_faults;
};

}  // namespace vliptc::test
