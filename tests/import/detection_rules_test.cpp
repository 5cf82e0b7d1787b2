// Each rule of detection on a few lines made for it: the field the rule
// decides, as the corpus spells it (detection_corpus::fields_of). The corpus
// shows how well the rules do together; these show which rule went wrong.
#include <gtest/gtest.h>

#include <string>

#include "import/detect/detection.hpp"
#include "import/detection_corpus.hpp"

namespace {

// Cyrillic letters of `text` in Windows-1251, the rest as it is.
std::string windows_1251(const std::u16string& text) {
  std::string out;
  for (const char16_t u : text) {
    out += static_cast<char>(u >= u'\u0410' && u <= u'\u044F' ? u - 0x410 + 0xC0 : u);
  }
  return out;
}

std::string utf16be(const std::u16string& text) {
  std::string out;
  for (const char16_t u : text) {
    out += static_cast<char>(u >> 8);
    out += static_cast<char>(u & 0xFF);
  }
  return out;
}

const std::string four_by_four = "a,b,c,d\n1,2,3,4\n5,6,7,8\n9,10,11,12\n13,14,15,16\n";

struct rule_case {
  const char* rule;
  const char* name;
  std::string text;
  const char* field;
  std::string expected;
};

const rule_case rule_cases[] = {
    // Dialect: candidates, the score of each and the order among equals.
    {"dialect", "punctuation_on_every_line_is_a_candidate", "a~b~c\n1~2~3\n4~5~6\n7~8~9\n", "delimiter", "~"},
    {"dialect", "quotes_left_in_fields_count_against", "'a','b'\n'x',1\n'y',2\n'z',3\n", "quote", "'"},
    {"dialect", "tab_before_semicolon_on_a_tie", "a\tb;c\n1\t2;3\n4\t5;6\n7\t8;9\n", "delimiter", "tab"},
    // Table end: after a break, rows that mostly do not fit end the table,
    // though one of them fits.
    {"table_end", "second_table_with_one_row_that_fits", four_by_four + "\nx,y\n1,2\n3,4,5,6\n7,8\n", "table_end", "6"},
    {"table_end", "rows_that_fit_after_a_break_go_on", four_by_four + "\nx,y\n1,2,3,4\n5,6,7,8\n9,10,11,12\n",
     "table_end", "-"},
    // Comment markers at line starts.
    {"comment", "double_slash", "// exported\n// by hand\nx,y\n1,2\n3,4\n5,6\n", "comment", "//"},
    {"comment", "percent", "% exported\nx,y\n1,2\n3,4\n5,6\n", "comment", "%"},
    // Types: numbers with leading zeros are codes.
    {"types", "codes_with_leading_zeros", "code,v\n007,1\n012,2\n100,3\n", "types", "sd"},
    // Grouping: one clearly grouped number under a decimal comma is enough.
    {"thousands", "one_grouped_number", "a;b\n1.234,5;x\n2,5;y\n3,5;z\n", "thousands", "."},
    // Encoding: short words of another script are no Western European text.
    {"encoding", "cyrillic_words_of_three_letters",
     windows_1251(u"word,n\n\u041C\u0438\u0440,1\n\u0414\u043E\u043C,2\n\u0421\u0430\u0434,3\n\u041B\u0435\u0441,4\n"),
     "encoding", "WINDOWS-1251"},
    // UTF-16 without a mark: three in four high bytes zero is enough.
    {"encoding", "utf16be_greek_letters_in_every_row",
     utf16be(u"alpha,\u03B1\u03B2\nbeta,\u03B3\u03B4\ngamma,\u03B5\u03B6\ndelta,\u03B7\u03B8\n"), "encoding",
     "UTF-16BE"},
};

TEST(DetectionRules, EachRuleOnLinesMadeForIt) {
  for (const rule_case& c : rule_cases) {
    const auto got = detection_corpus::fields_of(textio::import::detect(c.text, true, {}, {}));
    EXPECT_EQ(got.at(c.field), c.expected) << c.rule << ": " << c.name;
  }
}

}  // namespace
