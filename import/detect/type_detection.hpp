// The type of each variable from a sample of its values: the narrowest of
// logical, double, datetime and duration that every value converts to, else
// string. A number with a zero before another digit at its start (007,
// -01) makes its variable no number: such values are codes, kept as text.
// A value after the sample that does not convert to the guessed type is
// kept as its text (variable_typing::unconverted).
// Empty values and the given placeholders are missing; when asked,
// the usual missing markers (NA, N/A, NaN, null, -, .) are missing too where
// a variable is otherwise of one type, and reported.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "import/values/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

struct type_detection_settings {
  number_format numbers;
  std::vector<std::string> placeholders;  // UTF-8
  bool detect_markers = true;             // false when the user said what is missing
};

// The record's number format and missing placeholders; markers are detected
// only when the record names no placeholder.
type_detection_settings type_detection_settings_of(const textio::parser::options& record);

struct detected_type {
  variable_typing typing;
  // For a datetime variable whose dates read both day-first and
  // month-first differently: day-first was taken without evidence.
  bool date_order_unsettled = false;
};

// `rows`: the sample's records, each a list of field texts (UTF-8).
// `variables`: how many variables there are (fields beyond are ignored,
// lacking ones are missing).
std::vector<detected_type> detect_types(const std::vector<std::vector<std::string>>& rows, std::size_t variables,
                                        const type_detection_settings& settings);

}  // namespace textio::import
