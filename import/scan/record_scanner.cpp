#include "import/scan/record_scanner.hpp"

#include "import/reader_errors.hpp"
#include "import/input/utf8_text.hpp"

namespace textio::import {

template <class CharT>
void append_to_field_slow(std::basic_string_view<CharT> text, scanned_record<CharT>& out, raw_field& f,
                          std::size_t from, std::size_t to) {
  if (from >= to) return;
  if (!f.in_scratch) {
    if (f.length == 0) {
      f.begin = static_cast<std::uint32_t>(from);
      f.length = static_cast<std::uint32_t>(to - from);
      return;
    }
    if (f.begin + f.length == from) {
      f.length += static_cast<std::uint32_t>(to - from);
      return;
    }
    // Scratch holds no more units than the record, so its offsets fit too.
    const std::size_t start = out.scratch.size();
    out.scratch.append(text.substr(f.begin, f.length));
    f.begin = static_cast<std::uint32_t>(start);
    f.in_scratch = true;
  }
  out.scratch.append(text.substr(from, to - from));
  f.length += static_cast<std::uint32_t>(to - from);
}

template <class CharT>
void record_scanner<CharT>::trim_end(view text, scanned_record<CharT>& out, raw_field& f,
                                     std::size_t keep) const noexcept {
  const view units = out.text(text, f);
  std::size_t n = units.size();
  while (n > keep && is_blank_unit(units[n - 1])) --n;
  if (f.in_scratch) out.scratch.resize(f.begin + n);
  f.length = static_cast<std::uint32_t>(n);
}

template <class CharT>
typename record_scanner<CharT>::field_end record_scanner<CharT>::scan_unquoted(view text, bool at_end,
                                                                               scanned_record<CharT>& out, raw_field& f,
                                                                               std::size_t& match) {
  constexpr std::uint8_t stops = starts_field_delimiter | starts_line_ending | starts_comment;
  const std::size_t n = text.size();
  std::size_t segment = pos_;
  for (;;) {
    while (pos_ < n && (rules_.classes(text[pos_]) & stops) == 0) ++pos_;
    if (pos_ == n) {
      if (!at_end) return field_end::need_more;
      append(text, out, f, segment, pos_);
      return field_end::end_of_input;
    }
    if (needs_more(text, at_end)) return field_end::need_more;
    const std::uint8_t cls = rules_.classes(text[pos_]);
    if ((cls & starts_line_ending) != 0 && (match = rules_.line_endings.match(text, pos_)) != 0) {
      append(text, out, f, segment, pos_);
      return field_end::line_ending;
    }
    if ((cls & starts_field_delimiter) != 0 && (match = rules_.field_delimiters.match(text, pos_)) != 0) {
      append(text, out, f, segment, pos_);
      for (std::size_t i = 0; i < match; ++i) {
        if (!is_blank_unit(text[pos_ + i])) out.empty = false;
      }
      return field_end::delimiter;
    }
    std::size_t marker = 0;
    if ((cls & starts_comment) != 0 && (marker = rules_.comment_open.match(text, pos_)) != 0) {
      append(text, out, f, segment, pos_);
      out.had_comment = true;
      pos_ += marker;
      const bool block = !rules_.comment_close.empty();
      for (;;) {
        if (pos_ == n) {
          if (!at_end) return field_end::need_more;
          break;
        }
        if (needs_more(text, at_end)) return field_end::need_more;
        if (block) {
          const std::size_t close = rules_.comment_close.match(text, pos_);
          if (close != 0) {
            pos_ += close;
            break;
          }
        }
        const std::size_t ending = lines_.ending_at(text, pos_, rules_);
        if (ending != 0) {
          if (!block) break;  // the line ending ends the record
          lines_.pass(pos_, ending, out);
        } else {
          ++pos_;
        }
      }
      segment = pos_;
      continue;
    }
    ++pos_;
  }
}

template <class CharT>
scan_result record_scanner<CharT>::scan(view text, bool at_end, std::uint64_t first_line, scanned_record<CharT>& out) {
  // Only a record's first max_record_units units are scanned: one that has
  // not ended there is too long.
  if (text.size() <= rules_.max_record_units) return scan_units(text, at_end, first_line, out);
  const scan_result result = scan_units(text.substr(0, rules_.max_record_units), false, first_line, out);
  if (result == scan_result::need_more) {
    throw_msg_id_exception(ZORVEK::textio::reader::RecordTooLong(first_line, rules_.max_record_units));
  }
  return result;
}

template <class CharT>
scan_result record_scanner<CharT>::scan_units(view text, bool at_end, std::uint64_t first_line,
                                              scanned_record<CharT>& out) {
  out.fields.clear();
  out.delimiters.clear();
  out.scratch.clear();
  out.empty = true;
  out.had_comment = false;
  out.stray_quote = {};
  out.line_starts.clear();
  out.first_line = first_line;
  if (text.empty()) return at_end ? scan_result::end_of_input : scan_result::need_more;
  pos_ = 0;
  lines_ = {first_line, 0};
  const std::size_t n = text.size();
  const auto here = [this] { return window_position{lines_.line, lines_.line_start, pos_}; };
  for (;;) {
    raw_field f;
    // Leading whitespace, up to a unit that starts a delimiter or line ending.
    if (rules_.trim) {
      while (pos_ < n && is_blank_unit(text[pos_])) {
        const std::uint8_t cls = rules_.classes(text[pos_]);
        if ((cls & (starts_field_delimiter | starts_line_ending)) != 0) {
          if (needs_more(text, at_end)) return scan_result::need_more;
          if (rules_.field_delimiters.match(text, pos_) != 0 || rules_.line_endings.match(text, pos_) != 0) break;
        }
        ++pos_;
      }
      if (pos_ == n && !at_end) return scan_result::need_more;
    }
    f.start = static_cast<std::uint32_t>(pos_);
    f.begin = f.start;
    if (rules_.quotes && !quotes_as_text_ && pos_ < n && text[pos_] == rules_.quote) {
      f.quoted = true;
      out.empty = false;
      const window_position opening = here();
      ++pos_;
      std::size_t segment = pos_;
      const CharT escape = rules_.backslash_escape ? CharT('\\') : rules_.quote;
      for (;;) {
        while (pos_ < n && text[pos_] != rules_.quote && text[pos_] != escape &&
               (rules_.classes(text[pos_]) & starts_line_ending) == 0)
          ++pos_;
        if (pos_ == n) {
          if (!at_end) return scan_result::need_more;
          if (rules_.stray_quote_as_text) {
            // The record again, with the quote as text.
            quotes_as_text_ = true;
            const scan_result again = scan_units(text, at_end, first_line, out);
            out.stray_quote = opening;
            return again;
          }
          std::uint64_t column = opening.pos - opening.line_start;
          if constexpr (sizeof(CharT) == 1) column = utf16_length(text.substr(opening.line_start, column));
          throw_msg_id_exception(ZORVEK::textio::reader::UnterminatedQuote(opening.line, column + 1));
        }
        if (rules_.backslash_escape && text[pos_] == escape) {
          if (pos_ + 1 == n && !at_end) return scan_result::need_more;
          if (pos_ + 1 < n && (text[pos_ + 1] == rules_.quote || text[pos_ + 1] == escape)) {
            append(text, out, f, segment, pos_);
            segment = pos_ + 1;
            pos_ += 2;
          } else {
            ++pos_;  // a backslash before anything else is itself
          }
          continue;
        }
        if (text[pos_] == rules_.quote) {
          if (pos_ + 1 == n && !at_end) return scan_result::need_more;
          if (pos_ + 1 < n && text[pos_ + 1] == rules_.quote) {
            append(text, out, f, segment, pos_ + 1);
            pos_ += 2;
            segment = pos_;
            continue;
          }
          append(text, out, f, segment, pos_);
          ++pos_;
          break;
        }
        if (needs_more(text, at_end)) return scan_result::need_more;
        const std::size_t ending = lines_.ending_at(text, pos_, rules_);
        if (ending != 0) {
          lines_.pass(pos_, ending, out);
        } else {
          ++pos_;
        }
      }
      if (f.length == 0) f.begin = static_cast<std::uint32_t>(pos_);
    }
    std::size_t match = 0;
    const field_end end = scan_unquoted(text, at_end, out, f, match);
    if (end == field_end::need_more) return scan_result::need_more;
    // A quoted field keeps the units after its closing quote as they stand,
    // whitespace included; only unquoted fields are trimmed.
    if (rules_.trim && !f.quoted && f.length > 0 && is_blank_unit(out.text(text, f).back())) trim_end(text, out, f, 0);
    // Emptiness: a unit that is no whitespace (trimmed fields have none at
    // their ends, so any unit left counts).
    if (out.empty && f.length != 0) {
      if (rules_.trim) {
        out.empty = false;
      } else {
        for (const CharT u : out.text(text, f)) {
          if (!is_blank_unit(u)) {
            out.empty = false;
            break;
          }
        }
      }
    }
    if (end == field_end::delimiter) {
      if (rules_.record_delimiters) out.delimiters.push_back(static_cast<std::uint32_t>(pos_));
      out.fields.push_back(f);
      pos_ += match;
      continue;
    }
    out.fields.push_back(f);
    out.end = here();
    if (end == field_end::line_ending) {
      pos_ += match;
      ++lines_.line;
    }
    out.consumed = pos_;
    out.next_line = lines_.line;
    return scan_result::record;
  }
}

template void append_to_field_slow(std::string_view, scanned_record<char>&, raw_field&, std::size_t, std::size_t);
template void append_to_field_slow(std::u16string_view, scanned_record<char16_t>&, raw_field&, std::size_t,
                                   std::size_t);
template class record_scanner<char>;
template class record_scanner<char16_t>;

}  // namespace textio::import
