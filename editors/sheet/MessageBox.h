#pragma once

// The editors' message boxes: a numbered string's text with Yes/No or OK and
// an icon, under the editor's caption.

#include <string>

#include <QString>

#include "editors/EditorUI.h"

class QWidget;

namespace vliptc::editors {

// Shows the box modally over parent (may be null) and returns the button
// pressed; closing the box counts as No (Yes/No) or OK.
Answer ShowMessageBox(QWidget* parent, const QString& caption, const std::string& text, Buttons buttons,
                      Icon icon);

}  // namespace vliptc::editors
