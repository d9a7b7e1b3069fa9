#pragma once

// The IPTC batch editor: the host hands over catalogue file ids and the id of
// the file on view; the editor sorts out the files that cannot take IPTC
// data, shows the property sheet over the template file's record and, on OK,
// writes the edit into every file by the write mode and keyword mode chosen
// on the sheet.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "editors/EditorUI.h"
#include "host/VLEngine.h"
#include "iptc/IPTC.h"

class QWidget;

namespace vliptc::editors::internal {
class DriverHost;
struct Selection;
}  // namespace vliptc::editors::internal

class CVLIPTCEditor {
public:
    // Results of ShowEditor besides kVLSuccess (also the result when the
    // user cancels the sheet) and the host errors of GetFileURI, which are
    // passed on unchanged.
    static constexpr std::uint32_t kResultAborted = 10010;  // nothing to do, No, or Cancel in the pass
    static constexpr std::uint32_t kResultTemplateUnreadable = 15600;  // the template file's IPTC data
    static constexpr std::uint32_t kResultNotInitialized = 15605;      // the store did not start

    // Bit of ShowEditor's flags: every written file keeps its access and
    // modification times. (The creation time cannot be set on POSIX systems.)
    static constexpr int kFlagKeepFileTimes = 1;

    // Starts the store on the definitions folder and the user folder
    // (CIPTC::Initialize), under the wait cursor. engine is not owned and
    // must outlive the editor; so must ui. Without a ui nothing is shown:
    // questions are answered No and the sheet is cancelled.
    CVLIPTCEditor(CVLWinEngine* engine, const std::string& definitionFolder, const std::string& userFolder,
                  vliptc::editors::EditorUI* ui = nullptr);
    CVLIPTCEditor(const CVLIPTCEditor&) = delete;
    CVLIPTCEditor& operator=(const CVLIPTCEditor&) = delete;
    virtual ~CVLIPTCEditor();

    // Edits the IPTC data of the files fileIds, starting from templateId's
    // record. The id of every file written is appended to changed (which is
    // not cleared first), in the order written; files written before a
    // failure or a Cancel stay written and listed. flags: kFlagKeepFileTimes.
    // parent is accepted and not used: the sheet has no owner window. An
    // editor without an engine, or whose store did not start, returns
    // kResultNotInitialized.
    std::uint32_t ShowEditor(const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
                             std::vector<std::uint32_t>& changed, int flags, QWidget* parent);

private:
    // The pass over the valid files after OK on the sheet; the template's
    // record as read before the sheet is templateRecord.
    std::uint32_t WritePass(const vliptc::editors::internal::Selection& selection,
                            const CIPTC::FieldList& templateRecord, const vliptc::editors::EditModes& modes,
                            std::vector<std::uint32_t>& changed);
    // One keyword-like field of the edited record into the store's record.
    void ProcessKeywords(const CIPTC::SIPTCItem* edited, CIPTC& store, int keywordMode);

    // The engine (not owned), the ui and the log.
    std::unique_ptr<vliptc::editors::internal::DriverHost> m_host;
    std::string m_definitionFolder;
    std::string m_userFolder;
    CIPTC m_iptc;
    bool m_initialized = false;
};
