#pragma once

// The IPTC editor: a modal property sheet of three pages over one store,
// "Description", "Image Information" and "Other Fields and Options".
//
// A page fills its controls from the store when it is shown and puts them
// back when it is left and on OK, so after OK the store holds exactly what the
// user saw. Cancel puts the store's field list back as it was when the sheet
// opened; what the user did to presets and thesauri stays (the driver saves it
// either way). The sheet comes back where it was left: its placement is kept
// as the "wp." values of "Settings\IPTCEdit".

#include <vector>

#include <QDialog>

#include "editors/EditorUI.h"
#include "editors/WindowPlacement.h"
#include "editors/sheet/SheetContext.h"
#include "iptc/IPTC.h"

class QTabWidget;

namespace vliptc::editors {

class CPPIPTCBase;
class Profile;

class CIPTCPropertySheet : public QDialog {
    Q_OBJECT

public:
    // The caption, the store, the engine and the files come from request; the
    // store and the profile must outlive the sheet. ask puts the pages'
    // questions to the user (empty: message boxes over the sheet).
    CIPTCPropertySheet(const SheetRequest& request, const EditModes& modes, Profile& profile,
                       AskUserFunction ask = {}, QWidget* parent = nullptr);
    ~CIPTCPropertySheet() override;

    // The modes as the options page last left them (those the sheet opened
    // with while it was not left).
    const EditModes& Modes() const noexcept { return m_context.modes; }

    void accept() override;
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void OnPageChanged(int index);

    SheetContext m_context;
    CIPTC::FieldList m_original;
    QTabWidget* m_tabs;
    std::vector<CPPIPTCBase*> m_pages;
    int m_active = -1;
    WindowPlacement m_placement;
    bool m_shown = false;
};

}  // namespace vliptc::editors
