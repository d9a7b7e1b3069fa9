#pragma once

// "Date Editor": a date and a time picker with the buttons "&Today", "&Now",
// "N&oon" and "Today &and Now". Used for the date fields of the IPTC record
// and the EXIF viewer's date cells.

#include <memory>
#include <QDialog>

#include "host/OleDateTime.h"

namespace vliptc::editors {

class DateEditor : public QDialog {
    Q_OBJECT
public:
    // value: the date and time to start from (an invalid value starts from now).
    explicit DateEditor(const COleDateTime& value, QWidget* parent = nullptr);
    ~DateEditor() override;

    // The date and time the pickers show.
    COleDateTime Value() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vliptc::editors
