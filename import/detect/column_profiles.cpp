#include "import/detect/column_profiles.hpp"

#include <algorithm>
#include <array>

namespace textio::import {

bool is_integer(std::string_view f) {
  if (!f.empty() && (f.front() == '-' || f.front() == '+')) f.remove_prefix(1);
  if (f.empty()) return false;
  for (const char c : f) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

std::string shape(std::string_view f) {
  std::string out;
  for (const char c : f) {
    char k = c;
    if (c >= 'A' && c <= 'Z')
      k = 'A';
    else if (c >= 'a' && c <= 'z')
      k = 'a';
    else if (c >= '0' && c <= '9')
      k = '9';
    else if (static_cast<unsigned char>(c) >= 0x80)
      k = 'a';
    if (out.empty() || out.back() != k) out += k;
    if (out.size() >= 24) break;
  }
  return out;
}

std::vector<column_profile> profile_columns(const sample_table& table, const std::vector<std::size_t>& rows,
                                            std::size_t first, std::size_t end, std::size_t k,
                                            const number_separators& format) {
  const auto& rec = [&](std::size_t i) -> const sample_record& { return table.records[rows[i]]; };
  std::vector<column_profile> columns(std::min(k, max_kept_fields));
  for (std::size_t j = 0; j < columns.size(); ++j) {
    std::array<std::size_t, 5> kinds{};
    for (std::size_t r = first; r < end; ++r) {
      const sample_record& row = rec(r);
      if (j >= row.fields.size()) continue;
      const cell_type t = classify(row.fields[j], format);
      ++kinds[static_cast<std::size_t>(t)];
      if (t == cell_type::number && !is_integer(row.fields[j])) columns[j].integers = false;
      if (columns[j].values.size() < 200) columns[j].values.insert(row.fields[j]);
      if (t == cell_type::text && columns[j].shaped < 200) {
        ++columns[j].shapes[shape(row.fields[j])];
        ++columns[j].shaped;
      }
    }
    std::size_t non_empty = 0;
    std::size_t top = 0;
    for (std::size_t t = 1; t < kinds.size(); ++t) {
      non_empty += kinds[t];
      if (kinds[t] > top) {
        top = kinds[t];
        columns[j].type = static_cast<cell_type>(t);
      }
    }
    columns[j].purity = non_empty == 0 ? 0 : static_cast<double>(top) / static_cast<double>(non_empty);
    if (non_empty == 0) columns[j].type = cell_type::empty;
  }
  return columns;
}

}  // namespace textio::import
