// The entry point: argument forms, name lookup, order of application and
// failure behaviour.
#include "name_value/set_parser_options.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <locale>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/option_table.hpp"
#include "support/expect_message.hpp"
#include "zvarray/matrix.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using hv::Value;
using test_support::utext_arg;
using textio::parser::options;

// Calls the entry point with the values as arguments, in order.
void call(options& o, const std::vector<Value>& values, std::int32_t count) {
  std::vector<const hvArray_tag*> args;
  for (const auto& v : values) args.push_back(v.get());
  textio::options::set_parser_options(args.data(), count, o);
}
void call(options& o, const std::vector<Value>& values) { call(o, values, static_cast<std::int32_t>(values.size())); }

Value t(const char16_t* s) { return Value::text(s); }

TEST(EntryPoint, CountsThatDoNothingAndCountsThatAreOdd) {
  const std::vector<Value> pair = {t(u"NumVariables"), Value::scalar(3)};
  for (const std::int32_t count : {0, -2, -4, INT32_MIN}) {
    options o;
    call(o, pair, count);
    EXPECT_TRUE(o.detecting_num_variables()) << count;
  }
  for (const std::int32_t count : {-1, -3, 1, 3, INT32_MAX}) {
    options o;
    EXPECT_MESSAGE(call(o, pair, count), msg::OddNumberNVPairs);
    EXPECT_TRUE(o.detecting_num_variables()) << count;
  }
}

TEST(EntryPoint, SingleNonStructArgumentIsAnOddList) {
  const Value single[] = {t(u"NumVariables"), Value::scalar(1), Value::cell_row({}), Value::none()};
  for (const auto& v : single) {
    options o;
    EXPECT_MESSAGE(call(o, {v}), msg::OddNumberNVPairs);
  }
  options o;
  EXPECT_MESSAGE(call(o, {Value::struct_scalar({{"NumVariables", Value::scalar(2)}}), t(u"x"), t(u"y")}),
                 msg::OddNumberNVPairs);
  EXPECT_TRUE(o.detecting_num_variables());
}

TEST(EntryPoint, NamesIgnoreCaseButMustMatchWholly) {
  for (const auto* name : {u"numheaderlines", u"NUMHEADERLINES", u"NumHeaderLines", u"nUmHeAdErLiNeS"}) {
    options o;
    call(o, {t(name), Value::scalar(4)});
    EXPECT_EQ(o.num_header_lines(), 4u);
  }
  for (const auto* name :
       {u"NumHeader", u" NumHeaderLines", u"NumHeaderLines ", u"NumHeaderLiness", u"", u"Num\u00e9HeaderLines"}) {
    options o;
    EXPECT_MESSAGE(call(o, {t(name), Value::scalar(4)}), msg::UnknownParameter, utext_arg(name));
    EXPECT_TRUE(o.detecting_num_header_lines());
  }
}

TEST(EntryPoint, PairsApplyLeftToRightAndStopAtTheFirstFailure) {
  options o;
  EXPECT_MESSAGE(call(o, {t(u"foo"), Value::scalar(1), t(u"NumVariables"), Value::scalar(3)}), msg::UnknownParameter,
                 utext_arg(u"foo"));
  EXPECT_TRUE(o.detecting_num_variables());

  options p;
  EXPECT_MESSAGE(call(p, {t(u"NumVariables"), Value::scalar(3), t(u"foo"), Value::scalar(1)}), msg::UnknownParameter,
                 utext_arg(u"foo"));
  EXPECT_EQ(p.num_variables(), 3u);

  // A failing value ends the call before later pairs are looked at.
  options q;
  EXPECT_MESSAGE(
      call(q, {t(u"DataLine"), Value::scalar(5), t(u"NumVariables"), Value::scalar(-1), t(u"bogus"), Value::scalar(1)}),
      msg::ExpectedNonNegativeScalarInt);
  EXPECT_EQ(q.num_header_lines(), 4u);

  // The last of two keys writing one field wins.
  options r;
  call(r, {t(u"NumHeaderLines"), Value::scalar(7), t(u"DataLine"), Value::scalar(2)});
  EXPECT_EQ(r.num_header_lines(), 1u);
}

TEST(EntryPoint, NonTextNamesAreUnknownWithTheirTextAsWritten) {
  // The host gives no text for a name that is no char array.
  const Value names[] = {Value::scalar(1), Value::none(), Value::cell_row({t(u"NumVariables")})};
  for (const auto& name : names) {
    options o;
    EXPECT_MESSAGE(call(o, {name, Value::scalar(1)}), msg::UnknownParameter, utext_arg(u""));
  }
  // A 2-by-N char name reads column-major, like any host text.
  options o;
  EXPECT_MESSAGE(call(o, {Value::chars({2, 2}, u"abcd"), Value::scalar(1)}), msg::UnknownParameter, utext_arg(u"abcd"));
}

TEST(EntryPoint, NullArgumentArrayReadsAsNullNames) {
  options o;
  EXPECT_MESSAGE(textio::options::set_parser_options(nullptr, 2, o), msg::UnknownParameter, utext_arg(u""));
  textio::options::set_parser_options(nullptr, 0, o);
  EXPECT_MESSAGE(textio::options::set_parser_options(nullptr, 1, o), msg::OddNumberNVPairs);
}

