// The drivers' user interface on Qt Widgets (see QtEditorUI.h).

#include "editors/qt/QtEditorUI.h"

#include <QApplication>
#include <QSettings>

#include "editors/Settings.h"
#include "editors/StringTable.h"
#include "editors/dialogs/ExifDialog.h"
#include "editors/dialogs/ProgressDialog.h"
#include "editors/sheet/IPTCPropertySheet.h"
#include "editors/sheet/MessageBox.h"

namespace vliptc::editors {

namespace {

// Every message of the drivers appears under the editor's caption.
constexpr unsigned kEditorCaption = 103;

}  // namespace

QtEditorUI::QtEditorUI(QWidget* owner) : m_owner(owner) {}

QtEditorUI::~QtEditorUI() = default;

Answer QtEditorUI::ShowMessage(unsigned /*stringId*/, const std::string& text, Buttons buttons, Icon icon) {
    return ShowMessageBox(m_owner, QString::fromUtf8(StringText(kEditorCaption)), text, buttons, icon);
}

bool QtEditorUI::RunSheet(const SheetRequest& request, EditModes& modes) {
    const auto settings = OpenApplicationProfile();
    Profile profile(*settings);
    // No owner window: the sheet stands on its own, as the host expects.
    CIPTCPropertySheet sheet(request, modes, profile);
    const bool confirmed = sheet.exec() == QDialog::Accepted;
    modes = sheet.Modes();
    return confirmed;
}

bool QtEditorUI::RunExifDialog(CVLEXIF& exif, bool viewOnly) {
    const auto settings = OpenApplicationProfile();
    Profile profile(*settings);
    ExifDialog dialog(exif, viewOnly, profile, m_owner);
    return dialog.exec() == QDialog::Accepted;
}

std::unique_ptr<ProgressWindow> QtEditorUI::OpenProgress(const std::string& title, int lower, int upper) {
    return std::make_unique<ProgressDialog>(title, lower, upper, m_owner);
}

void QtEditorUI::BeginWaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

void QtEditorUI::EndWaitCursor() { QApplication::restoreOverrideCursor(); }

void QtEditorUI::DrainMessages() { QCoreApplication::processEvents(); }

EditModes QtEditorUI::LoadEditModes() {
    const auto settings = OpenApplicationProfile();
    return Profile(*settings).LoadEditModes();
}

void QtEditorUI::SaveEditModes(const EditModes& modes) {
    const auto settings = OpenApplicationProfile();
    static_cast<void>(Profile(*settings).SaveEditModes(modes));
}

}  // namespace vliptc::editors
