// The tool's longer help topics: the value syntax and the option keys.
#pragma once

#include <string>

#include "name_value/option_vocabulary.hpp"

namespace zvtool {

// zvtextparser help values: how a VALUE is read, with examples.
std::string values_help();

// zvtextparser help keys: every key of the option vocabulary, one line each,
// "  Key  <option_value_help>".
std::string option_keys_help();

// What the key's value must be; for a rule option its flags in position
// order, quoted, and whether abbreviations are accepted.
std::string option_value_help(const textio::options::option_description& option);

}  // namespace zvtool
