// The EXIF viewer driven through its real widgets over a camera JPEG of the
// corpus: its rows and colours, the clipboard text, a date edited through the
// date editor and written to a copy of the file, view-only mode, placement.

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTest>
#include <QTimeEdit>
#include <QTimer>

#include "editors/Settings.h"
#include "editors/WindowPlacement.h"
#include "editors/dialogs/DateEditor.h"
#include "editors/dialogs/ExifDialog.h"
#include "exif/EXIF.h"
#include "tests/editors_qt/QtTestSupport.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using namespace vliptc::editors;

// Carries the three dates (2008:07:31 10:38:11, and 2008:05:30 15:56:01 twice).
const std::string kCameraJpeg = kCorpus + "jpeg/ian_Canon_40D.jpg";

class ExifDialogTest : public ::testing::Test {
protected:
    TempDir dir;
    std::string file = dir.File("camera.jpg");
    QSettings settings{QString::fromStdString(dir.File("profile.ini")), QSettings::IniFormat};
    Profile profile{settings};
    CVLEXIF exif;

    void SetUp() override {
        VLIPTC_SKIP_WITHOUT_CORPUS();
        WriteFile(file, ReadFile(kCameraJpeg));
        ASSERT_EQ(exif.LoadFile(file.c_str()), CVLEXIF::errOK);
    }

    static QTableWidget& Table(const ExifDialog& dialog) { return Child<QTableWidget>(dialog, "table"); }

    int RowOf(const ExifDialog& dialog, CVLEXIF::EFieldTags tag) {
        const CVLEXIF::SField* field = nullptr;
        EXPECT_TRUE(exif.GetField(tag, field));
        const auto found = Table(dialog).findItems(QString::fromStdString(field->strName), Qt::MatchExactly);
        return found.size() == 1 ? found.front()->row() : -1;
    }

    // Double-clicks the value of row; answers a date editor, if one opens,
    // with the date and time given (nothing: Cancel). True when one opened.
    static bool DoubleClickValue(ExifDialog& dialog, int row, const QDate& date = {},
                                 const QTime& time = {}) {
        QTableWidget& table = Table(dialog);
        table.scrollToItem(table.item(row, 1));
        const QPoint at = table.visualItemRect(table.item(row, 1)).center();
        bool opened = false;
        QTimer::singleShot(0, [&] {
            auto* editor = qobject_cast<DateEditor*>(QApplication::activeModalWidget());
            if (editor == nullptr) return;
            opened = true;
            if (!date.isValid()) return editor->reject();
            Child<QDateEdit>(*editor, "date").setDate(date);
            Child<QTimeEdit>(*editor, "time").setTime(time);
            QTest::mouseClick(Child<QDialogButtonBox>(*editor, "buttons").button(QDialogButtonBox::Ok),
                              Qt::LeftButton);
        });
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, at);
        QCoreApplication::processEvents();  // a timer not taken by a modal loop fires here
        return opened;
    }

    std::vector<CVLProperty> Values(CVLEXIF::EFieldTags tag) {
        const CVLEXIF::SField* field = nullptr;
        return exif.GetField(tag, field) ? field->vValues : std::vector<CVLProperty>{};
    }
};

TEST_F(ExifDialogTest, RowsColoursAndClipboardFollowThePresentFields) {
    ExifDialog dialog(exif, false, profile);
    EXPECT_EQ(dialog.windowTitle(), QString("Velora EXIF Viewer"));
    EXPECT_EQ(
        Child<QLabel>(dialog, "note").text(),
        QString("Double-click to edit the writeable fields. Currently, only date and time fields can be "
                "modified."));
    EXPECT_FALSE(Child<QPushButton>(dialog, "ok").isHidden());

    const QTableWidget& table = Table(dialog);
    const auto present = exif.PresentFields();
    ASSERT_GT(present.size(), 30u);
    ASSERT_EQ(table.rowCount(), static_cast<int>(present.size()));
    QString expected;
    int writable = 0;
    for (int row = 0; row < table.rowCount(); ++row) {
        const CVLEXIF::SField& field = *present[static_cast<std::size_t>(row)];
        exif.bUseDefaults = true;
        std::string text;
        static_cast<void>(exif.GetFormattedField(static_cast<CVLEXIF::EFieldTags>(field.nTag), text));
        exif.bUseDefaults = false;
        const QTableWidgetItem* name = table.item(row, 0);
        const QTableWidgetItem* value = table.item(row, 1);
        EXPECT_EQ(name->text().toStdString(), field.strName) << row;
        EXPECT_EQ(value->text().toStdString(), text) << field.strName;
        EXPECT_EQ(name->background().color(), QColor(220, 220, 220)) << field.strName;
        EXPECT_EQ(value->background().color(), field.bDate ? QColor(220, 220, 255) : QColor(Qt::white))
            << field.strName;
        EXPECT_FALSE(value->flags() & Qt::ItemIsEditable);
        writable += field.bDate ? 1 : 0;
        expected += name->text() + '\t' + value->text() + '\n';
    }
    EXPECT_EQ(writable, 3);
    EXPECT_FALSE(exif.bUseDefaults) << "the dialog puts the caller's setting back";

    QGuiApplication::clipboard()->clear();
    QTest::mouseClick(&Child<QPushButton>(dialog, "copy"), Qt::LeftButton);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), expected);
    EXPECT_TRUE(expected.startsWith("Date and time\t2008:07:31 10:38:11\n")) << expected.toStdString();
}

