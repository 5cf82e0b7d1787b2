// The outputs of `zvtextparser read`: JSON lines, CSV (RFC 4180) and a count.
// Each writer is a record sink that writes to a stream in large pieces.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/output.hpp"

namespace zvtool {

// Buffers output and writes it to a stream in large pieces (which the
// stream's buffer passes straight on to the file).
class buffered_output {
 public:
  static constexpr std::size_t piece = std::size_t{1} << 18;

  explicit buffered_output(std::ostream& out) : out_(&out) { buffer_.reserve(piece + piece / 4); }
  // Keeps all that is written: a part of the output made on another thread.
  buffered_output() = default;
  buffered_output(const buffered_output&) = delete;
  buffered_output& operator=(const buffered_output&) = delete;
  // Writes what is left without checking: on the way out after a failure.
  ~buffered_output() { write_out(); }

  std::string& text() noexcept { return buffer_; }
  void maybe_flush() {
    if (out_ && buffer_.size() >= piece) flush();
  }
  // Writes `text` after what is buffered (a part's text, say).
  void write(std::string_view text);
  // Writes the buffer and flushes the stream; throws output_failure when the
  // stream fails.
  void flush();

 private:
  void write_out();

 private:
  std::ostream* out_ = nullptr;
  std::string buffer_;
};

// The text of a number as both outputs write it: the shortest form that
// reads back to the same double; NaN, Inf and -Inf for the values that have
// no digits.
std::string number_text(double value);

// How typed values are written: as read (numbers in JSON only where their
// text is a JSON number), or in their canonical forms (the shortest number
// that reads back, ISO 8601 datetimes and durations).
enum class value_text : std::uint8_t { as_written, canonical };

// What the text writers share: a stream written in large pieces, records
// that may come in parts, and parts of the output made on other threads
// (a `Derived` that writes only its buffer, as its whole writes) handed on
// in order. A writer with more to carry from a part than its text has
// took_part(part).
template <class Derived>
class text_writer : public textio::import::record_sink {
 public:
  explicit text_writer(std::ostream& out, value_text values = value_text::as_written) : out_(out), values_(values) {}
  text_writer() = default;  // a part of the output, kept
  bool takes_parts() const override { return true; }
  bool takes_part_sinks() const override { return true; }
  std::unique_ptr<textio::import::record_sink> part_sink() override {
    auto part = std::make_unique<Derived>();
    part->values_ = values_;
    return part;
  }
  void take_part(textio::import::record_sink& part) override {
    auto& written = static_cast<Derived&>(part);
    static_cast<Derived&>(*this).took_part(written);
    out_.write(written.out_.text());
    written.out_.text().clear();
  }
  void flush() { out_.flush(); }

 protected:
  void took_part(Derived&) {}

  buffered_output out_;
  value_text values_ = value_text::as_written;
  bool in_record_ = false;  // parts of a record written
};

// A first line {"variables": [...], "units": [...], "descriptions": [...]},
// then one JSON array per record: strings, numbers, null for missing. As
// written, a number whose text is a JSON number keeps that text (4000.00);
// others (+1, 1,5, NaN) are written canonically, datetimes and durations as
// ISO 8601 strings.
//
// With `objects`, each record is one JSON object keyed by the variables'
// names instead (VarN past the names).
class jsonl_writer : public text_writer<jsonl_writer> {
 public:
  using text_writer::text_writer;
  jsonl_writer(std::ostream& out, value_text values, bool objects) : text_writer(out, values), objects_(objects) {}
  void header(const textio::import::table_header& header) override;
  void record(std::span<const textio::import::output_value> values) override;
  void padded_record(std::span<const textio::import::output_value> values, std::size_t missing) override;
  void record_part(std::span<const textio::import::output_value> values) override;
  std::unique_ptr<textio::import::record_sink> part_sink() override {
    auto part = text_writer::part_sink();
    auto& writer = static_cast<jsonl_writer&>(*part);
    writer.objects_ = objects_;
    writer.keys_ = keys_;
    return part;
  }

