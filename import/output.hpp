// What the reader hands on: a header of names, units and descriptions, then
// one record at a time. Values are views that stay valid only for the call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace textio::import {

// Typed values: integer holds an exact int64 (unsigned_integer its uint64
// bits); number holds a double in `number`; logical holds 0 or 1 in
// `number`; datetime and duration hold seconds
// in `number` (since 1970 at UTC for a datetime) and their canonical ISO 8601
// text in `bytes` (ASCII, also when `utf16`). A typed value also keeps the
// text it was read from, for outputs that write values as written.
enum class value_kind : std::uint8_t { missing, text, number, integer, unsigned_integer, logical, datetime, duration };

struct output_value {
  value_kind kind = value_kind::missing;
  // Text in the reader's units: UTF-16 when `utf16`, else UTF-8 bytes.
  bool utf16 = false;
  // A number (of any kind) read with '.' before its fraction and no
  // grouping: where its written text has the outputs' own syntax, that text
  // is the number (number_text.hpp tells, when an output asks).
  bool plain_decimal = false;
  std::string_view bytes;
  std::u16string_view units;
  double number = 0;
  std::int64_t integer = 0;
  // A typed value's field text as read (unquoted, unescaped and trimmed as
  // the settings ask): UTF-8 here, or in `units` with `utf16` set when the
  // reader reads UTF-16. Empty for a value with no text of its own (NaN
  // filled in for a field that is no number).
  std::string_view written;
};

// `count` variables in a row of one type.
struct type_run {
  std::string_view name;
  std::size_t count = 0;
};

struct table_header {
  std::vector<output_value> names;
  std::vector<output_value> units;
  std::vector<output_value> descriptions;
  // The type names of the variables in runs of one name (a table of many
  // variables has few runs) when the reader converts to types; empty when
  // every value is text.
  std::vector<type_run> types;
};

// Receives the header once, before any record, then every record in order.
class record_sink {
 public:
  virtual ~record_sink() = default;
  virtual void header(const table_header& header) = 0;
  virtual void record(std::span<const output_value> values) = 0;
  // A record of `values` followed by `missing` missing values: the padding up
  // to a variable count, which the reader does not store. The default hands
  // on one padded record; a sink that writes as it goes overrides it.
  virtual void padded_record(std::span<const output_value> values, std::size_t missing) {
    if (missing == 0) return record(values);
    std::vector<output_value> padded(values.begin(), values.end());
    padded.resize(values.size() + missing);
    record(padded);
  }
  // A long record may come in parts: record_part with the values at its
  // start, as often as needed, then padded_record (or record) with the rest,
  // which is never empty. Only a sink that says it takes parts gets them.
  virtual bool takes_parts() const { return false; }
  virtual void record_part(std::span<const output_value> values) { (void)values; }
  // A sink that only counts says so here and then receives, instead of
  // their values, the field count of records (`records` of them in a row,
  // each of `fields` fields), where the values cannot change what is
  // counted.
  virtual bool counts_only() const { return false; }
  virtual void record_count(std::size_t fields, std::uint64_t records) {
    (void)fields;
    (void)records;
  }
  // A sink that wants no more records says so here; the reader then stops
  // before the next record and leaves the rest of the input unread (and
  // uncounted).
  virtual bool satisfied() const { return false; }
  // A sink that takes records read on several threads says so here. Then
  // part_sink() makes a sink that collects the records of one part of the
  // input on the thread that reads it (no header), and take_part() hands on
  // what such a sink collected, parts in input order, as if its records had
  // come here one by one, and leaves the part sink empty, ready to collect
  // another part.
  virtual bool takes_part_sinks() const { return false; }
  virtual std::unique_ptr<record_sink> part_sink() { return nullptr; }
  virtual void take_part(record_sink& part) { (void)part; }
};

}  // namespace textio::import
