#pragma once

// "Velora EXIF Viewer": the EXIF fields of one file in a table, a row per
// field the file carried, in the catalogue's order: the field's name and the
// text GetFormattedField gives it.
//
// Cell colours: the name column is the grid's fixed column, light grey
// (220, 220, 220); values are white, except those the user may change,
// which are light blue (220, 220, 255). Only the three date-and-time fields
// are writable, as only they are written back to files; a double-click on
// one of their values opens the "Date Editor", and OK there puts the date
// into the catalogue as one text value in the EXIF form "YYYY:MM:DD
// HH:MM:SS". Close (or Escape) puts the edited fields back as they were, so
// only OK hands edits on.
//
// View-only: OK is hidden and disabled, no cell can be edited (so none is
// coloured as writable) and the double-click note is hidden.
//
// "Copy to Clipboard" puts the whole table on the clipboard as plain text:
// a line per row, "name<TAB>value", each line ended by "\n".
//
// Fields without values show GetDefault's text (bUseDefaults is set while
// the dialog reads texts, and put back after): an "X Resolution" the file
// carried empty shows its default 72; other empty fields show nothing.
//
// The placement is restored from and stored as the "wp." values of
// "EXIFDlg".

#include <memory>

#include <QDialog>

class CVLEXIF;

namespace vliptc::editors {

class Profile;

class ExifDialog : public QDialog {
    Q_OBJECT
public:
    // exif and profile must outlive the dialog.
    ExifDialog(CVLEXIF& exif, bool viewOnly, Profile& profile, QWidget* owner = nullptr);
    ~ExifDialog() override;

    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
