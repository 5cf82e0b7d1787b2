// The options record (its defaults are checked through the tool's options
// output) and the readers built from records.
#include "parser/record_readers.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "parser/stop_characters.hpp"
#include "support/delim_call_log.hpp"
#include "support/record_equality.hpp"

namespace {

using textio::get_or_create_delim;
using textio::parser::DelimitedRecordReader;
using textio::parser::FixedWidthRecordReader;
using textio::parser::LineRecordReader;
using textio::parser::options;
using text_list = std::vector<ustring>;
using width_list = std::vector<std::uint64_t>;
namespace enums = textio::enums;

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
  EXPECT_EQ(test_support::first_difference(copy, source), "");
  EXPECT_EQ(test_support::first_difference(assigned, source), "");
  EXPECT_EQ(test_support::first_difference(source, changed_record()), "");

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
    EXPECT_EQ(test_support::first_difference(moved, emptied), "");  // NOLINT(bugprone-use-after-move): specified state
    EXPECT_EQ(test_support::first_difference(target, changed_record()), "");
    options& alias = target;
    target = std::move(alias);
    EXPECT_EQ(test_support::first_difference(target, changed_record()), "");
  }
}

TEST(StopCharacters, SortedUnionOfFirstUnits) {
  const struct {
    const char* what;
    text_list first, second;
    ustring expected;
  } cases[] = {
      {"comma and tab with the default line endings", {u",", u"\t"}, options{}.line_ending(), u"\t\n\r,"},
      {"only first units count, once each", {u"abc", u"ab", u"x"}, {}, u"ax"},
      {"an empty string gives U+0000 at the front", {u",", u""}, {u"\n"}, ustring(u"\0\n,", 3)},
      {"a unit in both lists stands once", {u";"}, {u";;", u"\n"}, u"\n;"},
      {"unsigned order: 0x8000 and 0xFFFF after 0x7FFF", {u"\uFFFF", u"\u8000x"}, {u"\u7FFF"}, u"\u7FFF\u8000\uFFFF"},
      {"a surrogate sorts between 0xD7FF and 0xE000", {u"\uE000", u"\xDC00\xD800"}, {u"\uD7FF"}, u"\uD7FF\xDC00\uE000"},
      {"empty strings in both lists", {u""}, {u"", u"z"}, ustring(u"\0z", 2)},
  };
  for (const auto& c : cases) {
    // Neither the order of the lists nor the order within them matters.
    const text_list reversed(c.first.rbegin(), c.first.rend());
    EXPECT_EQ(textio::parser::stop_characters(c.first, c.second), c.expected) << c.what;
    EXPECT_EQ(textio::parser::stop_characters(c.second, c.first), c.expected) << c.what << " (lists swapped)";
    EXPECT_EQ(textio::parser::stop_characters(reversed, c.second), c.expected) << c.what << " (first list reversed)";
  }
}

