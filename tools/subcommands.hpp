// The tool's subcommands: each one's grammar (its operand and its own
// options, one line each) and the function that runs it. Adding a
// subcommand or an option is a row here plus the code that uses it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tools/command_line.hpp"
#include "tools/report.hpp"

namespace zvtool {

struct subcommand {
  subcommand_grammar grammar;
  tool_result (*run)(const parsed_arguments&);
};

std::span<const subcommand> subcommands();

// nullptr when there is no such subcommand.
const subcommand* find_subcommand(std::string_view name);

// parse_arguments by the grammar of the named subcommand, which must exist.
parsed_arguments parse_subcommand_arguments(std::string_view name, std::span<const std::string> args);

// zvtextparser --help: the subcommands and where to read more.
std::string tool_help();

}  // namespace zvtool
