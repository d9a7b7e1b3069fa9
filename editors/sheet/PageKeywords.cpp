#include "editors/sheet/PageKeywords.h"

#include <QComboBox>
#include <QLineEdit>

#include "editors/sheet/DateTimeField.h"
#include "editors/sheet/FixedChoices.h"
#include "editors/sheet/ListField.h"
#include "editors/sheet/UserListChoices.h"
#include "iptc/IPTC.h"
#include "ui_PageImageInformation.h"

namespace vliptc::editors {

namespace {

// Numbers of the string table.
constexpr unsigned kAskDropRepeatedKeywords = 105;
constexpr unsigned kAskDropRepeatedCategories = 106;

// IPTC datasets of the page.
constexpr std::uint32_t kEditStatus = 7;
constexpr std::uint32_t kPriority = 10;
constexpr std::uint32_t kCategory = 15;
constexpr std::uint32_t kSupplementalCategories = 20;
constexpr std::uint32_t kFixtureIdentifier = 22;
constexpr std::uint32_t kKeywords = 25;
constexpr std::uint32_t kReleaseDate = 30;
constexpr std::uint32_t kReleaseTime = 35;
constexpr std::uint32_t kDateCreated = 55;
constexpr std::uint32_t kTimeCreated = 60;
constexpr std::uint32_t kOriginatingProgram = 65;
constexpr std::uint32_t kObjectCycle = 75;
constexpr std::uint32_t kCity = 90;
constexpr std::uint32_t kProvinceState = 95;
constexpr std::uint32_t kCountryCode = 100;
constexpr std::uint32_t kCountry = 101;
constexpr std::uint32_t kTransmissionReference = 103;

template <std::size_t N>
void Fill(QComboBox& combo, const std::array<const char*, N>& entries) {
    for (const char* entry : entries) combo.addItem(QString::fromLatin1(entry));
}

}  // namespace

CPPIPTCKeywords::CPPIPTCKeywords(SheetContext& context, QWidget* parent)
    : CPPIPTCBase(context, parent), m_ui(std::make_unique<Ui::PageImageInformation>()) {
    m_ui->setupUi(this);
    Ui::PageImageInformation& ui = *m_ui;

    // Combo boxes of one value, offering the field's thesaurus. Country code
    // and country have no thesaurus button; they take typed text as well.
    const struct {
        QComboBox* combo;
        QAbstractButton* thesaurus;
        std::uint32_t id;
    } combos[] = {
        {ui.categoryCombo, ui.categoryThesaurus, kCategory},
        {ui.editStatusCombo, ui.editStatusThesaurus, kEditStatus},
        {ui.originatingProgramCombo, ui.originatingProgramThesaurus, kOriginatingProgram},
        {ui.fixtureIdentifierCombo, ui.fixtureIdentifierThesaurus, kFixtureIdentifier},
        {ui.cityCombo, ui.cityThesaurus, kCity},
        {ui.provinceStateCombo, ui.provinceStateThesaurus, kProvinceState},
        {ui.countryCodeCombo, nullptr, kCountryCode},
        {ui.countryCombo, nullptr, kCountry},
        {ui.transmissionReferenceCombo, ui.transmissionReferenceThesaurus, kTransmissionReference},
    };
    for (const auto& field : combos) {
        OfferUserList(Store(), field.id, *field.combo);
        Bind(*field.combo->lineEdit(), field.id);
        if (field.thesaurus == nullptr) continue;
        ConnectThesaurus(
            *field.thesaurus, field.id,
            [combo = field.combo](const QString& entry) { combo->setEditText(entry); }, field.combo);
    }

    const auto list = [this](std::uint32_t id, unsigned question, ListFieldWidgets widgets,
                             QAbstractButton& thesaurus) {
        auto* control = new ListFieldControl(
            Store(), id, widgets, Context().profile,
            [this, question] { return Ask(question, Buttons::kYesNo, Icon::kQuestion) != Answer::kNo; },
            *this);
        ConnectThesaurus(
            thesaurus, id, [control](const QString& entry) { control->AddPicked(entry); }, &widgets.combo);
        LimitText(*widgets.combo.lineEdit(), id);
        return control;
    };
    m_categories = list(
        kSupplementalCategories, kAskDropRepeatedCategories,
        {*ui.categoriesCombo, *ui.categoriesList, *ui.categoriesChooseButton, *ui.categoriesToThesaurusButton,
         *ui.categoriesRemoveButton, *ui.categoriesAllToThesaurusButton},
        *ui.categoriesThesaurus);
    m_keywords =
        list(kKeywords, kAskDropRepeatedKeywords,
             {*ui.keywordsCombo, *ui.keywordsList, *ui.keywordsChooseButton, *ui.keywordsToThesaurusButton,
              *ui.keywordsRemoveButton, *ui.keywordsAllToThesaurusButton},
             *ui.keywordsThesaurus);

    Fill(*ui.priorityCombo, kPriorityEntries);
    Fill(*ui.objectCycleCombo, kObjectCycleEntries);

    m_created = new DateTimeField(kDateCreated, kTimeCreated,
                                  {*ui.createdDateSet, *ui.createdDate, *ui.createdDateMenu,
                                   *ui.createdTimeSet, *ui.createdTime, *ui.createdTimeMenu},
                                  DatePresets::kPast, this);
    m_release = new DateTimeField(kReleaseDate, kReleaseTime,
                                  {*ui.releaseDateSet, *ui.releaseDate, *ui.releaseDateMenu,
                                   *ui.releaseTimeSet, *ui.releaseTime, *ui.releaseTimeMenu},
                                  DatePresets::kFuture, this);
}

CPPIPTCKeywords::~CPPIPTCKeywords() = default;

void CPPIPTCKeywords::ExchangeControls(Direction direction) {
    if (direction == Direction::kToControls) {
        m_categories->Load();
        m_keywords->Load();
        m_ui->priorityCombo->setCurrentIndex(PriorityEntry(FieldValue(kPriority)));
        m_ui->objectCycleCombo->setCurrentIndex(ObjectCycleEntry(FieldValue(kObjectCycle)));
        m_created->Load(Store());
        m_release->Load(Store());
        return;
    }
    m_categories->Save();
    m_keywords->Save();
    SetFieldValue(kPriority, PriorityValue(m_ui->priorityCombo->currentIndex()));
    SetFieldValue(kObjectCycle, ObjectCycleValue(m_ui->objectCycleCombo->currentIndex()));
    m_created->Save(Store());
    m_release->Save(Store());
}

}  // namespace vliptc::editors
