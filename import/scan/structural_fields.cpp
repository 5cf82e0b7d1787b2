#include "import/scan/structural_fields.hpp"

#include <cstdint>
#include <cstring>
#include <utility>

namespace textio::import {
namespace {

// A quoted field from its opening quote at `b` to `e`: on the structural
// path its quotes are the opening one, doubled ones and the closing one,
// which only the field's own units (no quote) may follow.
[[gnu::noinline]] raw_field quoted_field(std::string_view t, std::size_t b, std::size_t e, char quote,
                                         scanned_record<char>& out) {
  raw_field f;
  f.start = static_cast<std::uint32_t>(b);
  f.begin = f.start;
  f.quoted = 1;
  std::size_t pos = b + 1;
  std::size_t segment = pos;
  for (;;) {
    const void* found = std::memchr(t.data() + pos, quote, e - pos);
    const std::size_t q = found ? static_cast<std::size_t>(static_cast<const char*>(found) - t.data()) : e;
    if (q + 1 < e && t[q + 1] == quote) {
      append_to_field(t, out, f, segment, q + 1);
      pos = q + 2;
      segment = pos;
      continue;
    }
    append_to_field(t, out, f, segment, q);
    pos = q + 1;
    break;
  }
  if (f.length == 0) f.begin = static_cast<std::uint32_t>(pos);
  // The units after the closing quote, whitespace included.
  if (pos < e) append_to_field(t, out, f, pos, e);
  return f;
}

// The line starts of a record whose quoted fields hold line endings, and the
// line and line start of its end; false unless its last line is `last_line`.
bool find_line_starts(std::string_view record, const scan_rules<char>& rules, scanned_record<char>& out,
                      std::uint64_t last_line) {
  line_tracker<char> lines{out.first_line, 0};
  for (std::size_t p = 0; p < record.size();) {
    const std::size_t ending = lines.ending_at(record, p, rules);
    if (ending == 0) {
      ++p;
      continue;
    }
    lines.pass(p, ending, out);
  }
  if (lines.line != last_line) return false;
  out.end.line = lines.line;
  out.end.line_start = lines.line_start;
  return true;
}

// The bytes of field i of record r, from r.begin: quotes and whitespace included.
std::pair<std::size_t, std::size_t> field_span(const structural_record& r, std::size_t i) {
  return {(i == 0 ? r.begin : r.delimiters[i - 1] + 1) - r.begin,
          (i + 1 < r.fields ? r.delimiters[i] : r.end) - r.begin};
}

// Leaves out the whitespace at either end of t[b, e).
void trim(std::string_view t, const scan_rules<char>& rules, std::size_t& b, std::size_t& e) {
  const auto blank = [&rules](char u) { return (rules.classes(u) & is_whitespace) != 0; };
  while (b < e && blank(t[b])) ++b;
  while (e > b && blank(t[e - 1])) --e;
}

}  // namespace

bool fill_scanned_record(std::string_view text, const structural_record& r, const scan_rules<char>& rules,
                         scanned_record<char>& out) {
  // A comment after text ends its field where the record scanner removes it.
  if (r.had_comment && !r.empty) return false;
  if (r.next - r.begin >= rules.max_record_units) return false;

  const std::string_view t = text.substr(r.begin);
  out.fields.clear();
  out.delimiters.clear();
  out.scratch.clear();
  out.line_starts.clear();
  out.stray_quote = {};
  out.empty = r.empty;
  out.had_comment = r.had_comment;
  out.first_line = r.line;
  out.next_line = r.next_line;
  out.consumed = r.next - r.begin;
  out.end = {r.line, 0, r.end - r.begin};
  const std::uint64_t last_line = r.next_line - (r.next != r.end ? 1 : 0);
  if (last_line != r.line && !find_line_starts(t.substr(0, r.end - r.begin), rules, out, last_line)) return false;
  const auto blank = [&rules](char u) { return (rules.classes(u) & is_whitespace) != 0; };
  if (r.had_comment) {
    // Whitespace and a comment: one empty field from the marker on.
    std::size_t b = 0;
    while (blank(t[b])) ++b;
    raw_field f;
    f.start = static_cast<std::uint32_t>(b);
    f.begin = static_cast<std::uint32_t>(r.end - r.begin);
    out.fields.push_back(f);
    return true;
  }
  for (std::size_t i = 0; i < r.fields; ++i) {
    auto [b, e] = field_span(r, i);
    if (b < e && t[b] == rules.quote) {
      out.fields.push_back(quoted_field(t, b, e, rules.quote, out));
    } else {
      trim(t, rules, b, e);
      raw_field f;
      f.start = static_cast<std::uint32_t>(b);
      f.begin = f.start;
      f.length = static_cast<std::uint32_t>(e - b);
      out.fields.push_back(f);
    }
    if (rules.record_delimiters && i + 1 < r.fields)
      out.delimiters.push_back(static_cast<std::uint32_t>(r.delimiters[i] - r.begin));
  }
  return true;
}

bool plain_text_values(std::string_view text, const structural_record& r, const scan_rules<char>& rules,
                       scanned_record<char>& scratch, std::vector<output_value>& values) {
  if (r.empty || r.had_comment || r.next_line - (r.next != r.end ? 1 : 0) != r.line) return false;
  if (r.next - r.begin >= rules.max_record_units) return false;
  const std::string_view t = text.substr(r.begin, r.end - r.begin);
  // Fields with doubled quotes are copied to scratch, never more than the
  // record's bytes: reserved first, so that the views into it hold.
  scratch.scratch.clear();
  scratch.scratch.reserve(t.size());
  values.resize(r.fields);
  for (std::size_t i = 0; i < r.fields; ++i) {
    auto [b, e] = field_span(r, i);
    output_value& v = values[i];
    if (b < e && t[b] == rules.quote) {
      v.kind = value_kind::text;
      v.bytes = scratch.text(t, quoted_field(t, b, e, rules.quote, scratch));
      continue;
    }
    trim(t, rules, b, e);
    v.kind = b < e ? value_kind::text : value_kind::missing;
    v.bytes = b < e ? t.substr(b, e - b) : std::string_view();
  }
  return true;
}

}  // namespace textio::import
