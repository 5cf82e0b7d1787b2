// The records of a text as the exact record scanner finds them and as the
// structural scan finds them (handing the records it does not cover to the
// exact scanner, as the reader does), in a form to compare; and the fields
// that fill_scanned_record makes of them against the exact scanner's. Shared
// by the differential fuzz target and the unit tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/scan/record_scanner.hpp"
#include "import/scan/structural_fields.hpp"
#include "import/scan/structural_scan.hpp"
#include "zvcore/exceptions.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace structural_check {

using textio::import::scan_rules;

struct found_record {
  std::size_t begin = 0;
  std::size_t next = 0;
  std::uint64_t next_line = 0;
  std::vector<std::size_t> delimiters;
  std::vector<bool> quoted;
  bool empty = false;
  bool had_comment = false;
  bool operator==(const found_record&) const = default;
};

struct found_records {
  std::vector<found_record> records;
  bool failed = false;          // the exact scanner threw (a quote open at the end)
  std::size_t handed_over = 0;  // records the structural scan left to the exact scanner
};

// Scanner rules for delimited text: one-byte strings or CR LF.
inline scan_rules<char> make_rules(const std::vector<std::u16string>& delimiters,
                                   const std::vector<std::u16string>& endings, char16_t comment,
                                   const std::u16string& whitespace) {
  using namespace textio::import;
  scan_rules<char> rules;
  if (!delimiters.empty()) rules.field_delimiters = string_matcher<char>(textio::get_or_create_delim(delimiters));
  rules.line_endings = string_matcher<char>(textio::get_or_create_delim(endings));
  if (comment != 0)
    rules.comment_open = string_matcher<char>(textio::get_or_create_delim({std::u16string(1, comment)}));
  rules.quotes = true;
  rules.trim = true;
  rules.whitespace = whitespace;
  rules.record_delimiters = true;
  rules.finish();
  for (const auto& d : delimiters) rules.mark(d[0], starts_field_delimiter);
  for (const auto& e : endings) rules.mark(e[0], starts_line_ending);
  return rules;
}

// One record of the exact scanner at `pos`; false at the end (or on
// need_more, or a throw, which sets `failed`).
inline bool exact_record(const scan_rules<char>& rules, std::string_view text, bool at_end, std::size_t& pos,
                         std::uint64_t& line, found_records& out) {
  textio::import::record_scanner<char> scanner(rules);
  textio::import::scanned_record<char> rec;
  textio::import::scan_result r;
  try {
    r = scanner.scan(text.substr(pos), at_end, line, rec);
  } catch (const foundation::core::except::IMsgIDException&) {
    out.failed = true;
    return false;
  }
  if (r != textio::import::scan_result::record) return false;
  found_record f;
  f.begin = pos;
  f.next = pos + rec.consumed;
  f.next_line = rec.next_line;
  for (std::size_t i = 0; i < rec.fields.size(); ++i) {
    if (i + 1 < rec.fields.size()) f.delimiters.push_back(pos + rec.delimiters[i]);
    f.quoted.push_back(rec.fields[i].quoted);
  }
  f.empty = rec.empty;
  f.had_comment = rec.had_comment;
  out.records.push_back(f);
  pos = f.next;
  line = f.next_line;
  return true;
}

inline found_records exact_records(const scan_rules<char>& rules, std::string_view text) {
  found_records out;
  std::size_t pos = 0;
  std::uint64_t line = 1;
  while (exact_record(rules, text, true, pos, line, out)) {
  }
  return out;
}

// The structural scan's records; the text ends at `text` when `at_end`.
inline found_records structural_records(const scan_rules<char>& rules,
                                        const textio::import::structural_classes& classes, std::string_view text,
                                        bool at_end, std::int64_t target) {
  using textio::import::structural_record;
  using textio::import::structural_scanner;
  found_records out;
  structural_scanner scanner(classes, true, target);
  std::size_t pos = 0;
  std::uint64_t line = 1;
  for (;;) {
    const auto r = scanner.scan(text.substr(pos), at_end, line, [&](const structural_record& s) {
      found_record f;
      f.begin = pos + s.begin;
      f.next = pos + s.next;
      f.next_line = s.next_line;
      for (std::size_t i = 0; i < s.fields; ++i) {
        const auto field = textio::import::field_of(text.substr(pos), s, i, classes.quote);
        if (i + 1 < s.fields) f.delimiters.push_back(pos + field.end);
        f.quoted.push_back(field.quoted);
      }
      f.empty = s.empty;
      f.had_comment = s.had_comment;
      out.records.push_back(f);
      return true;
    });
    pos += r.consumed;
    line = r.next_line;
    if (r.what != structural_scanner::stop::exact) break;
    ++out.handed_over;
    if (!exact_record(rules, text, at_end, pos, line, out)) break;
  }
  return out;
}

// Where the fields that fill_scanned_record makes of the structural scan's
// records of the whole `text` differ from the exact scanner's (their text,
// start, quotes and delimiters, and the record's lines, end and emptiness);
// empty when they agree. The records it leaves to the exact scanner are
// skipped.
inline std::string filled_records_disagree(const scan_rules<char>& rules,
                                           const textio::import::structural_classes& classes, std::string_view text,
                                           std::int64_t target) {
  using namespace textio::import;
  structural_scanner scanner(classes, true, target);
  record_scanner<char> exact_scanner(rules);
  scanned_record<char> filled;
  scanned_record<char> exact;
  std::string problem;
  std::size_t pos = 0;
  std::uint64_t line = 1;
  for (;;) {
    const std::string_view window = text.substr(pos);
    const auto r = scanner.scan(window, true, line, [&](const structural_record& s) {
      if (!problem.empty() || !fill_scanned_record(window, s, rules, filled)) return true;
      const std::string_view at = window.substr(s.begin);
      if (exact_scanner.scan(at, true, s.line, exact) != scan_result::record) {
        problem = "no exact record";
        return true;
      }
      const auto where = [&](const char* what) {
        return std::string(what) + " of the record at " + std::to_string(pos + s.begin);
      };
      if (filled.fields.size() != exact.fields.size()) problem = where("field count");
      for (std::size_t i = 0; problem.empty() && i < exact.fields.size(); ++i) {
        const raw_field& a = filled.fields[i];
        const raw_field& b = exact.fields[i];
        if (filled.text(at, a) != exact.text(at, b)) problem = where("field text");
        if (a.start != b.start || a.quoted != b.quoted) problem = where("field start or quote");
      }
      if (filled.delimiters != exact.delimiters) problem = where("delimiters");
      if (filled.consumed != exact.consumed || filled.first_line != exact.first_line ||
          filled.next_line != exact.next_line || filled.end.pos != exact.end.pos || filled.end.line != exact.end.line ||
          filled.end.line_start != exact.end.line_start || filled.line_starts != exact.line_starts)
        problem = where("extent");
      if (filled.empty != exact.empty || filled.had_comment != exact.had_comment) problem = where("flags");
      return true;
    });
    pos += r.consumed;
    line = r.next_line;
    if (r.what != structural_scanner::stop::exact || !problem.empty()) break;
    found_records ignored;
    if (!exact_record(rules, text, true, pos, line, ignored)) break;
  }
  return problem;
}

}  // namespace structural_check
