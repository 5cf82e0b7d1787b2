// DateLocale, DecimalSeparator, ExpChars / ExponentCharacter and
// ThousandsSeparator through the entry point: stored as given, no decoding.
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

using text_field = const ustring& (*)(const options&);
const text_field date_locale = [](const options& o) -> const ustring& { return o.date_locale(); };
const text_field exp_chars = [](const options& o) -> const ustring& { return o.exp_chars(); };
const text_field thousands = [](const options& o) -> const ustring& { return o.thousands_separator(); };

TEST(TextSetters, StoreTheWholeTextAsGiven) {
  struct {
    const char* key;
    Value value;
    text_field field;
    ustring stored;
  } const cases[] = {
      {"DateLocale", Value::text(u"de_DE"), date_locale, u"de_DE"},
      {"DateLocale", Value::text(u""), date_locale, u""},
      {"DateLocale", Value::chars({0, 0}, u""), date_locale, u""},
      {"datelocale", Value::text_utf8("fr_FR"), date_locale, u"fr_FR"},
      {"ExpChars", Value::text(u"eE"), exp_chars, u"eE"},
      {"ExpChars", Value::text(u""), exp_chars, u""},
      {"ExponentCharacter", Value::text(u"dD"), exp_chars, u"dD"},
      {"ExponentCharacter", Value::text(u"e\\E"), exp_chars, u"e\\E"},
      {"ThousandsSeparator", Value::text(u"'"), thousands, u"'"},
      {"ThousandsSeparator", Value::text(u"\\t"), thousands, u"\\t"},  // backslash is a plain unit here
      {"ThousandsSeparator", Value::text(u"\\q"), thousands, u"\\q"},
      {"ThousandsSeparator", Value::text(u""), thousands, u""},
      {"ThousandsSeparator", Value::text(u"\u00A0\u202F"), thousands, u"\u00A0\u202F"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key + testing::PrintToString(c.stored));
    options o;
    o.date_locale(u"old");
    o.exp_chars(u"old");
    o.thousands_separator(u"old");
    options expected = o;
    apply_option(o, c.key, c.value);
    EXPECT_EQ(c.field(o), c.stored);
    // Only that one field changed.
    if (c.field == date_locale) expected.date_locale(c.stored);
    if (c.field == exp_chars) expected.exp_chars(c.stored);
    if (c.field == thousands) expected.thousands_separator(c.stored);
    EXPECT_TRUE(same_record(o, expected));
  }
}

TEST(TextSetters, DecimalSeparatorStoresItsOneUnit) {
  for (const char16_t unit : {u',', u'\\', u'\u00B7', u'\u066B', char16_t{0xD800}}) {
    SCOPED_TRACE(static_cast<int>(unit));
    options o;
    apply_option(o, "DecimalSeparator", Value::text(std::u16string(1, unit)));
    EXPECT_EQ(o.decimal_separator(), unit);
    options expected;
    expected.decimal_separator(unit);
    EXPECT_TRUE(same_record(o, expected));
  }
}

TEST(TextSetters, LaterOfExpCharsAndExponentCharacterWins) {
  const Value e = Value::text(u"ExpChars"), x = Value::text(u"ExponentCharacter");
  const Value first = Value::text(u"eE"), second = Value::text(u"dD");
  options o;
  const hvArray_tag* forward[] = {e.get(), first.get(), x.get(), second.get()};
  textio::options::set_parser_options(forward, 4, o);
  EXPECT_EQ(o.exp_chars(), u"dD");
  const hvArray_tag* backward[] = {x.get(), second.get(), e.get(), first.get()};
  textio::options::set_parser_options(backward, 4, o);
  EXPECT_EQ(o.exp_chars(), u"eE");
}

// Values that are no single text, for every key of this group.
std::vector<std::pair<std::string, Value>> non_texts() {
  std::vector<std::pair<std::string, Value>> v;
  v.emplace_back("null", Value::none());
  v.emplace_back("number", Value::scalar(46));
  v.emplace_back("logical", Value::logical(true));
  v.emplace_back("uint16 code unit", Value::array<std::uint16_t>({1, 1}, std::vector<std::uint16_t>{46}));
  v.emplace_back("cell of one text", Value::cell_row({Value::text(u".")}));
  v.emplace_back("empty cell", Value::cell({0, 0}, {}));
  v.emplace_back("char 2x3", Value::chars({2, 3}, u"abcdef"));
  v.emplace_back("char 0x3", Value::chars({0, 3}, u""));
  v.emplace_back("char 1x1x2", Value::chars({1, 1, 2}, u".."));
  v.emplace_back("struct", Value::struct_scalar({{"a", Value::text(u".")}}));
  return v;
}

options prepared_record() {
  options o;
  o.date_locale(u"en_US");
  o.exp_chars(u"eE");
  o.thousands_separator(u",");
  o.decimal_separator(u',');
  o.whitespace(u" ");
  o.delimiter(options::text_list{u";"});
  return o;
}

TEST(TextSetters, NonTextFailsWithTheOptionNameAndWritesNothing) {
  struct {
    const char* key;
    const char* reported;
  } const keys[] = {
      {"DateLocale", "DateLocale"},      {"DecimalSeparator", "DecimalSeparator"},
      {"ExpChars", "ExpChars"},          {"ExponentCharacter", "ExpChars"},  // shared setter, same argument
      {"EXPONENTCHARACTER", "ExpChars"}, {"ThousandsSeparator", "ThousandsSeparator"},
  };
  for (const auto& k : keys) {
    for (const auto& [what, given] : non_texts()) {
      const Value& value = given;  // clang 14 cannot capture a structured binding
      SCOPED_TRACE(std::string(k.key) + " given " + what);
      options o = prepared_record();
      EXPECT_MESSAGE(apply_option(o, k.key, value), msg::InvalidStringProperty, text_arg(k.reported));
      EXPECT_TRUE(same_record(o, prepared_record()));
    }
  }
}

TEST(TextSetters, DecimalSeparatorRefusesTextsOfOtherLengths) {
  struct {
    const char* what;
    Value value;
  } const cases[] = {
      {"empty", Value::text(u"")},
      {"0x0", Value::chars({0, 0}, u"")},
      {"two units", Value::text(u",,")},
      {"backslash t is two units", Value::text(u"\\t")},
      {"surrogate pair", Value::text(u"\U0001F600")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    options o = prepared_record();
    EXPECT_MESSAGE(apply_option(o, "DecimalSeparator", c.value), msg::InvalidStringProperty,
                   text_arg("DecimalSeparator"));
    EXPECT_TRUE(same_record(o, prepared_record()));
  }
}

}  // namespace
