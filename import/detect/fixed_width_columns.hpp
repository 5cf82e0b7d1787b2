// Fixed-width tables: columns found where every line of the body has a blank
// at the same position, and the sample cut at those boundaries.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "import/detect/sample_table.hpp"

namespace textio::import {

struct fixed_columns {
  std::vector<std::size_t> starts;  // in characters, the first 0; fewer than two when there are no columns
  std::size_t narrowest_gap = 0;    // blanks between two columns on every line, at the least
};

// The columns that the lines from `from` on share.
fixed_columns fixed_width_starts(const std::vector<sample_line>& lines, std::size_t from,
                                 std::string_view comment_marker);

// Field widths from column starts; the last column reaches the longest line.
std::vector<std::uint64_t> widths_from_starts(const std::vector<std::size_t>& starts,
                                              const std::vector<sample_line>& lines);

// The sample cut into records at the column starts.
sample_table cut_fixed_width(const std::vector<sample_line>& lines, const std::vector<std::size_t>& starts,
                             std::string_view comment_marker, std::size_t max_records);

// Whether the cut table holds text of several words in its last column on
// some row and in no other column on any row: a free-text last column that
// runs of blanks would cut into more fields.
bool words_only_in_last_column(const sample_table& fixed);

}  // namespace textio::import
