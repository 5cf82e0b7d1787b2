// The read subcommand in process. Each setting of the options and of the
// text format (encoding, quote, escape, table end) at work on a small file:
// the records that come out (as JSON lines joined with " | "), then the error
// that stops reading, if any, with the physical line and column (or the byte
// offset) where it is; what --count says of them; and the same records when
// the input is read one byte at a time. Then the header lines, typed
// reading, and round trips through the CSV output.
#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "import/read_helpers.hpp"
#include "import/text_reader.hpp"
#include "support/run_tool.hpp"
#include "tools/apply_options.hpp"
#include "tools/message_failure.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_writers.hpp"
#include "tools/subcommands.hpp"

namespace {

using import_test::joined;
using import_test::read_text;
using test_support::run_tool;

struct setting_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;
  std::string expected;  // records and error as import_test::joined shows them
  std::string err_has = {};
};

void PrintTo(const setting_case& c, std::ostream* os) { *os << c.name; }

class ReadSetting : public ::testing::TestWithParam<setting_case> {};

// --count takes a shorter way where no rule looks at the values; it must
// count what the records show. The exact scanner alone (--exact-scan) gives
// the same output byte for byte.
// The records of `args` read without the tool, one byte per read of the
// input, then the error's key, if any.
std::vector<std::string> read_byte_by_byte(const std::string& contents, std::vector<std::string> args) {
  args.insert(args.begin(), {import_test::write_file(contents), "--no-detect", "OutputBuilderType", "cell"});
  const auto parsed = zvtool::parse_subcommand_arguments("read", args);
  const auto settings = zvtool::read_settings_of(parsed);
  textio::parser::options options;
  EXPECT_FALSE(zvtool::apply_option_arguments(std::nullopt, parsed.option_arguments, options));
  textio::import::text_format format;
  format.encoding = settings.given.encoding.value_or("UTF-8");
  format.quote = settings.given.quote.value_or('"');
  format.escape = settings.given.escape.value_or(textio::import::escape_style::doubled);
  format.table_end_line = settings.table_end_line;
  std::ostringstream text;
  std::string failed;
  try {
    textio::import::utf8_input input(*parsed.operand);
    input.limit_reads(1);
    zvtool::jsonl_writer writer(text);
    textio::import::read_table(options, input, writer, format);
    writer.flush();
  } catch (const foundation::core::except::IMsgIDException& error) {
    failed = zvtool::capture_message(error).id.key;
  }
  std::vector<std::string> lines;
  std::istringstream records(text.str());
  for (std::string line; std::getline(records, line);) lines.push_back(line);
  if (!lines.empty()) lines.erase(lines.begin());  // the header
  if (!failed.empty()) lines.push_back(failed);
  return lines;
}

TEST_P(ReadSetting, GivesTheRecordsAndCountsThem) {
  const auto& c = GetParam();
  const auto out = read_text(c.contents, c.args);
  EXPECT_EQ(out.status, out.error.empty() ? 0 : 4);
  EXPECT_EQ(joined(out), c.expected);
  EXPECT_NE(out.err.find(c.err_has), std::string::npos) << out.err;
  // Texts only (the reader's own types come with the tool), and small inputs.
  if (c.contents.size() < 4096 && std::ranges::find(c.args, "OutputBuilderType") == c.args.end()) {
    std::vector<std::string> lines = out.records;
    const std::size_t key = out.error.find("\"key\": \"") + 8;
    if (!out.error.empty()) lines.push_back(out.error.substr(key, out.error.find('"', key) - key));
    EXPECT_EQ(read_byte_by_byte(c.contents, c.args), lines) << "one byte per read";
  }
  std::vector<std::string> exact_args = c.args;
  exact_args.push_back("--exact-scan");
  EXPECT_EQ(read_text(c.contents, exact_args).raw, out.raw);
  if (!out.error.empty()) return;
  std::size_t fields = 0;
  for (const auto& r : out.records) fields += nlohmann::json::parse(r).size();
  std::vector<std::string> count_args = c.args;
  count_args.push_back("--count");
  EXPECT_EQ(read_text(c.contents, count_args).raw,
            "{\"records\": " + std::to_string(out.records.size()) + ", \"fields\": " + std::to_string(fields) + "}\n");
}

