#include "editors/sheet/ListField.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QComboBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QStringListModel>

#include "editors/Settings.h"
#include "editors/dialogs/KeywordChooser.h"
#include "editors/dialogs/ReturnKey.h"
#include "editors/internal/StoreText.h"
#include "editors/sheet/UserListChoices.h"
#include "iptc/IPTC.h"

namespace vliptc::editors {

namespace {

QString Folded(const QString& text) { return text.toCaseFolded(); }

}  // namespace

ListFieldControl::ListFieldControl(CIPTC& store, std::uint32_t id, ListFieldWidgets widgets, Profile& profile,
                                   std::function<bool()> removeRepeats, QWidget& page)
    : QObject(&page),
      m_store(store),
      m_id(id),
      m_widgets(widgets),
      m_profile(profile),
      m_removeRepeats(std::move(removeRepeats)),
      m_page(page),
      m_model(new QStringListModel(&widgets.list)) {
    m_widgets.list.setModel(m_model);
    m_widgets.list.installEventFilter(this);
    OfferChoices();

    QComboBox& combo = m_widgets.combo;
    // Enter adds what was typed (and does not close the sheet); picking an
    // entry from the drop-down list adds it too.
    OnReturnKey(*combo.lineEdit(), [this] { AddPicked(m_widgets.combo.currentText()); });
    connect(&combo, &QComboBox::textActivated, this, [this](const QString& text) { AddPicked(text); });
    connect(&m_widgets.list, &QAbstractItemView::doubleClicked, this, &ListFieldControl::OnDoubleClick);
    connect(&m_widgets.choose, &QAbstractButton::clicked, this, &ListFieldControl::Choose);
    connect(&m_widgets.toThesaurus, &QAbstractButton::clicked, this,
            [this] { ToThesaurus(SelectedTexts()); });
    connect(&m_widgets.allToThesaurus, &QAbstractButton::clicked, this,
            [this] { ToThesaurus(m_model->stringList()); });
    connect(&m_widgets.remove, &QAbstractButton::clicked, this, [this] {
        QList<int> rows;
        for (const QModelIndex& index : m_widgets.list.selectionModel()->selectedRows())
            rows.append(index.row());
        RemoveRows(rows);
    });
}

void ListFieldControl::Load() {
    std::vector<CVLProperty> values;
    static_cast<void>(m_store.GetField(m_id, values));
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(values.size()));
    for (const CVLProperty& value : values) texts.append(FromStoreText(value.String()));
    SetValues(texts);
}

void ListFieldControl::Save() {
    std::vector<CVLProperty> values;
    std::set<std::string> seen;
    bool asked = false;
    bool dropRepeats = true;
    for (const QString& text : m_model->stringList()) {
        if (text.isEmpty()) continue;
        std::string stored = ToStoreText(text);
        if (!seen.insert(stored).second) {
            if (!asked) {
                asked = true;
                dropRepeats = m_removeRepeats();
            }
            if (dropRepeats) continue;
        }
        values.emplace_back(std::move(stored));
    }
    m_store.SetField(m_id, values);
}

void ListFieldControl::SetValues(const QStringList& values) {
    m_model->setStringList(values);
    m_listed.clear();
    for (const QString& text : values) m_listed.insert(Folded(text));
}

void ListFieldControl::Add(const QStringList& texts, bool withSynonyms) {
    QStringList appended;
    const auto append = [this, &appended](const QString& text) {
        if (text.isEmpty() || m_listed.contains(Folded(text))) return;
        m_listed.insert(Folded(text));
        appended.append(text);
    };
    for (const QString& text : texts) {
        append(text);
        if (!withSynonyms) continue;
        std::vector<CVLProperty> synonyms;
        if (!m_store.GetSynonyms(m_id, CVLProperty(ToStoreText(text)), synonyms)) continue;
        for (const CVLProperty& synonym : synonyms) append(FromStoreText(synonym.String()));
    }
    if (appended.isEmpty()) return;
    const int first = m_model->rowCount();
    m_model->insertRows(first, static_cast<int>(appended.size()));
    for (int i = 0; i < appended.size(); ++i) m_model->setData(m_model->index(first + i), appended[i]);
}

void ListFieldControl::AddPicked(const QString& text) {
    Add({text}, m_profile.LoadAddSynonyms());
    m_widgets.combo.clearEditText();
}

void ListFieldControl::OfferChoices() { OfferUserList(m_store, m_id, m_widgets.combo); }

void ListFieldControl::Choose() {
    // The thesaurus first, then what the record holds besides; one entry per
    // text whatever its case, checked when the record holds it.
    std::vector<CVLProperty> thesaurus;
    static_cast<void>(m_store.GetUserList(m_id, thesaurus));
    std::vector<ChooserEntry> entries;
    QSet<QString> offered;
    const auto offer = [&](const QString& text) {
        if (text.isEmpty() || offered.contains(Folded(text))) return;
        offered.insert(Folded(text));
        entries.push_back({ToStoreText(text), m_listed.contains(Folded(text))});
    };
    for (const CVLProperty& value : thesaurus) offer(FromStoreText(value.String()));
    for (const QString& text : m_model->stringList()) offer(text);

    KeywordChooser chooser(std::move(entries), m_profile, &m_page);
    if (chooser.exec() != QDialog::Accepted) return;
    QStringList checked;
    QSet<QString> unchecked;
    for (const ChooserEntry& entry : chooser.Entries()) {
        const QString text = FromStoreText(entry.text);
        if (entry.checked) {
            checked.append(text);
        } else {
            unchecked.insert(Folded(text));
        }
    }
    QList<int> rows;
    const QStringList listed = m_model->stringList();
    for (int row = 0; row < listed.size(); ++row) {
        if (unchecked.contains(Folded(listed[row]))) rows.append(row);
    }
    RemoveRows(rows);
    Add(checked, chooser.IncludeSynonyms());
}

void ListFieldControl::RemoveRows(QList<int> rows) {
    if (rows.isEmpty()) return;
    std::sort(rows.begin(), rows.end());
    QStringList kept = m_model->stringList();
    for (auto it = rows.crbegin(); it != rows.crend(); ++it) kept.removeAt(*it);
    SetValues(kept);
}

void ListFieldControl::ToThesaurus(const QStringList& texts) {
    std::vector<CVLProperty> thesaurus;
    static_cast<void>(m_store.GetUserList(m_id, thesaurus));
    std::set<std::string> known;
    for (const CVLProperty& value : thesaurus) known.insert(value.String());
    const std::size_t before = thesaurus.size();
    for (const QString& text : texts) {
        std::string stored = ToStoreText(text);
        if (!stored.empty() && known.insert(stored).second) thesaurus.emplace_back(std::move(stored));
    }
    if (thesaurus.size() == before) return;
    static_cast<void>(m_store.SetUserList(m_id, thesaurus));
    OfferChoices();
}

void ListFieldControl::OnDoubleClick(const QModelIndex& index) {
    if (!index.isValid()) return;
    if (QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier)) {
        RemoveRows({index.row()});
    } else {
        ToThesaurus({index.data().toString()});
    }
}

QStringList ListFieldControl::SelectedTexts() const {
    QStringList texts;
    for (const QModelIndex& index : m_widgets.list.selectionModel()->selectedRows()) {
        texts.append(index.data().toString());
    }
    return texts;
}

bool ListFieldControl::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &m_widgets.list && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete) {
        m_widgets.remove.click();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace vliptc::editors
