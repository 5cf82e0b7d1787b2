// What the values down each column of a table's body are like: their kind
// and how pure it is, whether numbers are whole, a bounded set of the values
// and the forms of the texts. Names rows are told from data by them.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "import/detect/cell_types.hpp"
#include "import/detect/sample_table.hpp"

namespace textio::import {

struct column_profile {
  cell_type type = cell_type::text;
  double purity = 0;
  bool integers = true;          // its numbers have no fraction or exponent
  std::set<std::string> values;  // a bounded set of the body's values
  std::map<std::string, std::size_t> shapes;
  std::size_t shaped = 0;
};

// Whether `f` is a whole number, a sign allowed.
bool is_integer(std::string_view f);

// The form of a text: letters, digits and blanks by class, runs joined
// ("Ohio St" -> "Aa Aa", "AD" -> "A", "x_1" -> "a_9").
std::string shape(std::string_view f);

// The profiles of the first `k` columns (at most max_kept_fields) over the
// rows rows[first..end).
std::vector<column_profile> profile_columns(const sample_table& table, const std::vector<std::size_t>& rows,
                                            std::size_t first, std::size_t end, std::size_t k,
                                            const number_separators& format);

}  // namespace textio::import
