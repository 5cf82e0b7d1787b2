// Each setting of the options at work on a small file: the records that come
// out (as JSON lines joined with " | ").
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"

namespace {

using import_test::joined;
using import_test::read_text;

struct setting_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;
  std::string expected;  // records joined with " | "
};

void PrintTo(const setting_case& c, std::ostream* os) { *os << c.name; }

class ReadSetting : public ::testing::TestWithParam<setting_case> {};

TEST_P(ReadSetting, GivesTheRecords) {
  const auto& c = GetParam();
  const auto out = read_text(c.contents, c.args);
  EXPECT_EQ(out.status, 0) << out.error;
  EXPECT_EQ(joined(out), c.expected);
}

const setting_case line_ending_cases[] = {
    {"lf_crlf_cr_mixed", "a\nb\r\nc\rd", {}, R"(["a"] | ["b"] | ["c"] | ["d"])"},
    {"final_terminator_makes_no_record", "a\nb\n", {}, R"(["a"] | ["b"])"},
    {"longest_line_ending_wins", "a||b|c", {"LineEnding", R"(["|", "||"])"}, R"(["a"] | ["b"] | ["c"])"},
    {"crlf_is_one_ending_not_an_empty_line", "a\r\n\r\nb", {"EmptyLineRule", "read"}, R"(["a"] | [null] | ["b"])"},
    {"only_given_endings_count", "a\rb\nc", {"LineEnding", "\\n"}, R"(["a\rb"] | ["c"])"},
};
INSTANTIATE_TEST_SUITE_P(LineEndings, ReadSetting, ::testing::ValuesIn(line_ending_cases));

const setting_case header_cases[] = {
    {"header_lines_skipped", "skip me\n\"open\nx,y\n1,2", {"NumHeaderLines", "2"}, R"(["x", "y"] | ["1", "2"])"},
    {"data_line", "h\n1,2", {"DataLine", "2"}, R"(["1", "2"])"},
    {"header_detection_skips_none", "h\n1", {}, R"(["h"] | ["1"])"},
};
INSTANTIATE_TEST_SUITE_P(HeaderLines, ReadSetting, ::testing::ValuesIn(header_cases));

const setting_case comment_cases[] = {
    {"line_comment_to_end_of_line", "1,2 # note\n3,4", {"CommentStyle", "#"}, R"(["1", "2"] | ["3", "4"])"},
    {"comment_only_line_is_no_record",
     "# a\n1\n  # b\n2",
     {"CommentStyle", "#", "EmptyLineRule", "error"},
     R"(["1"] | ["2"])"},
    {"marker_in_quotes_is_text", "\"a#b\",c # d", {"CommentStyle", "#"}, R"(["a#b", "c"])"},
    {"block_comment_across_lines",
     "1,/* x\ny */2\n3,4",
     {"CommentStyle", R"(["/*", "*/"])"},
     R"(["1", "2"] | ["3", "4"])"},
    {"block_comment_inside_field", "ab/*x*/cd,e", {"CommentStyle", R"(["/*", "*/"])"}, R"(["abcd", "e"])"},
    {"unclosed_block_comment_runs_to_end",
     "1,2\n3/* x\n4",
     {"CommentStyle", R"(["/*", "*/"])"},
     R"(["1", "2"] | ["3", null])"},
    {"comment_marker_of_several_units", "1;;x\n2", {"CommentStyle", ";;"}, R"(["1"] | ["2"])"},
};
INSTANTIATE_TEST_SUITE_P(Comments, ReadSetting, ::testing::ValuesIn(comment_cases));

const setting_case empty_line_cases[] = {
    {"skip", "1\n\n \t\n2", {}, R"(["1"] | ["2"])"},
    {"read_gives_missing_fields", "1,2\n\n3,4", {"EmptyLineRule", "read"}, R"(["1", "2"] | [null, null] | ["3", "4"])"},
    {"delimiters_make_a_line_not_empty", "1,2\n,\n", {"EmptyLineRule", "error"}, R"(["1", "2"] | [null, null])"},
};
INSTANTIATE_TEST_SUITE_P(EmptyLines, ReadSetting, ::testing::ValuesIn(empty_line_cases));

const setting_case quote_cases[] = {
    {"delimiter_and_line_ending_inside_quotes", "\"a,b\nc\",d\ne,f", {}, R"(["a,b\nc", "d"] | ["e", "f"])"},
    {"doubled_quote_is_one", "\"say \"\"hi\"\"\",x", {}, R"(["say \"hi\"", "x"])"},
    {"units_after_closing_quote_kept_as_they_stand",
     "\"ab\"  ,\"cd\" x ,\"\"\t,e",
     {},
     R"(["ab  ", "cd x ", "\t", "e"])"},
    {"quoted_field_not_trimmed", "\" a \", b ", {}, R"([" a ", "b"])"},
    {"quote_after_whitespace_still_quotes", "  \"a,b\",c", {}, R"(["a,b", "c"])"},
    {"quote_inside_unquoted_field_is_text", "a\"b,c", {}, R"(["a\"b", "c"])"},
    {"quoted_empty_is_not_missing", "\"\",x", {}, R"(["", "x"])"},
    {"crlf_inside_quotes_kept", "\"a\r\nb\",c\r\nd,e", {}, R"(["a\r\nb", "c"] | ["d", "e"])"},
};
INSTANTIATE_TEST_SUITE_P(Quotes, ReadSetting, ::testing::ValuesIn(quote_cases));

