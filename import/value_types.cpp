#include "import/value_types.hpp"

#include <array>
#include <utility>

namespace textio::import {
namespace {

constexpr std::array<std::pair<std::string_view, value_type>, 16> names{{
    {"double", value_type::double_},
    {"single", value_type::single},
    {"int8", value_type::int8},
    {"int16", value_type::int16},
    {"int32", value_type::int32},
    {"int64", value_type::int64},
    {"uint8", value_type::uint8},
    {"uint16", value_type::uint16},
    {"uint32", value_type::uint32},
    {"uint64", value_type::uint64},
    {"logical", value_type::logical},
    {"datetime", value_type::datetime},
    {"duration", value_type::duration},
    {"string", value_type::string},
    {"char", value_type::string},
    {"categorical", value_type::string},
}};

}  // namespace

std::string_view type_name(value_type type) {
  for (const auto& [name, t] : names) {
    if (t == type) return name;
  }
  return "string";
}

std::optional<value_type> type_from_name(std::string_view name) {
  for (const auto& [n, t] : names) {
    if (n == name) return t;
  }
  return std::nullopt;
}

}  // namespace textio::import
