#pragma once

// A date field and its time field on one row: a date picker and a time
// picker, each with a check box that says whether the field has a value, and
// a menu of preset values. A field absent from the store (or holding no
// readable date or time) leaves its box unchecked; an unchecked picker writes
// no value. Dates and times are read with CIPTC::GetFieldDate and
// GetFieldTime (which expand date macros) and written in the IPTC forms.

#include <cstdint>

#include <QObject>

class CIPTC;
class QCheckBox;
class QDateEdit;
class QTimeEdit;
class QToolButton;

namespace vliptc::editors {

// Which preset dates the date picker's menu offers.
enum class DatePresets { kPast, kFuture };

struct DateTimeWidgets {
    QCheckBox& dateSet;
    QDateEdit& date;
    QToolButton& dateMenu;
    QCheckBox& timeSet;
    QTimeEdit& time;
    QToolButton& timeMenu;
};

class DateTimeField : public QObject {
    Q_OBJECT

public:
    DateTimeField(std::uint32_t dateId, std::uint32_t timeId, DateTimeWidgets widgets, DatePresets presets,
                  QObject* parent);

    void Load(const CIPTC& store);
    void Save(CIPTC& store) const;

private:
    std::uint32_t m_dateId;
    std::uint32_t m_timeId;
    DateTimeWidgets m_widgets;
};

}  // namespace vliptc::editors
