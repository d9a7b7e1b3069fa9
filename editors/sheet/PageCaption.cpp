#include "editors/sheet/PageCaption.h"

#include <type_traits>

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "editors/IPTCClipboard.h"
#include "editors/StringTable.h"
#include "editors/internal/StoreText.h"
#include "host/VLEngine.h"
#include "iptc/IPTC.h"
#include "ui_PageDescription.h"

namespace vliptc::editors {

namespace {

// Numbers of the string table.
constexpr unsigned kAskDeletePreset = 102;
constexpr unsigned kAskStorePreset = 104;
constexpr unsigned kFilesInSelection = 204;
constexpr unsigned kWorkingOnFile = 205;

// IPTC datasets of the page.
constexpr std::uint32_t kObjectName = 5;
constexpr std::uint32_t kSpecialInstructions = 40;
constexpr std::uint32_t kByline = 80;
constexpr std::uint32_t kBylineTitle = 85;
constexpr std::uint32_t kHeadline = 105;
constexpr std::uint32_t kCredit = 110;
constexpr std::uint32_t kSource = 115;
constexpr std::uint32_t kCopyright = 116;
constexpr std::uint32_t kCaption = 120;
constexpr std::uint32_t kCaptionWriter = 122;

}  // namespace

CPPIPTCCaption::CPPIPTCCaption(SheetContext& context, QWidget* parent)
    : CPPIPTCBase(context, parent), m_ui(std::make_unique<Ui::PageDescription>()) {
    m_ui->setupUi(this);

    // Each edit with its thesaurus button, whose chosen entry replaces the text.
    const auto bind = [this](auto& edit, QAbstractButton& thesaurus, std::uint32_t id) {
        Bind(edit, id);
        ConnectThesaurus(thesaurus, id, [&edit](const QString& entry) {
            if constexpr (std::is_same_v<std::remove_reference_t<decltype(edit)>, QPlainTextEdit>) {
                edit.setPlainText(entry);
            } else {
                edit.setText(entry);
            }
        });
    };
    Ui::PageDescription& ui = *m_ui;
    bind(*ui.captionEdit, *ui.captionThesaurus, kCaption);
    bind(*ui.specialInstructionsEdit, *ui.specialInstructionsThesaurus, kSpecialInstructions);
    bind(*ui.objectNameEdit, *ui.objectNameThesaurus, kObjectName);
    bind(*ui.headlineEdit, *ui.headlineThesaurus, kHeadline);
    bind(*ui.bylineEdit, *ui.bylineThesaurus, kByline);
    bind(*ui.bylineTitleEdit, *ui.bylineTitleThesaurus, kBylineTitle);
    bind(*ui.creditEdit, *ui.creditThesaurus, kCredit);
    bind(*ui.copyrightEdit, *ui.copyrightThesaurus, kCopyright);
    bind(*ui.captionWriterEdit, *ui.captionWriterThesaurus, kCaptionWriter);
    bind(*ui.sourceEdit, *ui.sourceThesaurus, kSource);

    m_ui->templateFileText->setText(TemplateFileText());
    for (const CIPTC::STemplate& preset : Store().Templates()) {
        m_ui->presetsCombo->addItem(FromStoreText(preset.strName));
    }
    m_ui->presetsCombo->setCurrentIndex(-1);
    connect(m_ui->loadPresetButton, &QAbstractButton::clicked, this, &CPPIPTCCaption::LoadPreset);
    connect(m_ui->storePresetButton, &QAbstractButton::clicked, this, &CPPIPTCCaption::StorePreset);
    connect(m_ui->deletePresetButton, &QAbstractButton::clicked, this, &CPPIPTCCaption::DeletePreset);

    connect(m_ui->macToWindowsButton, &QAbstractButton::clicked, this,
            [this] { ConvertText(platform::MacRomanToWindows1252); });
    connect(m_ui->windowsToMacButton, &QAbstractButton::clicked, this,
            [this] { ConvertText(platform::Windows1252ToMacRoman); });

    IPTCClipboard::Hooks hooks;
    hooks.storeFromPage = [this] { Exchange(Direction::kToStore); };
    hooks.refreshPage = [this] { Exchange(Direction::kToControls); };
    m_clipboard = new IPTCClipboard(Store(), std::move(hooks), this);
    m_clipboard->AttachButtons(m_ui->copyButton, m_ui->pasteButton);
}

CPPIPTCCaption::~CPPIPTCCaption() = default;

// Every control of the page is a bound edit.
void CPPIPTCCaption::ExchangeControls(Direction /*direction*/) {}

QString CPPIPTCCaption::TemplateFileText() const {
    std::string uri;
    if (CVLEngine* engine = Context().engine) {
        CVLURI address;
        if (engine->GetFileURI(Context().templateId, address) == kVLSuccess) uri = address.AsString();
    }
    const std::size_t files = Context().validFiles.size();
    const std::string text = files == 1
                                 ? FormatText(StringText(kWorkingOnFile), {uri})
                                 : FormatText(StringText(kFilesInSelection), {std::to_string(files), uri});
    return QString::fromStdString(text);
}

void CPPIPTCCaption::LoadPreset() {
    if (Store().LoadTemplate(ToStoreText(m_ui->presetsCombo->currentText()))) {
        Exchange(Direction::kToControls);
    }
}

void CPPIPTCCaption::StorePreset() {
    Exchange(Direction::kToStore);
    const QString name = m_ui->presetsCombo->currentText().trimmed();
    if (name.isEmpty()) return;
    // Asked for a new name as for an existing one.
    if (Ask(kAskStorePreset, Buttons::kYesNo, Icon::kQuestion) != Answer::kYes) return;
    // The template stays in memory when its file cannot be written; the
    // next save of the store writes it.
    static_cast<void>(Store().StoreTemplate(ToStoreText(name)));
    int index = m_ui->presetsCombo->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) {
        m_ui->presetsCombo->addItem(name);
        index = m_ui->presetsCombo->count() - 1;
    }
    m_ui->presetsCombo->setCurrentIndex(index);
}

void CPPIPTCCaption::DeletePreset() {
    const QString name = m_ui->presetsCombo->currentText();
    if (name.isEmpty()) return;
    if (Ask(kAskDeletePreset, Buttons::kYesNo, Icon::kQuestion) != Answer::kYes) return;
    static_cast<void>(Store().DeleteTemplate(ToStoreText(name)));
    const int index = m_ui->presetsCombo->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0) m_ui->presetsCombo->removeItem(index);
    m_ui->presetsCombo->setCurrentIndex(-1);
    m_ui->presetsCombo->clearEditText();
}

void CPPIPTCCaption::ConvertText(std::string (*convert)(std::string_view)) {
    Exchange(Direction::kToStore);
    for (CIPTC::SIPTCItem& item : Store().Fields()) {
        for (CVLProperty& value : item.vValues) {
            if (value.GetKind() == CVLProperty::kText) value.SetString(convert(value.Bytes()));
        }
    }
    Exchange(Direction::kToControls);
}

}  // namespace vliptc::editors
