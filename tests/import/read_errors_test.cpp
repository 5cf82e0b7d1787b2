// Reading errors: each has its own identifier with the physical line and
// column (or the byte offset), and nothing is written past the failing
// record.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"

namespace {

using import_test::joined;
using import_test::read_text;

struct error_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;
  std::string records_before;  // records written ahead of the error, joined
  std::string key;
  std::string arguments;  // as the error line writes them
};

void PrintTo(const error_case& c, std::ostream* os) { *os << c.name; }

class ReadError : public ::testing::TestWithParam<error_case> {};

TEST_P(ReadError, StopsWithItsIdentifierAndPosition) {
  const auto& c = GetParam();
  const auto out = read_text(c.contents, c.args);
  EXPECT_EQ(out.status, 4);
  EXPECT_EQ(joined(out), c.records_before);
  EXPECT_NE(out.error.find("\"identifier\": \"ZORVEK:textio:reader:" + c.key + "\""), std::string::npos) << out.error;
  EXPECT_NE(out.error.find("\"arguments\": [" + c.arguments + "]"), std::string::npos) << out.error;
}

const error_case error_cases[] = {
    {"consecutive",
     "1,2,3\n4,,6",
     {"ConsecutiveDelimitersRule", "error"},
     R"(["1", "2", "3"])",
     "ConsecutiveDelimiters",
     "2, 3"},
    {"leading", "a\n,b", {"LeadingDelimitersRule", "error"}, R"(["a"])", "LeadingDelimiter", "2, 1"},
    {"trailing", "a,b,", {"TrailingDelimitersRule", "error"}, "", "TrailingDelimiter", "1, 4"},
    {"column_counts_utf16_units", "𝄞é,,x", {"ConsecutiveDelimitersRule", "error"}, "", "ConsecutiveDelimiters", "1, 5"},
    {"line_counts_lines_inside_quotes",
     "\"a\nb\",1\nc,,2",
     {"ConsecutiveDelimitersRule", "error"},
     R"(["a\nb", "1"])",
     "ConsecutiveDelimiters",
     "3, 3"},
    {"position_after_a_line_break_in_the_same_record",
     "\"a\nb\",,1",
     {"ConsecutiveDelimitersRule", "error"},
     "",
     "ConsecutiveDelimiters",
     "2, 4"},
    {"empty_line", "1\n\n2", {"EmptyLineRule", "error"}, R"(["1"])", "EmptyLine", "2, 1"},
    {"missing", "1,2\n3,\n", {"MissingRule", "error"}, R"(["1", "2"])", "MissingValue", "2, 3"},
    {"padded_missing", "1,2\n3\n", {"MissingRule", "error"}, R"(["1", "2"])", "MissingValue", "2, 2"},
    {"import",
     "1\n2\nx1",
     {"OutputBuilderType", "matrix", "ImportErrorRule", "error"},
     "[1] | [2]",
     "ImportError",
     "3, 1"},
    {"extra_columns", "1,2\n3,4,5", {"ExtraColumnsRule", "error"}, R"(["1", "2"])", "ExtraColumns", "2, 5"},
    {"partial_field",
     "abcde\nab",
     {"ParserType", "fixedwidth", "VariableWidths", "[3, 2]", "PartialFieldRule", "error"},
     R"(["abc", "de"])",
     "PartialField",
     "2, 3"},
    {"fixed_width_extra",
     "abcdeX",
     {"ParserType", "fixedwidth", "VariableWidths", "[3, 2]", "ExtraColumnsRule", "error"},
     "",
     "ExtraColumns",
     "1, 6"},
    {"unterminated_quote", "a\nb,\"c\nd", {}, R"(["a"])", "UnterminatedQuote", "2, 3"},
    {"invalid_utf8_offset", "ab\n\xC3\x28", {}, "", "InvalidUtf8", "3"},
    {"records_before_invalid_utf8_written", "ab\ncd\n\xFF", {}, R"(["ab"])", "InvalidUtf8", "6"},
    {"invalid_utf8_offset_counts_bom", "\xEF\xBB\xBFok\n\xED\xA0\x80", {}, "", "InvalidUtf8", "6"},
    {"truncated_sequence_at_end", "ok\xE2\x82", {}, "", "InvalidUtf8", "2"},
    {"overlong_form", "\xC0\xAF", {}, "", "InvalidUtf8", "0"},
};
INSTANTIATE_TEST_SUITE_P(Errors, ReadError, ::testing::ValuesIn(error_cases));

TEST(ReadError, InputThatCannotBeReadGivesThePathAndTheReason) {
  const std::pair<std::string, std::string> cases[] = {
      {"/nonexistent/zvtextimport/file.csv", "No such file or directory"},
      {::testing::TempDir(), "Is a directory"},
  };
  for (const auto& [path, reason] : cases) {
    const auto out = import_test::read_file(path, {});
    EXPECT_EQ(out.status, 5) << path;
    EXPECT_NE(out.error.find("\"arguments\": [\"" + path + "\", \"" + reason + "\"]"), std::string::npos) << out.raw;
  }
}

TEST(ReadError, CsvOutputEndsAtTheLastGoodRecord) {
  const auto out = read_text("1,2\n3,,4\n5,6", {"--format", "csv", "ConsecutiveDelimitersRule", "error"});
  EXPECT_EQ(out.status, 4);
  EXPECT_EQ(out.raw, "1,2\r\n");
}

TEST(ReadError, OptionsFailureReportsLikeTheOptionsCommand) {
  const auto out = read_text("1", {"Delimiter", "7"});
  EXPECT_EQ(out.status, 1);
  EXPECT_TRUE(out.raw.starts_with("{\n  \"options\": {")) << out.raw;
  EXPECT_NE(out.raw.find("ZORVEK:textio:textio:DelimiterType"), std::string::npos) << out.raw;
}

}  // namespace