// Each reader asks for its lists in a fixed order (seen through the call log)
// and shares the cache's objects. The line reader's stop characters come from
// the line endings alone, the delimited reader's from both lists, and the
// fixed-width reader's are the first unit of each ending, in list order.
TEST(RecordReaders, BuiltFromRecords) {
  const struct {
    const char* what;
    std::optional<text_list> delimiter, line_ending;
    width_list widths;
    enums::EmptyLineRule empty_lines;
    ustring line_stops, delimited_stops, fixed_stops;
    bool reads_empty_lines = false;
    std::uint64_t record_width = 0;
    bool detect_delimiter = false;  // a delimiter to be detected is still used
  } cases[] = {
      {"defaults", {}, {}, {}, enums::EmptyLineRule::Skip, u"\n\r", u"\n\r", u"\r\n\r"},
      {"empty lines read", {}, {}, {}, enums::EmptyLineRule::Read, u"\n\r", u"\n\r", u"\r\n\r", true},
      {"empty lines an error", {}, {}, {}, enums::EmptyLineRule::Error, u"\n\r", u"\n\r", u"\r\n\r"},
      {"comma and tab, widths with zeros",
       text_list{u",", u"\t"},
       {},
       {3, 0, 5, 2},
       enums::EmptyLineRule::Skip,
       u"\n\r",
       u"\t\n\r,",
       u"\r\n\r",
       false,
       10},
      {"a sum of widths past 2^64 wraps",
       {},
       {},
       {UINT64_MAX, 2},
       enums::EmptyLineRule::Skip,
       u"\n\r",
       u"\n\r",
       u"\r\n\r",
       false,
       1},
      {"an empty line ending",
       {},
       text_list{u""},
       {},
       enums::EmptyLineRule::Skip,
       ustring(1, u'\0'),
       ustring(1, u'\0'),
       ustring(1, u'\0')},
      {"custom endings",
       text_list{u"::", u";"},
       text_list{u"<EOR>", u"\n", u"<EOF>", u"\n"},
       {},
       enums::EmptyLineRule::Skip,
       u"\n<",
       u"\n:;<",
       u"<\n<\n"},
      {"no line endings", text_list{u"|"}, text_list{}, {}, enums::EmptyLineRule::Skip, u"", u"|", u"", false, 0, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    options record;
    if (c.delimiter) record.delimiter(*c.delimiter);
    if (c.detect_delimiter) record.unset_delimiter();
    if (c.line_ending) record.line_ending(*c.line_ending);
    record.field_widths(c.widths);
    record.empty_line_rule(c.empty_lines);
    const text_list& fields = record.delimiter();
    const text_list& lines = record.line_ending();

    test_support::delim_call_log line_log;
    const LineRecordReader line(record);
    EXPECT_EQ(line_log.calls(), (std::vector<text_list>{lines, {}, lines}));
    EXPECT_EQ(line.delimiters.stop_chars, c.line_stops);
    EXPECT_EQ(line.reads_empty_lines, c.reads_empty_lines);
    EXPECT_EQ(line.whitespace, &record.whitespace());
    EXPECT_EQ(line.delimiters.primary, get_or_create_delim(lines));
    EXPECT_EQ(line.line_delimiter, get_or_create_delim(lines));

    test_support::delim_call_log delimited_log;
    const DelimitedRecordReader delimited(record);
    EXPECT_EQ(delimited_log.calls(), (std::vector<text_list>{fields, lines, lines, fields}));
    EXPECT_EQ(delimited.opts, &record);
    EXPECT_EQ(delimited.quoted_delimiters.quote, u'"');
    EXPECT_EQ(delimited.quoted_delimiters.delimiters.stop_chars, c.delimited_stops);
    EXPECT_EQ(delimited.quoted_delimiters.delimiters.primary, get_or_create_delim(fields));
    EXPECT_EQ(delimited.quoted_delimiters.delimiters.secondary, get_or_create_delim(lines));
    EXPECT_EQ(delimited.line_delimiter, get_or_create_delim(lines));
    EXPECT_EQ(delimited.field_delimiter, get_or_create_delim(fields));

    test_support::delim_call_log fixed_log;
    const FixedWidthRecordReader fixed(record);
    EXPECT_EQ(fixed_log.calls(), std::vector<text_list>{lines});
    EXPECT_EQ(fixed.opts, &record);
    EXPECT_EQ(fixed.field_widths, record.field_widths());
    EXPECT_EQ(fixed.stop_chars, c.fixed_stops);
    EXPECT_EQ(fixed.record_width, c.record_width);
    EXPECT_EQ(fixed.line_delimiter, get_or_create_delim(lines));
  }
}

TEST(LineRecordReader, AFailedDelimiterCallPassesThroughAndKeepsNoHandle) {
  const options o;
  for (std::size_t failing_call = 1; failing_call <= 3; ++failing_call) {
    const auto held = get_or_create_delim(o.line_ending());
    test_support::delim_call_log log(failing_call);
    EXPECT_THROW(LineRecordReader{o}, std::runtime_error) << "call " << failing_call;
    EXPECT_EQ(log.calls().size(), failing_call);
    EXPECT_EQ(held.use_count(), 1) << "call " << failing_call;
  }
}

// The move constructors take only the handles of their own (and, in the
// fixed-width reader, the widths and stop characters) and copy the rest; the
// source keeps what was copied.
// NOLINTBEGIN(bugprone-use-after-move): the source's state is the point
TEST(RecordReaders, MoveTakesOnlyTheReadersOwnParts) {
  options o;
  o.delimiter(text_list{u","});
  o.empty_line_rule(enums::EmptyLineRule::Read);
  o.field_widths(width_list{3, 5, 2});
  // A single short ending: a moved string of this size fits the small buffer,
  // so emptiness of the source is not a side effect of stealing the heap.
  o.line_ending(text_list{u"\n"});
  const auto line_object = get_or_create_delim(o.line_ending());
  const auto field_object = get_or_create_delim(o.delimiter());

  LineRecordReader line(o);
  const LineRecordReader moved_line(std::move(line));
  EXPECT_EQ(line.line_delimiter, nullptr);
  EXPECT_EQ(moved_line.line_delimiter, line_object);
  EXPECT_EQ(line.delimiters.primary, line_object);
  EXPECT_TRUE(line.reads_empty_lines && moved_line.reads_empty_lines);

  DelimitedRecordReader delimited(o);
  const DelimitedRecordReader moved_delimited(std::move(delimited));
  EXPECT_EQ(delimited.line_delimiter, nullptr);
  EXPECT_EQ(delimited.field_delimiter, nullptr);
  EXPECT_EQ(moved_delimited.line_delimiter, line_object);
  EXPECT_EQ(moved_delimited.field_delimiter, field_object);
  EXPECT_EQ(delimited.quoted_delimiters.delimiters.stop_chars, u"\n,");
  EXPECT_EQ(moved_delimited.quoted_delimiters.delimiters.stop_chars, u"\n,");
  EXPECT_EQ(delimited.quoted_delimiters.delimiters.secondary, line_object);

  FixedWidthRecordReader fixed(o);
  const FixedWidthRecordReader moved_fixed(std::move(fixed));
  EXPECT_TRUE(fixed.field_widths.empty() && fixed.stop_chars.empty());
  EXPECT_EQ(fixed.line_delimiter, nullptr);
  EXPECT_EQ(fixed.record_width, 10u);
  EXPECT_EQ(moved_fixed.field_widths, (width_list{3, 5, 2}));
  EXPECT_EQ(moved_fixed.stop_chars, u"\n");
  EXPECT_EQ(moved_fixed.line_delimiter, line_object);
  EXPECT_EQ(moved_fixed.record_width, 10u);
  static_assert(std::is_nothrow_move_constructible_v<FixedWidthRecordReader>);
}
// NOLINTEND(bugprone-use-after-move)

}  // namespace
