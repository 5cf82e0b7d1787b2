// The rows of a sample table by their field counts: which records are rows,
// the count most of them have, and the row the table starts at.
#pragma once

#include <cstddef>
#include <vector>

#include "import/detect/sample_table.hpp"

namespace textio::import {

// Indices of the records that are rows: neither blank nor comment.
std::vector<std::size_t> row_indices(const sample_table& table);

// A row with one field more or less still belongs to a wide table.
bool fits(std::size_t count, std::size_t k);

// The field count most rows have; rows of one field (titles, notes) count
// only when nothing else is there.
std::size_t dominant_count(const sample_table& table, const std::vector<std::size_t>& rows);

// Position in `rows` of the table's first row: a row that fits `k` fields
// and that most of the following rows agree with.
std::size_t first_row(const sample_table& table, const std::vector<std::size_t>& rows, std::size_t k);

}  // namespace textio::import
