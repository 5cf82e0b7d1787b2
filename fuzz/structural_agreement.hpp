// The records of a text as the exact record scanner finds them and as the
// structural scan finds them (handing the records it does not cover to the
// exact scanner, as the reader does), in a form to compare. Shared by the
// differential fuzz target and the unit tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/record_scanner.hpp"
#include "import/structural_scan.hpp"
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

}  // namespace structural_check
