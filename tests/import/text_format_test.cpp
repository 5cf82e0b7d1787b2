// Reading in a text format, for what the ReadSetting table (which names the
// format on the command line and reads without detection) cannot show: a
// detected quote that never closes is text, with the place of each stray
// quote told, whole and one byte per read; names given from elsewhere; the
// sample that detection looks at.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "import/text_reader.hpp"
#include "tools/message_failure.hpp"
#include "tools/record_writers.hpp"

namespace {

using textio::import::text_format;

struct outcome {
  std::string header;
  std::string shown;  // records, then "| error" or "# records/fields" counted, then "! line:column" of stray quotes, "~
                      // lines" left after the table's end
  std::uint64_t lines_left = 0;
};

outcome read_with(const std::string& contents, const text_format& format, std::size_t byte_reads,
                  std::uint64_t header_lines = 0) {
  const std::string path = import_test::write_file(contents);
  textio::parser::options opts;
  if (header_lines > 0) {
    opts.num_header_lines(header_lines);
    opts.variable_names_line(header_lines);
  }
  outcome o;
  std::ostringstream text;
  std::string warning;
  std::string tail;
  const auto warn = [&](std::uint64_t line, std::uint64_t column) {
    warning += " ! " + std::to_string(line) + ":" + std::to_string(column);
  };
  try {
    textio::import::utf8_input input(path);
    if (byte_reads > 0) input.limit_reads(byte_reads);
    zvtool::jsonl_writer writer(text);
    o.lines_left = textio::import::read_typed_table(opts, input, writer, format, {}, {}, warn).lines_left_unread;
    writer.flush();
    textio::import::utf8_input again(path);
    zvtool::count_writer counter;
    textio::import::read_table(opts, again, counter, format);
    tail = " # " + std::to_string(counter.records()) + "/" + std::to_string(counter.fields());
  } catch (const foundation::core::except::IMsgIDException& error) {
    const zvtool::message_failure failure = zvtool::capture_message(error);
    tail = failure.id.key + "(";
    for (const auto& a : failure.id.args) {
      const auto* n = std::get_if<std::uint64_t>(&a);
      tail += (tail.back() == '(' ? "" : ", ") + (n ? std::to_string(*n) : std::get<std::string>(a));
    }
    tail += ")";
  }
  std::istringstream lines(text.str());
  std::getline(lines, o.header);
  for (std::string line; std::getline(lines, line);) o.shown += (o.shown.empty() ? "" : " | ") + line;
  if (!tail.starts_with(" #") && !o.shown.empty()) o.shown += " | ";
  o.shown += tail + warning + (o.lines_left > 0 ? " ~ " + std::to_string(o.lines_left) : "");
  return o;
}

text_format detected_quote() {
  text_format f;
  f.quote_detected = true;
  return f;
}

TEST(TextFormat, StrayDetectedQuoteIsTextTheSameByteByByte) {
  const struct {
    std::string contents;
    std::string expected;  // as outcome::shown gives it
  } cases[] = {
      {"a,b\n\"c,d\ne,\"\"\n", R"(["a", "b"] | ["\"c", "d"] | ["e", "\"\""] # 3/6 ! 2:1)"},
      // Quotes after a stray one still quote.
      {"a,\"b\n1,\"2,3,\"c\n", R"(["a", "\"b"] | ["1", "\"2", "3", "\"c"] # 2/6 ! 2:8)"},
      {"\"a\nb\",c", R"(["a\nb", "c"] # 1/2)"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(read_with(c.contents, detected_quote(), 0).shown, c.expected);
    EXPECT_EQ(read_with(c.contents, detected_quote(), 1).shown, c.expected) << "byte by byte";
  }
}

TEST(VariableNames, FromTheFormatReplaceTheNamesLine) {
  text_format f;
  f.variable_names = {"first name", "né"};
  const outcome o = read_with("a,b\n1,2\n", f, 0, 1);
  EXPECT_EQ(o.header, R"({"variables": ["first name", "né"], "units": [], "descriptions": []})");
  EXPECT_EQ(o.shown, R"(["1", "2"] # 1/2)");
}

// The sample ends after the line it stops in (with the zero bytes of a wide
// line ending), and reading afterwards starts at the input's first byte.
TEST(Sample, WholeLinesThenReadingFromTheStart) {
  const struct {
    std::string contents;
    std::size_t bytes;
    std::string sample;
  } cases[] = {
      {"ab\r\ncdef\ngh", 5, "ab\r\ncdef\n"},
      {std::string("a\0\n\0b\0", 6), 1, std::string("a\0\n\0", 4)},
      {"abc", 10, "abc"},
      {std::string(70000, 'x') + "\nb", 10, std::string(10 + 65536, 'x')},  // one huge line is cut
  };
  for (const auto& c : cases) {
    for (const std::size_t reads : {std::size_t{0}, std::size_t{1}}) {
      textio::import::utf8_input input(import_test::write_file(c.contents));
      if (reads > 0) input.limit_reads(reads);
      EXPECT_EQ(input.sample(c.bytes), c.sample);
      EXPECT_EQ(input.sample_is_whole_input(), c.sample == c.contents);
      std::string all;
      input.decode_from(c.contents.find('\0') == std::string::npos ? "UTF-8" : "UTF-16LE");
      while (input.read(all, 3)) continue;
      EXPECT_EQ(all, c.contents.find('\0') == std::string::npos ? c.contents : "a\nb");
    }
  }
}

}  // namespace
