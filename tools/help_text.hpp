// The longer help of the tool: how arguments are read, the value syntax, the
// option keys, the output and the exit statuses.
#pragma once

#include <string>

namespace zvtool {

// The text shown below the generated usage of `zvtextparser --help` and of
// each subcommand's --help.
std::string help_footer();

// The option keys with a description of each key's value, one per line.
std::string option_keys_help();

}  // namespace zvtool
