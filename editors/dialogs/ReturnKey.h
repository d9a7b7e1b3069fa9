#pragma once

// Return in a dialog's edit box presses the dialog's default button (OK),
// which would close a dialog whose box is meant to feed a list. This runs
// the box's own action instead and keeps the key from the dialog.

#include <functional>

class QLineEdit;

namespace vliptc::editors {

void OnReturnKey(QLineEdit& edit, std::function<void()> action);

}  // namespace vliptc::editors
