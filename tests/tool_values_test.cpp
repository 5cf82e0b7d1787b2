// How the tool turns its arguments into host values: the JSON mapping, typed
// values and their faults, negative zero, and the sorting of the arguments
// after a subcommand.
#include "tools/host_values.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/subcommands.hpp"
#include "tools/usage_error.hpp"
#include "zvarray/hv_array.hpp"

namespace {

using hv::Value;

// A host value as text: class, dimensions, field names, and the raw bytes of
// plain data (so -0.0 differs from 0.0), elements in order.
std::string dump(const hvArray_tag* a) {
  if (a == nullptr) return "null";
  const hvClassID cls = hvGetClassID(a);
  std::string text = std::to_string(cls) + " [";
  for (std::size_t d = 0; d < hvGetNumberOfDimensions(a); ++d) text += std::to_string(hvGetDimensions(a)[d]) + " ";
  const std::uint64_t n = hvGetNumberOfElements(a);
  if (cls == hvCellClass || cls == hvStructClass) {
    const int fields = cls == hvStructClass ? a->get_number_of_struct_fields() : 1;
    for (int f = 0; cls == hvStructClass && f < fields; ++f) text += a->get_struct_field_names()[f] + std::string(" ");
    const auto* x = static_cast<const hvArray_tag* const*>(hvGetData(a));
    for (std::uint64_t i = 0; i < n * static_cast<std::uint64_t>(fields); ++i) text += dump(x[i]) + ", ";
  } else {
    const auto* bytes = static_cast<const unsigned char*>(hvGetData(a));
    for (std::uint64_t i = 0; i < n * hvElementSize(cls); ++i) text += std::to_string(bytes[i]) + " ";
  }
  return text + "]";
}

Value mapped(const std::string& json_text) {
  const auto parsed = zvtool::parse_json(json_text);
  if (!parsed) throw std::runtime_error("not JSON: " + json_text);
  return zvtool::host_value(*parsed);
}

template <class T>
Value typed(hv::Dims dims, std::vector<T> data) {
  return Value::array<T>(std::move(dims), data);
}

struct mapping_case {
  std::string json;
  Value expected;
};

TEST(ToolValues, ArgumentsMapOntoHostValues) {
  const double inf = std::numeric_limits<double>::infinity();
  const mapping_case cases[] = {
      {R"("ab")", Value::text(u"ab")},
      {R"("")", Value::chars({0, 0}, u"")},
      {R"("\u00e9\ud83d\ude00")", Value::text(u"\u00e9\U0001F600")},
      {"18446744073709551615", Value::scalar(18446744073709551616.0)},
      {"true", Value::logical(true)},
      {"null", Value::none()},
      {"[1, -2, 3e2]", Value::row({1, -2, 300})},
      {"[]", typed<double>({0, 0}, {})},
      {R"([1, "a", null, [true]])",
       Value::cell_row({Value::scalar(1), Value::text(u"a"), Value::none(), Value::cell_row({Value::logical(true)})})},
      {R"({"b": 1, "a": {}})", Value::struct_scalar({{"b", Value::scalar(1)}, {"a", Value::struct_scalar({})}})},
      // Typed values.
      {R"({"$class": "uint64", "$size": [1, 2], "$data": [4, 18446744073709551615]})",
       typed<std::uint64_t>({1, 2}, {4, 18446744073709551615u})},
      {R"({"$class": "int32", "$size": [1, 1], "$data": [3.0]})", typed<std::int32_t>({1, 1}, {3})},
      {R"({"$class": "int64", "$size": [1, 2], "$data": [-9223372036854775808, -0]})",
       typed<std::int64_t>({1, 2}, {std::numeric_limits<std::int64_t>::min(), 0})},
      {R"({"$class": "double", "$size": [1, 3], "$data": ["Inf", "-Inf", -0]})",
       typed<double>({1, 3}, {inf, -inf, -0.0})},
      {R"({"$class": "double", "$size": [0, 3]})", typed<double>({0, 3}, {})},
      {R"({"$class": "logical", "$size": [2, 1], "$data": [true, false]})", typed<bool>({2, 1}, {true, false})},
      {R"({"$class": "char", "$size": [2, 3], "$data": "adbecf"})", Value::chars({2, 3}, u"adbecf")},
      {R"({"$class": "char", "$size": [1, 2, 2], "$data": [97, 55296, 0, 65535]})",
       Value::chars({1, 2, 2}, std::u16string(u"a\xD800\0\xFFFF", 4))},
      {R"({"$class": "cell", "$size": [2, 2], "$data": [1, "x", null, {"$class": "int8", "$size": [1, 1], "$data": [5]}]})",
       Value::cell({2, 2}, {Value::scalar(1), Value::text(u"x"), Value::none(), typed<std::int8_t>({1, 1}, {5})})},
      {R"({"$class": "struct", "$size": [1, 2], "$data": [{"a": 1, "b": 2}, {"b": 3}]})",
       Value::structure({1, 2}, {"a", "b"}, {Value::scalar(1), Value::scalar(2), Value::none(), Value::scalar(3)})},
      {R"({"$class": "struct", "$size": [1, 1], "$fields": ["z", "a"], "$data": [{"a": 1}]})",
       Value::structure({1, 1}, {"z", "a"}, {Value::none(), Value::scalar(1)})},
      // An object without "$class" stays a struct, whatever its other keys.
      {R"({"$size": [1]})", Value::struct_scalar({{"$size", Value::row({1})}})},
      // A number written -0 keeps its sign.
      {"-0", Value::scalar(-0.0)},
      {"[-0, 0, -0]", Value::row({-0.0, 0.0, -0.0})},
      {R"(["-0", "\"-0", -0])", Value::cell_row({Value::text(u"-0"), Value::text(u"\"-0"), Value::scalar(-0.0)})},
      // An argument that is no JSON is text.
      {"", Value::text(u"")},
      {"{bad", Value::text(u"{bad")},
      {"\xC3\xA9t\xFF", Value::text(u"\u00e9t\uFFFD")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(dump(zvtool::value_argument(c.json).get()), dump(c.expected.get())) << c.json;
  }
  // Rewriting "-0" must not make bad JSON good.
  for (const char* bad : {"-01", "[-0-0]", "-0.", "--0"}) EXPECT_FALSE(zvtool::parse_json(bad)) << bad;
}

