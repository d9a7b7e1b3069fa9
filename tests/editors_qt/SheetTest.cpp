// The IPTC property sheet driven through its real widgets: what is typed
// reaches the store on OK and nothing on Cancel, the list rules and their
// question, presets, the fixed lists, dates, the character-set conversion,
// the options page, the placement; and the driver running the sheet on a file.

#include <cstdlib>
#include <ctime>
#include <deque>
#include <memory>

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimeEdit>
#include <QToolButton>

#include "editors/Settings.h"
#include "editors/VLIPTCEditor.h"
#include "editors/qt/QtEditorUI.h"
#include "editors/sheet/IPTCPropertySheet.h"
#include "host/ReferenceEngine.h"
#include "iptc/IPTC.h"
#include "tests/editors_qt/QtTestSupport.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using namespace vliptc::editors;

// Two fields outside the standard, as a user's definitions add them.
constexpr char kUserDefinitions[] =
    "{\nID\t200\nSTANDARD\t0\nEXTVENDOR\tExample Press\nNAME\tJob Code\nDESC\tThe job of the "
    "shoot\nMAXLEN\t8\n}\n"
    "{\nID\t201\nSTANDARD\t0\nEXTVENDOR\tExample Press\nNAME\tDesk\n}\n"
    "{\nID\t202\nSTANDARD\t0\nEXTVENDOR\tExample Press\nNAME\tDeadline\nTYPE\tDATE\n}\n";

enum Page { kDescription = 0, kImageInformation = 1, kOtherFields = 2 };

class SheetTest : public ::testing::Test {
protected:
    TempDir dir;
    QSettings settings{QString::fromStdString(dir.File("profile.ini")), QSettings::IniFormat};
    Profile profile{settings};
    CIPTC store;
    std::vector<std::uint32_t> valid{1};
    std::deque<Answer> answers;  // the user's answers, in turn; No when they run out
    std::vector<unsigned> asked;
    std::unique_ptr<CIPTCPropertySheet> sheet;

    void SetUp() override {
        WriteFile(dir.File("vliptcusr.ipt"), kUserDefinitions);
        ASSERT_EQ(store.InitializeFromText(ReadFile("resources/vliptctags.ipt"), dir.Path()),
                  CIPTC::kSuccess);
    }

    CIPTCPropertySheet& Open(CVLEngine* engine = nullptr, std::uint32_t templateId = 1,
                             EditModes modes = {}) {
        const SheetRequest request{store, engine, valid, templateId, "Velora IPTC Editor"};
        sheet = std::make_unique<CIPTCPropertySheet>(request, modes, profile,
                                                     [this](unsigned id, const std::string&, Buttons, Icon) {
                                                         asked.push_back(id);
                                                         if (answers.empty()) return Answer::kNo;
                                                         const Answer answer = answers.front();
                                                         answers.pop_front();
                                                         return answer;
                                                     });
        sheet->show();
        return *sheet;
    }

    template <class Widget>
    Widget& Child(const char* name) {
        return test::Child<Widget>(*sheet, name);
    }
    QLineEdit& ComboEdit(const char* name) { return *Child<QComboBox>(name).lineEdit(); }
    void ShowPage(Page page) { Child<QTabWidget>("pages").setCurrentIndex(page); }
    void Click(const char* name) { Child<QAbstractButton>(name).click(); }
    void TypeAndEnter(const char* combo, const char* text) {
        QTest::keyClicks(&ComboEdit(combo), QString::fromUtf8(text));
        QTest::keyClick(&ComboEdit(combo), Qt::Key_Return);
    }
};

