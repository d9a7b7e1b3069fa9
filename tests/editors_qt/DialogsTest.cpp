// The small dialogs of the IPTC editor, driven through their real widgets:
// what the user does must reach the store (user lists, synonyms) or the
// profile (the chooser's box and placement).

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTimeEdit>
#include <QTreeView>

#include "editors/Settings.h"
#include "editors/dialogs/DateEditor.h"
#include "editors/dialogs/KeywordChooser.h"
#include "editors/dialogs/ProgressDialog.h"
#include "editors/dialogs/SynonymEditor.h"
#include "editors/dialogs/ThesaurusManager.h"
#include "iptc/IPTC.h"
#include "tests/editors_qt/QtTestSupport.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using namespace vliptc::editors;

constexpr std::uint32_t kKeywords = 25;
constexpr std::uint32_t kObjectName = 5;

void Click(const QWidget& dialog, const char* button) {
    QTest::mouseClick(&Child<QPushButton>(dialog, button), Qt::LeftButton);
}

void PressOk(const QWidget& dialog) {
    QTest::mouseClick(Child<QDialogButtonBox>(dialog, "buttons").button(QDialogButtonBox::Ok),
                      Qt::LeftButton);
}

void Type(QWidget& widget, const QString& text) {
    widget.setFocus();
    QTest::keyClicks(&widget, text);
}

// A store whose keywords have a user list and synonyms, in a user folder of its own.
class StoreTest : public ::testing::Test {
protected:
    TempDir dir;
    CIPTC store;

    void SetUp() override {
        const std::string definitions = "{\nID 5\nNAME Object Name\n}\n{\nID 25\nNAME Keywords\n}\n";
        ASSERT_EQ(store.InitializeFromText(definitions, dir.Path()), CIPTC::kSuccess);
        ASSERT_TRUE(store.SetUserList(kKeywords, Texts({"sea", "sun"})));
        ASSERT_TRUE(store.SetSynonymList(
            kKeywords, {{CVLProperty("sea"), Texts({"ocean", "water"})}, {CVLProperty("sun"), {}}}));
    }

    CVLIPTCINI::SynonymList Synonyms() const {
        CVLIPTCINI::SynonymList list;
        EXPECT_TRUE(store.GetSynonymList(kKeywords, list));
        return list;
    }
};

TEST(KeywordChooserTest, OkRecordsChecksAndBoxAndThePlacementComesBack) {
    TempDir dir;
    QSettings settings(QString::fromStdString(dir.File("profile.ini")), QSettings::IniFormat);
    Profile profile(settings);
    const std::vector<ChooserEntry> entries = {{"sea", true}, {"sun", false}, {"Caf\xE9", true}};
    const QRect placed(40, 50, 420, 380);
    {
        KeywordChooser chooser(entries, profile);
        chooser.show();
        auto& list = Child<QListView>(chooser, "list");
        auto& box = Child<QCheckBox>(chooser, "includeSynonyms");
        EXPECT_TRUE(box.isChecked()) << "\"AddSyn\" defaults to 1";
        EXPECT_EQ(list.model()->index(2, 0).data().toString(), QString::fromUtf8("Café"));
        for (const int row : {0, 1}) {  // Space toggles the current entry
            list.setCurrentIndex(list.model()->index(row, 0));
            QTest::keyClick(&list, Qt::Key_Space);
        }
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(4, box.height() / 2));
        chooser.setGeometry(placed);
        PressOk(chooser);
        ASSERT_EQ(chooser.result(), QDialog::Accepted);
        std::vector<bool> checked;
        for (const ChooserEntry& entry : chooser.Entries()) checked.push_back(entry.checked);
        EXPECT_EQ(checked, (std::vector<bool>{false, true, true}));
        EXPECT_FALSE(chooser.IncludeSynonyms());
    }
    EXPECT_EQ(settings.value("Settings/IPTCEditor/AddSyn").toInt(), 0);
    EXPECT_EQ(settings.value("Settings/IPTCEditor/WP").toString(), QString("40,50,460,430,1,0"));

    KeywordChooser again(entries, profile);
    again.show();
    EXPECT_EQ(again.geometry(), placed);
    EXPECT_FALSE(Child<QCheckBox>(again, "includeSynonyms").isChecked());
    again.reject();
    EXPECT_TRUE(again.Entries()[0].checked) << "Cancel records nothing";
}

