// The side of table_reader<char> that takes records from the structural
// scan: plain records straight through the value rules, others through
// data_record as the exact scanner's would go, and counting in bulk.
#include <limits>

#include "import/reading/table_reader.hpp"
#include "import/scan/structural_fields.hpp"

namespace textio::import {

// Reads the window's records through the structural scan, up to one it
// leaves to the exact scanner.
template <class CharT>
structural_stop table_reader<CharT>::read_structurally() {
  const view w = window_.view();
  const std::uint64_t base = window_offset();
  std::size_t taken = 0;  // of the window, up to the record being read
  const auto r = structural_->scan(w, window_.at_end(), line_, [&](const structural_record& rec) {
    if (base + rec.begin >= stop_ || done()) return false;
    if (table_end_ && rec.line >= *table_end_ && !goes_on_plainly(rec)) return false;
    if (path_.plain && plain_record(w, rec)) return true;
    if (!fill_scanned_record(w, rec, data_rules_, rec_)) return false;
    // Shaping and values read the record at the start of the window.
    window_.consume(rec.begin - taken);
    taken = rec.begin;
    line_ = rec.line;
    data_record();
    return true;
  });
  window_.consume(r.consumed - taken);
  line_ = r.next_line;
  return r.what;
}

// A record of plain text values (read_path::plain), handed to the sink as
// data_record would hand it: the same extra-columns rule, value rules and
// padding; false when data_record must take it.
template <class CharT>
bool table_reader<CharT>::plain_record(std::string_view w, const structural_record& rec) {
  if (!variables_ || rec.fields > value_stage<CharT>::record_part_size) return false;
  if (!plain_text_values(w, rec, data_rules_, plain_scratch_, plain_values_)) return false;
  line_ = rec.line;
  send_header();  // before the variables grow, as data_record sends it
  const std::size_t fields = fields_kept(opts_.extra_columns_rule(), rec.fields, variables_);
  // (The fields that Ignore drops are not values: nothing converts them.)
  const std::span<output_value> values = std::span<output_value>(plain_values_).first(fields);
  values_.convert_in_place(values, rec.line);
  sink_.padded_record(values, *variables_ - fields);
  return true;
}

// Counts the window's records through the structural scan: the regular
// ones in bulk, the others one by one.
template <class CharT>
structural_stop table_reader<CharT>::count_structurally() {
  const std::uint64_t base = window_offset();
  const auto r = structural_->count(
      window_.view(), window_.at_end(), line_, [&] { return tally(base); },
      [&](std::uint64_t records) {
        send_header();
        sink_.record_count(*variables_, records);
      },
      [&](const structural_record& rec) { return base + rec.begin < stop_ && counted_fast(rec); });
  window_.consume(r.consumed);
  line_ = r.next_line;
  return r.what;
}

// A record that the structural scan found; false when the full scanner
// must take it (an empty line that is an error).
template <class CharT>
bool table_reader<CharT>::counted_fast(const structural_record& r) {
  if (table_end_ && r.line >= *table_end_ && !goes_on_plainly(r)) return false;  // the table may have ended
  if (r.empty) {
    if (r.had_comment) return true;
    if (opts_.empty_line_rule() == textio::enums::EmptyLineRule::Error) return false;
    if (opts_.empty_line_rule() == textio::enums::EmptyLineRule::Skip) return true;
    send_header();
    count_record(variables_ ? *variables_ : 1);
    return true;
  }
  send_header();
  count_record(r.fields);
  return true;
}

// The records the structural scan may count in bulk: each counts as
// variables_ fields, as count_record would count it.
template <class CharT>
structural_tally table_reader<CharT>::tally(std::uint64_t base) const {
  structural_tally t;
  if (!variables_) return t;
  t.max_fields = most_fields_unchanged(opts_.extra_columns_rule(), *variables_);
  if (stop_ != std::numeric_limits<std::uint64_t>::max()) t.stop = stop_ > base ? stop_ - base : 0;
  if (table_end_) t.line_limit = *table_end_;
  return t;
}

// table_goes_on for a record of the structural scan whose fields the
// delimiter rules all keep.
template <class CharT>
bool table_reader<CharT>::goes_on_plainly(const structural_record& r) {
  if (!text_.table_end_detected || !variables_ || r.empty || r.fields != *variables_ ||
      opts_.parser_type() != textio::enums::ParserType::Delimited ||
      !keeps_every_field({opts_.leading_delim_rule(), opts_.trailing_delim_rule(), opts_.consecutive_delim_rule()}))
    return false;
  table_end_ = std::max(r.next_line, r.line + 1);
  return true;
}

template structural_stop table_reader<char>::read_structurally();
template bool table_reader<char>::plain_record(std::string_view, const structural_record&);
template structural_stop table_reader<char>::count_structurally();
template bool table_reader<char>::counted_fast(const structural_record&);
template structural_tally table_reader<char>::tally(std::uint64_t) const;
template bool table_reader<char>::goes_on_plainly(const structural_record&);

}  // namespace textio::import
