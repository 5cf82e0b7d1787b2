// The built zvtextparser tool's help, run as a process. The rest of its
// process contract is one table in import/command_line_test.cpp.
#include <gtest/gtest.h>

#include <string>

#include "support/run_tool.hpp"
#include "tools/help_text.hpp"
#include "tools/subcommands.hpp"

namespace {

using test_support::run_tool;

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
