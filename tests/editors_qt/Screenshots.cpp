// Pictures of the editor's dialogs and of the desktop host for the README,
// taken on the offscreen platform. They are written only when
// VLIPTC_SCREENSHOT_DIR names the folder to write them to:
//   VLIPTC_SCREENSHOT_DIR=docs/screenshots build/tests/editors_qt/vliptc_editors_screenshots

#include <gtest/gtest.h>

#include <QDir>
#include <QListView>
#include <QSettings>
#include <QTest>
#include <QTreeView>

#include "apps/vliptc-editor/MainWindow.h"
#include "editors/Settings.h"
#include "editors/StringTable.h"
#include "editors/dialogs/DateEditor.h"
#include "editors/dialogs/ExifDialog.h"
#include "editors/dialogs/KeywordChooser.h"
#include "editors/dialogs/ProgressDialog.h"
#include "editors/dialogs/SynonymEditor.h"
#include "editors/dialogs/ThesaurusManager.h"
#include "exif/EXIF.h"
#include "iptc/IPTC.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using namespace vliptc::editors;

constexpr std::uint32_t kKeywords = 25;
// The thesaurus of the pictures, also what the chooser offers.
constexpr const char* kWords[] = {"boats",  "dusk", "fishing", "harbour",
                                  "Norway", "sea",  "sunset",  "\xC5lesund"};

class Screenshots : public ::testing::Test {
protected:
    QString folder = qEnvironmentVariable("VLIPTC_SCREENSHOT_DIR");
    TempDir user;
    CIPTC store;

    void SetUp() override {
        if (folder.isEmpty()) GTEST_SKIP() << "set VLIPTC_SCREENSHOT_DIR to the folder for the pictures";
        QDir().mkpath(folder);
        // Nothing of the user's own profile is read or written.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                           QString::fromStdString(user.Path()));
        ASSERT_EQ(store.Initialize("resources/", user.Path()), CIPTC::kSuccess)
            << "run from the repository root";
        std::vector<CVLProperty> keywords;
        for (const char* word : kWords) keywords.emplace_back(word);
        store.SetUserList(kKeywords, keywords);
        store.SetSynonymList(kKeywords,
                             {{CVLProperty("boats"), {CVLProperty("ships"), CVLProperty("vessels")}},
                              {CVLProperty("harbour"), {CVLProperty("port"), CVLProperty("marina")}},
                              {CVLProperty("sea"), {CVLProperty("ocean"), CVLProperty("water")}},
                              {CVLProperty("sunset"), {CVLProperty("evening")}}});
    }

    void Save(QWidget& window, const char* name) {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        QCoreApplication::processEvents();
        EXPECT_TRUE(window.grab().save(folder + "/" + name + ".png")) << name;
    }
};

TEST_F(Screenshots, Dialogs) {
    QSettings settings;
    Profile profile(settings);
    std::vector<ChooserEntry> entries;
    for (const std::string text : kWords) {
        entries.push_back({text, text == "boats" || text == "harbour" || text == "sea"});
    }
    KeywordChooser chooser(entries, profile);
    Save(chooser, "choose-elements");

    ThesaurusManager manager(store, kKeywords);
    auto* list = manager.findChild<QListView*>("list");
    list->setCurrentIndex(list->model()->index(3, 0));
    Save(manager, "thesaurus-manager");

    SynonymEditor synonyms(store, kKeywords);
    synonyms.show();
    QCoreApplication::processEvents();
    ASSERT_TRUE(synonyms.IsLoaded());
    auto* tree = synonyms.findChild<QTreeView*>("tree");
    tree->expandAll();
    tree->setCurrentIndex(tree->model()->index(1, 0, tree->model()->index(2, 0)));
    Save(synonyms, "synonym-editor");

    DateEditor date(COleDateTime(2024, 6, 21, 18, 45, 0));
    Save(date, "date-editor");

    ProgressDialog progress(std::string(StringText(103)), 0, 4);
    progress.SetText(FormatText(StringText(300), {"/home/photos/2024/harbour.jpg"}));
    progress.SetPos(2);
    Save(progress, "progress");
}

TEST_F(Screenshots, ExifViewer) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    CVLEXIF exif;
    ASSERT_EQ(exif.LoadFile((kCorpus + "jpeg/ian_Canon_40D.jpg").c_str()), CVLEXIF::errOK);
    QSettings settings;
    Profile profile(settings);
    ExifDialog dialog(exif, false, profile);
    Save(dialog, "exif-viewer");
}

TEST_F(Screenshots, Host) {
    host_app::MainWindow window({"resources/", user.Path(), user.File("vliptc-editor.log")});
    window.AddPaths({"examples"});
    auto* list = window.findChild<QListView*>();
    list->setCurrentIndex(list->model()->index(0, 0));
    list->selectionModel()->select(list->model()->index(1, 0), QItemSelectionModel::Select);
    window.resize(640, 320);
    Save(window, "vliptc-editor");
}

}  // namespace
}  // namespace vliptc::test
