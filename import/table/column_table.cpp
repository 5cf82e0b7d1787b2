#include "import/table/column_table.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "import/values/number_text.hpp"
#include "import/text_reader.hpp"
#include "import/input/utf8_input.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

// Text values in their units; datetime and duration texts are ASCII bytes.
void append_text(std::string& out, const output_value& v) {
  if (v.utf16 && v.kind == value_kind::text) {
    out += foundation::core::unicode::to_utf8(v.units);
  } else {
    out += v.bytes;
  }
}

std::string utf8_of(const output_value& v) {
  std::string text;
  if (v.kind == value_kind::text) append_text(text, v);
  if (v.kind == value_kind::number) append_number_text(text, v.number);
  return text;
}

// Gives a column that held only missing values, or numbers, the storage of
// `kind` for the rows it has.
void become(table_column& column, column_kind kind) {
  const std::size_t rows = column.missing.size();
  if (kind == column_kind::number) {
    column.numbers.assign(rows, 0.0);
  } else {
    column.offsets.clear();
    column.offsets.push_back(0);
    for (std::size_t row = 0; row < rows; ++row) {
      if (column.kind == column_kind::number && column.missing[row] == 0) {
        append_number_text(column.text, column.numbers[row]);
      }
      column.offsets.push_back(column.text.size());
    }
    column.numbers = {};
  }
  column.kind = kind;
}

// The rows after which the table estimates its final size.
constexpr std::size_t sample_rows = 4096;

void add_missing(table_column& column) {
  column.missing.push_back(1);
  if (column.kind == column_kind::number) column.numbers.push_back(0.0);
  if (column.kind == column_kind::text) column.offsets.push_back(column.text.size());
}

// The column kind that holds a value of `kind`: integers and logicals (0, 1)
// as numbers, datetimes and durations as their ISO 8601 text.
column_kind storage_of(value_kind kind) {
  switch (kind) {
    case value_kind::missing:
      return column_kind::missing;
    case value_kind::number:
    case value_kind::integer:
    case value_kind::unsigned_integer:
    case value_kind::logical:
      return column_kind::number;
    case value_kind::text:
    case value_kind::datetime:
    case value_kind::duration:
      return column_kind::text;
  }
  return column_kind::text;
}

double number_of(const output_value& v) {
  if (v.kind == value_kind::integer) return static_cast<double>(v.integer);
  if (v.kind == value_kind::unsigned_integer) return static_cast<double>(static_cast<std::uint64_t>(v.integer));
  return v.number;
}

void add(table_column& column, const output_value& v) {
  const column_kind wanted = storage_of(v.kind);
  if (wanted == column_kind::missing) return add_missing(column);
  if (column.kind == column_kind::missing || (column.kind == column_kind::number && wanted != column_kind::number)) {
    become(column, wanted);
  }
  column.missing.push_back(0);
  if (column.kind == column_kind::number) {
    column.numbers.push_back(number_of(v));
    return;
  }
  if (wanted == column_kind::number) {
    append_number_text(column.text, number_of(v));
  } else {
    append_text(column.text, v);
  }
  column.offsets.push_back(column.text.size());
}

// Makes the pages of the `bytes` after `end` (within what was reserved)
// present at once: one call costs less than a fault for each page. Where
// the system cannot, the pages fault in as they are written.
void populate(const void* end, std::size_t bytes) {
  constexpr std::uintptr_t page = 4096;
  const auto begin = (reinterpret_cast<std::uintptr_t>(end) + page - 1) & ~(page - 1);
  const auto last = (reinterpret_cast<std::uintptr_t>(end) + bytes) & ~(page - 1);
#ifdef MADV_POPULATE_WRITE
  if (last > begin) ::madvise(reinterpret_cast<void*>(begin), last - begin, MADV_POPULATE_WRITE);
#else
  (void)begin;
  (void)last;
#endif
}

// Makes present the pages that appending `more` elements to `to` writes.
// (Huge pages were tried: they come from memory the system has not touched
// lately, and on a virtual machine a run after another program's took up to
// twice as long.)
template <class Storage>
void populate_for(const Storage& to, std::size_t more) {
  const std::size_t room = std::min(more, to.capacity() - to.size());
  populate(to.data() + to.size(), room * sizeof(*to.data()));
}

void populate_for(const text_offsets& to, std::size_t more) {
  if (to.wide()) return populate_for(to.wide_storage(), more);
  populate_for(to.narrow_storage(), more);
}

