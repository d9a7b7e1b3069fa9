#pragma once

// "Thesaurus Manager": edits the user list of one field (the list the field's
// combo box offers), and, for fields with synonyms, opens the synonym editor.
// OK stores the list (and changed synonyms) in the store; a double-click on
// an entry closes the manager with that entry chosen for the field.

#include <memory>
#include <cstdint>
#include <optional>
#include <string>

#include <QDialog>

class CIPTC;

namespace vliptc::editors {

class ThesaurusManager : public QDialog {
    Q_OBJECT
public:
    ThesaurusManager(CIPTC& store, std::uint32_t fieldId, QWidget* parent = nullptr);
    ~ThesaurusManager() override;

    // The entry double-clicked to close the dialog (Windows-1252), if any.
    std::optional<std::string> ChosenEntry() const;

    // OK stores the list with CIPTC::SetUserList; Cancel also puts back the
    // synonyms the synonym editor changed meanwhile.
    void accept() override;
    void reject() override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
