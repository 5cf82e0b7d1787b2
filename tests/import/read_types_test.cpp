// Typed reading: detected and given types, the import-error and missing
// rules on values that do not convert, and CSV written by us read back the
// same.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"

namespace {

using import_test::joined;
using import_test::read_text;
using test_support::run_tool;

const std::vector<std::string> named{"OutputBuilderType", "table", "NumHeaderLines", "1", "VariableNamesLine", "1"};

std::vector<std::string> with(std::vector<std::string> more) {
  std::vector<std::string> all = named;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

TEST(ReadTypes, DetectedTypesGiveValues) {
  const auto out = read_text("n,b,t,d,s\n1.5,TRUE,28/01/2018,01:02:03.50,x\n-2,false,13/12/2018,2 00:00:00,y\n", named);
  EXPECT_NE(out.header.find(R"("types": ["double", "logical", "datetime", "duration", "string"])"), std::string::npos)
      << out.header;
  EXPECT_EQ(joined(out),
            R"([1.5, true, "2018-01-28", "01:02:03.50", "x"] | [-2, false, "2018-12-13", "48:00:00", "y"])");
}

TEST(ReadTypes, UnsettledDateOrderIsNoted) {
  const std::string path = import_test::write_file("when\n3/4/2020\n5/6/2020\n");
  const auto run = run_tool({"read", path, "NumHeaderLines", "1", "VariableNamesLine", "1"});
  EXPECT_EQ(run.out.substr(run.out.find('\n') + 1), "[\"2020-04-03\"]\n[\"2020-06-05\"]\n");
  EXPECT_NE(run.err.find("variable 1 read both day-first and month-first"), std::string::npos) << run.err;
}

TEST(ReadTypes, DetectedMarkersAreMissingNotImportErrors) {
  const auto out = read_text("a,b\n1,NA\n2,x\nnull,y\n", with({"ImportErrorRule", "error"}));
  EXPECT_EQ(out.status, 0) << out.error;
  EXPECT_EQ(joined(out), R"([1, "NA"] | [2, "x"] | [null, "y"])");
  EXPECT_EQ(joined(read_text("a\n1\nnull\n", with({"MissingRule", "omitrow"}))), "[1]");
}

TEST(ReadTypes, ValuesThatDoNotConvertFollowTheImportErrorRule) {
  const std::pair<const char*, const char*> cases[] = {
      {"fill", "[1, true] | [null, false] | [300, true]"},
      {"omitrow", "[1, true] | [300, true]"},
      {"omitvar", "[true] | [false] | [true]"},
      {"error", "[1, true] | ImportError(3, 1)"},
  };
  for (const auto& [rule, expected] : cases) {
    const auto out =
        read_text("a,b\n1,true\nx,false\n300,TRUE\n", with({"ImportErrorRule", rule, "--types", R"(["int16"])"}));
    EXPECT_EQ(joined(out), expected) << rule;
  }
  // A value out of an integer type's range is no value of it.
  EXPECT_EQ(joined(read_text("a\n1\n300\n", with({"--types", R"({"a": "int8"})"}))), "[1] | [null]");
}

TEST(ReadTypes, TypeArgumentErrorsAreUsageErrors) {
  for (const std::string bad :
       {R"(["float"])", R"({"zz": "double"})", R"(["double", "double", "double"])", "[1]", "nojson"}) {
    EXPECT_THROW(read_text("a,b\n1,2\n", with({"--types", bad})), std::exception) << bad;
  }
}

TEST(ReadTypes, CellKeepsTextAndCsvReadsBackTheSame) {
  const std::string file = "a,b,c\n1.25,true,2018-01-28T05:06:07.5+01:00\n,False,2018-01-29\n";
  EXPECT_EQ(joined(read_text(file, {"OutputBuilderType", "cell"})),
            R"(["a", "b", "c"] | ["1.25", "true", "2018-01-28T05:06:07.5+01:00"] | [null, "False", "2018-01-29"])");
  const auto first = read_text(file, named);
  const auto csv = read_text(file, with({"--format", "csv"}));
  const auto again = read_text(csv.raw, named);
  EXPECT_EQ(again.header, first.header);
  EXPECT_EQ(joined(again), joined(first));
  EXPECT_EQ(joined(first), R"([1.25, true, "2018-01-28T05:06:07.5+01:00"] | [null, false, "2018-01-29"])");
}

}  // namespace
