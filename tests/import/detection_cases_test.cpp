// Detection's hard cases one by one, what it must leave alone, and input that
// gives it nothing to go by.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "errors/msg_id_exception.hpp"
#include "import/detection.hpp"
#include "import/encoding.hpp"

namespace {

using textio::enums::ParserType;
using textio::import::detect;
using textio::import::detection_result;
using textio::import::user_choices;

struct layout_case {
  const char* name;
  std::string text;
  std::u16string delimiter;  // empty: none (one column)
  ParserType parser;
  std::uint64_t header_lines;
  std::uint64_t names_line;
  std::uint64_t num_variables;
  char16_t decimal;
  std::u16string thousands;
  std::optional<std::uint64_t> table_end;
};

const std::string fixed_width_table =
    "name          year  value\nBurkina Faso  1952  31.97\nBenin         1952  38.22\nCote d Ivoire 1952  40.47\n"
    "Algeria       1952  43.07\n";

const layout_case layout_cases[] = {
    {"semicolon_title_names_decimal_comma",
     "Monthly report\nregion;amount;share\nnorth;1,5;0,25\nsouth;2,75;0,5\neast;3,5;0,125\nwest;4,0;0,125\n", u";",
     ParserType::Delimited, 2, 2, 3, u',', u"", std::nullopt},
    {"grouped_thousands_with_decimal_comma", "a;b\n1;1.234.567,8\n2;2.345,5\n3;12.345.678,25\n4;3.456,0\n", u";",
     ParserType::Delimited, 1, 1, 2, u',', u".", std::nullopt},
    {"no_names_when_first_row_is_data", "1,2.5,x\n2,3.5,y\n3,4.5,z\n4,5.5,w\n", u",", ParserType::Delimited, 0, 0, 3,
     u'.', u"", std::nullopt},
    {"trailing_delimiter_is_no_variable", "a;b;\n1;2;\n3;4;\n5;6;\n", u";", ParserType::Delimited, 1, 1, 2, u'.', u"",
     std::nullopt},
    {"footnotes_end_the_table", "x,y\n1,2\n3,4\n5,6\n7,8\n\nSource: a survey of nothing in particular\n", u",",
     ParserType::Delimited, 1, 1, 2, u'.', u"", 6},
    {"blank_aligned_columns", "  x    y    z\n  1  2.5  abc\n  2  3.5  def\n 10 12.5  ghi\n", u" ", ParserType::Tabular,
     1, 1, 3, u'.', u"", std::nullopt},
    {"fixed_width_with_blanks_inside_fields", fixed_width_table, u"", ParserType::FixedWidth, 1, 1, 3, u'.', u"",
     std::nullopt},
    {"one_column", "value\n1\n2\n3\n4\n", u"", ParserType::Delimited, 1, 1, 1, u'.', u"", std::nullopt},
};

class Layout : public ::testing::TestWithParam<layout_case> {};

TEST_P(Layout, IsFound) {
  const layout_case& c = GetParam();
  const detection_result r = detect(c.text, true, {}, {});
  const auto& o = r.options;
  EXPECT_EQ(o.parser_type(), c.parser);
  if (c.parser == ParserType::Delimited) {
    EXPECT_EQ(o.delimiter(), c.delimiter.empty() ? std::vector<std::u16string>{} : std::vector{c.delimiter});
  }
  EXPECT_EQ(o.num_header_lines(), c.header_lines);
  EXPECT_EQ(o.variable_names_line(), c.names_line);
  EXPECT_EQ(o.num_variables(), c.num_variables);
  EXPECT_FALSE(o.detecting_delimiter());
  EXPECT_FALSE(o.detecting_num_header_lines());
  EXPECT_FALSE(o.detecting_num_variables());
  EXPECT_EQ(o.decimal_separator(), c.decimal);
  EXPECT_EQ(o.thousands_separator(), c.thousands);
  EXPECT_EQ(r.format.table_end_line, c.table_end);
  EXPECT_GT(r.report.confidence, 0.5);
}

INSTANTIATE_TEST_SUITE_P(Detection, Layout, ::testing::ValuesIn(layout_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Detection, FixedWidthCutsTheNamesRowToo) {
  const detection_result r = detect(fixed_width_table, true, {}, {});
  EXPECT_EQ(r.report.variable_names, (std::vector<std::string>{"name", "year", "value"}));
  // Fixed width given without widths: the widths are found.
  textio::parser::options given;
  given.parser_type(ParserType::FixedWidth);
  user_choices choices;
  choices.keys = {"ParserType"};
  const detection_result widths = detect(fixed_width_table, true, given, choices);
  EXPECT_EQ(widths.options.field_widths(), r.options.field_widths());
  EXPECT_EQ(widths.options.num_variables(), 3u);
  // The delimited reader given without a delimiter: the delimiter is found.
  given.parser_type(ParserType::Delimited);
  const detection_result delimited = detect("a;b\n1;2\n3;4\n", true, given, choices);
  EXPECT_EQ(delimited.options.delimiter(), std::vector<std::u16string>{u";"});
}

TEST(Detection, QuoteAndEscapeAreChosenWithTheDelimiter) {
  // ' encloses fields with commas; a backslash escapes quotes inside.
  const detection_result single = detect("a,b\n1,'x, y'\n2,'z, w'\n3,'v, u'\n", true, {}, {});
  EXPECT_EQ(single.format.quote, '\'');
  EXPECT_EQ(single.options.num_variables(), 2u);
  const detection_result backslash =
      detect("a,b\n1,\"say \\\"hi\\\", then\"\n2,\"x\"\n3,\"and \\\"bye\\\"\"\n", true, {}, {});
  EXPECT_EQ(backslash.format.escape, textio::import::escape_style::backslash);
  EXPECT_TRUE(backslash.format.quote_detected);
  // A quote that never closes is no quote character, though it would cut the
  // same table.
  const detection_result stray = detect("a,b\n1,2\n3,4\n5,\"6\n", true, {}, {});
  EXPECT_NE(stray.format.quote, '"');
}

TEST(Detection, NamesOverSeveralLinesAreJoinedPerColumn) {
  const detection_result r = detect(
      "name,height,weight\n,m,kg\nann,1.61,55.5\nbob,1.82,80.25\ncid,1.75,70.5\n"
      "dan,1.69,66.0\n",
      true, {}, {});
  EXPECT_EQ(r.options.variable_names_line(), 1u);
  EXPECT_EQ(r.options.num_header_lines(), 2u);
  EXPECT_EQ(r.format.variable_names, (std::vector<std::string>{"name", "height m", "weight kg"}));
}

TEST(Detection, CommentLinesGiveTheCommentStyle) {
  const detection_result r = detect("# made by hand\nx\ty\n1\t2\n# a note\n3\t4\n5\t6\n", true, {}, {});
  EXPECT_EQ(r.options.comment_style(), std::vector<std::u16string>{u"#"});
  EXPECT_EQ(r.options.num_header_lines(), 2u);
  EXPECT_EQ(r.options.variable_names_line(), 2u);
}

TEST(Detection, WhatTheUserGaveStays) {
  textio::parser::options given;
  given.delimiter(std::vector<std::u16string>{u"|"});
  given.num_header_lines(0);
  given.num_variables(7);
  given.detecting_num_variables(false);
  given.decimal_separator(u'.');
  user_choices choices;
  choices.keys = {"DecimalSeparator", "VariableNamesLine", "CommentStyle"};
  choices.quote = '\0';
  choices.encoding = "ISO-8859-1";
  const detection_result r = detect("# x\nname;v\na;1,5\nb;2,5\nc;3,5\n", true, given, choices);
  EXPECT_EQ(r.options.delimiter(), std::vector<std::u16string>{u"|"});
  EXPECT_EQ(r.options.num_header_lines(), 0u);
  EXPECT_EQ(r.options.num_variables(), 7u);
  EXPECT_EQ(r.options.decimal_separator(), u'.');
  EXPECT_EQ(r.options.variable_names_line(), 0u);
  EXPECT_TRUE(r.options.comment_style().empty());
  EXPECT_EQ(r.format.quote, '\0');
  EXPECT_FALSE(r.format.quote_detected);
  EXPECT_EQ(r.format.encoding, "ISO-8859-1");
}

TEST(Encoding, IsRecognisedAndDecoded) {
  struct {
    std::string raw;
    const char* name;
    std::string decoded;
  } cases[] = {
      {"\xEF\xBB\xBF"
       "a,b\n",
       "UTF-8", "a,b\n"},
      {std::string("\xFF\xFE"
                   "a\0,\0b\0",
                   8),
       "UTF-16LE", "a,b"},
      {std::string("\0a\0,\0\xE9", 6), "UTF-16BE", "a,\xC3\xA9"},
      {std::string("\xFF\xFE\0\0"
                   "a\0\0\0",
                   8),
       "UTF-32LE", "a"},
      {"caf\xC3\xA9;1\n", "UTF-8", "caf\xC3\xA9;1\n"},
      {"Stra\xDF"
       "e;K\xF6ln\n",
       "WINDOWS-1252",
       "Stra\xC3\x9F"
       "e;K\xC3\xB6ln\n"},
  };
  for (const auto& c : cases) {
    const textio::import::encoding_guess g = textio::import::detect_encoding(c.raw);
    EXPECT_EQ(g.name, c.name) << c.raw;
    EXPECT_EQ(textio::import::decode_sample(c.raw, g.name, true), c.decoded) << c.raw;
  }
  // A character cut off by the end of a sample is dropped, not an error.
  EXPECT_EQ(textio::import::decode_sample("ab\xC3", "UTF-8", false), "ab");
  EXPECT_EQ(textio::import::decode_sample(std::string("a\0b", 3), "UTF-16LE", false), "a");
}

std::string message_of(const std::function<void()>& f) {
  try {
    f();
  } catch (const foundation::core::except::IMsgIDException& e) {
    std::string s = e.GetBaseMsgID().key;
    for (const auto& a : e.GetBaseMsgID().args) {
      s += ' ';
      s += std::holds_alternative<std::uint64_t>(a) ? std::to_string(std::get<std::uint64_t>(a))
                                                    : std::get<std::string>(a);
    }
    return s;
  }
  return "no error";
}

TEST(Encoding, BytesInvalidInAForcedEncodingAreAnErrorWithTheirOffset) {
  EXPECT_EQ(message_of([] { textio::import::decode_sample("ab\ncd\xE9", "UTF-8", true); }), "InvalidUtf8 5");
  EXPECT_EQ(message_of([] { textio::import::decode_sample("abc\x80z", "ASCII", true); }), "InvalidEncoding ASCII 3");
  EXPECT_EQ(message_of([] { textio::import::decode_sample("a", "NO-SUCH-ENCODING", true); }),
            "UnknownEncoding NO-SUCH-ENCODING");
  user_choices forced;
  forced.encoding = "UTF-8";
  EXPECT_EQ(message_of([&] { detect("x\n\xFF\n", true, {}, forced); }), "InvalidUtf8 2");
}

TEST(Detection, InputWithNothingToGoByGivesALowConfidence) {
  std::string binary;
  for (int i = 0; i < 4096; ++i) binary += static_cast<char>((i * 7919) % 256);
  std::string every_line_different;
  for (std::size_t i = 1; i < 40; ++i) every_line_different += std::string(i * 3, ',') + "x\n";
  const std::string huge_line(std::size_t{1} << 20, 'a');
  struct {
    const char* name;
    std::string raw;
    double at_most;
  } cases[] = {
      {"empty", "", 0.0},
      {"one_line", "a,b,c\n", 0.5},
      {"binary", binary, 0.2},
      {"one_huge_line", huge_line, 0.5},
      {"every_line_different", every_line_different, 0.5},
  };
  for (const auto& c : cases) {
    for (const bool whole : {true, false}) {
      const detection_result r = detect(c.raw, whole, {}, {});
      EXPECT_LE(r.report.confidence, c.at_most) << c.name;
      EXPECT_GE(r.report.confidence, 0.0) << c.name;
    }
  }
}

}  // namespace
