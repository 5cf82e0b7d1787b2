#include "import/table_layout.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <set>

namespace textio::import {
namespace {

// Indices of the records that are rows: neither blank nor comment.
std::vector<std::size_t> row_indices(const sample_table& table) {
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < table.records.size(); ++i) {
    if (!table.records[i].blank && !table.records[i].comment) rows.push_back(i);
  }
  return rows;
}

// A row with one field more or less still belongs to a wide table.
bool fits(std::size_t count, std::size_t k) { return count == k || (k >= 3 && count + 1 >= k && count <= k + 1); }

// The field count most rows have; rows of one field (titles, notes) count
// only when nothing else is there.
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

// Position in `rows` of the table's first row: a row with `k` fields that
// most of the following rows agree with.
std::size_t first_row(const sample_table& table, const std::vector<std::size_t>& rows, std::size_t k) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (table.records[rows[i]].field_count != k) continue;
    const std::size_t window = std::min<std::size_t>(5, rows.size() - i - 1);
    std::size_t agree = 0;
    for (std::size_t j = 1; j <= window; ++j) agree += fits(table.records[rows[i + j]].field_count, k);
    if (agree * 5 >= window * 4) return i;
  }
  return 0;
}

bool text_like(cell_type t) { return t == cell_type::text; }

struct column_profile {
  cell_type type = cell_type::text;
  double purity = 0;
  std::set<std::string> values;  // a bounded set of the body's values
};

}  // namespace

std::size_t first_table_record(const sample_table& table, std::size_t fields) {
  const std::vector<std::size_t> rows = row_indices(table);
  if (rows.empty()) return 0;
  return rows[first_row(table, rows, fields)];
}

table_layout analyse_layout(const sample_table& table, const number_format& format) {
  table_layout out;
  const std::vector<std::size_t> rows = row_indices(table);
  if (rows.empty()) return out;
  const auto& rec = [&](std::size_t i) -> const sample_record& { return table.records[rows[i]]; };
  const std::size_t k = dominant_count(table, rows);
  const std::size_t s = first_row(table, rows, k);

  // The body runs while rows fit, past a few ragged ones; it ends before a
  // row that does not fit when most of the rows after it do not fit either.
  std::size_t e = s;  // one past the last body row
  std::size_t i = s;
  while (i < rows.size()) {
    if (fits(rec(i).field_count, k)) {
      e = ++i;
      continue;
    }
    const std::size_t window = std::min<std::size_t>(4, rows.size() - i - 1);
    std::size_t agree = 0;
    for (std::size_t j = 1; j <= window; ++j) agree += fits(rec(i + j).field_count, k);
    if (window == 0 || agree * 2 < window) break;
    ++i;
  }
  if (e < rows.size()) out.end_line = rec(e - 1).last_line + 1;

  // Kinds down each column, from the rows below the candidate names rows.
  const std::size_t first_typed = (e - s >= 8) ? s + 3 : s + 1;
  std::vector<column_profile> columns(std::min(k, max_kept_fields));
  for (std::size_t j = 0; j < columns.size(); ++j) {
    std::array<std::size_t, 5> kinds{};
    for (std::size_t r = first_typed; r < e; ++r) {
      const sample_record& row = rec(r);
      if (j >= row.fields.size()) continue;
      ++kinds[static_cast<std::size_t>(classify(row.fields[j], format))];
      if (columns[j].values.size() < 200) columns[j].values.insert(row.fields[j]);
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
    out.column_types.push_back(columns[j].type);
  }
  bool any_typed = false;
  for (const column_profile& c : columns) any_typed = any_typed || (is_typed(c.type) && c.type != cell_type::empty && c.purity >= 0.7);

  // A names row differs in kind from the values below it; in a table of
  // text only, its names are all given, all different and not among the
  // values below.
  auto names_like = [&](std::size_t r) {
    const sample_record& row = rec(r);
    if (!fits(row.field_count, k)) return false;
    if (any_typed) {
      int votes = 0;
      for (std::size_t j = 0; j < columns.size() && j < row.fields.size(); ++j) {
        const column_profile& c = columns[j];
        if (c.type == cell_type::empty || !is_typed(c.type) || c.purity < 0.7) continue;
        const cell_type t = classify(row.fields[j], format);
        if (text_like(t)) ++votes;
        if (t == c.type) --votes;
      }
      return votes > 0;
    }
    if (e - s < 2) return false;
    std::set<std::string> seen;
    for (std::size_t j = 0; j < row.fields.size() && j < columns.size(); ++j) {
      const std::string& f = row.fields[j];
      if (f.empty() || !seen.insert(f).second || columns[j].values.count(f) > 0) return false;
      if (classify(f, format) != cell_type::text) return false;
    }
    return true;
  };

  std::size_t data_start = s;
  if (s < e && names_like(s)) {
    out.names_rows = 1;
    while (any_typed && out.names_rows < 3 && s + out.names_rows + 1 < e && names_like(s + out.names_rows)) {
      ++out.names_rows;
    }
    out.names_line = rec(s).first_line;
    data_start = s + out.names_rows;
  } else if (s > 0 && k >= 2 && rec(s - 1).field_count + 1 == k) {
    // A names row one field short: the first column (row names) has no name.
    bool all_text = true;
    for (const std::string& f : rec(s - 1).fields) all_text = all_text && classify(f, format) == cell_type::text;
    if (all_text) {
      out.names_rows = 1;
      out.names_line = rec(s - 1).first_line;
      out.names.emplace_back();
      for (const std::string& f : rec(s - 1).fields) out.names.push_back(f);
    }
  }
  out.first_record = rows[out.names_line > 0 && out.names.empty() ? s : s];
  if (data_start < rows.size()) {
    out.header_lines = rec(data_start).first_line - 1;
  } else {
    out.header_lines = rec(rows.size() - 1).last_line;
  }
  if (out.names_rows > 0 && out.names.empty()) {
    std::vector<std::string> names(k);
    for (std::size_t r = s; r < s + out.names_rows; ++r) {
      const sample_record& row = rec(r);
      for (std::size_t j = 0; j < k && j < row.fields.size(); ++j) {
        if (row.fields[j].empty()) continue;
        if (!names[j].empty()) names[j] += ' ';
        names[j] += row.fields[j];
      }
    }
    out.names = std::move(names);
  }

  // Variables: the dominant count, less a trailing delimiter on every row.
  out.num_variables = k;
  std::size_t with_trailing = 0;
  std::size_t with_k = 0;
  for (std::size_t r = data_start; r < e; ++r) {
    const sample_record& row = rec(r);
    if (row.field_count != k) continue;
    ++with_k;
    with_trailing += row.fields.size() == k && row.fields.back().empty() && !row.quoted.back();
  }
  if (k >= 2 && with_k >= 2 && with_trailing == with_k) {
    out.trailing_delimiter = true;
    out.num_variables = k - 1;
    if (out.names.size() == k && out.names.back().empty()) out.names.pop_back();
  }
  out.body_rows = e > data_start ? e - data_start : 0;
  out.body_fit = out.body_rows == 0 ? 0 : static_cast<double>(with_k) / static_cast<double>(out.body_rows);
  return out;
}

}  // namespace textio::import
