// The typed table in Arrow's layout, read back the way an Arrow consumer
// reads it: through the C stream interface, walking the exported structs by
// their format strings, offsets and validity bits. Under AddressSanitizer a
// release callback that frees too early or too little fails these tests.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "import/read_helpers.hpp"
#include "import/table/arrow_export.hpp"
#include "import/text_reader.hpp"

namespace {

using namespace textio::import;

bool bit(const void* bits, std::int64_t i) {
  return bits == nullptr || ((static_cast<const std::uint8_t*>(bits)[i >> 3] >> (i & 7)) & 1) != 0;
}

template <class T>
T at(const void* buffer, std::int64_t i) {
  T v;
  std::memcpy(&v, static_cast<const char*>(buffer) + i * static_cast<std::int64_t>(sizeof(T)), sizeof(T));
  return v;
}

// Row `i` of an exported column as text, from its format alone.
std::string cell(const ArrowSchema& schema, const ArrowArray& array, std::int64_t i) {
  const std::string f = schema.format;
  const std::int64_t row = array.offset + i;
  if (f == "n" || !bit(array.buffers[0], row)) return "null";
  const void* values = array.buffers[1];
  char buf[64];
  if (f == "g") std::snprintf(buf, sizeof buf, "%g", at<double>(values, row));
  if (f == "f") std::snprintf(buf, sizeof buf, "%g", static_cast<double>(at<float>(values, row)));
  if (f == "l" || f.starts_with("ts") || f == "tDu")
    std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(at<std::int64_t>(values, row)));
  if (f == "i") std::snprintf(buf, sizeof buf, "%d", at<std::int32_t>(values, row));
  if (f == "b") return bit(values, row) ? "true" : "false";
  if (f == "u" || f == "U") {
    const std::int64_t begin = f == "u" ? at<std::int32_t>(values, row) : at<std::int64_t>(values, row);
    const std::int64_t end = f == "u" ? at<std::int32_t>(values, row + 1) : at<std::int64_t>(values, row + 1);
    return std::string(static_cast<const char*>(array.buffers[2]) + begin, static_cast<std::size_t>(end - begin));
  }
  return buf;
}

struct consumed {
  std::vector<std::string> formats;
  std::vector<std::string> names;
  std::vector<std::int64_t> null_counts;  // per column, summed over batches
  std::vector<std::vector<std::string>> rows;
  std::size_t batches = 0;
};

// Takes everything the stream gives and releases each struct the way a
// consumer does: the stream first, the arrays after it.
consumed consume(arrow_table table) {
  ArrowArrayStream stream;
  export_to_arrow(std::move(table), &stream);
  ArrowSchema schema;
  EXPECT_EQ(stream.get_schema(&stream, &schema), 0);
  consumed c;
  EXPECT_EQ(std::string(schema.format), "+s");
  for (std::int64_t i = 0; i < schema.n_children; ++i) {
    c.formats.emplace_back(schema.children[i]->format);
    c.names.emplace_back(schema.children[i]->name);
    EXPECT_EQ(schema.children[i]->flags, ARROW_FLAG_NULLABLE);
  }
  c.null_counts.assign(c.formats.size(), 0);
  std::vector<ArrowArray> arrays;
  for (;;) {
    ArrowArray batch;
    EXPECT_EQ(stream.get_next(&stream, &batch), 0);
    if (batch.release == nullptr) break;
    arrays.push_back(batch);
  }
  stream.release(&stream);
  EXPECT_EQ(stream.release, nullptr);
  for (ArrowArray& batch : arrays) {
    EXPECT_EQ(batch.n_children, schema.n_children);
    EXPECT_EQ(batch.n_buffers, 1);
    for (std::int64_t r = 0; r < batch.length; ++r) {
      std::vector<std::string> row;
      for (std::int64_t col = 0; col < batch.n_children; ++col) {
        const ArrowArray& child = *batch.children[col];
        EXPECT_EQ(child.length, batch.length);
        row.push_back(cell(*schema.children[col], child, r));
      }
      c.rows.push_back(row);
    }
    for (std::int64_t col = 0; col < batch.n_children; ++col) {
      const ArrowArray& child = *batch.children[col];
      std::int64_t nulls = 0;
      for (std::int64_t r = 0; r < child.length; ++r) nulls += bit(child.buffers[0], r) ? 0 : 1;
      EXPECT_EQ(child.null_count, nulls) << "column " << col;
      c.null_counts[static_cast<std::size_t>(col)] += nulls;
    }
    batch.release(&batch);
    EXPECT_EQ(batch.release, nullptr);
    ++c.batches;
  }
  schema.release(&schema);
  return c;
}

