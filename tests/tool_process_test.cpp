// The built zvtextparser tool, run as a process: exit statuses, the options
// and reader objects on standard output, and the one line on standard error.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "support/run_tool.hpp"
#include "tools/help_text.hpp"
#include "tools/subcommands.hpp"

namespace {

using nlohmann::ordered_json;
using test_support::run_tool;

struct tool_case {
  std::vector<std::string> args;
  int status;
  // A JSON object of JSON pointers into standard output and the values there;
  // or, when nothing may be written there, a part of standard error.
  std::string expect;
};

void PrintTo(const tool_case& c, std::ostream* os) {
  for (const auto& a : c.args) *os << a.substr(0, 40) << ' ';
}

class Tool : public ::testing::TestWithParam<tool_case> {};

TEST_P(Tool, StatusOutputAndMessage) {
  const tool_case& c = GetParam();
  const auto run = run_tool(c.args);
  ASSERT_EQ(run.status, c.status) << "stdout:\n" << run.out << "\nstderr:\n" << run.err;
  if (!c.expect.starts_with('{')) {
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find(c.expect), std::string::npos) << run.err;
    return;
  }
  const auto out = ordered_json::parse(run.out);
  const auto expect = ordered_json::parse(c.expect);
  for (const auto& [pointer, value] : expect.items()) {
    const ordered_json::json_pointer at(pointer);
    ASSERT_TRUE(out.contains(at)) << pointer << " missing in\n" << run.out;
    EXPECT_EQ(out.at(at), value) << pointer;
  }
  // "options" and one of "reader" and "error", or "options" alone.
  const bool reader = c.args[0] == "reader";
  EXPECT_EQ(out.size(), c.status == 1 || reader ? 2u : 1u) << run.out;
  if (c.status == 1) {
    const std::string identifier = out["error"]["identifier"];
    EXPECT_EQ(identifier, "ZORVEK:textio:textio:" + out["error"]["key"].get<std::string>());
    EXPECT_TRUE(run.err.starts_with("zvtextparser: " + identifier + ": ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;  // one line
  } else {
    EXPECT_EQ(run.err, "");
  }
  // reader prints what options prints, and on success its reader after it.
  if (reader) {
    std::vector<std::string> args{"options"};
    args.insert(args.end(), c.args.begin() + 2, c.args.end());
    const auto options = run_tool(args);
    EXPECT_EQ(options.err, run.err);
    const std::string start =
        c.status == 1 ? options.out : options.out.substr(0, options.out.size() - 3) + ",\n  \"reader\": {\n";
    EXPECT_EQ(run.out.substr(0, start.size()), start);
  }
}

const std::string big_and_two = R"({"$class": "uint64", "$size": [1, 2], "$data": [18446744073709551615, 2]})";

const tool_case cases[] = {
    {{"options"}, 0, R"({"/options/num_header_lines": 18446744073709551615, "/options/whitespace": " \b\t"})"},
    {{"options", "DataLine", "3", "MultipleDelimsAsOne", "true", "VariableWidths", big_and_two},
     0,
     R"({"/options/num_header_lines": 2, "/options/consecutive_delim_rule": "Join",
         "/options/field_widths": [18446744073709551615, 2]})"},
    // The count is checked before any pair is applied.
    {{"options", "NumVariables", "3", "DataLine"},
     1,
     R"({"/error/key": "OddNumberNVPairs", "/error/arguments": [], "/options/num_variables": 0})"},
    // A failed pair leaves the earlier ones written and the later ones not.
    {{"options", "NumVariables", "4", "DataLine", "3", "NumHeaderLines", "-1", "TrimNonNumeric", "true"},
     1,
     R"({"/error/key": "ExpectedNonNegativeScalarInt", "/options/num_variables": 4,
         "/options/num_header_lines": 2, "/options/trim_non_numeric": false})"},
    {{"options", "--", "--struct", "1"}, 1, R"({"/error/arguments": ["--struct"]})"},
    {{"options", "--struct", R"({"DataLine": 5, "foo": 1, "NumHeaderLines": 1, "TrimNonNumeric": true})"},
     0,
     R"({"/options/num_header_lines": 1, "/options/trim_non_numeric": true})"},
    // In CSV mode a refused option writes nothing to standard output.
    {{"read", "/nonexistent", "--format", "csv", "Delimiter", "7"},
     1,
     "zvtextparser: ZORVEK:textio:textio:DelimiterType: "},
    {{"reader", "line", "Delimiter", ",", "LineEnding", R"(["\n", "", "\u00e9x"])"},
     0,
     R"({"/reader": {"kind": "line", "stop_chars": [0, 10, 233], "reads_empty_lines": false}})"},
    {{"reader", "delimited", "Delimiter", R"([",", "\t"])"},
     0,
     R"({"/reader": {"kind": "delimited", "quote": 34, "stop_chars": [9, 10, 13, 44]}})"},
    // The sum of the widths wraps around.
    {{"reader", "fixedwidth", "VariableWidths", big_and_two},
     0,
     R"({"/reader": {"kind": "fixedwidth", "field_widths": [18446744073709551615, 2], "record_width": 1,
                     "stop_chars": [13, 10, 13]}})"},
    {{"reader", "delimited", "NumVariables", "2", "Delimiter"}, 1, R"({"/error/key": "OddNumberNVPairs"})"},
    {{"reader", "fixedwidth", "--struct", R"({"NumVariables": 2, "EmptyLineRule": "sometimes"})"},
     1,
     R"({"/options/num_variables": 2, "/error/key": "BadTextFlag"})"},
    // Usage errors; the reader's kind is checked before its options.
    {{"reader"}, 2, "reader needs KIND (the reader to build: line, delimited or fixedwidth)"},
    {{"reader", "tabular", "DataLine", "0"}, 2, "unknown reader kind 'tabular'"},
    {{"options", "--struct", "{\"NumVariables\": "}, 2, "--struct"},
    {{"read", "/nonexistent", "--format", "xml"}, 2, "unknown --format 'xml'"},
    {{"read", "-", "--max-memory", "lots"}, 2, "--max-memory"},
    {{"read", "-", "--threads", "0"}, 2, "--threads takes a count from 1 to 1024, not '0'"},
    {{"option"}, 2, "unknown subcommand 'option'"},
    {{}, 2, "a subcommand comes first"},
};

