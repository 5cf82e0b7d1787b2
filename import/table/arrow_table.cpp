#include "import/table/arrow_table.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

#include "import/input/utf8_text.hpp"
#include "import/values/number_text.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

constexpr std::size_t alignment = 64;
constexpr std::int64_t narrow_text_max = std::numeric_limits<std::int32_t>::max();

bool is_text(arrow_type t) { return t == arrow_type::utf8 || t == arrow_type::large_utf8; }
bool is_number(arrow_type t) { return t >= arrow_type::int8 && t <= arrow_type::float64; }

std::size_t bitmap_bytes(std::int64_t bits) { return static_cast<std::size_t>((bits + 7) / 8); }

// Sets bit `i` of a bitmap that may end before it.
void put_bit(arrow_buffer& bits, std::int64_t i, bool on) {
  if (bitmap_bytes(i + 1) > bits.size()) bits.push<std::uint8_t>(0);
  if (on) bits.data()[i >> 3] |= static_cast<std::uint8_t>(1U << (i & 7));
}

// Records that row `column.length` is present or missing; the bitmap is
// made at the first missing value.
void put_validity(arrow_column& column, bool valid) {
  if (valid && column.validity.size() == 0) return;
  if (column.validity.size() == 0) {
    column.validity.resize(bitmap_bytes(column.length));
    if (column.validity.size() != 0) std::memset(column.validity.data(), 0xFF, column.validity.size());
    if (column.length % 8 != 0) column.validity.data()[column.length / 8] = (1U << (column.length % 8)) - 1;
  }
  put_bit(column.validity, column.length, valid);
  if (!valid) ++column.null_count;
}

void put_offset(arrow_column& column) {
  if (column.type == arrow_type::large_utf8) {
    column.values.push(static_cast<std::int64_t>(column.text.size()));
  } else {
    column.values.push(static_cast<std::int32_t>(column.text.size()));
  }
}

std::int64_t offset_at(const arrow_column& column, std::int64_t i) {
  const auto at = static_cast<std::size_t>(i);
  return column.type == arrow_type::large_utf8 ? column.values.at<std::int64_t>(at)
                                               : column.values.at<std::int32_t>(at);
}

// 32-bit offsets become 64-bit ones, once a batch's text passes 2 GiB.
void widen_offsets(arrow_column& column) {
  arrow_buffer wide;
  for (std::int64_t i = 0; i <= column.length; ++i) wide.push<std::int64_t>(offset_at(column, i));
  column.values = std::move(wide);
  column.type = arrow_type::large_utf8;
}

void put_text(arrow_column& column, std::string_view text) {
  if (column.type == arrow_type::utf8 &&
      static_cast<std::int64_t>(column.text.size() + text.size()) > narrow_text_max) {
    widen_offsets(column);
  }
  column.text.append(text.data(), text.size());
  put_offset(column);
}

// The date of a day count since 1970-01-01 (the proleptic Gregorian calendar).
void append_date(std::string& out, std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t doe = days - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  const std::int64_t day = doy - (153 * mp + 2) / 5 + 1;
  const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const std::int64_t year = yoe + era * 400 + (month <= 2);
  char buf[32];
  const int n = std::snprintf(buf, sizeof buf, "%04lld-%02lld-%02lld", static_cast<long long>(year),
                              static_cast<long long>(month), static_cast<long long>(day));
  out.append(buf, static_cast<std::size_t>(n));
}

// hh:mm:ss with a fraction of microseconds when there is one.
void append_clock(std::string& out, std::int64_t micros) {
  const std::int64_t seconds = micros / 1000000;
  const std::int64_t fraction = micros % 1000000;
  char buf[48];
  int n = std::snprintf(buf, sizeof buf, "%02lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                        static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
  if (fraction != 0)
    n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), ".%06lld", static_cast<long long>(fraction));
  out.append(buf, static_cast<std::size_t>(n));
}

template <class T>
void append_integer(std::string& out, T value) {
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, r.ptr);
}

