#pragma once

// The parts of a Photoshop document that the IPTC layer touches, read
// bounds-checked: the 26-byte file header, the colour-mode data section and
// the image-resource section with its records. Every number in the document
// is most-significant byte first.
//
//   header       "8BPS", version (1; 2 for the large-document form), 6
//                reserved bytes, channels, height, width, depth, colour mode
//   colour mode  32-bit length + data
//   resources    32-bit length + records
//   record       4-byte signature ("8BIM"), 16-bit identifier, Pascal name
//                (length byte + name, padded with a zero byte to even size),
//                32-bit data size, data, a zero pad byte when the size is odd
//   the rest     layer and mask information and the image data, which hold
//                lengths but no file offsets (so they may move as a whole)

#include <cstdint>
#include <span>
#include <vector>

namespace vliptc::iptc::psd {

inline constexpr std::uint64_t kHeaderBytes = 26;
inline constexpr std::uint16_t kVersion = 1;
inline constexpr std::uint16_t kLargeDocumentVersion = 2;
inline constexpr std::uint16_t kIptcResourceId = 0x0404;  // the IPTC-NAA record (IIM datasets)
// Signature, identifier and data size; the name field comes on top.
inline constexpr std::uint64_t kRecordFixedBytes = 10;

struct Resource {
    std::uint64_t offset = 0;  // of the signature
    std::uint64_t extent = 0;  // the whole record: header, name, data and pad byte
    std::uint16_t id = 0;
    bool imageResource = false;  // signature "8BIM" (any case), the one IPTC is read under
    std::uint64_t dataOffset = 0;
    std::uint32_t dataSize = 0;
};

struct Layout {
    std::uint16_t version = 0;
    std::uint64_t sectionLengthOffset = 0;  // of the resource section's 32-bit length
    std::uint64_t sectionStart = 0;         // first byte of the first record
    std::uint64_t sectionEnd = 0;           // as the length says (may lie past the file)
    std::vector<Resource> resources;        // in file order
    // The records fill the section exactly and the section lies in the file.
    bool complete = false;
};

enum class Status {
    kOk,
    kNotDocument,  // no "8BPS" signature, or a version other than 1 and 2
    kTruncated,    // the header or the lengths of the first two sections are cut off
};

// Reads the header and walks the resource records. A record that runs past
// the section (or the file) ends the walk; the records before it are kept.
Status ReadLayout(std::span<const std::uint8_t> file, Layout& layout);

}  // namespace vliptc::iptc::psd