using rows = std::vector<std::vector<std::string>>;

TEST(ArrowTable, ReaderTypesReachTheConsumerThroughTheStream) {
  const std::string path = import_test::write_file(
      "x,ok,when,took,name,n\n"
      "1.5,true,2018-01-28,01:00:00,a,7\n"
      ",FALSE,2018-01-28T05:06:07.250+01:00,,,-3\n"
      "-2e3,,,00:00:01.5,\"q,\"\"r\",\n");
  std::vector<variable_typing> types(6);
  const value_type wanted[] = {value_type::double_,  value_type::logical, value_type::datetime,
                               value_type::duration, value_type::string,  value_type::int32};
  for (std::size_t i = 0; i < types.size(); ++i) types[i].type = wanted[i];
  textio::parser::options opts;
  opts.variable_names_line(1);
  opts.num_header_lines(1);
  utf8_input input(path);
  arrow_table_sink sink;
  read_typed_table(opts, input, sink, text_format{}, types);
  const consumed c = consume(sink.take());
  EXPECT_EQ(c.formats, (std::vector<std::string>{"g", "b", "tsu:UTC", "tDu", "u", "i"}));
  EXPECT_EQ(c.names, (std::vector<std::string>{"x", "ok", "when", "took", "name", "n"}));
  EXPECT_EQ(c.rows, (rows{{"1.5", "true", "1517097600000000", "3600000000", "a", "7"},
                          {"null", "false", "1517112367250000", "null", "null", "-3"},
                          {"-2000", "null", "null", "1500000", "q,\"r", "null"}}));
  EXPECT_EQ(c.null_counts, (std::vector<std::int64_t>{1, 1, 1, 1, 1, 1}));
}

output_value text(std::string_view s) {
  output_value v;
  v.kind = value_kind::text;
  v.bytes = s;
  return v;
}
output_value number(double n) {
  output_value v;
  v.kind = value_kind::number;
  v.number = n;
  return v;
}

// Parts collected on other threads arrive as batches of their own; a column
// that is text in one part is text in every batch, numbers written as text;
// a column a part never saw is missing there.
TEST(ArrowTable, PartsBecomeBatchesOfOneSchema) {
  arrow_table_sink sink(batch_limits{2, 1 << 20});
  table_header header;
  header.names = {text("a")};
  header.types = {{"double", 1}};
  sink.header(header);
  sink.record(std::vector{number(1)});
  auto part = sink.part_sink();
  part->record(std::vector{number(2.5), text("late")});
  part->record(std::vector{text("n/a")});
  part->record(std::vector{output_value{}});
  sink.take_part(*part);
  part->record(std::vector{number(4)});
  sink.take_part(*part);
  sink.record(std::vector{number(5), text("end")});
  const consumed c = consume(sink.take());
  EXPECT_EQ(c.formats, (std::vector<std::string>{"u", "u"}));
  EXPECT_EQ(c.names, (std::vector<std::string>{"a", ""}));
  EXPECT_EQ(c.rows,
            (rows{{"1", "null"}, {"2.5", "late"}, {"n/a", "null"}, {"null", "null"}, {"4", "null"}, {"5", "end"}}));
  EXPECT_EQ(c.batches, 5U);
}

