// The reader's driver: it wires the stages together. Input comes through a
// window of units (unit_window); the structural scan (plain delimited UTF-8
// text, with structural_fields) or the exact record scanner finds each record
// by the rules of scan_setup; header and names, units and descriptions lines
// go to header_lines; data records are shaped into cells (record_shaping),
// turned into values (value_stage) and handed to the sink, or held while
// OmitVar rules may still drop a variable (omitted_variables); what follows
// the table's end is counted (lines_left). It reads a whole input, or a
// part of a file from a known state (parallel_reading).
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/shape/delimiter_rules.hpp"
#include "import/shape/header_lines.hpp"
#include "import/scan/lines_left.hpp"
#include "import/shape/omitted_variables.hpp"
#include "import/output.hpp"
#include "import/reader_errors.hpp"
#include "import/reading/reader_settings.hpp"
#include "import/shape/record_cells.hpp"
#include "import/scan/record_scanner.hpp"
#include "import/shape/record_shaping.hpp"
#include "import/scan/scan_setup.hpp"
#include "import/scan/structural_fields.hpp"
#include "import/scan/structural_scan.hpp"
#include "import/text_format.hpp"
#include "import/read_events.hpp"
#include "import/input/unit_window.hpp"
#include "import/input/utf8_input.hpp"
#include "import/values/value_stage.hpp"

namespace textio::import {

// The state that carries from one data record to the next once the header
// is read: reading from a part's start state gives the records that reading
// the whole file gives from there.
struct part_state {
  std::uint64_t offset = 0;  // byte offset in the file of the next record
  std::uint64_t line = 1;    // its physical line
  std::optional<std::size_t> variables;
  bool operator==(const part_state&) const = default;
};

// How to read a part of a file (with an input that starts at start.offset).
struct part_plan {
  part_state start;
  bool header_sent = true;  // false for the part at the file's start
  // Stop before the first record that starts at or after this byte offset.
  std::uint64_t stop = std::numeric_limits<std::uint64_t>::max();
  // Read on another thread: a part that cannot be read from its start state
  // alone (a quote read as text from some point on, a header line, a record
  // longer than part_window_limit) throws part_abandoned instead.
  bool worker = false;
};

struct part_abandoned {};

inline constexpr std::size_t part_window_limit = std::size_t{64} << 20;

template <class CharT>
class table_reader {
 public:
  using view = std::basic_string_view<CharT>;
  using string = std::basic_string<CharT>;
  using BadDataRule = textio::enums::BadDataRule;
  using ConsecutiveDelimitersRule = textio::enums::ConsecutiveDelimitersRule;
  using EmptyLineRule = textio::enums::EmptyLineRule;
  using ExtraColumnsRule = textio::enums::ExtraColumnsRule;
  using LeadingDelimiterRule = textio::enums::LeadingDelimiterRule;
  using ParserType = textio::enums::ParserType;
  using PartialFieldRule = textio::enums::PartialFieldRule;
  using TrailingDelimiterRule = textio::enums::TrailingDelimiterRule;

  table_reader(const textio::parser::options& given, utf8_input& input, record_sink& sink,
               const progress_callback& progress, const text_format& text, const stray_quote_callback& stray_quote,
               std::span<const variable_typing> types = {}, const part_plan* part = nullptr)
      : opts_(effective_options(given)),
        input_(input),
        window_(input),
        sink_(sink),
        progress_(progress),
        text_(text),
        stray_quote_(stray_quote),
        rules_(scan_rules_for<CharT>(opts_, text)),
        header_(opts_, text),
        shaper_(opts_, rules_.widths, rules_.reads_empty_lines, rec_, omitted_),
        values_(opts_, rules_.data, types, omitted_) {
    set_up();
    if (part) {
      line_ = part->start.line;
      if (part->header_sent) variables_ = part->start.variables;
      header_sent_ = part->header_sent;
      stop_ = part->stop;
      worker_ = part->worker;
    }
  }

  // Whether the records after the header can be read in parts, each from
  // its start state alone: plain delimited UTF-8 text through the
  // structural scan, no rule that keeps the table or carries fields from one
  // record to the next, no table end.
  bool reads_in_parts() const {
    return structural_.has_value() && !buffering_ && !text_.table_end_line &&
           opts_.extra_columns_rule() != ExtraColumnsRule::Wrap;
  }
  // The line from which records are plain data (after header and meta lines).
  std::uint64_t first_data_line() const noexcept { return first_structural_line_; }

