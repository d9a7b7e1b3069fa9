// The synonym editor's tree model (see SynonymTreeModel.h).

#include "editors/dialogs/SynonymTreeModel.h"

#include <algorithm>

#include "editors/internal/StoreText.h"

namespace vliptc::editors {

void SynonymTreeModel::SetList(const CVLIPTCINI::SynonymList& list) {
    beginResetModel();
    m_entries.clear();
    m_entries.reserve(list.size());
    for (const auto& [keyword, synonyms] : list) {
        auto entry = std::make_unique<Entry>();
        entry->keyword = keyword.String();
        entry->synonyms.reserve(synonyms.size());
        for (const CVLProperty& synonym : synonyms) entry->synonyms.push_back(synonym.String());
        entry->row = static_cast<int>(m_entries.size());
        m_entries.push_back(std::move(entry));
    }
    endResetModel();
}

CVLIPTCINI::SynonymList SynonymTreeModel::List() const {
    CVLIPTCINI::SynonymList list;
    for (const auto& entry : m_entries) {
        if (entry->keyword.empty()) continue;
        std::vector<CVLProperty>& synonyms = list[CVLProperty(entry->keyword)];
        for (const std::string& text : entry->synonyms) {
            if (text.empty()) continue;
            CVLProperty synonym(text);
            if (std::find(synonyms.begin(), synonyms.end(), synonym) == synonyms.end()) {
                synonyms.push_back(std::move(synonym));
            }
        }
    }
    return list;
}

void SynonymTreeModel::Renumber(int from) {
    for (auto i = static_cast<std::size_t>(from); i < m_entries.size(); ++i) {
        m_entries[i]->row = static_cast<int>(i);
    }
}

QModelIndex SynonymTreeModel::InsertEmptyRow(const QModelIndex& parent, int row) {
    if (ParentEntry(parent) != nullptr) return {};  // synonyms have no children
    row = std::clamp(row, 0, rowCount(parent));
    beginInsertRows(parent, row, row);
    if (parent.isValid()) {
        auto& synonyms = EntryAt(parent.row()).synonyms;
        synonyms.insert(synonyms.begin() + row, std::string());
    } else {
        m_entries.insert(m_entries.begin() + row, std::make_unique<Entry>());
        Renumber(row);
    }
    endInsertRows();
    return index(row, 0, parent);
}

QModelIndex SynonymTreeModel::Find(const QString& text, const QModelIndex& after) const {
    if (text.isEmpty() || m_entries.empty()) return {};
    // A position: the keyword's row, and -1 for the keyword itself or the
    // synonym's row.
    std::size_t keyword = 0;
    std::ptrdiff_t synonym = -1;
    std::size_t positions = m_entries.size();
    for (const auto& entry : m_entries) positions += entry->synonyms.size();
    const auto step = [&] {
        if (static_cast<std::size_t>(synonym + 1) < m_entries[keyword]->synonyms.size()) {
            ++synonym;
        } else {
            keyword = (keyword + 1) % m_entries.size();
            synonym = -1;
        }
    };
    if (after.isValid()) {
        const Entry* owner = ParentEntry(after);
        keyword = static_cast<std::size_t>(owner != nullptr ? owner->row : after.row());
        synonym = owner != nullptr ? after.row() : -1;
        step();
    }
    for (std::size_t i = 0; i < positions; ++i, step()) {
        const Entry& entry = *m_entries[keyword];
        const std::string& candidate =
            synonym < 0 ? entry.keyword : entry.synonyms[static_cast<std::size_t>(synonym)];
        if (!FromStoreText(candidate).contains(text, Qt::CaseInsensitive)) continue;
        const QModelIndex keywordIndex = index(static_cast<int>(keyword), 0);
        return synonym < 0 ? keywordIndex : index(static_cast<int>(synonym), 0, keywordIndex);
    }
    return {};
}

QModelIndex SynonymTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) return {};
    return createIndex(row, column, parent.isValid() ? &EntryAt(parent.row()) : nullptr);
}

QModelIndex SynonymTreeModel::parent(const QModelIndex& child) const {
    const Entry* owner = child.isValid() ? ParentEntry(child) : nullptr;
    return owner != nullptr ? createIndex(owner->row, 0, nullptr) : QModelIndex();
}

int SynonymTreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) return static_cast<int>(m_entries.size());
    if (ParentEntry(parent) != nullptr || parent.column() != 0) return 0;
    return static_cast<int>(EntryAt(parent.row()).synonyms.size());
}

int SynonymTreeModel::columnCount(const QModelIndex&) const { return 1; }

std::string& SynonymTreeModel::Text(const QModelIndex& index) const {
    Entry* owner = ParentEntry(index);
    if (owner == nullptr) return EntryAt(index.row()).keyword;
    return owner->synonyms[static_cast<std::size_t>(index.row())];
}

QVariant SynonymTreeModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    return FromStoreText(Text(index));
}

bool SynonymTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return false;
    Text(index) = ToStoreText(value.toString().trimmed());
    emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
    return true;
}

Qt::ItemFlags SynonymTreeModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
    if (ParentEntry(index) != nullptr) flags |= Qt::ItemNeverHasChildren;
    return flags;
}

bool SynonymTreeModel::removeRows(int row, int count, const QModelIndex& parent) {
    if (count <= 0 || row < 0 || row + count > rowCount(parent)) return false;
    if (ParentEntry(parent) != nullptr) return false;
    beginRemoveRows(parent, row, row + count - 1);
    if (parent.isValid()) {
        auto& synonyms = EntryAt(parent.row()).synonyms;
        synonyms.erase(synonyms.begin() + row, synonyms.begin() + row + count);
    } else {
        m_entries.erase(m_entries.begin() + row, m_entries.begin() + row + count);
        Renumber(row);
    }
    endRemoveRows();
    return true;
}

}  // namespace vliptc::editors
