// "Synonym Editor" (see SynonymEditor.h).

#include "editors/dialogs/SynonymEditor.h"

#include <QGuiApplication>
#include <QShortcut>

#include "editors/StringTable.h"
#include "editors/dialogs/ReturnKey.h"
#include "editors/dialogs/SynonymTreeModel.h"
#include "iptc/IPTC.h"
#include "ui_SynonymEditor.h"

namespace vliptc::editors {

namespace {
constexpr unsigned kLoadingString = 302;  // "Loading synonym list..."
}  // namespace

struct SynonymEditor::Impl {
    Impl(CIPTC& iptc, std::uint32_t id) : store(iptc), fieldId(id) {}

    Ui::SynonymEditor ui;
    CIPTC& store;
    std::uint32_t fieldId;
    SynonymTreeModel model;
    bool loadQueued = false;
    bool loaded = false;

    QModelIndex Current() const { return ui.tree->currentIndex(); }

    void Load() {
        // Let the window show the loading note before the work starts.
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        CVLIPTCINI::SynonymList list;
        static_cast<void>(store.GetSynonymList(fieldId, list));
        model.SetList(list);
        QGuiApplication::restoreOverrideCursor();
        ui.status->hide();
        ui.tree->setEnabled(true);
        loaded = true;
    }

    void StartEditing(const QModelIndex& index) {
        if (!index.isValid()) return;
        ui.tree->setCurrentIndex(index);
        ui.tree->scrollTo(index);
        ui.tree->edit(index);
    }
    // "&Add": a keyword after the current one (or at the end).
    void AddKeyword() {
        QModelIndex current = Current();
        if (current.parent().isValid()) current = current.parent();
        StartEditing(model.InsertEmptyRow({}, current.isValid() ? current.row() + 1 : model.rowCount()));
    }
    // <Ins>: after the current position.
    void Insert() {
        const QModelIndex current = Current();
        if (!current.isValid()) return AddKeyword();
        if (current.parent().isValid())
            return StartEditing(model.InsertEmptyRow(current.parent(), current.row() + 1));
        ui.tree->expand(current);
        StartEditing(model.InsertEmptyRow(current, 0));
    }
    void Delete() {
        const QModelIndex current = Current();
        if (current.isValid()) model.removeRows(current.row(), 1, current.parent());
    }
    void Go() {
        const QModelIndex found = model.Find(ui.search->text(), Current());
        if (!found.isValid()) return;
        ui.tree->setCurrentIndex(found);
        ui.tree->scrollTo(found);
    }
    void DropIfEmpty(const QPersistentModelIndex& edited) {
        if (edited.isValid() && edited.data().toString().isEmpty()) {
            model.removeRows(edited.row(), 1, edited.parent());
        }
    }
};

SynonymEditor::SynonymEditor(CIPTC& store, std::uint32_t fieldId, QWidget* parent)
    : QDialog(parent), m_impl(std::make_unique<Impl>(store, fieldId)) {
    Impl& d = *m_impl;
    d.ui.setupUi(this);
    d.ui.status->setText(QString::fromUtf8(StringText(kLoadingString)));
    d.ui.tree->setModel(&d.model);
    d.ui.tree->setEnabled(false);

    connect(d.ui.add, &QPushButton::clicked, this, [&d] { d.AddKeyword(); });
    connect(d.ui.edit, &QPushButton::clicked, this, [&d] { d.StartEditing(d.Current()); });
    connect(d.ui.remove, &QPushButton::clicked, this, [&d] { d.Delete(); });
    connect(d.ui.expand, &QPushButton::clicked, d.ui.tree, &QTreeView::expandAll);
    connect(d.ui.collapse, &QPushButton::clicked, d.ui.tree, &QTreeView::collapseAll);
    connect(d.ui.go, &QPushButton::clicked, this, [&d] { d.Go(); });
    OnReturnKey(*d.ui.search, [&d] { d.Go(); });
    // <F2> is the tree's own edit key.
    auto* insert =
        new QShortcut(QKeySequence(Qt::Key_Insert), d.ui.tree, nullptr, nullptr, Qt::WidgetShortcut);
    connect(insert, &QShortcut::activated, this, [&d] { d.Insert(); });
    auto* remove =
        new QShortcut(QKeySequence(Qt::Key_Delete), d.ui.tree, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, [&d] { d.Delete(); });
    connect(d.ui.tree->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, [this] {
        // After the view has let go of the editor.
        QMetaObject::invokeMethod(
            this, [this, edited = QPersistentModelIndex(m_impl->Current())] { m_impl->DropIfEmpty(edited); },
            Qt::QueuedConnection);
    });
}

SynonymEditor::~SynonymEditor() = default;

bool SynonymEditor::IsLoaded() const noexcept { return m_impl->loaded; }

void SynonymEditor::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_impl->loadQueued) return;
    m_impl->loadQueued = true;
    QMetaObject::invokeMethod(
        this, [this] { m_impl->Load(); }, Qt::QueuedConnection);
}

void SynonymEditor::accept() {
    if (m_impl->loaded)
        static_cast<void>(m_impl->store.SetSynonymList(m_impl->fieldId, m_impl->model.List()));
    QDialog::accept();
}

}  // namespace vliptc::editors
