#include "import/detect/fixed_width_columns.hpp"

#include <algorithm>
#include <string>

#include "import/detect/blanks.hpp"
#include "zvcore/utf8.hpp"

namespace textio::import {
namespace {

constexpr std::size_t max_width = 4096;

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
  std::vector<std::size_t> filled(max_width, 0);  // lines with a non-blank at each position
  std::size_t n = 0;
  std::size_t longest = 0;
  for (std::size_t i = from; i < lines.size() && n < 500; ++i) {
    if (skipped(lines[i].text, comment_marker)) continue;
    const std::u32string cps = code_points(lines[i].text);
    if (cps.find(U'\t') != std::u32string::npos) return {};  // tabs do not align by position
    ++n;
    longest = std::max(longest, cps.size());
    for (std::size_t p = 0; p < cps.size(); ++p) filled[p] += !is_blank_code_point(cps[p]);
  }
  if (n < 2) return {};
  // A gap: a position blank on every line (one line in fifty may disagree).
  const std::size_t allowed = n / 50;
  fixed_columns out;
  bool in_gap = true;
  std::size_t gap_width = 0;
  for (std::size_t p = 0; p < longest; ++p) {
    const bool gap = filled[p] <= allowed;
    if (!gap && in_gap) {
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
      if (starts[c] >= cps.size()) break;  // a short line has fewer fields
      r.fields.push_back(trimmed_utf8(cps, starts[c], end));
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

}  // namespace textio::import
