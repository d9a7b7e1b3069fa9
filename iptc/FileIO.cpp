// The file operations of CIPTC: reading a file's IPTC block into the store
// and writing the store back, with the choice of container and the ".CRW"
// companion rule.

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/ByteOrder.h"
#include "iptc/IPTC.h"
#include "iptc/internal/ContainerFile.h"
#include "iptc/internal/Containers.h"
#include "iptc/internal/IPTCReader.h"
#include "platform/FileName.h"
#include "platform/FileSystem.h"
#include "platform/MappedFile.h"

namespace {

using vliptc::iptc::BlockLocation;
using vliptc::iptc::LocateResult;

// Magic numbers by which the reader recognises a container.
constexpr std::uint8_t kJpegFirst = 0xFF;
constexpr std::uint8_t kJpegSOI = 0xD8;
constexpr std::uint32_t kTrailerMagic = 0xA1B2C3D4;
// How much of a file the reader reads, step by step, before it falls back to
// mapping it.
constexpr std::array<std::size_t, 3> kHeadBytes{4 * 1024, 32 * 1024, 128 * 1024};

// Read through the file: the end of a large image is far from its headers,
// and mapping a page there for four bytes costs more than the read.
bool EndsWithTrailerMagic(const vliptc::platform::MappedFile& map) {
    std::array<std::uint8_t, 4> tail{};
    return map.ReadAt(map.Size() - std::min(map.Size(), tail.size()), tail) &&
           vliptc::bytes::Read32(tail, 0, vliptc::bytes::ByteOrder::kBigEndian) == kTrailerMagic;
}

bool StartsWith(std::span<const std::uint8_t> file, std::initializer_list<std::uint8_t> magic) {
    return file.size() >= magic.size() && std::equal(magic.begin(), magic.end(), file.begin());
}

// The container by its content (the extension does not decide: a ".THM" is a
// JPEG, raw files of several extensions are TIFFs).
std::optional<CIPTC::EFormat> ContainerOf(std::span<const std::uint8_t> file) {
    if (StartsWith(file, {kJpegFirst, kJpegSOI})) return CIPTC::kFormatJPEG;
    if (StartsWith(file, {'I', 'I'}) || StartsWith(file, {'M', 'M'})) return CIPTC::kFormatTIFF;
    if (StartsWith(file, {'8', 'B', 'P', 'S'})) return CIPTC::kFormatPSD;
    return std::nullopt;
}

LocateResult Locate(CIPTC::EFormat format, std::span<const std::uint8_t> file) {
    switch (format) {
        case CIPTC::kFormatJPEG:
            return vliptc::iptc::LocateInJPEG(file);
        case CIPTC::kFormatTIFF:
            return vliptc::iptc::LocateInTIFF(file);
        case CIPTC::kFormatPSD:
            return vliptc::iptc::LocateInPSD(file);
        case CIPTC::kFormatTrailer:
            return vliptc::iptc::LocateInTrailer(file);
        case CIPTC::kFormatUnknown:
            break;
    }
    LocateResult unknown;
    unknown.error = CIPTC::kUnsupportedFormat;
    return unknown;
}

struct BlobDeleter {
    void operator()(std::uint8_t* data) const noexcept { delete[] data; }
};

}  // namespace

