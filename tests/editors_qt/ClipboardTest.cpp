// The IPTC record through the real clipboard of the offscreen platform, and
// the binary form's decoder on records that are not whole.

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QTest>

#include "editors/IPTCClipboard.h"
#include "iptc/ClipboardFormat.h"
#include "iptc/IPTC.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

using vliptc::editors::IPTCClipboard;
using vliptc::editors::kIPTCMimeType;

CVLProperty Number16(std::int16_t value) {
    CVLProperty p;
    p.SetNumber16(value);
    return p;
}

bool Same(const CIPTC::FieldList& a, const CIPTC::FieldList& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.nID == y.nID && x.vValues == y.vValues &&
               std::equal(x.vValues.begin(), x.vValues.end(), y.vValues.begin(),
                          [](const auto& u, const auto& v) { return u.GetKind() == v.GetKind(); });
    });
}

class ClipboardTest : public ::testing::Test {
protected:
    TempDir dir;
    CIPTC store;
    int saves = 0, refreshes = 0, beeps = 0;
    IPTCClipboard::Hooks hooks{[this] { ++saves; }, [this] { ++refreshes; }, [this] { ++beeps; }};

    void SetUp() override {
        const std::string definitions = "{\nID 5\nNAME Object Name\n}\n{\nID 25\nNAME Keywords\n}\n";
        ASSERT_EQ(store.InitializeFromText(definitions, dir.Path()), CIPTC::kSuccess);
        QGuiApplication::clipboard()->clear();
    }
};

TEST_F(ClipboardTest, EmptyRecordIsSixBytesAndPastingItEmptiesTheStore) {
    store.Fields().clear();
    IPTCClipboard clipboard(store, hooks);
    clipboard.Copy();
    EXPECT_EQ(saves, 1);
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    EXPECT_EQ(data->data(kIPTCMimeType), QByteArray("\x01\x00\x00\x00\x00\x00", 6));
    EXPECT_EQ(data->text(), QString());

    store.Fields() = {{25, {CVLProperty("sea")}}};
    EXPECT_TRUE(clipboard.Paste());
    EXPECT_TRUE(store.Fields().empty());
    EXPECT_EQ(refreshes, 1);
}

TEST_F(ClipboardTest, RecordTravelsAsTextLinesAndBackWhole) {
    store.Fields() = {
        {5, {CVLProperty("Harbour")}},
        {25, {CVLProperty("sea"), CVLProperty("ship"), CVLProperty("\xC5lesund")}},  // Å in 1252
        {0, {Number16(4)}},
        {7, {}}};
    IPTCClipboard source(store, hooks);
    source.Copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              QString::fromUtf8("Object Name\tHarbour\r\nKeywords\tsea\tship\t\u00C5lesund\r\n"
                                "Record Version\t4\r\nDataset 7\t\r\n"));

    CIPTC target;
    target.Fields() = {{120, {CVLProperty("gone after the paste")}}};
    IPTCClipboard sink(target, hooks);
    EXPECT_TRUE(sink.Paste());
    EXPECT_TRUE(Same(target.Fields(), store.Fields()));
}

TEST_F(ClipboardTest, PasteButtonFollowsTheClipboard) {
    store.Fields() = {{5, {CVLProperty("kept")}}};
    const CIPTC::FieldList before = store.Fields();
    IPTCClipboard clipboard(store, hooks);
    QPushButton copy, paste;
    clipboard.AttachButtons(&copy, &paste);

    QGuiApplication::clipboard()->setText("only text");
    EXPECT_FALSE(paste.isEnabled());
    EXPECT_FALSE(clipboard.Paste());
    EXPECT_EQ(beeps, 1);

    QTest::mouseClick(&copy, Qt::LeftButton);
    EXPECT_EQ(saves, 1);
    EXPECT_TRUE(paste.isEnabled());
    store.Fields().clear();
    QTest::mouseClick(&paste, Qt::LeftButton);
    EXPECT_TRUE(Same(store.Fields(), before));
    EXPECT_EQ(refreshes, 1);

    // Another version, or a damaged record: the button is offered, the paste
    // ends silently and the store stays.
    for (const QByteArray& record :
         {QByteArray("\x02\x00\x00\x00\x00\x00", 6), QByteArray("\x01\x00\x05\x00\x00\x00", 6)}) {
        auto* data = new QMimeData;
        data->setData(kIPTCMimeType, record);
        QGuiApplication::clipboard()->setMimeData(data);
        EXPECT_TRUE(paste.isEnabled());
        QTest::mouseClick(&paste, Qt::LeftButton);
        EXPECT_TRUE(Same(store.Fields(), before));
    }
    EXPECT_EQ(refreshes, 1);
    EXPECT_EQ(beeps, 1);
}

TEST(ClipboardFormat, RecordsThatAreNotWholeAreRefused) {
    using clipboard::DecodeStatus;
    const auto kOk = DecodeStatus::kOk, kBad = DecodeStatus::kMalformed;
    struct Case {
        std::string_view bytes;
        DecodeStatus status;
        std::size_t fields;
    } const cases[] = {
        {"", kBad, 0},
        {"\x01", kBad, 0},
        {std::string_view("\x02\x00\x00\x00\x00\x00", 6), DecodeStatus::kOtherVersion, 0},
        {std::string_view("\x01\x00\x00\x00\x00", 5), kBad, 0},
        {std::string_view("\x01\x00\x01\x00\x00\x00", 6), kBad, 0},  // a field that is not there
        {std::string_view("\x01\x00\xFF\xFF\xFF\xFF\x05\x00\x00\x00\x00\x00", 12), kBad,
         0},  // four billion fields
        {std::string_view("\x01\x00\x01\x00\x00\x00\x19\x00\x00\x00\x01\x00\x00\x00", 14), kBad,
         0},  // a value missing
        {std::string_view("\x01\x00\x01\x00\x00\x00\x19\x00\x00\x00\x01\x00\x00\x00\x06\x00\x00\x00\x00", 19),
         kBad, 0},  // unknown kind
        {std::string_view("\x01\x00\x01\x00\x00\x00\x19\x00\x00\x00\x01\x00\x00\x00\x01\x09\x00\x00\x00sea",
                          22),
         kBad, 0},  // text shorter than its length
        {std::string_view("\x01\x00\x01\x00\x00\x00\x19\x00\x00\x00\x01\x00\x00\x00\x01\x03\x00\x00\x00sea!!",
                          24),
         kOk, 1},  // bytes behind the record are ignored
    };
    for (const auto& c : cases) {
        CIPTC::FieldList fields = {{99, {}}, {98, {}}};
        const auto result = clipboard::DecodeBinary(
            std::span(reinterpret_cast<const std::uint8_t*>(c.bytes.data()), c.bytes.size()), fields);
        EXPECT_EQ(result.status, c.status) << testing::PrintToString(std::string(c.bytes));
        EXPECT_EQ(fields.size(), c.status == kOk ? c.fields : 2u);
        if (c.status == kOk) {
            EXPECT_EQ(result.consumed, c.bytes.size() - 2);
        }
    }
}

}  // namespace
}  // namespace vliptc::test
