// The longest of a list of strings that starts at a position, in the units
// of the text being read. For UTF-16 text the delimiter object answers; for
// UTF-8 text, used only when every string is ASCII (so that a string's
// bytes are its units), the object's strings are compared byte for byte.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zvdelim/delimiter.hpp"

namespace textio::import {

// Whether every unit of every string is below U+0080.
bool all_ascii(const std::vector<std::u16string>& strings) noexcept;

template <class CharT>
class string_matcher {
 public:
  string_matcher() = default;
  explicit string_matcher(std::shared_ptr<textio::Delimiter> delimiter) : delimiter_(std::move(delimiter)) {
    if (!delimiter_) return;
    for (const auto& s : delimiter_->strings()) {
      if (s.empty()) continue;
      if constexpr (sizeof(CharT) == 1) strings_.emplace_back(s.begin(), s.end());
      first_units_.push_back(s[0]);
    }
  }

  bool empty() const noexcept { return first_units_.empty(); }
  // Length of the longest string, 0 for none.
  std::size_t longest() const noexcept { return delimiter_ ? delimiter_->longest() : 0; }
  // Every string, in the order given (empty ones included).
  const std::vector<std::u16string>& strings() const noexcept {
    static const std::vector<std::u16string> none;
    return delimiter_ ? delimiter_->strings() : none;
  }
  // The first unit of each non-empty string.
  const std::u16string& first_units() const noexcept { return first_units_; }

  // Length of the longest string that starts at `pos`; 0 when none does.
  std::size_t match(std::basic_string_view<CharT> text, std::size_t pos) const noexcept {
    if constexpr (sizeof(CharT) == 1) {
      std::size_t best = 0;
      const std::size_t left = text.size() - pos;
      for (const auto& s : strings_) {
        if (s.size() <= best || s.size() > left) continue;
        std::size_t i = 0;
        while (i < s.size() && text[pos + i] == s[i]) ++i;
        if (i == s.size()) best = s.size();
      }
      return best;
    } else {
      if (!delimiter_) return 0;
      const auto m = delimiter_->match_at(text, pos);
      return m ? m->length : 0;
    }
  }

 private:
  std::shared_ptr<textio::Delimiter> delimiter_;
  std::vector<std::string> strings_;  // UTF-8 text only
  std::u16string first_units_;
};

}  // namespace textio::import
