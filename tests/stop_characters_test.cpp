#include "parser/stop_characters.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

using textio::parser::stop_characters;
using text_list = std::vector<ustring>;

const text_list default_endings{u"\r\n", u"\n", u"\r"};

struct stop_case {
  const char* what;
  text_list first;
  text_list second;
  ustring expected;
};

const stop_case stop_cases[] = {
    {"comma and tab with the default line endings", {u",", u"\t"}, default_endings, u"\t\n\r,"},
    {"only first units count, once each", {u"abc", u"ab", u"x"}, {}, u"ax"},
    {"an empty string gives U+0000 at the front", {u",", u""}, {u"\n"}, ustring(u"\0\n,", 3)},
    {"a unit in both lists stands once", {u";"}, {u";;", u"\n"}, u"\n;"},
    {"unsigned order: 0x8000 and 0xFFFF after 0x7FFF", {u"\uFFFF", u"\u8000x"}, {u"\u7FFF"}, u"\u7FFF\u8000\uFFFF"},
    {"a surrogate sorts between 0xD7FF and 0xE000", {u"\uE000", u"\xDC00\xD800"}, {u"\uD7FF"}, u"\uD7FF\xDC00\uE000"},
    {"empty strings in both lists", {u""}, {u"", u"z"}, ustring(u"\0z", 2)},
};

TEST(StopCharacters, SortedUnionOfFirstUnits) {
  for (const stop_case& c : stop_cases) {
    EXPECT_EQ(stop_characters(c.first, c.second), c.expected) << c.what;
    // Neither the order of the lists nor the order within them matters.
    EXPECT_EQ(stop_characters(c.second, c.first), c.expected) << c.what << " (lists swapped)";
    text_list reversed(c.first.rbegin(), c.first.rend());
    EXPECT_EQ(stop_characters(reversed, c.second), c.expected) << c.what << " (first list reversed)";
  }
}

}  // namespace
