// The eleven rule options through the entry point: which texts each one takes
// and where they land, the exact argument of BadTextFlag, the once-only call
// of the host error hook, and that a failure writes nothing.
#include "name_value/setters.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/set_parser_options.hpp"
#include "support/expect_message.hpp"
#include "support/host_controls.hpp"
#include "support/record_fields.hpp"
#include "support/setter_calls.hpp"
#include "zvarray/matrix.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using test_support::apply_option;
using test_support::rule_field;
using test_support::same_record;
using test_support::set_rule_field;
using test_support::text_arg;
using textio::parser::options;

constexpr int bad = -1;  // BadTextFlag expected

// The argument of BadTextFlag per option, byte for byte.
const std::map<std::string, std::string> list_texts = {
    {"ConsecutiveDelimitersRule", "'split', 'join', 'error'\n"},
    {"FileType", "'text', 'delimitedtext', 'fixedwidth'\n"},
    {"LeadingDelimitersRule", "'keep', 'ignore', 'error'\n"},
    {"TrailingDelimitersRule", "'keep', 'ignore', 'error'\n"},
    {"EmptyLineRule", "'skip', 'read', 'error'\n"},
    {"OutputBuilderType", "'table', 'matrix', 'cell'\n"},
    {"ExtraColumnsRule", "'addvars', 'ignore', 'wrap', 'error'\n"},
    {"ImportErrorRule", "'fill', 'omitrow', 'omitvar', 'error'\n"},
    {"MissingRule", "'fill', 'omitrow', 'omitvar', 'error'\n"},
    {"ParserType", "'delimited', 'fixedwidth', 'tabular', 'line'\n"},
    {"PartialFieldRule", "'keep', 'omitrow', 'omitvar', 'fill', 'wrap', 'error'\n"},
};

// A record with every field away from its default, the rule fields on
// positions that no test input gives, so that any write shows.
options prepared_record() {
  options o;
  for (const auto& [key, text] : list_texts) set_rule_field(o, key, 6);
  o.num_variables(5);
  o.num_header_lines(2);
  o.exp_chars(u"e");
  o.field_widths({3, 4});
  o.trim_non_numeric(true);
  return o;
}

struct rule_case {
  const char* key;
  hv::Value value;
  int expected;  // position, or bad
};

hv::Value t(const char16_t* text) { return hv::Value::text(text); }

