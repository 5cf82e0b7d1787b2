// Turns the text of a field into a number the way the options describe
// numbers: a decimal separator, thousands separators that are dropped, any
// of the exponent characters for the exponent mark, and optionally
// non-numeric units dropped before and after the number.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "parser/options.hpp"

namespace textio::import {

struct number_format {
  char16_t decimal_separator = u'.';
  std::u16string thousands_separator;  // each unit is a separator
  std::u16string exp_chars = u"eEdD";
  bool trim_non_numeric = false;
};

// The number format an options record describes.
number_format number_format_of(const textio::parser::options& record);

// Whether `format` reads decimals in the form the outputs write them: '.'
// before the fraction, no thousands separators, nothing trimmed.
bool reads_plain_decimals(const number_format& format);

// Sets `number` and gives true when the text is a number; false, with
// `number` unchanged, when it is not. "NaN" and "Inf" with an optional sign
// are numbers, in any case. (A flag and an out parameter rather than an
// optional: the caller read the optional back across a one-byte store, which
// stalled every call.)
template <class CharT>
bool to_number(std::basic_string_view<CharT> text, const number_format& format, double& number);

}  // namespace textio::import
