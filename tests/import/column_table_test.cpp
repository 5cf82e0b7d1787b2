// The in-memory table: records in, columns out, through the sink directly
// (kinds, ragged records) and through a file with the reader.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "import/table/column_table.hpp"
#include "import/read_helpers.hpp"
#include "import/table/text_offsets.hpp"
#include "import/text_reader.hpp"

namespace {

using textio::import::column_kind;
using textio::import::output_value;
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
  // The same rows, the last three collected by a part sink (as a part read
  // on another thread) and taken: the same table.
  textio::import::column_table_sink in_parts;
  in_parts.header(header);
  in_parts.record(rows[0]);
  in_parts.record(rows[1]);
  const auto part = in_parts.part_sink();
  part->record(rows[2]);
  part->record(rows[3]);
  part->padded_record(std::vector<output_value>{number(0.1)}, 3);
  in_parts.take_part(*part);
  const auto table = sink.take();
  const auto parts_table = in_parts.take();
  ASSERT_EQ(parts_table.rows, table.rows);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const auto &a = table.columns[i], &b = parts_table.columns.at(i);
    EXPECT_TRUE(a.kind == b.kind && a.missing == b.missing && a.numbers == b.numbers && a.text == b.text &&
                a.offsets == b.offsets)
        << "column " << i;
  }

  ASSERT_EQ(table.rows, 5u);
  ASSERT_EQ(table.columns.size(), 4u);
  EXPECT_EQ(table.columns[0].name, "a");
  EXPECT_EQ(table.columns[2].name, "");
  // Every row of a column as text, "-" where missing.
  const std::string expected[] = {"1.5 2 - word 0.1", "- x,y -  -", "- extra - - -", "- - - - -"};
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const auto& c = table.columns[i];
    ASSERT_EQ(c.kind, i < 3 ? column_kind::text : column_kind::missing) << i;
    ASSERT_EQ(c.missing.size(), table.rows) << i;
    std::string rows_shown;
    for (std::size_t row = 0; row < table.rows; ++row) {
      rows_shown += (row > 0 ? " " : "") + (c.missing[row] != 0 ? "-" : std::string(c.text_at(row)));
    }
    EXPECT_EQ(rows_shown, expected[i]) << i;  // the empty text is there, not missing
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
  EXPECT_EQ(table.columns[0].numbers, (std::vector<double>{1, 3, -400}));
  EXPECT_EQ(table.columns[1].numbers[0], 2.5);
  ASSERT_EQ(table.columns[1].kind, column_kind::number);
  EXPECT_EQ(table.columns[1].missing, (std::vector<std::uint8_t>{0, 1, 0}));
  EXPECT_TRUE(std::isnan(table.columns[1].numbers[2]));
}

// A variable whose guessed type a later value does not fit turns to text,
// that value as read and the numbers before it in their shortest form.
TEST(ColumnTable, GuessedNumbersTurnToTextForAValueThatDoesNotConvert) {
  textio::parser::options opts;
  opts.num_header_lines(1);
  opts.variable_names_line(1);
  opts.output_type(textio::enums::OutputBuilderType::Table);
  std::vector<textio::import::variable_typing> types(2);
  for (auto& t : types) {
    t.type = textio::import::value_type::double_;
    t.unconverted = textio::import::unconverted_value::text;
  }
  textio::import::utf8_input input(import_test::write_file("x,y\n1.50,1\n2,2\nn/a 3,3\n"));
  textio::import::column_table_sink sink;
  const auto summary = textio::import::read_typed_table(opts, input, sink, {}, types);
  const auto table = sink.take();
  ASSERT_EQ(table.columns.size(), 2u);
  EXPECT_EQ(table.columns[0].kind, column_kind::text);
  EXPECT_EQ(table.columns[0].text, "1.52n/a 3");
  EXPECT_EQ(table.columns[1].kind, column_kind::number);
  EXPECT_EQ(summary.unconverted, (std::vector<textio::import::unconverted_values>{{1, 4}, {0, 0}}));
}

// Offsets turn 64-bit at the first one past the narrow limit (10 here, 4 GiB
// in the table), by push_back or by a shifted append, and keep their values.
TEST(ColumnTable, TextOffsetsWidenPastTheNarrowLimit) {
  using offsets = textio::import::basic_text_offsets<10>;
  offsets part;
  for (const std::uint64_t o : {0, 3, 4}) part.push_back(o);
  const struct {
    std::uint64_t base;
    bool wide;
    std::vector<std::uint64_t> values;
  } cases[] = {{6, false, {0, 9, 10}}, {7, true, {0, 10, 11}}};
  for (const auto& c : cases) {
    offsets to;
    to.push_back(0);
    to.append_shifted(part, 1, c.base);
    EXPECT_EQ(to.wide(), c.wide) << c.base;
    offsets expected;
    for (const std::uint64_t o : c.values) expected.push_back(o);
    EXPECT_EQ(to, expected) << c.base;
  }
  offsets o;
  o.push_back(10);
  EXPECT_FALSE(o.wide());
  o.push_back(11);
  o.push_back(12);
  ASSERT_TRUE(o.wide());
  EXPECT_EQ(o.size(), 3u);
  EXPECT_EQ(o[0] + o[1] + o[2], 33u);
  o.clear();
  o.push_back(1);
  EXPECT_FALSE(o.wide());
}

}  // namespace
