#include "name_value/text_checks.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "support/expect_message.hpp"
#include "zvarray/value.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using hv::Value;
using test_support::text_arg;
using namespace textio::options;

Value chars(hv::Dims dims, std::u16string_view units) { return Value::chars(std::move(dims), units); }
Value texts(hv::Dims dims, const std::vector<std::u16string>& units) {
  std::vector<Value> elements;
  for (const auto& u : units) elements.push_back(Value::text(u));
  return Value::cell(std::move(dims), std::move(elements));
}

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
      {"char 0x0", chars({0, 0}, u""), true, false},
      {"char 1x5", chars({1, 5}, u"ab\\tc"), true, false},
      {"char 0x3", chars({0, 3}, u""), false, false},
      {"char 2x3", chars({2, 3}, u"abcdef"), false, false},
      {"char 3x1", chars({3, 1}, u"abc"), false, false},
      {"char 1x1x2", chars({1, 1, 2}, u"ab"), false, false},
      {"char 1x3x1 (host keeps two dimensions)", chars({1, 3, 1}, u"abc"), true, false},
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
      {"cell holding a 2x3 char", Value::cell_row({chars({2, 3}, u"abcdef")}), false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const hvArray_tag* v = c.value.get();
    EXPECT_EQ(is_text(v), c.text);
    EXPECT_EQ(is_text_list(v), c.list);
    if (c.text) {
      EXPECT_NO_THROW(require_text(v, "Opt"));
    } else {
      EXPECT_MESSAGE(require_text(v, "Opt"), msg::InvalidStringProperty, text_arg("Opt"));
    }
    if (c.text || c.list) {
      EXPECT_NO_THROW(require_text_or_list(v, "Opt"));
      EXPECT_NO_THROW(require_delimiter_value(v));
    } else {
      EXPECT_MESSAGE(require_text_or_list(v, "Opt"), msg::InvalidStringOrCellStringProperty, text_arg("Opt"));
      EXPECT_MESSAGE(require_delimiter_value(v), msg::DelimiterType);
    }
  }
}

}  // namespace
