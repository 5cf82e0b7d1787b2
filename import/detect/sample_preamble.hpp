// What stands around the table in the sample and is not the table: a
// front matter block ahead of it and comment lines.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "import/detect/sample_table.hpp"

namespace textio::import {

// A block of "key: value" lines between "---" lines (YAML front matter)
// ahead of the table.
struct front_matter {
  std::size_t text_end = 0;       // offset of the first line after it
  std::optional<char> delimiter;  // from its sep: or delimiter: key
};

// Finds the front matter and blanks its lines, so that the rest of
// detection takes them as blank lines above the table.
front_matter take_front_matter(std::vector<sample_line>& lines);

// Comment markers at line starts: the most used of #, % and //, when such
// lines are there but are not most of the sample.
std::string find_comment_marker(const std::vector<sample_line>& lines);

}  // namespace textio::import
