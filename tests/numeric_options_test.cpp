// Count, line-number, logical and width options, and the tests and
// conversions behind them.
#include "name_value/host_value_tests.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <cstdint>
#include <limits>
#include <optional>

#include "errors/tags.hpp"
#include "support/expect_message.hpp"
#include "support/setter_calls.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using hv::Value;
using test_support::apply_option;
using textio::parser::options;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What a count option makes of a value: the stored count, or no value when
// the setter fails.
struct CountCase {
  const char* label;
  Value value;
  std::optional<std::uint64_t> stored;
};

const CountCase count_cases[] = {
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
  using thrower = ::testing::AssertionResult (*)(const std::function<void()>&, const test_support::Args&);
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
  struct Case {
    const char* label;
    Value value;
    std::optional<std::vector<std::uint64_t>> stored;
  };
  const Case cases[] = {
      {"uint64 row", Value::array<std::uint64_t>({1, 3}, std::vector<std::uint64_t>{3, UINT64_MAX, 0}),
       std::vector<std::uint64_t>{3, UINT64_MAX, 0}},
      {"double 2^63", Value::row({9223372036854775808.0}), std::vector<std::uint64_t>{0x8000000000000000u}},
      {"empty double", Value::row({}), std::vector<std::uint64_t>{}},
      {"empty cell", Value::cell({0, 3}, {}), std::vector<std::uint64_t>{}},
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
      EXPECT_EQ(o.field_widths(), (std::vector<std::uint64_t>{9, 9}));
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

}  // namespace
