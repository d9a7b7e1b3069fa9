#include "editors/sheet/DateTimeField.h"

#include <array>
#include <vector>

#include <QCheckBox>
#include <QDateEdit>
#include <QMenu>
#include <QTimeEdit>
#include <QToolButton>

#include "iptc/IPTC.h"

namespace vliptc::editors {

namespace {

struct DatePreset {
    const char* text;
    int days;  // from today
};

constexpr std::array<DatePreset, 7> kPastDates = {{
    {"&Today", 0},
    {"Yesterday", -1},
    {"Two days ago", -2},
    {"Three days ago", -3},
    {"One week ago", -7},
    {"Two weeks ago", -14},
    {"Three weeks ago", -21},
}};

constexpr std::array<DatePreset, 7> kFutureDates = {{
    {"&Today", 0},
    {"&Tomorrow", 1},
    {"Two days from now", 2},
    {"Three days from now", 3},
    {"One week from now", 7},
    {"Two weeks from now", 14},
    {"Three weeks from now", 21},
}};

constexpr int kNoonHour = 12;

// A picker takes input only while its box is checked.
void Couple(QCheckBox& box, QWidget& picker) {
    picker.setEnabled(box.isChecked());
    QObject::connect(&box, &QCheckBox::toggled, &picker, &QWidget::setEnabled);
}

QMenu& MenuOf(QToolButton& button) {
    auto* menu = new QMenu(&button);
    button.setMenu(menu);
    return *menu;
}

QDate ToQDate(const COleDateTime& value) {
    if (value.GetStatus() != COleDateTime::valid) return {};
    return QDate(value.GetYear(), value.GetMonth(), value.GetDay());
}

}  // namespace

DateTimeField::DateTimeField(std::uint32_t dateId, std::uint32_t timeId, DateTimeWidgets widgets,
                             DatePresets presets, QObject* parent)
    : QObject(parent), m_dateId(dateId), m_timeId(timeId), m_widgets(widgets) {
    Couple(widgets.dateSet, widgets.date);
    Couple(widgets.timeSet, widgets.time);
    widgets.date.setDate(QDate::currentDate());
    widgets.time.setTime(QTime::currentTime());

    QMenu& dates = MenuOf(widgets.dateMenu);
    for (const DatePreset& preset : presets == DatePresets::kPast ? kPastDates : kFutureDates) {
        connect(dates.addAction(QString::fromLatin1(preset.text)), &QAction::triggered, this,
                [widgets, days = preset.days] {
                    widgets.dateSet.setChecked(true);
                    widgets.date.setDate(QDate::currentDate().addDays(days));
                });
    }
    QMenu& times = MenuOf(widgets.timeMenu);
    connect(times.addAction(QStringLiteral("&Now")), &QAction::triggered, this, [widgets] {
        widgets.timeSet.setChecked(true);
        widgets.time.setTime(QTime::currentTime());
    });
    connect(times.addAction(QStringLiteral("&12:00")), &QAction::triggered, this, [widgets] {
        widgets.timeSet.setChecked(true);
        widgets.time.setTime(QTime(kNoonHour, 0));
    });
}

void DateTimeField::Load(const CIPTC& store) {
    CVLProperty value;
    const QDate date = store.GetFieldDate(m_dateId, value) ? ToQDate(value.GetDateTime()) : QDate();
    m_widgets.dateSet.setChecked(date.isValid());
    if (date.isValid()) m_widgets.date.setDate(date);

    const bool hasTime = store.GetFieldTime(m_timeId, value);
    const COleDateTime time = value.GetDateTime();
    m_widgets.timeSet.setChecked(hasTime && time.GetStatus() == COleDateTime::valid);
    if (m_widgets.timeSet.isChecked()) {
        m_widgets.time.setTime(QTime(time.GetHour(), time.GetMinute(), time.GetSecond()));
    }
}

void DateTimeField::Save(CIPTC& store) const {
    const QDate date = m_widgets.date.date();
    std::vector<CVLProperty> dateValues;
    if (m_widgets.dateSet.isChecked()) {
        dateValues.emplace_back(
            store.FormatDate(COleDateTime(date.year(), date.month(), date.day(), 0, 0, 0)));
    }
    store.SetField(m_dateId, dateValues);

    std::vector<CVLProperty> timeValues;
    if (m_widgets.timeSet.isChecked()) {
        // The zone offset written with the time is the one in force on the
        // field's date (today when there is none).
        const QDate day = m_widgets.dateSet.isChecked() ? date : QDate::currentDate();
        const QTime time = m_widgets.time.time();
        timeValues.emplace_back(store.FormatTime(
            COleDateTime(day.year(), day.month(), day.day(), time.hour(), time.minute(), time.second()),
            false));
    }
    store.SetField(m_timeId, timeValues);
}

}  // namespace vliptc::editors
