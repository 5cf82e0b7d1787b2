// The escape decoder, and each option's setter through the entry point: what
// it stores, and that a refusal names the option and writes nothing.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/escape_sequences.hpp"
#include "name_value/text_checks.hpp"
#include "support/expect_message.hpp"
#include "support/reference_escape_decoder.hpp"
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

// The reference is held to the same table, so agreement below means both are
// right, not merely alike.
TEST(EscapeSequences, DecoderAndReferenceGiveTheTable) {
  const struct {
    std::u16string given, decoded;
    bool known;
  } cases[] = {
      {u"a\\tb\\b\\n\\r", u"a\tb\b\n\r", true},
      {u"\\\\\\n", u"\\\n", true},  // pairs form from the left; the decoded backslash starts nothing
      {u"\\\\q", u"\\q", true},     // q follows a decoded backslash, so it is plain
      {u"\\", u"\\", true},         // a lone backslash at the end stays
      {u"\\qa\\n", u"a\n", false},  // both units of an unknown pair go; the scan goes on
      // Unknown: no other letters, no upper case, no numeric forms.
      {u"\\0\\T", u"", false},
      {u"\\x41", u"41", false},
      {std::u16string(u"\\\0", 2), u"", false},  // a NUL unit behind a backslash
      {u"\\\u00E9", u"", false},
      // NUL units elsewhere are ordinary text.
      {std::u16string(u"a\0\\t", 4), std::u16string(u"a\0\t", 3), true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.given));
    for (bool (*decode)(ustring&) noexcept :
         {&textio::options::decode_escape_sequences, &test_support::reference_decode}) {
      ustring text = c.given;
      EXPECT_EQ(decode(text), c.known);
      EXPECT_EQ(text, c.decoded);
    }
  }
}

TEST(EscapeSequences, DecodesInPlaceWithoutReallocating) {
  for (const ustring& given : {ustring(u"no backslash"), ustring(u"\\t\\q\\\\x\\"), ustring(4096, u'\\')}) {
    ustring text = given;
    const char16_t* before = text.data();
    const std::size_t capacity = text.capacity();
    textio::options::decode_escape_sequences(text);
    EXPECT_EQ(text.data(), before);
    EXPECT_EQ(text.capacity(), capacity);
  }
}

// Every text of up to seven units over an alphabet that holds a backslash, a
// known letter, an unknown letter and a plain unit.
TEST(EscapeSequences, AgreesWithReferenceOnAllShortTexts) {
  const std::u16string alphabet = u"\\tqa";
  for (std::size_t length = 0, combinations = 1; length <= 7; ++length, combinations *= alphabet.size()) {
    for (std::size_t code = 0; code < combinations; ++code) {
      ustring fast;
      for (std::size_t i = 0, rest = code; i < length; ++i, rest /= alphabet.size())
        fast += alphabet[rest % alphabet.size()];
      ustring slow = fast;
      const std::string given = testing::PrintToString(fast);
      ASSERT_EQ(textio::options::decode_escape_sequences(fast), test_support::reference_decode(slow)) << given;
      ASSERT_EQ(fast, slow) << given;
    }
  }
}

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What a count option makes of a value: the stored count, or no value when
// the setter fails.
const struct {
  const char* label;
  Value value;
  std::optional<std::uint64_t> stored;
} count_cases[] = {
    {"zero", Value::scalar(0), 0},
    {"one", Value::scalar(1), 1},
    {"negative zero", Value::scalar(-0.0), 0},
    {"2^63", Value::scalar(9223372036854775808.0), 0x8000000000000000u},
    {"largest below 2^64", Value::scalar(18446744073709549568.0), 18446744073709549568u},
    {"2^64 is refused", Value::scalar(18446744073709551616.0), std::nullopt},
    {"infinity", Value::scalar(inf), std::nullopt},
    {"fraction", Value::scalar(2.5), std::nullopt},
    {"fraction above 2^31", Value::scalar(2147483648.5), std::nullopt},
    {"fraction below 2^52", Value::scalar(4503599627370495.5), std::nullopt},
    {"largest integer below 2^53", Value::scalar(9007199254740991.0), 9007199254740991u},
    {"negative", Value::scalar(-1), std::nullopt},
    {"NaN", Value::scalar(nan), std::nullopt},
    {"two numbers", Value::row({1, 2}), std::nullopt},
    {"single 3", Value::array<float>({1, 1}, std::vector<float>{3}), std::nullopt},
    {"logical", Value::logical(true), std::nullopt},
    {"null", Value::none(), std::nullopt},
    {"extended double 4", Value::scalar(4).with_extended_class(99), 4},
};