// Fixed widths 3 and 2, then `more`.
std::vector<std::string> fixed(std::vector<std::string> more) {
  more.insert(more.begin(), {"ParserType", "fixedwidth", "VariableWidths", "[3, 2]"});
  return more;
}
std::vector<std::string> numbers(std::vector<std::string> more) {
  more.insert(more.begin(), {"OutputBuilderType", "matrix"});
  return more;
}
// Typed values in a table, the variables named by the first line.
std::vector<std::string> typed(std::vector<std::string> more) {
  more.insert(more.begin(), {"OutputBuilderType", "table", "NumHeaderLines", "1", "VariableNamesLine", "1"});
  return more;
}
std::vector<std::string> as_int16(const char* import_error_rule) {
  return typed({"ImportErrorRule", import_error_rule, "--types", R"(["int16"])"});
}
std::vector<std::string> in(const char* encoding, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"--encoding", encoding});
  return more;
}
std::vector<std::string> ending_at(const char* line) { return {"--table-end", line}; }
const std::vector<std::string> backslash = {"--escape", "backslash"};
// Longer than the reader's one-MiB blocks.
const std::string block_of_x(std::size_t{1} << 20, 'x');
const std::string blocks_of_q(3 * block_of_x.size() + 17, 'q');
const std::vector<std::string> block_comment = {"CommentStyle", R"(["/*", "*/"])"};
const std::vector<std::string> no_consecutive = {"ConsecutiveDelimitersRule", "error"};