// The text of row `row` of a column that is not text, as the text outputs
// write such a value.
void append_value_text(std::string& out, const arrow_column& c, std::int64_t row, bool utc) {
  const auto i = static_cast<std::size_t>(row);
  switch (c.type) {
    case arrow_type::boolean:
      out += ((c.values.data()[i >> 3] >> (i & 7)) & 1) != 0 ? "true" : "false";
      return;
    case arrow_type::int8:
      return append_integer(out, c.values.at<std::int8_t>(i));
    case arrow_type::int16:
      return append_integer(out, c.values.at<std::int16_t>(i));
    case arrow_type::int32:
      return append_integer(out, c.values.at<std::int32_t>(i));
    case arrow_type::int64:
      return append_integer(out, c.values.at<std::int64_t>(i));
    case arrow_type::uint8:
      return append_integer(out, c.values.at<std::uint8_t>(i));
    case arrow_type::uint16:
      return append_integer(out, c.values.at<std::uint16_t>(i));
    case arrow_type::uint32:
      return append_integer(out, c.values.at<std::uint32_t>(i));
    case arrow_type::uint64:
      return append_integer(out, c.values.at<std::uint64_t>(i));
    case arrow_type::float32:
      return append_number_text(out, c.values.at<float>(i));
    case arrow_type::float64:
      return append_number_text(out, c.values.at<double>(i));
    case arrow_type::timestamp: {
      const auto micros = c.values.at<std::int64_t>(i);
      const std::int64_t day = 86400LL * 1000000;
      const std::int64_t days = micros >= 0 ? micros / day : -((-micros + day - 1) / day);
      append_date(out, days);
      out += 'T';
      append_clock(out, micros - days * day);
      if (utc) out += 'Z';
      return;
    }
    case arrow_type::duration: {
      const auto micros = c.values.at<std::int64_t>(i);
      if (micros < 0) out += '-';
      return append_clock(out, micros < 0 ? -micros : micros);
    }
    case arrow_type::null:
    case arrow_type::utf8:
    case arrow_type::large_utf8:
      return;
  }
}

// Gives `column` the storage of `type` for the rows it has: a column of
// missing values gets empty values, a typed column becomes text (its values
// written out), 32-bit text offsets become 64-bit.
void become(arrow_column& column, arrow_type type, bool utc) {
  if (column.type == type) return;
  if (column.type == arrow_type::null) {
    column.type = type;
    if (is_text(type)) {
      for (std::int64_t i = 0; i <= column.length; ++i) put_offset(column);
    } else if (type == arrow_type::boolean) {
      column.values.resize(bitmap_bytes(column.length));
    } else {
      column.values.resize(static_cast<std::size_t>(column.length) * arrow_value_width(type));
    }
    return;
  }
  if (column.type == arrow_type::utf8 && type == arrow_type::large_utf8) return widen_offsets(column);
  arrow_column text;
  text.type = type == arrow_type::large_utf8 ? type : arrow_type::utf8;
  put_offset(text);
  std::string value;
  for (std::int64_t row = 0; row < column.length; ++row) {
    value.clear();
    if (column.is_valid(row)) append_value_text(value, column, row, utc);
    put_text(text, value);
  }
  column.values = std::move(text.values);
  column.text = std::move(text.text);
  column.type = text.type;
  if (column.type != type) widen_offsets(column);
}

// The column type a value of `kind` needs when its column has none yet.
arrow_type natural_type(value_kind kind) {
  switch (kind) {
    case value_kind::missing:
      return arrow_type::null;
    case value_kind::number:
      return arrow_type::float64;
    case value_kind::integer:
      return arrow_type::int64;
    case value_kind::unsigned_integer:
      return arrow_type::uint64;
    case value_kind::logical:
      return arrow_type::boolean;
    case value_kind::datetime:
      return arrow_type::timestamp;
    case value_kind::duration:
      return arrow_type::duration;
    case value_kind::text:
      return arrow_type::utf8;
  }
  return arrow_type::utf8;
}

bool fits(arrow_type type, value_kind kind) {
  if (is_text(type) || natural_type(kind) == type) return true;
  return is_number(type) &&
         (kind == value_kind::number || kind == value_kind::integer || kind == value_kind::unsigned_integer);
}

template <class T>
void put_number(arrow_column& c, const output_value& v) {
  if (v.kind == value_kind::integer) return c.values.push(static_cast<T>(v.integer));
  if (v.kind == value_kind::unsigned_integer)
    return c.values.push(static_cast<T>(static_cast<std::uint64_t>(v.integer)));
  c.values.push(static_cast<T>(v.number));
}

std::int64_t micros_of(double seconds) { return std::llround(seconds * 1e6); }