TEST_F(SheetTest, TypedTextIsWhatTheStoreHoldsAfterOk) {
    store.SetField(105, Texts({"Old headline"}));
    const std::string longCredit(40, 'c');  // Credit holds 32; another program wrote more
    store.SetField(110, std::vector<CVLProperty>{CVLProperty(longCredit)});
    Open();
    const std::string longName(70, 'n');  // Object Name holds 64 bytes
    QTest::keyClicks(&Child<QLineEdit>("objectNameEdit"), QString::fromStdString(longName));
    QTest::keyClicks(&Child<QLineEdit>("bylineEdit"), QStringLiteral("Åse Ødegård"));
    Child<QLineEdit>("headlineEdit").clear();
    QTest::keyClicks(&Child<QPlainTextEdit>("captionEdit"), QStringLiteral("Boats"));
    QTest::keyClick(&Child<QPlainTextEdit>("captionEdit"), Qt::Key_Return);
    QTest::keyClicks(&Child<QPlainTextEdit>("captionEdit"), QStringLiteral("at dusk"));
    // Special Instructions holds 256 bytes, a line end counting as CR LF.
    Child<QPlainTextEdit>("specialInstructionsEdit")
        .insertPlainText(QString(120, 'x') + '\n' + QString(200, 'y'));
    ShowPage(kImageInformation);
    QTest::keyClicks(&ComboEdit("cityCombo"), QStringLiteral("Oslo"));
    QTest::keyClicks(&ComboEdit("categoryCombo"), QStringLiteral("SPORT"));  // Category holds 3
    TypeAndEnter("keywordsCombo", std::string(70, 'k').c_str());             // a keyword 64
    ShowPage(kOtherFields);
    Child<QTableWidget>("fieldsTable").item(0, 2)->setText(QStringLiteral("J-17"));
    sheet->accept();

    EXPECT_EQ(sheet->result(), QDialog::Accepted);
    const struct {
        std::uint32_t id;
        std::vector<std::string> values;
    } expected[] = {
        {5, {std::string(64, 'n')}},
        {80,
         {"\xC5se \xD8"
          "deg\xE5rd"}},  // Windows-1252
        {105, {}},
        {110, {longCredit}},  // shown and kept whole
        {120, {"Boats\r\nat dusk"}},
        {40, {std::string(120, 'x') + "\r\n" + std::string(134, 'y')}},
        {90, {"Oslo"}},
        {15, {"SPO"}},
        {25, {std::string(64, 'k')}},
        {200, {"J-17"}},
        {201, {}},
    };
    for (const auto& field : expected) EXPECT_EQ(Stored(store, field.id), field.values) << field.id;
}

TEST_F(SheetTest, CancelPutsTheRecordBack) {
    store.SetField(5, Texts({"Harbour"}));
    const CIPTC::FieldList before = store.Fields();
    Open();
    Child<QLineEdit>("objectNameEdit").setText(QStringLiteral("Changed"));
    ShowPage(kImageInformation);  // the description page goes into the store
    ASSERT_EQ(Stored(store, 5), std::vector<std::string>{"Changed"});
    QTest::keyClicks(&ComboEdit("cityCombo"), QStringLiteral("Oslo"));
    sheet->reject();
    EXPECT_EQ(sheet->result(), QDialog::Rejected);
    EXPECT_TRUE(
        std::equal(store.Fields().begin(), store.Fields().end(), before.begin(), before.end(),
                   [](const auto& a, const auto& b) { return a.nID == b.nID && a.vValues == b.vValues; }));
}