// A stored count writes its field, and NumHeaderLines, NumVariables and
// DataLine clear their own detection flag; a refusal writes nothing. DataLine
// takes a positive line and stores one less (the header lines before it).
TEST(CountOptions, EachCountOptionStoresOrRefusesWithoutWriting) {
  const struct {
    const char* key;
    void (options::*set)(std::uint64_t);
    bool clears_num_variables;
    std::uint64_t first = 0;
    thrower refusal = &test_support::throws_message<msg::ExpectedNonNegativeScalarInt>;
  } count_options[] = {
      {"NumHeaderLines", &options::num_header_lines, false},  // the accessor clears its flag
      {"NumVariables", &options::num_variables, true},
      {"VariableNamesLine", &options::variable_names_line, false},
      {"VariableUnitsLine", &options::variable_units_line, false},
      {"VariableDescriptionsLine", &options::variable_descriptions_line, false},
      {"DataLine", &options::num_header_lines, false, 1, &test_support::throws_message<msg::ExpectedPositiveScalarInt>},
  };
  for (const auto& option : count_options) {
    for (const auto& c : count_cases) {
      SCOPED_TRACE(testing::Message() << c.label << " for " << option.key);
      options o;
      options expected;
      if (c.stored && *c.stored >= option.first) {
        apply_option(o, option.key, c.value);
        (expected.*option.set)(*c.stored - option.first);
        if (option.clears_num_variables) expected.detecting_num_variables(false);
      } else {
        EXPECT_TRUE(option.refusal([&] { apply_option(o, option.key, c.value); }, {}));
      }
      EXPECT_EQ(test_support::first_difference(o, expected), "");
    }
  }
}

TEST(LogicalOptions, MultipleDelimsAsOneWritesBothRulesAndNotTrailing) {
  options o;
  o.trailing_delim_rule(textio::enums::TrailingDelimiterRule::Error);
  apply_option(o, "MultipleDelimsAsOne", Value::logical(true));
  EXPECT_EQ(o.consecutive_delim_rule(), textio::enums::ConsecutiveDelimitersRule::Join);
  EXPECT_EQ(o.leading_delim_rule(), textio::enums::LeadingDelimiterRule::Ignore);
  EXPECT_EQ(o.trailing_delim_rule(), textio::enums::TrailingDelimiterRule::Error);
  apply_option(o, "MultipleDelimsAsOne", Value::logical(false));
  EXPECT_EQ(o.consecutive_delim_rule(), textio::enums::ConsecutiveDelimitersRule::Split);
  EXPECT_EQ(o.leading_delim_rule(), textio::enums::LeadingDelimiterRule::Keep);
  apply_option(o, "TrimNonNumeric", Value::logical(true));
  EXPECT_TRUE(o.trim_non_numeric());

  // Only a logical scalar passes, and a refusal writes nothing.
  const Value refused[] = {Value::scalar(1), Value::text(u"true"),
                           Value::array<bool>({1, 2}, std::vector<bool>{true, true}), Value::none()};
  for (const auto* key : {"MultipleDelimsAsOne", "TrimNonNumeric"}) {
    for (const auto& value : refused) {
      options p;
      EXPECT_MESSAGE(apply_option(p, key, value), msg::ExpectedScalarLogical);
      EXPECT_TRUE(test_support::same_record(p, options{}));
    }
  }
}

