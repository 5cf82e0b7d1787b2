// Finds one record at the start of a window of text: where its fields begin
// and end, outside quotes and comments, and where the record ends (a line
// ending, or the end of the input). One scanner serves every reader; its
// rules say which of delimiters, quotes, comments and trimming take part.
//
// Field text stays in the window where it is contiguous; text that is not
// (a quoted field with doubled quotes, a field with a block comment inside)
// is copied into the record's scratch buffer.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "import/scan/string_matcher.hpp"

namespace textio::import {

// A place in the window: its physical line, where that line starts in the
// window, and the unit itself.
struct window_position {
  std::uint64_t line = 0;
  std::size_t line_start = 0;
  std::size_t pos = 0;
};

// A field of a scanned record: four 32-bit words, as a record may have
// millions. Its offsets count from the record's first unit (the start of the
// window it was scanned in), so a record is at most scan_rules::
// max_record_units long. The record turns offsets into lines and line starts
// (scanned_record::position) when an error is reported.
struct raw_field {
  std::uint32_t begin = 0;           // first unit, in the window or in scratch
  std::uint32_t length = 0;          // after trimming
  std::uint32_t start = 0;           // where the field's text starts in the window
  std::uint32_t in_scratch : 1 = 0;  // begin is in the record's scratch
  std::uint32_t quoted : 1 = 0;
  // Text that is not the record's: a field its reader adds, whose begin
  // indexes what that reader keeps.
  std::uint32_t external : 1 = 0;
};
static_assert(sizeof(raw_field) == 4 * sizeof(std::uint32_t));

// The fields of a record in chunks, so that a record of millions of fields
// grows without copying the ones it has.
using field_list = std::deque<raw_field>;

template <class CharT>
struct scanned_record {
  field_list fields;
  // Where the delimiter after each field but the last is, when the rules ask
  // for it (scan_rules::record_delimiters).
  std::deque<std::uint32_t> delimiters;
  std::basic_string<CharT> scratch;
  std::size_t consumed = 0;      // units of the window that the record took
  std::uint64_t first_line = 0;  // physical line of the record's first unit
  std::uint64_t next_line = 0;   // physical line after the record
  // Where each physical line after the first starts in the window (line
  // endings inside quotes and block comments), once per line.
  std::deque<std::uint32_t> line_starts;
  window_position end;  // where the record's text ends
  // No units but whitespace (and delimiters made of whitespace), no quote.
  bool empty = true;
  bool had_comment = false;
  // Where a quote that never closed was read as text instead (line 0: none).
  window_position stray_quote;

  std::basic_string_view<CharT> text(std::basic_string_view<CharT> window, const raw_field& f) const noexcept {
    return f.in_scratch ? std::basic_string_view<CharT>(scratch).substr(f.begin, f.length)
                        : window.substr(f.begin, f.length);
  }

  // The line and line start of a window offset inside the record.
  window_position position(std::size_t offset) const noexcept {
    const auto after = std::upper_bound(line_starts.begin(), line_starts.end(), offset);
    const auto crossed = static_cast<std::uint64_t>(after - line_starts.begin());
    return {first_line + crossed, crossed == 0 ? 0 : *(after - 1), offset};
  }
};

// Adds text[from, to) to a field: its first piece stays in the window, a
// piece that continues it extends it, and a field in pieces moves to the
// record's scratch.
template <class CharT>
void append_to_field_slow(std::basic_string_view<CharT> text, scanned_record<CharT>& out, raw_field& f,
                          std::size_t from, std::size_t to);
template <class CharT>
void append_to_field(std::basic_string_view<CharT> text, scanned_record<CharT>& out, raw_field& f, std::size_t from,
                     std::size_t to) {
  if (!f.in_scratch && f.length == 0) [[likely]] {
    f.begin = static_cast<std::uint32_t>(from);
    f.length = static_cast<std::uint32_t>(to - from);
    return;
  }
  append_to_field_slow(text, out, f, from, to);
}

enum class scan_result { record, need_more, end_of_input };

// Unit classes of the scan table.
enum unit_class : std::uint8_t {
  starts_field_delimiter = 1,
  starts_line_ending = 2,
  starts_comment = 4,
  is_quote = 8,
  is_whitespace = 16,
};

template <class CharT>
struct scan_rules {
  string_matcher<CharT> field_delimiters;  // none: one field per record
  string_matcher<CharT> line_endings;
  string_matcher<CharT> comment_open;   // none: no comments
  string_matcher<CharT> comment_close;  // none with an open marker: to the end of the line
  bool quotes = false;
  CharT quote = CharT('"');
  bool backslash_escape = false;  // \" and \\ inside quotes, instead of ""
  // A quoted field still open at the end of the input turns quoting off
  // from its record on, instead of failing.
  bool stray_quote_as_text = false;
  bool trim = false;  // trim whitespace at both ends of unquoted fields
  std::u16string whitespace;
  bool record_delimiters = false;  // fill scanned_record::delimiters
  // The longest record, in units: field offsets are 32-bit. A longer record
  // fails with RecordTooLong.
  std::size_t max_record_units = std::numeric_limits<std::uint32_t>::max();

