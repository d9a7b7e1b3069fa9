// The progress window of a write pass (see ProgressDialog.h).

#include "editors/dialogs/ProgressDialog.h"

#include <QCoreApplication>

#include "ui_Progress.h"

namespace vliptc::editors {

struct ProgressDialog::Impl {
    Ui::Progress ui;
    bool cancelled = false;
};

ProgressDialog::ProgressDialog(const std::string& title, int lower, int upper, QWidget* parent)
    : QDialog(parent), m_impl(std::make_unique<Impl>()) {
    m_impl->ui.setupUi(this);
    setWindowTitle(QString::fromStdString(title));
    m_impl->ui.bar->setRange(lower, upper);
    m_impl->ui.bar->setValue(lower);
    connect(m_impl->ui.cancel, &QPushButton::clicked, this, &ProgressDialog::reject);
    // The pass runs on the user-interface thread and lets events through
    // only in IsCancelled: nothing but this window may take input meanwhile.
    setWindowModality(Qt::ApplicationModal);
    show();
}

ProgressDialog::~ProgressDialog() = default;

void ProgressDialog::SetText(const std::string& text) {
    m_impl->ui.text->setText(QString::fromStdString(text));
}

void ProgressDialog::SetPos(int position) { m_impl->ui.bar->setValue(position); }

bool ProgressDialog::IsCancelled() {
    QCoreApplication::processEvents();
    return m_impl->cancelled;
}

void ProgressDialog::reject() {
    // Cancel, Escape and the close box all ask the pass to stop; the window
    // stays until the pass is over and its owner closes it.
    m_impl->cancelled = true;
    m_impl->ui.cancel->setEnabled(false);
}

}  // namespace vliptc::editors
