#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/OleDateTime.h"
#include "host/VLProperty.h"
#include "platform/FileSystem.h"
#include "tags/IPTCINI.h"

class CIPTCReader;
class CVLFile;
class CVLMemFile;

// The IPTC-IIM application record (record 2) of one image file at a time:
// an ordered field store laid out by the tag definitions, the templates, and
// the file operations. One object serves a whole batch: Initialize once, then
// for each file read its block, change fields, write it back.
class CIPTC {
public:
    // One dataset of record 2 with its values in file order. No values means
    // the dataset is absent.
    struct SIPTCItem {
        std::uint32_t nID = 0;
        std::vector<CVLProperty> vValues;
    };
    using FieldList = std::vector<SIPTCItem>;

    enum EFormat : std::uint32_t {
        kFormatUnknown = 0,
        kFormatJPEG = 1,
        kFormatTIFF = 2,
        kFormatTrailer = 3,  // block appended behind a 10-byte trailer
        kFormatPSD = 4,
    };

    struct SIPTCFormatInfo {
        std::uint32_t nFormat = kFormatUnknown;
        bool bBigEndian = false;
    };

    // An encoded block; the holder frees pData with delete[].
    struct SIPTCBlob {
        std::uint8_t* pData = nullptr;
        std::uint32_t nSize = 0;
        bool bBigEndian = true;
    };

    // A named copy of a whole field list.
    struct STemplate {
        std::string strName;
        FieldList vFields;
        std::array<char, 256> szReserved{};  // written and read back as it stands
    };

    enum EError : std::uint32_t {
        kSuccess = 0,
        kBlockTooLarge = 1,
        kNoIPTCBlock = 3,
        kCannotOpen = 4,
        kCannotMapOrWrite = 5,
        kEmptyFile = 6,
        kCannotReplace = 9,
        kUnsupportedFormat = 11,
        kNotInitialized = 13,
    };

    CIPTC() = default;
    virtual ~CIPTC() = default;

    // Lifecycle.
    EError Initialize(const std::string& definitionFolder, const std::string& userFolder);
    // The same with the shipped definitions given as text in place of the
    // definitions folder (CVLIPTCINI::LoadFromText); DefinitionFolder() is
    // then empty.
    EError InitializeFromText(const std::string& definitionsText, const std::string& userFolder);
    EError ShutDown();
    EError SaveChanges();
    bool IsDirty() const;

    // The field store.
    FieldList& Fields() noexcept { return m_fields; }
    const FieldList& Fields() const noexcept { return m_fields; }
    SIPTCItem* Field(std::uint32_t id);
    const std::string& Path() const noexcept { return m_path; }
    void SetField(std::uint32_t id, const CVLProperty& value, bool replace);
    void SetField(std::uint32_t id, const std::vector<CVLProperty>& values);
    bool GetField(std::uint32_t id, std::vector<CVLProperty>& values) const;

    // Tag definitions, user lists and synonyms (forwarded to the tag store).
    bool GetDescriptors(std::vector<CVLIPTCINI::STagInfo>& tags) const;
    bool GetDescriptor(std::uint32_t id, CVLIPTCINI::STagInfo& tag) const;
    bool GetUserList(std::uint32_t id, std::vector<CVLProperty>& values) const;
    bool SetUserList(std::uint32_t id, const std::vector<CVLProperty>& values);
    bool GetSynonymList(std::uint32_t id, CVLIPTCINI::SynonymList& synonyms) const;
    bool SetSynonymList(std::uint32_t id, const CVLIPTCINI::SynonymList& synonyms);
    bool GetSynonyms(std::uint32_t id, const CVLProperty& word, std::vector<CVLProperty>& synonyms) const;

    // Reads the file's IPTC block into the field list (one empty item per
    // descriptor first, then the file's datasets), and fills the format.
    EError ReadIPTCBlob(const char* path, SIPTCFormatInfo& format);
    // Encodes the field list and writes it into the file, choosing the writer
    // by the format and the extension. The file is replaced only when the new
    // one is complete; on failure the original stays at the path.
    EError WriteIPTCBlob(const char* path, const SIPTCFormatInfo& format);

