// A whole table in memory, column by column, for callers who want the values
// rather than a stream of records. It is one more record sink: the reader
// hands it records as it would to any writer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/output.hpp"
#include "import/text_format.hpp"
#include "import/table/text_offsets.hpp"
#include "parser/options.hpp"

namespace textio::import {

// What a column holds: nothing but missing values so far, text, or numbers.
// Integers and logicals (0, 1) are numbers; datetimes and durations are their
// ISO 8601 text. A column that receives text after numbers becomes a text
// column, its numbers written as the shortest text that reads back to them.
enum class column_kind : std::uint8_t { missing, text, number };

struct table_column {
  // The header's name, unit and description (UTF-8); empty where the file has none.
  std::string name;
  std::string unit;
  std::string description;
  column_kind kind = column_kind::missing;
  // One entry a row: 1 where the value is missing.
  std::vector<std::uint8_t> missing;
  // Number columns: one value a row (0 where missing).
  std::vector<double> numbers;
  // Text columns: the values' UTF-8 bytes one after another; row i is
  // text[offsets[i], offsets[i + 1]) (empty where missing). The offsets are
  // 32-bit while the text is under 4 GiB (text_offsets.hpp).
  std::string text;
  text_offsets offsets;

  std::string_view text_at(std::size_t row) const {
    return std::string_view(text).substr(offsets[row], offsets[row + 1] - offsets[row]);
  }
};

struct column_table {
  std::size_t rows = 0;
  std::vector<table_column> columns;
};

// Collects the records it receives into a column_table. A record shorter than
// the table is padded with missing values; a longer one adds columns, missing
// in the rows before.
//
// Given the input's size, it reserves room for the whole table once the first
// rows show how many bytes a row takes, so that the columns are not copied as
// they grow.
class column_table_sink : public record_sink {
 public:
  explicit column_table_sink(std::uint64_t input_bytes = 0) : input_bytes_(input_bytes) {}
  void header(const table_header& header) override;
  void record(std::span<const output_value> values) override { padded_record(values, 0); }
  void padded_record(std::span<const output_value> values, std::size_t missing) override;
  bool takes_part_sinks() const override { return true; }
  std::unique_ptr<record_sink> part_sink() override { return std::make_unique<column_table_sink>(); }
  void take_part(record_sink& part) override;
  column_table take() { return std::exchange(table_, {}); }

 private:
  void widen(std::size_t columns);
  void reserve_for_input();
  void added_rows(std::size_t before);

  column_table table_;
  std::vector<table_column> spare_;  // emptied columns of a part taken, with their memory
  std::uint64_t input_bytes_;
};

// Reads the file at `path` with the reader that `options` names into memory,
// in `format` (its threads read a large file in parts at once).
// Throws the reader's messages (reader_errors.hpp).
column_table read_columns(const std::string& path, const textio::parser::options& options,
                          const text_format& format = {});

}  // namespace textio::import