// A datetime's canonical text ends in Z or a UTC offset when the value had one.
bool has_utc_offset(std::string_view iso) {
  const std::size_t t = iso.find('T');
  if (t == std::string_view::npos) return false;
  return iso.back() == 'Z' || iso.find_first_of("+-", t) != std::string_view::npos;
}

void put_text_of(arrow_column& c, const output_value& v) {
  if (v.kind == value_kind::text && v.utf16) return put_text(c, foundation::core::unicode::to_utf8(v.units));
  if (v.kind == value_kind::text || v.kind == value_kind::datetime || v.kind == value_kind::duration) {
    return put_text(c, v.bytes);
  }
  std::string text;
  if (v.kind == value_kind::integer) append_integer(text, v.integer);
  if (v.kind == value_kind::unsigned_integer) append_integer(text, static_cast<std::uint64_t>(v.integer));
  if (v.kind == value_kind::logical) text = v.number != 0 ? "true" : "false";
  if (v.kind == value_kind::number) append_number_text(text, v.number);
  put_text(c, text);
}

// Appends a present value that fits the column's type.
void put_value(arrow_column& c, const output_value& v) {
  switch (c.type) {
    case arrow_type::boolean:
      put_bit(c.values, c.length, v.number != 0);
      break;
    case arrow_type::int8:
      put_number<std::int8_t>(c, v);
      break;
    case arrow_type::int16:
      put_number<std::int16_t>(c, v);
      break;
    case arrow_type::int32:
      put_number<std::int32_t>(c, v);
      break;
    case arrow_type::int64:
      put_number<std::int64_t>(c, v);
      break;
    case arrow_type::uint8:
      put_number<std::uint8_t>(c, v);
      break;
    case arrow_type::uint16:
      put_number<std::uint16_t>(c, v);
      break;
    case arrow_type::uint32:
      put_number<std::uint32_t>(c, v);
      break;
    case arrow_type::uint64:
      put_number<std::uint64_t>(c, v);
      break;
    case arrow_type::float32:
      put_number<float>(c, v);
      break;
    case arrow_type::float64:
      put_number<double>(c, v);
      break;
    case arrow_type::timestamp:
    case arrow_type::duration:
      c.values.push(micros_of(v.number));
      break;
    case arrow_type::utf8:
    case arrow_type::large_utf8:
      put_text_of(c, v);
      break;
    case arrow_type::null:
      break;
  }
  put_validity(c, true);
  ++c.length;
}

void put_missing(arrow_column& c) {
  if (is_text(c.type)) {
    put_offset(c);
  } else if (c.type == arrow_type::boolean) {
    put_bit(c.values, c.length, false);
  } else {
    c.values.resize(c.values.size() + arrow_value_width(c.type));
  }
  put_validity(c, false);
  ++c.length;
}

arrow_column new_column(arrow_type type, std::int64_t missing_rows, bool utc) {
  arrow_column c;
  for (std::int64_t i = 0; i < missing_rows; ++i) put_missing(c);
  become(c, type, utc);
  return c;
}

// The one type a column takes in every batch: the type its batches agree
// on, else text.
arrow_type common_type(const std::vector<arrow_batch>& batches, std::size_t column, arrow_type declared) {
  std::optional<arrow_type> seen;
  bool large = false;
  bool mixed = false;
  for (const arrow_batch& b : batches) {
    if (column >= b.columns.size() || b.columns[column].type == arrow_type::null) continue;
    const arrow_type t = b.columns[column].type;
    large = large || t == arrow_type::large_utf8;
    if (seen && *seen != t) mixed = true;
    if (!seen) seen = t;
  }
  if (large) return arrow_type::large_utf8;
  if (mixed) return arrow_type::utf8;
  if (seen) return *seen;
  return declared == arrow_type::null ? arrow_type::utf8 : declared;
}

}  // namespace

arrow_type arrow_type_of(value_type type) {
  switch (type) {
    case value_type::double_:
      return arrow_type::float64;
    case value_type::single:
      return arrow_type::float32;
    case value_type::int8:
      return arrow_type::int8;
    case value_type::int16:
      return arrow_type::int16;
    case value_type::int32:
      return arrow_type::int32;
    case value_type::int64:
      return arrow_type::int64;
    case value_type::uint8:
      return arrow_type::uint8;
    case value_type::uint16:
      return arrow_type::uint16;
    case value_type::uint32:
      return arrow_type::uint32;
    case value_type::uint64:
      return arrow_type::uint64;
    case value_type::logical:
      return arrow_type::boolean;
    case value_type::datetime:
      return arrow_type::timestamp;
    case value_type::duration:
      return arrow_type::duration;
    case value_type::string:
      return arrow_type::utf8;
  }
  return arrow_type::utf8;
}

