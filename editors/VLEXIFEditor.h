#pragma once

// The EXIF viewer and batch date editor: the host hands over catalogue file
// ids and the id of the file on view; the editor sorts out the files that
// cannot take EXIF data, shows the EXIF dialog over the template file's
// fields and, on OK, writes the edited record (the date fields) into every
// file.

#include <cstdint>
#include <memory>
#include <vector>

#include "editors/EditorUI.h"
#include "exif/EXIF.h"
#include "host/VLEngine.h"

namespace vliptc::editors::internal {
class DriverHost;
}  // namespace vliptc::editors::internal
class QWidget;

class CVLEXIFEditor {
public:
    // Results of ShowEditor besides kVLSuccess (also the result when the
    // user cancels the dialog) and the host errors of GetFileURI, which are
    // passed on unchanged.
    static constexpr std::uint32_t kResultAborted = 10010;  // nothing to do, No, or Cancel in the pass
    static constexpr std::uint32_t kResultTemplateUnreadable = 15700;  // the template file's EXIF data

    // Bit of ShowEditor's flags: every written file keeps its access and
    // modification times.
    static constexpr int kFlagKeepFileTimes = 1;

    // engine is not owned and must outlive the editor; so must ui. Without a
    // ui nothing is shown: questions are answered No and the dialog is
    // cancelled.
    explicit CVLEXIFEditor(CVLWinEngine* engine, vliptc::editors::EditorUI* ui = nullptr);
    virtual ~CVLEXIFEditor();

    // Shows and edits the EXIF data of the files fileIds, starting from
    // templateId's. The id of every file written is appended to changed, in
    // the order written. flags: kFlagKeepFileTimes. parent is accepted and
    // not used.
    std::uint32_t ShowEditor(const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
                             std::vector<std::uint32_t>& changed, int flags, QWidget* parent);

    // The editor holds the host's engine and its own record: not copied.
    CVLEXIFEditor(const CVLEXIFEditor&) = delete;
    CVLEXIFEditor& operator=(const CVLEXIFEditor&) = delete;

private:
    // The record shown and written: the template's, then each file's in turn.
    CVLEXIF m_exif;
    // The engine (not owned), the ui and the log.
    std::unique_ptr<vliptc::editors::internal::DriverHost> m_host;
};