TEST(ToolValues, MalformedTypedValuesAreUsageErrors) {
  const auto nested = [](std::size_t levels) { return std::string(levels, '[') + "1" + std::string(levels, ']'); };
  EXPECT_NO_THROW(mapped(nested(zvtool::max_value_depth)));
  const std::string deep = nested(zvtool::max_value_depth + 1);
  const struct {
    std::string json;
    std::string says;  // a part of the message
  } cases[] = {
      {R"({"$class": "double", "$size": [1], "$data": [1]})", "at least two"},
      {R"({"$class": "double", "$data": [1]})", "needs \"$size\""},
      {R"({"$class": "double", "$size": [1, -1], "$data": []})", "out of the range of a $size entry"},
      {R"({"$class": "double", "$size": [1, 2], "$data": [1]})", "holds 1 element, but $size asks for 2"},
      {R"({"$class": "double", "$size": [1, 1]})", "$data is missing"},
      {R"({"$class": "char", "$size": [1, 2], "$data": "abc"})", "holds 3 code units"},
      {R"({"$class": "float", "$size": [1, 1], "$data": [1]})", "is unknown"},
      {R"({"$class": "int32", "$size": [1, 1], "$data": [1.5]})", "not an integer"},
      {R"({"$class": "uint64", "$size": [1, 1], "$data": [18446744073709551616]})", "out of the range of uint64"},
      {R"({"$class": "int64", "$size": [1, 1], "$data": [9223372036854775808]})", "out of the range of int64"},
      {R"({"$class": "char", "$size": [1, 1], "$data": [65536]})", "out of the range of char"},
      {R"({"$class": "single", "$size": [1, 1], "$data": [1e39]})", "out of the range of single"},
      {R"({"$class": "double", "$size": [1, 1], "$data": ["nan"]})", "is not a number"},
      {R"({"$class": "logical", "$size": [1, 1], "$data": [1]})", "not true or false"},
      {R"({"$class": "double", "$size": [1, 1], "$data": [1], "$dat": 2})", "unknown key \"$dat\""},
      {R"({"$class": "cell", "$size": [1, 1], "$fields": [], "$data": [1]})", "unknown key \"$fields\""},
      {R"({"$class": "struct", "$size": [1, 1], "$fields": ["a", "a"], "$data": [{}]})", "twice"},
      {R"({"$class": "struct", "$size": [1, 2], "$data": [{"a": 1}, {"b": 1}]})", "at $data[1]: field \"b\""},
      {R"({"$class": "struct", "$size": [1, 1], "$data": [3]})", "not an object"},
      {R"({"$class": "double", "$size": [4294967296, 4294967296, 2], "$data": []})", "more elements than"},
      {R"([1, {"a": {"$class": "int8", "$size": [1, 1], "$data": [200]}}])", "at [1].a.$data[0]:"},
      {deep, "nest deeper"},
      {R"({"$class": "double", "$size": )" + deep + R"(, "$data": []})", "$size [...] must be"},
  };
  for (const auto& c : cases) {
    try {
      mapped(c.json);
      ADD_FAILURE() << "no usage error for " << c.json;
    } catch (const zvtool::usage_error& e) {
      EXPECT_NE(std::string(e.what()).find(c.says), std::string::npos) << c.json << "\ngave: " << e.what();
    }
  }
}

