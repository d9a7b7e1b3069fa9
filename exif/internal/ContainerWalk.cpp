#include "exif/internal/ContainerWalk.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "host/ByteOrder.h"
#include "host/JpegMarkers.h"
#include "host/Limits.h"

namespace vliptc::exif {
namespace {

using bytes::ByteOrder;

// JPEG markers (the byte after 0xFF) beyond the shared ones.
constexpr std::uint8_t kMarkerAPP12 = 0xEC;
constexpr std::uint8_t kMarkerCOM = 0xFE;

// Start-of-frame markers: 0xC0-0xCF except DHT (0xC4), JPG (0xC8) and DAC (0xCC).
bool IsStartOfFrame(std::uint8_t code) {
    return code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
}

// The APP1 identifier of EXIF data, "Exif" followed by two zero bytes.
constexpr const char* kExifIdentifier = "EXIF";
constexpr std::size_t kMaxIdentifierBytes = 200;

// Photoshop: "8BPS", version 1 (big-endian), a 26-byte header, then the
// colour-mode data and the image resources, each behind a 32-bit length.
constexpr std::array<std::uint8_t, 4> kPsdSignature{'8', 'B', 'P', 'S'};
constexpr std::uint16_t kPsdVersion = 1;
constexpr std::uint64_t kPsdHeaderBytes = 26;
constexpr std::uint64_t kMinPsdFileBytes = 27;
constexpr std::array<std::uint8_t, 4> kResourceSignature{'8', 'B', 'I', 'M'};
constexpr std::uint16_t kExifResourceId = 0x0422;  // 1058: the EXIF data as a TIFF stream
// Signature, identifier, the shortest name and the length of a resource.
constexpr std::uint64_t kMinResourceBytes = 12;

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

ContainerWalk::ContainerWalk(std::span<const std::uint8_t> start, std::uint64_t size,
                             std::vector<CVLEXIF::SField>& fields)
    : ContainerWalk(start, size, fields, Purpose::kRead) {}

ContainerWalk::ContainerWalk(std::span<const std::uint8_t> start, std::uint64_t size,
                             std::vector<CVLEXIF::SField>& fields, Purpose purpose)
    : m_stream(start, size), m_ifd(m_stream, fields), m_purpose(purpose) {}

CVLEXIF::EError ContainerWalk::ParseEXIF() {
    m_stream.SetPosition(0);
    const std::uint8_t first = m_stream.NextByte();
    const std::uint8_t second = m_stream.NextByte();

    if ((first == 'I' && second == 'I') || (first == 'M' && second == 'M')) {
        // TIFF, and the raw formats built on it.
        m_stream.SetPosition(0);
        return ProcessEXIF(true);
    }
    if (first != jpeg::kMarkerPrefix) {
        if (first != '8' || second != 'B' || m_stream.Size() < kMinPsdFileBytes) return CVLEXIF::errFormat;
        const auto header = m_stream.Bytes(0, kPsdSignature.size() + 2);
        if (!header || !std::equal(kPsdSignature.begin(), kPsdSignature.end(), header->begin()) ||
            bytes::Read16(*header, kPsdSignature.size(), ByteOrder::kBigEndian) != kPsdVersion) {
            return CVLEXIF::errFormat;
        }
        m_stream.SetPosition(0);
        return HandlePSDEXIF();
    }
    if (second != jpeg::kSOI) return CVLEXIF::errFormat;
    return WalkJpegMarkers();
}

// The markers up to the first APP1, which alone is examined: when it is not
// EXIF the file has none for this library, whatever a later APP1 holds.
CVLEXIF::EError ContainerWalk::WalkJpegMarkers() {
    for (;;) {
        const std::uint8_t code = NextMarker();
        if (ScansThrough(code)) {
            // The payload is passed over by the next marker search.
        } else if (code == jpeg::kEOI || code == jpeg::kSOS) {
            return CVLEXIF::errNoEXIF;
        } else if (code == jpeg::kAPP1) {
            return ProcessEXIF(false) == CVLEXIF::errOK ? CVLEXIF::errOK : CVLEXIF::errNoEXIF;
        } else if (SkipVar() != CVLEXIF::errOK) {
            return CVLEXIF::errNoEXIF;
        }
        // Every step reads at least one byte, so the walk ends with the file.
        if (m_stream.IsEOF()) return CVLEXIF::errNoEXIF;
    }
}

// The payload of start-of-frame segments is not skipped but scanned for the
// next 0xFF like entropy-coded data; that keeps the walk simple and is kept
// as it reads. The reader scans through APP12 and comment segments too; the
// writer skips them by their length, so a 0xFF inside a comment cannot stop
// its walk.
bool ContainerWalk::ScansThrough(std::uint8_t code) const {
    if (IsStartOfFrame(code)) return true;
    return m_purpose == Purpose::kRead && (code == kMarkerAPP12 || code == kMarkerCOM);
}

// The code of the next marker: the bytes up to the next 0xFF are passed over,
// then fill bytes (0xFF); 0xFF at the end of the file.
std::uint8_t ContainerWalk::NextMarker() {
    std::uint8_t byte = m_stream.NextByte();
    while (byte != jpeg::kMarkerPrefix) byte = m_stream.NextByte();  // NextByte gives 0xFF at the end
    for (;;) {
        if (m_stream.IsEOF()) return jpeg::kMarkerPrefix;
        byte = m_stream.NextByte();
        if (byte != jpeg::kMarkerPrefix) return byte;
    }
}

// Skips a segment by its length (which counts its own two bytes).
CVLEXIF::EError ContainerWalk::SkipVar() {
    const std::uint16_t length = m_stream.Next2Bytes();
    if (length < 2) return CVLEXIF::errFormat;
    m_stream.Advance(length - 2u);
    return CVLEXIF::errOK;
}

CVLEXIF::EError ContainerWalk::ProcessEXIF(bool atTiffHeader) {
    if (!atTiffHeader && !SkipExifIdentifier()) return CVLEXIF::errFormat;
    return m_ifd.HandleEXIFNormal();
}

bool ContainerWalk::SkipExifIdentifier() {
    // The length is not used: the TIFF data may reach to the end of the file.
    if (m_stream.Size() - m_stream.Position() < 2) return false;
    m_stream.Advance(2);
    const std::uint64_t afterLength = m_stream.Position();
    std::string identifier;
    while (!m_stream.IsEOF()) {
        const auto byte = static_cast<char>(m_stream.NextByte());
        if (byte == '\0') break;
        if (identifier.size() < kMaxIdentifierBytes) identifier.push_back(byte);
    }
    const std::string_view expected(kExifIdentifier);
    const bool isExif = identifier.size() == expected.size() &&
                        std::equal(identifier.begin(), identifier.end(), expected.begin(),
                                   [](char a, char b) { return UpperAscii(a) == b; });
    if (!isExif) {
        m_stream.SetPosition(afterLength);
        return false;
    }
    m_stream.NextByte();  // the second zero byte of the identifier
    return true;
}

// The resources are walked from the end of the colour-mode data for as long
// as blocks read; the section's own length is not consulted.
CVLEXIF::EError ContainerWalk::HandlePSDEXIF() {
    m_stream.SetMotorola(true);  // Photoshop numbers are big-endian
    m_stream.SetPosition(kPsdHeaderBytes);
    const auto colourModeBytes = m_stream.ReadDWord(kPsdHeaderBytes);
    if (!colourModeBytes) return CVLEXIF::errNoEXIF;
    m_stream.Advance(4 + std::uint64_t{*colourModeBytes});
    m_stream.Advance(4);  // the image-resource section's length

    for (std::uint32_t walked = 0; !m_stream.IsEOF() && walked < limits::kMaxImageResources; ++walked) {
        ImageResource block;
        if (!ReadIRB(block)) break;
        if (block.nID == kExifResourceId) {
            m_stream.SetPosition(m_stream.Position() - block.nSize - (block.nSize & 1u));
            return ProcessEXIF(true);
        }
    }
    return CVLEXIF::errNoEXIF;
}

// One resource block: "8BIM", identifier, Pascal name, 32-bit length, data
// padded to an even length. False for a block that does not fit (its data
// may not reach the last byte of the file), a foreign signature or data of
// kMaxExifResourceBytes or more.
bool ContainerWalk::ReadIRB(ImageResource& block) {
    const std::uint64_t size = m_stream.Size();
    const std::uint64_t start = m_stream.Position();
    if (start >= size || size - start <= kMinResourceBytes) return false;
    const auto signature = m_stream.Bytes(start, kResourceSignature.size());
    const bool signatureOK =
        signature && std::equal(signature->begin(), signature->end(), kResourceSignature.begin());
    block.nID = m_stream.ReadWord(start + 4).value_or(0);
    m_stream.SetPosition(start + 6);
    block.strName = ReadPString();
    if (!signatureOK) return false;

    const std::uint64_t lengthAt = m_stream.Position();
    if (size - lengthAt <= 4) return false;
    const std::uint32_t length = m_stream.ReadDWord(lengthAt).value_or(0);
    const std::uint64_t dataAt = lengthAt + 4;
    if (length >= size - dataAt || length >= limits::kMaxExifResourceBytes) return false;
    block.nSize = length;
    m_stream.SetPosition(dataAt + length + (length & 1u));
    return true;
}

// A Pascal string padded to an even length: a length byte L, then L bytes.
// The name is the text up to the first zero byte within them.
std::string ContainerWalk::ReadPString() {
    const std::uint64_t start = m_stream.Position();
    const std::uint8_t length = m_stream.ReadByte(start).value_or(0);
    std::string name;
    for (std::uint64_t i = 1; i <= length; ++i) {
        const auto byte = m_stream.ReadByte(start + i);
        if (!byte || *byte == 0) break;
        name.push_back(static_cast<char>(*byte));
    }
    m_stream.Advance(1u + length + (length % 2 == 0 ? 1u : 0u));
    return name;
}

}  // namespace vliptc::exif
