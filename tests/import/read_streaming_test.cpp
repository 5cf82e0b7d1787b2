// Round trips through the CSV output, and records that cross the blocks in
// which the input is read.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"

namespace {

using import_test::joined;
using import_test::read_text;

struct round_trip_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;
};

void PrintTo(const round_trip_case& c, std::ostream* os) { *os << c.name; }

class CsvRoundTrip : public ::testing::TestWithParam<round_trip_case> {};

// The CSV output read back with default options gives the same records.
TEST_P(CsvRoundTrip, GivesTheSameRecords) {
  const auto& c = GetParam();
  const auto first = read_text(c.contents, c.args);
  ASSERT_EQ(first.status, 0) << first.error;
  std::vector<std::string> csv_args = c.args;
  csv_args.insert(csv_args.end(), {"--format", "csv"});
  const auto csv = read_text(c.contents, csv_args);
  ASSERT_EQ(csv.status, 0);
  const bool numbers = !c.args.empty() && c.args[0] == "OutputBuilderType";
  const std::vector<std::string> back_args =
      numbers ? std::vector<std::string>{"OutputBuilderType", "matrix"} : std::vector<std::string>{};
  const auto second = read_text(csv.raw, back_args);
  ASSERT_EQ(second.status, 0) << second.error;
  EXPECT_EQ(joined(second), joined(first)) << csv.raw;
}

const round_trip_case round_trip_cases[] = {
    {"quotes_commas_and_line_breaks", "\"a,b\",\"say \"\"hi\"\"\"\n\"x\ny\",\"\"", {}},
    {"missing_and_empty_text", "1,,\"\"\n,2,3", {}},
    {"leading_and_trailing_spaces", "\" a\",\"b \"\n\"\t\",c", {}},
    {"non_ascii", "é,𝄞\n日本,\"€, £\"", {}},
    {"cr_inside_field", "\"a\rb\",c", {}},
    {"tabular_to_csv", "a  b\n c d ", {"ParserType", "tabular"}},
    {"numbers", "1.5,-2,1e300\n,NaN,-Inf\n0.1,5e-324,-0", {"OutputBuilderType", "matrix"}},
};
INSTANTIATE_TEST_SUITE_P(Csv, CsvRoundTrip, ::testing::ValuesIn(round_trip_cases));

TEST(CsvOutput, WritesAHeaderRowWhenNamesExist) {
  const auto out = read_text("x,\"y z\"\n1,2", {"--format", "csv", "NumHeaderLines", "1", "VariableNamesLine", "1"});
  EXPECT_EQ(out.raw, "x,y z\r\n1,2\r\n");
}

TEST(CountOutput, CountsRecordsAndFields) {
  const auto out = read_text("a,b\n\"c\nd\",e,f\n\n", {"--count"});
  EXPECT_EQ(out.raw, "{\"records\": 2, \"fields\": 5}\n");
}

// Big enough to span several of the reader's one-MiB blocks.
constexpr std::size_t block = std::size_t{1} << 20;

TEST(Streaming, QuotedFieldLongerThanABlock) {
  const std::string long_text(3 * block + 17, 'q');
  const auto out = read_text("a\n\"" + long_text + "\",b\nc", {"--count"});
  EXPECT_EQ(out.raw, "{\"records\": 3, \"fields\": 5}\n");
  const auto full = read_text("\"" + long_text + "\"", {});
  ASSERT_EQ(full.records.size(), 1u);
  EXPECT_EQ(full.records[0], "[\"" + long_text + "\"]");
}

TEST(Streaming, CrlfSplitAcrossBlocksIsOneLineEnding) {
  // The block ends between CR and LF; an empty line in between would show
  // as a missing record under EmptyLineRule "read".
  std::string text(block - 1, 'x');
  text += "\r\ny";
  const auto out = read_text(text, {"EmptyLineRule", "read", "--count"});
  EXPECT_EQ(out.raw, "{\"records\": 2, \"fields\": 2}\n");
}

TEST(Streaming, MultiByteCharacterSplitAcrossBlocks) {
  std::string text(block - 1, 'x');
  text += "é,𝄞";
  const auto out = read_text(text, {"ParserType", "fixedwidth", "VariableWidths", "[1048575, 2, 2]"});
  ASSERT_EQ(out.records.size(), 1u) << out.error;
  EXPECT_TRUE(out.records[0].ends_with(R"(", "é,", "𝄞"])")) << out.records[0].substr(out.records[0].size() - 40);
}

TEST(Streaming, ManyRecordsAcrossBlocks) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += std::to_string(i) + ",\"q" + std::to_string(i) + "\",x\r\n";
  const auto out = read_text(text, {"--count"});
  EXPECT_EQ(out.raw, "{\"records\": 200000, \"fields\": 600000}\n");
}

}  // namespace

namespace {

struct count_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;
};

void PrintTo(const count_case& c, std::ostream* os) { *os << c.name; }

class CountMatchesRecords : public ::testing::TestWithParam<count_case> {};

// --count takes a shorter way where no rule looks at the values; it must
// count what the records would show.
TEST_P(CountMatchesRecords, SameRecordsAndFields) {
  const auto& c = GetParam();
  const auto records = read_text(c.contents, c.args);
  ASSERT_EQ(records.status, 0) << records.error;
  std::size_t fields = 0;
  for (const auto& r : records.records) fields += r == "[]" ? 0 : 1 + std::count(r.begin(), r.end(), ',');
  std::vector<std::string> count_args = c.args;
  count_args.push_back("--count");
  const auto counted = read_text(c.contents, count_args);
  EXPECT_EQ(counted.raw, "{\"records\": " + std::to_string(records.records.size()) +
                             ", \"fields\": " + std::to_string(fields) + "}\n");
}

const count_case count_cases[] = {
    {"growing_and_short_records", "1\n2,3,4\n5\n\n6,7", {}},
    {"ignored_extras", "1,2\n3,4,5\n6", {"ExtraColumnsRule", "ignore"}},
    {"empty_lines_read", "1,2\n\n3", {"EmptyLineRule", "read"}},
    {"empty_line_first", "\n1,2", {"EmptyLineRule", "read"}},
    {"joined_delimiters", ",1,,2,", {"MultipleDelimsAsOne", "true"}},
    {"names_set_the_count", "a,b,c\n1\n2,3,4,5", {"NumHeaderLines", "1", "VariableNamesLine", "1"}},
    {"given_count", "1,2,3\n4", {"NumVariables", "2"}},
    {"line_parser", "a\n\nb", {"ParserType", "line", "EmptyLineRule", "read"}},
    {"tabular", " a  b \nc", {"ParserType", "tabular"}},
    {"matrix_fill", "1,x\n2", {"OutputBuilderType", "matrix"}},
    {"comments", "#h,\"\n1,2 # c\n  # only\n\"#\",3\n\n4#,", {"CommentStyle", "#", "EmptyLineRule", "read"}},
    {"quotes_that_are_text", "\"\"\n a,\"b\n c\"\n x\"y,z\n\"q\"r,s", {}},
};
INSTANTIATE_TEST_SUITE_P(Count, CountMatchesRecords, ::testing::ValuesIn(count_cases));

}  // namespace