TEST(ToolValues, OptionArgumentsKeepNamesAsTextAndTakeStructAlone) {
  const std::vector<std::string> positionals{"3", "3", "-1"};
  const auto values = zvtool::option_arguments(std::nullopt, positionals);
  ASSERT_EQ(values.size(), 3u);
  EXPECT_EQ(dump(values[0].get()), dump(Value::text(u"3").get()));
  EXPECT_EQ(dump(values[1].get()), dump(Value::scalar(3).get()));
  EXPECT_EQ(dump(values[2].get()), dump(Value::text(u"-1").get()));  // a name, though it reads as a number

  const auto one = zvtool::option_arguments(std::string(R"({"b": 1, "a": 2})"), {});
  ASSERT_EQ(one.size(), 1u);
  EXPECT_EQ(dump(one[0].get()), dump(mapped(R"({"b": 1, "a": 2})").get()));

  EXPECT_THROW(zvtool::option_arguments(std::string("{}"), positionals), zvtool::usage_error);
  EXPECT_THROW(zvtool::struct_argument("[1]"), zvtool::usage_error);
  EXPECT_THROW(zvtool::struct_argument(std::string(100000, '[') + std::string(100000, ']')), zvtool::usage_error);
  EXPECT_THROW(zvtool::struct_argument(R"({"$class": "cell", "$size": [0, 0]})"), zvtool::usage_error);
  EXPECT_THROW(zvtool::struct_argument("{"), zvtool::usage_error);
}

TEST(ToolArguments, OneGrammarSortsOptionsOperandAndPairs) {
  using args = std::vector<std::string>;
  using options = std::map<std::string, std::string, std::less<>>;
  const struct {
    args given;
    options tool_options;
    bool help;
    std::optional<std::string> file;
    args pairs;
  } cases[] = {
      {{"f", "NumHeaderLines", "-1", "X", "-0.5", "-abc", "-", "[1,2]", "--5"},
       {},
       false,
       "f",
       {"NumHeaderLines", "-1", "X", "-0.5", "-abc", "-", "[1,2]", "--5"}},
      {{"--struct", "-1", "f"}, {{"--struct", "-1"}}, false, "f", {}},
      {{"--struct={\"a\":1}", "f", "x"}, {{"--struct", "{\"a\":1}"}}, false, "f", {"x"}},
      {{"--count", "f", "--format=csv"}, {{"--count", ""}, {"--format", "csv"}}, false, "f", {}},
      {{"f", "--", "--count", "--help", "--"}, {}, false, "f", {"--count", "--help", "--"}},
      {{"--", "--f"}, {}, false, "--f", {}},
      {{"-h", "--loud"}, {}, true, std::nullopt, {}},
  };
  for (const auto& c : cases) {
    const auto parsed = zvtool::parse_subcommand_arguments("read", c.given);
    EXPECT_EQ(parsed.options, c.tool_options) << c.given.front();
    EXPECT_EQ(parsed.help, c.help) << c.given.front();
    EXPECT_EQ(parsed.operand, c.file) << c.given.front();
    EXPECT_EQ(parsed.option_arguments, c.pairs) << c.given.front();
  }

  const struct {
    args given;
    std::string message_has;
  } mistakes[] = {
      {{"f", "--loud"}, "unknown option '--loud' for read; its options are --struct JSON, --format FORMAT, --count, "},
      {{"f", "--struct"}, "--struct needs JSON"},
      {{"f", "--count=1"}, "--count takes no value"},
      {{"f", "--struct=", "--struct", "{}"}, "--struct may be given only once"},
      {{"--format", "csv"}, "read needs FILE"},
  };
  for (const auto& m : mistakes) {
    try {
      zvtool::parse_subcommand_arguments("read", m.given);
      ADD_FAILURE() << m.message_has;
    } catch (const zvtool::usage_error& e) {
      EXPECT_NE(std::string(e.what()).find(m.message_has), std::string::npos) << e.what();
    }
  }
}

}  // namespace
