#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/VLProperty.h"
#include "platform/FileSystem.h"

// The catalogue of IPTC fields the library knows, read from the tag-definition
// files "vliptctags.ipt" (definitions folder) and "vliptcusr.ipt" (user folder),
// together with the value lists behind the tag blocks, and the user lists and
// keyword synonyms of "vliptcusr.dat" (user folder).
//
// File syntax, one logical line at a time (see NextLine):
//   ; comment                 lines starting with ";" and blank lines are skipped
//   {                         opens a tag block
//   KEY<blanks>value          ID STANDARD EXTVENDOR NAME DESC TYPE MINLEN MAXLEN
//                             MANDATORY REPEATABLE DISPLAYHEIGHT LISTREF
//   }                         closes it
//   [                         opens a list section; next line "ID n" (values)
//   "value"                   or "SID n" (synonyms: "keyword","syn","syn")
//   ]                         closes it
// Quotes protect blanks and line feeds; a doubled quote gives one literal
// quote and also toggles quoting (existing files are read that way, so the
// rule stays). A last line without a line feed is ignored.
class CVLIPTCINI {
public:
    enum ETagType : std::uint32_t {
        kTypeString = 10000,
        kTypeDate = 10001,
        kTypeTime = 10002,
        kTypeNumber = 10003,
    };

    // One tag descriptor.
    struct STagInfo {
        std::uint32_t nID = 0;          // IIM dataset number (record 2)
        std::int32_t bNonStandard = 0;  // 1 when "STANDARD" read as 0
        std::uint32_t nType = kTypeString;
        std::string strVendor;  // owner of a non-standard field
        std::string strName;    // display name
        std::string strDesc;    // help text
        std::int32_t nMinLen = 0;
        std::int32_t nMaxLen = 0;
        std::int32_t nMandatory = 0;
        std::int32_t nRepeatable = 0;
        std::int32_t nDisplayHeight = 1;  // held within 1..20
        std::string strListRef;
        std::vector<CVLProperty> vValues;  // built-in value list
    };

    using UserListMap = std::map<std::uint32_t, std::vector<CVLProperty>>;
    using SynonymList = std::map<CVLProperty, std::vector<CVLProperty>>;
    using SynonymMap = std::map<std::uint32_t, SynonymList>;

    // Dataset whose synonym entry always exists after a load (keywords).
    static constexpr std::uint32_t kKeywordsID = 25;

    CVLIPTCINI() = default;
    virtual ~CVLIPTCINI() = default;

    // Both folders must end with a path separator (plain concatenation).
    // Returns the result of the last definition file parsed; false when
    // neither could be read. Missing, empty and unreadable files are skipped,
    // and so is a file larger than vliptc::limits::kMaxDefinitionFileBytes.
    bool Load(const std::string& definitionFolder, const std::string& userFolder);
    // Like Load, with the shipped definitions given as text (a host that
    // builds them in) in place of "vliptctags.ipt"; the user folder (with its
    // trailing separator) is read as Load reads it. Empty text counts as a
    // missing file. IsDirty then watches the user files only.
    bool LoadFromText(const std::string& definitionsText, const std::string& userFolder);
    // Parses one whole file held in a zero-terminated buffer.
    bool LoadINIFile(char* buffer);

    std::vector<STagInfo>& Tags() noexcept { return m_tags; }
    const std::vector<STagInfo>& Tags() const noexcept { return m_tags; }
    bool GetDescriptor(std::uint32_t id, STagInfo& tag) const;
    // Whether the files on disk changed since Load. A missing or changed
    // "vliptctags.ipt" or "vliptcusr.dat" counts; a missing "vliptcusr.ipt"
    // does not (only a changed one does).
    bool IsDirty() const;

    // User lists ("ID" sections of "vliptcusr.dat").
    // Reads "vliptcusr.dat" when it is a file, replacing the user lists and
    // the synonyms; always true.
    bool LoadUserLists();
    // Writes the user lists and synonyms to "vliptcusr.dat", keeping the
    // previous file as "vliptcusr.dat.bak". False when the previous file could
    // not be moved to the backup, or when writing threw. A new file that
    // merely cannot be created, written or moved to the data file's name
    // still gives true. Either way a failed save moves the backup back, so
    // "vliptcusr.dat" holds the previous lists. Does nothing before Load.
    bool StoreUserLists();
    bool GetUserList(std::uint32_t id, std::vector<CVLProperty>& values) const;
    bool SetUserList(std::uint32_t id, const std::vector<CVLProperty>& values);

    // Synonyms ("SID" sections).
    bool GetSynonymList(std::uint32_t id, SynonymList& synonyms) const;
    bool SetSynonymList(std::uint32_t id, const SynonymList& synonyms);
    // The synonyms of one keyword; false when the list or the word is missing.
    bool GetSynonyms(std::uint32_t id, const CVLProperty& word, std::vector<CVLProperty>& synonyms) const;

    const UserListMap& UserLists() const noexcept { return m_userLists; }
    const SynonymMap& Synonyms() const noexcept { return m_synonyms; }

protected:
    bool NextLine(const char*& cursor, std::string& line);
    bool NextTagBlock(const char*& cursor, STagInfo& tag);
    void SplitTag(const std::string& line, std::string& key, std::string& value);
    bool LoadLists(const char*& cursor, bool userMode);
    bool ParseList(const char*& cursor, bool userMode);
    bool NextLineMultiple(const char*& cursor, std::vector<CVLProperty>& values);

    // The exact bytes StoreUserLists writes to "vliptcusr.dat" for the lists
    // and synonyms held now (CR LF line ends).
    void FormatUserLists(std::string& text) const;

    // Called by StoreUserLists after the new lists have been written (to the
    // file that becomes "vliptcusr.dat") and before that file is closed.
    // Empty by default; a test throws from it to exercise the rollback to the
    // ".bak" backup.
    std::function<void()> m_afterUserListsWritten;

private:
    struct ListContext;  // lookup tables that keep list parsing linear

    // Reads a whole definition or user-list file into buffer; false (and
    // buffer empty) when the file is missing, empty, unreadable or larger
    // than vliptc::limits::kMaxDefinitionFileBytes.
    bool ReadFileToBuffer(const std::string& path, std::string& buffer) const;
    // Load and LoadFromText: empties the store, notes the files to watch and
    // their times, then parses the shipped definitions (the file in the
    // folder source, or with fromText the text source) and the user's.
    bool LoadDefinitions(const std::string& source, bool fromText, const std::string& userFolder);
    void FreeBuffer() noexcept;
    void ParseValueSection(const char*& cursor, std::uint32_t id, bool userMode, ListContext& context);
    void ParseSynonymSection(const char*& cursor, std::uint32_t id, ListContext& context);
    void EnsureKeywordSynonyms();

    std::vector<STagInfo> m_tags;
    std::string m_buffer;        // text of the file being parsed, freed after it
    std::string m_tagsPath;      // definitions folder + "vliptctags.ipt"
    std::string m_userDataPath;  // user folder + "vliptcusr.dat"
    std::string m_userTagsPath;  // user folder + "vliptcusr.ipt"
    UserListMap m_userLists;
    SynonymMap m_synonyms;
    bool m_loaded = false;
    bool m_tagsFromText = false;  // LoadFromText: no "vliptctags.ipt" to watch
    // Last-write times at Load; nullopt for a file that was missing then.
    std::optional<vliptc::platform::FileTime> m_tagsTime;
    std::optional<vliptc::platform::FileTime> m_userDataTime;
    std::optional<vliptc::platform::FileTime> m_userTagsTime;
    ListContext* m_listContext = nullptr;  // set while LoadLists runs
};
