#include "import/detect/dialect_scoring.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <string>

#include "import/detect/blanks.hpp"
#include "import/detect/cell_types.hpp"

namespace textio::import {
namespace {

// Rows and fields examined per candidate: enough to see a table's shape,
// few enough that trying every candidate stays cheap.
constexpr std::size_t scored_records = 200;

bool is_comment(std::string_view line, std::string_view marker) {
  return !marker.empty() && trim_leading_blanks(line).substr(0, marker.size()) == marker;
}

// A field's kind while scoring: numbers may use a decimal comma unless the
// comma delimits.
cell_type kind_for_scoring(std::string_view field, const dialect& d) {
  const cell_type t = classify(field, {'.', '\0'});
  if (t != cell_type::text || d.delimiter == ',' || d.blanks) return t;
  return classify(field, {',', '\0'});
}

bool digit(char c) { return c >= '0' && c <= '9'; }

// Whether most of the delimiter's occurrences on the lines are part of a
// value: the colon of a URL's scheme (http://), or of a time (12:30) when
// the delimiter is ':'. A delimiter found mostly there cuts values apart.
bool mostly_inside_values(const std::vector<sample_line>& lines, char delimiter, std::string_view comment_marker) {
  std::size_t total = 0;
  std::size_t inside = 0;
  std::size_t examined = 0;
  for (const sample_line& l : lines) {
    if (examined >= scored_records) break;
    if (is_comment(l.text, comment_marker)) continue;
    ++examined;
    const std::string_view t = l.text;
    for (std::size_t i = 0; i < t.size(); ++i) {
      if (t[i] != delimiter) continue;
      ++total;
      const bool url = t.substr(i + 1, 2) == "//";
      const bool time = delimiter == ':' && i > 0 && digit(t[i - 1]) && i + 2 < t.size() && digit(t[i + 1]) &&
                        digit(t[i + 2]) && (i + 3 == t.size() || !digit(t[i + 3]));
      inside += url || time;
    }
  }
  return total > 0 && inside * 2 >= total;
}

// Order of preference among equally good candidates.
int preference(const dialect& d) {
  static constexpr std::string_view order = ",\t;|:";
  int p = 0;
  if (d.blanks) {
    p = 5;
  } else {
    const std::size_t at = order.find(d.delimiter);
    p = at == std::string_view::npos ? 6 : static_cast<int>(at);
  }
  p *= 10;
  p += d.quote == '"' ? 0 : d.quote == '\0' ? 1 : 2;
  p *= 2;
  p += d.escape == escape_style::doubled ? 0 : 1;
  return p;
}

}  // namespace

std::vector<char> candidate_delimiters(const std::vector<sample_line>& lines, std::string_view comment_marker) {
  std::vector<char> out = {',', ';', '\t', '|', ':'};
  // Punctuation that occurs the same number of times on most lines.
  std::array<std::map<std::size_t, std::size_t>, 128> per_count;
  std::size_t examined = 0;
  for (const sample_line& l : lines) {
    if (examined >= 200) break;
    if (trim_leading_blanks(l.text).empty() || is_comment(l.text, comment_marker)) continue;
    ++examined;
    std::array<std::size_t, 128> counts{};
    for (const char c : l.text) {
      if (static_cast<unsigned char>(c) < 128) ++counts[static_cast<unsigned char>(c)];
    }
    for (std::size_t c = 0; c < 128; ++c) ++per_count[c][counts[c]];
  }
  if (examined < 2) return out;
  std::vector<std::pair<std::size_t, char>> extra;
  static constexpr std::string_view excluded = ",;\t|: \"'.-+_/\\()[]{}";
  for (std::size_t c = 33; c < 127; ++c) {
    const char ch = static_cast<char>(c);
    if (std::isalnum(static_cast<unsigned char>(ch)) || excluded.find(ch) != std::string_view::npos) continue;
    std::size_t best = 0;
    for (const auto& [count, lines_with] : per_count[c]) {
      if (count > 0) best = std::max(best, lines_with);
    }
    if (best * 10 >= examined * 7) extra.emplace_back(best, ch);
  }
  std::sort(extra.begin(), extra.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  for (std::size_t i = 0; i < extra.size() && i < 3; ++i) out.push_back(extra[i].second);
  return out;
}

dialect_score score_dialect(const std::vector<sample_line>& lines, const dialect& d, std::string_view comment_marker) {
  dialect_score s;
  s.d = d;
  const sample_table table = split_records(lines, d, comment_marker, scored_records);
  s.unclosed_quote = table.unclosed_quote;
  std::map<std::size_t, std::size_t> rows_by_count;
  std::size_t rows = 0;
  std::size_t cells = 0;
  std::size_t typed = 0;
  std::size_t unparsed_quotes = 0;  // fields enclosed in a quote character this dialect leaves as text
  std::vector<cell_type> kinds;     // of the kept fields of the rows, in order
  for (const sample_record& r : table.records) {
    if (r.blank || r.comment) continue;
    ++rows;
    ++rows_by_count[r.field_count];
    for (std::size_t j = 0; j < r.fields.size(); ++j) {
      const std::string& f = r.fields[j];
      ++cells;
      kinds.push_back(kind_for_scoring(f, d));
      typed += is_typed(kinds.back());
      unparsed_quotes +=
          !r.quoted[j] && f.size() >= 2 && f.front() == f.back() && (f.front() == '"' || f.front() == '\'');
    }
  }
  if (rows == 0) return s;
  // Pattern: rows sharing a field count, more fields weigh more, many
  // different counts weigh less.
  double pattern = 0;
  std::size_t dominant_rows = 0;
  for (const auto& [count, n] : rows_by_count) {
    pattern += static_cast<double>(n) * static_cast<double>(count - 1) / static_cast<double>(count);
    if (n > dominant_rows || (n == dominant_rows && count > s.dominant_fields)) {
      dominant_rows = n;
      s.dominant_fields = count;
    }
  }
  pattern /= static_cast<double>(rows_by_count.size());
  s.consistency = static_cast<double>(dominant_rows) / static_cast<double>(rows);
  // Kinds down the columns of the rows with the dominant count.
  const std::size_t k = std::min(s.dominant_fields, max_kept_fields);
  std::vector<std::array<std::size_t, 5>> column_kinds(k);
  std::size_t first_kind = 0;  // of the row in `kinds`
  for (const sample_record& r : table.records) {
    if (r.blank || r.comment) continue;
    const cell_type* row_kinds = kinds.data() + first_kind;
    first_kind += r.fields.size();
    if (r.field_count != s.dominant_fields) continue;
    for (std::size_t j = 0; j < k && j < r.fields.size(); ++j)
      ++column_kinds[j][static_cast<std::size_t>(row_kinds[j])];
  }
  double uniformity = 0;
  for (const auto& kinds : column_kinds) {
    std::size_t non_empty = 0;
    std::size_t top = 0;
    for (std::size_t t = 1; t < kinds.size(); ++t) {
      non_empty += kinds[t];
      top = std::max(top, kinds[t]);
    }
    uniformity += non_empty == 0 ? 1.0 : static_cast<double>(top) / static_cast<double>(non_empty);
  }
  uniformity = k == 0 ? 0 : uniformity / static_cast<double>(k);
  const double type_share = cells == 0 ? 0 : static_cast<double>(typed) / static_cast<double>(cells);
  s.score = pattern * (0.1 + 0.45 * type_share + 0.45 * uniformity) / static_cast<double>(rows);
  if (unparsed_quotes > 0) {
    s.score *= 1 - 0.5 * std::min(1.0, 4.0 * static_cast<double>(unparsed_quotes) / static_cast<double>(cells));
  }
  if (!d.blanks && mostly_inside_values(lines, d.delimiter, comment_marker)) s.score *= 0.1;
  if (d.quote != '\0') {
    // Quotes that do not pair up, or text after a closing quote, say the
    // quote or its escape is wrong.
    if (s.unclosed_quote) s.score *= 0.1;
    if (table.text_after_quote > 0) {
      s.score *= 1 - std::min(0.9, static_cast<double>(table.text_after_quote) /
                                       static_cast<double>(std::max<std::size_t>(1, table.quoted_fields)));
    }
  }
  return s;
}

std::vector<dialect_score> rank_dialects(const std::vector<sample_line>& lines, std::string_view text,
                                         std::string_view comment_marker, const std::vector<char>& delimiters,
                                         bool with_blanks, const std::vector<char>& quotes,
                                         const std::vector<escape_style>& escapes) {
  std::vector<dialect> candidates;
  std::vector<dialect> bases;
  std::vector<dialect_score> scored_bases;  // candidates scored while choosing the bases
  for (const char c : delimiters) bases.push_back({c, false, quotes.front(), escapes.front()});
  if (with_blanks) bases.push_back({' ', true, quotes.front(), escapes.front()});
  // Delimiters first, with the first quote and escape; the quotes and
  // escapes are then tried with the best few of them only.
  constexpr std::size_t kept_delimiters = 3;
  if (bases.size() > kept_delimiters && (quotes.size() > 1 || escapes.size() > 1)) {
    std::vector<std::pair<double, std::size_t>> first;
    for (std::size_t i = 0; i < bases.size(); ++i) {
      scored_bases.push_back(score_dialect(lines, bases[i], comment_marker));
      first.emplace_back(scored_bases.back().score, i);
    }
    std::stable_sort(first.begin(), first.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<dialect> best;
    for (std::size_t i = 0; i < kept_delimiters; ++i) best.push_back(bases[first[i].second]);
    bases = std::move(best);
  }
  for (const dialect& b : bases) {
    for (const char q : quotes) {
      // Only quote characters the sample holds make a difference.
      if (q != '\0' && text.find(q) == std::string_view::npos && q != quotes.front()) continue;
      for (const escape_style e : escapes) {
        if (q == '\0' && e != escapes.front()) continue;
        if (e == escape_style::backslash && q != '\0' && text.find(std::string{'\\', q}) == std::string_view::npos &&
            escapes.size() > 1)
          continue;
        dialect d = b;
        d.quote = q;
        d.escape = e;
        candidates.push_back(d);
      }
    }
  }
  std::vector<dialect_score> scored;
  scored.reserve(candidates.size());
  for (const dialect& d : candidates) {
    const auto known = std::ranges::find(scored_bases, d, &dialect_score::d);
    scored.push_back(known != scored_bases.end() ? *known : score_dialect(lines, d, comment_marker));
  }
  std::stable_sort(scored.begin(), scored.end(), [](const dialect_score& a, const dialect_score& b) {
    // Within half a percent, the more usual dialect wins.
    const double tolerance = 0.005 * std::max(a.score, b.score);
    if (std::abs(a.score - b.score) > tolerance) return a.score > b.score;
    return preference(a.d) < preference(b.d);
  });
  return scored;
}

}  // namespace textio::import
