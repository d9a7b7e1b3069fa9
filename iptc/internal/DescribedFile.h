#pragma once

// A new file described instead of built: the pieces it is made of, in order
// (ranges of the original file, bytes of the writer's own, runs of zero
// bytes), and small patches laid over the result. A writer that changes a few
// bytes of a large file describes the new file and writes it out in bounded
// chunks, so that neither the old nor the new file is held in memory whole and
// the original's image data is read through the file, never through its
// mapping (each mapped page read would stay in the resident set).

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vliptc::platform {
class MappedFile;
class OutputFile;
}  // namespace vliptc::platform

namespace vliptc::iptc {

class DescribedFile {
public:
    // The largest patch: a 12-byte TIFF directory entry.
    static constexpr std::size_t kMaxPatchBytes = 12;

    // Appends bytes [from, to) of the original file.
    void AppendOriginal(std::uint64_t from, std::uint64_t to);
    // Appends bytes that the caller keeps alive until the file is written;
    // they are not copied.
    void AppendBytes(std::span<const std::uint8_t> bytes);
    void AppendZeros(std::uint64_t count);
    // Lays bytes (at most kMaxPatchBytes) over the new file at position.
    // Patches must not overlap one another.
    void Patch(std::uint64_t position, std::span<const std::uint8_t> bytes);

    std::uint64_t Size() const noexcept { return m_size; }

    // Writes the whole file to out in chunks of at most 1 MiB; false when a
    // read of the original or a write fails. The original's ranges are read
    // through the file (MappedFile::ReadAt).
    [[nodiscard]] bool WriteTo(platform::OutputFile& out, const platform::MappedFile& original) const;

private:
    struct Piece {
        enum class Kind { kOriginal, kBytes, kZeros };
        Kind kind = Kind::kZeros;
        std::uint64_t start = 0;  // in the new file
        std::uint64_t size = 0;
        std::uint64_t from = 0;               // kOriginal: where the range starts in the original
        const std::uint8_t* bytes = nullptr;  // kBytes
    };
    struct PatchBytes {
        std::uint64_t position = 0;
        std::size_t size = 0;
        std::array<std::uint8_t, kMaxPatchBytes> bytes{};
        std::uint64_t End() const noexcept { return position + size; }
    };

    void Append(Piece piece);
    // The writer's own bytes [offset, offset + size) when they lie in one
    // piece and no patch touches them: they can be written as they are.
    std::optional<std::span<const std::uint8_t>> OwnBytes(std::uint64_t offset, std::uint64_t size) const;
    // Fills out with the new file's bytes from offset on.
    [[nodiscard]] bool Fill(std::uint64_t offset, std::span<std::uint8_t> out,
                            const platform::MappedFile& original) const;

    std::vector<Piece> m_pieces;
    std::vector<PatchBytes> m_patches;  // sorted by position
    std::uint64_t m_size = 0;
};

}  // namespace vliptc::iptc
