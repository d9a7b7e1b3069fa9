#pragma once

// The synonym editor's tree as a model: the keywords at the top level, each
// with its synonyms as children. The texts stay in Windows-1252 and are
// converted only for the rows a view shows, and children are counted only
// when a keyword is expanded, so a list of 100,000 keywords loads quickly.
//
// An index's internal pointer tells the levels apart: null for a keyword,
// the keyword's entry for one of its synonyms. Entries stay where they are in
// memory while rows move, so the views' persistent indexes stay right.

#include <memory>
#include <string>
#include <vector>

#include <QAbstractItemModel>

#include "tags/IPTCINI.h"

namespace vliptc::editors {

class SynonymTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    using QAbstractItemModel::QAbstractItemModel;

    // Replaces the tree with list (keywords in the list's order).
    void SetList(const CVLIPTCINI::SynonymList& list);
    // The tree as a synonym list: empty texts left out, a keyword listed
    // twice merged into one, a synonym repeated under a keyword kept once.
    CVLIPTCINI::SynonymList List() const;

    // Inserts an empty row (a keyword under the root, a synonym under a
    // keyword) and returns its index.
    QModelIndex InsertEmptyRow(const QModelIndex& parent, int row);
    // The next row after `after`, in the order the tree lists them and
    // starting over at the top, whose text contains text regardless of case;
    // invalid when none does.
    QModelIndex Find(const QString& text, const QModelIndex& after) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;

private:
    struct Entry {
        std::string keyword;
        std::vector<std::string> synonyms;
        int row = 0;  // its row in m_entries
    };
    static Entry* ParentEntry(const QModelIndex& index) {
        return static_cast<Entry*>(index.internalPointer());
    }
    Entry& EntryAt(int row) const { return *m_entries[static_cast<std::size_t>(row)]; }
    void Renumber(int from);
    // The text behind an index (which must be valid).
    std::string& Text(const QModelIndex& index) const;

    std::vector<std::unique_ptr<Entry>> m_entries;
};

}  // namespace vliptc::editors
