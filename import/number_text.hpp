// The text of a number as the outputs write it: the shortest digits that
// read back to the same double.
#pragma once

#include <string>

namespace textio::import {

// Appends the shortest digits that read back to `value`; NaN, Inf and -Inf
// for the values that have no digits.
void append_number_text(std::string& out, double value);

}  // namespace textio::import
