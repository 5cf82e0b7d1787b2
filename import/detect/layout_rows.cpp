#include "import/detect/layout_rows.hpp"

#include <algorithm>
#include <map>

namespace textio::import {

std::vector<std::size_t> row_indices(const sample_table& table) {
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < table.records.size(); ++i) {
    if (!table.records[i].blank && !table.records[i].comment) rows.push_back(i);
  }
  return rows;
}

bool fits(std::size_t count, std::size_t k) { return count == k || (k >= 3 && count + 1 >= k && count <= k + 1); }

std::size_t dominant_count(const sample_table& table, const std::vector<std::size_t>& rows) {
  std::map<std::size_t, std::size_t> by_count;
  for (const std::size_t r : rows) ++by_count[table.records[r].field_count];
  std::size_t best = 0;
  std::size_t best_rows = 0;
  for (const auto& [count, n] : by_count) {
    if (count == 1 && by_count.size() > 1 && n < rows.size() * 9 / 10) continue;
    if (n >= best_rows) {
      best = count;
      best_rows = n;
    }
  }
  return best == 0 ? 1 : best;
}

std::size_t first_row(const sample_table& table, const std::vector<std::size_t>& rows, std::size_t k) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!fits(table.records[rows[i]].field_count, k)) continue;
    const std::size_t window = std::min<std::size_t>(5, rows.size() - i - 1);
    std::size_t agree = 0;
    for (std::size_t j = 1; j <= window; ++j) agree += fits(table.records[rows[i + j]].field_count, k);
    if (agree * 5 >= window * 4) return i;
  }
  // No run of agreeing rows: the first row that fits.
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (fits(table.records[rows[i]].field_count, k)) return i;
  }
  return 0;
}

}  // namespace textio::import
