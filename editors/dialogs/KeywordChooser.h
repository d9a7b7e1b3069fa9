#pragma once

// "Choose Elements": the check list of every keyword (or category) of the
// field's thesaurus and of the template file, opened by "Select Keywords" and
// "Select Categories". Resizable; its placement is kept as the "WP" string
// and its "Include S&ynonyms" box as "AddSyn" under "Settings\IPTCEditor".

#include <memory>
#include <string>
#include <vector>

#include "editors/ResizableDialog.h"

namespace vliptc::editors {

class Profile;

struct ChooserEntry {
    std::string text;  // Windows-1252, as the store holds it
    bool checked = false;
};

class KeywordChooser : public ResizableDialog {
    Q_OBJECT
public:
    // entries: in the order to list them, checked when the record holds them.
    // The profile must outlive the dialog.
    KeywordChooser(std::vector<ChooserEntry> entries, Profile& profile, QWidget* parent = nullptr);
    ~KeywordChooser() override;

    // After OK: every entry with the check state the user left, and the box.
    const std::vector<ChooserEntry>& Entries() const noexcept;
    bool IncludeSynonyms() const noexcept;

    void accept() override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
