// zvtextparser read run as a process: exit status, standard output and
// standard error.
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"

namespace {

using test_support::run_tool;

TEST(ReadProcess, ReadsAFile) {
  const std::string path = import_test::write_file("a,b\n1,\"x\"\"y\"\n");
  const auto run = run_tool({"read", path, "--no-detect", "NumHeaderLines", "1", "VariableNamesLine", "1"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "{\"variables\": [\"a\", \"b\"], \"units\": [], \"descriptions\": []}\n[\"1\", \"x\\\"y\"]\n");
  EXPECT_EQ(run.err, "");
}

TEST(ReadProcess, ReadingErrorExitsOneWithTheMessage) {
  const std::string path = import_test::write_file("1,2\n3,,4\n");
  const auto run = run_tool({"read", path, "--no-detect", "ConsecutiveDelimitersRule", "error", "--format", "csv"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "1,2\r\n");
  EXPECT_TRUE(run.err.starts_with("zvtextparser: ZORVEK:textio:reader:ConsecutiveDelimiters: ")) << run.err;
  EXPECT_NE(run.err.find("line 2, column 3"), std::string::npos) << run.err;
}

TEST(ReadProcess, StructGivesTheOptions) {
  const std::string path = import_test::write_file("a;b\n");
  const auto run = run_tool({"read", "--no-detect", "--struct", R"({"Delimiter": ";", "VariableNamesLine": 1})", path});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "{\"variables\": [\"a\", \"b\"], \"units\": [], \"descriptions\": []}\n");
}

TEST(ReadProcess, UsageErrors) {
  const std::string path = import_test::write_file("1");
  EXPECT_EQ(run_tool({"read"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--format", "xml"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--format"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--struct", "{}", "Delimiter", ","}).status, 2);
}

TEST(ReadProcess, CountAndCsvOptions) {
  const std::string path = import_test::write_file("a b\nc\n");
  EXPECT_EQ(run_tool({"read", path, "--no-detect", "--count", "ParserType", "tabular"}).out, "{\"records\": 2, \"fields\": 4}\n");
  EXPECT_EQ(run_tool({"read", path, "--no-detect", "--format=csv", "Delimiter", " "}).out, "a,b\r\nc,\r\n");
}

}  // namespace