TEST_F(ExifDialogTest, EditedDatesReachTheCatalogueAndTheFileInTheExifForm) {
    const struct {
        CVLEXIF::EFieldTags tag;
        QDate date;
        QTime time;
        const char* text;
    } cases[] = {{CVLEXIF::kDateTimeOriginal, QDate(2002, 5, 17), QTime(14, 30, 0), "2002:05:17 14:30:00"},
                 {CVLEXIF::kDateTime, QDate(999, 1, 2), QTime(3, 4, 5), "0999:01:02 03:04:05"}};
    {
        ExifDialog dialog(exif, false, profile);
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        for (const auto& c : cases) {
            const int row = RowOf(dialog, c.tag);
            ASSERT_GE(row, 0);
            ASSERT_TRUE(DoubleClickValue(dialog, row, c.date, c.time)) << c.text;
            EXPECT_EQ(Values(c.tag), std::vector<CVLProperty>{CVLProperty(c.text)});
            EXPECT_EQ(Table(dialog).item(row, 1)->text(), QString(c.text));
        }
        // Cancel in the date editor changes nothing; a name or an ordinary
        // value opens no editor.
        const int digitized = RowOf(dialog, CVLEXIF::kDateTimeDigitized);
        EXPECT_TRUE(DoubleClickValue(dialog, digitized));
        EXPECT_EQ(Values(CVLEXIF::kDateTimeDigitized),
                  std::vector<CVLProperty>{CVLProperty("2008:05:30 15:56:01")});
        EXPECT_FALSE(DoubleClickValue(dialog, RowOf(dialog, CVLEXIF::kMake)));
        QTest::mouseClick(&Child<QPushButton>(dialog, "ok"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
    ASSERT_EQ(exif.StoreFile(file.c_str()), CVLEXIF::errOK);
    CVLEXIF reread;
    ASSERT_EQ(reread.LoadFile(file.c_str()), CVLEXIF::errOK);
    for (const auto& c : cases) {
        std::string text;
        EXPECT_TRUE(reread.GetFormattedField(c.tag, text));
        EXPECT_EQ(text, c.text);
    }
}

// Close takes the edits back and keeps the placement under "EXIFDlg"; the
// view-only dialog opened next comes back there, and edits nothing.
TEST_F(ExifDialogTest, CloseTakesTheEditsBackAndViewOnlyEditsNothing) {
    const QRect placed(30, 40, 500, 400);
    {
        ExifDialog dialog(exif, false, profile);
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        dialog.setGeometry(placed);
        ASSERT_TRUE(
            DoubleClickValue(dialog, RowOf(dialog, CVLEXIF::kDateTime), QDate(2020, 2, 29), QTime(1, 2, 3)));
        EXPECT_EQ(Values(CVLEXIF::kDateTime), std::vector<CVLProperty>{CVLProperty("2020:02:29 01:02:03")});
        QTest::mouseClick(&Child<QPushButton>(dialog, "close"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        EXPECT_EQ(Values(CVLEXIF::kDateTime), std::vector<CVLProperty>{CVLProperty("2008:07:31 10:38:11")});
    }
    EXPECT_EQ(settings.value("EXIFDlg/wp.showCmd").toInt(), kShowNormal);
    EXPECT_EQ(settings.value("EXIFDlg/wp.right").toInt(), 530);

    ExifDialog viewer(exif, true, profile);
    viewer.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
    EXPECT_EQ(viewer.geometry(), placed);
    const auto& ok = Child<QPushButton>(viewer, "ok");
    EXPECT_TRUE(ok.isHidden());
    EXPECT_FALSE(ok.isEnabled());
    EXPECT_TRUE(Child<QLabel>(viewer, "note").isHidden());
    const int row = RowOf(viewer, CVLEXIF::kDateTimeOriginal);
    EXPECT_EQ(Table(viewer).item(row, 1)->background().color(), QColor(Qt::white));
    EXPECT_FALSE(DoubleClickValue(viewer, row));
}

}  // namespace
}  // namespace vliptc::test
