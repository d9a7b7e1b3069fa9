// "Velora EXIF Viewer" (see ExifDialog.h).

#include "editors/dialogs/ExifDialog.h"

#include <cstdint>
#include <map>
#include <vector>

#include <QClipboard>
#include <QDate>
#include <QGuiApplication>
#include <QTime>

#include "editors/Settings.h"
#include "editors/WindowPlacement.h"
#include "editors/dialogs/DateEditor.h"
#include "editors/internal/StoreText.h"
#include "exif/EXIF.h"
#include "ui_ExifViewer.h"

namespace vliptc::editors {

namespace {

constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;

const QColor kFixedCell(220, 220, 220);
const QColor kOrdinaryCell(255, 255, 255);
const QColor kWritableCell(220, 220, 255);

// The EXIF date form: "YYYY:MM:DD HH:MM:SS", 19 characters. The date
// writer writes no other.
COleDateTime ParseExifDate(const QString& text) {
    COleDateTime value;
    value.SetStatus(COleDateTime::invalid);
    if (text.size() != 19 || text[10] != QLatin1Char(' ')) return value;
    const QDate date = QDate::fromString(text.left(10), QStringLiteral("yyyy:MM:dd"));
    const QTime time = QTime::fromString(text.mid(11), QStringLiteral("HH:mm:ss"));
    if (date.isValid() && time.isValid()) {
        static_cast<void>(value.SetDateTime(date.year(), date.month(), date.day(), time.hour(), time.minute(),
                                            time.second()));
    }
    return value;
}

// The date editor keeps years to 100..9999, so the year has four digits.
std::string FormatExifDate(const COleDateTime& value) {
    return QString::asprintf("%04d:%02d:%02d %02d:%02d:%02d", value.GetYear(), value.GetMonth(),
                             value.GetDay(), value.GetHour(), value.GetMinute(), value.GetSecond())
        .toStdString();
}

// Names are the grid's fixed column: not selectable. No cell is editable in
// place; the dates are edited in the date editor.
QTableWidgetItem* Cell(const QString& text, const QColor& background, bool selectable) {
    auto* cell = new QTableWidgetItem(text);
    cell->setFlags(selectable ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::ItemIsEnabled);
    cell->setBackground(background);
    // The backgrounds are fixed, so the text colour must be too.
    cell->setForeground(Qt::black);
    return cell;
}

}  // namespace

struct ExifDialog::Impl {
    Impl(CVLEXIF& record, bool viewing, Profile& profile)
        : exif(record), viewOnly(viewing), placement(profile) {}

    Ui::ExifViewer ui;
    CVLEXIF& exif;
    const bool viewOnly;
    WindowPlacement placement;
    std::vector<std::uint32_t> rowTags;
    // The values of the fields edited, as they were before the first edit.
    std::map<std::uint32_t, std::vector<CVLProperty>> original;
    bool shown = false;

    QString FormattedText(std::uint32_t tag) {
        const bool useDefaults = exif.bUseDefaults;
        exif.bUseDefaults = true;
        std::string text;
        static_cast<void>(exif.GetFormattedField(static_cast<CVLEXIF::EFieldTags>(tag), text));
        exif.bUseDefaults = useDefaults;
        return FromStoreText(text);
    }

    void Fill() {
        const std::vector<const CVLEXIF::SField*> present = exif.PresentFields();
        ui.table->setRowCount(static_cast<int>(present.size()));
        int row = 0;
        for (const CVLEXIF::SField* field : present) {
            rowTags.push_back(field->nTag);
            const bool writable = !viewOnly && field->bDate;
            ui.table->setItem(row, kNameColumn, Cell(FromStoreText(field->strName), kFixedCell, false));
            ui.table->setItem(
                row, kValueColumn,
                Cell(FormattedText(field->nTag), writable ? kWritableCell : kOrdinaryCell, true));
            ++row;
        }
        ui.table->resizeColumnToContents(kNameColumn);
        ui.table->resizeRowsToContents();
    }

    void EditDate(QWidget* dialog, int row) {
        const auto tag = static_cast<CVLEXIF::EFieldTags>(rowTags.at(static_cast<std::size_t>(row)));
        CVLEXIF::SField* field = nullptr;
        if (viewOnly || !exif.GetField(tag, field) || !field->bDate) return;
        QTableWidgetItem* cell = ui.table->item(row, kValueColumn);
        DateEditor editor(ParseExifDate(cell->text()), dialog);
        if (editor.exec() != QDialog::Accepted) return;
        original.try_emplace(field->nTag, field->vValues);
        field->vValues = {CVLProperty(FormatExifDate(editor.Value()))};
        cell->setText(FormattedText(field->nTag));
    }

    QString TableText() const {
        QString text;
        for (int row = 0; row < ui.table->rowCount(); ++row) {
            text += ui.table->item(row, kNameColumn)->text() + QLatin1Char('\t') +
                    ui.table->item(row, kValueColumn)->text() + QLatin1Char('\n');
        }
        return text;
    }
};

ExifDialog::ExifDialog(CVLEXIF& exif, bool viewOnly, Profile& profile, QWidget* owner)
    : QDialog(owner), m_impl(std::make_unique<Impl>(exif, viewOnly, profile)) {
    Impl& d = *m_impl;
    d.ui.setupUi(this);
    if (viewOnly) {
        d.ui.ok->setEnabled(false);
        d.ui.ok->hide();
        d.ui.note->hide();
        d.ui.close->setDefault(true);
    }
    d.Fill();
    connect(d.ui.table, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
        if (column == kValueColumn) m_impl->EditDate(this, row);
    });
    connect(d.ui.copy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_impl->TableText()); });
    // Restored hidden: the modal loop shows the dialog.
    static_cast<void>(d.placement.LoadAndApply(kSectionEXIFDlg, *this, kShowHide));
}

ExifDialog::~ExifDialog() {
    // A dialog that was never shown has no placement of its own to keep.
    if (m_impl->shown) static_cast<void>(m_impl->placement.Store(kSectionEXIFDlg, *this));
}

void ExifDialog::reject() {
    for (auto& [tag, values] : m_impl->original) {
        CVLEXIF::SField* field = nullptr;
        if (m_impl->exif.GetField(static_cast<CVLEXIF::EFieldTags>(tag), field))
            field->vValues = std::move(values);
    }
    m_impl->original.clear();
    QDialog::reject();
}

void ExifDialog::showEvent(QShowEvent* event) {
    m_impl->shown = true;
    QDialog::showEvent(event);
}

}  // namespace vliptc::editors
