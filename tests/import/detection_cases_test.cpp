// Detection over the corpus of real files (tests/data/detect), then its hard
// cases one by one, what it must leave alone, and input that gives it
// nothing to go by.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/detection_corpus.hpp"
#include "import/detect/encoding.hpp"
#include "import/detect/fixed_width_columns.hpp"

namespace {

// The accuracy reached on the corpus, per field; a change that lowers one
// fails here.
const std::map<std::string, double> floors = {
    {"encoding", 1.0},     {"delimiter", 0.984},  {"quote", 1.0},           {"escape", 1.0},
    {"header_lines", 1.0}, {"names_line", 0.992}, {"num_variables", 0.984}, {"decimal", 1.0},
    {"thousands", 1.0},    {"comment", 1.0},      {"table_end", 1.0},       {"types", 1.0},
};

TEST(DetectionCorpus, AccuracyHoldsItsFloor) {
  const std::string dir = ZVTP_DETECT_CORPUS;
  const auto entries = detection_corpus::load_manifest(dir);
  ASSERT_GE(entries.size(), 80u);
  std::map<std::string, int> right;
  int variables = 0;  // over the files whose manifest gives types, one letter per variable
  // Files whose delimiter, header lines, names line and variable count are
  // all right: of all files, of those answered blind, of the fixed-width ones.
  std::map<std::string, std::pair<int, int>> whole_layout;
  for (const auto& e : entries) {
    bool whole = true;
    const std::string sample = detection_corpus::read_sample(dir + "/" + e.file, whole);
    const auto got = detection_corpus::detect_fields(sample, whole);
    int four = 0;
    for (const auto& field : detection_corpus::fields) {
      const std::string& want = e.expected.at(field);
      if (detection_corpus::same_answer(field, want, got.at(field), sample)) {
        ++right[field];
        four += field == "delimiter" || field == "header_lines" || field == "names_line" || field == "num_variables";
      } else {
        std::printf("  %-48s %-14s expected %-12s got %s\n", e.file.c_str(), field.c_str(), want.c_str(),
                    got.at(field).c_str());
      }
    }
    for (const char* group : {"all files", "blind files", "fixed width"}) {
      const std::string g = group;
      if (g == "blind files" && e.expected.at("derived") != "blind") continue;
      if (g == "fixed width" && !e.expected.at("delimiter").starts_with("fixed:")) continue;
      whole_layout[g].first += four == 4;
      ++whole_layout[g].second;
    }
    const auto types = e.expected.find("types");
    if (types == e.expected.end()) continue;
    for (std::size_t i = 0; i < types->second.size(); ++i, ++variables) {
      const char g = i < got.at("types").size() ? got.at("types")[i] : '?';
      if (g == types->second[i]) {
        ++right["types"];
      } else {
        std::printf("  %-48s variable %zu expected %c got %c\n", e.file.c_str(), i + 1, types->second[i], g);
      }
    }
  }
  ASSERT_GT(variables, 500);
  for (const auto& [field, floor] : floors) {
    const double total = field == "types" ? variables : static_cast<double>(entries.size());
    const double accuracy = right[field] / total;
    std::printf("%-14s %5.1f %% (%d of %.0f)\n", field.c_str(), 100 * accuracy, right[field], total);
    EXPECT_GE(accuracy + 1e-9, floor) << field;
  }
  for (const auto& [group, counts] : whole_layout) {
    std::printf("all four right, %-11s %5.1f %% (%d of %d)\n", group.c_str(), 100.0 * counts.first / counts.second,
                counts.first, counts.second);
  }
  EXPECT_GE(whole_layout["all files"].first, whole_layout["all files"].second - 3);
}

using textio::enums::ParserType;
using textio::import::detect;
using textio::import::detection_result;
using textio::import::user_choices;

// What detection finds, as the corpus spells it: delimiter, header lines,
// names line, variables, decimal and thousands separators, table end, quote,
// escape and comment marker.
std::string layout_of(const detection_result& r) {
  const auto got = detection_corpus::fields_of(r);
  std::string out = got.at("delimiter").starts_with("fixed:") ? "fixed" : got.at("delimiter");
  for (const char* field : {"header_lines", "names_line", "num_variables", "decimal", "thousands", "table_end", "quote",
                            "escape", "comment"}) {
    out += std::string(" ") + got.at(field);
  }
  for (const std::string& name : r.format.variable_names) out += " [" + name + "]";  // names joined over lines
  return out;
}

const std::string fixed_width_table =
    "name          year  value\nBurkina Faso  1952  31.97\nBenin         1952  38.22\nCote d Ivoire 1952  40.47\n"
    "Algeria       1952  43.07\n";

const std::array<std::string, 3> layout_cases[] = {
    {"semicolon_title_names_decimal_comma",
     "Monthly report\nregion;amount;share\nnorth;1,5;0,25\nsouth;2,75;0,5\neast;3,5;0,125\nwest;4,0;0,125\n",
     "; 2 2 3 , - - \" double -"},
    {"names_over_units", "name,height,weight\n,m,kg\nann,1.61,55.5\nbob,1.82,80.25\ncid,1.75,70.5\ndan,1.69,66.0\n",
     ", 2 1 3 . - - \" double - [name] [height m] [weight kg]"},
    {"decimal_comma_by_one_vote", "x;y\n1,5;2.5\n3,5;7\n4;8\n5;9\n", "; 1 1 2 , - - \" double -"},
    {"trailing_delimiter_is_no_variable", "a;b;\n1;2;\n3;4;\n5;6;\n", "; 1 1 2 . - - \" double -"},
    {"fixed_width_with_blanks_inside_fields", fixed_width_table, "fixed 1 1 3 . - - \" double -"},
    // A backslash escapes quotes inside; a quote that never closes is no
    // quote, though it would cut the same table.
    {"backslash_escape", "a,b\n1,\"say \\\"hi\\\", then\"\n2,\"x\"\n3,\"and \\\"bye\\\"\"\n",
     ", 1 1 2 . - - \" backslash -"},
    // A rule line under the names: a header line, and its runs are the
    // columns; rules above the names too; a rule of one run leaves the
    // columns to the rows.
    {"rule_line_columns",
     "Col1      Col2 Col3\n---- --------- ----\n 1.2   's world    1\n 2.4     hello    2\n 3.6         x    3\n",
     "fixed 2 1 3 . - - \" double -"},
    {"rules_around_names", "===== =====\nname  value\n===== =====\nab c    1.5\nde      2.5\nfg h    3.5\n",
     "fixed 3 2 2 . - - \" double -"},
    {"rule_over_an_empty_column", "a    b    c\n---- ---- ----\n1.5       x\n2.5       y\n3.5       z\n",
     "fixed 2 1 3 . - - \" double -"},
    {"missing_values_are_no_rule", "x y z\n- - -\n1 2 3\n4 5 6\n7 8 9\n", "blanks 1 1 3 . - - \" double -"},
    {"one_run_rule", "name   value  note\n------------------\nab c   1.5    x\nde     2.5    y\nfg h   3.5    z\n",
     "fixed 2 1 3 . - - \" double -"},
    {"stray_quote", "a,b\n1,2\n3,4\n5,\"6\n", ", 1 1 2 . - - none double -"},
};

TEST(Detection, FindsTheLayout) {
  for (const auto& [name, text, layout] : layout_cases) {
    const detection_result r = detect(text, true, {}, {});
    EXPECT_EQ(layout_of(r), layout) << name;
    EXPECT_FALSE(r.options.detecting_delimiter() || r.options.detecting_num_header_lines() ||
                 r.options.detecting_num_variables())
        << name;
    EXPECT_GT(r.report.confidence, 0.5) << name;
    EXPECT_TRUE(r.format.quote_detected) << name;
  }
}

// A table of `counts[i]` rows of `i + 1` fields each, names first.
std::string ragged_table(const std::vector<std::size_t>& counts) {
  std::string text;
  std::size_t row = 0;
  for (std::size_t fields = 1; fields <= counts.size(); ++fields) {
    for (std::size_t n = 0; n < counts[fields - 1]; ++n, ++row) {
      for (std::size_t f = 0; f < fields; ++f) {
        if (f > 0) text += ',';
        text += row == 0 ? "name" + std::to_string(f + 1) : std::to_string(row * 10 + f) + ".5";
      }
      text += '\n';
    }
  }
  return text;
}

// Records whose third field is quoted over four lines: a 1000-line sample
// ends inside one.
std::string register_table(int records = 3000) {
  std::string text = "id,name,address,postcode,phone,joined\n";
  for (int i = 1; i <= records; ++i) {
    const std::string n = std::to_string(i);
    text += n + ",Company " + n + ",\"" + n + " High Street\nUnit " + n + "\nSpringfield\nNorthshire\",AB" + n +
            " 1CD,0161 555 " + n + ",2015-06-01\n";
  }
  return text;
}

// Rows of another field count that run on from the table are its records;
// only a break (a blank line, a line of one field) followed by rows that do
// not fit ends it, and a record cut by the sample's end never does.
TEST(Detection, KeepsEveryRecordOfTheTable) {
  const std::string table = "a,b,c,d\n1,2,3,4\n5,6,7,8\n9,10,11,12\n13,14,15,16\n";
  // The names row names six of eight variables; the others by position.
  const std::string ragged_names = " [name1] [name2] [name3] [name4] [name5] [name6] [Var7] [Var8]";
  // Line 998 is blank; the sample's last record, from line 999, is cut.
  const std::string blank_line_and_cut = register_table(249) + "\n" + register_table(1).substr(38);
  const struct {
    const char* name;
    std::string text;
    std::string layout;
  } cases[] = {
      {"record_cut_by_the_line_bound", register_table(), ", 1 1 6 . - - \" double -"},
      {"blank_line_and_a_cut_record", blank_line_and_cut, ", 1 1 6 . - - \" double -"},
      {"columns_added", ragged_table({0, 0, 0, 0, 0, 7, 2, 12}), ", 1 1 8 . - - \" double -" + ragged_names},
      {"columns_added_later", ragged_table({0, 0, 0, 0, 0, 11, 10, 10}), ", 1 1 8 . - - \" double -" + ragged_names},
      {"columns_dropped", "a,b,c,d,e\n1,2,3,4,5\n6,7,8,9,10\n1,2,3\n4,5,6\n7,8,9\n1,2,3\n",
       ", 1 1 5 . - - \" double -"},
      {"second_table_after_a_blank_line", table + "\nx,y\n1,2\n3,4\n5,6\n", ", 1 1 4 . - 6 \" double -"},
      {"notes_after_the_table", table + "Note one\nNote two\nNote three\n", ", 1 1 4 . - 6 \" double -"},
      {"rows_of_two_fields_run_on", table + "1,2\n3,4\n5,6\n7,8\n9,10\n11,12\n", ", 1 1 4 . - - \" double -"},
  };
  for (const auto& c : cases) {
    const detection_result r = detect(c.text, true, {}, {});
    EXPECT_EQ(layout_of(r), c.layout) << c.name;
  }
}

// Header lines and names: what is above the table is header, every variable
// gets a name that agrees with its values.
TEST(Detection, NamesTheVariablesAsAPersonWould) {
  const std::string invoices = "2015-06-01,Acme Ltd,300.50\n2015-06-03,Bolt plc,451.00\n2015-06-09,Crane Co,260.75\n";
  const struct {
    const char* name;
    std::string text;
    std::uint64_t header_lines;
    std::string names;
    bool generated;
  } cases[] = {
      {"no_names_row", "1,2.5,x\n3,4.5,y\n5,6.5,z\n", 0, "Var1 Var2 Var3", true},
      {"row_names_blank_separated", "\"x\" \"y\"\n\"1\" 0.5 7\n\"2\" 0.25 8\n\"3\" 1.5 9\n", 1, "Var1 x y", false},
      {"row_names_one_column", "\"x\"\n\"a\" 0.5\n\"b\" 0.25\n\"c\" 1.5\n", 1, "Var1 x", false},
      {"title_and_blank_line",
       "Invoices over \xC2\xA3"
       "250 paid in June 2015\n\nDate,Supplier,Amount\n" +
           invoices,
       3, "Date Supplier Amount", false},
      {"comment_block", "# exported 2015-06-30\n# by the finance office\nDate,Supplier,Amount\n" + invoices, 3,
       "Date Supplier Amount", false},
      {"names_over_units", "name,height,weight\n,m,kg\nann,1.61,55.5\nbob,1.82,80.25\ncid,1.75,70.5\n", 2,
       "name height m weight kg", false},
      {"quoted_names_with_blanks",
       "\"Parent Department\",\"Organisation\",\"Expense Type\",\"Amount\"\n\"Health\",\"NHS Trust\",\"IT\",1200.5\n"
       "\"Health\",\"Public Health\",\"Office\",300\n\"Home Office\",\"Border Force\",\"Travel\",455.25\n",
       1, "Parent Department Organisation Expense Type Amount", false},
      // Without the sep: key the comma would win the tie.
      {"front_matter_naming_the_delimiter", "---\nsep: \";\"\n---\nname;city,country\nann;Leeds,UK\nbob;York,UK\n", 4,
       "name city,country", false},
      {"front_matter", "---\ntitle: Prices\n---\nname,price\napple,1.5\npear,2\nfig,3\n", 4, "name price", false},
  };
  for (const auto& c : cases) {
    const detection_result r = detect(c.text, true, {}, {});
    std::string names;
    for (const std::string& n : r.report.variable_names) names += (names.empty() ? "" : " ") + n;
    EXPECT_EQ(r.options.num_header_lines(), c.header_lines) << c.name;
    EXPECT_EQ(names, c.names) << c.name;
    EXPECT_EQ(r.report.names_generated, c.generated) << c.name;
    EXPECT_EQ(r.report.variable_names.size(), r.options.num_variables()) << c.name;
  }
}

// The confidence falls with each reason to doubt, and the report says why.
TEST(Detection, ConfidenceSaysWhatItDoubts) {
  std::string long_table = "a,b,c\n";
  for (int i = 0; i < 40; ++i) long_table += std::to_string(i) + "," + std::to_string(i * 2) + ".5,x\n";
  const std::string few_rows = "a,b,c\n1,2.5,x\n2,3.5,y\n3,4.5,z\n";
  const std::string with_notes = long_table + "\nNote one\nNote two\nNote three\n";
  const detection_result sure = detect(long_table, true, {}, {});
  EXPECT_TRUE(sure.report.doubts.empty()) << sure.report.doubts.front();
  for (const auto& [text, doubt] : {std::pair<std::string, std::string>{few_rows, "the guess rests on 3 rows of data"},
                                    {with_notes, "the table seems to end at line 42"}}) {
    const detection_result r = detect(text, true, {}, {});
    EXPECT_LT(r.report.confidence, sure.report.confidence - 0.1) << doubt;
    ASSERT_EQ(r.report.doubts.size(), 1u) << doubt;
    EXPECT_TRUE(r.report.doubts[0].starts_with(doubt)) << r.report.doubts[0];
  }
}

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
  EXPECT_EQ(layout_of(detect("a;b\n1;2\n3;4\n", true, given, choices)), "; 1 1 2 . - - \" double -");
}

