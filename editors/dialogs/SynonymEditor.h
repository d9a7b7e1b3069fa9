#pragma once

// "Synonym Editor": the entries of one field's list with their synonyms, as a
// tree; OK stores the changed synonym list in the store.
//
// The list is read when the dialog is first shown, with "Loading synonym
// list..." (string 302) on view meanwhile. "&Add" adds a keyword after the
// current one; <Ins> adds after the current position: a synonym after the
// current synonym, or a keyword's first synonym when a keyword is current.
// An entry left empty after editing is removed.

#include <memory>
#include <cstdint>

#include <QDialog>

class CIPTC;

namespace vliptc::editors {

class SynonymEditor : public QDialog {
    Q_OBJECT
public:
    SynonymEditor(CIPTC& store, std::uint32_t fieldId, QWidget* parent = nullptr);
    ~SynonymEditor() override;

    // Whether the list has been read (it is, once the dialog has been shown
    // and its events processed).
    bool IsLoaded() const noexcept;

    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
