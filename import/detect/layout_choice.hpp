// Which way of cutting the sample into fields wins: the dialect ranked
// first, runs of blanks, columns at fixed positions (found, or given without
// widths), or one column when nothing splits the lines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/detect/fixed_width_columns.hpp"
#include "import/detect/sample_preamble.hpp"
#include "import/detect/sample_table.hpp"

namespace textio::import {

struct chosen_layout {
  dialect d;
  bool fixed_width = false;
  bool single_column = false;
  std::vector<std::uint64_t> widths;
  sample_table table;
  double margin = 1;  // how far the best candidate is ahead of the next, 0 to 1
  rule_line rule;     // a rule line under the names, when the reader was chosen
};

// `choose_parser`: the reader is open; `choose_delimiter`: the delimiter is.
// Fills in the fixed widths when fixed width was given without them.
chosen_layout choose_layout(const std::vector<sample_line>& lines, std::string_view examined, const std::string& marker,
                            const user_choices& choices, const front_matter& front, bool parser_given,
                            bool choose_parser, bool choose_delimiter, textio::parser::options& opts,
                            detection_report& rep);

}  // namespace textio::import