// Grouping separators only where a column groups every number by three and
// the delimiter cannot be mistaken for them; decimal separators as before.
TEST(Detection, GuessesAGroupingSeparatorOnlyWithEvidence) {
  const std::array<std::string, 3> cases[] = {
      // Three numbers in one field of a tab or comma table stay apart.
      {"tab_blank_triples", "a\tb\tc\n255 250 250\t\tsnow\n1 2 3\t\tx\n248 248 255\t\tghost\n", ". -"},
      {"tab_blank_triples_only", "a\tb\n255 250 250\tsnow\n248 248 255\tghost\n245 245 245\tsmoke\n", ". -"},
      {"tab_blank_grouped", "a\tb\n1 234 567\tx\n12 345\ty\n3 000\tz\n", ". -"},
      {"comma_blank_grouped", "a,b\n1 234 567,x\n12 345,y\n3 000,z\n", ". -"},
      // With a semicolon a blank groups, when some number is clearly grouped.
      {"semicolon_blank_grouped", "a;b\n1 234,5;x\n12 345,25;y\n999,5;z\n", ", blank"},
      {"semicolon_blank_triples", "a;b\n255 250 250;x\n248 248 255;y\n245 245 245;z\n", ". -"},
      // A column that also holds 1.2.3, dates or long ungrouped numbers.
      {"dot_with_dates", "a;b\n1.234.567;x\n05.02.2020;y\n2.345,5;z\n999,5;w\n", ", -"},
      {"dot_consistent", "a;b\n1.234.567;x\n2.345,5;y\n999,5;z\n", ", ."},
      {"dot_and_long_ungrouped", "a;b\n1.234,5;x\n12345,5;y\n999,5;z\n", ", -"},
      {"comma_grouped_tab", "a\tb\n1,234,567\tx\n2,345.5\ty\n999.5\tz\n", ". ,"},
      {"comma_with_indian_grouping", "a\tb\n1,234,567\tx\n12,34,567\ty\n999.5\tz\n", ". -"},
  };
  for (const auto& [name, text, want] : cases) {
    const auto got = detection_corpus::fields_of(detect(text, true, {}, {}));
    const std::string thousands = got.at("thousands") == " " ? "blank" : got.at("thousands");
    EXPECT_EQ(got.at("decimal") + " " + thousands, want) << name;
  }
}

