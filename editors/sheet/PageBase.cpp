#include "editors/sheet/PageBase.h"

#include <algorithm>
#include <optional>

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>

#include "editors/StringTable.h"
#include "editors/dialogs/ThesaurusManager.h"
#include "editors/internal/StoreText.h"
#include "editors/sheet/UserListChoices.h"
#include "iptc/IPTC.h"

namespace vliptc::editors {

namespace {

// The most a single-line edit takes.
constexpr int kLargestLineEditLimit = 32767;

// The length text has in the store, where a line end is CR LF.
qsizetype StoredLength(const QString& text) { return text.size() + text.count(QLatin1Char('\n')); }

// Multi-line text as the store keeps it, and back. A lone CR (as Macintosh
// programs end lines) also starts a new line on screen.
std::string ToStoreLines(QString text) {
    text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return ToStoreText(text);
}

QString FromStoreLines(const std::string& stored) {
    QString text = FromStoreText(stored);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

// A multi-line edit has no text limit of its own: what is typed or pasted
// beyond the limit is taken out again, from the end of the insertion. Text
// put in while filling is left whole.
void LimitLength(QPlainTextEdit& edit, qsizetype limit, const bool& filling) {
    QTextDocument* document = edit.document();
    QObject::connect(document, &QTextDocument::contentsChange, &edit,
                     [document, limit, &filling](int position, int /*removed*/, int added) {
                         if (filling || added <= 0) return;
                         qsizetype excess = StoredLength(document->toPlainText()) - limit;
                         if (excess <= 0) return;
                         int end = position + added;
                         int start = end;
                         while (excess > 0 && start > position) {
                             --start;
                             excess -= document->characterAt(start) == QChar::ParagraphSeparator ? 2 : 1;
                         }
                         QTextCursor cursor(document);
                         cursor.setPosition(start);
                         cursor.setPosition(end, QTextCursor::KeepAnchor);
                         cursor.removeSelectedText();
                     });
}

}  // namespace

CPPIPTCBase::CPPIPTCBase(SheetContext& context, QWidget* parent) : QWidget(parent), m_context(context) {}

CPPIPTCBase::~CPPIPTCBase() = default;

void CPPIPTCBase::OnSetActive() { Exchange(Direction::kToControls); }

void CPPIPTCBase::OnKillActive() { Exchange(Direction::kToStore); }

void CPPIPTCBase::Exchange(Direction direction) {
    m_filling = direction == Direction::kToControls;
    for (const Binding& binding : m_bindings) {
        if (auto* line = qobject_cast<QLineEdit*>(binding.edit)) {
            if (direction == Direction::kToControls) {
                // A single-line edit cannot hold more than its limit: it is
                // raised to fit a longer stored value.
                const QString text = FromStoreText(FieldValue(binding.id));
                if (binding.limit > 0) {
                    line->setMaxLength(static_cast<int>(std::max<qsizetype>(binding.limit, text.size())));
                }
                line->setText(text);
            } else {
                SetFieldValue(binding.id, ToStoreText(line->text()));
            }
        } else if (auto* text = qobject_cast<QPlainTextEdit*>(binding.edit)) {
            if (direction == Direction::kToControls) {
                text->setPlainText(FromStoreLines(FieldValue(binding.id)));
            } else {
                SetFieldValue(binding.id, ToStoreLines(text->toPlainText()));
            }
        }
    }
    m_filling = false;
    ExchangeControls(direction);
}

bool CPPIPTCBase::Descriptor(std::uint32_t id, CVLIPTCINI::STagInfo& tag) const {
    return Store().GetDescriptor(id, tag);
}

int CPPIPTCBase::LineLimit(std::uint32_t id) const {
    CVLIPTCINI::STagInfo tag;
    if (!Descriptor(id, tag)) return 0;
    return tag.nMaxLen > 0 ? std::min(tag.nMaxLen, kLargestLineEditLimit) : kLargestLineEditLimit;
}

void CPPIPTCBase::Bind(QLineEdit& edit, std::uint32_t id) {
    m_bindings.push_back({&edit, id, LineLimit(id)});
    LimitText(edit, id);
}

void CPPIPTCBase::LimitText(QLineEdit& edit, std::uint32_t id) const {
    if (const int limit = LineLimit(id); limit > 0) edit.setMaxLength(limit);
}

void CPPIPTCBase::Bind(QPlainTextEdit& edit, std::uint32_t id) {
    CVLIPTCINI::STagInfo tag;
    const int limit = Descriptor(id, tag) ? std::max(tag.nMaxLen, 0) : 0;
    m_bindings.push_back({&edit, id, limit});
    if (limit > 0) LimitLength(edit, limit, m_filling);
}

std::string CPPIPTCBase::FieldValue(std::uint32_t id) const {
    std::vector<CVLProperty> values;
    if (!Store().GetField(id, values) || values.empty()) return {};
    return values.front().String();
}

void CPPIPTCBase::SetFieldValue(std::uint32_t id, const std::string& text) {
    if (text.empty()) {
        Store().SetField(id, std::vector<CVLProperty>{});
    } else {
        Store().SetField(id, std::vector<CVLProperty>{CVLProperty(text)});
    }
}

void CPPIPTCBase::ConnectThesaurus(QAbstractButton& button, std::uint32_t id,
                                   std::function<void(const QString&)> chosen, QComboBox* offering) {
    connect(&button, &QAbstractButton::clicked, this, [this, id, chosen = std::move(chosen), offering] {
        std::optional<std::string> entry;
        {
            ThesaurusManager manager(Store(), id, this);
            manager.exec();
            entry = manager.ChosenEntry();
        }
        if (offering != nullptr) OfferUserList(Store(), id, *offering);
        if (entry) chosen(FromStoreText(*entry));
    });
}

Answer CPPIPTCBase::Ask(unsigned stringId, Buttons buttons, Icon icon) const {
    return m_context.ask(stringId, std::string(StringText(stringId)), buttons, icon);
}

}  // namespace vliptc::editors
