// The rows that a rule which omits variables must hold until the end of the
// table, kept compactly: each value is a kind byte, then for text its length
// (a variable-length number) and its units (aligned for their size), for a
// number its 8 bytes. Rows
// go into large chunks, so that growth never copies what is held. A record's
// trailing missing values (padding up to the variable count) are a count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "import/output.hpp"

namespace textio::import {

template <class CharT>
class compact_table {
 public:
  void add_row(std::span<const output_value> values, std::size_t missing_after) {
    row_.clear();
    put_count(values.size());
    put_count(missing_after);
    for (const output_value& v : values) {
      row_.push_back(static_cast<char>(static_cast<unsigned>(v.kind) | (v.plain_decimal ? plain_decimal_bit : 0U)));
      if (v.kind == value_kind::number) {
        char bytes[sizeof(double)];
        std::memcpy(bytes, &v.number, sizeof bytes);
        row_.append(bytes, sizeof bytes);
        put_units(written_of(v));
      } else if (v.kind == value_kind::text) {
        put_units(text_of(v));
      } else if (v.kind != value_kind::missing) {
        // A typed value: its number, its integer, its canonical text and the
        // text it was read from.
        char bytes[sizeof(double) + sizeof(std::int64_t)];
        std::memcpy(bytes, &v.number, sizeof(double));
        std::memcpy(bytes + sizeof(double), &v.integer, sizeof(std::int64_t));
        row_.append(bytes, sizeof bytes);
        put_count(v.bytes.size());
        row_.append(v.bytes.data(), v.bytes.size());
        put_units(written_of(v));
      }
    }
    pad_row();
    if (chunks_.empty() || chunks_.back().size - chunks_.back().used < row_.size()) {
      const std::size_t size = row_.size() > chunk_size ? row_.size() : chunk_size;
      chunks_.push_back({std::make_unique_for_overwrite<char[]>(size), size, 0});
    }
    chunk& c = chunks_.back();
    std::memcpy(c.data.get() + c.used, row_.data(), row_.size());
    c.used += row_.size();
  }

  // Calls each(values, missing_after) for every row in order; text values
  // point into the table.
  template <class Each>
  void for_each_row(Each each) const {
    std::vector<output_value> values;
    for (const chunk& c : chunks_) {
      const char* const base = c.data.get();
      const char* p = base;
      const char* end = p + c.used;
      while (p < end) {
        const std::size_t count = get_count(p);
        const std::size_t missing_after = get_count(p);
        values.assign(count, output_value{});
        for (output_value& v : values) {
          const auto kind = static_cast<unsigned char>(*p++);
          v.kind = static_cast<value_kind>(kind & ~plain_decimal_bit);
          v.plain_decimal = (kind & plain_decimal_bit) != 0;
          if (v.kind == value_kind::number) {
            std::memcpy(&v.number, p, sizeof(double));
            p += sizeof(double);
            set_written(v, get_units(p, base));
          } else if (v.kind == value_kind::text) {
            set_text(v, get_units(p, base));
          } else if (v.kind != value_kind::missing) {
            std::memcpy(&v.number, p, sizeof(double));
            std::memcpy(&v.integer, p + sizeof(double), sizeof(std::int64_t));
            p += sizeof(double) + sizeof(std::int64_t);
            const std::size_t length = get_count(p);
            v.bytes = std::string_view(p, length);
            p += length;
            set_written(v, get_units(p, base));
          }
        }
        skip_padding(p, base);
        each(std::span<const output_value>(values), missing_after);
      }
    }
  }

  // Bytes held, for the memory figures.
  std::size_t bytes() const noexcept {
    std::size_t n = 0;
    for (const chunk& c : chunks_) n += c.size;
    return n;
  }

 private:
  static constexpr std::size_t chunk_size = std::size_t{16} << 20;
  static constexpr unsigned plain_decimal_bit = 0x80;  // in the kind byte

  struct chunk {
    std::unique_ptr<char[]> data;
    std::size_t size = 0;
    std::size_t used = 0;
  };

  static std::basic_string_view<CharT> text_of(const output_value& v) {
    if constexpr (sizeof(CharT) == 1) {
      return v.bytes;
    } else {
      return v.units;
    }
  }
  static void set_text(output_value& v, std::basic_string_view<CharT> t) {
    if constexpr (sizeof(CharT) == 1) {
      v.bytes = t;
    } else {
      v.utf16 = true;
      v.units = t;
    }
  }
  static std::basic_string_view<CharT> written_of(const output_value& v) {
    if constexpr (sizeof(CharT) == 1) {
      return v.written;
    } else {
      return v.units;
    }
  }
  static void set_written(output_value& v, std::basic_string_view<CharT> t) {
    if constexpr (sizeof(CharT) == 1) {
      v.written = t;
    } else if (!t.empty()) {
      v.utf16 = true;
      v.units = t;
    }
  }

  // A length, then units aligned for their size.
  void put_units(std::basic_string_view<CharT> t) {
    put_count(t.size());
    pad_row();
    row_.append(reinterpret_cast<const char*>(t.data()), t.size() * sizeof(CharT));
  }
  static std::basic_string_view<CharT> get_units(const char*& p, const char* base) {
    const std::size_t length = get_count(p);
    skip_padding(p, base);
    const std::basic_string_view<CharT> t(reinterpret_cast<const CharT*>(p), length);
    p += length * sizeof(CharT);
    return t;
  }

  // Units wider than a byte start at a multiple of their size from the
  // chunk's start (chunks are allocated aligned), and so does every row, so
  // that text views point at aligned units.
  void pad_row() { row_.append((sizeof(CharT) - row_.size() % sizeof(CharT)) % sizeof(CharT), '\0'); }
  static void skip_padding(const char*& p, const char* base) {
    p += (sizeof(CharT) - static_cast<std::size_t>(p - base) % sizeof(CharT)) % sizeof(CharT);
  }

  void put_count(std::size_t n) {
    while (n >= 0x80) {
      row_.push_back(static_cast<char>((n & 0x7F) | 0x80));
      n >>= 7;
    }
    row_.push_back(static_cast<char>(n));
  }
  static std::size_t get_count(const char*& p) {
    std::size_t n = 0;
    for (int shift = 0;; shift += 7) {
      const auto byte = static_cast<unsigned char>(*p++);
      n |= static_cast<std::size_t>(byte & 0x7F) << shift;
      if (byte < 0x80) return n;
    }
  }

  std::vector<chunk> chunks_;
  std::string row_;  // the row being encoded
};

}  // namespace textio::import