  // Makes run() stop before the first record that starts at or after byte
  // `offset`; run() again reads on from there.
  void stop_at(std::uint64_t offset) noexcept { stop_ = offset; }
  bool header_sent() const noexcept { return header_sent_; }

  // Where reading stopped before the end of the input (part_plan::stop);
  // none when it read to the end.
  const std::optional<part_state>& stopped_at() const noexcept { return stopped_at_; }

  // An allocation failure becomes OutOfMemory, naming the record and what
  // asked for the memory.
  read_summary run() {
    try {
      read_all();
    } catch (const std::bad_alloc&) {
      throw_msg_id_exception(ZORVEK::textio::reader::OutOfMemory(line_, memory_user()));
    }
    summary_.unconverted = values_.unconverted();
    return summary_;
  }

 private:
  void read_all() {
    std::uint64_t& line = line_;
    if (worker_ && line < first_structural_line_) throw part_abandoned{};
    stopped_at_.reset();
    for (;;) {
      if (at_stop()) {
        stopped_at_ = part_state{window_offset(), line, variables_};
        return;
      }
      if (done()) return;
      if (table_end_ && line >= *table_end_) {
        if (table_goes_on(line)) continue;
        finish();
        summary_.lines_left_unread = count_lines_left(window_, raw_rules_);
        if (summary_.lines_left_unread > 0) summary_.first_line_unread = line;
        return;
      }
      const bool header_line = line <= header_lines_;
      const bool meta = !header_sent_ && header_.is_meta_line(line);
      if constexpr (sizeof(CharT) == 1) {
        if (structural_ && line >= first_structural_line_ && window_.view().size() <= data_rules_.max_record_units) {
          const structural_stop what = counting_ ? count_structurally() : read_structurally();
          if (what == structural_stop::end_of_input) break;
          if ((table_end_ && line >= *table_end_) || at_stop() || done()) continue;
          // Otherwise the exact scanner takes the next record: one that the
          // scan leaves to it, or the one at the window's end, which the
          // exact scanner may find complete where the scan waits for another
          // unit (the records before a failure to read on are all read).
        }
      }
      record_scanner<CharT>& scanner = header_line && !meta ? raw_scanner_ : data_scanner_;
      const scan_result result = scanner.scan(window_.view(), window_.at_end(), line, rec_);
      if (result == scan_result::need_more) {
        more();
        continue;
      }
      if (result == scan_result::end_of_input) break;
      if (rec_.stray_quote.line != 0) {
        // From here on quotes are text, which the structural scan does not
        // know: the exact scanner reads the rest. The parts after this one
        // were read the other way, so reading in parts ends here.
        if (worker_) throw part_abandoned{};
        structural_.reset();
        if (stray_quote_) {
          const source_position p = resolve(window_.view(), rec_.stray_quote);
          stray_quote_(p.line, p.column);
        }
      }
      if (meta) {
        take_meta_line(line);
      } else if (!header_line) {
        data_record();
      }
      window_.consume(rec_.consumed);
      line = rec_.next_line;
    }
    finish();
  }

