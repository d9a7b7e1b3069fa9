// The IPTC batch editor driver: the checks of the selection, the questions
// and notices, the sheet run, and the write pass.

#include "editors/VLIPTCEditor.h"

#include "editors/StringTable.h"
#include "editors/internal/DriverHost.h"
#include "editors/internal/Selection.h"
#include "editors/internal/WritePass.h"
#include "iptc/RecordMerge.h"
#include "platform/FileName.h"
#include "platform/FileSystem.h"

namespace {

using vliptc::editors::EditModes;
using vliptc::editors::internal::DriverStrings;
using vliptc::editors::internal::FileCheck;
using vliptc::editors::internal::Selection;

// The source name of the log lines.
constexpr const char* kLogSource = "VLIPTCEditor";

// What the editor shows (resources/strings.tsv), in the order of DriverStrings:
// unsupported formats and read-only files (notice, question), no valid files,
// write errors (notice, question), the progress text, raw images without
// their ".thm" companion (notice, question). The notice for a single file
// that could not be written (217) speaks of EXIF information: the two editors
// have always shown each other's text there.
constexpr DriverStrings kStrings{{207, 200}, {208, 201}, 202, {217, 206}, 300, {218, 219}};
constexpr unsigned kSheetCaption = 103;

std::string Trimmed(const std::string& path) {
    const std::size_t first = path.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return path.substr(first, path.find_last_not_of(' ') - first + 1);
}

// A file that cannot be found, a folder, or one this process may not write.
bool IsReadOnlyFile(const std::string& path) {
    namespace fs = vliptc::platform;
    return !fs::Exists(path) || fs::IsDirectory(path) || fs::IsReadOnly(path);
}

// Whether a file can take the edit. The IPTC data of a raw image lives in its
// ".thm" companion, found whatever the case of its extension, as the reader
// finds it; both must be writable.
FileCheck CheckFile(const CIPTC& iptc, const std::string& path) {
    if (!iptc.IsSupportedFormat(path.c_str())) return FileCheck::kUnsupported;
    if (IsReadOnlyFile(path)) return FileCheck::kReadOnly;
    const auto target = vliptc::platform::MetadataFileOf(path);
    if (!target) return FileCheck::kMissingCompanion;
    if (*target != path && IsReadOnlyFile(*target)) return FileCheck::kReadOnly;
    return FileCheck::kValid;
}

// Stored modes out of range are dropped: the write mode keeps its initial
// "replace", the keyword mode becomes "replace".
EditModes Checked(EditModes stored) {
    EditModes modes;
    if (stored.writeMode >= vliptc::iptc::kWriteReplace && stored.writeMode <= vliptc::iptc::kWriteKeep) {
        modes.writeMode = stored.writeMode;
    }
    if (stored.keywordMode >= vliptc::iptc::kKeywordsUnchanged &&
        stored.keywordMode <= vliptc::iptc::kKeywordsMerge) {
        modes.keywordMode = stored.keywordMode;
    }
    return modes;
}

}  // namespace

CVLIPTCEditor::CVLIPTCEditor(CVLWinEngine* engine, const std::string& definitionFolder,
                             const std::string& userFolder, vliptc::editors::EditorUI* ui)
    : m_host(std::make_unique<vliptc::editors::internal::DriverHost>(engine, ui, kLogSource)),
      m_definitionFolder(definitionFolder),
      m_userFolder(userFolder) {
    m_host->UI().BeginWaitCursor();
    m_initialized = m_iptc.Initialize(m_definitionFolder, m_userFolder) == CIPTC::kSuccess;
    m_host->UI().EndWaitCursor();
}

CVLIPTCEditor::~CVLIPTCEditor() {
    if (m_initialized) static_cast<void>(m_iptc.ShutDown());
}

std::uint32_t CVLIPTCEditor::ShowEditor(const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
                                        std::vector<std::uint32_t>& changed, int flags, QWidget* /*parent*/) {
    if (!m_initialized || m_host->Engine() == nullptr) return kResultNotInitialized;

    Selection selection((flags & kFlagKeepFileTimes) != 0);
    const std::uint32_t selected = vliptc::editors::internal::SelectFiles(
        *m_host, fileIds, templateId, kStrings,
        [this](std::uint32_t /*fileId*/, const std::string& path) {
            return CheckFile(m_iptc, Trimmed(path));
        },
        selection);
    if (selected != kVLSuccess) return selected;
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError read = m_iptc.ReadIPTCBlob(selection.templatePath.c_str(), format);
    const CIPTC::FieldList templateRecord = m_iptc.Fields();
    // A file without a block, or in a container the reader does not know,
    // is edited from an empty record.
    if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock && read != CIPTC::kUnsupportedFormat) {
        m_host->LogError("IPTCEdit: Failed to parse template file: %lu", {std::to_string(read)});
        return kResultTemplateUnreadable;
    }

    // The user lists, templates and modes that the sheet changed are kept
    // whatever button closed it.
    vliptc::editors::EditorUI& ui = m_host->UI();
    EditModes modes = Checked(ui.LoadEditModes());
    const vliptc::editors::SheetRequest request{m_iptc, m_host->Engine(), selection.valid,
                                                selection.templateId,
                                                std::string(vliptc::editors::StringText(kSheetCaption))};
    const bool confirmed = ui.RunSheet(request, modes);
    static_cast<void>(m_iptc.SaveChanges());
    ui.SaveEditModes(modes);
    if (!confirmed) return kVLSuccess;

    return WritePass(selection, templateRecord, modes, changed);
}

std::uint32_t CVLIPTCEditor::WritePass(const Selection& selection, const CIPTC::FieldList& templateRecord,
                                       const EditModes& modes, std::vector<std::uint32_t>& changed) {
    namespace merge = vliptc::iptc;
    const CIPTC::FieldList edited = m_iptc.Fields();
    CIPTC::SIPTCFormatInfo format;
    vliptc::editors::internal::WritePassSteps steps{
        std::string(vliptc::editors::StringText(kSheetCaption)),
        kStrings,
        "IPTC: Processing file %s",
        "IPTC: Failed to add IPTC comments to file %s (%lu)",
        // A file whose block cannot be read is written from what the store
        // then holds: its record starts empty.
        [&](std::uint32_t id, const std::string& path) {
            format = {};  // each file is written in its own format
            static_cast<void>(m_iptc.ReadIPTCBlob(path.c_str(), format));
            const merge::MergeOptions options{modes.writeMode, modes.keywordMode, id == selection.templateId,
                                              selection.valid.size() == 1};
            for (const CIPTC::SIPTCItem& item : edited) {
                switch (merge::DecideField(item, templateRecord, m_iptc, options)) {
                    case merge::FieldAction::kSet:
                        m_iptc.SetField(item.nID, item.vValues);
                        break;
                    case merge::FieldAction::kKeywords:
                        ProcessKeywords(&item, m_iptc, modes.keywordMode);
                        break;
                    case merge::FieldAction::kKeep:
                        break;
                }
            }
            return true;
        },
        [&](const std::string& path) -> std::uint32_t { return m_iptc.WriteIPTCBlob(path.c_str(), format); },
    };
    return vliptc::editors::internal::RunWritePass(*m_host, selection.valid, selection.times, steps, changed);
}

void CVLIPTCEditor::ProcessKeywords(const CIPTC::SIPTCItem* edited, CIPTC& store, int keywordMode) {
    if (edited != nullptr) vliptc::iptc::MergeKeywords(*edited, store, keywordMode);
}
