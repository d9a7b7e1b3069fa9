#include <gtest/gtest.h>

#include <filesystem>

#include "host/VLFile.h"
#include "tests/iptc/StoreFixture.h"

namespace vliptc::test {
namespace {

std::string U16(std::uint16_t v) { return {char(v & 0xFF), char(v >> 8)}; }
std::string U32(std::uint32_t v) { return U16(std::uint16_t(v & 0xFFFF)) + U16(std::uint16_t(v >> 16)); }
std::string Text(const std::string& s) { return "\x01" + U32(std::uint32_t(s.size())) + s; }
const std::string kZeros(256, '\0');

// Two templates written by hand: "ab" with dataset 0 = 16-bit 4, dataset 5 =
// "Hi" and an empty dataset 7; then a nameless template with no items.
std::string TwoTemplates(std::uint16_t fileVersion = 1, std::uint16_t recordVersion = 1,
                         const std::string& reserved = kZeros) {
    return U16(fileVersion) + U32(2) +                                      //
           U16(recordVersion) + U32(3) + U32(2) + "ab" +                    //
           U32(0) + U32(1) + "\x03" + U32(2) + U16(4) +                     //
           U32(5) + U32(1) + Text("Hi") + U32(7) + U32(0) + reserved +      //
           U16(recordVersion) + U32(0) + U32(0) + reserved;
}

void FillTwoTemplateFields(CIPTC& store) {
    CVLProperty version;
    version.SetNumber16(4);
    store.Fields() = {{0, {version}}, {5, {CVLProperty("Hi")}}, {7, {}}};
}

std::vector<std::string> Names(const CIPTC& store) {
    std::vector<std::string> names;
    for (const auto& t : store.Templates()) names.push_back(t.strName);
    return names;
}

TEST(Templates, FileBytesAreExact) {
    StoreFolders f;
    TestIPTC store;
    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    FillTwoTemplateFields(store);
    ASSERT_TRUE(store.StoreTemplate("ab"));
    store.Fields().clear();
    ASSERT_TRUE(store.StoreTemplate(""));
    EXPECT_EQ(ReadFile(store.TemplatePath()), TwoTemplates());

    // Versions are not checked; the reserved area comes back as it stands.
    const std::string reserved(256, 'R');
    WriteFile(store.TemplatePath(), TwoTemplates(7, 9, reserved));
    ASSERT_TRUE(store.LoadTemplates(store.TemplatePath()));
    ASSERT_EQ(Names(store), (std::vector<std::string>{"ab", ""}));
    ASSERT_TRUE(store.LoadTemplate("ab"));
    EXPECT_EQ(store.Fields().size(), 3u);
    EXPECT_EQ(store.Fields()[0].vValues.at(0).GetKind(), CVLProperty::kNumber16);
    ASSERT_TRUE(store.SaveTemplates(store.TemplatePath()));
    EXPECT_EQ(ReadFile(store.TemplatePath()), TwoTemplates(1, 1, reserved));
}

TEST(Templates, StoreLoadAndDelete) {
    StoreFolders f;
    CIPTC store;
    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    ASSERT_TRUE(store.StoreTemplate("empty"));  // with no fields at all
    store.SetField(5, CVLProperty("first"), true);
    ASSERT_TRUE(store.StoreTemplate("Sky"));
    store.SetField(5, CVLProperty("lower"), true);
    ASSERT_TRUE(store.StoreTemplate("sky"));  // a different template
    ASSERT_TRUE(store.StoreTemplate("Sea"));
    store.SetField(5, CVLProperty("second"), true);
    ASSERT_TRUE(store.StoreTemplate("Sky"));  // overwritten in place
    EXPECT_EQ(Names(store), (std::vector<std::string>{"empty", "Sky", "sky", "Sea"}));

    EXPECT_FALSE(store.LoadTemplate("SKY"));
    EXPECT_EQ(store.Fields()[0].vValues[0].String(), "second");  // untouched
    ASSERT_TRUE(store.LoadTemplate("sky"));
    EXPECT_EQ(store.Fields()[0].vValues[0].String(), "lower");

    ASSERT_TRUE(store.DeleteTemplate("sky"));
    EXPECT_FALSE(store.DeleteTemplate("sky"));
    EXPECT_EQ(Names(store), (std::vector<std::string>{"empty", "Sky", "Sea"}));

    // Without SaveChanges the file still holds the deleted template.
    CIPTC restart;
    ASSERT_EQ(restart.Initialize(f.defs, f.user), CIPTC::kSuccess);
    EXPECT_EQ(Names(restart), (std::vector<std::string>{"empty", "Sky", "sky", "Sea"}));
    ASSERT_TRUE(restart.LoadTemplate("Sky"));
    EXPECT_EQ(restart.Fields()[0].vValues[0].String(), "second");
    ASSERT_TRUE(restart.LoadTemplate("empty"));
    EXPECT_TRUE(restart.Fields().empty());

    store.SaveChanges();
    ASSERT_EQ(restart.Initialize(f.defs, f.user), CIPTC::kSuccess);
    EXPECT_EQ(Names(restart), (std::vector<std::string>{"empty", "Sky", "Sea"}));
}

TEST(Templates, MissingAndDamagedFilesLoadNothing) {
    TempDir dir;
    const std::string path = dir.File("vliptctmpl.dat");
    const std::string valid = TwoTemplates();
    TestIPTC store;
    // Loads the valid file first, so a failed load has something to clear.
    auto load = [&](const std::string& bytes) {
        CVLMemFile file;
        file.Assign(valid.data(), valid.size());
        EXPECT_TRUE(store.LoadTemplates(file));
        file.Assign(bytes.data(), bytes.size());
        return store.LoadTemplates(file);
    };

    std::filesystem::remove(path);
    EXPECT_TRUE(store.LoadTemplates(path));
    for (std::size_t n = 0; n < valid.size(); ++n) {
        EXPECT_FALSE(load(valid.substr(0, n))) << n;
        EXPECT_TRUE(store.Templates().empty()) << n;
    }

    const std::string record = U16(1) + U32(1) + U32(1) + "n";
    const std::pair<std::string, std::string> damaged[] = {
        {"huge template count", U16(1) + U32(0xFFFFFFFF) + kZeros},
        {"huge name length", U16(1) + U32(1) + U16(1) + U32(0) + U32(0xFFFFFFFF) + kZeros},
        {"huge item count", U16(1) + U32(1) + U16(1) + U32(0xFFFFFFFF) + U32(0) + kZeros},
        {"huge value count", U16(1) + U32(1) + record + U32(5) + U32(0xFFFFFFFF) + kZeros},
        {"unknown value kind", U16(1) + U32(1) + record + U32(5) + U32(1) + "\x63" + U32(0) + kZeros},
        {"value longer than the file", U16(1) + U32(1) + record + U32(5) + U32(1) + "\x01" + U32(9999) + kZeros},
    };
    for (const auto& [what, bytes] : damaged) {  // through the file, as Initialize reads it
        WriteFile(path, valid);
        ASSERT_TRUE(store.LoadTemplates(path));
        WriteFile(path, bytes);
        EXPECT_FALSE(store.LoadTemplates(path)) << what;
        EXPECT_TRUE(store.Templates().empty()) << what;
    }
    EXPECT_TRUE(load(U16(1) + U32(0) + "trailing bytes"));
}

// A save keeps the previous file as "<path>.bak" and a restart reads the
// new one; a store that was never initialised has no file to save to. (Each
// failing step of a save: the fault matrix in tests/reliability.)
TEST(Templates, SaveKeepsThePreviousFileAsBackup) {
    StoreFolders f;
    CIPTC store;
    EXPECT_FALSE(store.StoreTemplate("no path yet"));  // kept in memory only
    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    ASSERT_TRUE(store.StoreTemplate("first"));
    const std::string previous = ReadFile(store.TemplatePath());
    ASSERT_TRUE(store.StoreTemplate("last"));
    EXPECT_EQ(ReadFile(store.TemplatePath() + ".bak"), previous);
    CIPTC restart;
    ASSERT_EQ(restart.Initialize(f.defs, f.user), CIPTC::kSuccess);
    EXPECT_EQ(Names(restart), (std::vector<std::string>{"first", "last"}));
}

}  // namespace
}  // namespace vliptc::test