const setting_case setting_cases[] = {
    // Line endings and header lines.
    {"lf_crlf_cr_mixed", "a\nb\r\nc\rd\n", {}, R"(["a"] | ["b"] | ["c"] | ["d"])"},
    {"line_ending_longer_than_lf", "1\n,2\n3,4\n,5", {"LineEnding", "\n,"}, R"(["1"] | ["2\n3", "4"] | ["5", null])"},
    {"only_given_endings_count", "a\rb\nc", {"LineEnding", "\\n"}, R"(["a\rb"] | ["c"])"},
    {"header_lines_skipped", "skip me\n\"open\nx,y\n1,2", {"NumHeaderLines", "2"}, R"(["x", "y"] | ["1", "2"])"},
    {"data_line", "h\n1,2", {"DataLine", "2"}, R"(["1", "2"])"},
    // Comments.
    {"comments_and_quotes",
     "#h,\"\n1,2 # c\n  # only\n\"#\",3\n\n4#,",
     {"CommentStyle", "#", "EmptyLineRule", "read"},
     R"(["1", "2"] | ["#", "3"] | [null, null] | ["4", null])"},
    {"comment_line_no_record", "# a\n1\n  # b\n2", {"CommentStyle", "#", "EmptyLineRule", "error"}, R"(["1"] | ["2"])"},
    {"marker_in_quotes_is_text", "\"a#b\",c # d", {"CommentStyle", "#"}, R"(["a#b", "c"])"},
    {"block_comment_across_lines", "1,/* x\ny */2\n3,4", block_comment, R"(["1", "2"] | ["3", "4"])"},
    {"unclosed_block_comment", "1,2\n3/* x\n4", block_comment, R"(["1", "2"] | ["3", null])"},
    // Markers of one byte each: still a block, not a line comment.
    {"one_byte_block_comment",
     "1,{x}2\n{a\nb}3,4\n5,{6\n",
     {"CommentStyle", R"(["{", "}"])"},
     R"(["1", "2"] | ["3", "4"] | ["5", null])"},
    // Empty lines.
    {"empty_lines_skipped", "1\n\n \t\n2", {}, R"(["1"] | ["2"])"},
    {"blank_line_among_counted_records", "1\n2\n3\n \t\n4\n5\n", {}, R"(["1"] | ["2"] | ["3"] | ["4"] | ["5"])"},
    {"empty_line_read", "1,2\n\n3,4", {"EmptyLineRule", "read"}, R"(["1", "2"] | [null, null] | ["3", "4"])"},
    {"empty_line_first", "\n1,2", {"EmptyLineRule", "read"}, R"([null] | ["1", "2"])"},
    {"delimiters_make_a_line", "1,2\n,\n", {"EmptyLineRule", "error"}, R"(["1", "2"] | [null, null])"},
    // Quotes.
    {"doubled_quote_is_one", "\"say \"\"hi\"\"\",x", {}, R"(["say \"hi\"", "x"])"},
    {"units_after_closing_quote_kept", "\"ab\"  ,\"cd\" x ,\"\"\t,e", {}, R"(["ab  ", "cd x ", "\t", "e"])"},
    {"quoted_field_not_trimmed", "\" a \", b ", {}, R"([" a ", "b"])"},
    {"quote_after_whitespace_quotes", "  \"a,b\",c", {}, R"(["a,b", "c"])"},
    {"quote_inside_field_is_text", "a\"b,c", {}, R"(["a\"b", "c"])"},
    {"line_of_an_empty_quoted_field", "1\n\"\"\n \"\" \n2", {}, R"(["1"] | [""] | [" "] | ["2"])"},
    {"quotes_that_are_text",
     "\"\"\n a,\"b\n c\"\n x\"y,z\n\"q\"r,s",
     {},
     R"([""] | ["a", "b\n c"] | ["x\"y", "z"] | ["qr", "s"])"},
    {"quoted_empty_is_not_missing", "\"\",x", {}, R"(["", "x"])"},
    // Delimiters and their rules.
    {"longest_delimiter_wins", "a::b:c", {"Delimiter", R"([":", "::"])"}, R"(["a", "b", "c"])"},
    {"whitespace_trimmed", " a ,\tb\t", {}, R"(["a", "b"])"},
    {"leading_ignore", ",,a,b", {"LeadingDelimitersRule", "ignore"}, R"(["a", "b"])"},
    {"trailing_ignore", "a,b,,", {"TrailingDelimitersRule", "ignore"}, R"(["a", "b"])"},
    {"join_keeps_ends", ",a,\"\",,b,", {"ConsecutiveDelimitersRule", "join"}, R"([null, "a", "", "b", null])"},
    {"ends_are_not_consecutive", ",a,", no_consecutive, R"([null, "a", null])"},
    {"only_delimiters_ignored", ",,\n1", {"LeadingDelimitersRule", "ignore"}, R"([] | ["1"])"},
    {"multiple_delims_as_one", ",a,,b,", {"MultipleDelimsAsOne", "true"}, R"(["a", "b", null])"},
    {"non_ascii_delimiter", "é¦𝄞¦c", {"Delimiter", "¦"}, R"(["é", "𝄞", "c"])"},
    {"tabular_joins_whitespace", "  a \t b  \nc d", {"ParserType", "tabular"}, R"(["a", "b"] | ["c", "d"])"},
    // Fixed widths and the partial-field and extra-column rules.
    {"cut_and_trimmed", "ab cd\n x  y", fixed({}), R"(["ab", "cd"] | ["x", "y"])"},
    {"widths_count_utf16_units", "𝄞éxy", fixed({}), R"(["𝄞é", "xy"])"},
    {"partial_keep", "abcd\nfghij\nab", fixed({}), R"(["abc", "d"] | ["fgh", "ij"] | ["ab", null])"},
    {"partial_omitrow", "abcd\nfghij", fixed({"PartialFieldRule", "omitrow"}), R"(["fgh", "ij"])"},
    {"partial_omitvar", "abcd\nfghij", fixed({"PartialFieldRule", "omitvar"}), R"(["abc"] | ["fgh"])"},
    // Held rows of UTF-16 units: text after a number's eight bytes.
    {"held_text_after_a_number", "123ab\n456cd", fixed({"OutputBuilderType", "table", "MissingRule", "omitvar"}),
     R"([123, "ab"] | [456, "cd"])"},
    {"partial_fill", "abcd\nfghij", fixed({"PartialFieldRule", "fill"}), R"(["abc", null] | ["fgh", "ij"])"},
    {"partial_wrap", "ab\ncde\nfghij\nkl", fixed({"PartialFieldRule", "wrap"}),
     R"(["abc", "de"] | ["fgh", "ij"] | ["kl", null])"},
    {"extra_addvars", "abcdeXY\nfghij", fixed({}), R"(["abc", "de", "XY"] | ["fgh", "ij", null])"},
    {"extra_ignore", "abcdeXY", fixed({"ExtraColumnsRule", "ignore"}), R"(["abc", "de"])"},
    {"extra_wrap", "abcdefg\nhi", fixed({"ExtraColumnsRule", "wrap"}), R"(["abc", "de"] | ["fgh", "i"])"},
    {"comment_removed_before_cutting", "ab#xx\nfghij", fixed({"CommentStyle", "#"}), R"(["ab", null] | ["fgh", "ij"])"},
    {"no_width",
     "abc\nd",
     {"ParserType", "fixedwidth", "VariableWidths", "[0]", "ExtraColumnsRule", "wrap"},
     "[null] | [null]"},
    // Lines whole.
    {"line_as_it_stands", " a, b \n\nc", {"ParserType", "line"}, R"([" a, b "] | ["c"])"},
    {"line_empty_lines_read", "a\n\nc", {"ParserType", "line", "EmptyLineRule", "read"}, R"(["a"] | [null] | ["c"])"},
    // Missing values and the number of variables.
    {"placeholders", "NA,1, -- ,\"NA\"", {"TreatAsMissing", R"(["NA", "--"])"}, R"([null, "1", null, "NA"])"},
    {"missing_omitrow", "1,2\n3,\n5,6", {"MissingRule", "omitrow"}, R"(["1", "2"] | ["5", "6"])"},
    {"missing_omitvar", "1,2,3\n4,,6\n7,8,9", {"MissingRule", "omitvar"}, R"(["1", "3"] | ["4", "6"] | ["7", "9"])"},
    {"omitvar_of_padding", "1,2,3\n7\n", {"MissingRule", "omitvar"}, R"(["1"] | ["7"])"},
    {"first_record_sets_count", "1,2\n3\n4,5,6", {}, R"(["1", "2"] | ["3", null] | ["4", "5", "6"])"},
    {"crlf_records_then_a_longer_one",
     "1,2\r\n3,4\r\n5,6,7\r\n8,9\r\n",
     {"EmptyLineRule", "read"},
     R"(["1", "2"] | ["3", "4"] | ["5", "6", "7"] | ["8", "9", null])"},
    {"num_variables", "1,2,3\n4", {"NumVariables", "2", "ExtraColumnsRule", "ignore"}, R"(["1", "2"] | ["4", null])"},
    {"extra_wrap_delimited",
     "1,2,3\n4,5\n6",
     {"NumVariables", "2", "ExtraColumnsRule", "wrap"},
     R"(["1", "2"] | ["3", "4"] | ["5", "6"])"},
    {"names_count",
     "a,b\n1,2,3",
     {"VariableNamesLine", "1", "NumHeaderLines", "1", "ExtraColumnsRule", "ignore"},
     R"(["1", "2"])"},
    {"wrap_without_variables", "1,2\n3", {"NumVariables", "0", "ExtraColumnsRule", "wrap"}, "[] | []"},
    // Numbers.
    // A number whose text is a JSON number is written as read, others in
    // their shortest form.
    {"plain_numbers", "1,-2.5,3e2,+4,1D1,.5,4000.00", numbers({}), R"([1, -2.5, 3e2, 4, 10, 0.5, 4000.00])"},
    {"plain_numbers_canonical", "1,-2.5,3e2,+4,1D1,.5,4000.00", numbers({"--canonical"}),
     R"([1, -2.5, 300, 4, 10, 0.5, 4000])"},
    {"not_a_number_fills_nan", "1,x,", numbers({}), R"([1, "NaN", null])"},
    {"nan_after_numbers", "1,2\n3,4\n1.5,x\n", numbers({}), R"([1, 2] | [3, 4] | [1.5, "NaN"])"},
    {"separators", "1.234,5;7,5E-1;1.234",
     numbers({"Delimiter", ";", "DecimalSeparator", ",", "ThousandsSeparator", ".", "ExpChars", "E"}),
     R"([1234.5, 0.75, 1234])"},
    {"trim_non_numeric", "$12.5 USD,abc", numbers({"TrimNonNumeric", "true"}), R"([12.5, "NaN"])"},
    {"nan_and_inf", "NaN,-Inf,inf,Infinity,-infinity", numbers({}), R"(["NaN", "-Inf", "Inf", "Inf", "-Inf"])"},
    // Typed values; markers found in the values are missing, not import errors.
    {"types_detected", "n,b,t,d,s\n1.5,TRUE,28/01/2018,01:02:03.50,x\n-2,false,13/12/2018,2 00:00:00,y\n", typed({}),
     R"([1.5, true, "2018-01-28", "01:02:03.50", "x"] | [-2, false, "2018-12-13", "48:00:00", "y"])"},
    {"markers_detected", "a,b\n1,NA\n2,x\nnull,y\n", typed({"ImportErrorRule", "error"}),
     R"([1, "NA"] | [2, "x"] | [null, "y"])"},
    {"marker_omitrow", "a\n1\nnull\n", typed({"MissingRule", "omitrow"}), "[1]"},
    {"marker_fill", "a,b\n1,NA\n2,3\n", typed({}), "[1, null] | [2, 3]"},
    {"typed_import_error_fill", "a,b\n1,true\nx,false\n300,TRUE\n", as_int16("fill"),
     "[1, true] | [null, false] | [300, true]"},
    {"typed_import_error_omitrow", "a,b\n1,true\nx,false\n300,TRUE\n", as_int16("omitrow"), "[1, true] | [300, true]"},
    {"typed_import_error_omitvar", "a,b\n1,true\nx,false\n300,TRUE\n", as_int16("omitvar"),
     "[true] | [false] | [true]"},
    {"typed_import_error", "a,b\n1,true\nx,false\n300,TRUE\n", as_int16("error"), "[1, true] | ImportError(3, 1)"},
    {"out_of_type_range", "a\n1\n300\n", typed({"--types", R"({"a": "int8"})"}), "[1] | [null]"},
    // Errors: nothing is written past the failing record.
    {"consecutive_error", "1,2,3\n4,,6", no_consecutive, R"(["1", "2", "3"] | ConsecutiveDelimiters(2, 3))"},
    {"leading_error", "a\n,b", {"LeadingDelimitersRule", "error"}, R"(["a"] | LeadingDelimiter(2, 1))"},
    {"trailing_error", "a,b,", {"TrailingDelimitersRule", "error"}, "TrailingDelimiter(1, 4)"},
    {"column_counts_utf16_units", "𝄞é,,x", no_consecutive, "ConsecutiveDelimiters(1, 5)"},
    {"line_counts_lines_in_quotes", "\"a\nb\",1\nc,,2", no_consecutive,
     R"(["a\nb", "1"] | ConsecutiveDelimiters(3, 3))"},
    {"column_after_a_line_break_in_the_record", "\"a\nb\",,1", no_consecutive, "ConsecutiveDelimiters(2, 4)"},
    {"empty_line_error", "1\n\n2", {"EmptyLineRule", "error"}, R"(["1"] | EmptyLine(2, 1))"},
    {"missing_error", "1,2\n3,\n", {"MissingRule", "error"}, R"(["1", "2"] | MissingValue(2, 3))"},
    {"padded_missing_error", "1,2\n3\n", {"MissingRule", "error"}, R"(["1", "2"] | MissingValue(2, 2))"},
    {"extra_columns_error", "1,2\n3,4,5", {"ExtraColumnsRule", "error"}, R"(["1", "2"] | ExtraColumns(2, 5))"},
    {"partial_field_error", "abcde\nab", fixed({"PartialFieldRule", "error"}), R"(["abc", "de"] | PartialField(2, 3))"},
    {"fixed_width_extra_error", "abcdeX", fixed({"ExtraColumnsRule", "error"}), "ExtraColumns(1, 6)"},
    {"unterminated_quote", "a\nb,\"c\nd", {}, R"(["a"] | UnterminatedQuote(2, 3))"},
    {"invalid_utf8_byte_offset", "ab\ncd\n\xC3\x28", {}, R"(["ab"] | InvalidUtf8(6))"},
    {"records_read_before_invalid_utf8",
     "ab\ncd\n\xC3\x28",
     {"LineEnding", "\\n"},
     R"(["ab"] | ["cd"] | InvalidUtf8(6))"},
    {"invalid_utf8_offset_counts_bom", "\xEF\xBB\xBFok\n\xED\xA0\x80", {}, "InvalidUtf8(6)"},
    {"truncated_sequence_at_end", "ok\xE2\x82", {}, "InvalidUtf8(2)"},
    {"stray_continuation", "ab\x80", {}, "InvalidUtf8(2)"},
    {"overlong_two_bytes", "\xC1\x81", {}, "InvalidUtf8(0)"},
    {"overlong_three_bytes", "x\xE0\x80\x80", {}, "InvalidUtf8(1)"},
    {"above_u10ffff", "\xF4\x90\x80\x80", {}, "InvalidUtf8(0)"},
    {"lead_f5", "\xF5\x80\x80\x80", {}, "InvalidUtf8(0)"},
    {"bad_byte_after_eight_ascii", "12345678\xFF", {}, "InvalidUtf8(8)"},
    // Across the blocks in which the input is read: a CR LF or a character
    // cut by a block's end is read as one.
    {"quoted_field_longer_than_blocks",
     "a\n\"" + blocks_of_q + "\",b\nc",
     {},
     R"(["a"] | [")" + blocks_of_q + R"(", "b"] | ["c", null])"},
    {"crlf_across_blocks",
     block_of_x.substr(1) + "\r\ny",
     {"EmptyLineRule", "read"},
     R"([")" + block_of_x.substr(1) + R"("] | ["y"])"},
    {"character_across_blocks",
     block_of_x.substr(1) + "é,𝄞",
     {"ParserType", "fixedwidth", "VariableWidths", "[1048575, 2, 2]"},
     R"([")" + block_of_x.substr(1) + R"(", "é,", "𝄞"])"},
    // Text.
    {"control_units_escaped",
     "a\x01"
     "b,\x1f",
     {},
     R"(["a\u0001b", "\u001f"])"},
    {"byte_order_mark_skipped", "\uFEFFa,b", {}, R"(["a", "b"])"},
    {"non_ascii_whitespace_trimmed", "\u3000a\u3000,b", {"Whitespace", "\u3000"}, R"(["a", "b"])"},
    // Encodings, converted while reading; the offset of a bad byte counts
    // the input's bytes.
    {"latin1", "caf\xE9,\xBD\n", in("ISO-8859-1"), R"(["café", "½"])"},
    {"utf16le_bom_skipped",
     std::string("\xFF\xFE"
                 "a\0,\0\xE9\0\n\0b\0",
                 12),
     in("UTF-16LE"), R"(["a", "é"] | ["b", null])"},
    {"utf16be_no_bom", std::string("\0a\0,\0b", 6), in("UTF-16BE"), R"(["a", "b"])"},
    {"utf32le_bom_skipped", std::string("\xFF\xFE\0\0x\0\0\0", 8), in("UTF-32LE"), R"(["x"])"},
    // Typed values keep the text they were read from, converted to UTF-8.
    {"typed_values_as_written", std::string("4\0\x30\0.\0\x30\0,\0\x31\0\n\0+\0\x31\0,\0x\0", 22),
     in("UTF-16LE", {"OutputBuilderType", "table"}), R"([40.0, "1"] | [1, "x"])"},
    {"invalid_byte_offset_after_good_text", "ab\ncd\n\x81", in("WINDOWS-1252"),
     R"(["ab"] | InvalidEncoding("WINDOWS-1252", 6))"},
    {"cut_off_character_at_end", std::string("a\0\n\0b", 5), in("UTF-16LE"), R"(InvalidEncoding("UTF-16LE", 4))"},
    {"unknown_encoding", "a", in("NO-SUCH-ENCODING"), R"(UnknownEncoding("NO-SUCH-ENCODING"))"},
    {"lone_surrogate", std::string("a\0\n\0\x00\xD8x\0", 8), in("UTF-16LE"), R"(InvalidEncoding("UTF-16LE", 4))"},
    // Other quotes and escapes.
    {"single_quote", "'a,b',\"c\"\n'it''s',d", {"--quote", "'"}, R"(["a,b", "\"c\""] | ["it's", "d"])"},
    {"no_quote", "\"a,b\",c", {"--quote", "none"}, R"(["\"a", "b\"", "c"])"},
    {"backslash_escape", R"("a\"b\\c\n",d)", backslash, R"(["a\"b\\c\\n", "d"])"},
    {"backslash_then_quote_closes", "\"a\\\\\",b", backslash, R"(["a\\", "b"])"},
    {"escaped_quote_before_delimiter", "\"a\\\",b\",c", backslash, R"(["a\",b", "c"])"},
    // The table's end: the record that starts before the end line is read
    // whole, the lines after it counted, whatever ends them.
    {"table_end", "1,2\n\"3\n3\",4", ending_at("3"), R"(["1", "2"] | ["3\n3", "4"])"},
    {"table_end_crlf", "1,2\n\"3\n3\",4\r\n\r\nnote 1\r\nnote\"2", ending_at("3"), R"(["1", "2"] | ["3\n3", "4"])",
     "3 lines from line 4 on were left unread"},
    {"table_end_lf", "1,2\n\"3\n3\",4\nx\n", ending_at("3"), R"(["1", "2"] | ["3\n3", "4"])",
     "1 lines from line 4 on were left unread"},
    {"table_end_cr", "1,2\n\"3\n3\",4\rx\ry", ending_at("3"), R"(["1", "2"] | ["3\n3", "4"])",
     "2 lines from line 4 on were left unread"},
    {"table_end_at_a_record_start", "1,2\n3,4\n", ending_at("2"), R"(["1", "2"])",
     "1 lines from line 2 on were left unread"},
    {"table_end_after_a_record_of_two_lines", "1,2\n\"3\n3\",4\n5,6\n7,8\n", ending_at("4"),
     R"(["1", "2"] | ["3\n3", "4"])", "2 lines from line 4 on were left unread"},
};
INSTANTIATE_TEST_SUITE_P(Settings, ReadSetting, ::testing::ValuesIn(setting_cases));

