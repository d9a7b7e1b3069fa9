#pragma once

// The base of the IPTC property sheet's pages. A page edits fields of the
// sheet's store: it fills its controls from the store when it is shown and
// puts them back when it is left and when the sheet is confirmed. Edits are
// bound to a field identifier, which also sets how much text they take.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <QWidget>

#include "editors/sheet/SheetContext.h"
#include "tags/IPTCINI.h"

class QAbstractButton;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;

namespace vliptc::editors {

class CPPIPTCBase : public QWidget {
    Q_OBJECT

public:
    explicit CPPIPTCBase(SheetContext& context, QWidget* parent = nullptr);
    ~CPPIPTCBase() override;

    // The page is shown: its controls are filled from the store.
    void OnSetActive();
    // The page is left, or the sheet confirmed: the controls go into the store.
    void OnKillActive();

protected:
    enum class Direction { kToControls, kToStore };

    // Moves every bound edit, then the page's other controls.
    void Exchange(Direction direction);
    virtual void ExchangeControls(Direction direction) = 0;

    CIPTC& Store() const noexcept { return m_context.store; }
    SheetContext& Context() const noexcept { return m_context; }

    // The tag descriptor of field id; false when the field has none.
    bool Descriptor(std::uint32_t id, CVLIPTCINI::STagInfo& tag) const;

    // Binds an edit (the edit of a combo box too) to field id. Its text limit
    // becomes the field's MAXLEN; a MAXLEN of 0 asks for the largest limit the
    // edit has, and a field without a descriptor keeps the edit's default.
    // A multi-line edit keeps its line ends as CR LF in the store, and counts
    // them so. The limit holds for what the user types: a longer value that
    // another program wrote is shown and kept whole.
    void Bind(QLineEdit& edit, std::uint32_t id);
    void Bind(QPlainTextEdit& edit, std::uint32_t id);
    // The text limit alone, for an edit whose field moves some other way.
    void LimitText(QLineEdit& edit, std::uint32_t id) const;

    // The first value of field id in its text form, "" when it has none.
    std::string FieldValue(std::uint32_t id) const;
    // Text becomes the field's only value; empty text leaves it without values.
    void SetFieldValue(std::uint32_t id, const std::string& text);

    // A "Manage Thesaurus" button: opens the thesaurus manager on field id's
    // user list. An entry chosen there (double-click) is handed to chosen;
    // afterwards offering, if given, offers the list as the manager left it.
    void ConnectThesaurus(QAbstractButton& button, std::uint32_t id,
                          std::function<void(const QString&)> chosen, QComboBox* offering = nullptr);

    // Asks the user string stringId.
    Answer Ask(unsigned stringId, Buttons buttons, Icon icon) const;

private:
    struct Binding {
        QWidget* edit;  // QLineEdit or QPlainTextEdit
        std::uint32_t id;
        int limit;  // what the user may type; 0: the edit's own
    };

    // The limit of a single-line edit of field id; 0 when it has no descriptor.
    int LineLimit(std::uint32_t id) const;

    SheetContext& m_context;
    std::vector<Binding> m_bindings;
    bool m_filling = false;  // the controls are being filled from the store
};

}  // namespace vliptc::editors
