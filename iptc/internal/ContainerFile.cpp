// Mapping a file for a container reader or writer.

#include "iptc/internal/ContainerFile.h"

namespace vliptc::iptc {

CIPTC::EError MapFile(const std::string& path, platform::MappedFile::Access access,
                      platform::MappedFile& map) {
    switch (map.Open(path, access)) {
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

}  // namespace vliptc::iptc
