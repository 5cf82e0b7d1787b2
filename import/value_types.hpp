// The types a variable can be read as, and their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace textio::import {

enum class value_type : std::uint8_t {
  double_,
  single,
  int8,
  int16,
  int32,
  int64,
  uint8,
  uint16,
  uint32,
  uint64,
  logical,
  datetime,
  duration,
  string,
};

// "double", "int8", ...
std::string_view type_name(value_type type);

// The type of a name; "char" and "categorical" are read as string.
std::optional<value_type> type_from_name(std::string_view name);

inline bool is_integer_type(value_type t) { return t >= value_type::int8 && t <= value_type::uint64; }

}  // namespace textio::import
