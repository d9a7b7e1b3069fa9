#pragma once

#include "editors/EditorUI.h"

namespace vliptc::editors::internal {

// The interface of a driver built without one: it shows nothing, answers
// every question No, and the sheet ends with Cancel, so nothing is written.
class SilentUI final : public EditorUI {
public:
    Answer ShowMessage(unsigned stringId, const std::string& text, Buttons buttons, Icon icon) override;
    bool RunSheet(const SheetRequest& request, EditModes& modes) override;
    bool RunExifDialog(CVLEXIF& exif, bool viewOnly) override;
    std::unique_ptr<ProgressWindow> OpenProgress(const std::string& title, int lower, int upper) override;
    void BeginWaitCursor() override {}
    void EndWaitCursor() override {}
    void DrainMessages() override {}
    EditModes LoadEditModes() override { return {}; }
    void SaveEditModes(const EditModes&) override {}
};

}  // namespace vliptc::editors::internal
