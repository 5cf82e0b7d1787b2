// Reading a file in parts on several threads gives what one thread gives,
// byte for byte: the same records, warnings and error (with its line), also
// where a part's guessed start falls inside a quoted field, where the
// variable count grows part-way and where quotes turn to text.
#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/table/column_table.hpp"
#include "import/read_helpers.hpp"
#include "import/text_reader.hpp"
#include "import/input/utf8_input.hpp"
#include "tools/apply_options.hpp"
#include "tools/record_writers.hpp"
#include "zvcore/exceptions.hpp"

namespace {

struct parallel_case {
  const char* name;
  std::string text;
  std::vector<std::string> options;
  bool quote_detected = false;
};

struct outcome {
  std::string output;  // JSON lines, then the warnings and the error
  std::uint64_t parts = 0;
};

outcome read_with(const std::string& path, const parallel_case& c, unsigned threads, std::uint64_t part_bytes,
                  bool count, std::optional<std::uint64_t> table_end = {}, bool table_end_detected = false) {
  textio::parser::options record;
  EXPECT_FALSE(zvtool::apply_option_arguments(std::nullopt, c.options, record));
  textio::import::text_format format;
  format.quote_detected = c.quote_detected;
  format.table_end_line = table_end;
  format.table_end_detected = table_end_detected;
  format.threads = threads;
  format.part_bytes = part_bytes;
  std::ostringstream out;
  zvtool::jsonl_writer jsonl(out);
  zvtool::count_writer counter;
  textio::import::record_sink& sink = count ? static_cast<textio::import::record_sink&>(counter) : jsonl;
  outcome got;
  std::string notes;
  const auto stray = [&](std::uint64_t line, std::uint64_t column) {
    notes += "stray " + std::to_string(line) + ":" + std::to_string(column) + "\n";
  };
  try {
    textio::import::utf8_input input(path);
    got.parts = textio::import::read_table(record, input, sink, format, {}, stray).parts_on_threads;
  } catch (const foundation::core::except::IMsgIDException& e) {
    notes += e.what();
  }
  jsonl.flush();
  got.output = out.str() + std::to_string(counter.records()) + " " + std::to_string(counter.fields()) + "\n" + notes;
  return got;
}

std::string rows(int n, const std::string& (*row)(int)) {
  std::string text;
  for (int i = 0; i < n; ++i) text += row(i);
  return text;
}

// Quoted fields that hold line endings, delimiters and doubled quotes, so
// that many guessed part starts fall inside one.
const std::string& quoted_row(int i) {
  static std::string r;
  r = std::to_string(i) + ",\"a\nb,\"\"q\"\"\r\nc\",x" + std::string(i % 7, 'y') + (i % 3 == 0 ? "\r\n" : "\n");
  return r;
}
const std::string& plain_row(int i) {
  static std::string r;
  r = std::to_string(i) + ",text " + std::to_string(i * 7) + ",\"q,\"\n" + (i % 11 == 0 ? "\n" : "");
  return r;
}

TEST(ParallelReading, GivesTheOneThreadOutput) {
  const std::string plain = rows(300, plain_row);
  const parallel_case cases[] = {
      {"quoted fields across parts", "n,t,x\n" + rows(300, quoted_row), {"NumHeaderLines", "1", "Delimiter", ","}},
      {"plain", plain, {"Delimiter", ","}},
      {"count grows part-way", plain + "1,2,3,4,5\n" + plain, {"Delimiter", ","}},
      {"error in a later part", plain + "7,,9\n" + plain, {"Delimiter", ",", "MissingRule", "error"}},
      {"quotes turn to text", plain + "5,\"open\n" + plain, {"Delimiter", ","}, true},
      {"quotes turn to text in the first part", "1,2\n5,\"open\n" + plain, {"Delimiter", ","}, true},
      {"comments and lone CR", "# c\r" + plain + "#x\r1,2,3\r" + plain, {"Delimiter", ",", "CommentStyle", "#"}},
      // Rules that keep state from record to record: read on one thread.
      {"extra columns wrapped", plain + "1,2,3,4,5\n" + plain, {"Delimiter", ",", "ExtraColumnsRule", "wrap"}},
  };
  bool some_parts = false;
  for (const parallel_case& c : cases) {
    const std::string path = import_test::write_file(c.text);
    // Compressed, its parts are read from the decompressing thread's spool.
    const std::string compressed = import_test::write_file(import_test::gzip(c.text));
    for (const bool count : {false, true}) {
      const std::string alone = read_with(path, c, 1, 64, count).output;
      for (const unsigned threads : {2U, 3U}) {
        for (const std::uint64_t part : {7, 37, 100, 1000}) {
          for (const std::string& file : {path, compressed}) {
            const outcome got = read_with(file, c, threads, part, count);
            EXPECT_EQ(got.output, alone) << c.name << ", " << threads << " threads, parts of " << part << ", " << file;
            some_parts = some_parts || (got.parts > 2 && file == compressed);
          }
        }
      }
    }
  }
  EXPECT_TRUE(some_parts);  // not all read on one thread after all, compressed too
  // A table end, given or detected (where records like the table's go on).
  const parallel_case ends{"table end", plain + "1\n" + plain, {"Delimiter", ","}};
  const std::string path = import_test::write_file(ends.text);
  for (const bool detected : {false, true}) {
    const std::string alone = read_with(path, ends, 1, 64, false, 200, detected).output;
    EXPECT_EQ(read_with(path, ends, 2, 37, false, 200, detected).output, alone) << detected;
  }
  // A plain file is read in parts, also with CR LF endings.
  std::string crlf;
  for (const char ch : plain) crlf += ch == '\n' ? std::string("\r\n") : std::string(1, ch);
  const parallel_case c{"CR LF", crlf, {"Delimiter", ","}};
  EXPECT_GT(read_with(import_test::write_file(crlf), c, 2, 100, false).parts, 20U);
}

// Typed values written as read (or canonically) in CSV: every part keeps
// the text of its fields, and the values that do not convert (to a guessed
// type: kept as text) are counted from their first line as one thread does.
TEST(ParallelReading, WritesTypedValuesAsOneThreadDoes) {
  std::string text = "i,zero,half,when\n";
  for (int i = 0; i < 400; ++i) {
    text += std::to_string(i) + ",0" + std::to_string(i) + "," + (i % 97 == 50 ? "x" : std::to_string(i) + ".50") +
            "," + std::to_string(1 + i % 28) + "/01/2018" + (i % 5 == 0 ? " 00:15\n" : "\n");
  }
  const std::string path = import_test::write_file(text);
  textio::parser::options opts;
  const std::vector<std::string> options = {"NumHeaderLines",    "1",    "VariableNamesLine", "1",
                                            "OutputBuilderType", "table"};
  ASSERT_FALSE(zvtool::apply_option_arguments(std::nullopt, options, opts));
  using textio::import::value_type;
  std::vector<textio::import::variable_typing> types(4);
  for (std::size_t i = 0; i < 3; ++i) types[i].type = value_type::double_;
  types[3].type = value_type::datetime;
  types[2].unconverted = textio::import::unconverted_value::text;
  const auto written = [&](unsigned threads, std::uint64_t part, zvtool::value_text as) {
    textio::import::text_format format;
    format.threads = threads;
    format.part_bytes = part;
    std::ostringstream out;
    zvtool::csv_writer csv(out, as);
    textio::import::utf8_input input(path);
    const auto summary = textio::import::read_typed_table(opts, input, csv, format, types);
    csv.flush();
    std::string tallies;
    for (const auto& u : summary.unconverted)
      tallies += std::to_string(u.count) + "@" + std::to_string(u.first_line) + " ";
    return std::make_pair(tallies + out.str(), summary.parts_on_threads);
  };
  for (const auto as : {zvtool::value_text::as_written, zvtool::value_text::canonical}) {
    const std::string alone = written(1, 1000, as).first;
    EXPECT_TRUE(alone.starts_with("0@0 0@0 4@52 0@0 ")) << alone.substr(0, 40);
    EXPECT_NE(alone.find("147,x,"), std::string::npos);
    const char* row7 =
        as == zvtool::value_text::as_written ? "\r\n7,07,7.50,8/01/2018\r\n" : "\r\n7,7,7.5,2018-01-08\r\n";
    EXPECT_NE(alone.find(row7), std::string::npos) << alone.substr(0, 200);
    for (const unsigned threads : {2U, 3U}) {
      for (const std::uint64_t part : {37, 300}) {
        const auto [got, parts] = written(threads, part, as);
        EXPECT_EQ(got, alone) << threads << " threads, parts of " << part;
        EXPECT_GT(parts, 2U);
      }
    }
  }
}

// Standard input redirected from a file may stand past the file's start:
// its offsets are not the file's, so it is read on one thread.
TEST(ParallelReading, ReadsAnInputThatStartsPartWayOnOneThread) {
  const std::string rest = rows(300, plain_row);
  const parallel_case c{"part-way", rest, {"Delimiter", ","}};
  const std::string expected = read_with(import_test::write_file(rest), c, 1, 64, false).output;
  const int fd = ::open(import_test::write_file("skip this line\n" + rest).c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::lseek(fd, 15, SEEK_SET), 15);
  textio::parser::options record;
  ASSERT_FALSE(zvtool::apply_option_arguments(std::nullopt, c.options, record));
  textio::import::text_format format;
  format.threads = 2;
  format.part_bytes = 64;
  std::ostringstream out;
  zvtool::jsonl_writer jsonl(out);
  textio::import::utf8_input input(fd, "standard input");
  EXPECT_EQ(textio::import::read_table(record, input, jsonl, format).parts_on_threads, 0U);
  jsonl.flush();
  ::close(fd);
  EXPECT_EQ(out.str() + "0 0\n", expected);
}

// The in-memory table takes parts too: number columns that are missing at
// first, and text columns, come out as one thread makes them.
TEST(ParallelReading, FillsTheSameTable) {
  std::string text = "a,b,c\n";
  for (int i = 0; i < 400; ++i) {
    text += std::to_string(i) + "," + (i < 150 ? "" : std::to_string(i * 0.5)) + "," + (i == 300 ? "word" : "7") +
            (i == 350 ? ",extra\n" : "\n");
  }
  const std::string path = import_test::write_file(text);
  textio::parser::options opts;
  opts.num_header_lines(1);
  opts.variable_names_line(1);
  const auto shown = [&](unsigned threads, std::uint64_t part) {
    textio::import::text_format format;
    format.threads = threads;
    format.part_bytes = part;
    const auto table = textio::import::read_columns(path, opts, format);
    std::string out = std::to_string(table.rows) + " rows\n";
    for (const auto& c : table.columns) {
      out += c.name + ":" + std::to_string(static_cast<int>(c.kind)) + ":" + c.text + ":";
      for (const std::uint8_t m : c.missing) out += static_cast<char>('0' + m);
      for (const double n : c.numbers) out += " " + std::to_string(n);
      for (std::size_t i = 0; i < c.offsets.size(); ++i) out += " " + std::to_string(c.offsets[i]);
      out += "\n";
    }
    return out;
  };
  for (const auto output : {textio::enums::OutputBuilderType::Matrix, textio::enums::OutputBuilderType::Cell}) {
    opts.output_type(output);
    const std::string alone = shown(1, 1000);
    for (const std::uint64_t part : {50, 300, 1000}) EXPECT_EQ(shown(2, part), alone) << "parts of " << part;
  }
}

}  // namespace