TEST_F(SheetTest, ListsAddOnceWhateverTheCaseAndBringSynonyms) {
    store.SetField(25, Texts({"Sun", "harbour"}));
    CVLIPTCINI::SynonymList synonyms{{CVLProperty("sea"), Texts({"ocean", "Sun"})}};
    ASSERT_TRUE(store.SetSynonymList(25, synonyms));
    Open();
    ShowPage(kImageInformation);

    const struct {
        bool withSynonyms;
        const char* typed;
        QStringList listed;
    } steps[] = {
        {true, "sun", {"Sun", "harbour"}},                  // listed already, in another case
        {false, "sea", {"Sun", "harbour", "sea"}},          // without synonyms
        {true, "SEA", {"Sun", "harbour", "sea"}},           // synonyms are found by the exact word
        {true, "Boat", {"Sun", "harbour", "sea", "Boat"}},  // no synonyms
    };
    auto* model = Child<QListView>("keywordsList").model();
    const auto listed = [model] {
        QStringList texts;
        for (int row = 0; row < model->rowCount(); ++row)
            texts.append(model->index(row, 0).data().toString());
        return texts;
    };
    for (const auto& step : steps) {
        ASSERT_TRUE(profile.SaveAddSynonyms(step.withSynonyms));
        TypeAndEnter("keywordsCombo", step.typed);
        EXPECT_EQ(listed(), step.listed) << step.typed;
        EXPECT_EQ(ComboEdit("keywordsCombo").text(), QString()) << step.typed;
        EXPECT_TRUE(sheet->isVisible()) << "Enter feeds the list, it does not close the sheet";
    }
    // The synonyms come after their word, except what is listed already.
    Child<QListView>("keywordsList")
        .selectionModel()
        ->select(model->index(2, 0), QItemSelectionModel::Select);
    Click("keywordsRemoveButton");
    ASSERT_TRUE(profile.SaveAddSynonyms(true));
    TypeAndEnter("keywordsCombo", "sea");
    EXPECT_EQ(listed(), (QStringList{"Sun", "harbour", "Boat", "sea", "ocean"}));

    // Del removes the selection; "All to Thesaurus" fills the thesaurus.
    Child<QListView>("keywordsList")
        .selectionModel()
        ->select(model->index(0, 0), QItemSelectionModel::Select);
    QTest::keyClick(&Child<QListView>("keywordsList"), Qt::Key_Delete);
    Click("keywordsAllToThesaurusButton");
    std::vector<CVLProperty> thesaurus;
    ASSERT_TRUE(store.GetUserList(25, thesaurus));
    EXPECT_EQ(thesaurus, Texts({"harbour", "Boat", "sea", "ocean"}));
    EXPECT_EQ(Child<QComboBox>("keywordsCombo").count(), 4);

    sheet->accept();
    EXPECT_EQ(Stored(store, 25), (std::vector<std::string>{"harbour", "Boat", "sea", "ocean"}));
    EXPECT_TRUE(asked.empty());
}

TEST_F(SheetTest, ChooserOffersThesaurusAndRecordAndAppliesTheChecks) {
    store.SetField(25, Texts({"Sun", "SEA"}));
    ASSERT_TRUE(store.SetUserList(25, Texts({"sea", "Boat"})));
    ASSERT_TRUE(store.SetSynonymList(25, {{CVLProperty("Boat"), Texts({"ship", "sun"})}}));
    Open();
    ShowPage(kImageInformation);
    OnModal([](QWidget& chooser) {
        QAbstractItemModel& entries = *test::Child<QListView>(chooser, "list").model();
        QStringList offered;
        for (int row = 0; row < entries.rowCount(); ++row) {
            const QModelIndex index = entries.index(row, 0);
            offered.append(index.data().toString() +
                           (index.data(Qt::CheckStateRole) == Qt::Checked ? "+" : "-"));
        }
        // One entry per word whatever its case, checked when the record holds it.
        EXPECT_EQ(offered, (QStringList{"sea+", "Boat-", "Sun+"}));
        entries.setData(entries.index(1, 0), Qt::Checked, Qt::CheckStateRole);
        entries.setData(entries.index(2, 0), Qt::Unchecked, Qt::CheckStateRole);
        test::Child<QCheckBox>(chooser, "includeSynonyms").setChecked(true);
        QMetaObject::invokeMethod(&chooser, "accept");
    });
    Click("keywordsChooseButton");
    sheet->accept();
    // "sun" comes back as a synonym of "Boat", after it.
    EXPECT_EQ(Stored(store, 25), (std::vector<std::string>{"SEA", "Boat", "ship", "sun"}));
}

