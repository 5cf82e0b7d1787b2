#include "import/detect/table_layout.hpp"

#include <algorithm>
#include <map>
#include <set>

#include "import/detect/column_profiles.hpp"
#include "import/detect/layout_rows.hpp"

namespace textio::import {
namespace {

// How a row votes on being the names row: for each column of one kind, a
// text field says names and a field of the column's kind and form says data.
struct names_votes {
  int names = 0;
  int data = 0;
};

}  // namespace

table_layout analyse_layout(const sample_table& table, const number_separators& format) {
  table_layout out;
  const std::vector<std::size_t> rows = row_indices(table);
  if (rows.empty()) return out;
  const auto& rec = [&](std::size_t i) -> const sample_record& { return table.records[rows[i]]; };
  const std::size_t k = dominant_count(table, rows);
  const std::size_t first = first_row(table, rows, k);

  // Rows of another count that run on from the table without a break are
  // its records too: columns added (or dropped) over the years. The table
  // ends only on evidence: a blank line or a line of one field (a footnote)
  // followed by rows that do not fit. A row cut by the sample's end is none.
  const auto is_regular = [&](std::size_t i) {
    const std::size_t c = rec(i).field_count;
    return (i > 0 && rec(i - 1).field_count == c) || (i + 1 < rows.size() && rec(i + 1).field_count == c);
  };
  const auto blank_before = [&](std::size_t i) {
    for (std::size_t r = rows[i - 1] + 1; r < rows[i]; ++r) {
      if (table.records[r].blank) return true;
    }
    return false;
  };
  const auto at_sample_edge = [&](std::size_t i) { return table.cut && i + 1 == rows.size(); };
  std::size_t narrowest = k;
  std::size_t widest = k;
  std::size_t e = first;  // one past the last body row
  std::size_t i = first;
  std::map<std::size_t, std::size_t> body_counts;  // rows of the body by field count
  while (i < rows.size()) {
    const std::size_t c = rec(i).field_count;
    if (fits(c, k) || (c >= narrowest && c <= widest)) {
      ++body_counts[c];
      e = ++i;
      continue;
    }
    if (at_sample_edge(i)) break;
    const bool broken = i > 0 && (blank_before(i) || (c == 1 && k >= 2));
    if (!broken) {
      // Runs on from the table: a record, and a regular one widens it.
      if (c >= 2 && is_regular(i)) {
        narrowest = std::min(narrowest, c);
        widest = std::max(widest, c);
      }
      ++body_counts[c];
      e = ++i;
      continue;
    }
    std::size_t window = std::min<std::size_t>(4, rows.size() - i - 1);
    if (table.cut && window > 0 && i + window + 1 == rows.size()) --window;  // the last row may be cut
    std::size_t agree = 0;
    for (std::size_t j = 1; j <= window; ++j) {
      const std::size_t cj = rec(i + j).field_count;
      agree += fits(cj, k) || (cj >= narrowest && cj <= widest);
    }
    if (window == 0 || agree * 2 < window) {
      out.end_line = rec(e - 1).last_line + 1;
      break;
    }
    ++i;
  }
  // Rows right above the first row that fits are the table's too when the
  // body has rows of their count, or when they are ragged: runs of two rows
  // or more, their counts stepping one way, none under half the table's.
  std::size_t s = first;
  while (s > 0 && !blank_before(s) && rec(s - 1).last_line + 1 >= rec(s).first_line) {
    const std::size_t c = rec(s - 1).field_count;
    const std::size_t next = rec(s).field_count;
    const auto in_body = body_counts.find(c);
    if (c >= 2 && in_body != body_counts.end() && in_body->second >= 2) {
      --s;
      continue;
    }
    const bool same_way = c == next || (c < next ? widest == k : narrowest == k);
    if (c < 2 || c * 2 <= k || !same_way ||
        (c != next && !(s >= 2 && rec(s - 2).field_count == c && !blank_before(s - 1))))
      break;
    narrowest = std::min(narrowest, c);
    widest = std::max(widest, c);
    --s;
  }
  const auto belongs = [&](std::size_t c) { return fits(c, k) || (c >= narrowest && c <= widest); };

  // Kinds down each column, from the rows below the candidate names rows.
  const std::size_t first_typed = (e - s >= 8) ? s + 3 : s + 1;
  std::vector<column_profile> columns = profile_columns(table, rows, first_typed, e, k, format);
  for (const column_profile& c : columns) out.column_types.push_back(c.type);
  bool any_typed = false;
  for (const column_profile& c : columns)
    any_typed = any_typed || (is_typed(c.type) && c.type != cell_type::empty && c.purity >= 0.7);

  // A names row differs in kind or form from the values below it.
  auto typed_votes = [&](std::size_t r) {
    names_votes v;
    const sample_record& row = rec(r);
    for (std::size_t j = 0; j < columns.size() && j < row.fields.size(); ++j) {
      const column_profile& c = columns[j];
      if (c.type == cell_type::empty || !is_typed(c.type) || c.purity < 0.7) continue;
      const cell_type t = classify(row.fields[j], format);
      if (t == cell_type::text) {
        ++v.names;
      } else if (t == c.type && (t != cell_type::number || is_integer(row.fields[j]) == c.integers)) {
        ++v.data;
      }
    }
    return v;
  };
  // Undecided by kinds: names are all given, all different, none among the
  // values below, and mostly of another form than the text below them.
  auto text_names = [&](std::size_t r) {
    if (e - s < 2) return false;
    const sample_record& row = rec(r);
    std::set<std::string> seen;
    int other_form = 0;
    for (std::size_t j = 0; j < row.fields.size() && j < columns.size(); ++j) {
      const std::string& f = row.fields[j];
      if (f.empty() || !seen.insert(f).second || columns[j].values.count(f) > 0) return false;
      if (columns[j].shaped == 0) continue;
      const auto it = columns[j].shapes.find(shape(f));
      const std::size_t same = it == columns[j].shapes.end() ? 0 : it->second;
      other_form += same * 10 < columns[j].shaped * 3 ? 1 : -1;
    }
    return other_form >= 0;
  };
  auto names_like = [&](std::size_t r) {
    if (!belongs(rec(r).field_count)) return false;
    const names_votes v = typed_votes(r);
    if (v.names != v.data) return v.names > v.data;
    return text_names(r);
  };

  std::size_t data_start = s;
  std::size_t wide_names = 0;
  std::size_t shift = 0;  // names that start at the second variable (row names first)
  if (s < e && names_like(s)) {
    out.names_rows = 1;
    while (any_typed && out.names_rows < 3 && s + out.names_rows + 1 < e && names_like(s + out.names_rows)) {
      ++out.names_rows;
    }
    out.names_line = rec(s).first_line;
    data_start = s + out.names_rows;
  } else if (s + 2 < e && typed_votes(s + 1).names >= 2 && typed_votes(s + 1).data == 0) {
    // A line of another kind (counts, a note) above the names row.
    out.names_rows = 1;
    out.names_line = rec(s + 1).first_line;
    data_start = s + 2;
  } else if (s == 1 && k >= 2 && rec(0).field_count + 1 == k && k < 3) {
    // A names row one field short: the first column (row names) has no name.
    bool all_text = true;
    for (const std::string& f : rec(s - 1).fields) all_text = all_text && classify(f, format) == cell_type::text;
    if (all_text) {
      out.names_rows = 1;
      out.names_line = rec(s - 1).first_line;
      out.names.emplace_back();
      for (const std::string& f : rec(s - 1).fields) out.names.push_back(f);
      shift = 1;
    }
  }
  std::size_t names_row = out.names_rows > 0 ? (data_start == s + 2 && out.names_rows == 1 ? s + 1 : s) : 0;
  if (shift == 1) names_row = s - 1;
  if (out.names_rows == 0 && s > 0 && rec(s - 1).field_count > k && rec(s - 1).last_line + 1 == rec(s).first_line) {
    // A names row with more names than the rows have fields: the rows lack
    // their last fields.
    // Not a "Key: name name" line, which labels the table rather than naming it.
    const std::vector<std::string>& cells = rec(s - 1).fields;
    bool all_text = cells.empty() || cells.front().empty() || cells.front().back() != ':';
    for (const std::string& f : cells) all_text = all_text && classify(f, format) == cell_type::text;
    if (all_text) {
      out.names_rows = 1;
      out.names_line = rec(s - 1).first_line;
      names_row = s - 1;
      wide_names = rec(s - 1).field_count;
    }
  }
  out.first_record = rows[s];
  if (data_start < rows.size()) {
    out.header_lines = rec(data_start).first_line - 1;
  } else {
    out.header_lines = rec(rows.size() - 1).last_line;
  }
  // A names row one name short over rows that all have one field more: the
  // rows start with row names, which have no name.
  if (out.names_rows == 1 && out.names.empty() && names_row == s && data_start < e &&
      rec(names_row).field_count + 1 == widest && narrowest == widest) {
    bool all_wider = true;
    bool last_given = false;  // not a delimiter at the end of every row
    for (std::size_t r = data_start; r < e; ++r) {
      all_wider = all_wider && rec(r).field_count == widest;
      last_given = last_given || (rec(r).fields.size() == widest && !rec(r).fields.back().empty());
    }
    shift = all_wider && last_given ? 1 : 0;
  }
  if (out.names_rows > 0 && out.names.empty()) {
    const std::size_t n = std::max(widest, wide_names);
    std::vector<std::string> names(n);
    for (std::size_t r = names_row; r < names_row + out.names_rows; ++r) {
      const sample_record& row = rec(r);
      for (std::size_t j = 0; j + shift < n && j < row.fields.size(); ++j) {
        if (row.fields[j].empty()) continue;
        if (!names[j + shift].empty()) names[j + shift] += ' ';
        names[j + shift] += row.fields[j];
      }
    }
    out.names = std::move(names);
  }
  // Variables: the widest regular count, less a trailing delimiter on every
  // row; shorter rows are read with missing values at their end.
  out.num_variables = std::max(widest, wide_names);
  std::size_t with_trailing = 0;
  std::size_t with_k = 0;
  std::size_t ragged = 0;  // rows of the table's other regular counts
  for (std::size_t r = data_start; r < e; ++r) {
    const sample_record& row = rec(r);
    if (row.field_count != k) {
      ragged += row.field_count >= narrowest && row.field_count <= widest;
      continue;
    }
    ++with_k;
    with_trailing += row.fields.size() == k && row.fields.back().empty() && !row.quoted.back();
  }
  // A names row that names the last field too says it is a variable.
  const bool last_named = out.names_rows > 0 && out.names.size() >= k && !out.names[k - 1].empty();
  if (k >= 2 && with_k >= 2 && with_trailing == with_k && !last_named && widest == k) {
    out.trailing_delimiter = true;
    out.num_variables = k - 1;
    if (out.names.size() == k && out.names.back().empty()) out.names.pop_back();
  }
  // Variables the names row does not reach (row names, columns added after
  // it) are named by their position, so that names and values agree.
  if (out.names_rows > 0) {
    const std::size_t named = rec(names_row).field_count;
    for (std::size_t j = 0; j < out.names.size() && j < out.num_variables; ++j) {
      if (!out.names[j].empty() || (j >= shift && j < named + shift)) continue;
      out.names[j] = "Var" + std::to_string(j + 1);
      out.names_filled = true;
    }
  }

  out.body_rows = e > data_start ? e - data_start : 0;
  out.body_fit = out.body_rows == 0 ? 0 : static_cast<double>(with_k + ragged) / static_cast<double>(out.body_rows);
  return out;
}

}  // namespace textio::import
