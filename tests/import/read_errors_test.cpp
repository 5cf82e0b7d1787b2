// Reading errors that the settings table does not show: input that cannot
// be read, CSV output cut at the error, and options that fail.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"

namespace {

using import_test::read_text;

TEST(ReadError, InputThatCannotBeReadGivesThePathAndTheReason) {
  const std::pair<std::string, std::string> cases[] = {
      {"/nonexistent/zvtextimport/file.csv", "No such file or directory"},
      {::testing::TempDir(), "Is a directory"},
  };
  for (const auto& [path, reason] : cases) {
    const auto out = import_test::read_file(path, {});
    EXPECT_EQ(out.status, 5) << path;
    EXPECT_NE(out.error.find("\"arguments\": [\"" + path + "\", \"" + reason + "\"]"), std::string::npos) << out.raw;
  }
}

TEST(ReadError, CsvOutputEndsAtTheLastGoodRecord) {
  const auto out = read_text("1,2\n3,,4\n5,6", {"--format", "csv", "ConsecutiveDelimitersRule", "error"});
  EXPECT_EQ(out.status, 4);
  EXPECT_EQ(out.raw, "1,2\r\n");
}

TEST(ReadError, OptionsFailureReportsLikeTheOptionsCommand) {
  const auto out = read_text("1", {"Delimiter", "7"});
  EXPECT_EQ(out.status, 1);
  EXPECT_TRUE(out.raw.starts_with("{\n  \"options\": {")) << out.raw;
  EXPECT_NE(out.raw.find("ZORVEK:textio:textio:DelimiterType"), std::string::npos) << out.raw;
}

}  // namespace