const setting_case delimiter_cases[] = {
    {"several_delimiters", "a;b\tc", {"Delimiter", R"([";", "\t"])"}, R"(["a", "b", "c"])"},
    {"longest_delimiter_wins", "a::b:c", {"Delimiter", R"([":", "::"])"}, R"(["a", "b", "c"])"},
    {"whitespace_trimmed", " a ,\tb\t", {}, R"(["a", "b"])"},
    {"consecutive_split", "a,,b", {}, R"(["a", null, "b"])"},
    {"consecutive_join", "a,,,b", {"ConsecutiveDelimitersRule", "join"}, R"(["a", "b"])"},
    {"leading_keep", ",a", {"NumVariables", "2"}, R"([null, "a"])"},
    {"leading_ignore", ",,a,b", {"LeadingDelimitersRule", "ignore"}, R"(["a", "b"])"},
    {"trailing_keep", "a,", {}, R"(["a", null])"},
    {"trailing_ignore", "a,b,,", {"TrailingDelimitersRule", "ignore"}, R"(["a", "b"])"},
    {"leading_before_consecutive",
     ",,a,,b",
     {"ConsecutiveDelimitersRule", "join", "LeadingDelimitersRule", "keep"},
     R"([null, null, "a", "b"])"},
    {"multiple_delims_as_one", ",a,,b,", {"MultipleDelimsAsOne", "true"}, R"(["a", "b", null])"},
    {"only_delimiters_keep", ",,", {}, R"([null, null, null])"},
    {"non_ascii_delimiter", "é¦𝄞¦c", {"Delimiter", "¦"}, R"(["é", "𝄞", "c"])"},
    {"tabular_whitespace_joined", "  a \t b  \nc d", {"ParserType", "tabular"}, R"(["a", "b"] | ["c", "d"])"},
    {"detected_delimiter_is_comma", "a;b,c", {}, R"(["a;b", "c"])"},
};
INSTANTIATE_TEST_SUITE_P(Delimiters, ReadSetting, ::testing::ValuesIn(delimiter_cases));

const std::vector<std::string> widths_3_2 = {"ParserType", "fixedwidth", "VariableWidths", "[3, 2]"};

