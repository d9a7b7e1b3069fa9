// Mapping a file for a container reader or writer, and the result codes of
// swapping the new content in.

#include "iptc/internal/ContainerFile.h"

namespace vliptc::iptc {

CIPTC::EError MapFile(const std::string& path, platform::MappedFile::Access access,
                      platform::MappedFile& map) {
    return OpenResult(map.Open(path, access));
}

CIPTC::EError OpenResult(platform::MappedFile::Status status) {
    switch (status) {
        case platform::MappedFile::Status::Ok:
            return CIPTC::kSuccess;
        case platform::MappedFile::Status::CannotOpen:
            return CIPTC::kCannotOpen;
        case platform::MappedFile::Status::Empty:
            return CIPTC::kEmptyFile;
        case platform::MappedFile::Status::CannotMap:
            return CIPTC::kCannotMapOrWrite;
    }
    return CIPTC::kCannotOpen;
}

CIPTC::EError ReplaceResult(platform::ReplaceStatus status) {
    switch (status) {
        case platform::ReplaceStatus::Replaced:
            return CIPTC::kSuccess;
        case platform::ReplaceStatus::CannotWrite:
            return CIPTC::kCannotMapOrWrite;
        case platform::ReplaceStatus::CannotReplace:
            return CIPTC::kCannotReplace;
    }
    return CIPTC::kCannotReplace;
}

}  // namespace vliptc::iptc
