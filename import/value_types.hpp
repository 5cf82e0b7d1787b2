// The types a variable can be read as, and their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// How to read a date of two numbers and a year (3/4/2020).
enum class date_order : std::uint8_t { day_first, month_first };

inline bool is_integer_type(value_type t) { return t >= value_type::int8 && t <= value_type::uint64; }

// What becomes of a value that does not convert to its variable's type:
// ImportErrorRule applies (a type the user gave), it is kept as its text (a
// type detection guessed from the first records, which a later value may
// not fit), or it is a reading error (strict reading).
enum class unconverted_value : std::uint8_t { import_error_rule, text, reading_error };

// How the reader reads one variable: its type, the order of its two-number
// dates, texts that mean missing in it besides the record's placeholders
// (markers that detection found), and what becomes of a value that does
// not convert.
struct variable_typing {
  value_type type = value_type::string;
  date_order dates = date_order::day_first;
  std::vector<std::string> missing_markers;
  unconverted_value unconverted = unconverted_value::import_error_rule;
};

}  // namespace textio::import
