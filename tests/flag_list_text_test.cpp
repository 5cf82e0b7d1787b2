#include "errors/flag_list_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using textio::flag_list_text;

struct list_case {
  std::string (*build)();
  const char* expected;
};

const list_case list_cases[] = {
    {[] { return flag_list_text("keep"); }, "'keep'\n"},
    {[] { return flag_list_text("keep", "error"); }, "'keep', 'error'\n"},
    {[] { return flag_list_text("text", "delimitedtext", "fixedwidth"); }, "'text', 'delimitedtext', 'fixedwidth'\n"},
    {[] { return flag_list_text("fill", "omitrow", "omitvar", "error"); }, "'fill', 'omitrow', 'omitvar', 'error'\n"},
    {[] { return flag_list_text("a", "b", "c", "d", "e"); }, "'a', 'b', 'c', 'd', 'e'\n"},
    {[] { return flag_list_text("keep", "omitrow", "omitvar", "fill", "wrap", "error"); },
     "'keep', 'omitrow', 'omitvar', 'fill', 'wrap', 'error'\n"},
    // Flags are copied as they stand: no change of case, no escaping.
    {[] { return flag_list_text("Keep", "it's", "a\\b"); }, "'Keep', 'it's', 'a\\b'\n"},
    {[] { return flag_list_text("", "x"); }, "'', 'x'\n"},
};

TEST(FlagListText, QuotedCommaSeparatedWithOneFinalLineFeed) {
  for (const auto& c : list_cases) {
    EXPECT_EQ(c.build(), c.expected);
  }
}

}  // namespace
