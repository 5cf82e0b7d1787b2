#include "import/table/arrow_column_values.hpp"

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "import/table/arrow_value_text.hpp"
#include "import/values/number_text.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

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

}  // namespace

std::int64_t offset_at(const arrow_column& column, std::int64_t i) {
  const auto at = static_cast<std::size_t>(i);
  return column.type == arrow_type::large_utf8 ? column.values.at<std::int64_t>(at)
                                               : column.values.at<std::int32_t>(at);
}

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

namespace {

template <class T>
void put_number(arrow_column& c, const output_value& v) {
  if (v.kind == value_kind::integer) return c.values.push(static_cast<T>(v.integer));
  if (v.kind == value_kind::unsigned_integer)
    return c.values.push(static_cast<T>(static_cast<std::uint64_t>(v.integer)));
  c.values.push(static_cast<T>(v.number));
}

std::int64_t micros_of(double seconds) { return std::llround(seconds * 1e6); }

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

}  // namespace

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
}  // namespace textio::import