TEST_F(StoreTest, ThesaurusAddUpdateDeleteReachTheStoreOnOk) {
    {
        ThesaurusManager manager(store, kObjectName);
        EXPECT_TRUE(Child<QGroupBox>(manager, "synonymsPanel").isHidden()) << "Object Name has no synonyms";
    }
    ThesaurusManager manager(store, kKeywords);
    manager.show();
    EXPECT_FALSE(Child<QGroupBox>(manager, "synonymsPanel").isHidden());
    auto& list = Child<QListView>(manager, "list");
    auto& entry = Child<QLineEdit>(manager, "entry");

    Type(entry, "lake");
    Click(manager, "add");
    entry.clear();
    Type(entry, "sea");
    QTest::keyClick(&entry, Qt::Key_Return);  // adds (an entry listed already is only selected)
    EXPECT_TRUE(manager.isVisible()) << "Return in the edit box must not close the dialog";
    EXPECT_EQ(list.model()->rowCount(), 3);
    EXPECT_EQ(list.currentIndex().row(), 0);

    list.setCurrentIndex(list.model()->index(1, 0));
    EXPECT_EQ(entry.text(), QString("sun"));
    entry.setText("sunset");
    Click(manager, "update");
    list.setCurrentIndex(list.model()->index(0, 0));
    Click(manager, "remove");

    std::vector<CVLProperty> before;
    store.GetUserList(kKeywords, before);
    EXPECT_EQ(Strings(before), (std::vector<std::string>{"sea", "sun"})) << "nothing is stored before OK";
    PressOk(manager);
    std::vector<CVLProperty> after;
    store.GetUserList(kKeywords, after);
    EXPECT_EQ(Strings(after), (std::vector<std::string>{"sunset", "lake"}));
    EXPECT_FALSE(manager.ChosenEntry());
}

TEST_F(StoreTest, ThesaurusDoubleClickReturnsTheEntry) {
    ThesaurusManager manager(store, kKeywords);
    manager.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&manager));
    auto& list = Child<QListView>(manager, "list");
    const QRect row = list.visualRect(list.model()->index(1, 0));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(manager.result(), QDialog::Accepted);
    EXPECT_EQ(manager.ChosenEntry(), std::optional<std::string>("sun"));
}

TEST_F(StoreTest, ThesaurusCancelPutsBackSynonymsChangedMeanwhile) {
    ThesaurusManager manager(store, kKeywords);
    manager.show();
    OnModal([](QWidget& editor) {
        ASSERT_NE(qobject_cast<SynonymEditor*>(&editor), nullptr);
        QCoreApplication::processEvents();
        auto& tree = Child<QTreeView>(editor, "tree");
        tree.setCurrentIndex(tree.model()->index(0, 0));
        Click(editor, "remove");
        PressOk(editor);
    });
    Click(manager, "editSynonyms");
    EXPECT_EQ(Synonyms().count(CVLProperty("sea")), 0u) << "the synonym editor stores on its own OK";
    manager.reject();
    EXPECT_EQ(Synonyms().at(CVLProperty("sea")), Texts({"ocean", "water"}));
}