std::size_t arrow_value_width(arrow_type type) {
  switch (type) {
    case arrow_type::int8:
    case arrow_type::uint8:
      return 1;
    case arrow_type::int16:
    case arrow_type::uint16:
      return 2;
    case arrow_type::int32:
    case arrow_type::uint32:
    case arrow_type::float32:
      return 4;
    case arrow_type::int64:
    case arrow_type::uint64:
    case arrow_type::float64:
    case arrow_type::timestamp:
    case arrow_type::duration:
      return 8;
    case arrow_type::null:
    case arrow_type::boolean:
    case arrow_type::utf8:
    case arrow_type::large_utf8:
      return 0;
  }
  return 0;
}

void arrow_buffer::free_bytes::operator()(std::uint8_t* p) const noexcept { std::free(p); }

void arrow_buffer::grow(std::size_t at_least) {
  std::size_t capacity = std::max<std::size_t>({at_least, 2 * capacity_, alignment});
  capacity = (capacity + alignment - 1) / alignment * alignment;
  auto* fresh = static_cast<std::uint8_t*>(std::aligned_alloc(alignment, capacity));
  if (fresh == nullptr) throw std::bad_alloc();
  if (size_ != 0) std::memcpy(fresh, data_.get(), size_);
  data_.reset(fresh);
  capacity_ = capacity;
}

void arrow_buffer::resize(std::size_t n) {
  if (n <= size_) {
    size_ = n;
    return;
  }
  if (n > capacity_) grow(n);
  std::memset(data_.get() + size_, 0, n - size_);
  size_ = n;
}

std::string_view arrow_column::text_at(std::int64_t row) const {
  const std::int64_t begin = offset_at(*this, row);
  const std::int64_t end = offset_at(*this, row + 1);
  return {reinterpret_cast<const char*>(text.data()) + begin, static_cast<std::size_t>(end - begin)};
}

std::int64_t arrow_table::rows() const noexcept {
  std::int64_t n = 0;
  for (const arrow_batch& b : batches) n += b.rows;
  return n;
}

void arrow_table_sink::header(const table_header& header) {
  const auto text = utf8_of_text;
  const std::size_t count = std::max({header.names.size(), header.units.size(), header.descriptions.size()});
  table_.fields.resize(std::max(table_.fields.size(), count));
  for (std::size_t i = 0; i < header.names.size(); ++i) table_.fields[i].name = text(header.names[i]);
  for (std::size_t i = 0; i < header.units.size(); ++i) table_.fields[i].unit = text(header.units[i]);
  for (std::size_t i = 0; i < header.descriptions.size(); ++i)
    table_.fields[i].description = text(header.descriptions[i]);
  declared_.clear();
  for (const type_run& run : header.types) {
    const auto type = type_from_name(run.name);
    declared_.insert(declared_.end(), run.count, type ? arrow_type_of(*type) : arrow_type::utf8);
  }
}

arrow_batch& arrow_table_sink::open_batch() {
  if (!open_) open_.emplace();
  return *open_;
}

void arrow_table_sink::close_batch() {
  if (open_ && open_->rows > 0) hand_on(std::move(*open_));
  open_.reset();
}

void arrow_table_sink::hand_on(arrow_batch&& batch) {
  if (!on_batch_) {
    table_.batches.push_back(std::move(batch));
    return;
  }
  // A streamed batch stands alone: its columns of only missing values take
  // their declared type (else text).
  for (std::size_t i = 0; i < batch.columns.size(); ++i) {
    if (batch.columns[i].type != arrow_type::null) continue;
    const arrow_type declared = i < declared_.size() ? declared_[i] : arrow_type::null;
    become(batch.columns[i], declared == arrow_type::null ? arrow_type::utf8 : declared, false);
  }
  if (table_.fields.size() < batch.columns.size()) table_.fields.resize(batch.columns.size());
  for (std::size_t i = 0; i < batch.columns.size() && i < utc_.size(); ++i) {
    if (utc_[i] && batch.columns[i].type == arrow_type::timestamp) table_.fields[i].timezone = "UTC";
  }
  on_batch_(std::move(batch), table_.fields);
}

