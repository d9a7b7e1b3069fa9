// Return runs an edit box's own action (see ReturnKey.h).

#include "editors/dialogs/ReturnKey.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace vliptc::editors {

namespace {

class ReturnKeyFilter : public QObject {
public:
    ReturnKeyFilter(QLineEdit& edit, std::function<void()> action)
        : QObject(&edit), m_action(std::move(action)) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Return || key == Qt::Key_Enter) {
                m_action();
                return true;
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_action;
};

}  // namespace

void OnReturnKey(QLineEdit& edit, std::function<void()> action) {
    edit.installEventFilter(new ReturnKeyFilter(edit, std::move(action)));
}

}  // namespace vliptc::editors