// A colon that is part of a URL or a time does not delimit, though it would
// cut each of these rows into the same number of fields and tab does not.
TEST(Detection, ColonsInsideValuesDoNotDelimit) {
  const std::pair<std::string, std::string> cases[] = {
      {"urls",
       "alpha\thttp://example.org/a\t1\nbeta\thttps://example.org/b\t2\t\ngamma\thttp://example.net/c\n"
       "x\thttp://example.com/d\t4\t5\n"},
      {"times", "a b\t12:30\tx\nc\t08:00\ty\t\nd e f\t10:10\tz\ng\t11:20\tw\t\nh\t11:25\tv\n"},
      {"date_times",
       "a b\t2020-01-01 12:30\tx y\nc\t2020-01-02 08:00\ty\t\nd e f\t2020-01-03 10:10\tz\n"
       "g\t2020-01-04 11:20\tw\t\nh\t2020-01-05 11:25\tv u\n"},
  };
  for (const auto& [name, text] : cases) {
    EXPECT_EQ(detection_corpus::fields_of(detect(text, true, {}, {})).at("delimiter"), "tab") << name;
  }
  // Where the colon delimits, it still wins.
  EXPECT_EQ(detection_corpus::fields_of(detect("root:x:0:0\ndaemon:x:1:1\nbin:x:2:2\n", true, {}, {})).at("delimiter"),
            ":");
}

