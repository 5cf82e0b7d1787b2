#include "tools/variable_types.hpp"

#include "tools/host_values.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

// The type a name asks for; none for "auto".
std::optional<textio::import::value_type> type_named(const nlohmann::ordered_json& name) {
  if (!name.is_string()) throw usage_error("--types: a type is a string such as \"double\"");
  const std::string n = name.get<std::string>();
  if (n == "auto") return std::nullopt;
  const auto type = textio::import::type_from_name(n);
  if (!type) {
    throw usage_error("unknown type '" + n +
                      "' in --types; the types are double, single, int8, int16, int32, int64, uint8, uint16, uint32, "
                      "uint64, logical, datetime, duration, string, char, categorical and auto");
  }
  return type;
}

}  // namespace

textio::import::type_request type_request_of(const std::optional<std::string>& json) {
  textio::import::type_request request;
  if (!json) return request;
  std::string error;
  const auto parsed = parse_json(*json, &error);
  if (!parsed) throw usage_error("--types is no JSON: " + error);
  if (parsed->is_array()) {
    for (const auto& name : *parsed) request.by_position.push_back(type_named(name));
  } else if (parsed->is_object()) {
    for (const auto& [key, value] : parsed->items()) {
      if (const auto type = type_named(value)) request.by_name.emplace_back(key, *type);
    }
  } else {
    throw usage_error("--types takes a list of type names or an object of names and types");
  }
  return request;
}

}  // namespace zvtool
