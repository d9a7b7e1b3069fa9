#include "editors/sheet/PageExtended.h"

#include <algorithm>

#include <QButtonGroup>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyledItemDelegate>
#include <QTableWidget>

#include "editors/dialogs/DateEditor.h"
#include "editors/internal/StoreText.h"
#include "iptc/IPTC.h"
#include "ui_PageOtherFields.h"

namespace vliptc::editors {

namespace {

enum Column { kNameColumn = 0, kVendorColumn = 1, kValueColumn = 2 };

// The value cell carries its field's MAXLEN (0: no limit).
constexpr int kMaxLengthRole = Qt::UserRole + 1;

// Text longer than a field's MAXLEN cannot be typed into its cell; a longer
// value already there is kept whole.
class MaxLengthDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        const int limit = index.data(kMaxLengthRole).toInt();
        if (auto* line = qobject_cast<QLineEdit*>(editor); line != nullptr && limit > 0) {
            line->setMaxLength(static_cast<int>(std::max<qsizetype>(limit, index.data().toString().size())));
        }
        return editor;
    }
};

QTableWidgetItem* ReadOnlyItem(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

bool IsDateOrTime(std::uint32_t type) {
    return type == CVLIPTCINI::kTypeDate || type == CVLIPTCINI::kTypeTime;
}

}  // namespace

CPPIPTCExtended::CPPIPTCExtended(SheetContext& context, QWidget* parent)
    : CPPIPTCBase(context, parent), m_ui(std::make_unique<Ui::PageOtherFields>()) {
    m_ui->setupUi(this);
    QTableWidget& table = *m_ui->fieldsTable;
    table.setItemDelegateForColumn(kValueColumn, new MaxLengthDelegate(&table));
    table.horizontalHeader()->setSectionResizeMode(kValueColumn, QHeaderView::Stretch);
    table.verticalHeader()->hide();

    // The button ids are the write modes.
    m_writeModes = new QButtonGroup(this);
    m_writeModes->addButton(m_ui->replaceRadio, 0);
    m_writeModes->addButton(m_ui->updateRadio, 1);
    m_writeModes->addButton(m_ui->keepRadio, 2);

    connect(&table, &QTableWidget::cellActivated, this, [this](int row, int column) {
        if (column == kValueColumn) EditDateTime(row);
    });
    table.installEventFilter(this);
}

CPPIPTCExtended::~CPPIPTCExtended() = default;

void CPPIPTCExtended::FillTable() {
    std::vector<CVLIPTCINI::STagInfo> tags;
    static_cast<void>(Store().GetDescriptors(tags));
    QTableWidget& table = *m_ui->fieldsTable;
    table.setRowCount(0);
    m_rows.clear();
    for (const CVLIPTCINI::STagInfo& tag : tags) {
        if (tag.bNonStandard == 0) continue;
        const int row = table.rowCount();
        table.insertRow(row);
        m_rows.push_back({tag.nID, tag.nType});
        QTableWidgetItem* name = ReadOnlyItem(FromStoreText(tag.strName));
        name->setToolTip(FromStoreText(tag.strDesc));
        table.setItem(row, kNameColumn, name);
        table.setItem(row, kVendorColumn, ReadOnlyItem(FromStoreText(tag.strVendor)));
        const QString text = FromStoreText(FieldValue(tag.nID));
        QTableWidgetItem* value = IsDateOrTime(tag.nType) ? ReadOnlyItem(text) : new QTableWidgetItem(text);
        value->setData(kMaxLengthRole, tag.nMaxLen);
        table.setItem(row, kValueColumn, value);
    }
    table.resizeColumnToContents(kNameColumn);
    table.resizeColumnToContents(kVendorColumn);
}

void CPPIPTCExtended::ExchangeControls(Direction direction) {
    QTableWidget& table = *m_ui->fieldsTable;
    EditModes& modes = Context().modes;
    if (direction == Direction::kToControls) {
        FillTable();
        if (QAbstractButton* radio = m_writeModes->button(modes.writeMode)) radio->setChecked(true);
        m_ui->keywordModeCombo->setCurrentIndex(modes.keywordMode);
        return;
    }
    // A cell still being edited is committed first.
    table.setCurrentIndex(QModelIndex());
    for (int row = 0; row < table.rowCount(); ++row) {
        const QTableWidgetItem* value = table.item(row, kValueColumn);
        SetFieldValue(m_rows[static_cast<std::size_t>(row)].id, ToStoreText(value->text()));
    }
    modes.writeMode = m_writeModes->checkedId() < 0 ? modes.writeMode : m_writeModes->checkedId();
    modes.keywordMode = m_ui->keywordModeCombo->currentIndex();
}

bool CPPIPTCExtended::eventFilter(QObject* watched, QEvent* event) {
    QTableWidget& table = *m_ui->fieldsTable;
    if (watched == &table && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete && table.currentRow() >= 0 &&
        IsDateOrTime(m_rows[static_cast<std::size_t>(table.currentRow())].type)) {
        table.item(table.currentRow(), kValueColumn)->setText({});
        return true;
    }
    return CPPIPTCBase::eventFilter(watched, event);
}

void CPPIPTCExtended::EditDateTime(int row) {
    const Row field = m_rows[static_cast<std::size_t>(row)];
    if (!IsDateOrTime(field.type)) return;
    QTableWidgetItem& cell = *m_ui->fieldsTable->item(row, kValueColumn);
    const bool isDate = field.type == CVLIPTCINI::kTypeDate;

    // The cell is read as the store reads its dates and times (macros too).
    // A time starts on today's date, whose zone offset it is written with.
    SetFieldValue(field.id, ToStoreText(cell.text()));
    CVLProperty value;
    COleDateTime start;
    if (isDate ? Store().GetFieldDate(field.id, value) : Store().GetFieldTime(field.id, value)) {
        start = value.GetDateTime();
        if (!isDate) {
            const COleDateTime today = COleDateTime::GetCurrentTime();
            start = COleDateTime(today.GetYear(), today.GetMonth(), today.GetDay(), start.GetHour(),
                                 start.GetMinute(), start.GetSecond());
        }
    } else {
        start.SetStatus(COleDateTime::invalid);
    }

    DateEditor editor(start, this);
    if (editor.exec() != QDialog::Accepted) return;
    const COleDateTime chosen = editor.Value();
    cell.setText(FromStoreText(isDate ? Store().FormatDate(chosen) : Store().FormatTime(chosen, false)));
}

}  // namespace vliptc::editors
