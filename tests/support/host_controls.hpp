// Scoped switches of the host array stand-in: how char_exception_dispatcher
// treats the active failure, and a hook on do_legacy_hv_error. Both are
// restored when the guard goes out of scope, so one test cannot leak its
// setting into the next.
#pragma once

#include <utility>

#include "zvarray/matrix.hpp"

namespace test_support {

class char_exception_mode_guard {
 public:
  explicit char_exception_mode_guard(matrix::detail::char_exception_mode mode)
      : previous_(matrix::detail::get_char_exception_mode()) {
    matrix::detail::set_char_exception_mode(mode);
  }
  ~char_exception_mode_guard() { matrix::detail::set_char_exception_mode(previous_); }
  char_exception_mode_guard(const char_exception_mode_guard&) = delete;
  char_exception_mode_guard& operator=(const char_exception_mode_guard&) = delete;

 private:
  matrix::detail::char_exception_mode previous_;
};

class legacy_hv_error_hook_guard {
 public:
  explicit legacy_hv_error_hook_guard(matrix::detail::legacy_hv_error_hook hook)
      : previous_(matrix::detail::set_legacy_hv_error_hook(std::move(hook))) {}
  ~legacy_hv_error_hook_guard() { matrix::detail::set_legacy_hv_error_hook(std::move(previous_)); }
  legacy_hv_error_hook_guard(const legacy_hv_error_hook_guard&) = delete;
  legacy_hv_error_hook_guard& operator=(const legacy_hv_error_hook_guard&) = delete;

 private:
  matrix::detail::legacy_hv_error_hook previous_;
};

inline constexpr matrix::detail::char_exception_mode all_char_exception_modes[] = {
    matrix::detail::char_exception_mode::rethrow,
    matrix::detail::char_exception_mode::throw_another,
    matrix::detail::char_exception_mode::return_normally,
};

inline const char* mode_name(matrix::detail::char_exception_mode mode) {
  switch (mode) {
    case matrix::detail::char_exception_mode::rethrow:
      return "rethrow";
    case matrix::detail::char_exception_mode::throw_another:
      return "throw_another";
    case matrix::detail::char_exception_mode::return_normally:
      return "return_normally";
  }
  return "?";
}

}  // namespace test_support