TEST_F(StoreTest, SynonymEditorEditsReachSetSynonymList) {
    SynonymEditor editor(store, kKeywords);
    editor.show();
    QApplication::setActiveWindow(&editor);  // <Ins> and <Del> are shortcuts of the active window
    auto& tree = Child<QTreeView>(editor, "tree");
    EXPECT_EQ(Child<QLabel>(editor, "status").text(), QString("Loading synonym list..."));
    EXPECT_FALSE(editor.IsLoaded());
    QCoreApplication::processEvents();
    ASSERT_TRUE(editor.IsLoaded());
    EXPECT_TRUE(Child<QLabel>(editor, "status").isHidden());
    ASSERT_EQ(tree.model()->rowCount(), 2);

    // Search finds "water" under "sea"; <Del> removes it.
    Type(Child<QLineEdit>(editor, "search"), "WAT");
    QTest::keyClick(&Child<QLineEdit>(editor, "search"), Qt::Key_Return);
    ASSERT_EQ(tree.currentIndex().data().toString(), QString("water"));
    tree.setFocus();
    QTest::keyClick(&tree, Qt::Key_Delete);

    // <Ins> on "sea" starts its first synonym.
    tree.setCurrentIndex(tree.model()->index(0, 0));
    QTest::keyClick(&tree, Qt::Key_Insert);
    QTest::keyClicks(QApplication::focusWidget(), "salt water");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCoreApplication::processEvents();  // the delegate commits on a queued call

    // "&Add" after "sun": a new keyword; one left empty disappears.
    tree.setCurrentIndex(tree.model()->index(1, 0));
    Click(editor, "add");
    QTest::keyClicks(QApplication::focusWidget(), "lake");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCoreApplication::processEvents();
    Click(editor, "add");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.model()->rowCount(), 3);

    PressOk(editor);
    const CVLIPTCINI::SynonymList expected = {{CVLProperty("lake"), {}},
                                              {CVLProperty("sea"), Texts({"salt water", "ocean"})},
                                              {CVLProperty("sun"), {}}};
    EXPECT_EQ(Synonyms(), expected);
}

TEST(DateEditorTest, ButtonsSetDateAndTime) {
    DateEditor editor(COleDateTime(2024, 6, 21, 8, 30, 15));
    EXPECT_EQ(editor.Value(), COleDateTime(2024, 6, 21, 8, 30, 15));
    auto& date = Child<QDateEdit>(editor, "date");
    auto& time = Child<QTimeEdit>(editor, "time");
    const auto near = [](QTime a, QTime b) { return std::abs(a.secsTo(b)) <= 2; };

    Click(editor, "noon");
    EXPECT_EQ(editor.Value(), COleDateTime(2024, 6, 21, 12, 0, 0));
    Click(editor, "today");
    EXPECT_EQ(date.date(), QDate::currentDate());
    EXPECT_EQ(time.time(), QTime(12, 0));
    Click(editor, "now");
    EXPECT_TRUE(near(time.time(), QTime::currentTime()));

    date.setDate(QDate(2001, 1, 1));
    time.setTime(QTime(1, 2, 3));
    Click(editor, "todayAndNow");
    EXPECT_EQ(date.date(), QDate::currentDate());
    EXPECT_TRUE(near(time.time(), QTime::currentTime()));

    const struct {
        const char* button;
        const char* tip;
    } tips[] = {{"today", "Set todays date"},
                {"now", "Set current time"},
                {"noon", "Set time to 12:00"},
                {"todayAndNow", "Set todays date and current time"}};
    for (const auto& t : tips) EXPECT_EQ(Child<QPushButton>(editor, t.button).toolTip(), QString(t.tip));

    COleDateTime invalid;
    invalid.SetStatus(COleDateTime::invalid);
    DateEditor fromNow(invalid);
    EXPECT_EQ(Child<QDateEdit>(fromNow, "date").date(), QDate::currentDate());
}

TEST(ProgressDialogTest, CancelIsSeenByIsCancelledAndTheWindowStays) {
    ProgressDialog progress("Velora IPTC Editor", 0, 3);
    EXPECT_TRUE(progress.isVisible());
    progress.SetText("Processing /tmp/a.jpg");
    progress.SetPos(2);
    EXPECT_EQ(Child<QLabel>(progress, "text").text(), QString("Processing /tmp/a.jpg"));
    EXPECT_EQ(Child<QProgressBar>(progress, "bar").value(), 2);
    EXPECT_FALSE(progress.IsCancelled());

    // The click waits in the queue until IsCancelled lets events through.
    QPushButton& cancel = Child<QPushButton>(progress, "cancel");
    QMetaObject::invokeMethod(&cancel, &QPushButton::click, Qt::QueuedConnection);
    EXPECT_TRUE(progress.IsCancelled());
    EXPECT_TRUE(progress.isVisible());
}

}  // namespace
}  // namespace vliptc::test
