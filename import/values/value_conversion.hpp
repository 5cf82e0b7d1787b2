// Turns the text of a field into a value of a variable's type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "import/values/datetime_parsing.hpp"
#include "import/values/number_conversion.hpp"
#include "import/output.hpp"
#include "import/value_types.hpp"

namespace textio::import {

struct conversion_settings {
  number_format numbers;
  date_order dates = date_order::day_first;
};

// Sets `out` to the number `text` reads as under `format` (a `number`
// whose `bytes` are the text itself where the outputs may copy it) and
// returns true, or returns false, with `out` as it was, when it is none.
template <class CharT>
bool number_value(std::basic_string_view<CharT> text, const number_format& format, output_value& out);

// Sets `out` to the value of `text` as `type` and returns true, or returns
// false, with `out` as it was, when the text is no such value (an integer
// out of its type's range too). Datetime and duration values keep their canonical text in `canonical`
// and point `out.bytes` at it. A string type gives false: text stays as read.
template <class CharT>
bool convert_value(std::basic_string_view<CharT> text, value_type type, const conversion_settings& settings,
                   output_value& out, std::string& canonical);

// true/false in any case.
std::optional<bool> parse_logical(std::string_view text);

}  // namespace textio::import
