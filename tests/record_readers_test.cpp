#include "parser/record_readers.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/delim_call_log.hpp"

namespace {

using textio::parser::DelimitedRecordReader;
using textio::parser::FixedWidthRecordReader;
using textio::parser::LineRecordReader;
using textio::parser::options;
using text_list = std::vector<ustring>;
using width_list = std::vector<std::uint64_t>;
namespace enums = textio::enums;

const text_list default_endings{u"\r\n", u"\n", u"\r"};

// A record as the test case describes it; the readers point into it, so it is
// built in place and never moved.
struct configured_record {
  explicit configured_record(const std::function<void(options&)>& configure) { configure(record); }
  options record;
};

void keep_defaults(options&) {}

// ---- Line reader ----

struct line_case {
  const char* what;
  std::function<void(options&)> configure;
  ustring stop_chars;
  bool reads_empty_lines;
  std::vector<text_list> calls;  // get_or_create_delim, in order
};

const line_case line_cases[] = {
    {"defaults", keep_defaults, u"\n\r", false, {default_endings, {}, default_endings}},
    {"empty lines read",
     [](options& o) { o.empty_line_rule(enums::EmptyLineRule::Read); },
     u"\n\r",
     true,
     {default_endings, {}, default_endings}},
    {"empty lines an error",
     [](options& o) { o.empty_line_rule(enums::EmptyLineRule::Error); },
     u"\n\r",
     false,
     {default_endings, {}, default_endings}},
    {"no line endings", [](options& o) { o.line_ending(text_list{}); }, u"", false, {{}, {}, {}}},
    {"an empty line ending",
     [](options& o) { o.line_ending(text_list{u""}); },
     ustring(1, u'\0'),
     false,
     {{u""}, {}, {u""}}},
    {"custom endings, first units only",
     [](options& o) {
       o.line_ending(text_list{u"<EOR>", u"\n", u"<EOF>"});
     },
     u"\n<",
     false,
     {{u"<EOR>", u"\n", u"<EOF>"}, {}, {u"<EOR>", u"\n", u"<EOF>"}}},
    {"delimiters play no part",
     [](options& o) { o.delimiter(text_list{u","}); },
     u"\n\r",
     false,
     {default_endings, {}, default_endings}},
};

TEST(LineRecordReader, BuiltFromRecords) {
  for (const line_case& c : line_cases) {
    const configured_record rec(c.configure);
    test_support::delim_call_log log;
    const LineRecordReader reader(rec.record);
    EXPECT_EQ(log.calls(), c.calls) << c.what;
    EXPECT_EQ(reader.delimiters.stop_chars, c.stop_chars) << c.what;
    EXPECT_EQ(reader.reads_empty_lines, c.reads_empty_lines) << c.what;
    EXPECT_EQ(reader.whitespace, &rec.record.whitespace()) << c.what;
    EXPECT_EQ(reader.delimiters.primary, textio::get_or_create_delim(rec.record.line_ending())) << c.what;
    EXPECT_EQ(reader.delimiters.secondary, textio::get_or_create_delim({})) << c.what;
    EXPECT_EQ(reader.line_delimiter, textio::get_or_create_delim(rec.record.line_ending())) << c.what;
  }
}

TEST(LineRecordReader, SeesLaterWhitespaceThroughThePointer) {
  options o;
  const LineRecordReader reader(o);
  EXPECT_EQ(*reader.whitespace, u" \b\t");
  o.whitespace(ustring(u"\t"));
  EXPECT_EQ(*reader.whitespace, u"\t");
}

TEST(LineRecordReader, CopySharesAndMoveTakesOnlyTheLineHandle) {
  options o;
  o.empty_line_rule(enums::EmptyLineRule::Read);
  LineRecordReader source(o);
  const long owners = source.line_delimiter.use_count();

  const LineRecordReader copy(source);
  EXPECT_EQ(copy.delimiters.primary, source.delimiters.primary);
  EXPECT_EQ(copy.delimiters.secondary, source.delimiters.secondary);
  EXPECT_EQ(copy.line_delimiter, source.line_delimiter);
  // delimiters.primary and line_delimiter hold the one line-ending object.
  EXPECT_EQ(source.line_delimiter.use_count(), owners + 2);
  EXPECT_EQ(copy.whitespace, source.whitespace);
  EXPECT_TRUE(copy.reads_empty_lines);

  const auto line_object = source.line_delimiter;
  const LineRecordReader moved(std::move(source));
  // NOLINTBEGIN(bugprone-use-after-move): the source's state is the point
  EXPECT_EQ(source.line_delimiter, nullptr);
  EXPECT_EQ(moved.line_delimiter, line_object);
  EXPECT_NE(source.delimiters.primary, nullptr);
  EXPECT_EQ(source.delimiters.primary, moved.delimiters.primary);
  EXPECT_EQ(source.delimiters.stop_chars, u"\n\r");
  EXPECT_EQ(moved.delimiters.stop_chars, u"\n\r");
  EXPECT_EQ(source.whitespace, &o.whitespace());
  EXPECT_EQ(moved.whitespace, &o.whitespace());
  EXPECT_TRUE(source.reads_empty_lines);
  EXPECT_TRUE(moved.reads_empty_lines);
  // NOLINTEND(bugprone-use-after-move)

  static_assert(!std::is_copy_assignable_v<LineRecordReader>);
  static_assert(!std::is_move_assignable_v<LineRecordReader>);
}

TEST(LineRecordReader, AFailedDelimiterCallPassesThrough) {
  const options o;
  for (std::size_t failing_call = 1; failing_call <= 3; ++failing_call) {
    const auto held = textio::get_or_create_delim(o.line_ending());
    test_support::delim_call_log log(failing_call);
    EXPECT_THROW(LineRecordReader{o}, std::runtime_error) << "call " << failing_call;
    EXPECT_EQ(log.calls().size(), failing_call);
    EXPECT_EQ(held.use_count(), 1) << "call " << failing_call << ": a handle was kept";
  }
}

// ---- Delimited reader ----

struct delimited_case {
  const char* what;
  std::function<void(options&)> configure;
  ustring stop_chars;
  std::vector<text_list> calls;
};

const delimited_case delimited_cases[] = {
    {"defaults: the empty delimiter list", keep_defaults, u"\n\r", {{}, default_endings, default_endings, {}}},
    {"comma and tab",
     [](options& o) {
       o.delimiter(text_list{u",", u"\t"});
     },
     u"\t\n\r,",
     {{u",", u"\t"}, default_endings, default_endings, {u",", u"\t"}}},
    {"a delimiter of several units",
     [](options& o) {
       o.delimiter(text_list{u"::", u";"});
     },
     u"\n\r:;",
     {{u"::", u";"}, default_endings, default_endings, {u"::", u";"}}},
    {"an empty delimiter",
     [](options& o) { o.delimiter(text_list{u""}); },
     ustring(u"\0\n\r", 3),
     {{u""}, default_endings, default_endings, {u""}}},
    {"a delimiter to be detected is still used",
     [](options& o) {
       o.delimiter(text_list{u"|"});
       o.unset_delimiter();
     },
     u"\n\r|",
     {{u"|"}, default_endings, default_endings, {u"|"}}},
    {"no line endings",
     [](options& o) {
       o.delimiter(text_list{u","});
       o.line_ending(text_list{});
     },
     u",",
     {{u","}, {}, {}, {u","}}},
};

TEST(DelimitedRecordReader, BuiltFromRecords) {
  for (const delimited_case& c : delimited_cases) {
    const configured_record rec(c.configure);
    test_support::delim_call_log log;
    const DelimitedRecordReader reader(rec.record);
    EXPECT_EQ(log.calls(), c.calls) << c.what;
    EXPECT_EQ(reader.opts, &rec.record) << c.what;
    EXPECT_EQ(reader.quoted_delimiters.quote, u'"') << c.what;
    EXPECT_EQ(reader.quoted_delimiters.delimiters.stop_chars, c.stop_chars) << c.what;
    const auto fields = textio::get_or_create_delim(rec.record.delimiter());
    const auto lines = textio::get_or_create_delim(rec.record.line_ending());
    EXPECT_EQ(reader.quoted_delimiters.delimiters.primary, fields) << c.what;
    EXPECT_EQ(reader.quoted_delimiters.delimiters.secondary, lines) << c.what;
    EXPECT_EQ(reader.line_delimiter, lines) << c.what;
    EXPECT_EQ(reader.field_delimiter, fields) << c.what;
  }
}

TEST(DelimitedRecordReader, CopySharesAndMoveTakesTheTwoFurtherHandles) {
  options o;
  o.delimiter(text_list{u","});
  DelimitedRecordReader source(o);
  const long field_owners = source.field_delimiter.use_count();

  const DelimitedRecordReader copy(source);
  EXPECT_EQ(copy.opts, &o);
  EXPECT_EQ(copy.quoted_delimiters.quote, u'"');
  EXPECT_EQ(copy.quoted_delimiters.delimiters.primary, source.quoted_delimiters.delimiters.primary);
  EXPECT_EQ(copy.line_delimiter, source.line_delimiter);
  EXPECT_EQ(copy.field_delimiter, source.field_delimiter);
  // primary and field_delimiter hold the one delimiter object.
  EXPECT_EQ(source.field_delimiter.use_count(), field_owners + 2);

  const auto field_object = source.field_delimiter;
  const auto line_object = source.line_delimiter;
  const DelimitedRecordReader moved(std::move(source));
  // NOLINTBEGIN(bugprone-use-after-move): the source's state is the point
  EXPECT_EQ(source.line_delimiter, nullptr);
  EXPECT_EQ(source.field_delimiter, nullptr);
  EXPECT_EQ(moved.line_delimiter, line_object);
  EXPECT_EQ(moved.field_delimiter, field_object);
  EXPECT_EQ(source.opts, &o);
  EXPECT_EQ(moved.opts, &o);
  EXPECT_EQ(source.quoted_delimiters.quote, u'"');
  EXPECT_EQ(source.quoted_delimiters.delimiters.stop_chars, u"\n\r,");
  EXPECT_EQ(moved.quoted_delimiters.delimiters.stop_chars, u"\n\r,");
  EXPECT_EQ(source.quoted_delimiters.delimiters.primary, field_object);
  EXPECT_EQ(source.quoted_delimiters.delimiters.secondary, line_object);
  // NOLINTEND(bugprone-use-after-move)

  static_assert(!std::is_copy_assignable_v<DelimitedRecordReader>);
  static_assert(!std::is_move_assignable_v<DelimitedRecordReader>);
}

TEST(DelimitedRecordReader, SeesTheRecordButKeepsItsHandles) {
  options o;
  o.delimiter(text_list{u","});
  const DelimitedRecordReader reader(o);
  o.delimiter(text_list{u";"});
  EXPECT_EQ(reader.opts->delimiter(), text_list{u";"});
  EXPECT_EQ(reader.quoted_delimiters.delimiters.stop_chars, u"\n\r,");
  EXPECT_EQ(reader.field_delimiter, textio::get_or_create_delim({u","}));
}

// ---- Fixed-width reader ----

struct fixed_width_case {
  const char* what;
  std::function<void(options&)> configure;
  ustring stop_chars;
  std::uint64_t record_width;
};

const fixed_width_case fixed_width_cases[] = {
    {"defaults: one unit per ending, duplicates kept", keep_defaults, u"\r\n\r", 0},
    {"widths 3, 5, 2",
     [](options& o) {
       o.field_widths(width_list{3, 5, 2});
     },
     u"\r\n\r", 10},
    {"a sum past 2^64 wraps",
     [](options& o) {
       o.field_widths(width_list{UINT64_MAX, 2});
     },
     u"\r\n\r", 1},
    {"a sum of exactly 2^64 wraps to 0",
     [](options& o) {
       o.field_widths(width_list{UINT64_MAX, 1});
     },
     u"\r\n\r", 0},
    {"zero widths",
     [](options& o) {
       o.field_widths(width_list{0, 0, 7});
     },
     u"\r\n\r", 7},
    {"no line endings", [](options& o) { o.line_ending(text_list{}); }, u"", 0},
    {"one empty line ending", [](options& o) { o.line_ending(text_list{u""}); }, ustring(1, u'\0'), 0},
    {"list order, not sorted",
     [](options& o) {
       o.line_ending(text_list{u"z", u"\n", u"ab", u"\n", u""});
     },
     ustring(u"z\na\n\0", 5), 0},
};

TEST(FixedWidthRecordReader, BuiltFromRecords) {
  for (const fixed_width_case& c : fixed_width_cases) {
    const configured_record rec([&](options& o) {
      o.delimiter(text_list{u"never-asked-for"});
      c.configure(o);
    });
    test_support::delim_call_log log;
    const FixedWidthRecordReader reader(rec.record);
    EXPECT_EQ(log.calls(), std::vector<text_list>{rec.record.line_ending()}) << c.what;
    EXPECT_EQ(reader.opts, &rec.record) << c.what;
    EXPECT_EQ(reader.field_widths, rec.record.field_widths()) << c.what;
    EXPECT_EQ(reader.stop_chars, c.stop_chars) << c.what;
    EXPECT_EQ(reader.record_width, c.record_width) << c.what;
    EXPECT_EQ(reader.line_delimiter, textio::get_or_create_delim(rec.record.line_ending())) << c.what;
  }
}

TEST(FixedWidthRecordReader, KeepsItsOwnWidths) {
  options o;
  o.field_widths(width_list{4, 4});
  const FixedWidthRecordReader reader(o);
  o.field_widths(width_list{1});
  o.line_ending(text_list{u";"});
  EXPECT_EQ(reader.field_widths, (width_list{4, 4}));
  EXPECT_EQ(reader.record_width, 8u);
  EXPECT_EQ(reader.stop_chars, u"\r\n\r");
}

TEST(FixedWidthRecordReader, CopyIsDeepAndMoveEmptiesTheSource) {
  options o;
  o.field_widths(width_list{3, 5, 2});
  // A single short ending: a moved string of this size fits the small buffer,
  // so emptiness of the source is not a side effect of stealing the heap.
  o.line_ending(text_list{u"\n"});
  FixedWidthRecordReader source(o);
  const long owners = source.line_delimiter.use_count();

  const FixedWidthRecordReader copy(source);
  EXPECT_EQ(copy.opts, &o);
  EXPECT_EQ(copy.field_widths, source.field_widths);
  EXPECT_NE(copy.field_widths.data(), source.field_widths.data());
  EXPECT_EQ(copy.stop_chars, u"\n");
  EXPECT_EQ(copy.line_delimiter, source.line_delimiter);
  EXPECT_EQ(source.line_delimiter.use_count(), owners + 1);
  EXPECT_EQ(copy.record_width, 10u);

  const auto line_object = source.line_delimiter;
  const FixedWidthRecordReader moved(std::move(source));
  // NOLINTBEGIN(bugprone-use-after-move): the source's state is the point
  EXPECT_TRUE(source.field_widths.empty());
  EXPECT_TRUE(source.stop_chars.empty());
  EXPECT_EQ(source.line_delimiter, nullptr);
  EXPECT_EQ(source.record_width, 10u);
  EXPECT_EQ(source.opts, &o);
  EXPECT_EQ(moved.field_widths, (width_list{3, 5, 2}));
  EXPECT_EQ(moved.stop_chars, u"\n");
  EXPECT_EQ(moved.line_delimiter, line_object);
  EXPECT_EQ(moved.record_width, 10u);
  EXPECT_EQ(moved.opts, &o);
  // NOLINTEND(bugprone-use-after-move)

  static_assert(std::is_nothrow_move_constructible_v<FixedWidthRecordReader>);
  static_assert(!std::is_copy_assignable_v<FixedWidthRecordReader>);
  static_assert(!std::is_move_assignable_v<FixedWidthRecordReader>);
}

}  // namespace
