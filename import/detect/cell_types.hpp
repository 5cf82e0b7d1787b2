// What kind of value a field of the sample holds, and which decimal and
// thousands separators its numbers are written with.
#pragma once

#include <cstdint>
#include <string_view>

#include "import/detect/sample_table.hpp"

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

// Votes of one field for a number format, and the evidence against a
// grouping separator.
struct number_votes {
  std::uint32_t decimal_point = 0;    // 1.5
  std::uint32_t decimal_comma = 0;    // 1,5
  std::uint32_t thousands_dot = 0;    // 1.234.567 or 1.234,5
  std::uint32_t thousands_comma = 0;  // 1,234,567 or 1,234.5
  std::uint32_t thousands_space = 0;  // 1 234 567,5
  // Blank-grouped numbers that do not look like several numbers of three
  // digits: a first group of one or two digits, or a fraction.
  std::uint32_t thousands_space_clear = 0;
  // Fields that start with a digit and hold the separator, but not as a
  // grouping or a decimal separator (1.2.3, 05.01.2020, 12,34,567, 1 2 3).
  std::uint32_t broken_dot = 0;
  std::uint32_t broken_comma = 0;
  std::uint32_t broken_space = 0;
  std::uint32_t long_ungrouped = 0;  // whole parts of four or more digits without a grouping separator
};

// Adds what `field` says about the number format to `votes`.
void vote_number_format(std::string_view field, number_votes& votes);

// The number format of the sample's fields below its first row under `d`. A
// grouping separator needs a column whose grouped numbers all group by
// three and that holds no ungrouped long whole parts; a blank one also needs
// a delimiter that is neither blanks, tab nor comma, and a grouped number
// with a short first group or a fraction.
number_separators guess_number_format(const sample_table& table, const dialect& d);

}  // namespace textio::import