  // Reads the window's records through the structural scan, up to one it
  // leaves to the exact scanner.
  structural_stop read_structurally() {
    if constexpr (sizeof(CharT) != 1) {
      return structural_stop::exact;  // (UTF-8 bytes only)
    } else {
      const view w = window_.view();
      const std::uint64_t base = window_offset();
      std::size_t taken = 0;  // of the window, up to the record being read
      const auto r = structural_->scan(w, window_.at_end(), line_, [&](const structural_record& rec) {
        if (base + rec.begin >= stop_ || done()) return false;
        if (table_end_ && rec.line >= *table_end_ && !goes_on_plainly(rec)) return false;
        if (plain_ && plain_record(w, rec)) return true;
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
  }

  // A record of text values that needs no shaping beyond the extra-columns
  // rule and the padding, handed to the sink as data_record would hand it;
  // false when data_record must take it.
  bool plain_record(std::string_view w, const structural_record& rec) {
    if constexpr (sizeof(CharT) != 1) {
      return false;  // (UTF-8 bytes only)
    } else {
      if (!variables_ || rec.fields > value_stage<CharT>::record_part_size) return false;
      if (!plain_text_values(w, rec, data_rules_, plain_scratch_, plain_values_)) return false;
    }
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
  structural_stop count_structurally() {
    if constexpr (sizeof(CharT) != 1) {
      return structural_stop::exact;  // (UTF-8 bytes only)
    } else {
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
  }

  // The sink wants no more records (once it has its header, which comes
  // with the first record).
  bool done() const { return header_sent_ && sink_.satisfied(); }

  // What holds the memory of a record beyond its own text.
  std::string memory_user() const {
    if (buffering_) {
      if (opts_.missing_rule() == BadDataRule::OmitVar)
        return "MissingRule OmitVar, which keeps the table until its end";
      if (opts_.parser_type() == ParserType::FixedWidth && opts_.partial_field_rule() == PartialFieldRule::OmitVar)
        return "PartialFieldRule OmitVar, which keeps the table until its end";
      return "ImportErrorRule OmitVar, which keeps the table until its end";
    }
    if (!opts_.detecting_num_variables()) return "NumVariables " + std::to_string(opts_.num_variables());
    return "the record's length and field count";
  }

  void set_up() {
    header_lines_ = opts_.num_header_lines();
    if (!opts_.detecting_num_variables()) variables_ = opts_.num_variables();
    if (!variables_ && !header_.names().empty()) variables_ = header_.names().size();
    const bool converts = values_.converts();
    buffering_ =
        opts_.missing_rule() == BadDataRule::OmitVar ||
        (converts && opts_.import_error_rule() == BadDataRule::OmitVar) ||
        (opts_.parser_type() == ParserType::FixedWidth && opts_.partial_field_rule() == PartialFieldRule::OmitVar);
    // Counting needs no values when no rule looks at them.
    counting_ = sink_.counts_only() && !buffering_ && opts_.missing_rule() == BadDataRule::Fill &&
                (!converts || opts_.import_error_rule() == BadDataRule::Fill) && !values_.strict() &&
                (opts_.extra_columns_rule() == ExtraColumnsRule::AddVars ||
                 opts_.extra_columns_rule() == ExtraColumnsRule::Ignore) &&
                opts_.parser_type() != ParserType::FixedWidth;
    // A long record goes to the sink in parts (see emit).
    parts_ = sink_.takes_parts() && !buffering_;
    rules_may_drop_ = opts_.missing_rule() != BadDataRule::Fill ||
                      (converts && opts_.import_error_rule() != BadDataRule::Fill) || values_.strict();

    // Without a given count, a fixed-width record has a variable per width.
    const std::vector<std::uint64_t>& widths = rules_.widths;
    if (opts_.parser_type() == ParserType::FixedWidth && !variables_ && !widths.empty() &&
        opts_.variable_names_line() == 0)
      variables_ = widths.size();
    if constexpr (sizeof(CharT) == 1) {
      // Plain delimited records go through the structural scan: counted,
      // whose field count is the delimiter count plus one, or read into the
      // same scanned record as the exact scanner gives. It knows doubled
      // quotes only. A detected quote that turns into text part-way is no
      // concern: the scan hands a quote still open at the end to the exact
      // scanner, which then turns quoting off, and the scan with it.
      using namespace textio::enums;
      // Counting takes the field count as it stands.
      const bool covered = !counting_ || (opts_.leading_delim_rule() == LeadingDelimiterRule::Keep &&
                                          opts_.trailing_delim_rule() == TrailingDelimiterRule::Keep &&
                                          opts_.consecutive_delim_rule() == ConsecutiveDelimitersRule::Split);
      if (text_.structural_scan && covered && opts_.parser_type() == ParserType::Delimited &&
          !data_rules_.backslash_escape && data_rules_.trim) {
        const std::uint64_t last_special = std::max({header_lines_, opts_.variable_names_line(),
                                                     opts_.variable_units_line(), opts_.variable_descriptions_line()});
        const auto classes = structural_classes::for_rules(data_rules_);
        if (classes && last_special < std::numeric_limits<std::uint64_t>::max()) {
          structural_.emplace(*classes, !counting_);
          first_structural_line_ = last_special + 1;
          plain_ = !counting_ && !buffering_ && values_.converts_in_place() &&
                   (opts_.extra_columns_rule() == ExtraColumnsRule::AddVars ||
                    opts_.extra_columns_rule() == ExtraColumnsRule::Ignore) &&
                   keeps_every_field(delimiter_rule_set{opts_.leading_delim_rule(), opts_.trailing_delim_rule(),
                                                        opts_.consecutive_delim_rule()});
        }
      }
    }
  }

  // At a detected table end: whether the record at `line` goes on as a
  // record of the table, with as many fields (after the delimiter rules) as
  // the table has variables. It is then read like the records before it and
  // the end moves past it; skipped blank lines and comments move it too. A given end,
  // or one of a table that is not delimited, holds.
  bool table_goes_on(std::uint64_t line) {
    if (!text_.table_end_detected || !variables_ ||
        (opts_.parser_type() != ParserType::Delimited && opts_.parser_type() != ParserType::Tabular))
      return false;
    for (;;) {
      const scan_result result = data_scanner_.scan(window_.view(), window_.at_end(), line, rec_);
      if (result == scan_result::end_of_input) return false;
      if (result != scan_result::need_more) break;
      more();
    }
    if (rec_.empty) {
      // Blank lines that the reader skips, and comments, are no records.
      if (!rec_.had_comment && opts_.empty_line_rule() != EmptyLineRule::Skip) return false;
    } else {
      field_list fields = rec_.fields;
      const delimiter_rule_set rules{opts_.leading_delim_rule(), opts_.trailing_delim_rule(),
                                     opts_.consecutive_delim_rule()};
      if (apply_delimiter_rules(fields, rules).fault != delimiter_fault::none || fields.size() != *variables_)
        return false;
    }
    // (Records that end inside a line, under line endings of other units,
    // take the rest of their line with them: the end always moves on.)
    table_end_ = std::max(rec_.next_line, line + 1);
    return true;
  }

  // table_goes_on for a record of the structural scan whose fields the
  // delimiter rules all keep.
  bool goes_on_plainly(const structural_record& r) {
    if (!text_.table_end_detected || !variables_ || r.empty || r.fields != *variables_ ||
        opts_.parser_type() != ParserType::Delimited ||
        !keeps_every_field({opts_.leading_delim_rule(), opts_.trailing_delim_rule(), opts_.consecutive_delim_rule()}))
      return false;
    table_end_ = std::max(r.next_line, r.line + 1);
    return true;
  }

  void more() {
    // A part that started inside a quoted field may see one field run on to
    // the end of the input; the record it waits for is left to a reader
    // that starts where the part before this one ends.
    if (worker_ && window_.view().size() >= part_window_limit) throw part_abandoned{};
    window_.more();
    if (progress_) progress_(input_.bytes_read(), input_.size());
  }

  // A record that the structural scan found; false when the full scanner
  // must take it (an empty line that is an error).
  bool counted_fast(const structural_record& r) {
    if (table_end_ && r.line >= *table_end_ && !goes_on_plainly(r)) return false;  // the table may have ended
    if (r.empty) {
      if (r.had_comment) return true;
      if (opts_.empty_line_rule() == EmptyLineRule::Error) return false;
      if (opts_.empty_line_rule() == EmptyLineRule::Skip) return true;
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
  structural_tally tally(std::uint64_t base) const {
    structural_tally t;
    if (!variables_) return t;
    t.max_fields = most_fields_unchanged(opts_.extra_columns_rule(), *variables_);
    if (stop_ != std::numeric_limits<std::uint64_t>::max()) t.stop = stop_ > base ? stop_ - base : 0;
    if (table_end_) t.line_limit = *table_end_;
    return t;
  }

  // The field count of a record that is only counted (see counting_).
  void count_record(std::size_t fields) {
    // Extra fields are kept (AddVars) or dropped (Ignore), missing ones filled.
    fields_kept(opts_.extra_columns_rule(), fields, variables_);
    sink_.record_count(*variables_, 1);
  }

  // The byte offset in the file of the window's start; for UTF-8 input read
  // as it is (units are the input's bytes).
  std::uint64_t window_offset() const noexcept { return input_.bytes_read() - window_.view().size(); }
  // (Never at the end of the file: there the reader finishes.)
  bool at_stop() const noexcept {
    return stop_ != std::numeric_limits<std::uint64_t>::max() && window_offset() >= stop_ &&
           window_offset() < input_.size();
  }

  void send_header() {
    if (header_sent_) return;
    header_sent_ = true;
    if (!buffering_) sink_.header(header_.values({}, values_.typing(), variables_));
  }

  void take_meta_line(std::uint64_t line) {
    std::vector<string> texts;
    const view w = window_.view();
    if (!rec_.empty && shaper_.take_cells(rec_, w)) {
      for (const raw_field& c : shaper_.cells().cells) texts.emplace_back(shaper_.cells().text_of(w, c));
    }
    shaper_.drop_waiting_units();
    header_.take(line, std::move(texts), variables_);
  }

  void data_record() {
    if (rec_.empty) {
      switch (shaper_.on_empty(rec_)) {
        case empty_record::skip:
          return;
        case empty_record::empty_row:
          send_header();
          if (counting_) return count_record(variables_ ? *variables_ : 1);
          shaper_.start_empty();
          if (!variables_) variables_ = 1;
          shape_and_emit();
          return;
        case empty_record::as_record:
          break;
      }
    }
    send_header();
    if (counting_) {
      if (opts_.parser_type() == ParserType::Line) return count_record(1);
      return count_record(shaper_.keep_delimited_fields(rec_, window_.view()));
    }
    if (!shaper_.take_cells(rec_, window_.view())) return;
    shape_and_emit();
    shaper_.end_record();
  }

  void shape_and_emit() { emit(shaper_.shape(window_.view(), variables_)); }

  // Hands on the record's cells followed by `padding` missing values. A
  // record longer than a part goes to a sink that takes parts as its values
  // are made; where a rule could still drop or fail it, a first pass applies
  // the rules alone, so that no part of a dropped record is written and its
  // values are never held whole.
  void emit(std::size_t padding) {
    using use = typename value_stage<CharT>::use;
    const view w = window_.view();
    const record_cells<CharT>& record = shaper_.cells();
    const bool in_parts = parts_ && record.cells.size() > value_stage<CharT>::record_part_size;
    if (in_parts && rules_may_drop_ && !values_.make(record, w, padding, use::check, sink_)) return;
    if (!values_.make(record, w, padding, in_parts ? use::parts : use::whole, sink_)) return;
    if (!buffering_) {
      sink_.padded_record(values_.values(), padding);
      return;
    }
    omitted_.keep_row(values_.values(), padding);
  }

  void finish() {
    // Units or fields still waiting for a line that never came.
    while (shaper_.has_waiting_units()) {
      send_header();
      if (shaper_.cut_waiting_units()) shape_and_emit();
      shaper_.end_record();
    }
    while (shaper_.has_waiting_fields()) {
      send_header();
      shaper_.start_waiting_fields();
      shape_and_emit();
    }
    send_header();
    if (!buffering_) return;
    sink_.header(header_.values(omitted_.marks(), values_.typing(), variables_));
    omitted_.send_rows(sink_);
  }

  textio::parser::options opts_;
  utf8_input& input_;
  unit_window<CharT> window_;
  record_sink& sink_;
  const progress_callback& progress_;
  const text_format& text_;
  const stray_quote_callback& stray_quote_;
  read_summary summary_;

  reader_scan_rules<CharT> rules_;
  const scan_rules<CharT>& raw_rules_ = rules_.lines;
  const scan_rules<CharT>& data_rules_ = rules_.data;
  record_scanner<CharT> raw_scanner_{raw_rules_};
  record_scanner<CharT> data_scanner_{data_rules_};
  scanned_record<CharT> rec_;

  std::uint64_t header_lines_ = 0;
  std::optional<std::size_t> variables_;
  bool header_sent_ = false;
  bool buffering_ = false;
  bool counting_ = false;
  bool parts_ = false;                            // values handed on in parts of record_part_size
  bool rules_may_drop_ = false;                   // a rule or strict typing may drop or fail a record
  std::optional<structural_scanner> structural_;  // plain delimited UTF-8 records
  std::uint64_t first_structural_line_ = 0;       // after header and meta lines
  // Records of text values go from the structural scan to the sink (plain_record).
  bool plain_ = false;
  std::vector<output_value> plain_values_;
  scanned_record<char> plain_scratch_;

  header_lines<CharT> header_;

  std::uint64_t line_ = 1;  // the physical line of the record being read
  // The line before which the table ends, moved on past records that go on
  // after a detected end (table_goes_on).
  std::optional<std::uint64_t> table_end_ = text_.table_end_line;
  std::uint64_t stop_ = std::numeric_limits<std::uint64_t>::max();  // see part_plan
  bool worker_ = false;
  std::optional<part_state> stopped_at_;
  omitted_variables<CharT> omitted_;
  record_shaper<CharT> shaper_;
  value_stage<CharT> values_;
};

extern template class table_reader<char>;
extern template class table_reader<char16_t>;

}  // namespace textio::import
