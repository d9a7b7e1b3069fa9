// Templates: named copies of a whole field list, kept in memory in file order
// and saved in "vliptctmpl.dat" in the user folder.
//
// File layout, every number least-significant byte first:
//
//   2      file version, written as 1, read and not checked
//   4      number of templates
//   then per template:
//     2    record version, written as 1, read and not checked
//     4    number of items
//     4    name length in bytes
//     n    name bytes, no terminator
//     per item:
//       4  dataset number
//       4  number of values
//          each value in the property stream form (kind byte, 32-bit length,
//          payload; see host/VLProperty.h)
//     256  reserved area, kept as it stands
//
// Reading is all or nothing: a short, truncated or malformed file leaves no
// templates at all rather than a half-read one. Every count is checked against
// the bytes that remain before anything is allocated or looped over, so a
// count of four billion in a tiny file fails at once. The file is read whole
// into memory first (at most kMaxTemplateFileBytes).
//
// Saving never leaves a partial file at the user's path: the whole file is
// built in memory, written to a fresh uniquely named file beside it
// ("vliptctmpl.dat.XXXXXX.tmp") and flushed to disk; then the old file
// becomes "<path>.bak" (replacing an older backup) and the new one takes its
// name. Both moves refuse to replace an existing file, which keeps the swap
// the same on every platform. If the second move fails, the backup is moved
// back. A crash between the two moves leaves the previous templates in
// "<path>.bak".

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "host/VLException.h"
#include "host/VLFile.h"
#include "iptc/IPTC.h"
#include "platform/FileSystem.h"
#include "platform/OutputFile.h"

namespace {

// A template file holds a handful of field lists, each meant for one IPTC
// block of at most 64 KiB; a file larger than this is not a template file.
constexpr std::uint64_t kMaxTemplateFileBytes = 64u * 1024 * 1024;

constexpr std::uint16_t kTemplateFileVersion = 1;
constexpr std::uint16_t kTemplateRecordVersion = 1;

// The smallest number of bytes each repeated element can take on disk; a
// count whose elements cannot fit in the bytes left is rejected before the
// loop runs.
constexpr std::uint64_t kReservedBytes = std::tuple_size_v<decltype(CIPTC::STemplate::szReserved)>;
constexpr std::uint64_t kMinRecordBytes = 2 + 4 + 4 + kReservedBytes;  // version, items, name length, reserved
constexpr std::uint64_t kMinItemBytes = 4 + 4;                          // dataset number, value count
constexpr std::uint64_t kMinPropertyBytes = 1 + 4;                      // kind byte, payload length

std::uint64_t BytesLeft(const CVLFile& file) {
    const std::int64_t size = file.GetFileSize();
    const std::int64_t position = file.GetPosition();
    return size > position ? static_cast<std::uint64_t>(size - position) : 0;
}

void RequireRoomFor(const CVLFile& file, std::uint32_t count, std::uint64_t minBytesEach, const char* what) {
    // 32-bit count times a small constant: no overflow in 64 bits.
    if (static_cast<std::uint64_t>(count) * minBytesEach > BytesLeft(file)) {
        throw CVLException(std::string("template file: ") + what + " count exceeds the file");
    }
}

std::uint32_t CountOf(std::size_t size, const char* what) {
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        throw CVLException(std::string("template file: too many ") + what);
    }
    return static_cast<std::uint32_t>(size);
}

CIPTC::STemplate ReadRecord(CVLFile& file) {
    static_cast<void>(file.ReadUInt16());  // record version
    const std::uint32_t itemCount = file.ReadUInt32();
    const std::uint32_t nameLength = file.ReadUInt32();

    CIPTC::STemplate record;
    RequireRoomFor(file, nameLength, 1, "name byte");
    record.strName.resize(nameLength);
    file.ReadExact(record.strName.data(), nameLength);

    RequireRoomFor(file, itemCount, kMinItemBytes, "item");
    record.vFields.reserve(itemCount);
    for (std::uint32_t i = 0; i < itemCount; ++i) {
        CIPTC::SIPTCItem item;
        item.nID = file.ReadUInt32();
        const std::uint32_t valueCount = file.ReadUInt32();
        RequireRoomFor(file, valueCount, kMinPropertyBytes, "value");
        item.vValues.reserve(valueCount);
        for (std::uint32_t v = 0; v < valueCount; ++v) {
            CVLProperty value;
            file >> value;
            item.vValues.push_back(std::move(value));
        }
        record.vFields.push_back(std::move(item));
    }

    file.ReadExact(record.szReserved.data(), static_cast<unsigned>(record.szReserved.size()));
    return record;
}

