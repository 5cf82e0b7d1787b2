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

output_value text(std::string_view bytes) {
  output_value v;
  v.kind = value_kind::text;
  v.bytes = bytes;
  return v;
}
output_value number(double n) {
  output_value v;
  v.kind = value_kind::number;
  v.number = n;
  return v;
}
output_value whole(std::int64_t n) {
  output_value v;
  v.kind = value_kind::integer;
  v.integer = n;
  return v;
}
output_value missing() { return {}; }

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
      {number(1.5), missing()},                // b has only missing values so far
      {whole(2), text("x,y"), text("extra")},  // a third column appears
      {missing()},                             // padded
      {text("word"), text("")},                // a turns to text
  };
  for (const auto& row : rows) sink.record(row);
  sink.padded_record(std::vector<output_value>{number(0.1)}, 3);  // padding beyond the table: a fourth column
  const auto table = sink.take();

  ASSERT_EQ(table.rows, 5u);
  ASSERT_EQ(table.columns.size(), 4u);
  EXPECT_EQ(table.columns[0].name, "a");
  EXPECT_EQ(table.columns[2].name, "");
  const struct {
    column_kind kind;
    std::string rows;
  } expected[] = {
      {column_kind::text, "1.5 2 - word 0.1"},
      {column_kind::text,
       "- x,y - "
       " -"},
      {column_kind::text, "- extra - - -"},
      {column_kind::missing, "- - - - -"},
  };
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    EXPECT_EQ(table.columns[i].kind, expected[i].kind) << i;
    EXPECT_EQ(rows_of(table.columns[i]), expected[i].rows) << i;
    EXPECT_EQ(table.columns[i].missing.size(), table.rows) << i;
  }
  // Text columns are one buffer with offsets; the empty text is present, not missing.
  EXPECT_EQ(table.columns[1].text, "x,y");
  EXPECT_EQ(table.columns[1].missing[3], 0);
}

TEST(ColumnTable, ReadsAFileIntoNumberColumns) {
  const std::string path = import_test::write_file("x,y\n1,2.5\n3,\n-4e2,abc\n");
  textio::parser::options opts;
  opts.num_header_lines(1);
  opts.variable_names_line(1);
  opts.output_type(textio::enums::OutputBuilderType::Matrix);
  const auto table = textio::import::read_columns(path, opts);
  ASSERT_EQ(table.rows, 3u);
  ASSERT_EQ(table.columns.size(), 2u);
  EXPECT_EQ(table.columns[0].name, "x");
  EXPECT_EQ(table.columns[1].name, "y");
  ASSERT_EQ(table.columns[0].kind, column_kind::number);
  EXPECT_EQ(table.columns[0].numbers, (std::vector<double>{1, 3, -400}));
  ASSERT_EQ(table.columns[1].kind, column_kind::number);
  EXPECT_EQ(table.columns[1].numbers[0], 2.5);
  EXPECT_EQ(table.columns[1].missing, (std::vector<std::uint8_t>{0, 1, 0}));
  EXPECT_TRUE(std::isnan(table.columns[1].numbers[2]));
}

}  // namespace