// The validity bitmap is made at the first missing value, with a bit for
// each value before it, across whole bytes.
TEST(ArrowTable, ValidityStartsAtTheFirstMissingValue) {
  arrow_table_sink sink;
  rows expected;
  for (int i = 0; i < 20; ++i) {
    const bool missing = i == 11 || i == 16;
    sink.record(std::vector{missing ? output_value{} : number(i)});
    expected.push_back({missing ? "null" : std::to_string(i)});
  }
  const consumed c = consume(sink.take());
  EXPECT_EQ(c.formats, std::vector<std::string>{"g"});
  EXPECT_EQ(c.rows, expected);
  EXPECT_EQ(c.null_counts, std::vector<std::int64_t>{2});
}

TEST(ArrowTable, EmptyTableIsASchemaWithNoBatches) {
  arrow_table_sink sink;
  const consumed c = consume(sink.take());
  EXPECT_TRUE(c.formats.empty());
  EXPECT_EQ(c.batches, 0U);
}

}  // namespace

// Hands on whole records only, so that the reader never splits one.
struct whole_records : record_sink {
  arrow_table_sink to;
  void header(const table_header& h) override { to.header(h); }
  void record(std::span<const output_value> values) override { to.record(values); }
  void padded_record(std::span<const output_value> values, std::size_t missing) override {
    to.padded_record(values, missing);
  }
};

// A record wider than a part of the reader's comes in parts, each put at
// its place in the row: the table is the one whole records give, with the
// padding, a column turned text past the first part and a record that adds
// columns.
TEST(ArrowTable, RecordsInPartsFillTheRowsAsWholeOnes) {
  std::string file;
  for (int line = 0; line < 3; ++line) {
    const int fields = line == 1 ? 6000 : 9000 + line;
    for (int i = 0; i < fields; ++i) {
      if (i != 0) file += ',';
      if (line == 2 && i == 7000) {
        file += "text";
      } else if (i % 3 != 2) {
        file += std::to_string(i * 10 + line);
      }
    }
    file += '\n';
  }
  const std::string path = import_test::write_file(file);
  // Typed up to column 8000, text after it; column 7000 keeps what does not
  // convert as text.
  std::vector<variable_typing> types(8000);
  for (std::size_t i = 0; i < types.size(); ++i) types[i].type = i % 2 == 0 ? value_type::double_ : value_type::int32;
  types[7000].unconverted = unconverted_value::text;
  textio::parser::options opts;
  utf8_input in_parts(path);
  arrow_table_sink parts;
  read_typed_table(opts, in_parts, parts, text_format{}, types);
  utf8_input in_whole(path);
  whole_records whole;
  read_typed_table(opts, in_whole, whole, text_format{}, types);
  const consumed a = consume(parts.take());
  const consumed b = consume(whole.to.take());
  ASSERT_EQ(a.rows.size(), 3U);
  EXPECT_EQ(a.rows[0].size(), 9002U);
  EXPECT_EQ(a.rows[0][7000], "70000");
  EXPECT_EQ(a.rows[2][7000], "text");
  EXPECT_EQ(a.rows[1][8000], "null");
  EXPECT_EQ(a.rows[2][9001], "90012");
  EXPECT_EQ(a.formats, b.formats);
  EXPECT_EQ(a.rows, b.rows);
  EXPECT_EQ(a.null_counts, b.null_counts);
}

// Each variable reads two-number dates in its own order.
TEST(ArrowTable, DateOrderIsThatOfTheVariable) {
  const std::string path = import_test::write_file("03/04/2020,03/04/2020\n");
  std::vector<variable_typing> types(2);
  for (variable_typing& t : types) t.type = value_type::datetime;
  types[1].dates = date_order::month_first;
  utf8_input input(path);
  arrow_table_sink sink;
  read_typed_table(textio::parser::options{}, input, sink, text_format{}, types);
  const consumed c = consume(sink.take());
  // 3 April and 4 March 2020, in microseconds.
  EXPECT_EQ(c.rows, (rows{{"1585872000000000", "1583280000000000"}}));
}