TEST_F(SheetTest, RepeatsAreQuestionedOnceWhenThePageIsLeft) {
    const struct {
        std::uint32_t id;
        unsigned question;
        Answer answer;
        std::vector<std::string> stored;
    } cases[] = {
        {25, 105, Answer::kYes, {"sun", "sea"}},
        {25, 105, Answer::kNo, {"sun", "sea", "sun", "sun"}},
        {20, 106, Answer::kYes, {"sun", "sea"}},
    };
    for (const auto& c : cases) {
        store.SetField(20, std::vector<CVLProperty>{});
        store.SetField(25, std::vector<CVLProperty>{});
        store.SetField(c.id, Texts({"sun", "", "sea", "sun", "sun"}));
        asked.clear();
        answers = {c.answer};
        Open();
        ShowPage(kImageInformation);
        ShowPage(kDescription);
        EXPECT_EQ(asked, std::vector<unsigned>{c.question});
        EXPECT_EQ(Stored(store, c.id), c.stored) << c.question;
    }
}

TEST_F(SheetTest, PresetsAreStoredLoadedAndDeletedAfterTheirQuestions) {
    Open();
    QComboBox& presets = Child<QComboBox>("presetsCombo");
    QLineEdit& objectName = Child<QLineEdit>("objectNameEdit");
    objectName.setText(QStringLiteral("Harbour"));

    presets.setEditText(QStringLiteral("   "));  // no name: nothing, and no question
    Click("storePresetButton");
    EXPECT_TRUE(asked.empty());
    EXPECT_TRUE(store.Templates().empty());

    const struct {
        Answer answer;
        std::size_t templates;
    } stores[] = {{Answer::kNo, 0}, {Answer::kYes, 1}, {Answer::kYes, 1}};  // new name, then existing
    for (const auto& step : stores) {
        asked.clear();
        answers = {step.answer};
        presets.setEditText(QStringLiteral("  Harbour set "));
        Click("storePresetButton");
        EXPECT_EQ(asked, std::vector<unsigned>{104});
        EXPECT_EQ(store.Templates().size(), step.templates);
    }
    EXPECT_EQ(store.Templates().front().strName, "Harbour set");
    EXPECT_EQ(presets.count(), 1);
    EXPECT_EQ(presets.currentText(), QStringLiteral("Harbour set"));
    EXPECT_TRUE(platform::Exists(dir.File("vliptctmpl.dat")));

    objectName.setText(QStringLiteral("Other"));
    Click("loadPresetButton");
    EXPECT_EQ(objectName.text(), QStringLiteral("Harbour"));

    for (const Answer answer : {Answer::kNo, Answer::kYes}) {
        asked.clear();
        answers = {answer};
        presets.setEditText(QStringLiteral("Harbour set"));
        Click("deletePresetButton");
        EXPECT_EQ(asked, std::vector<unsigned>{102});
    }
    EXPECT_TRUE(store.Templates().empty());
    EXPECT_EQ(presets.count(), 0);
}

TEST_F(SheetTest, PriorityAndObjectCycleMapBothWays) {
    const struct {
        const char* combo;
        std::uint32_t id;
        const char* stored;
        QString shown;
    } reads[] = {
        {"priorityCombo", 10, "5", "5 Medium"}, {"priorityCombo", 10, "1", "1 High"},
        {"priorityCombo", 10, "8", "8 Low"},    {"priorityCombo", 10, "", "None"},
        {"priorityCombo", 10, "9", ""},         {"objectCycleCombo", 75, "P", "Evening"},
        {"objectCycleCombo", 75, "b", "Both"},  {"objectCycleCombo", 75, "x", "Morning"},
    };
    for (const auto& c : reads) {
        store.SetField(c.id, Texts({c.stored}));
        Open();
        ShowPage(kImageInformation);
        EXPECT_EQ(Child<QComboBox>(c.combo).currentText(), c.shown) << c.combo << " " << c.stored;
    }

    const struct {
        const char* combo;
        std::uint32_t id;
        int entry;
        std::vector<std::string> written;
    } writes[] = {
        {"priorityCombo", 10, 0, {}},       {"priorityCombo", 10, 5, {"5"}},
        {"priorityCombo", 10, -1, {}},      {"objectCycleCombo", 75, 0, {"m"}},
        {"objectCycleCombo", 75, 1, {"p"}}, {"objectCycleCombo", 75, 2, {"b"}},
    };
    for (const auto& c : writes) {
        Open();
        ShowPage(kImageInformation);
        Child<QComboBox>(c.combo).setCurrentIndex(c.entry);
        sheet->accept();
        EXPECT_EQ(Stored(store, c.id), c.written) << c.combo << " " << c.entry;
    }
}

