#pragma once

// The progress window of a write pass: a text line, a bar and "Cancel".

#include <memory>
#include <string>

#include <QDialog>

#include "editors/EditorUI.h"

namespace vliptc::editors {

class ProgressDialog : public QDialog, public ProgressWindow {
    Q_OBJECT
public:
    // Shown at once (modeless), over the range [lower, upper].
    ProgressDialog(const std::string& title, int lower, int upper, QWidget* parent = nullptr);
    ~ProgressDialog() override;

    void SetText(const std::string& text) override;
    void SetPos(int position) override;
    bool IsCancelled() override;

    // Cancel pressed (or Escape, or the close box).
    void reject() override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
