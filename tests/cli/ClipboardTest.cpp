// vliptc iptc copy | paste: a record carried between files through the
// clipboard file, and clipboard files that must not touch any image.

#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

class ClipboardCliTest : public CliTest {
protected:
    std::string Example(const std::string& name) const {
        const std::string target = dir.File(name);
        std::filesystem::copy_file("examples/" + name, target);  // tests run from the repository root
        return target;
    }
    // "iptc show" without the record version, which the library writes itself.
    std::string Fields(const std::string& file) const {
        std::string out = Run({"iptc", "show", file}).out;
        return out.substr(0, out.find("Record Version\t"));
    }
};

TEST_F(ClipboardCliTest, PasteReplacesWholeRecords) {
    Example("harbour.jpg");
    Example("street.jpg");
    Example("meadow.tif");
    const auto copy = Run({"iptc", "copy", "harbour.jpg", "--text"});
    ASSERT_EQ(copy.status, 0) << copy.err;
    // The text form: a line per field of the store, values tab-separated, CR LF.
    EXPECT_NE(copy.out.find("\r\nKeywords\tharbour\tboats\tsea\r\n"), std::string::npos) << copy.out;
    EXPECT_NE(copy.out.find("\r\nCity\t\xC3\x85lesund\r\n"), std::string::npos);
    EXPECT_EQ(ReadFile(user + "/vliptcclp.dat").substr(0, 2), std::string("\x01\x00", 2));

    const auto paste = Run({"iptc", "paste", "street.jpg", "meadow.tif", "./street.jpg"});
    ASSERT_EQ(paste.status, 0) << paste.err;
    EXPECT_EQ(Fields("street.jpg"), Fields("harbour.jpg"));
    EXPECT_EQ(Fields("meadow.tif"), Fields("harbour.jpg"));  // its Urgency and Headline are gone

    // An empty record through a clipboard file of our own: the files lose all fields.
    ASSERT_EQ(Run({"iptc", "copy", "--clip", "empty.clp", "street.jpg"}).status, 0);
    WriteFile(dir.File("none.clp"), std::string("\x01\x00\x00\x00\x00\x00", 6));
    ASSERT_EQ(Run({"iptc", "paste", "--clip", "none.clp", "street.jpg"}).status, 0);
    EXPECT_EQ(Fields("street.jpg"), "");
    ASSERT_EQ(Run({"iptc", "paste", "--clip", "empty.clp", "street.jpg"}).status, 0);
    EXPECT_EQ(Fields("street.jpg"), Fields("harbour.jpg"));
}

TEST_F(ClipboardCliTest, BadClipboardFilesTouchNoImage) {
    Example("street.jpg");
    const std::string original = ReadFile(dir.File("street.jpg"));
    WriteFile(dir.File("v2.clp"), std::string("\x02\x00\x00\x00\x00\x00", 6));
    WriteFile(dir.File("cut.clp"), std::string("\x01\x00\x01\x00\x00\x00\x19\x00", 8));
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"iptc", "paste", "street.jpg"}, "no clipboard file " + user + "/vliptcclp.dat"},
        {{"iptc", "paste", "--clip", "v2.clp", "street.jpg"},
         "holds format version 2; this vliptc reads version 1"},
        {{"iptc", "paste", "--clip", "cut.clp", "street.jpg"}, "cut.clp is not a clipboard file of vliptc"},
    };
    for (const auto& c : cases) {
        const auto result = Run(c.args);
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
        EXPECT_EQ(ReadFile(dir.File("street.jpg")), original);
    }
    EXPECT_EQ(Run({"iptc", "copy", "missing.jpg"}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(user + "/vliptcclp.dat"));
}

}  // namespace
}  // namespace vliptc::test
