// The chooser's check list model (see CheckListModel.h).

#include "editors/dialogs/CheckListModel.h"

#include "editors/internal/StoreText.h"

namespace vliptc::editors {

CheckListModel::CheckListModel(const std::vector<ChooserEntry>& entries, QObject* parent)
    : QAbstractListModel(parent), m_entries(entries) {
    m_checked.reserve(entries.size());
    for (const ChooserEntry& entry : entries) m_checked.push_back(entry.checked ? 1 : 0);
}

int CheckListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant CheckListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const auto row = static_cast<std::size_t>(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return FromStoreText(m_entries[row].text);
        case Qt::CheckStateRole:
            return m_checked[row] != 0 ? Qt::Checked : Qt::Unchecked;
        default:
            return {};
    }
}

bool CheckListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return false;
    m_checked[static_cast<std::size_t>(index.row())] = value.toInt() == Qt::Checked ? 1 : 0;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

Qt::ItemFlags CheckListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

void CheckListModel::Record(std::vector<ChooserEntry>& entries) const {
    for (std::size_t i = 0; i < entries.size() && i < m_checked.size(); ++i) {
        entries[i].checked = m_checked[i] != 0;
    }
}

}  // namespace vliptc::editors
