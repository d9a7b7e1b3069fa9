#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "tests/iptc/StoreFixture.h"

namespace vliptc::test {
namespace {

using Fields = std::vector<std::pair<std::uint32_t, std::vector<std::string>>>;

Fields Snapshot(const CIPTC& store) {
    Fields out;
    for (const auto& item : store.Fields()) {
        std::vector<std::string> texts;
        for (const auto& v : item.vValues) texts.push_back(v.String());
        out.emplace_back(item.nID, texts);
    }
    return out;
}

void Fill(CIPTC& store, const Fields& fields) {
    store.Fields().clear();
    for (const auto& [id, texts] : fields) {
        CIPTC::SIPTCItem item{id, {}};
        for (const auto& t : texts) item.vValues.emplace_back(t);
        store.Fields().push_back(item);
    }
}

TEST(StoreFields, SetFieldTable) {
    const CVLProperty b("b");
    struct Case {
        const char* what;
        Fields before;
        std::function<void(CIPTC&)> op;
        Fields after;
    };
    const Case cases[] = {
        {"append keeps earlier values", {{5, {"a"}}}, [&](CIPTC& s) { s.SetField(5, b, false); }, {{5, {"a", "b"}}}},
        {"replace drops earlier values", {{5, {"a", "c"}}}, [&](CIPTC& s) { s.SetField(5, b, true); }, {{5, {"b"}}}},
        {"unknown dataset goes last", {{5, {}}, {7, {"x"}}}, [&](CIPTC& s) { s.SetField(99, b, true); },
         {{5, {}}, {7, {"x"}}, {99, {"b"}}}},
        {"sequence replaces", {{5, {"a", "c"}}}, [](CIPTC& s) { s.SetField(5, std::vector<CVLProperty>{}); }, {{5, {}}}},
        {"sequence for a new dataset", {{5, {"a"}}}, [&](CIPTC& s) { s.SetField(6, std::vector{b, b}); },
         {{5, {"a"}}, {6, {"b", "b"}}}},
        {"own sequence is left alone", {{5, {"a", "c"}}}, [](CIPTC& s) { s.SetField(5, s.Fields()[0].vValues); },
         {{5, {"a", "c"}}}},
        {"own value replaces", {{5, {"a", "c"}}}, [](CIPTC& s) { s.SetField(5, s.Fields()[0].vValues[1], true); },
         {{5, {"c"}}}},
        {"own value appends", {{5, {"a", "c"}}}, [](CIPTC& s) { s.SetField(5, s.Fields()[0].vValues[0], false); },
         {{5, {"a", "c", "a"}}}},
        {"another item's values to a new item", {{5, {"a"}}}, [](CIPTC& s) { s.SetField(8, s.Fields()[0].vValues); },
         {{5, {"a"}}, {8, {"a"}}}},
    };
    for (const auto& c : cases) {
        CIPTC store;  // the field store works without Initialize
        Fill(store, c.before);
        c.op(store);
        EXPECT_EQ(Snapshot(store), c.after) << c.what;
    }
}

TEST(StoreFields, GetFieldAndField) {
    CIPTC store;
    Fill(store, {{5, {}}, {7, {"x", "y"}}});
    std::vector<CVLProperty> out{CVLProperty("stale")};
    EXPECT_TRUE(store.GetField(5, out));  // present but empty
    EXPECT_TRUE(out.empty());
    out.emplace_back("stale");
    EXPECT_FALSE(store.GetField(6, out));  // missing
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(store.GetField(7, store.Fields()[1].vValues));  // into its own values
    EXPECT_EQ(Snapshot(store)[1].second, (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(store.Field(6), nullptr);
    ASSERT_NE(store.Field(7), nullptr);
    EXPECT_EQ(store.Field(7), &store.Fields()[1]);
}

TEST(StoreLifecycle, InitializeDirtyAndSave) {
    StoreFolders f;
    TestIPTC store;
    EXPECT_TRUE(store.IsDirty());  // never initialised
    EXPECT_EQ(store.SaveChanges(), CIPTC::kSuccess);

    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    EXPECT_TRUE(store.Fields().empty());  // until a read rebuilds it
    EXPECT_TRUE(store.IsDirty());         // "vliptcusr.dat" does not exist yet

    store.ResetFields();
    EXPECT_EQ(Snapshot(store), (Fields{{120, {}}, {5, {}}, {25, {}}}));
    CVLIPTCINI::STagInfo tag;
    ASSERT_TRUE(store.GetDescriptor(5, tag));
    EXPECT_EQ(tag.strName, "Title");
    std::vector<CVLIPTCINI::STagInfo> tags;
    ASSERT_TRUE(store.GetDescriptors(tags));
    ASSERT_EQ(tags.size(), 3u);
    EXPECT_EQ(tags[0].nID, 120u);
    CVLIPTCINI::SynonymList synonyms;
    EXPECT_TRUE(store.GetSynonymList(25, synonyms));

    // Saving writes the user lists and the template file.
    ASSERT_TRUE(store.SetUserList(5, {CVLProperty("one"), CVLProperty("two")}));
    EXPECT_EQ(store.SaveChanges(), CIPTC::kSuccess);
    EXPECT_EQ(ReadFile(store.TemplatePath()), std::string("\x01\x00\x00\x00\x00\x00", 6));
    EXPECT_FALSE(store.IsDirty());  // our own save does not count

    // A later start reads what was saved.
    CIPTC again;
    ASSERT_EQ(again.Initialize(f.defs, f.user), CIPTC::kSuccess);
    std::vector<CVLProperty> list;
    ASSERT_TRUE(again.GetUserList(5, list));
    EXPECT_EQ(list.size(), 2u);

    EXPECT_EQ(store.ShutDown(), CIPTC::kSuccess);
    EXPECT_TRUE(store.IsDirty());
}

TEST(StoreLifecycle, NothingIsWrittenWhenNotInitialised) {
    StoreFolders f;
    TestIPTC store;
    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    ASSERT_TRUE(store.StoreTemplate("kept"));
    const std::string before = ReadFile(store.TemplatePath());

    store.ShutDown();
    ASSERT_TRUE(store.DeleteTemplate("kept"));
    store.SetUserList(5, {CVLProperty("x")});
    EXPECT_EQ(store.SaveChanges(), CIPTC::kSuccess);
    EXPECT_EQ(ReadFile(store.TemplatePath()), before);
    EXPECT_FALSE(std::filesystem::exists(f.UserFile("vliptcusr.dat")));
}

TEST(StoreLifecycle, FailedInitializeKeepsTheFlag) {
    StoreFolders f;
    CIPTC store;
    EXPECT_EQ(store.Initialize(f.dir.Path() + "nowhere", f.user), CIPTC::kNotInitialized);
    EXPECT_FALSE(store.IsInitialized());
    EXPECT_EQ(store.TemplatePath(), f.user + "/vliptctmpl.dat");  // formed before loading

    ASSERT_EQ(store.Initialize(f.defs, f.user), CIPTC::kSuccess);
    EXPECT_EQ(store.Initialize(f.dir.Path() + "nowhere", f.user), CIPTC::kNotInitialized);
    EXPECT_TRUE(store.IsInitialized());
}

TEST(StorePaths, TrailingSeparator) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},  // stays empty: bare names, the current folder
        {"/a/b", "/a/b/"},      {"/a/b/", "/a/b/"},       {"C:\\x", "C:\\x\\"},
        {"C:\\x\\", "C:\\x\\"}, {"C:\\x/y", "C:\\x/y/"},  {"rel", "rel\\"},
        {"a/b\\", "a/b\\"},
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(WithTrailingSeparator(in), out) << in;

    CIPTC store;
    EXPECT_EQ(store.Initialize("", ""), CIPTC::kNotInitialized);  // no definitions in the working folder
    EXPECT_EQ(store.TemplatePath(), "vliptctmpl.dat");
}

TEST(StoreFormats, ByExtension) {
    struct Case {
        const char* path;
        std::uint32_t format;
        bool bigEndian;
        bool supported;
    };
    const Case cases[] = {
        {"a.jpg", 1, true, true},          {"A.JPEG", 1, true, true},
        {"x.JfIf", 1, true, true},         {"/my.photos/.jpg", 1, true, true},
        {"t.tif", 2, false, true},         {"t.TIFF", 2, false, true},
        {"e.exif", 2, false, true},        {"thumb.THM", 2, false, true},
        {"p.Psd", 4, true, true},          {"raw.CRW", 0, false, true},
        {"/my.photos/noext", 0, false, false}, {"C:\\dir.jpg\\file", 0, false, false},
        {"pic.jpg.bak", 0, false, false},  {"trailing.", 0, false, false},
        {"a.jp", 0, false, false},         {"a.jpgx", 0, false, false},
        {"a.png", 0, false, false},        {"", 0, false, false},
        {nullptr, 0, false, false},
    };
    const CIPTC store;
    for (const auto& c : cases) {
        const char* name = c.path ? c.path : "(null)";
        const auto info = store.GetFormatFromFileExt(c.path);
        EXPECT_EQ(info.nFormat, c.format) << name;
        EXPECT_EQ(info.bBigEndian, c.bigEndian) << name;
        EXPECT_EQ(store.IsSupportedFormat(c.path), c.supported) << name;
    }
}

}  // namespace
}  // namespace vliptc::test