TEST_F(SheetTest, DatePickersAreEmptyWhileUnchecked) {
    setenv("TZ", "UTC", 1);  // the zone written with a time
    tzset();
    store.SetField(55, Texts({"20240621"}));
    store.SetField(60, Texts({"101500+0000"}));
    Open();
    ShowPage(kImageInformation);
    EXPECT_TRUE(Child<QCheckBox>("createdDateSet").isChecked());
    EXPECT_EQ(Child<QDateEdit>("createdDate").date(), QDate(2024, 6, 21));
    EXPECT_TRUE(Child<QCheckBox>("createdTimeSet").isChecked());
    EXPECT_EQ(Child<QTimeEdit>("createdTime").time(), QTime(10, 15, 0));
    EXPECT_FALSE(Child<QCheckBox>("releaseDateSet").isChecked());
    EXPECT_FALSE(Child<QCheckBox>("releaseTimeSet").isChecked());
    EXPECT_FALSE(Child<QDateEdit>("releaseDate").isEnabled());

    Child<QCheckBox>("createdDateSet").setChecked(false);
    Child<QCheckBox>("releaseDateSet").setChecked(true);
    Child<QDateEdit>("releaseDate").setDate(QDate(2025, 1, 2));
    Child<QToolButton>("releaseTimeMenu").menu()->actions().at(1)->trigger();  // "&12:00"
    sheet->accept();
    EXPECT_EQ(Stored(store, 55), std::vector<std::string>{});
    EXPECT_EQ(Stored(store, 60), std::vector<std::string>{"101500+0000"});
    EXPECT_EQ(Stored(store, 30), std::vector<std::string>{"20250102"});
    EXPECT_EQ(Stored(store, 35), std::vector<std::string>{"120000+0000"});

    Open();
    ShowPage(kImageInformation);
    Child<QToolButton>("createdDateMenu").menu()->actions().at(1)->trigger();  // "Yesterday"
    sheet->accept();
    EXPECT_EQ(Stored(store, 55),
              std::vector<std::string>{QDate::currentDate().addDays(-1).toString("yyyyMMdd").toStdString()});
}

TEST_F(SheetTest, TextConvertsBetweenMacAndWindowsAndBack) {
    store.SetField(25, Texts({"\xC5lesund"}));  // on the other page
    CVLProperty version;
    version.SetNumber16(4);
    store.SetField(0, std::vector<CVLProperty>{version});
    Open();
    Child<QLineEdit>("objectNameEdit").setText(QStringLiteral("Café"));
    Click("windowsToMacButton");
    EXPECT_EQ(Stored(store, 5), std::vector<std::string>{"Caf\x8E"});  // é in Mac Roman
    EXPECT_EQ(Stored(store, 25), std::vector<std::string>{"\x81lesund"});
    EXPECT_EQ(Child<QLineEdit>("objectNameEdit").text(), QString::fromUtf8("CafŽ"));  // as Windows reads it
    Click("macToWindowsButton");
    EXPECT_EQ(Stored(store, 5), std::vector<std::string>{"Caf\xE9"});
    EXPECT_EQ(Stored(store, 25), std::vector<std::string>{"\xC5lesund"});
    EXPECT_EQ(store.Field(0)->vValues, std::vector<CVLProperty>{version});  // numbers stay
}