 private:
  const std::string& key(std::size_t i);
  void object_values(std::span<const textio::import::output_value> values, std::size_t missing, bool last);

  bool objects_ = false;
  std::vector<std::string> keys_;  // "name": , JSON-quoted
  std::size_t field_ = 0;          // of the record being written
};

// How a delimited output parts fields and rows and writes text: CSV quotes,
// TSV escapes.
struct delimited_style {
  char separator;
  const char* line_end;
};
inline constexpr delimited_style csv_style{',', "\r\n"};
inline constexpr delimited_style tsv_style{'\t', "\n"};

// RFC 4180: a header row when there are names, CRLF after every row, each
// value as written unless canonical (a missing value empty), a field
// quoted when it holds a comma, a quote, CR or LF, starts or ends with
// whitespace or U+FEFF (which would read back as a byte-order mark), or is
// empty text (an unquoted empty field is missing).
//
// A record of one missing field is an empty line, which reads back as a
// record only under EmptyLineRule "read"; lone_missing_written() tells
// whether such a line was written, and lone_missing_advice() what to say.
//
// With tsv_style: tab-separated values, LF after every row, a value's tab,
// line feed, carriage return and backslash written \t, \n, \r and \\ and
// nothing quoted.
class csv_writer : public text_writer<csv_writer> {
 public:
  using text_writer::text_writer;
  csv_writer(std::ostream& out, value_text values, delimited_style style) : text_writer(out, values), style_(style) {}
  std::unique_ptr<textio::import::record_sink> part_sink() override {
    auto part = text_writer::part_sink();
    static_cast<csv_writer&>(*part).style_ = style_;
    return part;
  }
  void header(const textio::import::table_header& header) override;
  void record(std::span<const textio::import::output_value> values) override;
  void padded_record(std::span<const textio::import::output_value> values, std::size_t missing) override;
  void record_part(std::span<const textio::import::output_value> values) override;
  bool lone_missing_written() const noexcept { return lone_missing_written_; }

 private:
  friend class text_writer<csv_writer>;
  void took_part(csv_writer& part) {
    lone_missing_written_ = lone_missing_written_ || std::exchange(part.lone_missing_written_, false);
  }

  bool lone_missing_written_ = false;
  delimited_style style_ = csv_style;
};

// A value's text as read (a typed value's own text where it has one, else
// its canonical form), unquoted and unescaped; nothing for a missing value.
void append_value_text(std::string& out, const textio::import::output_value& v);

// The advice for a CSV output that holds a record of one missing field.
std::string lone_missing_advice();

// Counts records and fields; writes nothing until asked.
class count_writer : public textio::import::record_sink {
 public:
  void header(const textio::import::table_header&) override {}
  void record(std::span<const textio::import::output_value> values) override {
    ++records_;
    fields_ += values.size();
  }
  void padded_record(std::span<const textio::import::output_value> values, std::size_t missing) override {
    record(values);
    fields_ += missing;
  }
  bool counts_only() const override { return true; }
  void record_count(std::size_t fields, std::uint64_t records) override {
    records_ += records;
    fields_ += fields * records;
  }
  std::uint64_t records() const noexcept { return records_; }
  std::uint64_t fields() const noexcept { return fields_; }
  bool takes_part_sinks() const override { return true; }
  std::unique_ptr<textio::import::record_sink> part_sink() override { return std::make_unique<count_writer>(); }
  void take_part(textio::import::record_sink& part) override {
    auto& counted = static_cast<count_writer&>(part);
    records_ += std::exchange(counted.records_, 0);
    fields_ += std::exchange(counted.fields_, 0);
  }

 private:
  std::uint64_t records_ = 0;
  std::uint64_t fields_ = 0;
};

}  // namespace zvtool
