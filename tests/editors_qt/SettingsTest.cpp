// The application profile, the two placement forms and the resizable dialog,
// in a profile file of the test's own and on a screen the test sets.

#include <gtest/gtest.h>

#include <QSettings>
#include <QWidget>

#include "editors/ResizableDialog.h"
#include "editors/Settings.h"
#include "editors/WindowPlacement.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using namespace vliptc::editors;

class ProfileTest : public ::testing::Test {
protected:
    TempDir dir;
    QString path = QString::fromStdString(dir.File("profile.ini"));
    QSettings settings{path, QSettings::IniFormat};
    Profile profile{settings};
    WindowPlacement placement{profile, [] { return QSize(1024, 768); }};

    void Raw(const char* key, const QVariant& value) { settings.setValue(QString::fromLatin1(key), value); }
};

TEST_F(ProfileTest, EditModesKeepOnlyAcceptedValues) {
    const EditModes initial = profile.LoadEditModes();
    EXPECT_EQ(std::pair(initial.writeMode, initial.keywordMode), std::pair(0, 1));

    struct Case {
        QVariant writeMode, keywordMode;
        int wantWrite, wantKeywords;
    } const cases[] = {
        {2, 0, 2, 0},           // in range
        {1, 2, 1, 2},           // in range
        {3, 5, 0, 1},           // out of range: the sheet keeps 0, the keyword mode becomes "replace"
        {-1, -1, 0, 1},         // out of range below
        {"two", "", 0, 1},      // not numbers
        {QVariant(), 2, 0, 2},  // no write mode stored
    };
    for (const auto& c : cases) {
        settings.clear();
        if (c.writeMode.isValid()) Raw("Settings/IPTCEdit/WriteMode", c.writeMode);
        Raw("Settings/IPTCEdit/KWMerge", c.keywordMode);
        const EditModes modes = profile.LoadEditModes();
        EXPECT_EQ(std::pair(modes.writeMode, modes.keywordMode), std::pair(c.wantWrite, c.wantKeywords))
            << c.writeMode.toString().toStdString() << "/" << c.keywordMode.toString().toStdString();
    }

    ASSERT_TRUE(profile.SaveEditModes({2, 0}));
    ASSERT_TRUE(profile.SaveAddSynonyms(false));
    QSettings reopened(path, QSettings::IniFormat);
    const EditModes back = Profile(reopened).LoadEditModes();
    EXPECT_EQ(std::pair(back.writeMode, back.keywordMode), std::pair(2, 0));
    EXPECT_FALSE(Profile(reopened).LoadAddSynonyms());
    EXPECT_EQ(reopened.value("Settings/IPTCEditor/AddSyn").toInt(), 0);
}

TEST_F(ProfileTest, AddSynonymsIsACheckState) {
    EXPECT_TRUE(profile.LoadAddSynonyms());  // default 1
    for (const auto& [stored, checked] : {std::pair(0, false), {1, true}, {2, true}, {-1, true}}) {
        Raw("Settings/IPTCEditor/AddSyn", stored);
        EXPECT_EQ(profile.LoadAddSynonyms(), checked) << stored;
    }
}

// Sections with "\" nest as they do in the registry; "Velora\3" becomes a folder.
TEST_F(ProfileTest, ApplicationProfileFileAndLayout) {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdString(dir.Path()));
    const auto native = OpenApplicationProfile();
    EXPECT_EQ(native->fileName().toStdString(), dir.Path() + "Lumatrix/Velora/3.conf");
    Profile written(*native);
    ASSERT_TRUE(written.WriteInt(kSectionIPTCEdit, kValueWriteMode, 2));
    ASSERT_TRUE(written.WriteInt(kSectionEXIFDlg, "wp.left", 7));
    ASSERT_TRUE(written.WriteString(kSectionIPTCEditor, kValueWP, "10,10,500,400,1,0"));
    const std::string file = ReadFile(dir.Path() + "Lumatrix/Velora/3.conf");
    EXPECT_NE(file.find("[EXIFDlg]\nwp.left=7\n"), std::string::npos) << file;
    EXPECT_NE(file.find("[Settings]\nIPTCEdit\\WriteMode=2\nIPTCEditor\\WP=\"10,10,500,400,1,0\"\n"),
              std::string::npos)
        << file;
}

