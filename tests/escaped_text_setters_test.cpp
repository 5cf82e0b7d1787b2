// Whitespace and the list options Delimiter, LineEnding, TreatAsMissing and
// CommentStyle through the entry point: decoded, tested in a temporary, and
// written only when every test passed.
#include "name_value/set_parser_options.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "support/expect_message.hpp"
#include "support/setter_calls.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using hv::Value;
using textio::parser::options;
using text_list = options::text_list;
using test_support::apply_option;
using test_support::Args;
using test_support::same_record;
using test_support::text_arg;

Value texts(const std::vector<std::u16string>& units) {
  std::vector<Value> elements;
  for (const auto& u : units) elements.push_back(Value::text(u));
  return Value::cell_row(std::move(elements));
}

// A record with every decoded field away from its default, and delimiter
// detection still on.
options prepared_record() {
  options o;
  o.whitespace(u"\v");
  o.line_ending(text_list{u"\n"});
  o.missing_placeholders(text_list{u"NA", u"-"});
  o.comment_style(text_list{u"%"});
  o.thousands_separator(u",");
  return o;
}

options with_delimiter(options o) {
  o.delimiter(text_list{u";"});
  return o;
}

TEST(WhitespaceOption, StoresTheDecodedText) {
  struct {
    Value value;
    ustring stored;
  } const cases[] = {
      {Value::text(u"ab c"), u"ab c"},     {Value::text(u""), u""},
      {Value::chars({0, 0}, u""), u""},    {Value::text(u" \\b\\t"), u" \b\t"},
      {Value::text(u"  \t\t"), u"  \t\t"},                                   // neither sorted nor merged
      {Value::text(u"ab\\"), u"ab\\"},     {Value::text(u"\\\\n"), u"\\n"},  // decoded once only
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.stored));
    options o = prepared_record();
    apply_option(o, "Whitespace", c.value);
    options expected = prepared_record();
    expected.whitespace(c.stored);
    EXPECT_TRUE(same_record(o, expected));
  }
}

TEST(WhitespaceOption, FailuresWriteNothing) {
  using thrower = ::testing::AssertionResult (*)(const std::function<void()>&, const Args&);
  const thrower bad_type = &test_support::throws_message<msg::InvalidStringProperty>;
  const thrower bad_escape = &test_support::throws_message<msg::InvalidEscapeSequence>;
  struct {
    const char* what;
    Value value;
    thrower expect;
  } const cases[] = {
      {"unknown sequence", Value::text(u"\\f"), bad_escape},
      {"known ahead of unknown", Value::text(u" \\t\\v"), bad_escape},
      {"cell of one text", texts({u" "}), bad_type},
      {"empty cell", Value::cell({0, 0}, {}), bad_type},
      {"number", Value::scalar(32), bad_type},
      {"null", Value::none(), bad_type},
      {"char 2x1", Value::chars({2, 1}, u" \t"), bad_type},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    options o = prepared_record();
    EXPECT_TRUE(c.expect([&] { apply_option(o, "Whitespace", c.value); }, text_arg("Whitespace")));
    EXPECT_TRUE(same_record(o, prepared_record()));
  }
}

// What tells the four list options apart, as a test sees it.
struct list_key {
  const char* key;
  ::testing::AssertionResult (*type_failure)(const std::function<void()>&, const Args&);
  Args type_args;
  void (*store)(options&, const text_list&);
};

const std::vector<list_key>& list_keys() {
  static const std::vector<list_key> keys = {
      {"Delimiter",
       &test_support::throws_message<msg::DelimiterType>,
       {},
       [](options& o, const text_list& l) { o.delimiter(l); }},
      {"LineEnding", &test_support::throws_message<msg::InvalidStringOrCellStringProperty>, text_arg("LineEnding"),
       [](options& o, const text_list& l) { o.line_ending(l); }},
      {"TreatAsMissing", &test_support::throws_message<msg::InvalidStringOrCellStringProperty>,
       text_arg("TreatAsMissing"), [](options& o, const text_list& l) { o.missing_placeholders(l); }},
      {"CommentStyle", &test_support::throws_message<msg::InvalidStringOrCellStringProperty>, text_arg("CommentStyle"),
       [](options& o, const text_list& l) { o.comment_style(l); }},
  };
  return keys;
}

// Values of at most two entries, so that every list option takes them.
TEST(ListOptions, StoreEveryEntryDecodedAndReplaceTheField) {
  struct {
    const char* what;
    Value value;
    text_list stored;
  } const cases[] = {
      {"one text", Value::text(u"\\t"), {u"\t"}},
      {"CR LF", Value::text(u"\\r\\n"), {u"\r\n"}},
      {"empty cell 0x0", Value::cell({0, 0}, {}), {}},
      {"empty cell 1x0", Value::cell({1, 0}, {}), {}},
      {"empty cell 0x3", Value::cell({0, 3}, {}), {}},
      {"two texts", texts({u",", u"\\t"}), {u",", u"\t"}},
      {"column of two", Value::cell({2, 1}, {Value::text(u"a"), Value::text(u"b")}), {u"a", u"b"}},
      {"empty entry kept", texts({u"", u"x"}), {u"", u"x"}},
      {"0x0 char entry", Value::cell_row({Value::chars({0, 0}, u""), Value::text(u"y")}), {u"", u"y"}},
      {"repeated entry kept", texts({u"\\n", u"\\n"}), {u"\n", u"\n"}},
      {"lone trailing backslash", texts({u"a\\"}), {u"a\\"}},
      {"escaped backslash then n", texts({u"\\\\n"}), {u"\\n"}},
  };
  for (const auto& k : list_keys()) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(k.key) + " given " + c.what);
      for (const options& start : {prepared_record(), with_delimiter(prepared_record())}) {
        options o = start;
        apply_option(o, k.key, c.value);
        options expected = start;
        k.store(expected, c.stored);  // the delimiter accessor also clears detection
        EXPECT_TRUE(same_record(o, expected));
      }
    }
  }
}

