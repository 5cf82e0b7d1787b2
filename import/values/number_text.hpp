// The text of a number as the outputs write it: the shortest digits that
// read back to the same double.
#pragma once

#include <string>
#include <string_view>

#include "import/output.hpp"

namespace textio::import {

// Appends the shortest digits that read back to `value`; NaN, Inf and -Inf
// for the values that have no digits.
void append_number_text(std::string& out, double value);

// Whether `text` is exactly what append_number_text writes for the number it
// reads as (with '.' for the decimal separator and no thousands separators),
// judged from the text alone, so that a writer can copy it instead: a plain
// decimal of at most 15 significant digits (every such decimal has a double
// of its own, so no shorter digits read back to it) with no redundant zeros
// or sign, no longer than its exponent form. False wherever that is not sure.
bool is_shortest_number_text(std::string_view text);

// Whether `text` is a number as JSON writes one (RFC 8259):
// -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?
bool is_json_number_text(std::string_view text);
bool is_json_number_text(std::u16string_view text);

// Whether a number may be written in JSON as its own written text.
bool written_as_json_number(const output_value& v);

// A number's written text when that is already what append_number_text
// would write (UTF-8 only), else empty: for a writer to copy.
std::string_view written_shortest(const output_value& v);

}  // namespace textio::import
