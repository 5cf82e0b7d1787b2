// Round trips through the CSV output, and records that cross the blocks in
// which the input is read.
#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "tools/record_writers.hpp"

namespace {

using import_test::joined;
using import_test::read_text;

// Numbers written as CSV and read back are the same numbers.
TEST(CsvRoundTrip, NumbersReadBackTheSame) {
  const std::vector<std::string> matrix{"OutputBuilderType", "matrix"};
  const std::string file = "1.5,-2,1e300\n,NaN,-Inf\n0.1,5e-324,-0";
  const auto first = read_text(file, matrix);
  const auto csv = read_text(file, {"OutputBuilderType", "matrix", "--format", "csv"});
  EXPECT_EQ(joined(read_text(csv.raw, matrix)), joined(first)) << csv.raw;
  EXPECT_EQ(joined(first), R"([1.5, -2, 1e+300] | [null, "NaN", "-Inf"] | [0.1, 5e-324, -0])");
}

// Random tables (shapes, names or none, missing values, texts built from
// every unit that CSV or the reader treats specially) written as CSV and read
// back with EmptyLineRule "read", the one setting the round trip needs: the
// records come back as the JSON-lines writer shows the table itself.
TEST(CsvRoundTripProperty, RandomTablesReadBackUnchanged) {
  const std::string pieces[] = {",",  "\"", "\r", "\n", "\r\n", " ", "\t",           "\b", "\f",
                                "\v", "a",  "NA", "#",  "é",    "𝄞", "\xEF\xBB\xBF", "%"};
  std::mt19937 random(20261123);
  const auto below = [&random](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); };
  const auto some_text = [&] {
    std::string text;
    for (std::size_t n = below(5); n > 0; --n) text += pieces[below(std::size(pieces))];
    return text;
  };
  for (int table = 0; table < 300; ++table) {
    const std::size_t columns = 1 + below(4);
    const std::size_t rows = below(6);
    std::vector<std::string> texts;  // owns what the values view
    texts.reserve((rows + 1) * columns);
    const auto value = [&](bool may_be_missing) {
      textio::import::output_value v;
      if (may_be_missing && below(4) == 0) return v;
      v.kind = textio::import::value_kind::text;
      v.bytes = texts.emplace_back(some_text());
      return v;
    };
    textio::import::table_header header;
    const bool names = below(2) == 0;
    for (std::size_t c = 0; names && c < columns; ++c) header.names.push_back(value(false));
    std::ostringstream csv;
    std::ostringstream expected;
    {
      zvtool::csv_writer csv_out(csv);
      zvtool::jsonl_writer jsonl_out(expected);
      csv_out.header(header);
      jsonl_out.header(header);
      for (std::size_t r = 0; r < rows; ++r) {
        std::vector<textio::import::output_value> record;
        for (std::size_t c = 0; c < columns; ++c) record.push_back(value(true));
        csv_out.record(record);
        jsonl_out.record(record);
      }
      csv_out.flush();
      jsonl_out.flush();
    }
    std::vector<std::string> args{"EmptyLineRule", "read"};
    if (names) args.insert(args.end(), {"NumHeaderLines", "1", "VariableNamesLine", "1"});
    const auto back = read_text(csv.str(), args);
    ASSERT_EQ(back.raw, expected.str()) << "table " << table << ", CSV:\n" << ::testing::PrintToString(csv.str());
  }
}

// Big enough to span several of the reader's one-MiB blocks.
constexpr std::size_t block = std::size_t{1} << 20;

// A record longer than the parts in which the reader hands values on, padded
// after its parts, is written whole.
TEST(Streaming, RecordLongerThanAPartIsWrittenWhole) {
  std::string line = "v0";
  for (int i = 1; i < 9000; ++i) line += ",v" + std::to_string(i);
  const auto out = read_text(line + "\nz\n", {"NumVariables", "9002", "--format", "csv"});
  EXPECT_EQ(out.raw, line + ",,\r\nz" + std::string(9001, ',') + "\r\n");
}