// Reads the first location that decodes. Each candidate is decoded with a
// reader over that location alone, so no value can reach outside the segment,
// resource section or chunk it belongs to. Numbers are read most-significant
// byte first in every container: IIM data inside an "II" TIFF are stored so
// too (the record version 0x0200 still switches a block to the other order).
CIPTC::EError CIPTC::ReadIPTCBlob(const char* path, SIPTCFormatInfo& format) {
    if (!m_initialized) return kNotInitialized;
    m_path = path != nullptr ? path : "";
    const std::optional<std::string> target = vliptc::platform::MetadataFileOf(m_path);
    if (!target) return kCannotOpen;
    ResetFields();
    format = SIPTCFormatInfo{};

    vliptc::platform::MappedFile map;
    const EError opened =
        vliptc::iptc::OpenResult(map.OpenFile(*target, vliptc::platform::MappedFile::Access::ReadOnly));
    if (opened != kSuccess) return opened;

    auto decodeFirst = [this](std::span<const std::uint8_t> file, const LocateResult& located) {
        for (const BlockLocation& location : located.candidates) {
            const auto region = vliptc::bytes::Slice(file, location.offset, location.size);
            if (!region) continue;
            CIPTCReader reader(*region, true);
            const EError decoded = location.kind == BlockLocation::Kind::kIIM
                                       ? DecodeIIM(reader, region->size())
                                       : DecodeImageResources(reader, region->size());
            if (decoded == kSuccess) return true;
        }
        return false;
    };
    auto decodeLocated = [&](std::span<const std::uint8_t> file, EFormat container,
                             const LocateResult& located) {
        format = SIPTCFormatInfo{container, located.bigEndian};
        if (located.error != kSuccess) return located.error;
        // A container whose IPTC places hold nothing decodable (an APP13 without
        // resource 0x0404, an entry of record-1 data only) has no IPTC block.
        if (decodeFirst(file, located)) return kSuccess;
        ResetFields();
        return kNoIPTCBlock;
    };

    // A trailer chunk is looked at first: a file that carries one has it
    // written together with its own container, and it is what the writer
    // updates first for format 3.
    const bool trailer = EndsWithTrailerMagic(map);

    // A JPEG's record lies in the segments before its scan, which nearly
    // always begin within the first few kilobytes: those bytes are read into
    // memory, first 4 KB, then 32 KB, then 128 KB, and the file is mapped
    // only when the walk runs past them (a file no longer than that is read
    // whole, whatever its container). Reading is cheaper than mapping for so little, and
    // unlike mapping it does not make threads that read files side by side
    // wait for each other.
    if (!trailer) {
        thread_local std::vector<std::uint8_t> head(kHeadBytes.back());
        std::size_t have = 0;
        for (const std::size_t want : kHeadBytes) {
            const std::span<std::uint8_t> read(head.data(), std::min(want, map.Size()));
            if (!map.ReadAt(have, read.subspan(have))) break;
            have = read.size();
            const auto container = ContainerOf(read);
            if (read.size() == map.Size()) {
                if (!container) return kUnsupportedFormat;
                return decodeLocated(read, *container, Locate(*container, read));
            }
            if (container != kFormatJPEG) break;
            const LocateResult located = vliptc::iptc::LocateInJPEG(read);
            if (located.examined < read.size()) return decodeLocated(read, kFormatJPEG, located);
        }
    }

    const EError mapped = vliptc::iptc::OpenResult(map.Map());
    if (mapped != kSuccess) return mapped;
    const auto file = map.Bytes();
    if (trailer) {
        const LocateResult located = vliptc::iptc::LocateInTrailer(file);
        if (located.error == kSuccess && decodeFirst(file, located)) {
            format = SIPTCFormatInfo{kFormatTrailer, located.bigEndian};
            return kSuccess;
        }
        ResetFields();
    }
    const auto container = ContainerOf(file);
    if (!container) return kUnsupportedFormat;
    return decodeLocated(file, *container, Locate(*container, file));
}

CIPTC::EError CIPTC::WriteIPTCBlob(const char* path, const SIPTCFormatInfo& format) {
    if (!m_initialized) return kNotInitialized;
    const std::string given = path != nullptr ? path : "";
    const std::optional<std::string> target = vliptc::platform::MetadataFileOf(given);

    // The file macros ("#FILEDATE", "#FILETIME") expand to the times of the
    // file being written, so its status is recorded before the block is
    // encoded. The results keep their order of precedence: a block too large
    // is reported before a missing file.
    const auto status = target ? vliptc::platform::GetFileStatus(*target) : std::nullopt;
    SetWriteFileStatus(status);

    SIPTCBlob blob;
    const bool fits = BuildBlob(m_fields, blob, true);
    const std::unique_ptr<std::uint8_t[], BlobDeleter> owned(blob.pData);
    if (!fits) return kBlockTooLarge;
    m_path = given;
    if (!target || !status) return kCannotOpen;

    const std::span<const std::uint8_t> block(blob.pData, blob.nSize);
    const std::string extension = vliptc::platform::UpperExtension(*target);
    const bool isPsd = extension == ".PSD";
    const bool isJpeg =
        extension == ".JPG" || extension == ".JPEG" || extension == ".JFIF" || extension == ".THM";
    const bool isTiff = extension == ".TIF" || extension == ".TIFF";

    // Format 3 goes through the trailer writer first. Its results 0 (written),
    // 3 (a trailer without an IPTC chunk) and 11 (a broken trailer) let the
    // choice go on to the writer of the file's own container, so a file that
    // also carries the block there gets it in both places.
    bool trailerWritten = false;
    if (format.nFormat == kFormatTrailer) {
        const EError result = vliptc::iptc::WriteTrailer(*target, block);
        if (result != kSuccess && result != kNoIPTCBlock && result != kUnsupportedFormat) return result;
        trailerWritten = result == kSuccess;
    }
    std::optional<EError> result;
    if (format.nFormat == kFormatPSD || isPsd) {
        result = vliptc::iptc::WritePSD(*target, block);
    } else if (format.nFormat == kFormatJPEG || isJpeg) {
        result = vliptc::iptc::WriteJPEG(*target, block);
    } else if (!trailerWritten && (format.nFormat == kFormatTIFF || isTiff)) {
        result = vliptc::iptc::WriteTIFF(*target, block);
    }
    if (trailerWritten) {
        // The block is in the file already. A container writer that then
        // refuses the container (a JPEG whose start-of-image marker is not
        // followed by an application segment, as in trailer-carrying files
        // of some cataloguers) has written nothing, and the write stands.
        if (!result || *result == kUnsupportedFormat) return kSuccess;
        return *result;
    }
    return result.value_or(kUnsupportedFormat);
}
