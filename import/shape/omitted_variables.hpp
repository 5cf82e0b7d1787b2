// The variables that an OmitVar rule (MissingRule, ImportErrorRule,
// PartialFieldRule) drops, and the rows kept until the table ends, when the
// dropped variables are known.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "import/shape/compact_table.hpp"
#include "import/output.hpp"

namespace textio::import {

template <class CharT>
class omitted_variables {
 public:
  void mark(std::size_t variable) {
    if (marks_.size() <= variable) marks_.resize(variable + 1, false);
    marks_[variable] = true;
  }
  void mark(std::size_t first, std::size_t count) {
    mark(first + count - 1);
    std::fill(marks_.begin() + static_cast<std::ptrdiff_t>(first),
              marks_.begin() + static_cast<std::ptrdiff_t>(first + count), true);
  }
  const std::vector<bool>& marks() const noexcept { return marks_; }

  void keep_row(std::span<const output_value> values, std::size_t padding) { table_.add_row(values, padding); }

  // Hands on the kept rows without the marked variables.
  void send_rows(record_sink& sink) const;

 private:
  std::vector<bool> marks_;
  compact_table<CharT> table_;
};

}  // namespace textio::import
