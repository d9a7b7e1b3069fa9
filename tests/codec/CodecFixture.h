#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "iptc/IPTC.h"
#include "iptc/internal/IPTCReader.h"

namespace vliptc::test {

using Bytes = std::vector<std::uint8_t>;

// Opens the codec members of the store to the tests.
class Codec : public CIPTC {
public:
    using CIPTC::BuildBlob;
    using CIPTC::DecodeIIM;
    using CIPTC::DecodeImageResources;
    using CIPTC::WriteField_;

    // BuildBlob into a byte vector; fits receives its result.
    Bytes Encode(const FieldList& fields, bool bigEndian, bool* fits = nullptr) const {
        SIPTCBlob blob;
        const bool ok = BuildBlob(fields, blob, bigEndian);
        if (fits != nullptr) {
            *fits = ok;
        }
        Bytes bytes(blob.pData, blob.pData + blob.nSize);
        delete[] blob.pData;
        return bytes;
    }
    EError DecodeIIMBytes(const Bytes& bytes, bool swap = true) {
        CIPTCReader reader(bytes, swap);
        return DecodeIIM(reader, bytes.size());
    }
    EError DecodeResourceBytes(const Bytes& bytes) {
        CIPTCReader reader(bytes);
        return DecodeImageResources(reader, bytes.size());
    }
};

inline CVLProperty Text(std::string_view text) {
    return CVLProperty(std::string(text));
}

inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) {
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

inline Bytes Raw(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

// One IIM dataset with a 16-bit length in the given order.
inline Bytes Dataset(std::uint8_t record, std::uint8_t id, std::string_view data, bool bigEndian = true) {
    const auto n = static_cast<std::uint16_t>(data.size());
    Bytes out{0x1C, record, id};
    out.push_back(static_cast<std::uint8_t>(bigEndian ? n >> 8 : n & 0xFF));
    out.push_back(static_cast<std::uint8_t>(bigEndian ? n & 0xFF : n >> 8));
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

// One image resource: signature, identifier, Pascal name padded to even
// size, 32-bit size and the data padded to even size.
inline Bytes Resource(std::string_view signature, std::uint16_t id, std::string_view name, const Bytes& data) {
    Bytes out = Raw(signature);
    out.push_back(static_cast<std::uint8_t>(id >> 8));
    out.push_back(static_cast<std::uint8_t>(id & 0xFF));
    out.push_back(static_cast<std::uint8_t>(name.size()));
    out.insert(out.end(), name.begin(), name.end());
    if ((name.size() + 1) % 2 != 0) {
        out.push_back(0);
    }
    const auto size = static_cast<std::uint32_t>(data.size());
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(size >> shift));
    }
    out.insert(out.end(), data.begin(), data.end());
    if (data.size() % 2 != 0) {
        out.push_back(0);
    }
    return out;
}

// Sets TZ for the scope of a test and restores what was there.
class ScopedTZ {
public:
    explicit ScopedTZ(const char* zone) {
        if (const char* old = std::getenv("TZ")) {
            m_old = old;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    ScopedTZ(const ScopedTZ&) = delete;
    ScopedTZ& operator=(const ScopedTZ&) = delete;
    ~ScopedTZ() {
        if (m_old) {
            setenv("TZ", m_old->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    std::optional<std::string> m_old;
};

}  // namespace vliptc::test