// Four entries in a 2-by-2 cell, column-major; CommentStyle would refuse them.
TEST(ListOptions, AnyShapeAndNumberOfEntriesWithoutLimit) {
  const Value square =
      Value::cell({2, 2}, {Value::text(u"a"), Value::text(u"b"), Value::text(u"\\t"), Value::text(u"a")});
  for (const auto& k : list_keys()) {
    if (std::string(k.key) == "CommentStyle") continue;
    SCOPED_TRACE(k.key);
    options o;
    apply_option(o, k.key, square);
    options expected;
    k.store(expected, text_list{u"a", u"b", u"\t", u"a"});
    EXPECT_TRUE(same_record(o, expected));
  }
}

TEST(ListOptions, SecondDelimiterInOneCallReplacesTheFirst) {
  const Value key = Value::text(u"Delimiter");
  const Value first = texts({u",", u";"});
  const Value second = Value::text(u"\\t");
  const hvArray_tag* args[] = {key.get(), first.get(), key.get(), second.get()};
  options o;
  textio::options::set_parser_options(args, 4, o);
  EXPECT_EQ(o.delimiter(), (text_list{u"\t"}));
  EXPECT_FALSE(o.detecting_delimiter());
}

std::vector<std::pair<std::string, Value>> neither_text_nor_list() {
  std::vector<std::pair<std::string, Value>> v;
  v.emplace_back("null", Value::none());
  v.emplace_back("number", Value::scalar(44));
  v.emplace_back("logical", Value::logical(false));
  v.emplace_back("char 2x1", Value::chars({2, 1}, u",;"));
  v.emplace_back("char 0x3", Value::chars({0, 3}, u""));
  v.emplace_back("char 1x2x2", Value::chars({1, 2, 2}, u",;,;"));
  v.emplace_back("struct", Value::struct_scalar({{"a", Value::text(u",")}}));
  v.emplace_back("cell holding a number", Value::cell_row({Value::text(u","), Value::scalar(44)}));
  v.emplace_back("cell holding a 2-row char", Value::cell_row({Value::chars({2, 1}, u",;")}));
  v.emplace_back("cell holding a cell", Value::cell_row({texts({u","})}));
  v.emplace_back("cell with a null slot", Value::cell_row({Value::text(u","), Value::none()}));
  // Three entries, so CommentStyle's limit would also fail: the type test
  // comes first.
  v.emplace_back("three entries, one a number",
                 Value::cell_row({Value::text(u"a"), Value::text(u"b"), Value::scalar(1)}));
  return v;
}

TEST(ListOptions, TypeFailuresWriteNothing) {
  for (const auto& k : list_keys()) {
    for (const auto& [what, given] : neither_text_nor_list()) {
      const Value& value = given;  // clang 14 cannot capture a structured binding
      SCOPED_TRACE(std::string(k.key) + " given " + what);
      for (const options& start : {prepared_record(), with_delimiter(prepared_record())}) {
        options o = start;
        EXPECT_TRUE(k.type_failure([&] { apply_option(o, k.key, value); }, k.type_args));
        EXPECT_TRUE(same_record(o, start));
      }
    }
  }
}

TEST(ListOptions, UnknownSequenceInAnyEntryNamesTheOption) {
  struct {
    const char* what;
    Value value;
  } const cases[] = {
      {"one text", Value::text(u"\\q")},
      {"known ahead of unknown", Value::text(u"\\r\\f")},
      {"second entry", texts({u"\\t", u",\\N"})},
      {"first entry", texts({u"\\0", u","})},
  };
  for (const auto& k : list_keys()) {
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(k.key) + " given " + c.what);
      for (const options& start : {prepared_record(), with_delimiter(prepared_record())}) {
        options o = start;
        EXPECT_MESSAGE(apply_option(o, k.key, c.value), msg::InvalidEscapeSequence, text_arg(k.key));
        EXPECT_TRUE(same_record(o, start));
      }
    }
  }
}

TEST(ListOptions, CommentStyleCountsEntriesBeforeDecoding) {
  struct {
    const char* what;
    Value value;
    bool too_many;
  } const cases[] = {
      {"three texts", texts({u"%", u"#", u"//"}), true},
      {"three, one with an unknown sequence", texts({u"%", u"\\q", u"#"}), true},
      {"three empty texts", texts({u"", u"", u""}), true},
      {"2x2 cell", Value::cell({2, 2}, {Value::text(u"a"), Value::text(u"b"), Value::text(u"c"), Value::text(u"d")}),
       true},
      {"two, the second with an unknown sequence", texts({u"%", u"\\q"}), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    options o = prepared_record();
    if (c.too_many) {
      EXPECT_MESSAGE(apply_option(o, "CommentStyle", c.value), msg::CommentStyleSize);
    } else {
      EXPECT_MESSAGE(apply_option(o, "CommentStyle", c.value), msg::InvalidEscapeSequence, text_arg("CommentStyle"));
    }
    EXPECT_TRUE(same_record(o, prepared_record()));
  }
}

}  // namespace
