// The arguments after a subcommand. Only --struct JSON, --struct=JSON,
// --help, -h and -- belong to the tool; every other argument is positional,
// so that values such as -1, -0.0 or -abc reach the library as written.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zvtool {

struct subcommand_arguments {
  std::optional<std::string> struct_json;  ///< the JSON after --struct
  bool help = false;                       ///< --help or -h before any --
  std::vector<std::string> positionals;    ///< everything else, in order
};

// Sorts the arguments after the subcommand's name. Throws usage_error for
// --struct without a value or given twice.
subcommand_arguments scan_subcommand_arguments(std::span<const std::string> args);

// The same arguments rebuilt for the command-line parser, which would take
// "-1" for an option: the subcommand, its own options, then "--" and the
// positionals.
std::vector<std::string> rebuilt_arguments(std::string_view subcommand, const subcommand_arguments& scanned);

}  // namespace zvtool
