// One call of the library's entry point on a record, with the message
// exception that it may throw caught and kept.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "parser/options.hpp"
#include "tools/message_failure.hpp"
#include "zvarray/value.hpp"

namespace zvtool {

// Calls set_parser_options once with all of `args` (a Value without content
// passes a null pointer). A message exception comes back as its data, with
// the record as the failed call left it; any other exception passes through.
std::optional<message_failure> apply_options(std::span<const hv::Value> args, textio::parser::options& record);

// The options of --struct JSON or of the NAME VALUE arguments applied to
// `record` (a default one) in one call; a refusal comes back explained
// (failure_hints.hpp). Throws usage_error for arguments that the tool cannot
// turn into values.
std::optional<message_failure> apply_option_arguments(const std::optional<std::string>& struct_json,
                                                      std::span<const std::string> option_arguments,
                                                      textio::parser::options& record);

}  // namespace zvtool