TEST(ReadHeader, NamesUnitsAndDescriptionsComeFromTheirLines) {
  const auto out = read_text(
      "name a,name b\nkg,m\n\"first, one\",second\n1,2",
      {"NumHeaderLines", "3", "VariableNamesLine", "1", "VariableUnitsLine", "2", "VariableDescriptionsLine", "3"});
  EXPECT_EQ(out.header,
            R"({"variables": ["name a", "name b"], "units": ["kg", "m"], "descriptions": ["first, one", "second"]})");
  EXPECT_EQ(joined(out), R"(["1", "2"])");
  // Omitted variables take their names with them.
  const auto omitted =
      read_text("a,b,c\n1,,3", {"NumHeaderLines", "1", "VariableNamesLine", "1", "MissingRule", "omitvar"});
  EXPECT_EQ(omitted.header, R"({"variables": ["a", "c"], "units": [], "descriptions": []})");
}

TEST(ReadTypes, UnsettledDateOrderIsNoted) {
  const std::string path = import_test::write_file("when\n3/4/2020\n5/6/2020\n");
  const auto run = run_tool({"read", path, "NumHeaderLines", "1", "VariableNamesLine", "1"});
  EXPECT_EQ(run.out.substr(run.out.find('\n') + 1), "[\"2020-04-03\"]\n[\"2020-06-05\"]\n");
  EXPECT_NE(run.err.find("variable 1 read both day-first and month-first"), std::string::npos) << run.err;
}

