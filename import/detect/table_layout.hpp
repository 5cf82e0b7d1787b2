// The layout of a table in the sample: the lines above it, whether its first
// rows hold names, how many variables it has and where it ends. Decided from
// field counts and from the kinds of values down each column.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/detect/cell_types.hpp"
#include "import/detect/sample_table.hpp"

namespace textio::import {

struct table_layout {
  std::size_t first_record = 0;    // index into the records of the table's first row (names or data)
  std::uint64_t header_lines = 0;  // physical lines before the first data row
  std::uint64_t names_line = 0;    // physical line of the (first) names row, 0: none
  std::size_t names_rows = 0;      // rows that make up the names
  std::vector<std::string> names;  // one per variable; pieces of several names rows joined with a blank
  bool names_filled = false;       // some are VarN: variables the names row does not reach
  std::size_t num_variables = 0;
  bool trailing_delimiter = false;        // every row ends with an empty field after a delimiter
  std::optional<std::uint64_t> end_line;  // the physical line after the table, when more text follows
  std::size_t body_rows = 0;
  double body_fit = 0;  // share of body rows with the dominant field count
  std::vector<cell_type> column_types;
};

// `table` as cut by the chosen dialect; `format` the numbers' format.
table_layout analyse_layout(const sample_table& table, const number_separators& format);

}  // namespace textio::import
