// What kind of value a field of the sample holds, and which decimal and
// thousands separators its numbers are written with.
#pragma once

#include <cstdint>
#include <string_view>

namespace textio::import {

enum class cell_type : std::uint8_t {
  empty,     // nothing, or a usual missing-value marker (NA, NaN, -, ...)
  number,    // with the table's number format
  logical,   // true/false, TRUE/FALSE, yes/no
  datetime,  // dates, times and both
  text,
};

// The separators the detector guesses for a sample's numbers; the reader's
// full number format is number_conversion.hpp's number_format.
struct number_separators {
  char decimal = '.';
  char thousands = '\0';  // '\0': none
};

// The kind of `field` (already unquoted) under `format`.
cell_type classify(std::string_view field, const number_separators& format);

// Whether a field is a known kind (anything but text).
inline bool is_typed(cell_type t) { return t != cell_type::text; }

// Votes of one field for a number format.
struct number_votes {
  std::uint32_t decimal_point = 0;    // 1.5
  std::uint32_t decimal_comma = 0;    // 1,5
  std::uint32_t thousands_dot = 0;    // 1.234.567 or 1.234,5
  std::uint32_t thousands_comma = 0;  // 1,234,567 or 1,234.5
  std::uint32_t thousands_space = 0;  // 1 234 567,5
};

// Adds what `field` says about the number format to `votes`.
void vote_number_format(std::string_view field, number_votes& votes);

}  // namespace textio::import