std::vector<rule_case> text_cases() {
  return {
      {"ConsecutiveDelimitersRule", t(u"split"), 0},
      {"ConsecutiveDelimitersRule", t(u"s"), 0},
      {"ConsecutiveDelimitersRule", t(u"spl"), 0},
      {"ConsecutiveDelimitersRule", t(u"Split"), 0},
      {"ConsecutiveDelimitersRule", t(u"SPLIT"), 0},
      {"ConsecutiveDelimitersRule", t(u"J"), 1},
      {"ConsecutiveDelimitersRule", t(u"join"), 1},
      {"ConsecutiveDelimitersRule", t(u"e"), 2},
      {"ConsecutiveDelimitersRule", t(u"splits"), bad},  // longer than the flag
      {"ConsecutiveDelimitersRule", t(u"join "), bad},   // nothing is trimmed
      {"ConsecutiveDelimitersRule", t(u" join"), bad},
      {"ConsecutiveDelimitersRule", t(u"\u0173plit"), bad},  // low byte is "s"
      {"FileType", t(u"t"), 0},
      {"FileType", t(u"TEXT"), 0},
      {"FileType", t(u"d"), 1},
      {"FileType", t(u"delimited"), 1},  // abbreviates delimitedtext
      {"FileType", t(u"delimitedtext"), 1},
      {"FileType", t(u"fixedwidth"), 2},
      {"FileType", t(u"FiX"), 2},
      {"FileType", t(u"delimitedtexts"), bad},
      {"FileType", t(u"csv"), bad},
      {"FileType", t(u"\u0164"), bad},  // low byte is "d"
      {"LeadingDelimitersRule", t(u"KEEP"), 0},
      {"LeadingDelimitersRule", t(u"k"), 0},
      {"LeadingDelimitersRule", t(u"ig"), 1},
      {"LeadingDelimitersRule", t(u"error"), 2},
      {"LeadingDelimitersRule", t(u"\u212Aeep"), bad},  // Kelvin sign
      {"LeadingDelimitersRule", t(u"ignored"), bad},
      {"TrailingDelimitersRule", t(u"Keep"), 0},
      {"TrailingDelimitersRule", t(u"i"), 1},
      {"TrailingDelimitersRule", t(u"e"), 2},
      {"TrailingDelimitersRule", t(u"ERR"), 2},
      {"TrailingDelimitersRule", t(u"x"), bad},
      {"EmptyLineRule", t(u"skip"), 0},
      {"EmptyLineRule", t(u"READ"), 1},
      {"EmptyLineRule", t(u"Error"), 2},
      {"EmptyLineRule", t(u"s"), bad},  // exact list
      {"EmptyLineRule", t(u"rea"), bad},
      {"EmptyLineRule", t(u"re\u0430d"), bad},  // Cyrillic a
      {"EmptyLineRule", t(u"r\u0165ad"), bad},  // low byte is "e"
      {"OutputBuilderType", t(u"table"), 0},
      {"OutputBuilderType", t(u"Matrix"), 1},
      {"OutputBuilderType", t(u"CELL"), 2},
      {"OutputBuilderType", t(u"t"), bad},
      {"OutputBuilderType", t(u"cells"), bad},
      {"ExtraColumnsRule", t(u"addvars"), 0},
      {"ExtraColumnsRule", t(u"IGNORE"), 1},
      {"ExtraColumnsRule", t(u"wrap"), 2},
      {"ExtraColumnsRule", t(u"error"), 3},
      {"ExtraColumnsRule", t(u"add"), bad},
      {"ExtraColumnsRule", t(u"\u0165rror"), bad},
      {"ImportErrorRule", t(u"fill"), 0},
      {"ImportErrorRule", t(u"OMITROW"), 1},
      {"ImportErrorRule", t(u"OmitRow"), 1},
      {"ImportErrorRule", t(u"omitrow"), 1},
      {"ImportErrorRule", t(u"omitvar"), 2},
      {"ImportErrorRule", t(u"error"), 3},
      {"ImportErrorRule", t(u"omit"), bad},
      {"MissingRule", t(u"fill"), 0},
      {"MissingRule", t(u"OmitRow"), 1},
      {"MissingRule", t(u"OMITVAR"), 2},
      {"MissingRule", t(u"error"), 3},
      {"MissingRule", t(u"omit"), bad},
      {"MissingRule", t(u"o"), bad},
      {"MissingRule", t(u"f"), bad},
      {"ParserType", t(u"delimited"), 0},
      {"ParserType", t(u"fixedwidth"), 1},
      {"ParserType", t(u"Tabular"), 2},
      {"ParserType", t(u"LINE"), 3},
      {"ParserType", t(u"delim"), bad},  // exact list
      {"ParserType", t(u"d"), bad},
      {"ParserType", t(u"delimitedtext"), bad},
      {"PartialFieldRule", t(u"KEEP"), 0},
      {"PartialFieldRule", t(u"omitrow"), 1},
      {"PartialFieldRule", t(u"omitvar"), 2},
      {"PartialFieldRule", t(u"fill"), 3},
      {"PartialFieldRule", t(u"wrap"), 4},
      {"PartialFieldRule", t(u"error"), 5},
      {"PartialFieldRule", t(u"k"), bad},
      {"PartialFieldRule", t(u"omit"), bad},
  };
}

// Values of every kind, for every option: the shape of a char array is not
// looked at, and everything that is no text fails as BadTextFlag.
std::vector<rule_case> value_cases() {
  const std::map<std::string, std::pair<std::u16string, int>> a_flag = {
      {"ConsecutiveDelimitersRule", {u"join", 1}},
      {"FileType", {u"fixedwidth", 2}},
      {"LeadingDelimitersRule", {u"ignore", 1}},
      {"TrailingDelimitersRule", {u"error", 2}},
      {"EmptyLineRule", {u"read", 1}},
      {"OutputBuilderType", {u"cell", 2}},
      {"ExtraColumnsRule", {u"wrap", 2}},
      {"ImportErrorRule", {u"omitvar", 2}},
      {"MissingRule", {u"error", 3}},
      {"ParserType", {u"line", 3}},
      {"PartialFieldRule", {u"wrap", 4}},
  };
  std::vector<rule_case> cases;
  for (const auto& [key, text] : list_texts) {
    const auto& [flag, position] = a_flag.at(key);
    const char* k = key.c_str();  // the map's own key lives as long as the map
    std::vector<std::uint16_t> codes(flag.begin(), flag.end());
    cases.push_back({k, hv::Value::chars({flag.size(), 1}, flag), position});  // a column
    cases.push_back({k, hv::Value::text(u""), bad});
    cases.push_back({k, hv::Value::chars({0, 0}, u""), bad});
    cases.push_back({k, hv::Value::none(), bad});
    cases.push_back({k, hv::Value::scalar(static_cast<double>(position)), bad});
    cases.push_back({k, hv::Value::logical(true), bad});
    cases.push_back({k, hv::Value::cell_row({hv::Value::text(flag)}), bad});
    cases.push_back({k, hv::Value::cell_row({}), bad});
    cases.push_back({k, hv::Value::array<std::uint16_t>({1, codes.size()}, codes), bad});
    cases.push_back({k, hv::Value::struct_scalar({{"a", hv::Value::text(flag)}}), bad});
    cases.push_back({k, hv::Value::text(u"\u00E9"), bad});
  }
  return cases;
}

