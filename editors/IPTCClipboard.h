#pragma once

// The Copy and Paste buttons of the IPTC description page: the whole record
// of the editor's store goes to the system clipboard and comes back from it.
//
// Copy offers two formats: plain text for people and other programs, and the
// private binary form (iptc/ClipboardFormat.h) under kIPTCMimeType, which
// every instance of the library names alike so records move between
// processes. Paste reads only the private form and replaces the store's whole
// field list with it. No message boxes: a paste without a record beeps; a
// record of another format version or a damaged one is ignored silently.

#include <functional>

#include <QObject>
#include <QPointer>

class CIPTC;
class QAbstractButton;
class QClipboard;

namespace vliptc::editors {

// The private clipboard format: a MIME type of our own whose name ends in
// "VLIPTCCLP". On Windows, Qt registers it as a clipboard format by this name.
inline constexpr char kIPTCMimeType[] = "application/x-lumatrix-velora-VLIPTCCLP";

class IPTCClipboard : public QObject {
    Q_OBJECT

public:
    // What the page does around a copy and a paste. Empty hooks do nothing;
    // an empty beep sounds the default beep (QApplication::beep).
    struct Hooks {
        std::function<void()> storeFromPage;  // the controls into the store, so what is on screen is copied
        std::function<void()> refreshPage;    // the store into the controls, after a paste
        std::function<void()> beep;
    };

    // The store must outlive this object. clipboard defaults to the
    // application's (QGuiApplication::clipboard()).
    IPTCClipboard(CIPTC& store, Hooks hooks, QObject* parent = nullptr, QClipboard* clipboard = nullptr);

    // Puts the store's record on the clipboard in both forms (the text alone
    // when the binary form cannot be built).
    void Copy();
    // Replaces the store's field list with the clipboard's record; true when
    // it did. Beeps when the clipboard holds no record.
    bool Paste();
    // Whether the clipboard holds data in the private format.
    bool CanPaste() const;

    // Wires the page's buttons: their clicks to Copy and Paste, and the Paste
    // button enabled exactly while the clipboard holds a record (kept up to
    // date as the clipboard changes). Either may be null.
    void AttachButtons(QAbstractButton* copyButton, QAbstractButton* pasteButton);

private:
    void UpdatePasteButton();

    CIPTC& m_store;
    Hooks m_hooks;
    QClipboard* m_clipboard;
    QPointer<QAbstractButton> m_pasteButton;
};

}  // namespace vliptc::editors
