// The option keys that the tool documents in its help, each with a one-line
// description of the value it takes. The library keeps its table hidden, so
// the tool keeps this list; a unit test checks that the two hold the same keys.
#pragma once

#include <span>
#include <string_view>

namespace zvtool {

struct option_key {
  std::string_view key;         ///< as the option table spells it
  std::string_view value_help;  ///< what the value must be, in a few words
};

// Every key of the option table, in the table's order of insertion.
std::span<const option_key> option_keys();

}  // namespace zvtool