std::vector<std::string> fixed(std::vector<std::string> more) {
  std::vector<std::string> args = widths_3_2;
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

const setting_case fixed_width_cases[] = {
    {"cut_and_trimmed", "ab cd\n x  y", fixed({}), R"(["ab", "cd"] | ["x", "y"])"},
    {"widths_count_utf16_units", "𝄞éxy", fixed({}), R"(["𝄞é", "xy"])"},
    {"partial_keep", "abcd\nfghij", fixed({}), R"(["abc", "d"] | ["fgh", "ij"])"},
    {"partial_keep_later_missing", "ab", fixed({}), R"(["ab", null])"},
    {"partial_omitrow", "abcd\nfghij", fixed({"PartialFieldRule", "omitrow"}), R"(["fgh", "ij"])"},
    {"partial_omitvar", "abcd\nfghij", fixed({"PartialFieldRule", "omitvar"}), R"(["abc"] | ["fgh"])"},
    {"partial_fill", "abcd\nfghij", fixed({"PartialFieldRule", "fill"}), R"(["abc", null] | ["fgh", "ij"])"},
    {"partial_wrap", "ab\ncde\nfghij", fixed({"PartialFieldRule", "wrap"}), R"(["abc", "de"] | ["fgh", "ij"])"},
    {"partial_wrap_at_end_keeps", "abcde\nfg", fixed({"PartialFieldRule", "wrap"}), R"(["abc", "de"] | ["fg", null])"},
    {"extra_addvars", "abcdeXY\nfghij", fixed({}), R"(["abc", "de", "XY"] | ["fgh", "ij", null])"},
    {"extra_ignore", "abcdeXY", fixed({"ExtraColumnsRule", "ignore"}), R"(["abc", "de"])"},
    {"extra_wrap", "abcdefg\nhi", fixed({"ExtraColumnsRule", "wrap"}), R"(["abc", "de"] | ["fgh", "i"])"},
    {"comment_removed_before_cutting", "ab#xx\nfghij", fixed({"CommentStyle", "#"}), R"(["ab", null] | ["fgh", "ij"])"},
};
INSTANTIATE_TEST_SUITE_P(FixedWidth, ReadSetting, ::testing::ValuesIn(fixed_width_cases));

const setting_case line_cases[] = {
    {"line_as_it_stands", " a, b \n\nc", {"ParserType", "line"}, R"([" a, b "] | ["c"])"},
    {"empty_lines_read", "a\n\nc", {"ParserType", "line", "EmptyLineRule", "read"}, R"(["a"] | [null] | ["c"])"},
};
INSTANTIATE_TEST_SUITE_P(Line, ReadSetting, ::testing::ValuesIn(line_cases));

const setting_case missing_cases[] = {
    {"placeholders", "NA,1, -- ,\"NA\"", {"TreatAsMissing", R"(["NA", "--"])"}, R"([null, "1", null, "NA"])"},
    {"omitrow", "1,2\n3,\n5,6", {"MissingRule", "omitrow"}, R"(["1", "2"] | ["5", "6"])"},
    {"omitvar", "1,2,3\n4,,6\n7,8,9", {"MissingRule", "omitvar"}, R"(["1", "3"] | ["4", "6"] | ["7", "9"])"},
};
INSTANTIATE_TEST_SUITE_P(Missing, ReadSetting, ::testing::ValuesIn(missing_cases));

const setting_case variable_count_cases[] = {
    {"first_record_sets_count", "1,2\n3\n4,5,6", {}, R"(["1", "2"] | ["3", null] | ["4", "5", "6"])"},
    {"num_variables_given",
     "1,2,3\n4",
     {"NumVariables", "2", "ExtraColumnsRule", "ignore"},
     R"(["1", "2"] | ["4", null])"},
    {"extra_wrap_starts_next_record",
     "1,2,3\n4,5\n6",
     {"NumVariables", "2", "ExtraColumnsRule", "wrap"},
     R"(["1", "2"] | ["3", "4"] | ["5", "6"])"},
    {"names_line_sets_count",
     "a,b\n1,2,3",
     {"VariableNamesLine", "1", "NumHeaderLines", "1", "ExtraColumnsRule", "ignore"},
     R"(["1", "2"])"},
};
INSTANTIATE_TEST_SUITE_P(VariableCount, ReadSetting, ::testing::ValuesIn(variable_count_cases));

const std::vector<std::string> matrix = {"OutputBuilderType", "matrix"};

std::vector<std::string> numbers(std::vector<std::string> more) {
  std::vector<std::string> args = matrix;
  args.insert(args.end(), more.begin(), more.end());
  return args;
}

const setting_case matrix_cases[] = {
    {"plain_numbers", "1,-2.5,3e2,+4,1D1", numbers({}), R"([1, -2.5, 300, 4, 10])"},
    {"not_a_number_fills_nan", "1,x,", numbers({}), R"([1, "NaN", null])"},
    {"separators", "1.234,5;7,5E-1",
     numbers({"Delimiter", ";", "DecimalSeparator", ",", "ThousandsSeparator", ".", "ExpChars", "E"}),
     R"([1234.5, 0.75])"},
    {"trim_non_numeric", "$12.5 USD,abc", numbers({"TrimNonNumeric", "true"}), R"([12.5, "NaN"])"},
    {"untrimmed_fails", "$12.5", numbers({}), R"(["NaN"])"},
    {"nan_and_inf", "NaN,-Inf,inf,Infinity,-infinity", numbers({}), R"(["NaN", "-Inf", "Inf", "Inf", "-Inf"])"},
    {"import_error_omitrow", "1,2\n3,x\n5,6", numbers({"ImportErrorRule", "omitrow"}), "[1, 2] | [5, 6]"},
    {"import_error_omitvar", "1,2\n3,x\n5,6", numbers({"ImportErrorRule", "omitvar"}), "[1] | [3] | [5]"},
};
INSTANTIATE_TEST_SUITE_P(Matrix, ReadSetting, ::testing::ValuesIn(matrix_cases));

const setting_case text_cases[] = {
    {"byte_order_mark_skipped",
     "\xEF\xBB\xBF"
     "a,b",
     {},
     R"(["a", "b"])"},
    {"surrogate_pairs_and_accents", "𝄞x,é\n", {}, R"(["𝄞x", "é"])"},
    {"non_ascii_whitespace_trimmed", "\u3000a\u3000,b", {"Whitespace", "\u3000"}, R"(["a", "b"])"},
};
INSTANTIATE_TEST_SUITE_P(Text, ReadSetting, ::testing::ValuesIn(text_cases));

TEST(ReadHeader, NamesUnitsAndDescriptionsComeFromTheirLines) {
  const auto out = read_text(
      "name a,name b\nkg,m\n\"first, one\",second\n1,2",
      {"NumHeaderLines", "3", "VariableNamesLine", "1", "VariableUnitsLine", "2", "VariableDescriptionsLine", "3"});
  EXPECT_EQ(out.header,
            R"({"variables": ["name a", "name b"], "units": ["kg", "m"], "descriptions": ["first, one", "second"]})");
  EXPECT_EQ(joined(out), R"(["1", "2"])");
}

TEST(ReadHeader, OmittedVariablesLeaveTheNames) {
  const auto out =
      read_text("a,b,c\n1,,3", {"NumHeaderLines", "1", "VariableNamesLine", "1", "MissingRule", "omitvar"});
  EXPECT_EQ(out.header, R"({"variables": ["a", "c"], "units": [], "descriptions": []})");
  EXPECT_EQ(joined(out), R"(["1", "3"])");
}

}  // namespace

namespace {

const setting_case no_room_cases[] = {
    {"wrap_without_variables_drops_extras", "1,2\n3", {"NumVariables", "0", "ExtraColumnsRule", "wrap"}, "[] | []"},
    {"wrap_without_record_width_drops_extras",
     "abc\nd",
     {"ParserType", "fixedwidth", "VariableWidths", "[0]", "ExtraColumnsRule", "wrap"},
     "[null] | [null]"},
};
INSTANTIATE_TEST_SUITE_P(NoRoom, ReadSetting, ::testing::ValuesIn(no_room_cases));

}  // namespace
