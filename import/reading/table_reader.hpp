// The reader's driver: it wires the stages together. Input comes through a
// window of units (unit_window); the structural scan (plain delimited UTF-8
// text, with structural_fields) or the exact record scanner finds each record
// by the rules of scan_setup; header and names, units and descriptions lines
// go to header_lines; data records are shaped into cells (record_shaping),
// turned into values (value_stage) and handed to the sink, or held while
// OmitVar rules may still drop a variable (omitted_variables); what follows
// the table's end is counted (lines_left). Which way records take is the
// read_path's, decided once per read. It reads a whole input, or a part of a
// file from a known state (parallel_reading). The structural scan's side is
// in structural_reading.cpp, the rest in table_reader.cpp.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "import/input/unit_window.hpp"
#include "import/input/utf8_input.hpp"
#include "import/output.hpp"
#include "import/read_events.hpp"
#include "import/reading/part_plan.hpp"
#include "import/reading/read_path.hpp"
#include "import/scan/record_scanner.hpp"
#include "import/scan/scan_setup.hpp"
#include "import/scan/structural_scan.hpp"
#include "import/shape/header_lines.hpp"
#include "import/shape/omitted_variables.hpp"
#include "import/shape/record_shaping.hpp"
#include "import/text_format.hpp"
#include "import/values/value_stage.hpp"

namespace textio::import {

template <class CharT>
class table_reader {
 public:
  using view = std::basic_string_view<CharT>;
  using string = std::basic_string<CharT>;

  // `path`: the read's path (choose_read_path); with `part`, the reader
  // reads a part of a file from its start state.
  table_reader(const read_path& path, utf8_input& input, record_sink& sink, const progress_callback& progress,
               const text_format& text, const stray_quote_callback& stray_quote,
               std::span<const variable_typing> types = {}, const part_plan* part = nullptr);

  // Whether the records after the header can still be read in parts, each
  // from its start state alone: the path allows it and quotes have not
  // turned to text.
  bool reads_in_parts() const { return path_.parts_readable && structural_.has_value(); }
  // The line from which records are plain data (after header and meta lines).
  std::uint64_t first_data_line() const noexcept { return path_.first_structural_line; }

  // Makes run() stop before the first record that starts at or after byte
  // `offset`; run() again reads on from there. With `while_in_parts`, only
  // where the rest could be read in parts (reads_in_parts(), past the
  // header): else it reads on to the end.
  void stop_at(std::uint64_t offset, bool while_in_parts = false) noexcept {
    stop_ = offset;
    stop_while_in_parts_ = while_in_parts;
  }
  bool header_sent() const noexcept { return header_sent_; }

  // Where the last run stopped (run_end::stopped); none otherwise.
  const std::optional<part_state>& stopped_at() const noexcept { return stopped_at_; }

  // Reads on to the end, the stop offset or (for a worker) a part it must
  // abandon, and says which. An allocation failure becomes OutOfMemory,
  // naming the record and what asked for the memory.
  reader_run run();

 private:
  run_end read_all();
  structural_stop read_structurally();
  bool plain_record(std::string_view w, const structural_record& rec);
  structural_stop count_structurally();
  bool counted_fast(const structural_record& r);
  structural_tally tally(std::uint64_t base) const;
  bool goes_on_plainly(const structural_record& r);
  bool table_goes_on(std::uint64_t line);
  void count_record(std::size_t fields);
  void more();
  void take_meta_line(std::uint64_t line);
  void data_record();
  void shape_and_emit() { emit(shaper_.shape(window_.view(), variables_)); }
  void emit(std::size_t padding);
  void finish();
  void send_header();
  std::string memory_user() const;

  // The sink wants no more records (once it has its header, which comes
  // with the first record).
  bool done() const { return header_sent_ && sink_.satisfied(); }
  // The byte offset in the file of the window's start; for UTF-8 input read
  // as it is (units are the input's bytes).
  std::uint64_t window_offset() const noexcept { return input_.bytes_read() - window_.view().size(); }
  // (Never at the end of a file of known size: there the reader finishes.
  // A decompressed input's size is not known: size() is 0.)
  bool past_stop() const noexcept {
    return stop_ != std::numeric_limits<std::uint64_t>::max() && window_offset() >= stop_ &&
           (window_offset() < input_.size() || input_.size() == 0);
  }

  const read_path path_;
  const textio::parser::options& opts_ = path_.opts;
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
  // The structural scan while the path takes it: dropped when quotes turn
  // to text, which it does not know.
  std::optional<structural_scanner> structural_;
  std::vector<output_value> plain_values_;  // of plain_record
  scanned_record<char> plain_scratch_;

  header_lines<CharT> header_;
  std::optional<std::size_t> variables_;
  bool header_sent_ = false;
  std::uint64_t line_ = 1;  // the physical line of the record being read
  // The line before which the table ends, moved on past records that go on
  // after a detected end (table_goes_on).
  std::optional<std::uint64_t> table_end_ = text_.table_end_line;
  std::uint64_t stop_ = std::numeric_limits<std::uint64_t>::max();  // see part_plan
  bool stop_while_in_parts_ = false;
  bool worker_ = false;
  std::optional<part_state> stopped_at_;
  omitted_variables<CharT> omitted_;
  record_shaper<CharT> shaper_;
  value_stage<CharT> values_;
};

extern template class table_reader<char>;
extern template class table_reader<char16_t>;

}  // namespace textio::import
