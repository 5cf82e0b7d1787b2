// Round trips through the CSV output, and a record written in parts.
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "tools/record_writers.hpp"

namespace {

using import_test::read_text;

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

// A record longer than the parts in which the reader hands values on, padded
// after its parts, is written whole.
TEST(Streaming, RecordLongerThanAPartIsWrittenWhole) {
  std::string line = "v0";
  for (int i = 1; i < 9000; ++i) line += ",v" + std::to_string(i);
  const auto out = read_text(line + "\nz\n", {"NumVariables", "9002", "--format", "csv"});
  EXPECT_EQ(out.raw, line + ",,\r\nz" + std::string(9001, ',') + "\r\n");
}

}  // namespace
