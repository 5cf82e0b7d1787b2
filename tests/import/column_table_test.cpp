// The in-memory table: records in, columns out, through the sink directly
// (kinds, ragged records) and through a file with the reader.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "import/column_table.hpp"
#include "import/read_helpers.hpp"

namespace {

using textio::import::column_kind;
using textio::import::output_value;
using textio::import::table_column;
using textio::import::value_kind;

output_value value(value_kind kind, std::string_view bytes, double n = 0) {
  output_value v;
  v.kind = kind;
  v.bytes = bytes;
  v.number = n;
  v.integer = static_cast<std::int64_t>(n);
  return v;
}
output_value text(std::string_view bytes) { return value(value_kind::text, bytes); }
output_value number(double n) { return value(value_kind::number, {}, n); }

// Every row of a column as text: "-" where missing.
std::string rows_of(const table_column& c) {
  std::string out;
  for (std::size_t row = 0; row < c.missing.size(); ++row) {
    if (row > 0) out += ' ';
    if (c.missing[row] != 0) {
      out += '-';
    } else if (c.kind == column_kind::number) {
      out += std::to_string(c.numbers[row]).substr(0, 4);
    } else {
      out += c.text_at(row);
    }
  }
  return out;
}

TEST(ColumnTable, SinkKeepsKindsAndPadsRaggedRecords) {
  textio::import::column_table_sink sink;
  textio::import::table_header header;
  header.names = {text("a"), text("b")};
  sink.header(header);
  const std::vector<output_value> rows[] = {
      {number(1.5), {}},                                                // b has only missing values so far
      {value(value_kind::integer, {}, 2), text("x,y"), text("extra")},  // a third column appears
      {{}},                                                             // padded
      {text("word"), text("")},                                         // a turns to text
  };
  for (const auto& row : rows) sink.record(row);
  sink.padded_record(std::vector<output_value>{number(0.1)}, 3);  // padding beyond the table: a fourth column
  const auto table = sink.take();

  ASSERT_EQ(table.rows, 5u);
  ASSERT_EQ(table.columns.size(), 4u);
  EXPECT_EQ(table.columns[0].name, "a");
  EXPECT_EQ(table.columns[2].name, "");
  const std::pair<column_kind, std::string> expected[] = {
      {column_kind::text, "1.5 2 - word 0.1"},
      {column_kind::text, "- x,y -  -"},  // the empty text is there, not missing
      {column_kind::text, "- extra - - -"},
      {column_kind::missing, "- - - - -"},
  };
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    EXPECT_EQ(table.columns[i].kind, expected[i].first) << i;
    EXPECT_EQ(rows_of(table.columns[i]), expected[i].second) << i;
    EXPECT_EQ(table.columns[i].missing.size(), table.rows) << i;
  }
  EXPECT_EQ(table.columns[1].text, "x,y");  // one buffer with offsets
}

TEST(ColumnTable, ReadsAFileIntoNumberColumns) {
  textio::parser::options opts;
  opts.num_header_lines(1);
  opts.variable_names_line(1);
  opts.output_type(textio::enums::OutputBuilderType::Matrix);
  const auto table = textio::import::read_columns(import_test::write_file("x,y\n1,2.5\n3,\n-4e2,abc\n"), opts);
  ASSERT_EQ(table.rows, 3u);
  ASSERT_EQ(table.columns.size(), 2u);
  EXPECT_EQ(table.columns[1].name, "y");
  ASSERT_EQ(table.columns[0].kind, column_kind::number);
  EXPECT_EQ(table.columns[0].numbers, (std::vector<double>{1, 3, -400}));
  ASSERT_EQ(table.columns[1].kind, column_kind::number);
  EXPECT_EQ(table.columns[1].numbers[0], 2.5);
  EXPECT_EQ(table.columns[1].missing, (std::vector<std::uint8_t>{0, 1, 0}));
  EXPECT_TRUE(std::isnan(table.columns[1].numbers[2]));
}

}  // namespace
