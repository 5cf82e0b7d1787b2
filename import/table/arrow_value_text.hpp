// The text of a typed column's values, as the text outputs write them: used
// when a column becomes text.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>

#include "import/table/arrow_table.hpp"

namespace textio::import {

template <class T>
void append_integer(std::string& out, T value) {
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, r.ptr);
}

// The text of row `row` of a column that is not text, as the text outputs
// write such a value; `utc` adds a Z to a timestamp.
void append_value_text(std::string& out, const arrow_column& c, std::int64_t row, bool utc);

}  // namespace textio::import
