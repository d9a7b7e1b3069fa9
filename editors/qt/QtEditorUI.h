#pragma once

// The editors' user interface on Qt Widgets: message boxes with the numbered
// strings, the IPTC property sheet, the EXIF viewer, the progress dialog, the
// wait cursor, and the edit modes in the application profile.

#include "editors/EditorUI.h"

class QWidget;

namespace vliptc::editors {

class QtEditorUI : public EditorUI {
public:
    // owner: the window the dialogs are centred on (may be null).
    explicit QtEditorUI(QWidget* owner = nullptr);
    ~QtEditorUI() override;

    Answer ShowMessage(unsigned stringId, const std::string& text, Buttons buttons, Icon icon) override;
    bool RunSheet(const SheetRequest& request, EditModes& modes) override;
    bool RunExifDialog(CVLEXIF& exif, bool viewOnly) override;
    std::unique_ptr<ProgressWindow> OpenProgress(const std::string& title, int lower, int upper) override;
    void BeginWaitCursor() override;
    void EndWaitCursor() override;
    void DrainMessages() override;
    EditModes LoadEditModes() override;
    void SaveEditModes(const EditModes& modes) override;

private:
    QWidget* m_owner;
};

}  // namespace vliptc::editors