// Fixed-width columns found from the rows: a reference list of an object
// name, a 19-character code ending in a letter and free text of any length,
// a few lines of which run far past the others.
TEST(FixedWidth, FreeTextEndsTheLastColumn) {
  const char* names[] = {"LZ Aqr", "V1333 Aql", "Cyg X-2", "GX 339-4", "Her X-1"};
  const char* words[] = {"Tomsick,", "J.A.,", "et", "al.", "2002,", "ApJ", "581,", "570", "(Orb.Per.)"};
  std::string text;
  for (int i = 0; i < 150; ++i) {
    std::string line = names[i % 5];
    line.resize(13, ' ');
    line += "2002ApJ..." + std::to_string(100 + i) + "..570" + static_cast<char>('A' + i % 26) + " ";
    const int count = i % 30 == 7 ? 40 : 2 + i % 7;  // five lines run far
    for (int w = 0; w < count; ++w) line += std::string(words[(i * 7 + w * w + w) % 9]) + " ";
    text += line + "\n";
  }
  const auto lines = textio::import::split_lines(text, 1000);
  const auto starts = textio::import::fixed_width_starts(lines, 0, "").starts;
  EXPECT_EQ(starts, (std::vector<std::size_t>{0, 10, 33})) << text.substr(0, 200);
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
  EXPECT_EQ(layout_of(r), "| 0 0 7 . - - none double -");
  EXPECT_FALSE(r.format.quote_detected);
  EXPECT_EQ(r.format.encoding, "ISO-8859-1");
}