  static constexpr std::size_t table_size = std::size_t{1} << (8 * sizeof(CharT));
  std::array<std::uint8_t, table_size> table{};
  std::size_t lookahead = 1;  // units a match may need from a position

  // Fills the table from the comment markers, the quote and the whitespace,
  // and the lookahead from all strings. Delimiters and line endings are
  // marked from the reader's stop characters (mark_stop_characters).
  void finish() {
    table.fill(0);
    for (const char16_t u : comment_open.first_units()) mark(u, starts_comment);
    if (quotes) mark(static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(quote)), is_quote);
    for (const char16_t u : whitespace) mark(u, is_whitespace);
    lookahead = 1;
    for (const auto* m : {&field_delimiters, &line_endings, &comment_open, &comment_close}) {
      if (m->longest() > lookahead) lookahead = m->longest();
    }
  }

  // Marks each unit of a stop-character string: a place where a delimiter
  // or a line ending may start, which the matchers then decide.
  void mark_stop_characters(std::u16string_view stop_chars, std::uint8_t classes) {
    for (const char16_t u : stop_chars) mark(u, classes);
  }

  void mark(char16_t unit, std::uint8_t cls) {
    if (unit < table_size) table[unit] |= cls;
  }

  std::uint8_t classes(CharT unit) const noexcept { return table[static_cast<std::make_unsigned_t<CharT>>(unit)]; }
};

// The physical lines a record crosses: a line ending inside it (in quotes
// or a block comment) moves on to the next line, whose start the record
// notes. The exact scanner and the structural path's fields both go by it.
template <class CharT>
struct line_tracker {
  std::uint64_t line = 0;
  std::size_t line_start = 0;  // in the window

  // The units of the line ending at text[pos], 0 where none starts.
  static std::size_t ending_at(std::basic_string_view<CharT> text, std::size_t pos,
                               const scan_rules<CharT>& rules) noexcept {
    return (rules.classes(text[pos]) & starts_line_ending) != 0 ? rules.line_endings.match(text, pos) : 0;
  }
  // Moves `pos` past a line ending of `units` units inside the record.
  void pass(std::size_t& pos, std::size_t units, scanned_record<CharT>& out) {
    pos += units;
    ++line;
    line_start = pos;
    out.line_starts.push_back(static_cast<std::uint32_t>(pos));
  }
};

template <class CharT>
class record_scanner {
 public:
  using view = std::basic_string_view<CharT>;

  explicit record_scanner(const scan_rules<CharT>& rules) : rules_(rules) {}

  // Scans the record at the start of `text`, whose first unit is on physical
  // line `first_line`. need_more: the window ends before the record is known
  // to end and the input has not ended; the caller appends and scans again.
  // Throws UnterminatedQuote for a quoted field open at the end of the input
  // (unless the rules read such a quote as text), and RecordTooLong for a
  // record that does not end within max_record_units.
  scan_result scan(view text, bool at_end, std::uint64_t first_line, scanned_record<CharT>& out);

 private:
  scan_result scan_units(view text, bool at_end, std::uint64_t first_line, scanned_record<CharT>& out);
  enum class field_end { delimiter, line_ending, end_of_input, need_more };

  static void append(view text, scanned_record<CharT>& out, raw_field& f, std::size_t from, std::size_t to) {
    append_to_field(text, out, f, from, to);
  }
  // Scans unquoted text of a field up to the next delimiter or line ending,
  // removing comments. Leaves pos_ at that delimiter or line ending.
  field_end scan_unquoted(view text, bool at_end, scanned_record<CharT>& out, raw_field& f, std::size_t& match);
  bool is_blank_unit(CharT unit) const noexcept { return (rules_.classes(unit) & is_whitespace) != 0; }
  bool needs_more(view text, bool at_end) const noexcept { return !at_end && pos_ + rules_.lookahead > text.size(); }
  void trim_end(view text, scanned_record<CharT>& out, raw_field& f, std::size_t keep) const noexcept;

  const scan_rules<CharT>& rules_;
  std::size_t pos_ = 0;
  line_tracker<CharT> lines_;
  bool quotes_as_text_ = false;  // after a stray quote
};

}  // namespace textio::import