TEST_F(SheetTest, TemplateFileLineCountsTheFiles) {
    CVLReferenceEngine engine;
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"}) engine.AddFile(dir.File(name));
    const std::string uri = CVLURI::FromPath(dir.File("b.jpg")).AsString();
    valid = {1, 2, 3};
    Open(&engine, 2);
    EXPECT_EQ(Child<QLineEdit>("templateFileText").text().toStdString(),
              "3 files in selection. Template file: " + uri);
    valid = {2};
    Open(&engine, 2);
    EXPECT_EQ(Child<QLineEdit>("templateFileText").text().toStdString(), "Working on file: " + uri);
}

TEST_F(SheetTest, OtherFieldsListTheExtensionsAndTheModesComeBack) {
    store.SetField(200, Texts({"J-1"}));
    Open(nullptr, 1, EditModes{2, 0});
    ShowPage(kOtherFields);
    QTableWidget& table = Child<QTableWidget>("fieldsTable");
    ASSERT_EQ(table.rowCount(), 3);
    EXPECT_EQ(table.item(0, 0)->text(), QStringLiteral("Job Code"));
    EXPECT_EQ(table.item(0, 1)->text(), QStringLiteral("Example Press"));
    EXPECT_EQ(table.item(0, 2)->text(), QStringLiteral("J-1"));
    EXPECT_EQ(table.item(1, 0)->text(), QStringLiteral("Desk"));
    EXPECT_TRUE(Child<QAbstractButton>("keepRadio").isChecked());
    EXPECT_EQ(Child<QComboBox>("keywordModeCombo").currentIndex(), 0);

    Child<QAbstractButton>("updateRadio").setChecked(true);
    Child<QComboBox>("keywordModeCombo").setCurrentIndex(2);
    table.item(1, 2)->setText(QStringLiteral("Sports"));
    // A date outside the standard is set in the date editor.
    OnModal([](QWidget& editor) {
        test::Child<QDateEdit>(editor, "date").setDate(QDate(2025, 3, 4));
        QMetaObject::invokeMethod(&editor, "accept");
    });
    emit table.cellActivated(2, 2);
    sheet->accept();
    EXPECT_EQ(sheet->Modes().writeMode, 1);
    EXPECT_EQ(sheet->Modes().keywordMode, 2);
    EXPECT_EQ(Stored(store, 201), std::vector<std::string>{"Sports"});
    EXPECT_EQ(Stored(store, 202), std::vector<std::string>{"20250304"});
}

TEST_F(SheetTest, PlacementIsKeptUnderTheSheetsSection) {
    Open();
    const QRect rect(40, 50, 1100, 700);
    sheet->setGeometry(rect);
    sheet.reset();
    EXPECT_EQ(settings.value("Settings/IPTCEdit/wp.left").toInt(), 40);
    EXPECT_EQ(settings.value("Settings/IPTCEdit/wp.bottom").toInt(), 750);
    Open();
    EXPECT_EQ(sheet->geometry(), rect);
}