TEST(Encoding, IsRecognisedAndDecoded) {
  // Plain UTF-8, UTF-16 with a BOM and WINDOWS-1252 are in the corpus.
  const std::string cases[][3] = {
      {std::string("\xEF\xBB\xBF") + "a,b\n", "UTF-8", "a,b\n"},
      {std::string("\0a\0,\0\xE9", 6), "UTF-16BE", "a,\xC3\xA9"},
      {std::string("\xFF\xFE\0\0a\0\0\0", 8), "UTF-32LE", "a"},
  };
  for (const auto& [raw, name, decoded] : cases) {
    const textio::import::encoding_guess g = textio::import::detect_encoding(raw);
    EXPECT_EQ(g.name, name) << raw;
    EXPECT_EQ(textio::import::decode_sample(raw, g.name, true), decoded) << raw;
  }
  // A character cut off by the end of a sample is dropped, not an error.
  EXPECT_EQ(textio::import::decode_sample("ab\xC3", "UTF-8", false), "ab");
  EXPECT_EQ(textio::import::decode_sample(std::string("a\0b", 3), "UTF-16LE", false), "a");
}

TEST(Detection, InputWithNothingToGoByGivesALowConfidence) {
  std::string binary;
  for (int i = 0; i < 4096; ++i) binary += static_cast<char>((i * 7919) % 256);
  std::string every_line_different;
  for (std::size_t i = 1; i < 40; ++i) every_line_different += std::string(i * 3, ',') + "x\n";
  const std::string huge_line(std::size_t{1} << 20, 'a');
  for (const auto& [raw, at_most] : {std::pair<std::string, double>{"", 0.0},
                                     {"a,b,c\n", 0.5},
                                     {binary, 0.2},
                                     {huge_line, 0.5},
                                     {every_line_different, 0.5}}) {
    for (const bool whole : {true, false}) {
      const double confidence = detect(raw, whole, {}, {}).report.confidence;
      EXPECT_TRUE(confidence >= 0 && confidence <= at_most) << confidence << " for " << raw.substr(0, 20);
    }
  }
}

}  // namespace
