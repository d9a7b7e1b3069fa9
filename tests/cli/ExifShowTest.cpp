// exif show: the JSON shape other tools parse, the text form, and the exit
// status of a batch with a file that fails.

#include <gtest/gtest.h>

#include <map>

#include <nlohmann/json.hpp>

#include "tests/cli/CliSupport.h"

namespace vliptc::test {
namespace {

TEST_F(CliTest, ExifShowJsonShapeAndFailures) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    Copy("jpeg/ian_Canon_40D.jpg", "canon.jpg");
    WriteFile(dir.File("empty.jpg"), "");

    const auto run = Run({"exif", "show", "--json", "canon.jpg", "empty.jpg"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vliptc: empty.jpg: the file is empty\n");
    const auto files = nlohmann::ordered_json::parse(run.out);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[1], nlohmann::ordered_json::parse(R"({"file":"empty.jpg","result":6,"fields":[]})"));

    const auto& canon = files[0];
    EXPECT_EQ(canon.at("result"), 0);
    std::map<int, nlohmann::ordered_json> byTag;
    for (const auto& field : canon.at("fields")) {
        ASSERT_EQ(std::vector<std::string>({"tag", "name", "type", "group", "values", "text"}),
                  [&] {
                      std::vector<std::string> keys;
                      for (const auto& item : field.items()) keys.push_back(item.key());
                      return keys;
                  }());
        byTag[field.at("tag").get<int>()] = field;
    }
    // A text, a number, a rational and a blob, each in its JSON form.
    EXPECT_EQ(byTag.at(271).at("values"), nlohmann::ordered_json::parse(R"(["Canon"])"));
    EXPECT_EQ(byTag.at(34855).at("values"), nlohmann::ordered_json::parse("[100]"));
    EXPECT_DOUBLE_EQ(byTag.at(33437).at("values")[0].get<double>(), 7.1);
    EXPECT_TRUE(byTag.at(37121).at("values")[0].contains("blob"));

    const auto text = Run({"exif", "show", "canon.jpg"});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("\nMake\tCanon\n"), std::string::npos) << text.out;
}

}  // namespace
}  // namespace vliptc::test
