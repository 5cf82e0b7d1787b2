#include "import/reading/table_reader.hpp"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "import/reader_errors.hpp"
#include "import/scan/lines_left.hpp"
#include "import/shape/delimiter_rules.hpp"
#include "import/shape/record_cells.hpp"

namespace textio::import {

using namespace textio::enums;

template <class CharT>
table_reader<CharT>::table_reader(const read_path& path, utf8_input& input, record_sink& sink,
                                  const progress_callback& progress, const text_format& text,
                                  const stray_quote_callback& stray_quote, std::span<const variable_typing> types,
                                  const part_plan* part)
    : path_(path),
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
  if (!opts_.detecting_num_variables()) variables_ = opts_.num_variables();
  if (!variables_ && !header_.names().empty()) variables_ = header_.names().size();
  // Without a given count, a fixed-width record has a variable per width.
  if (opts_.parser_type() == ParserType::FixedWidth && !variables_ && !rules_.widths.empty() &&
      opts_.variable_names_line() == 0)
    variables_ = rules_.widths.size();
  if constexpr (sizeof(CharT) == 1) {
    if (path_.structural) structural_.emplace(*path_.structural, !path_.counts);
  }
  if (part) {
    line_ = part->start.line;
    if (part->header_sent) variables_ = part->start.variables;
    header_sent_ = part->header_sent;
    stop_ = part->stop;
    stop_while_in_parts_ = part->stop_while_in_parts;
    worker_ = part->worker;
  }
}

template <class CharT>
reader_run table_reader<CharT>::run() {
  reader_run r;
  try {
    r.end = read_all();
  } catch (const std::bad_alloc&) {
    throw_msg_id_exception(ZORVEK::textio::reader::OutOfMemory(line_, memory_user()));
  }
  summary_.unconverted = values_.unconverted();
  r.summary = summary_;
  return r;
}

