// The arguments after a subcommand. Only --struct JSON, --struct=JSON,
// --help, -h and -- belong to the tool; every other argument is positional,
// so that values such as -1, -0.0, -abc or [1,2] reach the library as
// written. These arguments are sorted here and never handed to CLI11, which
// would take "-1" for an option and split "[1,2]" into two values (even after
// "--"), recursing once per bracket.
#pragma once

#include <optional>
#include <span>
#include <string>
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

}  // namespace zvtool
