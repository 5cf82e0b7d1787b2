#include "tools/apply_options.hpp"

#include <cstdint>
#include <limits>
#include <vector>

#include "name_value/set_parser_options.hpp"
#include "tools/failure_hints.hpp"
#include "tools/host_values.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {

std::optional<message_failure> apply_options(std::span<const hv::Value> args, textio::parser::options& record) {
  if (args.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw usage_error("too many arguments");
  }
  std::vector<const hvArray_tag*> pointers;
  pointers.reserve(args.size());
  for (const auto& value : args) pointers.push_back(value.get());
  try {
    textio::options::set_parser_options(pointers.data(), static_cast<std::int32_t>(pointers.size()), record);
  } catch (const foundation::core::except::IMsgIDException& error) {
    return capture_message(error);
  }
  return std::nullopt;
}

std::optional<message_failure> apply_option_arguments(const std::optional<std::string>& struct_json,
                                                      std::span<const std::string> option_arguments,
                                                      textio::parser::options& record) {
  const std::vector<hv::Value> values = zvtool::option_arguments(struct_json, option_arguments);
  auto failure = apply_options(values, record);
  if (failure) explain_failure(*failure, option_arguments, values);
  return failure;
}

}  // namespace zvtool