// A rule that drops or fails a long record for a field after its first part
// leaves no part of it written.
TEST(Streaming, LongRecordDroppedAfterItsFirstPartLeavesNoPart) {
  const auto line = [](const std::string& at_8000) {
    std::string text = "1";
    for (int i = 1; i < 9000; ++i) text += "," + (i == 8000 ? at_8000 : std::to_string(i));
    return text + "\n";
  };
  std::string types = "[\"double\"";
  for (int i = 1; i < 9000; ++i) types += ", \"double\"";
  types += "]";
  const struct {
    std::string at_8000;
    std::vector<std::string> args;
    std::string error;
  } cases[] = {
      {"", {"MissingRule", "omitrow"}, ""},
      {"", {"MissingRule", "error"}, "MissingValue"},
      {"x", {"OutputBuilderType", "matrix", "ImportErrorRule", "omitrow"}, ""},
      {"x", {"OutputBuilderType", "table", "--types", types, "ImportErrorRule", "omitrow"}, ""},
      {"x", {"OutputBuilderType", "table", "--types", types, "ImportErrorRule", "error"}, "ImportError"},
  };
  for (const auto& c : cases) {
    const auto out = read_text(line("1") + line(c.at_8000) + line("2"), c.args);
    const std::size_t records = c.error.empty() ? 2 : 1;
    ASSERT_EQ(out.records.size(), records) << c.args[1];
    for (const std::string& record : out.records) {
      EXPECT_EQ(std::count(record.begin(), record.end(), ','), 8999) << c.args[1];
      EXPECT_TRUE(record.ends_with(" 8999]") || record.ends_with("\"8999\"]")) << c.args[1];
    }
    EXPECT_EQ(out.error.find("{\"error\": {\"identifier\": \"ZORVEK:textio:reader:" + c.error), c.error.empty() ? std::string::npos : 0u)
        << out.error;
  }
}

TEST(Streaming, QuotedFieldLongerThanABlock) {
  const std::string long_text(3 * block + 17, 'q');
  const auto out = read_text("a\n\"" + long_text + "\",b\nc", {"--count"});
  EXPECT_EQ(out.raw, "{\"records\": 3, \"fields\": 5}\n");
  const auto full = read_text("\"" + long_text + "\"", {});
  ASSERT_EQ(full.records.size(), 1u);
  EXPECT_EQ(full.records[0], "[\"" + long_text + "\"]");
}

// A CR LF or a character cut by the end of a block is read as one.
TEST(Streaming, LineEndingAndCharacterSplitAcrossBlocks) {
  const std::string text(block - 1, 'x');
  EXPECT_EQ(read_text(text + "\r\ny", {"EmptyLineRule", "read", "--count"}).raw, "{\"records\": 2, \"fields\": 2}\n");
  const auto out = read_text(text + "é,𝄞", {"ParserType", "fixedwidth", "VariableWidths", "[1048575, 2, 2]"});
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
    {"line_of_an_empty_quoted_field", "1\n\"\"\n \"\" \n2", {}},
    {"joined_delimiters", ",1,,2,", {"MultipleDelimsAsOne", "true"}},
    {"names_set_the_count", "a,b,c\n1\n2,3,4,5", {"NumHeaderLines", "1", "VariableNamesLine", "1"}},
    {"given_count", "1,2,3\n4", {"NumVariables", "2"}},
    {"line_parser", "a\n\nb", {"ParserType", "line", "EmptyLineRule", "read"}},
    {"tabular", " a  b \nc", {"ParserType", "tabular"}},
    {"matrix_fill", "1,x\n2", {"OutputBuilderType", "matrix"}},
    {"comments", "#h,\"\n1,2 # c\n  # only\n\"#\",3\n\n4#,", {"CommentStyle", "#", "EmptyLineRule", "read"}},
    {"quotes_that_are_text", "\"\"\n a,\"b\n c\"\n x\"y,z\n\"q\"r,s", {}},
    {"line_ending_longer_than_lf", "1\n,2\n3,4\n,5", {"LineEnding", "\n,"}},
};
INSTANTIATE_TEST_SUITE_P(Count, CountMatchesRecords, ::testing::ValuesIn(count_cases));

}  // namespace
