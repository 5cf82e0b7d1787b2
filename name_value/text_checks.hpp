// Tests that tell the two textual shapes of host value apart, and the checks
// of the text-taking setters built from them.
//
// A text is a char array with two dimensions and one row (1-by-N, N >= 0), or
// the 0-by-0 char array. A text list is a cell array whose every element is a
// text; its own shape does not matter, and one with no elements is a list.
// A null value, and a null slot of a cell array, is no text.
#pragma once

#include "zvarray/hv_array.hpp"

namespace textio::options {

bool is_text(const hvArray_tag* value);
bool is_text_list(const hvArray_tag* value);

// Each check returns when the value passes and throws otherwise; the option
// name is the message's argument.
//
// is_text, else InvalidStringProperty(option).
void require_text(const hvArray_tag* value, const char* option);
// is_text with exactly one element (one 16-bit unit), else
// InvalidStringProperty(option).
void require_one_character(const hvArray_tag* value, const char* option);
// is_text or is_text_list, else InvalidStringOrCellStringProperty(option).
void require_text_or_list(const hvArray_tag* value, const char* option);
// is_text or is_text_list, else DelimiterType (no argument).
void require_delimiter_value(const hvArray_tag* value);

}  // namespace textio::options
