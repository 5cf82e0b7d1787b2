// The record's setters and their detection flags, and copies and moves of
// whole records. Its defaults are checked through the tool's options output
// (tool_output_test.cpp).
#include "parser/options.hpp"

#include <gtest/gtest.h>

#include <utility>

#include "support/record_equality.hpp"

namespace {

using test_support::first_difference;
using textio::parser::options;
using text_list = options::text_list;

TEST(OptionsRecord, SettersAndTheirDetectionFlags) {
  options o;
  o.delimiter(text_list{u",", u";"});
  o.unset_delimiter();
  EXPECT_TRUE(o.detecting_delimiter());
  EXPECT_EQ(o.delimiter(), (text_list{u",", u";"}));  // unset keeps the list
  o.delimiter(o.delimiter());                         // from its own getter
  EXPECT_FALSE(o.detecting_delimiter());
  EXPECT_EQ(o.delimiter(), (text_list{u",", u";"}));

  o.num_header_lines(0);
  EXPECT_FALSE(o.detecting_num_header_lines());
  o.unset_num_header_lines();
  EXPECT_TRUE(o.detecting_num_header_lines());
  EXPECT_EQ(o.num_header_lines(), 0u);
  o.num_variables(5);
  EXPECT_TRUE(o.detecting_num_variables());  // the accessor does not clear it

  // The setters that take an rvalue copy it: the caller's object stays whole.
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
  o.parser_type(textio::enums::ParserType::Line);
  o.trim_non_numeric(true);
  return o;
}

// Copies leave their source alone. A move leaves the source with empty lists
// and strings and every scalar and flag kept; the target is what the source
// was; a self-move changes nothing.
TEST(OptionsRecord, CopiesKeepTheSourceAndMovesEmptyItsListsAndStrings) {
  const options source = changed_record();
  options copy(source);
  options assigned;
  assigned = source;
  EXPECT_EQ(first_difference(copy, source), "");
  EXPECT_EQ(first_difference(assigned, source), "");
  EXPECT_EQ(first_difference(source, changed_record()), "");

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
    options moved = changed_record();
    options target;
    if (by_assignment) {
      target = std::move(moved);
    } else {
      options constructed(std::move(moved));
      target = constructed;
    }
    EXPECT_EQ(first_difference(moved, emptied), "");  // NOLINT(bugprone-use-after-move): specified state
    EXPECT_EQ(first_difference(target, changed_record()), "");
    options& alias = target;
    target = std::move(alias);
    EXPECT_EQ(first_difference(target, changed_record()), "");
  }
}

}  // namespace
