// The IPTC batch editor driver: the checks of the selection, the questions
// and notices, the sheet run, and the write pass.

#include "editors/VLIPTCEditor.h"

#include <algorithm>
#include <optional>

#include "editors/StringTable.h"
#include "editors/internal/SilentUI.h"
#include "host/QXTLogfile.h"
#include "iptc/RecordMerge.h"
#include "platform/FileName.h"
#include "platform/FileSystem.h"

namespace {

using vliptc::editors::Answer;
using vliptc::editors::Buttons;
using vliptc::editors::EditModes;
using vliptc::editors::Icon;

// The source name of the log lines.
constexpr const char* kLogSource = "VLIPTCEditor";
constexpr int kProgressLogLevel = 4;

// Numbers of the string table (resources/strings.tsv).
constexpr unsigned kSheetCaption = 103;
constexpr unsigned kAskSkipUnsupported = 200;
constexpr unsigned kAskSkipReadOnly = 201;
constexpr unsigned kNoValidFiles = 202;
constexpr unsigned kAskContinueAfterWriteError = 206;
constexpr unsigned kUnsupportedFile = 207;
constexpr unsigned kReadOnlyFile = 208;
// The notice for a single file that could not be written speaks of EXIF
// information: the two editors have always shown each other's text there.
constexpr unsigned kWriteErrorSingleFile = 217;
constexpr unsigned kThmMissing = 218;
constexpr unsigned kAskSkipThmMissing = 219;
constexpr unsigned kProgressText = 300;

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
    : m_engine(engine),
      m_definitionFolder(definitionFolder),
      m_userFolder(userFolder),
      m_ownUI(ui == nullptr ? std::make_unique<vliptc::editors::internal::SilentUI>() : nullptr),
      m_ui(ui == nullptr ? m_ownUI.get() : ui) {
    m_ui->BeginWaitCursor();
    m_initialized = m_iptc.Initialize(m_definitionFolder, m_userFolder) == CIPTC::kSuccess;
    m_ui->EndWaitCursor();
}

CVLIPTCEditor::~CVLIPTCEditor() {
    if (m_initialized) static_cast<void>(m_iptc.ShutDown());
}

Answer CVLIPTCEditor::Message(unsigned stringId, const std::string& path, Buttons buttons, Icon icon) {
    // The texts that name a file carry one "%s"; the others no placeholder.
    const std::string text = vliptc::editors::FormatText(vliptc::editors::StringText(stringId), {path});
    return m_ui->ShowMessage(stringId, text, buttons, icon);
}

std::uint32_t CVLIPTCEditor::CollectValidFiles(const std::vector<std::uint32_t>& fileIds,
                                               std::vector<std::uint32_t>& valid) {
    bool unsupported = false;
    bool readOnly = false;
    bool missingThm = false;
    for (const std::uint32_t id : fileIds) {
        CVLURI uri;
        const std::uint32_t resolved = m_engine->GetFileURI(id, uri);
        if (resolved != kVLSuccess) {
            if (CQXTLogfile* log = m_engine->Logfile()) log->AddError(resolved, __LINE__, kLogSource);
            return resolved;
        }
        const std::string path = Trimmed(uri.WindowsPath());
        if (!m_iptc.IsSupportedFormat(path.c_str())) {
            unsupported = true;
        } else if (IsReadOnlyFile(path)) {
            readOnly = true;
        } else if (const auto target = vliptc::platform::MetadataFileOf(path); !target) {
            // The IPTC data of a raw image lives in its ".thm" companion,
            // found whatever the case of its extension, as the reader finds it.
            missingThm = true;
        } else if (*target != path && IsReadOnlyFile(*target)) {
            readOnly = true;
        } else {
            valid.push_back(id);
        }
    }

    if (missingThm) {
        if (valid.empty()) {
            Message(kThmMissing, {}, Buttons::kOk, Icon::kInformation);
            return kResultAborted;
        }
        if (Message(kAskSkipThmMissing, {}, Buttons::kYesNo, Icon::kQuestion) != Answer::kYes)
            return kResultAborted;
    }
    if (unsupported) {
        if (valid.empty()) {
            Message(kUnsupportedFile, {}, Buttons::kOk, Icon::kInformation);
            return kResultAborted;
        }
        if (Message(kAskSkipUnsupported, {}, Buttons::kYesNo, Icon::kQuestion) != Answer::kYes)
            return kResultAborted;
    }
    if (readOnly) {
        // With one writable file left (or none) the user is told, not asked.
        if (valid.size() > 1) {
            if (Message(kAskSkipReadOnly, {}, Buttons::kYesNo, Icon::kQuestion) != Answer::kYes)
                return kResultAborted;
        } else {
            Message(kReadOnlyFile, {}, Buttons::kOk, Icon::kInformation);
        }
    }
    return kVLSuccess;
}

std::uint32_t CVLIPTCEditor::ShowEditor(const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
                                        std::vector<std::uint32_t>& changed, int flags, QWidget* /*parent*/) {
    if (!m_initialized || m_engine == nullptr) return kResultNotInitialized;

    std::vector<std::uint32_t> valid;
    if (const std::uint32_t checked = CollectValidFiles(fileIds, valid); checked != kVLSuccess)
        return checked;

    if (std::find(valid.begin(), valid.end(), templateId) == valid.end()) {
        if (valid.empty()) {
            Message(kNoValidFiles, {}, Buttons::kOk, Icon::kExclamation);
            return kResultAborted;
        }
        templateId = valid.front();
    }

    CVLURI uri;
    if (const std::uint32_t resolved = m_engine->GetFileURI(templateId, uri); resolved != kVLSuccess) {
        if (CQXTLogfile* log = m_engine->Logfile()) log->AddError(resolved, __LINE__, kLogSource);
        return resolved;
    }
    const std::string templatePath = uri.WindowsPath();
    TemplateFile templateFile;
    templateFile.id = templateId;
    // Kept times are those from before the editor first read the file.
    if ((flags & kFlagKeepFileTimes) != 0) {
        templateFile.times = vliptc::platform::GetFileTimes(vliptc::iptc::WrittenFile(templatePath));
    }
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError read = m_iptc.ReadIPTCBlob(templatePath.c_str(), format);
    templateFile.record = m_iptc.Fields();
    // A file without a block, or in a container the reader does not know,
    // is edited from an empty record.
    if (read != CIPTC::kSuccess && read != CIPTC::kNoIPTCBlock && read != CIPTC::kUnsupportedFormat) {
        if (CQXTLogfile* log = m_engine->Logfile()) {
            const std::string text = vliptc::editors::FormatText(
                "IPTCEdit: Failed to parse template file: %lu", {std::to_string(read)});
            log->AddError(text.c_str(), __LINE__, kLogSource);
        }
        return kResultTemplateUnreadable;
    }

    // The user lists, templates and modes that the sheet changed are kept
    // whatever button closed it.
    EditModes modes = Checked(m_ui->LoadEditModes());
    const vliptc::editors::SheetRequest request{m_iptc, m_engine, valid, templateId,
                                                std::string(vliptc::editors::StringText(kSheetCaption))};
    const bool confirmed = m_ui->RunSheet(request, modes);
    static_cast<void>(m_iptc.SaveChanges());
    m_ui->SaveEditModes(modes);
    if (!confirmed) return kVLSuccess;

    return WritePass(valid, templateFile, modes, changed, flags);
}

std::uint32_t CVLIPTCEditor::WritePass(const std::vector<std::uint32_t>& valid,
                                       const TemplateFile& templateFile, const EditModes& modes,
                                       std::vector<std::uint32_t>& changed, int flags) {
    namespace merge = vliptc::iptc;
    // Let the windows under the closed sheet repaint before the long pass.
    m_ui->DrainMessages();
    const CIPTC::FieldList edited = m_iptc.Fields();
    m_ui->BeginWaitCursor();
    const std::string progressText(vliptc::editors::StringText(kProgressText));
    auto progress = m_ui->OpenProgress(std::string(vliptc::editors::StringText(kSheetCaption)), 0,
                                       static_cast<int>(valid.size()));
    CQXTLogfile* log = m_engine->Logfile();

    std::uint32_t result = kVLSuccess;
    for (std::size_t index = 0; index < valid.size() && result != kResultAborted; ++index) {
        const std::uint32_t id = valid[index];
        // A file that went away or became read-only since the checks is passed
        // over without a word.
        CVLURI uri;
        if (m_engine->GetFileURI(id, uri) != kVLSuccess ||
            !m_engine->FileSystemAccessor().IsFileMutable(id)) {
            continue;
        }
        const std::string path = uri.WindowsPath();

        // The times belong to the file that is written: for a raw image, its
        // companion. They are noted before the read, which may move the
        // access time.
        const std::string written = merge::WrittenFile(path);
        std::optional<vliptc::platform::FileTimes> times;
        if ((flags & kFlagKeepFileTimes) != 0) {
            times = id == templateFile.id && templateFile.times ? templateFile.times
                                                                : vliptc::platform::GetFileTimes(written);
        }

        // A file whose block cannot be read is written from what the store
        // then holds: its record starts empty.
        CIPTC::SIPTCFormatInfo format;
        static_cast<void>(m_iptc.ReadIPTCBlob(path.c_str(), format));
        const merge::MergeOptions options{modes.writeMode, modes.keywordMode, id == templateFile.id,
                                          valid.size() == 1};
        for (const CIPTC::SIPTCItem& item : edited) {
            switch (merge::DecideField(item, templateFile.record, m_iptc, options)) {
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
        if (log != nullptr) {
            log->AddInformal(("IPTC: Processing file " + uri.AsString()).c_str(), kProgressLogLevel, __LINE__,
                             kLogSource);
        }

        // The times go back whether or not the write succeeded; the owner may
        // set them without write permission, so no attribute needs lifting.
        const CIPTC::EError write = m_iptc.WriteIPTCBlob(path.c_str(), format);
        if (times) static_cast<void>(vliptc::platform::SetFileTimes(written, *times));

        if (write != CIPTC::kSuccess) {
            if (log != nullptr) {
                const std::string text =
                    vliptc::editors::FormatText("IPTC: Failed to add IPTC comments to file %s (%lu)",
                                                {uri.AsString(), std::to_string(write)});
                log->AddError(text.c_str(), __LINE__, kLogSource);
            }
            if (valid.size() < 2) {
                Message(kWriteErrorSingleFile, path, Buttons::kOk, Icon::kError);
                result = kResultAborted;
            } else if (Message(kAskContinueAfterWriteError, path, Buttons::kYesNo, Icon::kError) !=
                       Answer::kYes) {
                result = kResultAborted;
                break;
            }
        } else {
            changed.push_back(id);
            const std::uint32_t refreshed = m_engine->RefreshFile(id);
            if (refreshed != kVLSuccess && log != nullptr) {
                log->AddError(refreshed, "Updating file after IPTC update", __LINE__, kLogSource);
            }
        }

        progress->SetText(vliptc::editors::FormatText(progressText, {path}));
        progress->SetPos(static_cast<int>(index));  // the position before this file counts
        if (progress->IsCancelled()) {
            result = kResultAborted;
            break;
        }
    }
    m_ui->EndWaitCursor();
    return result;
}

void CVLIPTCEditor::ProcessKeywords(const CIPTC::SIPTCItem* edited, CIPTC& store, int keywordMode) {
    if (edited != nullptr) vliptc::iptc::MergeKeywords(*edited, store, keywordMode);
}
