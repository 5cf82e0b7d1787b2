// The reader in one call: every kind of source, detection and types with no
// options, the caller's types, refusals, and a table read on threads equal
// to one read on one.
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "import/read.hpp"
#include "import/read_helpers.hpp"
#include "import/reader_errors.hpp"
#include "support/expect_message.hpp"

namespace {

using namespace textio::import;
namespace msg = ZORVEK::textio::reader;

test_support::Args plain_args(std::initializer_list<std::uint64_t> values) {
  test_support::Args args;
  for (const std::uint64_t v : values) args.emplace_back(std::in_place_index<0>, v);
  return args;
}

// Each cell as text: a number with %g, text as it is, "null" where missing.
std::vector<std::vector<std::string>> cells(const arrow_table& table) {
  std::vector<std::vector<std::string>> rows;
  for (const arrow_batch& batch : table.batches) {
    for (std::int64_t r = 0; r < batch.rows; ++r) {
      auto& row = rows.emplace_back();
      for (const arrow_column& c : batch.columns) {
        char buf[64] = "";
        if (!c.is_valid(r)) {
          row.emplace_back("null");
          continue;
        }
        if (c.type == arrow_type::utf8 || c.type == arrow_type::large_utf8) {
          row.emplace_back(c.text_at(r));
          continue;
        }
        if (c.type == arrow_type::float64)
          std::snprintf(buf, sizeof buf, "%g", c.values.at<double>(static_cast<std::size_t>(r)));
        if (c.type == arrow_type::timestamp || c.type == arrow_type::int64) {
          std::snprintf(buf, sizeof buf, "%lld",
                        static_cast<long long>(c.values.at<std::int64_t>(static_cast<std::size_t>(r))));
        }
        row.emplace_back(buf);
      }
    }
  }
  return rows;
}

std::vector<arrow_type> types(const arrow_table& table) {
  std::vector<arrow_type> out;
  for (std::size_t i = 0; i < table.fields.size(); ++i) out.push_back(table.type(i));
  return out;
}

const std::string semicolons = "name;price;day\nx;1,5;28/01/2018\ny;;29/01/2018\n";

TEST(ReadCall, EverySourceGivesTheTableTheToolReads) {
  const std::string path = import_test::write_file(semicolons);
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  const auto bytes = std::as_bytes(std::span(semicolons.data(), semicolons.size()));
  const read_source sources[] = {read_source::file(path), read_source::descriptor(fd), read_source::memory(semicolons),
                                 read_source::memory(bytes)};
  for (const read_source& source : sources) {
    const table_read got = read_table(source);
    EXPECT_EQ(got.table.fields.size(), 3U);
    EXPECT_EQ(got.table.fields[1].name, "price");
    EXPECT_EQ(types(got.table), (std::vector{arrow_type::utf8, arrow_type::float64, arrow_type::timestamp}));
    EXPECT_EQ(cells(got.table), (std::vector<std::vector<std::string>>{{"x", "1.5", "1517097600000000"},
                                                                       {"y", "null", "1517184000000000"}}));
    ASSERT_TRUE(got.outcome.report);
    EXPECT_FALSE(got.outcome.empty_input);
  }
  ::close(fd);
}

TEST(ReadCall, TypesAskedForWinAndBadRequestsAreRefused) {
  read_settings settings;
  settings.types.by_name = {{"day", value_type::string}};
  settings.types.by_position = {std::nullopt, value_type::string};
  const table_read got = read_table(read_source::memory(semicolons), {}, settings);
  EXPECT_EQ(types(got.table), (std::vector{arrow_type::utf8, arrow_type::utf8, arrow_type::utf8}));
  EXPECT_EQ(cells(got.table)[0], (std::vector<std::string>{"x", "1,5", "28/01/2018"}));

  read_settings unknown;
  unknown.types.by_name = {{"nope", value_type::double_}};
  EXPECT_MESSAGE(read_table(read_source::memory(semicolons), {}, unknown), msg::UnknownVariable,
                 test_support::text_arg("nope"));
  read_settings too_many;
  too_many.types.by_position.assign(4, value_type::double_);
  EXPECT_MESSAGE(read_table(read_source::memory(semicolons), {}, too_many), msg::TooManyTypes, plain_args({4, 3}));
  EXPECT_MESSAGE(read_table(read_source::memory(std::string_view("ab\x01\x02\x03 binary", 12))), msg::NotText,
                 plain_args({2}));
}

// Without detection the options stand as given; the types still come from
// the first records, of any source.
TEST(ReadCall, WithoutDetectionTypesComeFromTheFirstRecords) {
  textio::parser::options opts;
  opts.num_header_lines(1);
  opts.variable_names_line(1);
  read_settings settings;
  settings.detect = false;
  const table_read got = read_table(read_source::memory("a,b\n1,t\n2.5,u\n"), opts, settings);
  EXPECT_FALSE(got.outcome.report);
  EXPECT_EQ(types(got.table), (std::vector{arrow_type::float64, arrow_type::utf8}));
  EXPECT_EQ(cells(got.table), (std::vector<std::vector<std::string>>{{"1", "t"}, {"2.5", "u"}}));
  // Records wider than the reader's parts: every field of the sample's
  // records counts, the last column text, the others numbers.
  std::string wide;
  for (int line = 0; line < 2; ++line) {
    for (int i = 0; i < 9000; ++i) wide += std::to_string(i + line) + ',';
    wide += "x\n";
  }
  const table_read w = read_table(read_source::memory(wide), {}, settings);
  std::vector<arrow_type> wanted(9001, arrow_type::float64);
  wanted.back() = arrow_type::utf8;
  EXPECT_EQ(types(w.table), wanted);
  ASSERT_EQ(w.outcome.types.size(), 9001U);
  const table_read empty = read_table(read_source::memory(" \n\n"));
  EXPECT_TRUE(empty.outcome.empty_input);
  EXPECT_EQ(empty.table.rows(), 0);
}

// A file large enough to be read in parts: on two threads its batches hold
// the same rows as on one.
TEST(ReadCall, ThreadsGiveTheSameTable) {
  std::string text = "id,x,word\n";
  for (int i = 0; text.size() < (std::size_t{9} << 20); ++i) {
    text += std::to_string(i) + "," + std::to_string(i * 0.25) + ",w" + std::to_string(i % 97) + "\n";
  }
  const std::string path = import_test::write_file(text);
  read_settings one;
  one.threads = 1;
  read_settings two;
  two.threads = 2;
  const table_read a = read_table(read_source::file(path), {}, one);
  const table_read b = read_table(read_source::file(path), {}, two);
  EXPECT_GT(b.outcome.summary.parts_on_threads, 0U);
  EXPECT_EQ(types(a.table), types(b.table));
  EXPECT_EQ(a.table.rows(), b.table.rows());
  EXPECT_EQ(cells(a.table), cells(b.table));

  // Streamed in batches of at most 10,000 rows, the same rows in file order.
  arrow_table streamed;
  std::size_t largest = 0;
  read_batches(read_source::file(path), {}, two, batch_limits{10000, std::size_t{1} << 30},
               [&](arrow_batch&& batch, const std::vector<arrow_field>& fields) {
                 largest = std::max(largest, static_cast<std::size_t>(batch.rows));
                 streamed.fields = fields;
                 streamed.batches.push_back(std::move(batch));
               });
  EXPECT_LE(largest, 10000U);
  EXPECT_GT(streamed.batches.size(), a.table.batches.size());
  EXPECT_EQ(streamed.fields[2].name, "word");
  EXPECT_EQ(cells(streamed), cells(a.table));
}

// A consumer pulls batches from the reader's thread; releasing the stream
// early stops the read, and an array outlives its stream.
TEST(ReadCall, StreamGivesBatchesAsPulled) {
  std::string text = "n,word\n";
  for (int i = 0; i < 2500; ++i) text += std::to_string(i) + ",w" + std::to_string(i) + "\n";
  const batch_limits thousand{1000, std::size_t{1} << 30};
  ArrowArrayStream stream;
  stream_to_arrow(read_source::memory(text), {}, {}, thousand, &stream);
  ArrowSchema schema;
  ASSERT_EQ(stream.get_schema(&stream, &schema), 0);
  ASSERT_EQ(schema.n_children, 2);
  EXPECT_EQ(std::string(schema.children[0]->format) + schema.children[1]->format, "gu");
  schema.release(&schema);
  std::vector<double> firsts;
  std::int64_t rows = 0;
  for (ArrowArray batch; stream.get_next(&stream, &batch) == 0 && batch.release != nullptr; batch.release(&batch)) {
    double first = 0;
    std::memcpy(&first, batch.children[0]->buffers[1], sizeof first);
    firsts.push_back(first);
    rows += batch.length;
  }
  stream.release(&stream);
  EXPECT_EQ(firsts, (std::vector<double>{0, 1000, 2000}));
  EXPECT_EQ(rows, 2500);

  stream_to_arrow(read_source::memory(text), {}, {}, thousand, &stream);
  ArrowArray kept;
  ASSERT_EQ(stream.get_next(&stream, &kept), 0);
  stream.release(&stream);
  EXPECT_EQ(kept.length, 1000);
  kept.release(&kept);

  stream_to_arrow(read_source::memory(std::string_view("\x01\x02 no text", 11)), {}, {}, thousand, &stream);
  EXPECT_EQ(stream.get_schema(&stream, &schema), EIO);
  EXPECT_NE(std::string(stream.get_last_error(&stream)).find("not text"), std::string::npos);
  stream.release(&stream);
}

}  // namespace
