// --types: the types `read` converts variables to, as a list by position or
// an object by variable name ("auto": detect).
#pragma once

#include <optional>
#include <string>

#include "import/read.hpp"

namespace zvtool {

// The types --types (JSON) asks for. Throws usage_error for bad JSON or an
// unknown type name; names and positions are checked against the table
// when it is read (UnknownVariable, TooManyTypes).
textio::import::type_request type_request_of(const std::optional<std::string>& json);

}  // namespace zvtool
