// The tool's own writing: JSON and CSV texts against byte-at-a-time
// references on random texts drawn from the bytes that matter (quotes,
// delimiters, controls, UTF-8 sequences whole, cut and malformed, stray high
// bytes) at every length around the eight-byte steps of the scan; numbers;
// texts unit for unit; the document's layout, the options record, and the
// one-line message on standard error.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "parser/options.hpp"
#include "tools/apply_options.hpp"
#include "tools/json_writer.hpp"
#include "tools/message_failure.hpp"
#include "tools/record_json.hpp"
#include "tools/record_writers.hpp"
#include "zvcore/utf8.hpp"

namespace {

// Whole UTF-8 sequences as they are; a lone byte escaped by its short form
// or as \u00XX when it is a control or no sequence of its own.
std::string reference_json(std::string_view bytes) {
  std::string out = "\"";
  for (std::size_t i = 0, length = 0; i < bytes.size(); i += std::max<std::size_t>(length, 1)) {
    length = foundation::core::unicode::utf8_sequence_at(bytes.substr(i)).length;
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const std::size_t short_form = std::string_view("\"\\\b\f\n\r\t").find(bytes[i]);
    char hex[8];
    if (length > 1) {
      out.append(bytes.substr(i, length));
    } else if (length == 1 && short_form != std::string_view::npos) {
      out += std::string("\\") + "\"\\bfnrt"[short_form];
    } else if (length == 1 && byte >= 0x20) {
      out += bytes[i];
    } else {
      out.append(hex, static_cast<std::size_t>(std::snprintf(hex, sizeof hex, "\\u%04x", byte)));
    }
  }
  return out + '"';
}

std::string reference_csv(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\b'; };
  const bool quoted = text.empty() || text.starts_with("\xEF\xBB\xBF") || blank(text.front()) || blank(text.back()) ||
                      text.find_first_of(",\"\r\n") != std::string_view::npos;
  if (!quoted) return std::string(text);
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

std::string random_text(std::mt19937& rng) {
  // The pieces split at '|'; the first three are plain, and most picks are
  // those, so that long runs cross the eight-byte steps.
  static const std::vector<std::string> pieces = [] {
    std::istringstream all(
        "a|Z|0| |,|\"|\\|\r|\n|\t|\x01|\x1f|\x7f|\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\xC3|\xE2\x82|\xFF|\x80|"
        "\xEF\xBB\xBF|\xC0\x80|\xED\xA0\x80|\xF4\x90\x80\x80|plain text");
    std::vector<std::string> list;
    for (std::string piece; std::getline(all, piece, '|');) list.push_back(piece);
    return list;
  }();
  std::string text;
  const std::size_t count = rng() % 24;
  for (std::size_t i = 0; i < count; ++i) {
    text += rng() % 3 != 0 ? pieces[rng() % 3] : pieces[rng() % pieces.size()];
  }
  return text;
}

TEST(RecordEscaping, MatchesByteAtATimeReferences) {
  std::mt19937 rng(12);
  for (int round = 0; round < 20000; ++round) {
    const std::string text = random_text(rng);
    ASSERT_EQ(zvtool::json_quote_bytes(text), reference_json(text)) << testing::PrintToString(text);

    std::ostringstream csv_out;
    {
      zvtool::csv_writer csv(csv_out);
      textio::import::output_value value;
      value.kind = textio::import::value_kind::text;
      value.bytes = text;
      csv.record(std::span(&value, 1));
      csv.flush();
    }
    ASSERT_EQ(csv_out.str(), reference_csv(text) + "\r\n") << testing::PrintToString(text);
  }
}

// Numbers: the whole-number shortcut against the general shortest form, near
// the lengths where the exponent form gets shorter and at the edges of 2^53.
TEST(RecordEscaping, NumbersMatchTheShortestRoundTrip) {
  std::mt19937_64 rng(5);
  std::vector<double> values = {-0.0, 0.5, 1e300, 9007199254740991.0, 9007199254740992.0, -9007199254740993.0};
  for (int i = 0; i < 20000; ++i) {
    const double mantissa = static_cast<double>(rng() % 1000);
    const double scale = std::pow(10.0, static_cast<double>(rng() % 17));
    values.push_back((rng() % 2 != 0 ? -1 : 1) * mantissa * scale);
    values.push_back(static_cast<double>(static_cast<std::int64_t>(rng() >> (rng() % 64))));
  }
  for (const double v : values) {
    char digits[64];
    const std::string expected(digits, std::to_chars(digits, digits + sizeof digits, v).ptr);
    ASSERT_EQ(zvtool::number_text(v), expected) << v;
  }
}

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
  out.begin_object();
  out.end_object();
  out.begin_array();
  out.end_array();
  out.end_array();
  out.key("error");
  zvtool::write_message_failure(out, failure);
  out.end_object();
  EXPECT_EQ(out.text(), R"({
  "list": [
    {},
    []
  ],
  "error": {
    "identifier": "A:B:C:Key",
    "key": "Key",
    "arguments": [
      "8-bit\u00ff",
      "16\ud800"
    ],
    "message": "m\n"
  }
})");
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
