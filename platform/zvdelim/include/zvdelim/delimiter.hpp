// textio::Delimiter: a fixed set of strings, any of which ends a field or a
// record, with a lookup of the longest one that starts at a position of a
// UTF-16 buffer. Objects are shared through get_or_create_delim.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "zvcore/ustring.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace textio {

class Delimiter {
 public:
  // Which string matched: its position in strings() and its length in units.
  struct match {
    std::size_t index;
    std::size_t length;
    friend bool operator==(const match&, const match&) = default;
  };

  // Keeps the strings in the order given. Duplicates are allowed; empty
  // strings are kept but never match.
  explicit Delimiter(std::vector<::ustring> strings);

  Delimiter(const Delimiter&) = delete;
  Delimiter& operator=(const Delimiter&) = delete;

  const std::vector<::ustring>& strings() const noexcept { return strings_; }

  // The longest string that starts at `position` of `text`; among equal
  // strings, the first in list order. Nothing when no string starts there or
  // `position` is at or past the end.
  std::optional<match> match_at(std::u16string_view text, std::size_t position) const noexcept;

  // Whether some non-empty string begins with `unit`: the cheap test a reader
  // makes before it calls match_at.
  bool may_start_with(char16_t unit) const noexcept;

  // Length of the longest string, 0 for an empty list.
  std::size_t longest() const noexcept { return longest_; }

 private:
  // The non-empty strings that begin with one unit: order_[begin, end).
  struct group {
    char16_t first;
    std::size_t begin;
    std::size_t end;
  };

  const group* find_group(char16_t unit) const noexcept;

  std::vector<::ustring> strings_;
  // Indices of the non-empty strings by first unit, then longest first, then
  // list order, so the first hit in a group is the answer.
  std::vector<std::size_t> order_;
  std::vector<group> groups_;  // ascending by first unit
  std::size_t longest_ = 0;
};

}  // namespace textio
