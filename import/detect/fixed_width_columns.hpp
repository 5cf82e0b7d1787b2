// Fixed-width tables: columns found where every line of the body has a blank
// at the same position, and the sample cut at those boundaries.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "import/detect/sample_table.hpp"
#include "import/detect/table_layout.hpp"

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

// A rule line under a table's names: only runs of '-' or '=' and blanks
// (----- ---- ---), among the first lines of the sample, the last of them
// when the names are ruled above and below.
struct rule_line {
  std::uint64_t line = 0;           // 1-based physical line; 0: none
  std::vector<std::size_t> starts;  // columns from its runs, as fixed_width_starts gives them; empty for one run
};
rule_line find_rule_line(const std::vector<sample_line>& lines, std::string_view comment_marker);

// The lines down to the rule line are header lines and the line above it,
// when there is one, holds the names: `layout` of `table` (one record per
// line) says so.
void follow_rule_line(table_layout& layout, const sample_table& table, const rule_line& rule);

}  // namespace textio::import