// Each case in each mode of the host's character dispatcher: a match writes
// only its field and calls no host hook; a failure is BadTextFlag with the
// option's list, one host call, and a record exactly as before.
void check_cases(const std::vector<rule_case>& cases) {
  for (const auto mode : test_support::all_char_exception_modes) {
    const test_support::char_exception_mode_guard guard(mode);
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(c.key) + " with " + test_support::describe_text(matrix::get_ustring(c.value.get())) +
                   " in mode " + test_support::mode_name(mode));
      options record = prepared_record();
      options expected = prepared_record();
      const auto host_errors = matrix::detail::legacy_hv_error_count();
      if (c.expected == bad) {
        EXPECT_MESSAGE(apply_option(record, c.key, c.value), msg::BadTextFlag, text_arg(list_texts.at(c.key)));
      } else {
        EXPECT_NO_THROW(apply_option(record, c.key, c.value));
        set_rule_field(expected, c.key, c.expected);
      }
      EXPECT_TRUE(same_record(record, expected));
      EXPECT_EQ(matrix::detail::legacy_hv_error_count() - host_errors, c.expected == bad ? 1u : 0u);
    }
  }
}

TEST(RuleSetters, TextsMatchExactlyOrByAbbreviationAsEachOptionTakesThem) { check_cases(text_cases()); }

TEST(RuleSetters, AnyValueGivesAMatchOrBadTextFlag) { check_cases(value_cases()); }

// The host sees the BadTextFlag, never the failure that the matching caught.
TEST(RuleSetters, HostHookSeesOnlyTheBadTextFlag) {
  std::vector<std::string> seen;
  const test_support::legacy_hv_error_hook_guard hook([&seen](const foundation::core::except::IUserException& e) {
    const auto* id = dynamic_cast<const foundation::core::except::IMsgIDException*>(&e);
    seen.push_back(id != nullptr ? id->GetBaseMsgID().key : "not a message");
  });
  for (const auto mode : test_support::all_char_exception_modes) {
    const test_support::char_exception_mode_guard guard(mode);
    options record;
    EXPECT_MESSAGE(apply_option(record, "EmptyLineRule", t(u"r\u00E9ad")), msg::BadTextFlag,
                   text_arg(list_texts.at("EmptyLineRule")));
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"BadTextFlag", "BadTextFlag", "BadTextFlag"}));
}

// Pairs before the failing one stay written, the failing one writes nothing,
// and later ones are not applied.
TEST(RuleSetters, EarlierPairsOfTheCallStayWritten) {
  const auto num_variables = hv::Value::text(u"NumVariables");
  const auto three = hv::Value::scalar(3);
  const auto parser_type = hv::Value::text(u"ParserType");
  const auto line = hv::Value::text(u"line");
  const auto import_error_rule = hv::Value::text(u"ImportErrorRule");
  const auto omit = hv::Value::text(u"omit");
  const auto missing_rule = hv::Value::text(u"MissingRule");
  const auto error = hv::Value::text(u"error");
  const hvArray_tag* args[] = {num_variables.get(),     three.get(), parser_type.get(),  line.get(),
                               import_error_rule.get(), omit.get(),  missing_rule.get(), error.get()};
  options record;
  options expected;
  expected.num_variables(3);
  expected.detecting_num_variables(false);
  expected.parser_type(textio::enums::ParserType::Line);
  EXPECT_MESSAGE(textio::options::set_parser_options(args, 8, record), msg::BadTextFlag,
                 text_arg(list_texts.at("ImportErrorRule")));
  EXPECT_TRUE(same_record(record, expected));
}

}  // namespace