void WriteRecord(CVLFile& file, const CIPTC::STemplate& record) {
    file.WriteUInt16(kTemplateRecordVersion);
    file.WriteUInt32(CountOf(record.vFields.size(), "items"));
    const std::uint32_t nameLength = CountOf(record.strName.size(), "name bytes");
    file.WriteUInt32(nameLength);
    if (nameLength > 0) file.Write(record.strName.data(), nameLength);
    for (const auto& item : record.vFields) {
        file.WriteUInt32(item.nID);
        file.WriteUInt32(CountOf(item.vValues.size(), "values"));
        for (const auto& value : item.vValues) file << value;
    }
    file.Write(record.szReserved.data(), static_cast<unsigned>(record.szReserved.size()));
}

}  // namespace

// ---------------------------------------------------------------------------
// Templates in memory

bool CIPTC::LoadTemplate(const std::string& name) {
    const auto it = std::find_if(m_templates.begin(), m_templates.end(),
                                 [&name](const STemplate& t) { return t.strName == name; });
    if (it == m_templates.end()) return false;
    m_fields = it->vFields;
    return true;
}

bool CIPTC::StoreTemplate(const std::string& name) {
    const auto it = std::find_if(m_templates.begin(), m_templates.end(),
                                 [&name](const STemplate& t) { return t.strName == name; });
    if (it != m_templates.end()) {
        // Overwritten in place: the template keeps its position and its
        // reserved area.
        it->vFields = m_fields;
    } else {
        STemplate added;
        added.strName = name;
        added.vFields = m_fields;
        m_templates.push_back(std::move(added));
    }
    // Stored templates go to disk at once. The template stays in memory even
    // when the file cannot be written; false tells the caller about that.
    return SaveTemplates(m_templatePath);
}

bool CIPTC::DeleteTemplate(const std::string& name) {
    const auto it = std::find_if(m_templates.begin(), m_templates.end(),
                                 [&name](const STemplate& t) { return t.strName == name; });
    if (it == m_templates.end()) return false;
    // Memory only: the file keeps the template until the next SaveChanges or
    // StoreTemplate, so a session that ends without saving gets it back.
    m_templates.erase(it);
    return true;
}

// ---------------------------------------------------------------------------
// The template file

bool CIPTC::LoadTemplates(CVLFile& file) {
    m_templates.clear();
    try {
        std::vector<STemplate> loaded;
        static_cast<void>(file.ReadUInt16());  // file version
        const std::uint32_t count = file.ReadUInt32();
        RequireRoomFor(file, count, kMinRecordBytes, "template");
        loaded.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) loaded.push_back(ReadRecord(file));
        // Bytes behind the last record are ignored, as the count says where
        // the templates end.
        m_templates = std::move(loaded);
        return true;
    } catch (const CVLException&) {
        return false;
    }
}

void CIPTC::SaveTemplates(CVLFile& file) const {
    file.WriteUInt16(kTemplateFileVersion);
    file.WriteUInt32(CountOf(m_templates.size(), "templates"));
    for (const auto& record : m_templates) WriteRecord(file, record);
}

bool CIPTC::LoadTemplates(const std::string& path) {
    m_templates.clear();
    if (!CVLFile::FileExists(path)) return true;
    // Read whole, then parse from memory: the reader asks for the bytes left
    // before every count and value, which a disk file would answer with
    // system calls.
    const auto bytes = vliptc::platform::ReadWholeFile(path, kMaxTemplateFileBytes);
    if (!bytes) return false;
    try {
        CVLMemFile file(false, 0, 4096);
        file.Assign(bytes->data(), bytes->size());
        return LoadTemplates(file);
    } catch (const CVLException&) {
        return false;
    }
}

bool CIPTC::SaveTemplates(const std::string& path) {
    namespace fs = vliptc::platform;
    // No path (a store that was never initialised): nothing to write to.
    if (path.empty() || fs::IsDirectory(path)) return false;

    CVLMemFile image(false, 65536, 4096);
    try {
        SaveTemplates(image);
    } catch (const CVLException&) {
        return false;
    }
    const std::span<const std::uint8_t> bytes(image.GetBuffer(), static_cast<std::size_t>(image.GetFileSize()));

    // The new file is made beside the old one, so the final move stays
    // within one file system.
    const std::filesystem::path target(path);
    fs::OutputFile out;
    if (!out.CreateUnique(target.parent_path().string(), target.filename().string() + ".")) return false;
    out.CopyPermissionsFrom(path);  // a first save keeps the private 0600 of a new file
    if (!out.Write(bytes) || !out.Close()) {
        out.Discard();
        return false;
    }

    const std::string backupPath = path + ".bak";
    static_cast<void>(fs::RemoveFile(backupPath));  // usually absent
    bool backedUp = false;
    if (fs::Exists(path)) {
        if (!fs::RenameNoReplace(path, backupPath)) {
            out.Discard();
            return false;
        }
        backedUp = true;
    }
    if (!fs::RenameNoReplace(out.Path(), path)) {
        if (backedUp) static_cast<void>(fs::RenameNoReplace(backupPath, path));
        out.Discard();
        return false;
    }
    return true;
}