template <class CharT>
run_end table_reader<CharT>::read_all() {
  std::uint64_t& line = line_;
  if (worker_ && line < path_.first_structural_line) return run_end::abandoned;
  stopped_at_.reset();
  for (;;) {
    if (past_stop()) {
      if (!stop_while_in_parts_ || (reads_in_parts() && header_sent_ && line >= path_.first_structural_line)) {
        stopped_at_ = part_state{window_offset(), line, variables_};
        return run_end::stopped;
      }
      stop_ = std::numeric_limits<std::uint64_t>::max();  // read on alone
    }
    if (done()) return run_end::finished;
    if (table_end_ && line >= *table_end_) {
      if (table_goes_on(line)) continue;
      finish();
      summary_.lines_left_unread = count_lines_left(window_, raw_rules_);
      if (summary_.lines_left_unread > 0) summary_.first_line_unread = line;
      return run_end::finished;
    }
    const bool header_line = line <= opts_.num_header_lines();
    const bool meta = !header_sent_ && header_.is_meta_line(line);
    if constexpr (sizeof(CharT) == 1) {  // (the structural scan reads UTF-8 bytes)
      if (structural_ && line >= path_.first_structural_line && window_.view().size() <= data_rules_.max_record_units) {
        const structural_stop what = path_.counts ? count_structurally() : read_structurally();
        if (what == structural_stop::end_of_input) break;
        if ((table_end_ && line >= *table_end_) || past_stop() || done()) continue;
        // Otherwise the exact scanner takes the next record: one that the
        // scan leaves to it, or the one at the window's end, which the exact
        // scanner may find complete where the scan waits for another unit
        // (the records before a failure to read on are all read).
      }
    }
    record_scanner<CharT>& scanner = header_line && !meta ? raw_scanner_ : data_scanner_;
    const scan_result result = scanner.scan(window_.view(), window_.at_end(), line, rec_);
    if (result == scan_result::need_more) {
      // A part that started inside a quoted field may see one field run on
      // to the end of the input; the record it waits for is left to a
      // reader that starts where the part before this one ends.
      if (worker_ && window_.view().size() >= part_window_limit) return run_end::abandoned;
      more();
      continue;
    }
    if (result == scan_result::end_of_input) break;
    if (rec_.stray_quote.line != 0) {
      // From here on quotes are text, which the structural scan does not
      // know: the exact scanner reads the rest. The parts after this one
      // were read the other way, so reading in parts ends here.
      if (worker_) return run_end::abandoned;
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
  return run_end::finished;
}

// What holds the memory of a record beyond its own text.
template <class CharT>
std::string table_reader<CharT>::memory_user() const {
  if (path_.keeps_table) {
    if (opts_.missing_rule() == BadDataRule::OmitVar) return "MissingRule OmitVar, which keeps the table until its end";
    if (opts_.parser_type() == ParserType::FixedWidth && opts_.partial_field_rule() == PartialFieldRule::OmitVar)
      return "PartialFieldRule OmitVar, which keeps the table until its end";
    return "ImportErrorRule OmitVar, which keeps the table until its end";
  }
  if (!opts_.detecting_num_variables()) return "NumVariables " + std::to_string(opts_.num_variables());
  return "the record's length and field count";
}

// At a detected table end: whether the record at `line` goes on as a record
// of the table, with as many fields (after the delimiter rules) as the table
// has variables. It is then read like the records before it and the end
// moves past it; skipped blank lines and comments move it too. A given end,
// or one of a table that is not delimited, holds.
template <class CharT>
bool table_reader<CharT>::table_goes_on(std::uint64_t line) {
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

template <class CharT>
void table_reader<CharT>::more() {
  window_.more();
  if (progress_) progress_(input_.bytes_read(), input_.size());
}

// The field count of a record that is only counted (read_path::counts).
template <class CharT>
void table_reader<CharT>::count_record(std::size_t fields) {
  // Extra fields are kept (AddVars) or dropped (Ignore), missing ones filled.
  fields_kept(opts_.extra_columns_rule(), fields, variables_);
  sink_.record_count(*variables_, 1);
}

template <class CharT>
void table_reader<CharT>::send_header() {
  if (header_sent_) return;
  header_sent_ = true;
  if (!path_.keeps_table) sink_.header(header_.values({}, values_.typing(), variables_));
}

template <class CharT>
void table_reader<CharT>::take_meta_line(std::uint64_t line) {
  std::vector<string> texts;
  const view w = window_.view();
  if (!rec_.empty && shaper_.take_cells(rec_, w)) {
    for (const raw_field& c : shaper_.cells().cells) texts.emplace_back(shaper_.cells().text_of(w, c));
  }
  shaper_.drop_waiting_units();
  header_.take(line, std::move(texts), variables_);
}

template <class CharT>
void table_reader<CharT>::data_record() {
  if (rec_.empty) {
    switch (shaper_.on_empty(rec_)) {
      case empty_record::skip:
        return;
      case empty_record::empty_row:
        send_header();
        if (path_.counts) return count_record(variables_ ? *variables_ : 1);
        shaper_.start_empty();
        if (!variables_) variables_ = 1;
        shape_and_emit();
        return;
      case empty_record::as_record:
        break;
    }
  }
  send_header();
  if (path_.counts) {
    if (opts_.parser_type() == ParserType::Line) return count_record(1);
    return count_record(shaper_.keep_delimited_fields(rec_, window_.view()));
  }
  if (!shaper_.take_cells(rec_, window_.view())) return;
  shape_and_emit();
  shaper_.end_record();
}

// Hands on the record's cells followed by `padding` missing values. A
// record longer than a part goes to a sink that takes parts as its values
// are made; where a rule could still drop or fail it, a first pass applies
// the rules alone, so that no part of a dropped record is written and its
// values are never held whole.
template <class CharT>
void table_reader<CharT>::emit(std::size_t padding) {
  using use = typename value_stage<CharT>::use;
  const view w = window_.view();
  const record_cells<CharT>& record = shaper_.cells();
  const bool in_parts = path_.values_in_parts && record.cells.size() > value_stage<CharT>::record_part_size;
  if (in_parts && path_.rules_may_drop && !values_.make(record, w, padding, use::check, sink_)) return;
  if (!values_.make(record, w, padding, in_parts ? use::parts : use::whole, sink_)) return;
  if (!path_.keeps_table) {
    sink_.padded_record(values_.values(), padding);
    return;
  }
  omitted_.keep_row(values_.values(), padding);
}

template <class CharT>
void table_reader<CharT>::finish() {
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
  if (!path_.keeps_table) return;
  sink_.header(header_.values(omitted_.marks(), values_.typing(), variables_));
  omitted_.send_rows(sink_);
}

template class table_reader<char>;
template class table_reader<char16_t>;

}  // namespace textio::import
