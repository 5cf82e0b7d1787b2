// The eleven rule options through the entry point: the order of each flag
// list, exact or abbreviated matching, the exact argument of BadTextFlag, the
// once-only call of the host error hook, and that a failure writes nothing.
// Which texts match which flag is checked against a reference matcher in
// flag_matching_test.cpp; this file holds the expectations that the reference
// takes from the library's own tables.
#include "name_value/setters.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "support/expect_message.hpp"
#include "support/record_fields.hpp"
#include "support/setter_calls.hpp"
#include "zvarray/matrix.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using test_support::apply_option;
using test_support::set_rule_field;
using test_support::text_arg;
using textio::parser::options;

constexpr int bad = -1;  // BadTextFlag expected

// The argument of BadTextFlag per option, byte for byte; the flags in it, in
// this order, are the positions the option stores.
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

const std::set<std::string> abbreviating = {"ConsecutiveDelimitersRule", "FileType", "LeadingDelimitersRule",
                                            "TrailingDelimitersRule"};

std::vector<std::u16string> flags_of(const std::string& list_text) {
  std::vector<std::u16string> flags;
  for (std::size_t open = list_text.find('\''); open != std::string::npos;) {
    const std::size_t close = list_text.find('\'', open + 1);
    flags.emplace_back(list_text.begin() + static_cast<std::ptrdiff_t>(open) + 1,
                       list_text.begin() + static_cast<std::ptrdiff_t>(close));
    open = list_text.find('\'', close + 1);
  }
  return flags;
}

// A record with every field away from its default, the rule fields on a
// position that no list gives, so that any write shows.
options prepared_record() {
  options o;
  for (const auto& [key, text] : list_texts) set_rule_field(o, key, 6);
  o.num_variables(5);
  o.exp_chars(u"e");
  o.trim_non_numeric(true);
  return o;
}

struct rule_case {
  std::string key;
  hv::Value value;
  int expected;  // position, or bad
};

// Per option and flag: the flag in upper case, its first
// letter (taken only where the option abbreviates) and the flag with one
// letter more. Then values of every other kind, and a non-ASCII text.
std::vector<rule_case> rule_cases() {
  std::vector<rule_case> cases;
  for (const auto& [key, text] : list_texts) {
    const auto flags = flags_of(text);
    for (int position = 0; position < static_cast<int>(flags.size()); ++position) {
      const std::u16string& flag = flags[static_cast<std::size_t>(position)];
      std::u16string upper = flag;
      for (auto& c : upper) c = static_cast<char16_t>(c - 32);
      cases.push_back({key, hv::Value::text(upper), position});
      cases.push_back({key, hv::Value::text(flag.substr(0, 1)), abbreviating.contains(key) ? position : bad});
      cases.push_back({key, hv::Value::text(flag + u"s"), bad});
    }
    cases.push_back({key, hv::Value::text(u""), bad});
    cases.push_back({key, hv::Value::none(), bad});
    cases.push_back({key, hv::Value::logical(true), bad});
    cases.push_back({key, hv::Value::cell_row({hv::Value::text(flags[0])}), bad});
    cases.push_back({key, hv::Value::text(u"\u00E9"), bad});
  }
  return cases;
}

// A match writes only its field and calls no host hook; a failure is
// BadTextFlag with the option's list, one host call, and a record exactly as
// before. (The dispatcher's other modes are covered by the reference check.)
TEST(RuleSetters, FlagsInListOrderAndEveryOtherValueRefused) {
  for (const auto& c : rule_cases()) {
    SCOPED_TRACE(c.key + " with " + test_support::describe_text(matrix::get_ustring(c.value.get())));
    options record = prepared_record();
    options expected = prepared_record();
    const auto host_errors = matrix::detail::legacy_hv_error_count();
    if (c.expected == bad) {
      EXPECT_MESSAGE(apply_option(record, c.key, c.value), msg::BadTextFlag, text_arg(list_texts.at(c.key)));
    } else {
      EXPECT_NO_THROW(apply_option(record, c.key, c.value));
      set_rule_field(expected, c.key, c.expected);
    }
    EXPECT_TRUE(test_support::same_record(record, expected));
    EXPECT_EQ(matrix::detail::legacy_hv_error_count() - host_errors, c.expected == bad ? 1u : 0u);
  }
}

}  // namespace