TEST(EntryPoint, StructFormAppliesKnownFieldsInOrderAndSkipsOthers) {
  options o;
  call(o, {Value::struct_scalar({{"foo", Value::scalar(1)},
                                 {"numvariables", Value::scalar(2)},
                                 {"NUMVARIABLES", Value::scalar(5)},
                                 {"DataLine", Value::scalar(3)}})});
  EXPECT_EQ(o.num_variables(), 5u);
  EXPECT_EQ(o.num_header_lines(), 2u);

  // Failure in a field stops the walk; earlier fields stay written.
  options p;
  EXPECT_MESSAGE(call(p, {Value::struct_scalar({{"NumVariables", Value::scalar(2)},
                                                {"DataLine", Value::none()},
                                                {"NumHeaderLines", Value::scalar(1)}})}),
                 msg::ExpectedPositiveScalarInt);
  EXPECT_EQ(p.num_variables(), 2u);
  EXPECT_TRUE(p.detecting_num_header_lines());
}

TEST(EntryPoint, StructArraysReadTheFirstElementAndEmptyStructsDoNothing) {
  options o;
  call(o, {Value::structure({1, 2}, {"NumVariables"}, {Value::scalar(4), Value::scalar(9)})});
  EXPECT_EQ(o.num_variables(), 4u);

  for (const auto& empty :
       {Value::struct_scalar({}), Value::structure({0, 0}, {"NumVariables"}, {}), Value::structure({1, 0}, {}, {})}) {
    options p;
    call(p, {empty});
    EXPECT_TRUE(p.detecting_num_variables());
  }
  // A struct whose class number is extended is still a struct.
  options q;
  call(q, {Value::struct_scalar({{"NumVariables", Value::scalar(6)}}).with_extended_class(21)});
  EXPECT_EQ(q.num_variables(), 6u);
}

TEST(EntryPoint, HostSeesEachFailureOnce) {
  const auto before = matrix::detail::legacy_hv_error_count();
  options o;
  EXPECT_MESSAGE(call(o, {t(u"NumHeaderLines"), Value::scalar(-1)}), msg::ExpectedNonNegativeScalarInt);
  EXPECT_EQ(matrix::detail::legacy_hv_error_count() - before, 1u);
}

// A ctype facet that also folds '-' to '_' and '9' to 'V', to see which
// locale is used.
class DashFoldingCtype : public std::ctype<char> {
 protected:
  char do_toupper(char c) const override {
    if (c == '-') return '_';
    if (c == '9') return 'V';
    return std::ctype<char>::do_toupper(c);
  }
  const char* do_toupper(char* begin, const char* end) const override {
    for (char* p = begin; p != end; ++p) *p = do_toupper(*p);
    return end;
  }
};

TEST(OptionNameOrdering, ComparesFoldedSignedBytesWithThePrefixFirst) {
  const textio::options::option_name_less less;
  EXPECT_FALSE(less("abc", "ABC"));
  EXPECT_FALSE(less("ABC", "abc"));
  EXPECT_TRUE(less("ab", "ABC"));
  EXPECT_FALSE(less("ABC", "ab"));
  EXPECT_TRUE(less("a", "_"));     // 'A' (65) below '_' (95) after folding
  EXPECT_TRUE(less("\x80", "A"));  // bytes from 0x80 compare as negative
  EXPECT_TRUE(less("", "A"));
}

TEST(OptionNameOrdering, FollowsTheGlobalLocaleAsItStandsAtEachComparison) {
  const textio::options::option_name_less less;
  EXPECT_TRUE(less("a-b", "a_b"));
  const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new DashFoldingCtype));
  EXPECT_FALSE(less("a-b", "a_b"));
  EXPECT_FALSE(less("a_b", "a-b"));
  std::locale::global(previous);
  EXPECT_TRUE(less("a-b", "a_b"));
}

TEST(OptionNameOrdering, LookupsFoldWithTheGlobalLocaleOfTheirCall) {
  // The test facet folds '9' to 'V', so "Num9ariables" names NumVariables
  // only while that locale is the global one.
  options o;
  const std::vector<Value> pair = {t(u"Num9ariables"), Value::scalar(3)};
  EXPECT_MESSAGE(call(o, pair), msg::UnknownParameter, utext_arg(u"Num9ariables"));
  const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new DashFoldingCtype));
  call(o, pair);
  EXPECT_EQ(o.num_variables(), 3u);
  std::locale::global(previous);
  EXPECT_MESSAGE(call(o, pair), msg::UnknownParameter, utext_arg(u"Num9ariables"));
}

TEST(OptionTable, KeysAreDistinctAndFoundInAnyCase) {
  const auto& table = textio::options::option_table;
  EXPECT_EQ(table.size(), 32u);
  for (const auto& [key, setter] : table) {
    std::string lower = key;
    for (auto& ch : lower) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    EXPECT_NE(table.find(lower), table.end()) << key;
    EXPECT_NE(setter, nullptr) << key;
  }
  EXPECT_EQ(table.find("ExponentCharacter") == table.end(), table.find("ExpChars") == table.end());
}

}  // namespace
