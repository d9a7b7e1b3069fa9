#pragma once

// A field of many values on the image-information page (keywords,
// supplemental categories): a combo box that offers the field's thesaurus, a
// list of the record's values, and buttons around it.
//
// A value typed into the combo box (Enter) or picked from its list, chosen
// in the thesaurus manager or checked in the chooser is appended to the list
// unless the list already holds it (compared without regard to case). With
// synonyms, the value's synonyms follow it, each unless already listed.
// Going back into the store, the list is read from top to bottom without
// empty entries; at the first value that repeats an earlier one the user is
// asked once whether to drop repeats, and unless the answer is No every later
// repeat is dropped.

#include <cstdint>
#include <functional>

#include <QObject>
#include <QSet>
#include <QStringList>

class CIPTC;
class QAbstractButton;
class QComboBox;
class QListView;
class QModelIndex;
class QStringListModel;
class QWidget;

namespace vliptc::editors {

class Profile;

struct ListFieldWidgets {
    QComboBox& combo;
    QListView& list;
    QAbstractButton& choose;          // "Select Keywords" / "Select Categories"
    QAbstractButton& toThesaurus;     // the selected entries into the thesaurus
    QAbstractButton& remove;          // the selected entries out of the list
    QAbstractButton& allToThesaurus;  // every entry into the thesaurus
};

class ListFieldControl : public QObject {
    Q_OBJECT

public:
    // removeRepeats: asks whether repeats are to be dropped (true unless the
    // user said No). The widgets belong to page, which also owns this object.
    ListFieldControl(CIPTC& store, std::uint32_t id, ListFieldWidgets widgets, Profile& profile,
                     std::function<bool()> removeRepeats, QWidget& page);

    void Load();
    void Save();

    // Appends texts as the header describes; withSynonyms adds their synonyms.
    void Add(const QStringList& texts, bool withSynonyms);
    // Adds a value as typed or picked, with synonyms when the user asked the
    // chooser for them last time.
    void AddPicked(const QString& text);
    // Refreshes the choices of the combo box from the thesaurus.
    void OfferChoices();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Choose();
    void RemoveRows(QList<int> rows);
    void ToThesaurus(const QStringList& texts);
    void OnDoubleClick(const QModelIndex& index);
    QStringList SelectedTexts() const;
    void SetValues(const QStringList& values);

    CIPTC& m_store;
    std::uint32_t m_id;
    ListFieldWidgets m_widgets;
    Profile& m_profile;
    std::function<bool()> m_removeRepeats;
    QWidget& m_page;
    QStringListModel* m_model;
    QSet<QString> m_listed;  // case-folded texts of the list's entries
};

}  // namespace vliptc::editors
