// Writing a described file: each chunk is filled from the pieces it spans,
// then the patches that fall in it are laid over it, then it is written.

#include "iptc/internal/DescribedFile.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "platform/MappedFile.h"
#include "platform/OutputFile.h"

namespace vliptc::iptc {

namespace {

// The bytes held in memory at once while the file is written.
constexpr std::uint64_t kChunkBytes = 1024 * 1024;

}  // namespace

void DescribedFile::Append(Piece piece) {
    if (piece.size == 0) return;
    piece.start = m_size;
    m_size += piece.size;
    m_pieces.push_back(piece);
}

void DescribedFile::AppendOriginal(std::uint64_t from, std::uint64_t to) {
    Append({Piece::Kind::kOriginal, 0, to - from, from, nullptr});
}

void DescribedFile::AppendBytes(std::span<const std::uint8_t> bytes) {
    Append({Piece::Kind::kBytes, 0, bytes.size(), 0, bytes.data()});
}

void DescribedFile::AppendZeros(std::uint64_t count) { Append({Piece::Kind::kZeros, 0, count, 0, nullptr}); }

void DescribedFile::Patch(std::uint64_t position, std::span<const std::uint8_t> bytes) {
    PatchBytes patch;
    patch.position = position;
    patch.size = std::min(bytes.size(), kMaxPatchBytes);
    std::copy_n(bytes.begin(), patch.size, patch.bytes.begin());
    // Writers add most patches in file order, so this is nearly always an
    // append.
    const auto at =
        std::upper_bound(m_patches.begin(), m_patches.end(), position,
                         [](std::uint64_t p, const PatchBytes& other) { return p < other.position; });
    m_patches.insert(at, patch);
}

bool DescribedFile::Fill(std::uint64_t offset, std::span<std::uint8_t> out,
                         const platform::MappedFile& original) const {
    const std::uint64_t end = offset + out.size();
    auto piece = std::partition_point(m_pieces.begin(), m_pieces.end(),
                                      [&](const Piece& p) { return p.start + p.size <= offset; });
    for (; piece != m_pieces.end() && piece->start < end; ++piece) {
        const std::uint64_t from = std::max(offset, piece->start);
        const std::uint64_t to = std::min(end, piece->start + piece->size);
        const auto target = out.subspan(from - offset, to - from);
        const std::uint64_t within = from - piece->start;
        switch (piece->kind) {
            case Piece::Kind::kOriginal:
                if (!original.ReadAt(piece->from + within, target)) return false;
                break;
            case Piece::Kind::kBytes:
                std::memcpy(target.data(), piece->bytes + within, target.size());
                break;
            case Piece::Kind::kZeros:
                std::fill(target.begin(), target.end(), std::uint8_t{0});
                break;
        }
    }
    // Patches do not overlap, so their ends are sorted like their starts. A
    // patch may straddle the chunk's edge: only its part inside is laid here.
    auto patch = std::partition_point(m_patches.begin(), m_patches.end(),
                                      [&](const PatchBytes& p) { return p.End() <= offset; });
    for (; patch != m_patches.end() && patch->position < end; ++patch) {
        const std::uint64_t from = std::max(offset, patch->position);
        const std::uint64_t to = std::min(end, patch->End());
        std::copy_n(patch->bytes.begin() + (from - patch->position), to - from,
                    out.begin() + (from - offset));
    }
    return true;
}

std::optional<std::span<const std::uint8_t>> DescribedFile::OwnBytes(std::uint64_t offset,
                                                                     std::uint64_t size) const {
    const auto piece = std::partition_point(m_pieces.begin(), m_pieces.end(),
                                            [&](const Piece& p) { return p.start + p.size <= offset; });
    if (piece == m_pieces.end() || piece->kind != Piece::Kind::kBytes ||
        piece->start + piece->size < offset + size) {
        return std::nullopt;
    }
    const auto patch = std::partition_point(m_patches.begin(), m_patches.end(),
                                            [&](const PatchBytes& p) { return p.End() <= offset; });
    if (patch != m_patches.end() && patch->position < offset + size) return std::nullopt;
    return std::span(piece->bytes + (offset - piece->start), static_cast<std::size_t>(size));
}

bool DescribedFile::WriteTo(platform::OutputFile& out, const platform::MappedFile& original) const {
    std::vector<std::uint8_t> chunk;
    try {
        chunk.resize(static_cast<std::size_t>(std::min(kChunkBytes, m_size)));
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (std::uint64_t offset = 0; offset < m_size; offset += chunk.size()) {
        const auto part = std::span(chunk).first(
            static_cast<std::size_t>(std::min<std::uint64_t>(chunk.size(), m_size - offset)));
        if (const auto own = OwnBytes(offset, part.size())) {
            if (!out.Write(*own)) return false;
            continue;
        }
        if (!Fill(offset, part, original) || !out.Write(part)) return false;
    }
    return true;
}

}  // namespace vliptc::iptc