TEST(VariableWidths, AcceptsUint64AndIntegralDoublesAndRefusesTheRest) {
  using widths = std::vector<std::uint64_t>;
  const struct {
    const char* label;
    Value value;
    std::optional<widths> stored;
  } cases[] = {
      {"uint64 row", Value::array<std::uint64_t>({1, 3}, widths{3, UINT64_MAX, 0}), widths{3, UINT64_MAX, 0}},
      {"double 2^63", Value::row({9223372036854775808.0}), widths{0x8000000000000000u}},
      {"empty double", Value::row({}), widths{}},
      {"empty cell", Value::cell({0, 3}, {}), widths{}},
      {"double fraction", Value::row({3, 2.5}), std::nullopt},
      {"double negative", Value::row({-1}), std::nullopt},
      {"double NaN", Value::row({nan}), std::nullopt},
      {"double 2^64", Value::row({18446744073709551616.0}), std::nullopt},
      {"char", Value::text(u"abc"), std::nullopt},
      {"null", Value::none(), std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    options o;
    o.field_widths({9, 9});
    if (c.stored) {
      apply_option(o, "VariableWidths", c.value);
      EXPECT_EQ(o.field_widths(), *c.stored);
    } else {
      EXPECT_MESSAGE(apply_option(o, "VariableWidths", c.value), msg::ExpectedNonNegativeScalarInt);
      EXPECT_EQ(o.field_widths(), (widths{9, 9}));
    }
  }
}

TEST(IgnoredOptions, AcceptAnyValueAndChangeNothing) {
  for (const auto* key : {"EmptyValue", "returnonerror"}) {
    for (const auto& value : {Value::none(), Value::struct_scalar({{"a", Value::scalar(1)}})}) {
      options o;
      apply_option(o, key, value);
      EXPECT_EQ(test_support::first_difference(o, options{}), "");
    }
  }
}

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
      {"cell 1x1", texts({1, 1}, {u","}), false, true},
      {"cell 2x2", texts({2, 2}, {u"a", u"b", u"c", u"d"}), false, true},
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

// The four list options and the fields they write.
const struct {
  const char* key;
  void (*store)(options&, const text_list&);
} list_keys[] = {
    {"Delimiter", [](options& o, const text_list& l) { o.delimiter(l); }},
    {"LineEnding", [](options& o, const text_list& l) { o.line_ending(l); }},
    {"TreatAsMissing", [](options& o, const text_list& l) { o.missing_placeholders(l); }},
    {"CommentStyle", [](options& o, const text_list& l) { o.comment_style(l); }},
};

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
  for (const auto& k : list_keys) {
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
      // Three entries, so CommentStyle's limit would also fail: the type test comes first.
      Value::cell_row({Value::text(u"a"), Value::text(u"b"), Value::scalar(1)}),
  };
  const Value bad_escape[] = {Value::text(u"\\r\\f"), texts({u"\\t", u",\\N"})};
  for (const auto& k : list_keys) {
    SCOPED_TRACE(k.key);
    for (const bool with_delimiter : {false, true}) {
      const options start = prepared_record(with_delimiter);
      for (const auto& value : not_text) {
        options o = start;
        if (std::string(k.key) == "Delimiter") {
          EXPECT_MESSAGE(apply_option(o, k.key, value), msg::DelimiterType);
        } else {
          EXPECT_MESSAGE(apply_option(o, k.key, value), msg::InvalidStringOrCellStringProperty, text_arg(k.key));
        }
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
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", texts({2, 2}, {u"a", u"b", u"c", u"d"})), msg::CommentStyleSize);
  EXPECT_MESSAGE(apply_option(o, "CommentStyle", texts({u"%", u"\\q"})), msg::InvalidEscapeSequence,
                 text_arg("CommentStyle"));
  EXPECT_TRUE(same_record(o, start));
}

}  // namespace
