// vliptc end to end: what it prints, and what it writes as ExifTool reads it.

#include <sys/stat.h>

#include "platform/FileSystem.h"
#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

using Json = nlohmann::json;

TEST_F(CliTest, ShowPrintsTextJsonAndPatterns) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    Copy("jpeg/et_PhotoMechanic.jpg", "pm.jpg");
    Copy("jpeg/ian_Canon_40D.jpg", "plain.jpg");

    const auto text = Run({"iptc", "show", "pm.jpg"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(
        text.out,
        "Object Name\tObject Name\nEdit Status\tEdit Status\nUrgency\t8\nCategory\tCategory\n"
        "Supplemental Category\tSupp Cat 1; Supp Cat 2\nKeywords\tKeywords; one; three; two\n"
        "Special Instructions\tSpecial ins\nDate Created\t20061029\nTime Created\t062751-0500\n"
        "By-line\tPhotographer\nBy-line Title\tTitle\nCity\tkingston\nProvince/State\tState\n"
        "Country/Primary Location Code\tCOD\nCountry/Primary Location Name\tCountry\nHeadline\tHeadline\n"
        "Credit\tCredit\nSource\tSource\nCopyright Notice\tCopyright\nCaption/Abstract\tCaption\n"
        "Writer/Editor\tWriters\nRecord Version\t3\nDataset 221\t0:0:0:-00001\n");

    // Several files: a header per file; a file without IPTC has no lines.
    const auto two = Run({"iptc", "show", "plain.jpg", "pm.jpg"});
    EXPECT_EQ(two.status, 0);
    EXPECT_EQ(two.out.substr(0, 34), "==> plain.jpg <==\n\n==> pm.jpg <==\n");

    const auto json = Run({"iptc", "show", "--json", "pm.jpg", "plain.jpg"});
    ASSERT_EQ(json.status, 0);
    const Json parsed = Json::parse(json.out);
    ASSERT_EQ(parsed.size(), 2u);
    // The keys in their documented order.
    EXPECT_EQ(json.out.rfind(R"([
{"file":"pm.jpg","result":0,"format":1,"bigEndian":true,"fields":[{"id":5,"name":"Object Name",)"
                             R"("values":["Object Name"]},{"id":7,)",
                             0),
              0u);
    EXPECT_EQ(parsed[0]["fields"][5],
              Json::parse(R"({"id":25,"name":"Keywords","values":["Keywords","one","three","two"]})"));
    EXPECT_EQ(parsed[1],
              Json::parse(R"({"file":"plain.jpg","result":3,"format":1,"bigEndian":true,"fields":[]})"));

    const auto format = Run({"iptc", "format", "pm.jpg", "#5 by #80 [#25] #999 #x"});
    EXPECT_EQ(format.status, 0);
    EXPECT_EQ(format.out, "Object Name by Photographer [Keywords; one; three; two]  #x\n");
}

// One call edits a JPEG, an MM TIFF and a Photoshop document; ExifTool reads
// back the values, Windows-1252 text included.
TEST_F(CliTest, SetWritesWhatExifToolReads) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    VLIPTC_SKIP_WITHOUT_EXIFTOOL();
    const std::vector<std::string> files = {
        Copy("jpeg/et_PhotoMechanic.jpg", "a.jpg"), Copy("tiff/et_ExifTool.tif", "b.tif"),
        Copy("psd/et_Photoshop.psd", "c.psd"), Copy("tiff/mde_Classic.tif", "d.tif")};
    const auto result = Run({"iptc",     "set",
                             "a.jpg",    "b.tif",
                             "c.psd",    "d.tif",
                             "--set",    "object name=Café au lait",
                             "--add",    "keywords=sea",
                             "--add",    "25=ship",
                             "--remove", "keywords=one",
                             "--clear",  "by-line",
                             "--set",    "City=Ålesund",
                             "--set",    "caption=Two\r\nlines",
                             "--set",    "date created=#YESTERDAY"});  // measured as it expands
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");

    for (const auto& file : files) {
        SCOPED_TRACE(file);
        const auto iptc = ExifToolIptc(file);
        EXPECT_EQ(iptc.at("ObjectName"), std::vector<std::string>{"Café au lait"});
        EXPECT_EQ(iptc.at("City"), std::vector<std::string>{"Ålesund"});
        EXPECT_EQ(iptc.at("Caption-Abstract"), std::vector<std::string>{"Two\r\nlines"});
        EXPECT_EQ(iptc.count("By-line"), 0u);
        EXPECT_EQ(iptc.at("DateCreated").at(0).size(), 10u);  // "YYYY:MM:DD" of the expanded macro
        const auto& keywords = iptc.at("Keywords");
        EXPECT_EQ(std::vector<std::string>(keywords.end() - 2, keywords.end()),
                  (std::vector<std::string>{"sea", "ship"}));
        EXPECT_EQ(std::count(keywords.begin(), keywords.end(), "one"), 0);
    }
    EXPECT_NE(Run({"iptc", "show", "a.jpg"}).out.find("\nCaption/Abstract\tTwo\\nlines\n"),
              std::string::npos);
    // The same --add again finds the values there and leaves the file alone.
    const std::string before = ReadFile(files[0]);
    EXPECT_EQ(Run({"iptc", "set", "a.jpg", "--add", "keywords=sea"}).status, 0);
    EXPECT_EQ(ReadFile(files[0]), before);
}

TEST_F(CliTest, KeepTimesRestoresTheFileTimes) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    const std::string file = Copy("jpeg/et_PhotoMechanic.jpg", "a.jpg");
    platform::FileTimes old{std::nullopt, {1'000'000'000'123'456'789}, {1'000'000'000'123'456'789}};
    ASSERT_TRUE(platform::SetFileTimes(file, old));

    ASSERT_EQ(Run({"iptc", "set", "a.jpg", "--keep-times", "--add", "keywords=kept"}).status, 0);
    EXPECT_EQ(platform::GetFileTimes(file)->write, old.write);
    EXPECT_EQ(platform::GetFileTimes(file)->access, old.access);
    ASSERT_EQ(Run({"iptc", "set", "a.jpg", "--add", "keywords=new"}).status, 0);
    EXPECT_GT(platform::GetFileTimes(file)->write, old.write);
}

// Templates, user lists and synonyms go through the library into the user
// folder, and come back in the next call.
TEST_F(CliTest, TemplatesListsAndSynonymsPersist) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    Copy("jpeg/et_PhotoMechanic.jpg", "source.jpg");
    const std::string target = Copy("jpeg/ian_Canon_40D.jpg", "target.jpg");

    EXPECT_EQ(Run({"templates", "list"}).out, "");
    EXPECT_FALSE(std::filesystem::exists(user));  // reading creates nothing
    ASSERT_EQ(Run({"templates", "store", "Press desk", "--from", "source.jpg"}).status, 0);
    EXPECT_EQ(Run({"templates", "list"}).out, "Press desk\n");
    EXPECT_EQ(Run({"templates", "show", "Press desk"}).out.substr(0, 36),
              "Object Name\tObject Name\nEdit Status\t");

    ASSERT_EQ(Run({"iptc", "set", "target.jpg", "--template", "Press desk", "--set", "city=Oslo"}).status, 0);
    const auto applied = Run({"iptc", "show", "target.jpg"}).out;
    EXPECT_NE(applied.find("Keywords\tKeywords; one; three; two\n"), std::string::npos);
    EXPECT_NE(applied.find("City\tOslo\n"), std::string::npos);
    ASSERT_EQ(Run({"templates", "delete", "Press desk"}).status, 0);
    EXPECT_EQ(Run({"templates", "list"}).out, "");

    for (const char* value : {"harbour", " boats ", "harbour", "Zürich"}) {
        ASSERT_EQ(Run({"lists", "add", "keywords", value}).status, 0);
    }
    ASSERT_EQ(Run({"lists", "remove", "25", "boats"}).status, 0);
    EXPECT_EQ(Run({"lists", "show", "Keywords"}).out, "harbour\nZürich\n");

    ASSERT_EQ(Run({"synonyms", "add", "sea", "ocean", "water"}).status, 0);
    ASSERT_EQ(Run({"synonyms", "add", "ship", "boat", "vessel"}).status, 0);
    ASSERT_EQ(Run({"synonyms", "remove", "sea", "water"}).status, 0);
    ASSERT_EQ(Run({"synonyms", "remove", "ship"}).status, 0);
    EXPECT_EQ(Run({"synonyms", "show"}).out, "sea\tocean\n");
    EXPECT_TRUE(std::filesystem::exists(user + "/vliptcusr.dat"));
}

// The examples shipped with the repository show without errors.
TEST_F(CliTest, ExamplesShow) {
    std::vector<std::string> args = {"iptc", "show"};
    for (const auto& entry : std::filesystem::directory_iterator("examples")) {
        args.push_back(std::filesystem::absolute(entry.path()).string());
    }
    if (args.size() == 2) GTEST_SKIP() << "no examples/";
    const auto result = Run(args);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("Keywords\t"), std::string::npos);
}

}  // namespace
}  // namespace vliptc::test
