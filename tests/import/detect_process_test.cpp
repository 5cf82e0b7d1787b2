// detect and read's detection run as a process: detect's JSON, the arguments
// that reproduce a reading without detection, read's notes on standard error,
// and which keys count as given.
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"
#include "tools/reading_choices.hpp"
#include "tools/subcommands.hpp"

namespace {

using test_support::run_tool;

nlohmann::json parse(const std::string& text) { return nlohmann::json::parse(text, nullptr, false); }

struct detect_case {
  const char* name;
  std::string contents;
  std::vector<std::string> args;  // given to both detect and read
};

void PrintTo(const detect_case& c, std::ostream* os) { *os << c.name; }

class DetectRoundTrip : public ::testing::TestWithParam<detect_case> {};

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

// detect's arguments, given to read --no-detect, read the file as read does.
TEST_P(DetectRoundTrip, ArgumentsReadAsReadDoes) {
  const auto& c = GetParam();
  const std::string path = import_test::write_file(c.contents);
  const auto detected = run_tool(joined({"detect", path}, c.args));
  ASSERT_EQ(detected.status, 0) << detected.err;
  const nlohmann::json report = parse(detected.out);
  ASSERT_EQ(report["options"].size(), 30u) << detected.out;
  const nlohmann::json& d = report["detected"];
  EXPECT_TRUE(d["encoding"].is_string() && d["variable_names"].is_array() && d["reasons"].is_object() &&
              d["confidence"] >= 0 && d["confidence"] <= 1)
      << d.dump();
  // The record shows the detected delimiter, the one the arguments give.
  const auto& args = report["arguments"];
  for (std::size_t i = 0; i + 1 < args.size(); ++i) {
    if (args[i] != "Delimiter") continue;
    nlohmann::json given = parse(args[i + 1].get<std::string>());
    if (given.is_string()) given = nlohmann::json::array({given});
    if (given.is_array()) {
      EXPECT_EQ(report["options"]["delimiter"], given);
    }
  }
  const auto read = run_tool(joined({"read", path}, c.args));
  const auto again =
      run_tool(joined({"read", path, "--no-detect"}, report["arguments"].get<std::vector<std::string>>()));
  EXPECT_EQ(again.status, read.status) << again.err;
  EXPECT_EQ(again.out, read.out) << report["arguments"].dump();
}

const detect_case detect_cases[] = {
    {"latin1_tab", "nom\tville\nJos\xE9\tS\xE8te\nAn\xE9\tN\xEEmes\n", {}},
    {"given_options_kept", "a|b\n1|2\n", {"Delimiter", "|", "NumHeaderLines", "1"}},
    {"forced_quote_and_escape", "'a\\'b',c\n'd',e\n", {"--quote", "'", "--escape", "backslash"}},
    {"fixed_width",
     "name         size  city\nalpha one    12    Paris\nbeta         7     Rome West\n"
     "gamma two    300   Oslo\ndelta        4     Bern\n",
     {}},
    {"names_over_units", "name,weight,height\n,kg,cm\nann,61.5,170.2\nbob,80.1,181.0\ncid,70.3,175.5\n", {}},
    {"footnotes_end_the_table", "id,val\n1,2\n3,4\n5,6\n\nNote: values are made up.\nSource: nowhere\n", {}},
};
INSTANTIATE_TEST_SUITE_P(Files, DetectRoundTrip, ::testing::ValuesIn(detect_cases));

TEST(Detect, RefusedOptionsReportAsOptionsDoes) {
  const std::string path = import_test::write_file("a\n");
  const auto refused = run_tool({"detect", path, "NumHeaderLines", "-1"});
  const auto options = run_tool({"options", "NumHeaderLines", "-1"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.out, options.out);
  EXPECT_EQ(refused.err, options.err);
}

TEST(ReadDetects, SemicolonFileWithATitleNeedsNoOptions) {
  const std::string path = import_test::write_file("Prices in 2024\n\nname;price\napple;1,5\npear;2,25\nplum;3\n");
  const auto run = run_tool({"read", path});
  EXPECT_EQ(run.out,
            "{\"variables\": [\"name\", \"price\"], \"units\": [], \"descriptions\": [], \"types\": [\"string\", "
            "\"double\"]}\n[\"apple\", 1.5]\n[\"pear\", 2.25]\n[\"plum\", 3]\n");
  EXPECT_EQ(run.err, "");
  const auto verbose = run_tool({"read", path, "--verbose", "--count"});
  EXPECT_NE(verbose.err.find("variable names: \"name\" \"price\""), std::string::npos) << verbose.err;
}

TEST(ReadTableEnd, StopsSaysSoAndAllLinesReadsOn) {
  const std::string path = import_test::write_file("a\nb\nc\nd\n");
  const auto stopped = run_tool({"read", path, "--no-detect", "--count", "--table-end", "2"});
  EXPECT_EQ(stopped.out, "{\"records\": 1, \"fields\": 1}\n");
  EXPECT_NE(stopped.err.find("3 lines from line 2 on were left unread"), std::string::npos) << stopped.err;
  const auto all = run_tool({"read", path, "--no-detect", "--count", "--table-end", "2", "--all-lines"});
  EXPECT_EQ(all.out, "{\"records\": 4, \"fields\": 4}\n");
  EXPECT_EQ(all.err, "");
}

TEST(ReadDetects, AnUnsureGuessIsSaidToBeOne) {
  std::string every_line_different;
  for (std::size_t i = 1; i < 40; ++i) every_line_different += std::string(i * 3, ',') + "x\n";
  const auto run = run_tool({"read", import_test::write_file(every_line_different), "--count"});
  EXPECT_NE(run.err.find("detection is unsure of this file (confidence 0."), std::string::npos) << run.err;
}

// A quote that never closes after the sample is read as text, with a warning;
// given with --quote it stays an error.
TEST(ReadStrayQuote, DetectedWarnsGivenFails) {
  std::string contents = "id,name\n";
  for (int i = 0; i < 120000; ++i) contents += std::to_string(i) + ",\"n\"\n";
  contents += "7,\"broken\n8,ok\n";
  const std::string path = import_test::write_file(contents);
  const auto detected = run_tool({"read", path, "--count"});
  EXPECT_EQ(detected.status, 0);
  EXPECT_EQ(detected.out, "{\"records\": 120002, \"fields\": 240004}\n");
  EXPECT_NE(detected.err.find("the quote at line 120002, column 3 never closes"), std::string::npos) << detected.err;
  const auto given = run_tool({"read", path, "--count", "--quote", "\""});
  EXPECT_EQ(given.status, 4);
  EXPECT_NE(given.err.find("UnterminatedQuote"), std::string::npos) << given.err;
}

TEST(UserChoices, KeysInTheTablesSpellingFromPairsAndStruct) {
  const std::pair<std::vector<std::string>, std::set<std::string>> cases[] = {
      {{"f", "delimiter", ";", "NUMHEADERLINES", "1", "NoSuchKey", "1"}, {"Delimiter", "NumHeaderLines"}},
      {{"f", "--struct", R"({"decimalseparator": ",", "CommentStyle": "#"})"}, {"CommentStyle", "DecimalSeparator"}},
  };
  for (const auto& [args, keys] : cases) {
    EXPECT_EQ(zvtool::user_choices_of(zvtool::parse_subcommand_arguments("detect", args)).keys, keys) << args[1];
  }
}

}  // namespace
