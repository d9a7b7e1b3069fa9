// CVLEXIF::StoreFile: the date-and-time fields written back into the file
// they were read from, in place (the walk is in internal/DatePatch).

#include <cstdint>
#include <span>
#include <string>

#include "exif/EXIF.h"
#include "exif/internal/DatePatch.h"
#include "platform/FileName.h"
#include "host/VLException.h"
#include "platform/FileSystem.h"
#include "platform/MappedFile.h"

namespace {

// Shorter files cannot hold a container header, a TIFF header and a date.
constexpr std::size_t kMinStoreFileBytes = 128;

}  // namespace

CVLEXIF::EError CVLEXIF::StoreFile(const char* path) {
    try {
        // A ".CRW" is written through its companion, as it is read.
        const auto target = vliptc::platform::MetadataFileOf(path != nullptr ? path : "");
        if (!target) return errOpen;
        if (!IsSupportedFormat(target->c_str())) return errFormat;
        // A missing file counts as read-only; a folder cannot be patched.
        if (vliptc::platform::IsReadOnly(*target) || vliptc::platform::IsDirectory(*target)) {
            return errReadOnly;
        }

        vliptc::platform::MappedFile file;
        switch (file.Open(*target, vliptc::platform::MappedFile::Access::ReadWrite)) {
            case vliptc::platform::MappedFile::Status::Ok:
                break;
            case vliptc::platform::MappedFile::Status::CannotOpen:
                return errOpen;
            case vliptc::platform::MappedFile::Status::Empty:
                return errFormat;  // shorter than any file that can be patched
            case vliptc::platform::MappedFile::Status::CannotMap:
                return errMap;
        }
        if (file.Size() < kMinStoreFileBytes) return errFormat;

        // The same end of the data as the reader's: the low 32 bits of the size.
        const std::span<std::uint8_t> bytes(
            file.MutableData(), static_cast<std::size_t>(static_cast<std::uint32_t>(file.Size())));
        vliptc::exif::DatePatch patch(bytes, *this);
        const EError result = patch.ParseEXIFforWrite();
        bMotorola = patch.Motorola();
        file.Close();  // the patched pages are the file's own (a shared mapping)
        if (result == errOK) SortFields();
        return result;
    } catch (const CVLException&) {
        return errFormat;
    } catch (...) {
        // Out of memory, a framework exception.
        return errException;
    }
}
