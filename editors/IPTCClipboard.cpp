// Copy and Paste of the IPTC record through the system clipboard (see IPTCClipboard.h).

#include "editors/IPTCClipboard.h"

#include <new>
#include <span>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QMimeData>

#include "host/VLException.h"
#include "iptc/ClipboardFormat.h"
#include "iptc/IPTC.h"
#include "platform/Charset.h"

namespace vliptc::editors {

namespace {

QString MimeType() { return QString::fromLatin1(kIPTCMimeType); }

// The wait cursor for as long as a paste runs.
class WaitCursor {
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

void Run(const std::function<void()>& hook) {
    if (hook) hook();
}

}  // namespace

IPTCClipboard::IPTCClipboard(CIPTC& store, Hooks hooks, QObject* parent, QClipboard* clipboard)
    : QObject(parent),
      m_store(store),
      m_hooks(std::move(hooks)),
      m_clipboard(clipboard != nullptr ? clipboard : QGuiApplication::clipboard()) {}

void IPTCClipboard::Copy() {
    Run(m_hooks.storeFromPage);

    auto* data = new QMimeData;  // the clipboard takes it over
    // Stored text is Windows-1252; the clipboard's text is Unicode.
    data->setText(QString::fromStdString(platform::Cp1252ToUtf8(clipboard::EncodeText(m_store))));
    try {
        const std::vector<std::uint8_t> record = clipboard::EncodeBinary(m_store.Fields());
        data->setData(MimeType(), QByteArray(reinterpret_cast<const char*>(record.data()),
                                             static_cast<qsizetype>(record.size())));
    } catch (const CVLException&) {
        // A value the binary form cannot carry: the text is offered alone.
    } catch (const std::bad_alloc&) {
    }
    m_clipboard->setMimeData(data);
}

bool IPTCClipboard::Paste() {
    if (!CanPaste()) {
        if (m_hooks.beep) {
            m_hooks.beep();
        } else {
            QApplication::beep();
        }
        return false;
    }
    const WaitCursor wait;
    const QMimeData* data = m_clipboard->mimeData();
    if (data == nullptr) return false;
    const QByteArray bytes = data->data(MimeType());
    CIPTC::FieldList fields;
    const auto result =
        clipboard::DecodeBinary(std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                          static_cast<std::size_t>(bytes.size())),
                                fields);
    if (result.status != clipboard::DecodeStatus::kOk) return false;
    m_store.Fields() = std::move(fields);
    Run(m_hooks.refreshPage);
    return true;
}

bool IPTCClipboard::CanPaste() const {
    const QMimeData* data = m_clipboard->mimeData();
    return data != nullptr && data->hasFormat(MimeType());
}

void IPTCClipboard::AttachButtons(QAbstractButton* copyButton, QAbstractButton* pasteButton) {
    if (copyButton != nullptr) connect(copyButton, &QAbstractButton::clicked, this, [this] { Copy(); });
    if (pasteButton != nullptr) {
        m_pasteButton = pasteButton;
        connect(pasteButton, &QAbstractButton::clicked, this, [this] { static_cast<void>(Paste()); });
        connect(m_clipboard, &QClipboard::dataChanged, this, &IPTCClipboard::UpdatePasteButton);
        UpdatePasteButton();
    }
}

void IPTCClipboard::UpdatePasteButton() {
    if (m_pasteButton) m_pasteButton->setEnabled(CanPaste());
}

}  // namespace vliptc::editors
