// Appending values to a typed column and changing its type: the column
// building blocks of arrow_table_sink. A column's validity bitmap is made at
// its first missing value; text offsets are 32-bit until a batch's text
// passes 2 GiB.
#pragma once

#include <cstdint>
#include <limits>

#include "import/table/arrow_table.hpp"

namespace textio::import {

// The most text bytes a column with 32-bit offsets holds.
inline constexpr std::int64_t narrow_text_max = std::numeric_limits<std::int32_t>::max();

// Where the text of row `i` starts (row `length`: where the text ends).
std::int64_t offset_at(const arrow_column& column, std::int64_t i);

// Gives `column` the storage of `type` for the rows it has: a column of
// missing values gets empty values, a typed column becomes text (its values
// written out), 32-bit text offsets become 64-bit.
void become(arrow_column& column, arrow_type type, bool utc);

// The column type a value of `kind` needs when its column has none yet.
arrow_type natural_type(value_kind kind);

// Whether a column of `type` holds a value of `kind` as it is.
bool fits(arrow_type type, value_kind kind);

// Appends a present value that fits the column's type.
void put_value(arrow_column& c, const output_value& v);

// Appends a missing value.
void put_missing(arrow_column& c);

// A column of `type` with `missing_rows` missing values.
arrow_column new_column(arrow_type type, std::int64_t missing_rows, bool utc);

}  // namespace textio::import
