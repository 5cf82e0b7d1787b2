#include "parser/options.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "support/record_equality.hpp"
#include "support/record_fields.hpp"

namespace {

using textio::parser::options;
using text_list = options::text_list;
namespace enums = textio::enums;

TEST(OptionsRecord, DefaultsMatchTheDocumentedTable) {
  const options o;
  EXPECT_TRUE(o.delimiter().empty());
  EXPECT_EQ(o.line_ending(), (text_list{u"\r\n", u"\n", u"\r"}));
  EXPECT_TRUE(o.missing_placeholders().empty());
  EXPECT_TRUE(o.comment_style().empty());
  EXPECT_EQ(o.whitespace(), u" \b\t");
  EXPECT_TRUE(o.thousands_separator().empty());
  EXPECT_TRUE(o.date_locale().empty());
  EXPECT_EQ(o.exp_chars(), u"eEdD");
  EXPECT_TRUE(o.field_widths().empty());
  EXPECT_EQ(o.num_header_lines(), UINT64_MAX);
  EXPECT_EQ(o.num_variables(), 0u);
  EXPECT_EQ(o.variable_names_line(), 0u);
  EXPECT_EQ(o.variable_units_line(), 0u);
  EXPECT_EQ(o.variable_descriptions_line(), 0u);
  EXPECT_EQ(o.decimal_separator(), u'.');
  // Every rule starts at the first flag of its list.
  for (const char* rule : {"ConsecutiveDelimitersRule", "FileType", "LeadingDelimitersRule", "TrailingDelimitersRule",
                           "EmptyLineRule", "OutputBuilderType", "ExtraColumnsRule", "ImportErrorRule", "MissingRule",
                           "ParserType", "PartialFieldRule"}) {
    EXPECT_EQ(test_support::rule_field(o, rule), 0) << rule;
  }
  EXPECT_TRUE(o.detecting_delimiter());
  EXPECT_TRUE(o.detecting_num_header_lines());
  EXPECT_TRUE(o.detecting_num_variables());
  EXPECT_FALSE(o.trim_non_numeric());
}

TEST(OptionsRecord, DelimiterSettersClearDetectionAndUnsetKeepsTheList) {
  options o;
  o.delimiter(text_list{u",", u";"});
  o.unset_delimiter();
  EXPECT_TRUE(o.detecting_delimiter());
  EXPECT_EQ(o.delimiter(), (text_list{u",", u";"}));

  o.delimiter(o.delimiter());  // from its own getter
  EXPECT_FALSE(o.detecting_delimiter());
  EXPECT_EQ(o.delimiter(), (text_list{u",", u";"}));
}

TEST(OptionsRecord, CountSettersAndTheirFlags) {
  options o;
  o.num_header_lines(0);
  EXPECT_FALSE(o.detecting_num_header_lines());
  o.unset_num_header_lines();
  EXPECT_TRUE(o.detecting_num_header_lines());
  EXPECT_EQ(o.num_header_lines(), 0u);
  o.num_variables(5);
  EXPECT_TRUE(o.detecting_num_variables());  // the accessor does not clear it
}

// The setters that take an rvalue copy it: the caller's object stays whole.
TEST(OptionsRecord, RvalueSettersCopyTheirArgument) {
  options o;
  text_list styles{u"%", u"#"};
  o.comment_style(std::move(styles));
  EXPECT_EQ(styles, (text_list{u"%", u"#"}));  // NOLINT(bugprone-use-after-move): the setter copies
  ustring ws = u"\t";
  o.whitespace(std::move(ws));
  EXPECT_EQ(ws, u"\t");  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(o.whitespace(), u"\t");
}

options changed_record() {
  options o;
  o.delimiter(text_list{u","});
  o.missing_placeholders(text_list{u"NA"});
  o.comment_style(text_list{u"#"});
  o.thousands_separator(u",");
  o.date_locale(u"en_US");
  o.field_widths({3, 5});
  o.num_variables(7);
  o.decimal_separator(u',');
  o.parser_type(enums::ParserType::Line);
  o.trim_non_numeric(true);
  return o;
}

TEST(OptionsRecord, CopiesAreDeepAndIndependent) {
  options source = changed_record();
  options copy(source);
  copy.delimiter(text_list{u";"});
  copy.field_widths({1});
  EXPECT_EQ(test_support::first_difference(source, changed_record()), "");

  options assigned;
  assigned = source;
  source.date_locale(u"de_DE");
  EXPECT_EQ(test_support::first_difference(assigned, changed_record()), "");
  options& alias = assigned;
  assigned = alias;
  assigned = std::move(alias);  // a self-move changes nothing
  EXPECT_EQ(test_support::first_difference(assigned, changed_record()), "");
}

// The moved-from record has empty lists and strings and keeps every scalar
// and flag; the target is what the source was.
TEST(OptionsRecord, MoveEmptiesListsAndStringsAndKeepsScalars) {
  options emptied = changed_record();
  emptied.line_ending(text_list{});
  emptied.missing_placeholders(text_list{});
  emptied.comment_style(text_list{});
  emptied.whitespace(ustring{});
  emptied.thousands_separator(ustring{});
  emptied.date_locale(ustring{});
  emptied.exp_chars(ustring{});
  emptied.delimiter(text_list{});
  emptied.field_widths({});
  for (const bool by_assignment : {false, true}) {
    SCOPED_TRACE(by_assignment ? "move assignment" : "move construction");
    options source = changed_record();
    options target;
    if (by_assignment) {
      target = std::move(source);
    } else {
      options constructed(std::move(source));
      target = constructed;
    }
    EXPECT_EQ(test_support::first_difference(source, emptied), "");  // NOLINT(bugprone-use-after-move): specified state
    EXPECT_EQ(test_support::first_difference(target, changed_record()), "");
  }
}


}  // namespace
