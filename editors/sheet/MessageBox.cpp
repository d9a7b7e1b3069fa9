#include "editors/sheet/MessageBox.h"

#include <QMessageBox>

namespace vliptc::editors {

namespace {

QMessageBox::Icon BoxIcon(Icon icon) {
    switch (icon) {
        case Icon::kInformation:
            return QMessageBox::Information;
        case Icon::kQuestion:
            return QMessageBox::Question;
        case Icon::kExclamation:
            return QMessageBox::Warning;
        case Icon::kError:
            return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

}  // namespace

Answer ShowMessageBox(QWidget* parent, const QString& caption, const std::string& text, Buttons buttons,
                      Icon icon) {
    const bool yesNo = buttons == Buttons::kYesNo;
    QMessageBox box(BoxIcon(icon), caption, QString::fromStdString(text),
                    yesNo ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, parent);
    // Escape and the close button answer No to a question.
    if (yesNo) box.setEscapeButton(QMessageBox::No);
    const int pressed = box.exec();
    if (yesNo) return pressed == QMessageBox::Yes ? Answer::kYes : Answer::kNo;
    return Answer::kOk;
}

}  // namespace vliptc::editors
