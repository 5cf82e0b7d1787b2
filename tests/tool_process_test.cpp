// The built zvtextparser tool, run as a process: exit status, the JSON on
// standard output, and what reaches standard error.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

#include "support/run_tool.hpp"
#include "name_value/option_vocabulary.hpp"
#include "tools/subcommands.hpp"

namespace {

using nlohmann::json;
using test_support::run_tool;

const std::string uint64_max = "18446744073709551615";
const std::string widths = R"({"$class": "uint64", "$size": [1, 3], "$data": [0, 7, 18446744073709551615]})";

struct tool_case {
  std::string name;
  std::vector<std::string> args;
  int status;
  std::vector<std::pair<std::string, json>> expect;  // JSON pointer and value
  std::string stderr_has = {};                       // for status 2: part of the message
};

void PrintTo(const tool_case& c, std::ostream* os) { *os << c.name; }

class ToolRun : public ::testing::TestWithParam<tool_case> {};

TEST_P(ToolRun, StatusOutputAndMessages) {
  const tool_case& c = GetParam();
  const auto run = run_tool(c.args);
  ASSERT_EQ(run.status, c.status) << "stdout:\n" << run.out << "\nstderr:\n" << run.err;
  if (c.status == 2) {
    EXPECT_TRUE(run.out.empty()) << run.out;
    EXPECT_NE(run.err.find(c.stderr_has), std::string::npos) << run.err;
    return;
  }
  const json out = json::parse(run.out);
  for (const auto& [pointer, value] : c.expect) {
    const json::json_pointer at(pointer);
    ASSERT_TRUE(out.contains(at)) << pointer << " missing in\n" << run.out;
    EXPECT_EQ(out.at(at), value) << pointer;
  }
  if (c.status == 0) {
    EXPECT_EQ(out.size(), 1u) << run.out;  // the "options" object alone
    EXPECT_TRUE(run.err.empty()) << run.err;
  } else {
    // One human line: the identifier, then the message.
    const std::string identifier = out.at("/error/identifier"_json_pointer);
    EXPECT_EQ(identifier, "ZORVEK:textio:textio:" + out.at("/error/key"_json_pointer).get<std::string>());
    EXPECT_EQ(run.err.rfind("zvtextparser: " + identifier + ": ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
  }
}

const json no_arguments = json::array();

const tool_case cases[] = {
    {"NoArgumentsGiveTheDefaults",
     {"options"},
     0,
     {{"/options/num_header_lines", json::parse(uint64_max)},
      {"/options/detecting_num_header_lines", true},
      {"/options/line_ending", json::array({"\r\n", "\n", "\r"})},
      {"/options/whitespace", " \b\t"}}},
    {"PairsAreApplied",
     {"options", "DataLine", "3", "NumVariables", "0", "MultipleDelimsAsOne", "true"},
     0,
     {{"/options/num_header_lines", 2},
      {"/options/num_variables", 0},
      {"/options/detecting_num_variables", false},
      {"/options/consecutive_delim_rule", "Join"},
      {"/options/leading_delim_rule", "Ignore"}}},
    {"OddCountIsRefusedBeforeAnyPair",
     {"options", "NumVariables", "3", "DataLine"},
     1,
     {{"/error/key", "OddNumberNVPairs"}, {"/error/arguments", no_arguments}, {"/options/num_variables", 0}}},
    {"UnknownNameAsWrittenNonAscii",
     {"options",
      "Gr\xC3\xB6\xC3\x9F"
      "e",
      "1"},
     1,
     {{"/error/key", "UnknownParameter"},
      {"/error/arguments", json::array({"Gr\xC3\xB6\xC3\x9F"
                                        "e"})}}},
    {"Uint64WidthsPrintExactly",
     {"options", "VariableWidths", widths},
     0,
     {{"/options/field_widths", json::parse("[0, 7, " + uint64_max + "]")}}},
    {"FailedCallLeavesEarlierPairsWritten",
     {"options", "NumVariables", "4", "DataLine", "3", "NumHeaderLines", "-1", "TrimNonNumeric", "true"},
     1,
     {{"/error/key", "ExpectedNonNegativeScalarInt"},
      {"/options/num_variables", 4},
      {"/options/num_header_lines", 2},
      {"/options/trim_non_numeric", false}}},
    {"DoubleDashEndsTheToolsOptions",
     {"options", "--", "--struct", "1"},
     1,
     {{"/error/key", "UnknownParameter"}, {"/error/arguments", json::array({"--struct"})}}},
    {"StructFieldsInOrderUnknownSkipped",
     {"options", "--struct", R"({"DataLine": 5, "foo": 1, "NumHeaderLines": 1, "TrimNonNumeric": true})"},
     0,
     {{"/options/num_header_lines", 1}, {"/options/trim_non_numeric", true}}},
    {"StructFieldsLaterWins",
     {"options", R"(--struct={"NumHeaderLines": 1, "DataLine": 5})"},
     0,
     {{"/options/num_header_lines", 4}}},
    // Usage errors of the tool.
    {"StructBadJson", {"options", "--struct", "{\"NumVariables\": "}, 2, {}, "--struct"},
    {"StructWithPairs", {"options", "--struct", "{}", "NumVariables", "1"}, 2, {}, "--struct"},
    {"SizeWithOneEntry",
     {"options", "VariableWidths", R"({"$class": "uint64", "$size": [2], "$data": [1, 2]})"},
     2,
     {},
     "at least two"},
    {"DeepNestingIsRefused",
     {"options", "EmptyValue", std::string(20000, '[') + std::string(20000, ']')},
     2,
     {},
     "nest deeper"},
    {"UnknownSubcommand", {"option"}, 2, {}, "unknown subcommand 'option'"},
    {"NoSubcommand", {}, 2, {}, "subcommand"},
};

INSTANTIATE_TEST_SUITE_P(Cases, ToolRun, ::testing::ValuesIn(cases), [](const auto& info) { return info.param.name; });

TEST(ToolHelp, EachSubcommandsHelpShowsItsUsageAndEveryOption) {
  for (const auto& command : zvtool::subcommands()) {
    const auto& grammar = command.grammar;
    const auto run = run_tool({std::string(grammar.name), "--help"});
    EXPECT_EQ(run.status, 0) << grammar.name;
    std::string usage = "Usage: zvtextparser " + std::string(grammar.name);
    if (!grammar.operand.empty()) {
      usage +=
          grammar.operand_required ? " " + std::string(grammar.operand) : " [" + std::string(grammar.operand) + "]";
    }
    EXPECT_TRUE(run.out.starts_with(usage)) << run.out;
    for (const auto& option : grammar.options) {
      EXPECT_NE(run.out.find("  " + std::string(option.name)), std::string::npos)
          << option.name << " in " << grammar.name;
    }
    EXPECT_NE(run.out.find("Exit status:\n  0  success\n"), std::string::npos) << grammar.name;
    EXPECT_NE(run_tool({"--help"}).out.find("\n  " + std::string(grammar.name) + " "), std::string::npos);
  }
  EXPECT_NE(run_tool({"help", "values"}).out.find("$class"), std::string::npos);
  const auto keys = run_tool({"help", "keys"}).out;
  for (const auto& option : textio::options::option_descriptions) {
    EXPECT_NE(keys.find("  " + std::string(option.key) + " "), std::string::npos) << option.key;
  }
}

// The tool's own options end at "--"; an unknown one before it is a usage
// error, and a refused option in CSV mode writes nothing to standard output.
TEST(ToolArguments, DoubleDashUnknownOptionAndCsvRefusal) {
  const auto counted = run_tool({"read", "/nonexistent", "--", "--count"});
  EXPECT_EQ(counted.status, 1);
  EXPECT_NE(counted.out.find("OddNumberNVPairs"), std::string::npos) << counted.out;

  const auto verbose = run_tool({"read", "/nonexistent", "--loud"});
  EXPECT_EQ(verbose.status, 2);
  EXPECT_EQ(verbose.out, "");
  EXPECT_NE(verbose.err.find("unknown option '--loud' for read"), std::string::npos) << verbose.err;

  const auto csv = run_tool({"read", "/nonexistent", "--format", "csv", "Delimiter", "7"});
  EXPECT_EQ(csv.status, 1);
  EXPECT_EQ(csv.out, "");
  EXPECT_TRUE(csv.err.starts_with("zvtextparser: ZORVEK:textio:textio:DelimiterType: ")) << csv.err;
}

}  // namespace
