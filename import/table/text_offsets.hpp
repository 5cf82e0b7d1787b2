// The offsets of a text column: where each value ends in the column's text.
// They are 32-bit while they stay at or below `NarrowMax` (4 GiB - 1 for the
// in-memory table), which halves their memory in the usual case, and 64-bit
// from the first larger one on: the 32-bit ones are widened once, then.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace textio::import {

template <std::uint64_t NarrowMax>
class basic_text_offsets {
 public:
  std::size_t size() const noexcept { return wide_ ? wide64_.size() : narrow_.size(); }
  std::uint64_t operator[](std::size_t i) const noexcept { return wide_ ? wide64_[i] : narrow_[i]; }
  std::uint64_t back() const noexcept { return (*this)[size() - 1]; }

  void push_back(std::uint64_t offset) {
    if (!wide_ && offset <= NarrowMax) [[likely]] {
      narrow_.push_back(static_cast<std::uint32_t>(offset));
    } else {
      widen();
      wide64_.push_back(offset);
    }
  }
  // Appends from[first], from[first + 1], ... each plus `base`: in one
  // tight loop where all of them stay 32-bit (offsets ascend, so the last
  // is the largest).
  void append_shifted(const basic_text_offsets& from, std::size_t first, std::uint64_t base) {
    const std::size_t n = from.size();
    if (first >= n) return;
    if (!wide_ && !from.wide_ && base + from.back() <= NarrowMax) {
      grow_for(narrow_, n - first);
      const auto shift = static_cast<std::uint32_t>(base);
      for (std::size_t i = first; i < n; ++i) narrow_.push_back(shift + from.narrow_[i]);
      return;
    }
    for (std::size_t i = first; i < n; ++i) push_back(base + from[i]);
  }
  // Room for `n` offsets, in the width the next ones take while they stay
  // small enough.
  void reserve(std::size_t n) { wide_ ? wide64_.reserve(n) : narrow_.reserve(n); }
  // Empties the list and makes it 32-bit again; the memory stays.
  void clear() noexcept {
    narrow_.clear();
    wide64_.clear();
    wide_ = false;
  }

  // Whether the offsets are 64-bit; the storage in use.
  bool wide() const noexcept { return wide_; }
  const std::vector<std::uint32_t>& narrow_storage() const noexcept { return narrow_; }
  const std::vector<std::uint64_t>& wide_storage() const noexcept { return wide64_; }

  friend bool operator==(const basic_text_offsets& a, const basic_text_offsets& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }

 private:
  // Room for `more` elements, growing by half at least, so that appending
  // part after part stays linear.
  template <class T>
  static void grow_for(std::vector<T>& v, std::size_t more) {
    if (v.capacity() - v.size() < more) v.reserve(std::max(v.size() + more, v.capacity() + v.capacity() / 2));
  }

  void widen() {
    if (wide_) return;
    wide64_.assign(narrow_.begin(), narrow_.end());
    narrow_ = {};
    wide_ = true;
  }

  bool wide_ = false;
  std::vector<std::uint32_t> narrow_;
  std::vector<std::uint64_t> wide64_;
};

using text_offsets = basic_text_offsets<std::numeric_limits<std::uint32_t>::max()>;

}  // namespace textio::import
