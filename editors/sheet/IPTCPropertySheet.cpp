#include "editors/sheet/IPTCPropertySheet.h"

#include <QDialogButtonBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "editors/Settings.h"
#include "editors/sheet/MessageBox.h"
#include "editors/sheet/PageCaption.h"
#include "editors/sheet/PageExtended.h"
#include "editors/sheet/PageKeywords.h"

namespace vliptc::editors {

CIPTCPropertySheet::CIPTCPropertySheet(const SheetRequest& request, const EditModes& modes, Profile& profile,
                                       AskUserFunction ask, QWidget* parent)
    : QDialog(parent),
      m_context{request.store,  request.engine, request.validFiles, request.templateId, profile,
                std::move(ask), modes},
      m_original(request.store.Fields()),
      m_tabs(new QTabWidget(this)),
      m_placement(profile) {
    setWindowTitle(QString::fromStdString(request.caption));
    m_tabs->setObjectName(QStringLiteral("pages"));
    if (!m_context.ask) {
        m_context.ask = [this](unsigned, const std::string& text, Buttons buttons, Icon icon) {
            return ShowMessageBox(this, windowTitle(), text, buttons, icon);
        };
    }

    m_pages = {new CPPIPTCCaption(m_context), new CPPIPTCKeywords(m_context), new CPPIPTCExtended(m_context)};
    for (CPPIPTCBase* page : m_pages) m_tabs->addTab(page, page->windowTitle());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(buttons);

    m_active = m_tabs->currentIndex();
    m_pages[static_cast<std::size_t>(m_active)]->OnSetActive();
    connect(m_tabs, &QTabWidget::currentChanged, this, &CIPTCPropertySheet::OnPageChanged);

    // Restored hidden: the modal loop shows the sheet.
    static_cast<void>(m_placement.LoadAndApply(kSectionIPTCEdit, *this, kShowHide));
}

CIPTCPropertySheet::~CIPTCPropertySheet() {
    // A sheet that was never shown has no placement of its own to keep.
    if (m_shown) static_cast<void>(m_placement.Store(kSectionIPTCEdit, *this));
}

void CIPTCPropertySheet::OnPageChanged(int index) {
    if (m_active >= 0) m_pages[static_cast<std::size_t>(m_active)]->OnKillActive();
    m_active = index;
    if (m_active >= 0) m_pages[static_cast<std::size_t>(m_active)]->OnSetActive();
}

void CIPTCPropertySheet::accept() {
    if (m_active >= 0) m_pages[static_cast<std::size_t>(m_active)]->OnKillActive();
    QDialog::accept();
}

void CIPTCPropertySheet::reject() {
    m_context.store.Fields() = m_original;
    QDialog::reject();
}

void CIPTCPropertySheet::showEvent(QShowEvent* event) {
    m_shown = true;
    QDialog::showEvent(event);
}

}  // namespace vliptc::editors
