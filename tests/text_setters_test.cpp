// DateLocale, DecimalSeparator, ExpChars / ExponentCharacter and
// ThousandsSeparator through the entry point: stored as given, no decoding,
// and refused with the option's name without a write. Which shapes count as a
// text is checked in text_checks_test.cpp.
#include "name_value/set_parser_options.hpp"

#include <gtest/gtest.h>

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

options prepared_record() {
  options o;
  o.date_locale(u"old");
  o.exp_chars(u"old");
  o.thousands_separator(u"old");
  o.decimal_separator(u',');
  o.delimiter(options::text_list{u";"});
  return o;
}

TEST(TextSetters, StoreTheTextAsGivenInTheirOwnFieldOnly) {
  using store = void (*)(options&, const ustring&);
  const store date_locale = [](options& o, const ustring& s) { o.date_locale(s); };
  const store exp_chars = [](options& o, const ustring& s) { o.exp_chars(s); };
  const store thousands = [](options& o, const ustring& s) { o.thousands_separator(s); };
  const store decimal = [](options& o, const ustring& s) { o.decimal_separator(s[0]); };
  struct {
    const char* key;
    Value value;
    store field;
    ustring stored;
  } const cases[] = {
      {"DateLocale", Value::text(u"de_DE"), date_locale, u"de_DE"},
      {"DateLocale", Value::chars({0, 0}, u""), date_locale, u""},
      {"ExpChars", Value::text(u"e\\E"), exp_chars, u"e\\E"},
      {"ExponentCharacter", Value::text(u"dD"), exp_chars, u"dD"},
      {"ThousandsSeparator", Value::text(u"\\t"), thousands, u"\\t"},  // backslash is a plain unit here
      {"DecimalSeparator", Value::text(u"\\"), decimal, u"\\"},
      {"DecimalSeparator", Value::text(std::u16string(1, char16_t{0xD800})), decimal, std::u16string(1, 0xD800)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key + testing::PrintToString(c.stored));
    options o = prepared_record();
    options expected = prepared_record();
    apply_option(o, c.key, c.value);
    c.field(expected, c.stored);
    EXPECT_TRUE(same_record(o, expected));
  }
}

TEST(TextSetters, RefuseWithTheOptionNameAndWriteNothing) {
  struct {
    const char* key;
    const char* reported;
    Value value;
  } const cases[] = {
      {"DateLocale", "DateLocale", Value::cell_row({Value::text(u"de")})},
      {"ExpChars", "ExpChars", Value::chars({2, 1}, u"eE")},
      {"ExponentCharacter", "ExpChars", Value::scalar(101)},  // shared setter, same argument
      {"ThousandsSeparator", "ThousandsSeparator", Value::none()},
      {"DecimalSeparator", "DecimalSeparator", Value::array<std::uint16_t>({1, 1}, std::vector<std::uint16_t>{46})},
      {"DecimalSeparator", "DecimalSeparator", Value::text(u",,")},
      {"DecimalSeparator", "DecimalSeparator", Value::text(u"\U0001F600")},  // a pair is two units
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    options o = prepared_record();
    EXPECT_MESSAGE(apply_option(o, c.key, c.value), msg::InvalidStringProperty, text_arg(c.reported));
    EXPECT_TRUE(same_record(o, prepared_record()));
  }
}

}  // namespace
