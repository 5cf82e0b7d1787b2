// The tool's own JSON writing: texts unit for unit (bytes are checked against
// a reference in record_escaping_test.cpp), the document's layout, the options
// record, and the one-line message on standard error.
#include "tools/json_writer.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "parser/options.hpp"
#include "tools/apply_options.hpp"
#include "tools/message_failure.hpp"
#include "tools/record_json.hpp"

namespace {

using zvtool::json_quote_units;
using zvtool::json_writer;

struct units_case {
  std::u16string units;
  std::string json;
};

TEST(ToolJsonText, UnitsAsUtf8WithLoneSurrogatesEscaped) {
  const units_case cases[] = {
      {std::u16string(u"a\"\0\n\x7f", 5), "\"a\\\"\\u0000\\n\x7f\""},  // ASCII escapes as for bytes
      {u"\u00e9\u20ac", "\"\xC3\xA9\xE2\x82\xAC\""},                   // two- and three-byte forms
      {u"\U0001F600", "\"\xF0\x9F\x98\x80\""},                         // a pair combines
      {u"a\xD83D", R"("a\ud83d")"},                                    // high at the end
      {u"\xD83Dx", R"("\ud83dx")"},                                    // high before no low
      {u"\xDE00\xD83D", R"("\ude00\ud83d")"},                          // low before high: no pair
      {u"\xD83D\xD83D\xDE00", "\"\\ud83d\xF0\x9F\x98\x80\""},          // the second high pairs
  };
  for (const auto& c : cases) EXPECT_EQ(json_quote_units(c.units), c.json);
}

// Two spaces a level and empty containers inline; a message's arguments each
// by their own alternative.
TEST(ToolJsonWriter, LayoutAndMessageFailure) {
  zvtool::message_failure failure{"A:B:C:Key", resource_core::BaseMsgID("A:B:C", "Key"), u"m\n"};
  failure.id.args.emplace_back(std::in_place_index<1>, std::string("8-bit\xFF"));
  failure.id.args.emplace_back(std::in_place_index<2>, std::u16string(u"16\xD800"));
  json_writer out;
  out.begin_object();
  out.key("list");
  out.begin_array();
  out.unsigned_value(18446744073709551615u);
  out.bool_value(false);
  out.begin_object();
  out.end_object();
  out.end_array();
  out.key("empty");
  out.begin_array();
  out.end_array();
  out.key("error");
  zvtool::write_message_failure(out, failure);
  out.end_object();
  EXPECT_EQ(out.text(),
            "{\n"
            "  \"list\": [\n"
            "    18446744073709551615,\n"
            "    false,\n"
            "    {}\n"
            "  ],\n"
            "  \"empty\": [],\n"
            "  \"error\": {\n"
            "    \"identifier\": \"A:B:C:Key\",\n"
            "    \"key\": \"Key\",\n"
            "    \"arguments\": [\n"
            "      \"8-bit\\u00ff\",\n"
            "      \"16\\ud800\"\n"
            "    ],\n"
            "    \"message\": \"m\\n\"\n"
            "  }\n"
            "}");
}

TEST(ToolMessageLine, JoinsLinesAndTrims) {
  const struct {
    std::u16string message;
    std::string line;
  } cases[] = {
      {u"One line.", "zvtextparser: A:B:C:Key: One line.\n"},
      {u"Accepted:\n'a', 'b'\n", "zvtextparser: A:B:C:Key: Accepted: 'a', 'b'\n"},
      {u"  x\r\ny\rz  ", "zvtextparser: A:B:C:Key: x y z\n"},
      {u"\n", "zvtextparser: A:B:C:Key: \n"},
  };
  for (const auto& c : cases) {
    zvtool::message_failure failure{"A:B:C:Key", {}, c.message};
    EXPECT_EQ(zvtool::message_line(failure), c.line);
  }
}

// The human line names the failed pair and adds a hint; the error object
// keeps the library's identifier and arguments.
TEST(ToolMessageLine, NamesThePairAndHints) {
  const struct {
    std::vector<std::string> args;
    std::string line;
  } cases[] = {
      {{"NumHeaderLines", "2", "DataLine", "0"},
       "ExpectedPositiveScalarInt: DataLine: The value must be a positive integer scalar.\n"},
      {{"delimeter", ","},
       "UnknownParameter: 'delimeter' is not a recognized option name. Did you mean 'Delimiter'?\n"},
      {{"NumHeader", "1"},
       "UnknownParameter: 'NumHeader' is not a recognized option name. Did you mean 'NumHeaderLines'?\n"},
      {{"Xyz", "1"}, "UnknownParameter: 'Xyz' is not a recognized option name.\n"},
      {{"Delimiter", "1"},
       "DelimiterType: Delimiter: The value of 'Delimiter' must be a character vector or a cell array "
       "of character vectors. The value 1 was read as a number; write '\"1\"' to give it as text.\n"},
      {{"DecimalSeparator", ",,"},
       "InvalidStringProperty: DecimalSeparator: The value of 'DecimalSeparator' must be a "
       "character vector. DecimalSeparator takes exactly one character.\n"},
      {{"DataLine"}, "OddNumberNVPairs: Name-value arguments must come in pairs: every option name needs a value.\n"},
  };
  for (const auto& c : cases) {
    textio::parser::options record;
    const auto failure = zvtool::apply_option_arguments(std::nullopt, c.args, record);
    ASSERT_TRUE(failure.has_value()) << c.line;
    EXPECT_EQ(zvtool::message_line(*failure), "zvtextparser: ZORVEK:textio:textio:" + c.line);
  }
}

// Every field under its own name: the defaults, and a record with each field
// changed through the options.
TEST(ToolRecordJson, EveryFieldUnderItsOwnName) {
  textio::parser::options changed;
  const auto failure = zvtool::apply_option_arguments(std::string(R"({
    "Delimiter": [",", "\\t"], "LineEnding": "\\n", "TreatAsMissing": ["NA", ""], "CommentStyle": "%",
    "Whitespace": " ", "ThousandsSeparator": "'", "DateLocale": "de_CH", "ExpChars": "e", "FileType": "fixedwidth",
    "VariableWidths": {"$class": "uint64", "$size": [1, 2], "$data": [1, 18446744073709551615]},
    "NumHeaderLines": 1, "NumVariables": 2, "VariableNamesLine": 3, "VariableUnitsLine": 4,
    "VariableDescriptionsLine": 5, "ParserType": "line", "OutputBuilderType": "cell", "DecimalSeparator": ",",
    "MissingRule": "omitrow", "ImportErrorRule": "error", "ConsecutiveDelimitersRule": "error",
    "EmptyLineRule": "read", "ExtraColumnsRule": "wrap", "LeadingDelimitersRule": "ignore",
    "TrailingDelimitersRule": "error", "TrimNonNumeric": true})"),
                                                      {}, changed);
  ASSERT_FALSE(failure.has_value()) << zvtool::message_line(*failure);
  changed.partial_field_rule(static_cast<textio::enums::PartialFieldRule>(9));  // no enumerator: shown as its number
  const std::pair<textio::parser::options, const char*> cases[] = {
      {textio::parser::options{}, R"({
    "delimiter": [], "line_ending": ["\r\n", "\n", "\r"], "missing_placeholders": [], "comment_style": [],
    "whitespace": " \b\t", "thousands_separator": "", "date_locale": "", "exp_chars": "eEdD", "file_type": "Text",
    "field_widths": [], "num_header_lines": 18446744073709551615, "num_variables": 0, "variable_names_line": 0,
    "variable_units_line": 0, "variable_descriptions_line": 0, "parser_type": "Delimited", "output_type": "Table",
    "decimal_separator": ".", "missing_rule": "Fill", "import_error_rule": "Fill", "consecutive_delim_rule": "Split",
    "empty_line_rule": "Skip", "extra_columns_rule": "AddVars", "leading_delim_rule": "Keep",
    "trailing_delim_rule": "Keep", "partial_field_rule": "Keep", "detecting_delimiter": true,
    "detecting_num_header_lines": true, "detecting_num_variables": true, "trim_non_numeric": false})"},
      {changed, R"({
    "delimiter": [",", "\t"], "line_ending": ["\n"], "missing_placeholders": ["NA", ""],
    "comment_style": ["%"], "whitespace": " ", "thousands_separator": "'", "date_locale": "de_CH",
    "exp_chars": "e", "file_type": "FixedWidth", "field_widths": [1, 18446744073709551615],
    "num_header_lines": 1, "num_variables": 2, "variable_names_line": 3, "variable_units_line": 4,
    "variable_descriptions_line": 5, "parser_type": "Line", "output_type": "Cell", "decimal_separator": ",",
    "missing_rule": "OmitRow", "import_error_rule": "Error", "consecutive_delim_rule": "Error",
    "empty_line_rule": "Read", "extra_columns_rule": "Wrap", "leading_delim_rule": "Ignore",
    "trailing_delim_rule": "Error", "partial_field_rule": 9, "detecting_delimiter": false,
    "detecting_num_header_lines": false, "detecting_num_variables": false, "trim_non_numeric": true})"},
  };
  for (const auto& [record, expected] : cases) {
    json_writer out;
    zvtool::write_options_record(out, record);
    EXPECT_EQ(nlohmann::ordered_json::parse(out.text()), nlohmann::ordered_json::parse(expected));
  }
}

}  // namespace
