// A whole table in memory as typed columns in the Arrow columnar layout, in
// record batches: each column a validity bitmap (bit set where the value is
// present, LSB first), then its values (fixed-width numbers, one bit a
// logical) or, for text, 32-bit offsets and UTF-8 bytes (64-bit offsets once
// a batch's text passes 2 GiB). Arrow consumers take the buffers as they
// stand (arrow_export.hpp), so nothing is copied on the way out.
//
// It is a record sink: the reader hands it records as to any writer. A part
// of the input read on another thread becomes batches of its own, moved into
// the table in input order, never copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zvtextparser/import/export.hpp>
#include <zvtextparser/import/output.hpp>
#include <zvtextparser/import/value_types.hpp>

namespace textio::import {

enum class arrow_type : std::uint8_t {
  null,  // no value yet: every row missing
  boolean,
  int8,
  int16,
  int32,
  int64,
  uint8,
  uint16,
  uint32,
  uint64,
  float32,
  float64,
  timestamp,  // int64 microseconds since 1970 at UTC
  duration,   // int64 microseconds
  utf8,
  large_utf8,
};

// The type of a column of variables of `type`.
ZVTEXTIMPORT_API arrow_type arrow_type_of(value_type type);

// Bytes a value takes in the values buffer; 0 for null, boolean (bits) and text.
ZVTEXTIMPORT_API std::size_t arrow_value_width(arrow_type type);

// Bytes that grow geometrically, their start aligned to 64 bytes as the
// Arrow format recommends.
class ZVTEXTIMPORT_API arrow_buffer {
 public:
  arrow_buffer() = default;
  arrow_buffer(arrow_buffer&&) noexcept = default;
  arrow_buffer& operator=(arrow_buffer&&) noexcept = default;

  const std::uint8_t* data() const noexcept { return data_.get(); }
  std::uint8_t* data() noexcept { return data_.get(); }
  std::size_t size() const noexcept { return size_; }

  void append(const void* bytes, std::size_t n) {
    if (size_ + n > capacity_) grow(size_ + n);
    if (n != 0) std::memcpy(data_.get() + size_, bytes, n);
    size_ += n;
  }
  template <class T>
  void push(T value) {
    append(&value, sizeof value);
  }
  template <class T>
  T at(std::size_t i) const {
    T value;
    std::memcpy(&value, data_.get() + i * sizeof(T), sizeof(T));
    return value;
  }
  // Grows to `n` bytes, the new ones zero.
  void resize(std::size_t n);
  void clear() noexcept { size_ = 0; }

 private:
  struct free_bytes {
    void operator()(std::uint8_t* p) const noexcept;
  };
  void grow(std::size_t at_least);

  std::unique_ptr<std::uint8_t[], free_bytes> data_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

struct ZVTEXTIMPORT_API arrow_column {
  arrow_type type = arrow_type::null;
  std::int64_t length = 0;
  std::int64_t null_count = 0;
  // One bit a row, 1 where the value is present; empty while no value is missing.
  arrow_buffer validity;
  // Fixed-width values, bits for boolean, offsets (length + 1) for text.
  arrow_buffer values;
  // Text: the UTF-8 bytes of the values one after another.
  arrow_buffer text;

  bool is_valid(std::int64_t row) const {
    return validity.size() == 0 || ((validity.data()[row >> 3] >> (row & 7)) & 1) != 0;
  }
  std::string_view text_at(std::int64_t row) const;
};

struct arrow_field {
  // The header's name, unit and description (UTF-8); empty where the file has none.
  std::string name;
  std::string unit;
  std::string description;
  // Timestamps: "UTC" when the values had a UTC offset, else empty (local
  // times with no zone).
  std::string timezone;
};

struct arrow_batch {
  std::int64_t rows = 0;
  std::vector<arrow_column> columns;
};

// Every batch has a column for each field, of the same type.
struct ZVTEXTIMPORT_API arrow_table {
  std::vector<arrow_field> fields;
  std::vector<arrow_batch> batches;

  std::int64_t rows() const noexcept;
  arrow_type type(std::size_t column) const noexcept {
    return batches.empty() ? arrow_type::utf8 : batches.front().columns[column].type;
  }
};

// How large a batch grows before it is closed: whichever limit comes first
// (the bytes of its buffers are looked at every 1024 rows).
struct batch_limits {
  std::size_t rows = std::size_t{1} << 16;
  std::size_t bytes = std::size_t{64} << 20;
};

// Receives each batch as it is closed, in file order, with the fields as
// the header gave them.
using batch_callback = std::function<void(arrow_batch&& batch, const std::vector<arrow_field>& fields)>;

// Collects the records it receives into an arrow_table, batch by batch; or,
// given a batch_callback, hands each batch on as it closes and keeps none
// (the table then holds only the fields). Streamed batches keep the types
// they had: a column that became text is text in that batch only. A variable's column takes the type the header gives
// it (or, without types, that of its first value); a record shorter than the table is padded with missing values, a
// longer one adds columns, missing in the rows before. A column that receives a value its type cannot hold (text in a
// number column) becomes text, in every batch, its values written as the
// text outputs write them.
class ZVTEXTIMPORT_API arrow_table_sink : public record_sink {
 public:
  explicit arrow_table_sink(batch_limits limits = {}, batch_callback on_batch = {})
      : limits_(limits), on_batch_(std::move(on_batch)) {}
  void header(const table_header& header) override;
  void record(std::span<const output_value> values) override { padded_record(values, 0); }
  void padded_record(std::span<const output_value> values, std::size_t missing) override;
  // A wide record comes in parts, its values never held whole.
  bool takes_parts() const override { return true; }
  void record_part(std::span<const output_value> values) override;
  bool takes_part_sinks() const override { return true; }
  std::unique_ptr<record_sink> part_sink() override;
  void take_part(record_sink& part) override;
  // The table, every batch with a column of one type for each field.
  arrow_table take();

 private:
  arrow_batch& open_batch();
  // Puts values into the columns from part_at_ on, the batch at least
  // `width` columns wide.
  void put_values(std::span<const output_value> values, std::size_t width);
  void close_batch();
  void hand_on(arrow_batch&& batch);

  batch_limits limits_;
  batch_callback on_batch_;
  std::vector<arrow_type> declared_;  // the header's types, by variable
  std::vector<bool> utc_;             // by variable: a datetime had a UTC offset
  arrow_table table_;
  std::optional<arrow_batch> open_;
  std::size_t part_at_ = 0;  // the column of the record's next value
};

}  // namespace textio::import
