// A resizable dialog that keeps its placement in the profile (see ResizableDialog.h).

#include "editors/ResizableDialog.h"

namespace vliptc::editors {

ResizableDialog::ResizableDialog(QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags) {
    setSizeGripEnabled(true);
}

ResizableDialog::~ResizableDialog() {
    // A dialog that was never shown has no placement of its own to keep; it
    // must not overwrite the one stored by an earlier run.
    if (m_placement && m_initialised) static_cast<void>(m_placement->StoreString(m_section, m_entry, *this));
}

void ResizableDialog::SetPlacementEntry(const WindowPlacement& placement, std::string section,
                                        std::string entry) {
    if (section.empty()) {  // no section: the dialog keeps nothing
        m_placement.reset();
        return;
    }
    m_placement = placement;
    m_section = std::move(section);
    m_entry = std::move(entry);
}

void ResizableDialog::setVisible(bool visible) {
    if (visible && !m_initialised) {
        m_initialised = true;  // first, since applying a placement shows the dialog
        if (m_placement) static_cast<void>(m_placement->RestoreString(m_section, m_entry, *this));
    }
    QDialog::setVisible(visible);
}

}  // namespace vliptc::editors
