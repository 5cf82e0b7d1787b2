// What is left of the input after the table ends (TableEndLine): its
// physical lines, counted by their line endings without scanning records.
#pragma once

#include <cstdint>

#include "import/scan/record_scanner.hpp"
#include "import/input/unit_window.hpp"

namespace textio::import {

// Reads the window to the end of the input; a last line without an ending
// counts too.
template <class CharT>
std::uint64_t count_lines_left(unit_window<CharT>& window, const scan_rules<CharT>& line_rules);

}  // namespace textio::import
