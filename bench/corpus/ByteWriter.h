#pragma once

// Appending bytes and numbers in either byte order to a generated file.
//
// Every append goes through one resize and memcpy: GCC 12 at -O3 warns
// falsely (array-bounds, stringop-overflow) on small vector inserts.

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "bench/corpus/Corpus.h"

namespace vliptc::bench {

inline void AppendRaw(Bytes& out, const void* data, std::size_t size) {
    const std::size_t at = out.size();
    out.resize(at + size);
    if (size != 0) std::memcpy(out.data() + at, data, size);
}

inline void Append(Bytes& out, std::initializer_list<std::uint8_t> bytes) {
    AppendRaw(out, bytes.begin(), bytes.size());
}
inline void Append(Bytes& out, std::string_view text) { AppendRaw(out, text.data(), text.size()); }
inline void Append(Bytes& out, const Bytes& bytes) { AppendRaw(out, bytes.data(), bytes.size()); }

inline void PutLE16(Bytes& out, std::uint32_t value) {
    Append(out, {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}
inline void PutLE32(Bytes& out, std::uint32_t value) {
    PutLE16(out, value & 0xFFFF);
    PutLE16(out, value >> 16);
}
inline void PutBE16(Bytes& out, std::uint32_t value) {
    Append(out, {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)});
}
inline void PutBE32(Bytes& out, std::uint32_t value) {
    PutBE16(out, value >> 16);
    PutBE16(out, value & 0xFFFF);
}

}  // namespace vliptc::bench
