// The options that take one text through the entry point: Whitespace, which
// is escape-decoded, and DateLocale, DecimalSeparator, ExpChars /
// ExponentCharacter and ThousandsSeparator, stored as given. A refusal names
// the option and writes nothing. Which shapes count as a text is checked in
// text_checks_test.cpp.
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
using test_support::apply_option;
using test_support::same_record;
using test_support::text_arg;
using textio::parser::options;
using store = void (*)(options&, const ustring&);
using thrower = ::testing::AssertionResult (*)(const std::function<void()>&, const test_support::Args&);

options prepared_record() {
  options o;
  o.whitespace(u"\v");
  o.date_locale(u"old");
  o.exp_chars(u"old");
  o.thousands_separator(u"old");
  o.decimal_separator(u',');
  o.delimiter(options::text_list{u";"});
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
    options o = prepared_record();
    options expected = prepared_record();
    if (c.field != nullptr) {
      apply_option(o, c.key, c.value);
      c.field(expected, c.stored);
    } else {
      EXPECT_TRUE(c.failure([&] { apply_option(o, c.key, c.value); },
                            text_arg(std::string(c.stored.begin(), c.stored.end()))));
    }
    EXPECT_TRUE(same_record(o, expected));
  }
}

}  // namespace
