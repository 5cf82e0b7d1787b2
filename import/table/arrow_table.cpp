#include "import/table/arrow_table.hpp"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "import/table/arrow_column_values.hpp"

namespace textio::import {
namespace {

constexpr std::size_t alignment = 64;

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
}  // namespace textio::import
