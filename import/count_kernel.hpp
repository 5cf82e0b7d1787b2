// A shorter way to count the records of plain delimited UTF-8 text: one pass
// over the bytes that finds only where fields and records end, for the
// settings where the field count of a record is its delimiter count plus one
// (no comments; one-byte ASCII delimiters; line endings among CR LF, LF and
// CR; delimiters at the start, the end and in a row all giving fields).
// Anything it cannot settle (a quote still open at the end of the input) it
// leaves to the full scanner, which reports it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "parser/options.hpp"

namespace textio::import {

class count_kernel {
 public:
  enum class status { record, need_more, end_of_input, not_plain };
  struct result {
    status what = status::not_plain;
    std::size_t consumed = 0;
    std::uint64_t next_line = 0;
    std::size_t fields = 0;
    bool empty = false;  // no units but whitespace
  };

  // The kernel for these (effective) options, or nothing when they need the
  // full scanner.
  static std::optional<count_kernel> for_options(const textio::parser::options& effective);

  // The record at the start of `text`, which starts on physical line `line`.
  result scan(std::string_view text, bool at_end, std::uint64_t line) const noexcept;

 private:
  count_kernel() = default;
  // Position of the next delimiter or line-ending byte at or after `pos`.
  std::size_t find_stop(std::string_view text, std::size_t pos) const noexcept;

  enum : std::uint8_t { delimiter = 1, line_byte = 2, blank = 4 };
  std::array<std::uint8_t, 256> table_{};
  bool crlf_ = false;
  bool lf_ = false;
  bool cr_ = false;
  char quote_ = '"';
  // Up to four stop bytes for the vector search; 0 when there are more.
  std::array<char, 4> stops_{};
  std::size_t stop_count_ = 0;
};

}  // namespace textio::import