// With VLIPTC_SCREENSHOT_DIR set, saves a picture of each page there.
TEST_F(SheetTest, Screenshots) {
    const QString folder = qEnvironmentVariable("VLIPTC_SCREENSHOT_DIR");
    if (folder.isEmpty()) GTEST_SKIP() << "VLIPTC_SCREENSHOT_DIR is not set";
    CVLReferenceEngine engine;
    engine.AddFile("/photos/harbour.jpg");
    const std::pair<std::uint32_t, std::vector<CVLProperty>> record[] = {
        {120, Texts({"Fishing boats in the harbour of \xC5lesund.\r\nEvening light."})},
        {5, Texts({"Harbour at dusk"})},
        {105, Texts({"Boats at rest"})},
        {80, Texts({"Example Photographer"})},
        {116, Texts({"\xA9 2024 vliptc examples"})},
        {15, Texts({"TRA"})},
        {20, Texts({"Harbours", "Norway"})},
        {25, Texts({"harbour", "boats", "sea", "evening"})},
        {10, Texts({"5"})},
        {90, Texts({"\xC5lesund"})},
        {100, Texts({"NOR"})},
        {101, Texts({"Norway"})},
        {55, Texts({"20240621"})},
        {60, Texts({"211500+0000"})},
        {200, Texts({"J-17"})},
    };
    for (const auto& [id, values] : record) store.SetField(id, values);
    Open(&engine);
    const char* names[] = {"iptc-editor-description.png", "iptc-editor-image-information.png",
                           "iptc-editor-other-fields.png"};
    for (const Page page : {kDescription, kImageInformation, kOtherFields}) {
        ShowPage(page);
        QTest::qWait(50);
        EXPECT_TRUE(sheet->grab().save(folder + "/" + names[page]));
    }
}

// The driver with the Qt interface: its messages, and the sheet run over a
// real file, confirmed and cancelled.
class QtEditorUITest : public ::testing::Test {
protected:
    TempDir dir;
    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdString(dir.Path()));
    }
};

TEST_F(QtEditorUITest, MessagesCarryTheEditorCaption) {
    QtEditorUI ui;
    for (const Answer answer : {Answer::kYes, Answer::kNo}) {
        OnModal([answer](QWidget& modal) {
            auto* shown = qobject_cast<QMessageBox*>(&modal);
            ASSERT_NE(shown, nullptr);
            QMessageBox& box = *shown;
            EXPECT_EQ(box.windowTitle(), QStringLiteral("Velora IPTC Editor"));
            EXPECT_EQ(box.text(), QStringLiteral("Your selection\ncontains"));
            EXPECT_EQ(box.icon(), QMessageBox::Question);
            box.button(answer == Answer::kYes ? QMessageBox::Yes : QMessageBox::No)->click();
        });
        EXPECT_EQ(ui.ShowMessage(201, "Your selection\ncontains", Buttons::kYesNo, Icon::kQuestion), answer);
    }
}

TEST_F(QtEditorUITest, ShowEditorWritesWhatWasTypedOnlyOnOk) {
    const std::string path = dir.File("street.jpg");
    WriteFile(path, ReadFile("examples/street.jpg"));
    CVLReferenceEngine engine;
    const std::uint32_t id = engine.AddFile(path);
    QtEditorUI ui;
    CVLIPTCEditor editor(&engine, "resources/", dir.Path(), &ui);

    for (const bool confirm : {false, true}) {
        const std::string before = ReadFile(path);
        OnModal([confirm](QWidget& modal) {
            auto* shown = qobject_cast<CIPTCPropertySheet*>(&modal);
            ASSERT_NE(shown, nullptr);
            CIPTCPropertySheet& sheet = *shown;
            sheet.findChild<QLineEdit*>("objectNameEdit")->setText(QStringLiteral("Morning street"));
            confirm ? sheet.accept() : sheet.reject();
        });
        std::vector<std::uint32_t> changed;
        EXPECT_EQ(editor.ShowEditor({id}, id, changed, 0, nullptr), kVLSuccess);
        EXPECT_EQ(changed, confirm ? std::vector<std::uint32_t>{id} : std::vector<std::uint32_t>{});
        if (!confirm) {
            EXPECT_EQ(ReadFile(path), before);
        }
    }
    CIPTC reader;
    ASSERT_EQ(reader.Initialize("resources/", dir.Path()), CIPTC::kSuccess);
    CIPTC::SIPTCFormatInfo format;
    ASSERT_EQ(reader.ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
    EXPECT_EQ(Stored(reader, 5), std::vector<std::string>{"Morning street"});
}

}  // namespace
}  // namespace vliptc::test
