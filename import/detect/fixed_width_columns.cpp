#include "import/detect/fixed_width_columns.hpp"

#include <algorithm>
#include <cctype>
#include <string>

#include "import/detect/blanks.hpp"
#include "zvcore/utf8.hpp"

namespace textio::import {
namespace {

constexpr std::size_t max_width = 4096;
constexpr std::size_t few_lines = 10;

bool is_blank_code_point(char32_t c) { return c == U' ' || c == U'\t'; }

// Code points of a UTF-8 line, at most max_width (a byte that starts no
// sequence stands for itself).
std::u32string code_points(std::string_view s) {
  namespace unicode = foundation::core::unicode;
  const auto* bytes = reinterpret_cast<const unsigned char*>(s.data());
  std::u32string out;
  for (std::size_t i = 0; i < s.size() && out.size() < max_width;) {
    const std::size_t length = std::max<std::size_t>(1, unicode::utf8_sequence_at(s.substr(i)).length);
    out.push_back(unicode::decode_utf8(bytes + i, length));
    i += length;
  }
  return out;
}

// Blank lines and comment lines.
bool skipped(std::string_view line, std::string_view marker) {
  const std::string_view text = trim_leading_blanks(line);
  return text.empty() || (!marker.empty() && text.substr(0, marker.size()) == marker);
}

std::string trimmed_utf8(const std::u32string& s, std::size_t from, std::size_t to) {
  to = std::min(to, s.size());
  while (from < to && is_blank_code_point(s[from])) ++from;
  while (to > from && is_blank_code_point(s[to - 1])) --to;
  std::string out;
  for (std::size_t i = from; i < to; ++i) foundation::core::unicode::append_utf8(out, s[i]);
  return out;
}

}  // namespace

fixed_columns fixed_width_starts(const std::vector<sample_line>& lines, std::size_t from,
                                 std::string_view comment_marker) {
  std::vector<std::size_t> filled(max_width, 0);      // lines with a non-blank at each position
  std::vector<std::size_t> letters(max_width, 0);     // lines with a letter at each position
  std::vector<std::size_t> ending(max_width + 1, 0);  // lines whose last non-blank is at each position
  std::size_t n = 0;
  std::size_t longest = 0;
  for (std::size_t i = from; i < lines.size() && n < 500; ++i) {
    if (skipped(lines[i].text, comment_marker)) continue;
    const std::u32string cps = code_points(lines[i].text);
    if (cps.find(U'\t') != std::u32string::npos) return {};  // tabs do not align by position
    ++n;
    longest = std::max(longest, cps.size());
    std::size_t last = 0;  // one past the last non-blank
    for (std::size_t p = 0; p < cps.size(); ++p) {
      const bool mark = !is_blank_code_point(cps[p]);
      filled[p] += mark;
      letters[p] += cps[p] < 0x80 ? std::isalpha(static_cast<int>(cps[p])) != 0 : cps[p] > 0xBF;
      if (mark) last = p + 1;
    }
    if (last > 0) ++ending[last - 1];
  }
  // Lines with text after each position.
  std::vector<std::size_t> going_on(longest + 1, 0);
  for (std::size_t p = longest; p-- > 0;) going_on[p] = going_on[p + 1] + ending[p + 1];
  if (n < 2) return {};
  // A gap: a position blank on every line (one line in fifty may disagree).
  const std::size_t allowed = n / 50;
  fixed_columns out;
  bool in_gap = true;
  std::size_t gap_width = 0;
  for (std::size_t p = 0; p < longest; ++p) {
    const bool gap = filled[p] <= allowed;
    // On a few lines, one blank between letters on most of them is more
    // likely two words of one text aligned by chance (John Smith, Mary
    // Hartford) than two columns; on many lines it is a column edge.
    const bool word_gap = n <= few_lines && gap_width == 1 && p >= 2 && letters[p - 2] * 2 > n && letters[p] * 2 > n;
    // Text that a tenth of the lines reach at the most is the ragged end
    // of a last column of free text, not a column of its own.
    const bool ragged_end = going_on[p] + ending[p] < std::max(allowed + 1, n / 10);
    if (!gap && in_gap && !word_gap && !ragged_end) {
      if (!out.starts.empty()) {
        out.narrowest_gap = out.starts.size() == 1 ? gap_width : std::min(out.narrowest_gap, gap_width);
      }
      // A column starts right after the blanks' first position, so that a
      // names row aligned on either edge of its column falls inside it.
      out.starts.push_back(p - (out.starts.empty() ? 0 : gap_width - 1));
    }
    gap_width = gap ? gap_width + 1 : 0;
    in_gap = gap;
  }
  if (!out.starts.empty()) out.starts.front() = 0;
  return out;
}

std::vector<std::uint64_t> widths_from_starts(const std::vector<std::size_t>& starts,
                                              const std::vector<sample_line>& lines) {
  std::size_t longest = 0;
  for (const sample_line& l : lines) longest = std::max(longest, code_points(l.text).size());
  std::vector<std::uint64_t> widths;
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : std::max(longest, starts[i] + 1);
    widths.push_back(end - starts[i]);
  }
  return widths;
}

