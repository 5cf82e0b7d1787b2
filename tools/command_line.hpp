// The tool's argument grammar. Each subcommand declares its own options in a
// table (tools/subcommands.cpp); one parser reads every subcommand's
// arguments by its table, and the help is written from the same table.
//
// After the subcommand's name: an argument "--word" (or "--word=VALUE")
// before "--" is one of the subcommand's options, else a usage error; "-h"
// and "--help" ask for the help; "--" ends the options. Every other argument
// is positional: first the subcommand's operand (FILE, KIND) when it has one,
// then the NAME VALUE arguments for the library. So -1, -0.5, -abc, - and
// [1,2] are values as written, and after "--" so is --word.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zvtool {

struct tool_option {
  std::string_view name;             ///< "--format"
  std::string_view value_name;       ///< "FORMAT"; empty for an option without value
  std::string_view help;             ///< one line
  std::string_view short_name = {};  ///< "-o"; empty for none
};

struct subcommand_grammar {
  std::string_view name;
  std::string_view summary;       ///< one sentence
  std::string_view operand;       ///< "FILE", "KIND"; empty for none
  std::string_view operand_help;  ///< one line
  std::span<const tool_option> options;
  std::string_view details = {};  ///< further help text, e.g. the output
  bool operand_required = true;
  bool takes_pairs = true;  ///< NAME VALUE arguments for the library
};

// The arguments after a subcommand's name, sorted by its grammar.
struct parsed_arguments {
  std::string subcommand;
  std::optional<std::string> operand;                       ///< FILE, KIND
  std::map<std::string, std::string, std::less<>> options;  ///< by name ("--format"); "" for one without value
  std::vector<std::string> option_arguments;                ///< NAME VALUE ... in order
  bool help = false;                                        ///< -h or --help before any "--"

  bool has(std::string_view option) const { return options.contains(option); }
  std::optional<std::string> value(std::string_view option) const;
};

// Throws usage_error for an unknown option before "--" (naming it and listing
// the subcommand's options), an option given twice, a missing option value,
// a value given to an option that takes none, and a missing required operand;
// none of these when help is asked for.
parsed_arguments parse_arguments(const subcommand_grammar& grammar, std::span<const std::string> args);

// The subcommand's --help: usage line, operand, options, details, exit statuses.
std::string subcommand_help(const subcommand_grammar& grammar);

// "Exit status:" and one line per status.
std::string exit_status_help();

// "--struct JSON, --format FORMAT, --count, --help"
std::string option_list(const subcommand_grammar& grammar);

}  // namespace zvtool
