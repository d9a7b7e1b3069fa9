#pragma once

// A dialog that the user may resize and that comes back where it was left:
// its placement is kept in the string form ("left,top,right,bottom,showCmd,
// flags") in one value of the application profile. It is restored when the
// dialog is first shown (before it appears) and stored when the dialog is
// destroyed, if it was shown. Without a placement entry it does neither.

#include <optional>
#include <string>

#include <QDialog>

#include "editors/WindowPlacement.h"

namespace vliptc::editors {

class ResizableDialog : public QDialog {
    Q_OBJECT

public:
    explicit ResizableDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~ResizableDialog() override;

    // Where the placement lives: value entry of section, through placement
    // (whose profile must outlive the dialog). Call before the first show; an
    // empty section leaves the dialog without a placement entry.
    void SetPlacementEntry(const WindowPlacement& placement, std::string section, std::string entry);

    void setVisible(bool visible) override;

private:
    std::optional<WindowPlacement> m_placement;
    std::string m_section;
    std::string m_entry;
    bool m_initialised = false;
};

}  // namespace vliptc::editors
