// Records the lists that get_or_create_delim is given on this thread while
// the log lives, and can make a chosen call fail.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "zvcore/ustring.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace test_support {

class delim_call_log {
 public:
  // fail_at: 1-based number of the call that throws; 0 for none.
  explicit delim_call_log(std::size_t fail_at = 0)
      : previous_(textio::detail::set_delim_call_observer([this, fail_at](const std::vector<ustring>& list) {
          calls_.push_back(list);
          if (calls_.size() == fail_at) throw std::runtime_error("delimiter call refused");
        })) {}
  delim_call_log(const delim_call_log&) = delete;
  delim_call_log& operator=(const delim_call_log&) = delete;
  ~delim_call_log() { textio::detail::set_delim_call_observer(std::move(previous_)); }

  const std::vector<std::vector<ustring>>& calls() const { return calls_; }

 private:
  std::vector<std::vector<ustring>> calls_;
  textio::detail::delim_call_observer previous_;
};

}  // namespace test_support