TEST(ReadTypes, TypeArgumentErrorsAreUsageErrors) {
  for (const std::string bad :
       {R"(["float"])", R"({"zz": "double"})", R"(["double", "double", "double"])", "[1]", "nojson"}) {
    EXPECT_THROW(read_text("a,b\n1,2\n", typed({"--types", bad})), std::exception) << bad;
  }
}

// Values written as CSV and read back are the same values.
TEST(ReadTypes, CsvReadsBackTheSame) {
  const std::string file =
      "a,b,c\n1.25,true,2018-01-28T05:06:07.5+01:00\n,False,2018-01-29\n1e300,TRUE,\n5e-324,,\n-0,,\nNaN,,\n-Inf,,\n0."
      "1,,\n";
  const auto first = read_text(file, typed({}));
  const auto csv = read_text(file, typed({"--format", "csv"}));
  const auto again = read_text(csv.raw, typed({}));
  EXPECT_EQ(again.header, first.header);
  EXPECT_EQ(joined(again), joined(first));
  EXPECT_EQ(joined(first), R"([1.25, true, "2018-01-28T05:06:07.5+01:00"] | [null, false, "2018-01-29"] | )"
                           R"([1e300, true, null] | [5e-324, null, null] | [-0, null, null] | ["NaN", null, null] | )"
                           R"(["-Inf", null, null] | [0.1, null, null])");
  // Canonical CSV reads back the same values too.
  const auto canonical = read_text(file, typed({"--format", "csv", "--canonical"}));
  EXPECT_EQ(canonical.raw,
            "a,b,c\r\n1.25,true,2018-01-28T05:06:07.5+01:00\r\n,false,2018-01-29\r\n1e+300,true,\r\n5e-324,,\r\n-0,,"
            "\r\nNaN,,\r\n-Inf,,\r\n0.1,,\r\n");
  EXPECT_EQ(joined(read_text(canonical.raw, typed({"--canonical"}))), joined(read_text(file, typed({"--canonical"}))));
}

// A record that is padding only (no field of its own) has the table's
// field count in CSV too: one separator fewer than fields.
TEST(ReadCsv, PaddingOnlyRecordsKeepTheFieldCount) {
  const struct {
    const char* name;
    std::string contents;
    std::vector<std::string> args;
    std::string csv;
  } cases[] = {
      {"delimiters_ignored", "1,2\n,,\n3,4\n", {"LeadingDelimitersRule", "ignore"}, "1,2\r\n,\r\n3,4\r\n"},
      {"three_variables", "1,2,3\n,\n", {"LeadingDelimitersRule", "ignore"}, "1,2,3\r\n,,\r\n"},
      {"empty_line_read", "1,2\n\n3,4\n", {"EmptyLineRule", "read"}, "1,2\r\n,\r\n3,4\r\n"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = c.args;
    args.insert(args.end(), {"--format", "csv"});
    EXPECT_EQ(read_text(c.contents, args).raw, c.csv) << c.name;
  }
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
    EXPECT_EQ(out.error.find("{\"error\": {\"identifier\": \"ZORVEK:textio:reader:" + c.error),
              c.error.empty() ? std::string::npos : 0u)
        << out.error;
  }
}

}  // namespace
