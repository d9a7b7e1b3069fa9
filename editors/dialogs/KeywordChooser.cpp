// "Choose Elements" (see KeywordChooser.h).

#include "editors/dialogs/KeywordChooser.h"

#include "editors/Settings.h"
#include "editors/StringTable.h"
#include "editors/WindowPlacement.h"
#include "editors/dialogs/CheckListModel.h"
#include "ui_ChooseElements.h"

namespace vliptc::editors {

namespace {
// The help text above the list.
constexpr unsigned kChooserHelpString = 5000;
}  // namespace

struct KeywordChooser::Impl {
    Impl(std::vector<ChooserEntry> list, Profile& settings)
        : entries(std::move(list)), model(entries), profile(settings) {}

    Ui::ChooseElements ui;
    std::vector<ChooserEntry> entries;
    CheckListModel model;
    Profile& profile;
    bool includeSynonyms = false;
};

KeywordChooser::KeywordChooser(std::vector<ChooserEntry> entries, Profile& profile, QWidget* parent)
    : ResizableDialog(parent), m_impl(std::make_unique<Impl>(std::move(entries), profile)) {
    m_impl->ui.setupUi(this);
    m_impl->ui.help->setText(QString::fromUtf8(StringText(kChooserHelpString)));
    m_impl->ui.list->setModel(&m_impl->model);
    m_impl->includeSynonyms = profile.LoadAddSynonyms();
    m_impl->ui.includeSynonyms->setChecked(m_impl->includeSynonyms);
    SetPlacementEntry(WindowPlacement(profile), kSectionIPTCEditor, kValueWP);
}

KeywordChooser::~KeywordChooser() = default;

const std::vector<ChooserEntry>& KeywordChooser::Entries() const noexcept { return m_impl->entries; }

bool KeywordChooser::IncludeSynonyms() const noexcept { return m_impl->includeSynonyms; }

void KeywordChooser::accept() {
    m_impl->model.Record(m_impl->entries);
    m_impl->includeSynonyms = m_impl->ui.includeSynonyms->isChecked();
    static_cast<void>(m_impl->profile.SaveAddSynonyms(m_impl->includeSynonyms));
    ResizableDialog::accept();
}

}  // namespace vliptc::editors
