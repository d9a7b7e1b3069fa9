#pragma once

// Every resource cap of the library in one place, so a reviewer sees at once
// how much outside data can make us read, allocate or walk.

#include <cstdint>

namespace vliptc::limits {

// Tag-definition files and "vliptcusr.dat" are hand-edited text of a few
// hundred kilobytes; anything larger is treated as unreadable and skipped.
inline constexpr std::uint64_t kMaxDefinitionFileBytes = 32u * 1024 * 1024;

// A property payload in a template or clipboard stream may not claim more
// than this (the whole IIM block is capped at 64 KiB; EXIF blobs stay far below).
inline constexpr std::uint32_t kMaxPropertyPayloadBytes = 16u * 1024 * 1024;

// The binary clipboard form of one IPTC record (editors' clipboard, the
// command line's clipboard file). A record that fits an IIM block of 64 KiB
// takes well under 1 MiB; each value costs at least five bytes of input, so
// this cap also bounds what a decode allocates.
inline constexpr std::uint32_t kMaxClipboardBytes = 16u * 1024 * 1024;

// TIFF: directories visited in one file (the chain of IFDs plus the EXIF and
// GPS directories they point to). Real files have a handful; a longer chain
// is a loop or an attack.
inline constexpr std::uint32_t kMaxTiffDirectories = 256;
// Entries read from one TIFF directory (the count field allows 65,535; real
// directories hold well under 200). The writer refuses a longer directory
// rather than shift offsets it has not seen.
inline constexpr std::uint32_t kMaxTiffEntriesPerDirectory = 4096;

// Photoshop image resources walked in one image-resource section (real
// documents carry a few dozen).
inline constexpr std::uint32_t kMaxImageResources = 65536;

// EXIF reader (CVLEXIF::LoadFile). Directories and entries are capped by the
// TIFF caps above: at most kMaxTiffDirectories directories in one read (the
// chain of IFDs plus every EXIF and GPS directory they point to) and the
// first kMaxTiffEntriesPerDirectory entries of each. A chain that links back
// to a directory already walked ends there, as if its link were zero.
//
// Nesting: the reader follows the EXIF and GPS pointers of the chain's
// directories and no pointer inside those directories, so directories nest
// one level deep at most, whatever the file claims.
inline constexpr std::uint32_t kMaxExifDirectoryDepth = 1;
// Values stored in the catalogue by one read (an entry that would pass it is
// absent). A SHORT or LONG entry may claim 65,535 values that cost the file
// nothing (they repeat its value field); real files stay below a few tens of
// thousands (the strip tables of tall TIFFs).
inline constexpr std::uint32_t kMaxExifValuesPerRead = 1u << 18;
// Bytes copied into blobs and texts by one read (an entry that would pass it
// is absent); maker notes, embedded profiles and resource blocks of a large
// TIFF are a few megabytes.
inline constexpr std::uint64_t kMaxExifBytesPerRead = 256u * 1024 * 1024;
// A Photoshop image resource of this size or more (20 MiB) ends the EXIF
// reader's walk of a Photoshop file's resources, as a broken block does.
inline constexpr std::uint32_t kMaxExifResourceBytes = 20971520;

// The IPTC writers that rebuild a file (JPEG, TIFF, Photoshop) write the new
// one out whole: the JPEG and Photoshop writers build it in memory, the TIFF
// writer writes it in chunks from a description. A file larger than this
// (4 GiB less one byte: what the host's memory file with its 32-bit sizes and
// a classic TIFF's offsets can address) is refused before anything is built,
// as "cannot be mapped or written".
inline constexpr std::uint64_t kMaxRewrittenFileBytes = 0xFFFFFFFF;

// The imaging stand-in (LBitmap::Load) reads a file whole, as an image
// library loads a bitmap; a larger file is refused as unreadable.
inline constexpr std::uint64_t kMaxImagingFileBytes = 512u * 1024 * 1024;

}  // namespace vliptc::limits
