#pragma once

// The chooser's list as a model: one checkable row per entry. Rows convert
// their text only when a view asks for it, so a list of 100,000 keywords
// opens at once; the check states live in a plain vector until Record()
// writes them back.

#include <vector>

#include <QAbstractListModel>

#include "editors/dialogs/KeywordChooser.h"

namespace vliptc::editors {

class CheckListModel : public QAbstractListModel {
    Q_OBJECT
public:
    // entries must outlive the model.
    explicit CheckListModel(const std::vector<ChooserEntry>& entries, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Copies the current check states into entries (the same list, in order).
    void Record(std::vector<ChooserEntry>& entries) const;

private:
    const std::vector<ChooserEntry>& m_entries;
    std::vector<char> m_checked;  // one per entry
};

}  // namespace vliptc::editors
