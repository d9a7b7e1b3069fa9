#pragma once

// What ExifTool and exiv2 read as the record-2 datasets of a file, and the
// comparison of such readings with ours.

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::test {

// Record-2 datasets and their values.
using Datasets = std::map<int, std::vector<std::string>>;

// The record-2 datasets of a store (its values as stored bytes).
Datasets FromStore(const CIPTC& store);

// One ExifTool value as text: strings as they are (binary ones decoded from
// their "base64:" form), numbers as JSON writes them.
std::string ExifToolText(const nlohmann::json& value);

// The place ExifTool names for the block of a container format
// ("JPEG-APP13-Photoshop-IPTC", "TIFF-IFD0-IPTC", ...).
std::string PlaceOf(std::uint32_t format);

// The record-2 datasets of the first IPTC group (IPTC, IPTC2, ...) that
// ExifTool found at place, from an object written with -j -G1:5 -D (keys
// "GROUP:PATH[:FORMAT]:NAME").
Datasets FromExifTool(const nlohmann::json& object, const std::string& place);

// ExifTool's reading of a corpus file ("jpeg/x.jpg") kept with the corpus;
// null when there is none.
nlohmann::json ExifToolOracle(const std::string& file);

// Whether an ExifTool location ("JPEG-APP1-IFD0-ExifIFD", the LOCATION of a
// key) is one the EXIF reader reads: the chain of IFDs and the EXIF and GPS
// directories of each (not interoperability, sub-IFDs, maker notes or
// embedded previews).
bool WalkedByExifReader(const std::string& location);

// exiv2's record-2 datasets of a file.
Datasets FromExiv2(const std::string& path);

// The datasets on which ours and theirs differ, as readable lines. Both sides
// are compared as ExifTool presents them: text decoded as Windows-1252 (or
// kept as it is), zero bytes dropped, line breaks made plain LF, dates and
// times without their separators. exiv2: its listing pads its columns and
// adds the zone +00:00 to a time stored without one.
std::vector<std::string> Differences(const Datasets& ours, const Datasets& theirs, bool exiv2 = false);

// A file we wrote, with the datasets it must read back.
struct WrittenFile {
    std::string label;  // for the messages
    std::string path;
    std::uint32_t format = 0;  // where ExifTool finds the block (PlaceOf)
    Datasets expected;
    bool forExiv2 = true;  // false: exiv2 reads it differently (no trailer, merged blocks, ...)
};

// ExifTool (all files in one run) and exiv2 (the files marked for it) read
// the files back; every difference, as a readable line.
std::vector<std::string> ToolsReadBack(const std::vector<WrittenFile>& files);

}  // namespace vliptc::test
