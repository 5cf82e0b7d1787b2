// The tool's pieces in process: its arguments as host values, and its writing
// (JSON and CSV texts against byte-at-a-time references, numbers, layout, the
// options record and the one-line message).
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "name_value/option_vocabulary.hpp"
#include "parser/options.hpp"
#include "import/values/number_text.hpp"
#include "tools/apply_options.hpp"
#include "tools/host_values.hpp"
#include "tools/json_writer.hpp"
#include "tools/message_failure.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_json.hpp"
#include "tools/record_writers.hpp"
#include "tools/subcommands.hpp"
#include "tools/usage_error.hpp"
#include "zvarray/hv_array.hpp"
#include "zvcore/utf8.hpp"

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

TEST(ToolValues, ArgumentsMapOntoHostValues) {
  const double inf = std::numeric_limits<double>::infinity();
  const std::pair<std::string, Value> cases[] = {
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
  for (const auto& [json, expected] : cases) {
    EXPECT_EQ(dump(zvtool::value_argument(json).get()), dump(expected.get())) << json;
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
      {{"f", "-o", "out.csv", "-x"}, {{"--output", "out.csv"}}, false, "f", {"-x"}},
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
      {{"f", "--loud"},
       "unknown option '--loud' for read; its options are --struct JSON, --format FORMAT, --output FILE (-o), "},
      {{"f", "--sep", ";"}, "unknown option '--sep' for read; did you mean `Delimiter ';'`?; its options are "},
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

// Whole UTF-8 sequences as they are; a lone byte escaped by its short form
// or as \u00XX when it is a control or no sequence of its own.
std::string reference_json(std::string_view bytes) {
  std::string out = "\"";
  for (std::size_t i = 0, length = 0; i < bytes.size(); i += std::max<std::size_t>(length, 1)) {
    length = foundation::core::unicode::utf8_sequence_at(bytes.substr(i)).length;
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const std::size_t short_form = std::string_view("\"\\\b\f\n\r\t").find(bytes[i]);
    char hex[8];
    if (length > 1) {
      out.append(bytes.substr(i, length));
    } else if (length == 1 && short_form != std::string_view::npos) {
      out += std::string("\\") + "\"\\bfnrt"[short_form];
    } else if (length == 1 && byte >= 0x20) {
      out += bytes[i];
    } else {
      out.append(hex, static_cast<std::size_t>(std::snprintf(hex, sizeof hex, "\\u%04x", byte)));
    }
  }
  return out + '"';
}

std::string reference_csv(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\b'; };
  const bool quoted = text.empty() || text.starts_with("\xEF\xBB\xBF") || blank(text.front()) || blank(text.back()) ||
                      text.find_first_of(",\"\r\n") != std::string_view::npos;
  if (!quoted) return std::string(text);
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

std::string random_text(std::mt19937& rng) {
  // The pieces split at '|'; the first three are plain, and most picks are
  // those, so that long runs cross the eight-byte steps.
  static const std::vector<std::string> pieces = [] {
    std::istringstream all(
        "a|Z|0| |,|\"|\\|\r|\n|\t|\x01|\x1f|\x7f|\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\xC3|\xE2\x82|\xFF|\x80|"
        "\xEF\xBB\xBF|\xC0\x80|\xED\xA0\x80|\xF4\x90\x80\x80|plain text");
    std::vector<std::string> list;
    for (std::string piece; std::getline(all, piece, '|');) list.push_back(piece);
    return list;
  }();
  std::string text;
  const std::size_t count = rng() % 24;
  for (std::size_t i = 0; i < count; ++i) {
    text += rng() % 3 != 0 ? pieces[rng() % 3] : pieces[rng() % pieces.size()];
  }
  return text;
}

// Random texts of the bytes that matter: quotes, delimiters, controls, UTF-8
// sequences whole, cut and malformed, stray high bytes.
TEST(RecordEscaping, MatchesByteAtATimeReferences) {
  std::mt19937 rng(12);
  for (int round = 0; round < 20000; ++round) {
    const std::string text = random_text(rng);
    ASSERT_EQ(zvtool::json_quote_bytes(text), reference_json(text)) << testing::PrintToString(text);

    std::ostringstream csv_out;
    {
      zvtool::csv_writer csv(csv_out);
      textio::import::output_value value;
      value.kind = textio::import::value_kind::text;
      value.bytes = text;
      csv.record(std::span(&value, 1));
      csv.flush();
    }
    ASSERT_EQ(csv_out.str(), reference_csv(text) + "\r\n") << testing::PrintToString(text);
  }
}

// Numbers: the whole-number shortcut against the general shortest form, near
// the lengths where the exponent form gets shorter and at the edges of 2^53.
TEST(RecordEscaping, NumbersMatchTheShortestRoundTrip) {
  std::mt19937_64 rng(5);
  std::vector<double> values = {-0.0, 0.5, 1e300, 9007199254740991.0, 9007199254740992.0, -9007199254740993.0};
  for (int i = 0; i < 20000; ++i) {
    const double mantissa = static_cast<double>(rng() % 1000);
    const double scale = std::pow(10.0, static_cast<double>(rng() % 17));
    values.push_back((rng() % 2 != 0 ? -1 : 1) * mantissa * scale);
    values.push_back(static_cast<double>(static_cast<std::int64_t>(rng() >> (rng() % 64))));
  }
  for (const double v : values) {
    char digits[64];
    const std::string expected(digits, std::to_chars(digits, digits + sizeof digits, v).ptr);
    ASSERT_EQ(zvtool::number_text(v), expected) << v;
  }
}

// A number's text that the writers copy as it stands must be the shortest
// round trip of the number it reads as: random decimals (signs, zeros at
// either end, up to 18 digits, fractions far below 1) against to_chars.
TEST(RecordEscaping, NumberTextCopiedOnlyWhenShortest) {
  std::mt19937_64 rng(11);
  const auto digits = [&](std::size_t n) {
    std::string d;
    for (std::size_t i = 0; i < n; ++i) d += static_cast<char>('0' + (rng() % 3 == 0 ? 0 : rng() % 10));
    return d;
  };
  std::size_t copied = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string t = rng() % 3 == 0 ? "-" : "";
    t += rng() % 4 == 0 ? "0" : digits(1 + rng() % 18);
    if (rng() % 3 != 0) t += "." + std::string(rng() % 4 == 0 ? rng() % 9 : 0, '0') + digits(1 + rng() % 16);
    if (!textio::import::is_shortest_number_text(t)) continue;
    ++copied;
    char out[64];
    ASSERT_EQ(std::string(out, std::to_chars(out, out + sizeof out, std::strtod(t.c_str(), nullptr)).ptr), t);
  }
  EXPECT_GT(copied, 20000u);
  for (const char* t : {"0", "-3523.3447", "0.583", "1695753998", "0.001", "10000", "-0.5"}) {
    EXPECT_TRUE(textio::import::is_shortest_number_text(t)) << t;
  }
  for (const char* t : {"-0", "+1", "01", "1.50", "1.", ".5", "100000", "0.0001", "1e5", "1234567890123456", ""}) {
    EXPECT_FALSE(textio::import::is_shortest_number_text(t)) << t;
  }
}

// Parts written on other threads come out in the order taken, and a record
// of one missing field written in a part is still noted.
TEST(RecordEscaping, PartsOfTheOutputInOrder) {
  textio::import::output_value x;
  x.kind = textio::import::value_kind::text;
  x.bytes = "x";
  const textio::import::output_value missing;
  std::ostringstream out;
  {
    zvtool::csv_writer csv(out);
    const auto part = csv.part_sink();
    part->record(std::span(&missing, 1));
    csv.record(std::span(&x, 1));
    EXPECT_FALSE(csv.lone_missing_written());
    csv.take_part(*part);
    EXPECT_TRUE(csv.lone_missing_written());
    part->record(std::span(&x, 1));  // the part sink, emptied, collects another part
    csv.take_part(*part);
    csv.flush();
  }
  EXPECT_EQ(out.str(), "x\r\n\r\nx\r\n");
}

// Typed values at their extremes, in both outputs: the integers through their
// own digits, unsigned bits above the signed range, logicals as words.
TEST(RecordEscaping, TypedValuesInBothOutputs) {
  using textio::import::output_value;
  using textio::import::value_kind;
  const auto typed = [](value_kind kind, std::int64_t integer, double number = 0) {
    output_value v;
    v.kind = kind;
    v.integer = integer;
    v.number = number;
    return v;
  };
  const std::vector<output_value> row = {
      typed(value_kind::integer, std::numeric_limits<std::int64_t>::min()),
      typed(value_kind::integer, 0),
      typed(value_kind::unsigned_integer, -1),
      typed(value_kind::logical, 0, 1),
      typed(value_kind::logical, 0, 0),
  };
  std::ostringstream csv_out;
  std::ostringstream json_out;
  {
    zvtool::csv_writer csv(csv_out);
    zvtool::jsonl_writer json(json_out);
    csv.record(row);
    json.record(row);
    csv.flush();
    json.flush();
  }
  EXPECT_EQ(csv_out.str(), "-9223372036854775808,0,18446744073709551615,true,false\r\n");
  EXPECT_EQ(json_out.str(), "[-9223372036854775808, 0, 18446744073709551615, true, false]\n");
}

using zvtool::json_quote_units;
using zvtool::json_writer;

TEST(ToolJsonText, UnitsAsUtf8WithLoneSurrogatesEscaped) {
  const std::pair<std::u16string, std::string> cases[] = {
      {std::u16string(u"a\"\0\n\x7f", 5), "\"a\\\"\\u0000\\n\x7f\""},  // ASCII escapes as for bytes
      {u"\u00e9\u20ac", "\"\xC3\xA9\xE2\x82\xAC\""},                   // two- and three-byte forms
      {u"\U0001F600", "\"\xF0\x9F\x98\x80\""},                         // a pair combines
      {u"a\xD83D", R"("a\ud83d")"},                                    // high at the end
      {u"\xD83Dx", R"("\ud83dx")"},                                    // high before no low
      {u"\xDE00\xD83D", R"("\ude00\ud83d")"},                          // low before high: no pair
      {u"\xD83D\xD83D\xDE00", "\"\\ud83d\xF0\x9F\x98\x80\""},          // the second high pairs
  };
  for (const auto& [units, json] : cases) EXPECT_EQ(json_quote_units(units), json);
}

// Two spaces a level and empty containers inline; a message's arguments each
// by their own alternative.
TEST(ToolJsonWriter, LayoutAndMessageFailure) {
  zvtool::message_failure failure{"A:B:C:Key", resource_core::BaseMsgID("A:B:C", "Key"), u"m\n"};
  failure.id.args.emplace_back(std::in_place_index<1>, std::string("8-bit\xFF"));
  failure.id.args.emplace_back(std::in_place_index<2>, std::u16string(u"16\xD800"));
  json_writer out;
  out.begin_object();
  out.key("list");
  out.begin_array();
  out.begin_object();
  out.end_object();
  out.begin_array();
  out.end_array();
  out.end_array();
  out.key("error");
  zvtool::write_message_failure(out, failure);
  out.end_object();
  EXPECT_EQ(out.text(), R"({
  "list": [
    {},
    []
  ],
  "error": {
    "identifier": "A:B:C:Key",
    "key": "Key",
    "arguments": [
      "8-bit\u00ff",
      "16\ud800"
    ],
    "message": "m\n"
  }
})");
}

TEST(ToolMessageLine, JoinsLinesAndTrims) {
  const struct {
    std::u16string message;
    std::string line;
  } cases[] = {
      {u"One line.", "zvtextparser: A:B:C:Key: One line.\n"},
      {u"Accepted:\n'a', 'b'\n", "zvtextparser: A:B:C:Key: Accepted: 'a', 'b'\n"},
      {u"  x\r\ny\rz  ", "zvtextparser: A:B:C:Key: x y z\n"},
      {u"\n", "zvtextparser: A:B:C:Key: \n"},
  };
  for (const auto& c : cases) {
    zvtool::message_failure failure{"A:B:C:Key", {}, c.message};
    EXPECT_EQ(zvtool::message_line(failure), c.line);
  }
}

// The human line names the failed pair and adds a hint; the error object
// keeps the library's identifier and arguments.
TEST(ToolMessageLine, NamesThePairAndHints) {
  const struct {
    std::vector<std::string> args;
    std::string line;
  } cases[] = {
      {{"NumHeaderLines", "2", "DataLine", "0"},
       "ExpectedPositiveScalarInt: DataLine: The value must be a positive integer scalar.\n"},
      {{"delimeter", ","},
       "UnknownParameter: 'delimeter' is not a recognized option name. Did you mean 'Delimiter'?\n"},
      {{"NumHeader", "1"},
       "UnknownParameter: 'NumHeader' is not a recognized option name. Did you mean 'NumHeaderLines'?\n"},
      {{"Xyz", "1"}, "UnknownParameter: 'Xyz' is not a recognized option name.\n"},
      {{"Delimiter", "1"},
       "DelimiterType: Delimiter: The value of 'Delimiter' must be a character vector or a cell array "
       "of character vectors. The value 1 was read as a number; write '\"1\"' to give it as text.\n"},
      {{"DecimalSeparator", ",,"},
       "InvalidStringProperty: DecimalSeparator: The value of 'DecimalSeparator' must be a "
       "character vector. DecimalSeparator takes exactly one character.\n"},
      {{"DataLine"}, "OddNumberNVPairs: Name-value arguments must come in pairs: every option name needs a value.\n"},
  };
  for (const auto& c : cases) {
    textio::parser::options record;
    const auto failure = zvtool::apply_option_arguments(std::nullopt, c.args, record);
    ASSERT_TRUE(failure.has_value()) << c.line;
    EXPECT_EQ(zvtool::message_line(*failure), "zvtextparser: ZORVEK:textio:textio:" + c.line);
  }
}

nlohmann::ordered_json record_json(const textio::parser::options& record) {
  json_writer out;
  zvtool::write_options_record(out, record);
  return nlohmann::ordered_json::parse(out.text());
}

// The record as JSON names each field that a key sets, and the detection
// flags of such fields; the arguments that reproduce a record give it back,
// field for field: the defaults, a record with every field changed, and
// records of random rules.
TEST(ToolRecordJson, ReproducingArgumentsGiveTheRecordBack) {
  const auto gives_back = [](const textio::parser::options& record) {
    const auto json = record_json(record);
    for (const auto& f : textio::options::field_keys) EXPECT_TRUE(json.contains(std::string(f.field))) << f.field;
    for (const auto& item : json.items()) {
      const std::string field = item.key().starts_with("detecting_") ? item.key().substr(10) : item.key();
      EXPECT_NE(textio::options::key_of_field(field), nullptr) << item.key();
    }
    std::vector<std::string> args{"file"};
    for (const auto& a : zvtool::reproducing_arguments(record, textio::import::text_format{})) args.push_back(a);
    const auto parsed = zvtool::parse_subcommand_arguments("read", args);
    textio::parser::options back;
    EXPECT_FALSE(zvtool::apply_option_arguments(std::nullopt, parsed.option_arguments, back));
    EXPECT_EQ(record_json(back), json);
  };
  textio::parser::options changed;
  const auto failure = zvtool::apply_option_arguments(std::string(R"({
    "Delimiter": [",", "\\t", "--"], "LineEnding": {"$class": "cell", "$size": [0, 0]}, "TreatAsMissing": ["NA", ""],
    "CommentStyle": "%", "Whitespace": " \\\\t", "ThousandsSeparator": "'", "DateLocale": "de_CH", "ExpChars": "e",
    "FileType": "fixed", "VariableWidths": [1, 7], "NumHeaderLines": 1, "NumVariables": 2, "VariableNamesLine": 3,
    "VariableUnitsLine": 4, "VariableDescriptionsLine": 5, "ParserType": "line", "OutputBuilderType": "cell",
    "DecimalSeparator": ",", "MissingRule": "omitrow", "ImportErrorRule": "error", "ConsecutiveDelimitersRule": "error",
    "EmptyLineRule": "read", "ExtraColumnsRule": "wrap", "LeadingDelimitersRule": "ignore",
    "TrailingDelimitersRule": "error", "PartialFieldRule": "omitvar", "TrimNonNumeric": true})"),
                                                      {}, changed);
  ASSERT_FALSE(failure.has_value()) << zvtool::message_line(*failure);
  gives_back(textio::parser::options{});
  gives_back(changed);
  std::mt19937 random(20261125);
  for (int i = 0; i < 100; ++i) {
    std::vector<std::string> pairs;
    for (const auto& rule : textio::options::rule_options) {
      if (random() % 2 == 0) continue;
      pairs.emplace_back(rule.key);
      pairs.emplace_back(rule.flags[random() % rule.flags.size()]);
    }
    textio::parser::options record;
    ASSERT_FALSE(zvtool::apply_option_arguments(std::nullopt, pairs, record));
    gives_back(record);
  }
  // A value outside its enumeration (which no setter stores) shows as its
  // number.
  changed.partial_field_rule(static_cast<textio::enums::PartialFieldRule>(9));
  EXPECT_EQ(record_json(changed)["partial_field_rule"], 9);
  EXPECT_EQ(record_json(changed)["file_type"], "FixedWidth");
}

}  // namespace
