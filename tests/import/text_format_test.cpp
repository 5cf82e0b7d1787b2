// Reading in a text format other than the default: encodings converted while
// streaming, other quotes and escapes, a detected quote that never closes,
// the table's end and names given from elsewhere. Every case is read whole
// and again one byte per read, which must give the same.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "import/text_reader.hpp"
#include "tools/message_failure.hpp"
#include "tools/record_writers.hpp"

namespace {

using textio::import::escape_style;
using textio::import::text_format;
using textio::import::value_type;

struct outcome {
  std::string header;
  std::string shown;  // records, then "| error" or "# records/fields" counted, then "! line:column" of stray quotes, "~
                      // lines" left after the table's end
  std::uint64_t lines_left = 0;
};

outcome read_with(const std::string& contents, const text_format& format, std::size_t byte_reads,
                  std::uint64_t header_lines = 0, std::span<const textio::import::variable_typing> types = {}) {
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
    o.lines_left = textio::import::read_typed_table(opts, input, writer, format, types, {}, warn).lines_left_unread;
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

textio::import::variable_typing typing(textio::import::value_type type, bool guessed = false) {
  textio::import::variable_typing t;
  t.type = type;
  if (guessed) t.unconverted = textio::import::unconverted_value::text;
  return t;
}

text_format in(const char* encoding) {
  text_format f;
  f.encoding = encoding;
  return f;
}
text_format ending_at(std::uint64_t line) {
  text_format f;
  f.table_end_line = line;
  return f;
}
text_format quoted(char quote, escape_style escape = escape_style::doubled, bool detected = false) {
  text_format f;
  f.quote = quote;
  f.escape = escape;
  f.quote_detected = detected;
  return f;
}

struct format_case {
  const char* name;
  std::string contents;
  text_format format;
  std::string expected;  // as outcome::shown gives it
  std::vector<textio::import::variable_typing> types = {};
};

void PrintTo(const format_case& c, std::ostream* os) { *os << c.name; }

class TextFormat : public ::testing::TestWithParam<format_case> {};

TEST_P(TextFormat, ReadsTheSameInBlocksAndByteByByte) {
  const auto& c = GetParam();
  EXPECT_EQ(read_with(c.contents, c.format, 0, 0, c.types).shown, c.expected);
  EXPECT_EQ(read_with(c.contents, c.format, 1, 0, c.types).shown, c.expected) << "byte by byte";
}

const format_case format_cases[] = {
    {"latin1", "caf\xE9,\xBD\n", in("ISO-8859-1"), R"(["café", "½"] # 1/2)"},
    {"utf16le_bom_skipped",
     std::string("\xFF\xFE"
                 "a\0,\0\xE9\0\n\0b\0",
                 12),
     in("UTF-16LE"), R"(["a", "é"] | ["b", null] # 2/4)"},
    {"utf16be_no_bom", std::string("\0a\0,\0b", 6), in("UTF-16BE"), R"(["a", "b"] # 1/2)"},
    // Typed values keep the text they were read from, converted to UTF-8.
    {"typed_values_as_written",
     std::string("4\0\x30\0.\0\x30\0,\0\x31\0\n\0+\0\x31\0,\0x\0", 22),
     in("UTF-16LE"),
     R"([40.0, 1] | [1, "x"] # 2/4)",
     {typing(value_type::double_), typing(value_type::double_, true)}},
    {"utf32le_bom_skipped", std::string("\xFF\xFE\0\0x\0\0\0", 8), in("UTF-32LE"), R"(["x"] # 1/1)"},
    {"invalid_byte_offset_after_good_text", "ab\ncd\n\x81", in("WINDOWS-1252"),
     R"(["ab"] | InvalidEncoding(WINDOWS-1252, 6))"},
    {"cut_off_character_at_end", std::string("a\0\n\0b", 5), in("UTF-16LE"), "InvalidEncoding(UTF-16LE, 4)"},
    {"lone_surrogate", std::string("a\0\n\0\x00\xD8x\0", 8), in("UTF-16LE"), "InvalidEncoding(UTF-16LE, 4)"},
    {"unknown_encoding", "a", in("NO-SUCH-ENCODING"), "UnknownEncoding(NO-SUCH-ENCODING)"},
    {"single_quote", "'a,b',\"c\"\n'it''s',d", quoted('\''), R"(["a,b", "\"c\""] | ["it's", "d"] # 2/4)"},
    {"no_quote", "\"a,b\",c", quoted('\0'), R"(["\"a", "b\"", "c"] # 1/3)"},
    {"backslash_escape", R"("a\"b\\c\n",d)", quoted('"', escape_style::backslash), R"(["a\"b\\c\\n", "d"] # 1/2)"},
    {"backslash_then_quote_closes", "\"a\\\\\",b", quoted('"', escape_style::backslash), R"(["a\\", "b"] # 1/2)"},
    {"escaped_quote_before_delimiter", "\"a\\\",b\",c", quoted('"', escape_style::backslash),
     R"(["a\",b", "c"] # 1/2)"},
    {"stray_detected_quote_read_as_text", "a,b\n\"c,d\ne,\"\"\n", quoted('"', escape_style::doubled, true),
     R"(["a", "b"] | ["\"c", "d"] | ["e", "\"\""] # 3/6 ! 2:1)"},
    {"quotes_text_after_a_stray_quote", "a,\"b\n1,\"2,3,\"c\n", quoted('"', escape_style::doubled, true),
     R"(["a", "\"b"] | ["1", "\"2", "3", "\"c"] # 2/6 ! 2:8)"},
    {"stray_given_quote_fails", "a,b\n\"c,d\ne,f\n", quoted('"'), R"(["a", "b"] | UnterminatedQuote(2, 1))"},
    {"closed_detected_quote_reads_as_quote", "\"a\nb\",c", quoted('"', escape_style::doubled, true),
     R"(["a\nb", "c"] # 1/2)"},
    // The record that starts before the end line is read whole, the lines after it counted.
    {"table_end", "1,2\n\"3\n3\",4", ending_at(3), R"(["1", "2"] | ["3\n3", "4"] # 2/4)"},
    {"table_end_crlf", "1,2\n\"3\n3\",4\r\n\r\nnote 1\r\nnote\"2", ending_at(3),
     R"(["1", "2"] | ["3\n3", "4"] # 2/4 ~ 3)"},
    {"table_end_lf", "1,2\n\"3\n3\",4\nx\n", ending_at(3), R"(["1", "2"] | ["3\n3", "4"] # 2/4 ~ 1)"},
    {"table_end_cr", "1,2\n\"3\n3\",4\rx\ry", ending_at(3), R"(["1", "2"] | ["3\n3", "4"] # 2/4 ~ 2)"},
    {"table_end_at_a_record_start", "1,2\n3,4\n", ending_at(2), R"(["1", "2"] # 1/2 ~ 1)"},
    // Counted in bulk, the records stop at the end line too.
    {"table_end_after_a_record_of_two_lines", "1,2\n\"3\n3\",4\n5,6\n7,8\n", ending_at(4),
     R"(["1", "2"] | ["3\n3", "4"] # 2/4 ~ 2)"},
};
INSTANTIATE_TEST_SUITE_P(Formats, TextFormat, ::testing::ValuesIn(format_cases));

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
