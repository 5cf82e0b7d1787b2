// The options that take texts, through the entry point: the shape checks
// behind them; Whitespace (escape-decoded), DateLocale, DecimalSeparator,
// ExpChars / ExponentCharacter and ThousandsSeparator, stored as given; and
// the list options Delimiter, LineEnding, TreatAsMissing and CommentStyle,
// decoded, tested in a temporary and written only when every test passed. A
// refusal names the option and writes nothing.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/text_checks.hpp"
#include "support/expect_message.hpp"
#include "support/setter_calls.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using hv::Value;
using test_support::apply_option;
using test_support::Args;
using test_support::same_record;
using test_support::text_arg;
using textio::parser::options;
using text_list = options::text_list;
using thrower = ::testing::AssertionResult (*)(const std::function<void()>&, const Args&);

Value texts(hv::Dims dims, const std::vector<std::u16string>& units) {
  std::vector<Value> elements;
  for (const auto& u : units) elements.push_back(Value::text(u));
  return Value::cell(std::move(dims), std::move(elements));
}
Value texts(const std::vector<std::u16string>& units) { return texts({1, units.size()}, units); }

// The tests of each shape, and each check throwing its own message exactly
// when its test fails.
TEST(TextChecks, ShapesOfTextsAndTextLists) {
  const struct {
    std::string what;
    Value value;
    bool text;
    bool list;
  } cases[] = {
      // Char arrays: one row of any length, or 0-by-0.
      {"char 0x0", Value::chars({0, 0}, u""), true, false},
      {"char 1x5", Value::chars({1, 5}, u"ab\\tc"), true, false},
      {"char 0x3", Value::chars({0, 3}, u""), false, false},
      {"char 2x3", Value::chars({2, 3}, u"abcdef"), false, false},
      {"char 3x1", Value::chars({3, 1}, u"abc"), false, false},
      {"char 1x1x2", Value::chars({1, 1, 2}, u"ab"), false, false},
      {"char 1x3x1 (host keeps two dimensions)", Value::chars({1, 3, 1}, u"abc"), true, false},
      {"char under an extended class number", Value::text(u"ab").with_extended_class(40), true, false},
      {"char with incomplete dimensions", Value::text(u"ab").with_opaque_dimensions(), true, false},
      // Other classes.
      {"null", Value::none(), false, false},
      {"double scalar", Value::scalar(44), false, false},
      // Cell arrays: any shape, every element a text.
      {"cell 0x0", Value::cell({0, 0}, {}), false, true},
      {"cell 0x3", Value::cell({0, 3}, {}), false, true},
      {"cell 1x1", texts({1, 1}, {u","}), false, true},
      {"cell 2x2", texts({2, 2}, {u"a", u"b", u"c", u"d"}), false, true},
      {"cell with an empty text", texts({1, 2}, {u"a", u""}), false, true},
      {"cell under an extended class number", texts({1, 1}, {u"a"}).with_extended_class(33), false, true},
      {"cell holding a text under an extended class", Value::cell_row({Value::text(u"a").with_extended_class(21)}),
       false, true},
      // Cell arrays with an element that is no text, wherever it stands.
      {"cell with a number last", Value::cell_row({Value::text(u"a"), Value::scalar(1)}), false, false},
      {"cell holding a cell", Value::cell_row({Value::text(u"a"), texts({1, 1}, {u"b"})}), false, false},
      {"cell with a null slot", Value::cell_row({Value::text(u"a"), Value::none()}), false, false},
      {"cell holding a 2x3 char", Value::cell_row({Value::chars({2, 3}, u"abcdef")}), false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const hvArray_tag* v = c.value.get();
    EXPECT_EQ(textio::options::is_text(v), c.text);
    EXPECT_EQ(textio::options::is_text_list(v), c.list);
    if (c.text) {
      EXPECT_NO_THROW(textio::options::require_text(v, "Opt"));
    } else {
      EXPECT_MESSAGE(textio::options::require_text(v, "Opt"), msg::InvalidStringProperty, text_arg("Opt"));
    }
    if (c.text || c.list) {
      EXPECT_NO_THROW(textio::options::require_text_or_list(v, "Opt"));
      EXPECT_NO_THROW(textio::options::require_delimiter_value(v));
    } else {
      EXPECT_MESSAGE(textio::options::require_text_or_list(v, "Opt"), msg::InvalidStringOrCellStringProperty,
                     text_arg("Opt"));
      EXPECT_MESSAGE(textio::options::require_delimiter_value(v), msg::DelimiterType);
    }
  }
}

using store = void (*)(options&, const ustring&);

// A record with every text field away from its default; with and without a
// delimiter, so that a write of detecting_delimiter shows either way.
options prepared_record(bool with_delimiter) {
  options o;
  o.whitespace(u"\v");
  o.line_ending(text_list{u"\n"});
  o.missing_placeholders(text_list{u"NA", u"-"});
  o.comment_style(text_list{u"%"});
  o.date_locale(u"old");
  o.exp_chars(u"old");
  o.thousands_separator(u"old");
  o.decimal_separator(u',');
  if (with_delimiter) o.delimiter(text_list{u";"});
  return o;
}

TEST(TextSetters, StoreTheTextInTheirOwnFieldOnlyOrRefuseWithoutAWrite) {
  const store whitespace = [](options& o, const ustring& s) { o.whitespace(s); };
  const store date_locale = [](options& o, const ustring& s) { o.date_locale(s); };
  const store exp_chars = [](options& o, const ustring& s) { o.exp_chars(s); };
  const store thousands = [](options& o, const ustring& s) { o.thousands_separator(s); };
  const store decimal = [](options& o, const ustring& s) { o.decimal_separator(s[0]); };
  const thrower bad_escape = &test_support::throws_message<msg::InvalidEscapeSequence>;
  struct {
    const char* key;
    Value value;
    store field;     // null when the value is refused
    ustring stored;  // or the option's name in the message
    thrower failure = &test_support::throws_message<msg::InvalidStringProperty>;
  } const cases[] = {
      {"Whitespace", Value::chars({0, 0}, u""), whitespace, u""},
      {"Whitespace", Value::text(u" \\b\\t"), whitespace, u" \b\t"},
      {"Whitespace", Value::text(u"  \t\t"), whitespace, u"  \t\t"},  // neither sorted nor merged
      {"Whitespace", Value::text(u"\\\\n"), whitespace, u"\\n"},      // decoded once only
      {"Whitespace", Value::text(u" \\t\\v"), nullptr, u"Whitespace", bad_escape},
      {"Whitespace", Value::cell_row({Value::text(u" ")}), nullptr, u"Whitespace"},
      {"DateLocale", Value::text(u"de_DE"), date_locale, u"de_DE"},
      {"DateLocale", Value::cell_row({Value::text(u"de")}), nullptr, u"DateLocale"},
      {"ExpChars", Value::text(u"e\\E"), exp_chars, u"e\\E"},  // backslash is a plain unit here
      {"ExponentCharacter", Value::text(u"dD"), exp_chars, u"dD"},
      {"ExpChars", Value::chars({2, 1}, u"eE"), nullptr, u"ExpChars"},
      {"ExponentCharacter", Value::scalar(101), nullptr, u"ExpChars"},  // shared setter, same argument
      {"ThousandsSeparator", Value::text(u"\\t"), thousands, u"\\t"},
      {"ThousandsSeparator", Value::none(), nullptr, u"ThousandsSeparator"},
      {"DecimalSeparator", Value::text(u"\\"), decimal, u"\\"},
      {"DecimalSeparator", Value::text(std::u16string(1, char16_t{0xD800})), decimal, std::u16string(1, 0xD800)},
      {"DecimalSeparator", Value::array<std::uint16_t>({1, 1}, std::vector<std::uint16_t>{46}), nullptr,
       u"DecimalSeparator"},
      {"DecimalSeparator", Value::chars({1, 1, 1}, u";"), decimal, u";"},  // the host keeps two dimensions
      {"DecimalSeparator", Value::text(u",,"), nullptr, u"DecimalSeparator"},
      {"DecimalSeparator", Value::chars({0, 0}, u""), nullptr, u"DecimalSeparator"},
      {"DecimalSeparator", Value::chars({2, 1}, u".,"), nullptr, u"DecimalSeparator"},
      {"DecimalSeparator", Value::cell_row({Value::text(u",")}), nullptr, u"DecimalSeparator"},
      {"DecimalSeparator", Value::text(u"\U0001F600"), nullptr, u"DecimalSeparator"},  // a pair is two units
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key + testing::PrintToString(c.stored));
    options o = prepared_record(true);
    options expected = prepared_record(true);
    if (c.field != nullptr) {
      apply_option(o, c.key, c.value);
      c.field(expected, c.stored);
    } else {
      EXPECT_TRUE(
          c.failure([&] { apply_option(o, c.key, c.value); }, text_arg(std::string(c.stored.begin(), c.stored.end()))));
    }
    EXPECT_TRUE(same_record(o, expected));
  }
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
  EXPECT_MESSAGE(
      apply_option(o, "CommentStyle",
                   Value::cell({2, 2}, {Value::text(u"a"), Value::text(u"b"), Value::text(u"c"), Value::text(u"d")})),
      msg::CommentStyleSize);
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", texts({u"%", u"\\q"})), msg::InvalidEscapeSequence,
                 text_arg("CommentStyle"));
  EXPECT_TRUE(same_record(o, start));
}

}  // namespace