sample_table cut_fixed_width(const std::vector<sample_line>& lines, const std::vector<std::size_t>& starts,
                             std::string_view comment_marker, std::size_t max_records) {
  sample_table table;
  for (std::size_t i = 0; i < lines.size() && table.records.size() < max_records; ++i) {
    sample_record r;
    r.first_line = r.last_line = i + 1;
    const std::string_view line = lines[i].text;
    if (skipped(line, comment_marker)) {
      r.blank = trim_leading_blanks(line).empty();
      r.comment = !r.blank;
      table.records.push_back(std::move(r));
      continue;
    }
    const std::u32string cps = code_points(line);
    for (std::size_t c = 0; c < starts.size(); ++c) {
      const std::size_t end = c + 1 < starts.size() ? starts[c + 1] : cps.size();
      // A line that ends before a column has an empty field there, as the
      // reader reads it.
      r.fields.push_back(starts[c] >= cps.size() ? std::string() : trimmed_utf8(cps, starts[c], end));
      r.quoted.push_back(false);
      ++r.field_count;
    }
    table.records.push_back(std::move(r));
  }
  return table;
}

bool words_only_in_last_column(const sample_table& fixed) {
  bool last_has_words = false;
  for (const sample_record& r : fixed.records) {
    for (std::size_t j = 0; j < r.fields.size(); ++j) {
      const bool words = r.fields[j].find_first_of(" \t") != std::string::npos;
      if (words && j + 1 < r.fields.size()) return false;
      last_has_words = last_has_words || words;
    }
  }
  return last_has_words;
}

rule_line find_rule_line(const std::vector<sample_line>& lines, std::string_view comment_marker) {
  // Names come first, on a few lines at most, then the rule.
  constexpr std::size_t looked_at = 5;
  rule_line out;
  std::size_t seen = 0;
  bool top = false;
  for (std::size_t i = 0; i < lines.size() && seen < looked_at; ++i) {
    if (skipped(lines[i].text, comment_marker)) continue;
    ++seen;
    const std::u32string cps = code_points(lines[i].text);
    std::vector<std::pair<std::size_t, std::size_t>> runs;  // first and last position
    std::size_t dashes = 0;
    bool rule = true;
    for (std::size_t p = 0; p < cps.size() && rule; ++p) {
      if (is_blank_code_point(cps[p])) continue;
      if (cps[p] != U'-' && cps[p] != U'=') {
        rule = false;
        break;
      }
      ++dashes;
      if (runs.empty() || runs.back().second + 1 != p) {
        runs.emplace_back(p, p);
      } else {
        runs.back().second = p;
      }
    }
    // Runs of one dash are more likely missing values (- - -).
    const bool short_run = std::ranges::any_of(runs, [](const auto& r) { return r.first == r.second; });
    if (!rule || dashes < 3 || short_run) {
      if (out.line > 0 && !top) break;  // the data after the rule
      continue;
    }
    top = seen == 1;  // a rule above the names; the rule under them follows
    out.line = i + 1;
    out.starts.clear();
    if (runs.size() < 2) continue;
    // Each column from the second position of the blanks before its run.
    out.starts.push_back(0);
    for (std::size_t r = 1; r < runs.size(); ++r) out.starts.push_back(runs[r - 1].second + 2);
  }
  // A rule with nothing below it rules no table.
  if (out.line == lines.size()) out = {};
  return out;
}

void follow_rule_line(table_layout& layout, const sample_table& table, const rule_line& rule) {
  if (rule.line == 0) return;
  layout.header_lines = rule.line;
  layout.names_line = 0;
  layout.names_rows = 0;
  layout.names.clear();
  // The names: the nearest line above the rule that is neither blank, a
  // comment, nor another rule.
  for (std::size_t r = 0; r < table.records.size() && table.records[r].last_line < rule.line; ++r) {
    const sample_record& rec = table.records[r];
    if (rec.blank || rec.comment) continue;
    bool ruled = true;
    for (const std::string& f : rec.fields) ruled = ruled && f.find_first_not_of("-= ") == std::string::npos;
    if (ruled) continue;
    layout.names_line = rec.first_line;
    layout.names_rows = 1;
    layout.names = rec.fields;
  }
}

}  // namespace textio::import