INSTANTIATE_TEST_SUITE_P(Cases, Tool, ::testing::ValuesIn(cases));

TEST(ToolHelp, EachSubcommandsHelpShowsItsUsageAndEveryOption) {
  const std::string tool_help = run_tool({"--help"}).out;
  for (const auto& command : zvtool::subcommands()) {
    const std::string name(command.grammar.name);
    const auto run = run_tool({name, "--help"});
    EXPECT_EQ(run.status, 0) << name;
    EXPECT_TRUE(run.out.starts_with("Usage: zvtextparser " + name)) << run.out;
    for (const auto& option : command.grammar.options) {
      EXPECT_NE(run.out.find("  " + std::string(option.name)), std::string::npos) << option.name;
    }
    EXPECT_NE(run.out.find("Exit status:\n  0  success\n"), std::string::npos) << name;
    EXPECT_NE(tool_help.find("\n  " + name + " "), std::string::npos) << name;
  }
  // Help wins over a mistake; the reader's help describes its objects.
  EXPECT_NE(run_tool({"reader", "bad", "-h"}).out.find("\"reader\": {...}"), std::string::npos);
  EXPECT_NE(run_tool({"help", "values"}).out.find("$class"), std::string::npos);
  EXPECT_NE(run_tool({"help", "keys"}).out.find(zvtool::option_keys_help()), std::string::npos);
}

}  // namespace
