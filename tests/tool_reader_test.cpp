// The reader subcommand of the built tool, run as a process: the reader
// object of each kind, its "options" object against what the options
// subcommand prints, refused options and usage errors.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "support/run_tool.hpp"

namespace {

using nlohmann::ordered_json;
using test_support::run_tool;
using test_support::tool_run;

std::vector<std::string> command(const std::string& subcommand, const std::vector<std::string>& args) {
  std::vector<std::string> all{subcommand};
  all.insert(all.end(), args.begin(), args.end());
  return all;
}

std::vector<std::string> with_kind(const std::string& kind, const std::vector<std::string>& args) {
  std::vector<std::string> all{kind};
  all.insert(all.end(), args.begin(), args.end());
  return command("reader", all);
}

const std::string big_and_two = R"({"$class": "uint64", "$size": [1, 2], "$data": [18446744073709551615, 2]})";

struct reader_case {
  std::string name;
  std::string kind;
  std::vector<std::string> options;  // the arguments after the kind
  std::string reader;                // the expected "reader" object, members in order
};

void PrintTo(const reader_case& c, std::ostream* os) { *os << c.name; }

class ToolReader : public ::testing::TestWithParam<reader_case> {};

TEST_P(ToolReader, PrintsTheReaderAfterTheOptionsObjectOfOptions) {
  const reader_case& c = GetParam();
  const tool_run run = run_tool(with_kind(c.kind, c.options));
  ASSERT_EQ(run.status, 0) << "stdout:\n" << run.out << "\nstderr:\n" << run.err;
  EXPECT_TRUE(run.err.empty()) << run.err;
  const auto out = ordered_json::parse(run.out);
  ASSERT_EQ(out.size(), 2u) << run.out;
  EXPECT_EQ(out.at("reader").dump(), ordered_json::parse(c.reader).dump());

  // Up to its last member, the output is byte for byte what options prints.
  const tool_run options = run_tool(command("options", c.options));
  ASSERT_EQ(options.status, 0) << options.err;
  const std::string end = "\n}\n";
  ASSERT_TRUE(options.out.ends_with(end)) << options.out;
  const std::string options_part = options.out.substr(0, options.out.size() - end.size());
  EXPECT_EQ(run.out.rfind(options_part + ",\n  \"reader\": {\n", 0), 0u) << run.out;
}

const reader_case reader_cases[] = {
    {"LineIgnoresDelimiters",
     "line",
     {"Delimiter", ",", "LineEnding", R"(["\n", "", "\u00e9x"])"},
     R"({"kind": "line", "stop_chars": [0, 10, 233], "reads_empty_lines": false})"},
    {"DelimitedMergesDelimitersAndLineEndings",
     "delimited",
     {"Delimiter", R"([",", "\t"])"},
     R"({"kind": "delimited", "quote": 34, "stop_chars": [9, 10, 13, 44]})"},
    {"FixedWidthSumWrapsAround",
     "fixedwidth",
     {"VariableWidths", big_and_two},
     R"({"kind": "fixedwidth", "field_widths": [18446744073709551615, 2], "record_width": 1,
         "stop_chars": [13, 10, 13]})"},
};

INSTANTIATE_TEST_SUITE_P(Kinds, ToolReader, ::testing::ValuesIn(reader_cases),
                         [](const auto& info) { return info.param.name; });

// A refused option: the report of options, unchanged, and no reader.
TEST(ToolReaderRefusal, PrintsExactlyWhatOptionsPrints) {
  const struct {
    std::string kind;
    std::vector<std::string> args;
  } refused[] = {
      {"line", {"DataLine", "0"}},
      {"delimited", {"NumVariables", "2", "Delimiter"}},
      {"fixedwidth", {"--struct", R"({"NumVariables": 2, "EmptyLineRule": "sometimes"})"}},
  };
  for (const auto& r : refused) {
    const tool_run options = run_tool(command("options", r.args));
    const tool_run reader = run_tool(with_kind(r.kind, r.args));
    ASSERT_EQ(options.status, 1) << r.kind;
    EXPECT_EQ(reader.status, 1) << r.kind;
    EXPECT_EQ(reader.out, options.out) << r.kind;
    EXPECT_EQ(reader.err, options.err) << r.kind;
    EXPECT_FALSE(ordered_json::parse(reader.out).contains("reader"));
  }
}

struct usage_case {
  std::string name;
  std::vector<std::string> args;
  std::string stderr_has;
};

TEST(ToolReaderUsage, MissingOrUnknownKindIsAUsageError) {
  const usage_case cases[] = {
      {"NoKind", {"reader"}, "reader needs KIND (the reader to build: line, delimited or fixedwidth)"},
      {"KindsAreLowerCase", {"reader", "Line"}, "unknown reader kind 'Line'"},
      // The kind is checked before the options, whose refusal would give 1.
      {"UnknownKindBeforeRefusedOption", {"reader", "tabular", "DataLine", "0"}, "unknown reader kind 'tabular'"},
      {"OptionNameIsNoKind", {"reader", "DataLine", "3"}, "unknown reader kind 'DataLine'"},
  };
  for (const auto& c : cases) {
    const tool_run run = run_tool(c.args);
    EXPECT_EQ(run.status, 2) << c.name;
    EXPECT_TRUE(run.out.empty()) << c.name << ": " << run.out;
    EXPECT_NE(run.err.find(c.stderr_has), std::string::npos) << c.name << ": " << run.err;
  }
}

// The usage and options are checked for every subcommand elsewhere; the
// reader's help also describes the reader objects.
TEST(ToolReaderHelp, ExplainsTheKindsAndTheReaderObjects) {
  const tool_run run = run_tool({"reader", "bad", "-h"});
  EXPECT_EQ(run.status, 0);
  for (const char* word : {"line", "delimited", "fixedwidth", "stop_chars", "reads_empty_lines", "quote",
                           "field_widths", "record_width", "\"reader\": {...}"}) {
    EXPECT_NE(run.out.find(word), std::string::npos) << word;
  }
}

}  // namespace