namespace {

// The bytes a batch's buffers hold.
std::size_t batch_bytes(const arrow_batch& batch) {
  std::size_t n = 0;
  for (const arrow_column& c : batch.columns) n += c.validity.size() + c.values.size() + c.text.size();
  return n;
}

}  // namespace

void arrow_table_sink::put_values(std::span<const output_value> values, std::size_t width) {
  arrow_batch& batch = open_batch();
  if (utc_.size() < width) utc_.resize(width, false);
  while (batch.columns.size() < width) {
    const std::size_t i = batch.columns.size();
    batch.columns.push_back(new_column(i < declared_.size() ? declared_[i] : arrow_type::null, batch.rows, false));
  }
  for (std::size_t k = 0; k < values.size(); ++k) {
    const std::size_t i = part_at_ + k;
    arrow_column& c = batch.columns[i];
    const output_value& v = values[k];
    // Most values: a double for a float64 column, UTF-8 text for a text one.
    if (c.validity.size() == 0) [[likely]] {
      if (c.type == arrow_type::float64 && v.kind == value_kind::number) {
        c.values.push(v.number);
        ++c.length;
        continue;
      }
      if (c.type == arrow_type::utf8 && v.kind == value_kind::text && !v.utf16 &&
          c.text.size() + v.bytes.size() <= static_cast<std::size_t>(narrow_text_max)) {
        c.text.append(v.bytes.data(), v.bytes.size());
        c.values.push(static_cast<std::int32_t>(c.text.size()));
        ++c.length;
        continue;
      }
    }
    if (v.kind == value_kind::missing) {
      put_missing(c);
      continue;
    }
    if (c.type == arrow_type::null) {
      become(c, natural_type(v.kind), false);
    } else if (!fits(c.type, v.kind)) {
      become(c, arrow_type::utf8, utc_[i]);
    }
    if (v.kind == value_kind::datetime && !utc_[i] && has_utc_offset(v.bytes)) utc_[i] = true;
    put_value(c, v);
  }
  part_at_ += values.size();
}

void arrow_table_sink::record_part(std::span<const output_value> values) {
  put_values(values, part_at_ + values.size());
}

void arrow_table_sink::padded_record(std::span<const output_value> values, std::size_t missing) {
  put_values(values, part_at_ + values.size() + missing);
  arrow_batch& batch = *open_;
  for (std::size_t i = part_at_; i < batch.columns.size(); ++i) put_missing(batch.columns[i]);
  part_at_ = 0;
  const auto rows = static_cast<std::size_t>(++batch.rows);
  if (rows >= limits_.rows || (rows % 1024 == 0 && batch_bytes(batch) >= limits_.bytes)) close_batch();
}

std::unique_ptr<record_sink> arrow_table_sink::part_sink() {
  auto part = std::make_unique<arrow_table_sink>(limits_);
  part->declared_ = declared_;
  return part;
}

void arrow_table_sink::take_part(record_sink& part) {
  auto& from = static_cast<arrow_table_sink&>(part);
  close_batch();
  from.close_batch();
  if (utc_.size() < from.utc_.size()) utc_.resize(from.utc_.size(), false);
  for (std::size_t i = 0; i < from.utc_.size(); ++i) utc_[i] = utc_[i] || from.utc_[i];
  for (arrow_batch& b : from.table_.batches) hand_on(std::move(b));
  from.table_.batches.clear();
  from.utc_.clear();
}

arrow_table arrow_table_sink::take() {
  close_batch();
  std::size_t width = table_.fields.size();
  for (const arrow_batch& b : table_.batches) width = std::max(width, b.columns.size());
  table_.fields.resize(width);
  utc_.resize(width, false);
  for (std::size_t i = 0; i < width; ++i) {
    const arrow_type type = common_type(table_.batches, i, i < declared_.size() ? declared_[i] : arrow_type::null);
    for (arrow_batch& b : table_.batches) {
      if (b.columns.size() <= i) b.columns.push_back(new_column(arrow_type::null, b.rows, false));
      become(b.columns[i], type, utc_[i]);
    }
    if (type == arrow_type::timestamp && utc_[i]) table_.fields[i].timezone = "UTC";
  }
  declared_.clear();
  utc_.clear();
  return std::exchange(table_, {});
}

}  // namespace textio::import
