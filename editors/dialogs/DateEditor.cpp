// "Date Editor" (see DateEditor.h).

#include "editors/dialogs/DateEditor.h"

#include <QDateTime>

#include "ui_DateEditor.h"

namespace vliptc::editors {

struct DateEditor::Impl {
    Ui::DateEditor ui;

    void SetToday() { ui.date->setDate(QDate::currentDate()); }
    void SetNow() { ui.time->setTime(QTime::currentTime()); }
};

DateEditor::DateEditor(const COleDateTime& value, QWidget* parent)
    : QDialog(parent), m_impl(std::make_unique<Impl>()) {
    Impl& d = *m_impl;
    d.ui.setupUi(this);
    // The years a COleDateTime holds.
    d.ui.date->setDateRange(QDate(100, 1, 1), QDate(9999, 12, 31));
    if (value.GetStatus() == COleDateTime::valid) {
        d.ui.date->setDate(QDate(value.GetYear(), value.GetMonth(), value.GetDay()));
        d.ui.time->setTime(QTime(value.GetHour(), value.GetMinute(), value.GetSecond()));
    } else {
        d.SetToday();
        d.SetNow();
    }
    connect(d.ui.today, &QPushButton::clicked, this, [&d] { d.SetToday(); });
    connect(d.ui.now, &QPushButton::clicked, this, [&d] { d.SetNow(); });
    connect(d.ui.noon, &QPushButton::clicked, this, [&d] { d.ui.time->setTime(QTime(12, 0)); });
    connect(d.ui.todayAndNow, &QPushButton::clicked, this, [&d] {
        d.SetToday();
        d.SetNow();
    });
}

DateEditor::~DateEditor() = default;

COleDateTime DateEditor::Value() const {
    const QDate date = m_impl->ui.date->date();
    const QTime time = m_impl->ui.time->time();
    return COleDateTime(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second());
}

}  // namespace vliptc::editors
