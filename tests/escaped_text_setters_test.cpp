// The list options Delimiter, LineEnding, TreatAsMissing and CommentStyle
// through the entry point: decoded, tested in a temporary, and written only
// when every test passed. The decoder itself and the shape checks have their
// own tests.
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
using thrower = ::testing::AssertionResult (*)(const std::function<void()>&, const Args&);

Value texts(hv::Dims dims, const std::vector<std::u16string>& units) {
  std::vector<Value> elements;
  for (const auto& u : units) elements.push_back(Value::text(u));
  return Value::cell(std::move(dims), std::move(elements));
}
Value texts(const std::vector<std::u16string>& units) { return texts({1, units.size()}, units); }

// A record with every decoded field away from its default; with and without
// a delimiter, so that a write of detecting_delimiter shows either way.
options prepared_record(bool with_delimiter) {
  options o;
  o.whitespace(u"\v");
  o.line_ending(text_list{u"\n"});
  o.missing_placeholders(text_list{u"NA", u"-"});
  o.comment_style(text_list{u"%"});
  if (with_delimiter) o.delimiter(text_list{u";"});
  return o;
}

// What tells the four list options apart, as a test sees it.
struct list_key {
  const char* key;
  thrower type_failure;
  Args type_args;
  void (*store)(options&, const text_list&);
};

const std::vector<list_key>& list_keys() {
  static const std::vector<list_key> keys = {
      {"Delimiter", &test_support::throws_message<msg::DelimiterType>, {},
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

// Any shape and number of entries (CommentStyle takes at most two).
TEST(ListOptions, StoreEveryEntryDecodedAndReplaceTheField) {
  struct {
    const char* what;
    Value value;
    text_list stored;
  } const cases[] = {
      {"one text", Value::text(u"\\r\\n"), {u"\r\n"}},
      {"empty cell 0x3", Value::cell({0, 3}, {}), {}},
      {"2x2 cell, column-major", texts({2, 2}, {u"a", u"b", u"\\t", u"a"}), {u"a", u"b", u"\t", u"a"}},
      {"column of two", texts({2, 1}, {u"a", u"\\t"}), {u"a", u"\t"}},
      {"empty entries kept", Value::cell_row({Value::chars({0, 0}, u""), Value::text(u"")}), {u"", u""}},
      {"escaped backslash then n, lone trailing backslash", texts({u"\\\\n", u"a\\"}), {u"\\n", u"a\\"}},
  };
  for (const auto& k : list_keys()) {
    for (const auto& c : cases) {
      if (c.stored.size() > 2 && std::string(k.key) == "CommentStyle") continue;
      SCOPED_TRACE(std::string(k.key) + " given " + c.what);
      for (const bool with_delimiter : {false, true}) {
        options o = prepared_record(with_delimiter);
        apply_option(o, k.key, c.value);
        options expected = prepared_record(with_delimiter);
        k.store(expected, c.stored);  // the delimiter accessor also clears detection
        EXPECT_TRUE(same_record(o, expected));
      }
    }
  }
}

// Type failures and unknown sequences in any entry, for every key: the
// option's own message and argument, and no write.
TEST(ListOptions, FailuresNameTheOptionAndWriteNothing) {
  const Value not_text[] = {
      Value::scalar(44),
      Value::chars({2, 1}, u",;"),
      Value::cell_row({Value::text(u","), Value::none()}),
      // Three entries, so CommentStyle's limit would also fail: the type test comes first.
      Value::cell_row({Value::text(u"a"), Value::text(u"b"), Value::scalar(1)}),
  };
  const Value bad_escape[] = {Value::text(u"\\r\\f"), texts({u"\\t", u",\\N"})};
  for (const auto& k : list_keys()) {
    SCOPED_TRACE(k.key);
    for (const bool with_delimiter : {false, true}) {
      const options start = prepared_record(with_delimiter);
      for (const auto& value : not_text) {
        options o = start;
        EXPECT_TRUE(k.type_failure([&] { apply_option(o, k.key, value); }, k.type_args));
        EXPECT_TRUE(same_record(o, start));
      }
      for (const auto& value : bad_escape) {
        options o = start;
        EXPECT_MESSAGE(apply_option(o, k.key, value), msg::InvalidEscapeSequence, text_arg(k.key));
        EXPECT_TRUE(same_record(o, start));
      }
    }
  }
}

// CommentStyle counts the entries given, before decoding any of them.
TEST(ListOptions, CommentStyleCountsEntriesBeforeDecoding) {
  const options start = prepared_record(true);
  options o = start;
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", texts({u"%", u"\\q", u"#"})), msg::CommentStyleSize);
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", Value::cell({2, 2}, {Value::text(u"a"), Value::text(u"b"),
                                                                       Value::text(u"c"), Value::text(u"d")})),
                 msg::CommentStyleSize);
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", texts({u"%", u"\\q"})), msg::InvalidEscapeSequence,
                 text_arg("CommentStyle"));
  EXPECT_TRUE(same_record(o, start));
}

}  // namespace