TEST_F(ProfileTest, WpFormRestoresWhatOverlapsTheScreen) {
    QWidget fresh;
    EXPECT_FALSE(placement.LoadAndApply(kSectionIPTCEdit, fresh, kShowHide));  // nothing stored yet

    struct Case {
        int left, top, right, bottom;
        bool applied;
    } const cases[] = {
        {100, 100, 600, 500, true},  {900, 700, 1400, 1000, true},  // partly on the screen
        {-600, -500, -1, -1, false}, {1024, 0, 1500, 400, false},   // wholly off (touching the edge)
        {-100, 300, 1, 400, true},
    };
    for (const auto& c : cases) {
        SWindowPlacement stored;
        stored.showCmd = kShowMaximized;  // the caller's show command replaces it
        stored.left = c.left, stored.top = c.top, stored.right = c.right, stored.bottom = c.bottom;
        ASSERT_TRUE(placement.Write(kSectionIPTCEdit, stored));
        QWidget window;
        window.setGeometry(10, 20, 300, 200);
        EXPECT_EQ(placement.LoadAndApply(kSectionIPTCEdit, window, kShowHide), c.applied)
            << c.left << "," << c.top;
        const SWindowPlacement now = GetWindowPlacement(window);
        const auto rect = std::tuple(now.left, now.top, now.right, now.bottom);
        EXPECT_EQ(rect,
                  c.applied ? std::tuple(c.left, c.top, c.right, c.bottom) : std::tuple(10, 20, 310, 220));
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(window.isMaximized());
    }

    // What a window stores reads back field by field.
    QWidget window;
    window.setGeometry(30, 40, 200, 100);
    ASSERT_TRUE(placement.Store(kSectionEXIFDlg, window));
    SWindowPlacement read;
    read.flags = 77;
    placement.Read(kSectionEXIFDlg, read);
    SWindowPlacement want;
    want.left = 30, want.top = 40, want.right = 230, want.bottom = 140;
    EXPECT_EQ(read, want);
    EXPECT_EQ(settings.value("EXIFDlg/wp.ptMaxPosition.y").toInt(), -1);
}

TEST_F(ProfileTest, WpStringsRestoreOnlyWithinTheScreen) {
    using Rect = std::tuple<int, int, int, int>;  // left, top, right, bottom
    const Rect kUnplaced(20, 30, 220, 180);
    struct Case {
        const char* text;
        Rect rect;
    } const cases[] = {
        {"10,10,500,400,1,0", {10, 10, 500, 400}},
        {"10,10,500", kUnplaced},
        {"-5,10,500,400,1,0", kUnplaced},
        {"2,2,1024,768,1,0", {2, 2, 1024, 768}},  // right and bottom on the screen's edges
        {"0,0,1025,768,1,0", kUnplaced},
        {"0,0,500,769,1,0", kUnplaced},
        {" 10,\t10,+500,400,1,0 and more",
         {10, 10, 500, 400}},               // blanks before a number, text after the sixth
        {"10 ,10,500,400,1,0", kUnplaced},  // but none before a comma
        {"10,10,500,400,1,99999999999", kUnplaced},
        {"500,400,10,10,1,0", kUnplaced},  // inverted: a window of no size
        {"", kUnplaced},
    };
    for (const auto& c : cases) {
        settings.clear();
        if (*c.text != '\0') Raw("Settings/IPTCEditor/WP", QString::fromLatin1(c.text));
        ResizableDialog dialog;
        dialog.SetPlacementEntry(placement, kSectionIPTCEditor, kValueWP);
        dialog.setGeometry(20, 30, 200, 150);
        dialog.show();
        const SWindowPlacement now = GetWindowPlacement(dialog);
        EXPECT_EQ(Rect(now.left, now.top, now.right, now.bottom), c.rect) << c.text;
    }
}

TEST_F(ProfileTest, ResizableDialogKeepsItsPlacement) {
    {
        ResizableDialog dialog;
        dialog.SetPlacementEntry(placement, kSectionIPTCEditor, kValueWP);
        dialog.show();
        dialog.setGeometry(40, 50, 320, 240);
    }
    EXPECT_EQ(settings.value("Settings/IPTCEditor/WP").toString(), "40,50,360,290,1,0");
    {
        ResizableDialog never;  // never shown: keeps nothing, overwrites nothing
        never.SetPlacementEntry(placement, kSectionIPTCEditor, kValueWP);
        ResizableDialog unset;  // no section: does nothing at all
        unset.SetPlacementEntry(placement, "", kValueWP);
        unset.show();
    }
    EXPECT_EQ(settings.value("Settings/IPTCEditor/WP").toString(), "40,50,360,290,1,0");

    Raw("Settings/IPTCEditor/WP", "10,10,500,400,3,0");  // stored maximised
    ResizableDialog dialog;
    dialog.SetPlacementEntry(placement, kSectionIPTCEditor, kValueWP);
    dialog.show();
    EXPECT_TRUE(dialog.isMaximized());
    EXPECT_EQ(dialog.normalGeometry(), QRect(10, 10, 490, 390));
    EXPECT_EQ(FormatPlacementString(GetWindowPlacement(dialog)), "10,10,500,400,3,0");
}

}  // namespace
}  // namespace vliptc::test