// Appends the rows of `from`, a column of a later part of the table, as
// adding its values one by one would.
void append_rows(table_column& to, const table_column& from) {
  populate_for(to.missing, from.missing.size());
  populate_for(to.numbers, from.numbers.size());
  populate_for(to.text, from.text.size());
  populate_for(to.offsets, from.offsets.size());
  const std::size_t rows = from.missing.size();
  if (from.kind == column_kind::missing) {
    for (std::size_t row = 0; row < rows; ++row) add_missing(to);
    return;
  }
  if (to.kind == column_kind::missing || (to.kind == column_kind::number && from.kind == column_kind::text)) {
    become(to, from.kind);
  }
  to.missing.insert(to.missing.end(), from.missing.begin(), from.missing.end());
  if (to.kind == column_kind::number) {
    to.numbers.insert(to.numbers.end(), from.numbers.begin(), from.numbers.end());
  } else if (from.kind == column_kind::text) {
    const std::uint64_t base = to.text.size();
    to.text += from.text;
    // Written once, shifted as they are copied (no zeroing pass first).
    to.offsets.append_shifted(from.offsets, 1, base);
  } else {
    for (std::size_t row = 0; row < rows; ++row) {
      if (from.missing[row] == 0) append_number_text(to.text, from.numbers[row]);
      to.offsets.push_back(to.text.size());
    }
  }
}

}  // namespace

void column_table_sink::widen(std::size_t columns) {
  while (table_.columns.size() < columns) {
    table_column& column = table_.columns.emplace_back();
    if (!spare_.empty()) {
      column = std::move(spare_.back());
      spare_.pop_back();
    }
    column.missing.assign(table_.rows, 1);
  }
}

void column_table_sink::reserve_for_input() {
  // Bytes of input the rows so far took, near enough: each value's text and
  // its delimiter, eight bytes for a number.
  std::uint64_t seen = 0;
  for (const table_column& column : table_.columns)
    seen += column.text.size() + column.missing.size() + 8 * column.numbers.size();
  if (seen == 0) return;
  const double scale = 1.1 * static_cast<double>(input_bytes_) / static_cast<double>(seen);
  const auto scaled = [scale](std::size_t n) { return static_cast<std::size_t>(scale * static_cast<double>(n)); };
  for (table_column& column : table_.columns) {
    column.missing.reserve(scaled(column.missing.size()));
    if (column.kind == column_kind::number) {
      column.numbers.reserve(scaled(column.numbers.size()));
    }
    if (column.kind == column_kind::text) {
      column.offsets.reserve(scaled(column.offsets.size()));
      column.text.reserve(scaled(column.text.size()));
    }
  }
}

void column_table_sink::header(const table_header& header) {
  widen(std::max({header.names.size(), header.units.size(), header.descriptions.size()}));
  for (std::size_t i = 0; i < header.names.size(); ++i) table_.columns[i].name = utf8_of(header.names[i]);
  for (std::size_t i = 0; i < header.units.size(); ++i) table_.columns[i].unit = utf8_of(header.units[i]);
  for (std::size_t i = 0; i < header.descriptions.size(); ++i) {
    table_.columns[i].description = utf8_of(header.descriptions[i]);
  }
}

void column_table_sink::padded_record(std::span<const output_value> values, std::size_t missing) {
  widen(values.size() + missing);
  table_column* column = table_.columns.data();
  for (const output_value& v : values) {
    // Most values: UTF-8 text for a text column.
    if (v.kind == value_kind::text && !v.utf16 && column->kind == column_kind::text) [[likely]] {
      column->missing.push_back(0);
      column->text.append(v.bytes.data(), v.bytes.size());
      column->offsets.push_back(column->text.size());
    } else {
      add(*column, v);
    }
    ++column;
  }
  for (std::size_t i = values.size(); i < table_.columns.size(); ++i) add_missing(table_.columns[i]);
  added_rows(table_.rows++);
}

void column_table_sink::added_rows(std::size_t before) {
  if (before < sample_rows && table_.rows >= sample_rows && input_bytes_ > 0) reserve_for_input();
}

void column_table_sink::take_part(record_sink& part) {
  // The part keeps its columns' memory for the next part it collects.
  column_table_sink& sink = static_cast<column_table_sink&>(part);
  column_table& from = sink.table_;
  widen(from.columns.size());
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    if (i < from.columns.size()) {
      append_rows(table_.columns[i], from.columns[i]);
    } else {
      for (std::size_t row = 0; row < from.rows; ++row) add_missing(table_.columns[i]);
    }
  }
  const std::size_t before = table_.rows;
  table_.rows += std::exchange(from.rows, 0);
  added_rows(before);
  for (table_column& column : from.columns) {
    column.kind = column_kind::missing;
    column.missing.clear();
    column.numbers.clear();
    column.text.clear();
    column.offsets.clear();
    sink.spare_.push_back(std::move(column));
  }
  from.columns.clear();
}

column_table read_columns(const std::string& path, const textio::parser::options& options, const text_format& format) {
  utf8_input input(path);
  std::error_code no_size;
  const std::uintmax_t size =
      std::filesystem::is_regular_file(path, no_size) ? std::filesystem::file_size(path, no_size) : 0;
  column_table_sink sink(no_size ? 0 : size);
  read_table(options, input, sink, format);
  return sink.take();
}

}  // namespace textio::import
