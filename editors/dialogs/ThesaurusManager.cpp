// "Thesaurus Manager" (see ThesaurusManager.h).
//
// The list is edited in a string model and reaches the store only on OK.
// The synonym editor stores its own changes when it is closed with OK (the
// tree is too large to carry around twice); so that Cancel here still
// cancels everything, the synonyms as they were when the manager opened are
// put back when it is cancelled after such a change.

#include "editors/dialogs/ThesaurusManager.h"

#include <QStringListModel>

#include "editors/dialogs/ReturnKey.h"
#include "editors/dialogs/SynonymEditor.h"
#include "editors/internal/StoreText.h"
#include "iptc/IPTC.h"
#include "ui_ThesaurusManager.h"

namespace vliptc::editors {

struct ThesaurusManager::Impl {
    Impl(CIPTC& iptc, std::uint32_t id) : store(iptc), fieldId(id) {}

    Ui::ThesaurusManager ui;
    CIPTC& store;
    std::uint32_t fieldId;
    QStringListModel entries;
    std::optional<std::string> chosen;
    // The synonyms before the synonym editor first stored a change.
    std::optional<CVLIPTCINI::SynonymList> synonymsBefore;

    QModelIndex Current() const { return ui.list->currentIndex(); }
    void Select(int row) {
        const QModelIndex index = entries.index(row);
        ui.list->setCurrentIndex(index);
        ui.list->scrollTo(index);
    }
    QString TypedText() const { return ui.entry->text().trimmed(); }

    void Add() {
        const QString text = TypedText();
        if (text.isEmpty()) return;
        // An entry that is listed already is only selected.
        const QModelIndexList found = entries.match(entries.index(0), Qt::DisplayRole, text, 1,
                                                    Qt::MatchFixedString | Qt::MatchCaseSensitive);
        if (!found.isEmpty()) return Select(found.first().row());
        const int row = entries.rowCount();
        entries.insertRows(row, 1);
        entries.setData(entries.index(row), text);
        Select(row);
    }
    void Update() {
        const QString text = TypedText();
        if (!Current().isValid() || text.isEmpty()) return;
        entries.setData(Current(), text);
    }
    void Delete() {
        const QModelIndex current = Current();
        if (!current.isValid()) return;
        const int row = current.row();
        entries.removeRows(row, 1);
        if (entries.rowCount() > 0) Select(std::min(row, entries.rowCount() - 1));
    }
};

ThesaurusManager::ThesaurusManager(CIPTC& store, std::uint32_t fieldId, QWidget* parent)
    : QDialog(parent), m_impl(std::make_unique<Impl>(store, fieldId)) {
    Impl& d = *m_impl;
    d.ui.setupUi(this);

    std::vector<CVLProperty> values;
    static_cast<void>(store.GetUserList(fieldId, values));
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(values.size()));
    for (const CVLProperty& value : values) texts.push_back(FromStoreText(value.String()));
    d.entries.setStringList(texts);
    d.ui.list->setModel(&d.entries);

    // Only a field with a synonym list offers the synonym editor (the
    // keywords always have one; other fields when the user's lists define one).
    CVLIPTCINI::SynonymList synonyms;
    d.ui.synonymsPanel->setVisible(store.GetSynonymList(fieldId, synonyms));

    connect(d.ui.list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [&d](const QModelIndex& current) {
                if (current.isValid()) d.ui.entry->setText(current.data().toString());
            });
    connect(d.ui.list, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        m_impl->chosen = ToStoreText(index.data().toString());
        accept();
    });
    connect(d.ui.add, &QPushButton::clicked, this, [&d] { d.Add(); });
    OnReturnKey(*d.ui.entry, [&d] { d.Add(); });
    connect(d.ui.update, &QPushButton::clicked, this, [&d] { d.Update(); });
    connect(d.ui.remove, &QPushButton::clicked, this, [&d] { d.Delete(); });
    connect(d.ui.editSynonyms, &QPushButton::clicked, this, [this] {
        std::optional<CVLIPTCINI::SynonymList> before;
        if (!m_impl->synonymsBefore) {
            before.emplace();
            static_cast<void>(m_impl->store.GetSynonymList(m_impl->fieldId, *before));
        }
        SynonymEditor editor(m_impl->store, m_impl->fieldId, this);
        if (editor.exec() == QDialog::Accepted && before) m_impl->synonymsBefore = std::move(before);
    });
}

ThesaurusManager::~ThesaurusManager() = default;

std::optional<std::string> ThesaurusManager::ChosenEntry() const { return m_impl->chosen; }

void ThesaurusManager::accept() {
    std::vector<CVLProperty> values;
    const QStringList texts = m_impl->entries.stringList();
    values.reserve(static_cast<std::size_t>(texts.size()));
    for (const QString& text : texts) values.emplace_back(ToStoreText(text));
    static_cast<void>(m_impl->store.SetUserList(m_impl->fieldId, values));
    QDialog::accept();
}

void ThesaurusManager::reject() {
    if (m_impl->synonymsBefore) {
        static_cast<void>(m_impl->store.SetSynonymList(m_impl->fieldId, *m_impl->synonymsBefore));
    }
    QDialog::reject();
}

}  // namespace vliptc::editors
