// The tool's longer help topics: the value syntax and the option keys.
#pragma once

#include <string>

namespace zvtool {

// zvtextparser help values: how a VALUE is read, with examples.
std::string values_help();

// zvtextparser help keys: the option keys with what each key's value must be.
std::string option_keys_help();

}  // namespace zvtool