    // File formats, by extension.
    SIPTCFormatInfo GetFormatFromFileExt(const char* path) const;
    bool IsSupportedFormat(const char* path) const;

    // Templates, found by exact (case-sensitive) name. StoreTemplate saves the
    // template file at once and returns false when that save failed (the
    // template is kept in memory); DeleteTemplate changes memory only, the
    // file follows at the next SaveChanges or StoreTemplate.
    const std::vector<STemplate>& Templates() const noexcept { return m_templates; }
    bool LoadTemplate(const std::string& name);
    bool StoreTemplate(const std::string& name);
    bool DeleteTemplate(const std::string& name);

    // IPTC dates and times, and the date macros ("#TODAY", "#NOW", ...) that
    // expand when a block is encoded.
    std::string FormatDate(const COleDateTime& date) const;
    std::string FormatTime(const COleDateTime& time, bool universal) const;
    std::string Translate(const CVLProperty& value) const;
    bool GetFieldDate(std::uint32_t id, CVLProperty& date) const;
    bool GetFieldTime(std::uint32_t id, CVLProperty& time) const;
    // Status of the file being written, used by "#FILEDATE" and "#FILETIME".
    // WriteIPTCBlob records it just before writing.
    void SetWriteFileStatus(std::optional<vliptc::platform::FileStatus> status) { m_writeStatus = std::move(status); }

    // Expands "#<dataset number>" placeholders with the dataset's values
    // joined by "; ". Always 0.
    EError FormatIPTCString(const char* pattern, std::string& out) const;

    // Folder paths as given to Initialize, and the template file path.
    const std::string& DefinitionFolder() const noexcept { return m_definitionFolder; }
    const std::string& UserFolder() const noexcept { return m_userFolder; }
    const std::string& TemplatePath() const noexcept { return m_templatePath; }
    bool IsInitialized() const noexcept { return m_initialized; }

protected:
    // The IIM codec: encodes a field list as a record-2 dataset stream; the
    // decoders fill the field list from an image-resource section or from
    // bare IIM data at the reader's position.
    bool BuildBlob(const FieldList& fields, SIPTCBlob& blob, bool bigEndian) const;
    void WriteField_(CVLMemFile& file, const CVLProperty& value, bool bigEndian) const;
    EError DecodeImageResources(CIPTCReader& reader, std::uint64_t size);
    EError DecodeIIM(CIPTCReader& reader, std::uint64_t size);

    // The template file "vliptctmpl.dat" (its layout is described in
    // Templates.cpp). LoadTemplates: a missing file gives no templates and
    // true; a file that cannot be read whole gives no templates and false,
    // never a half-read one. SaveTemplates: writes a complete new file beside
    // the old one and only then swaps it in, keeping the previous file as
    // "<path>.bak"; false when a step fails, the old file then staying put.
    bool LoadTemplates(const std::string& path);
    bool SaveTemplates(const std::string& path);
    // The same on an open file (disk or memory) at its start. LoadTemplates
    // replaces the templates only when the whole stream reads; SaveTemplates
    // lets CVLException through.
    bool LoadTemplates(CVLFile& file);
    void SaveTemplates(CVLFile& file) const;

    // Replaces the field list with one empty item per descriptor, in
    // definition order (what a read starts from).
    void ResetFields();

    CVLIPTCINI m_tags;
    std::string m_definitionFolder;
    std::string m_userFolder;
    std::string m_templatePath;
    bool m_initialized = false;
    std::string m_path;
    // Status of the file being written, taken just before writing (file macros).
    std::optional<vliptc::platform::FileStatus> m_writeStatus;
    FieldList m_fields;
    std::vector<STemplate> m_templates;
};

// A folder with a path separator appended when it does not end in one: "/"
// when the path already contains a "/", else "\".
std::string WithTrailingSeparator(const std::string& folder);
